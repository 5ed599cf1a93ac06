// The guard at every public member: whatever is thrown inside becomes the member's failure value, and the error report
// hears of it. Every failure that was not expected passes through reportError: one breakpoint finds its origin.
#pragma once
#include "diagnostics/ErrorReport.h"
#include "diagnostics/Outcome.h"
#include "diagnostics/words.h"
#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace pixkit {

// A procedure at work, as its guard names it. It converts from the name alone, and remembers the line where that
// happens; functions that guard for others take one and pass it on.
struct Procedure {
    // clang 14, with which the fuzz targets are built, has no std::source_location.
    constexpr Procedure(const char* itsName, const char* itsFile = __builtin_FILE(),
                        std::uint32_t itsLine = __builtin_LINE()) noexcept
        : name(itsName), file(itsFile), line(itsLine) {}

    const char* name;
    const char* file;
    std::uint32_t line; // of the guard
};

// The names of `count` parameters in one literal, "Width, Height"; another number of them does not compile.
template <std::size_t count>
class ParameterNames {
  public:
    consteval ParameterNames(const char* names) : m_names(names) {
        std::size_t found = m_names.empty() ? 0 : 1;
        for (const char letter : m_names)
            found += letter == ',' ? 1U : 0U;
        if (found != count) throw "as many names as values";
    }
    std::string_view get() const noexcept { return m_names; }

  private:
    std::string_view m_names;
};

// A procedure, the instance that it works on, and what it was called with, by reference: all is only looked at for a
// report. The instance's class brings a function that says how it stands, found by its name:
//     void describeInstance(const cPixSheet& sheet, ErrorReport& report);
//     return guarded(Call(*this, "Resize", "Width, Height", Width, Height), false, [&] { ... });
template <class Instance, class... Values>
class Call {
  public:
    Call(const Instance& instance, const char* name, ParameterNames<sizeof...(Values)> names, const Values&... values,
         const char* file = __builtin_FILE(), std::uint32_t line = __builtin_LINE()) noexcept
        : m_procedure(name, file, line), m_instance(instance), m_names(names.get()), m_values(values...) {}
    // Without parameters, or where they are not known.
    Call(const Instance& instance, const Procedure& procedure) noexcept
        : m_procedure(procedure), m_instance(instance) {}

    const Procedure& procedure() const noexcept { return m_procedure; }
    const Instance& instance() const noexcept { return m_instance; }

    // Parameters and variables in words. May throw std::bad_alloc.
    void describe(ErrorReport& report) const {
        std::string_view names = m_names;
        const auto add = [&](const auto& value) {
            const std::size_t end = names.find(',');
            report.parameters.push_back({std::string(names.substr(0, end)), inWords(value)});
            names.remove_prefix(end == names.npos ? names.size() : end + 2);
        };
        std::apply([&](const auto&... values) { (add(values), ...); }, m_values);
        describeInstance(m_instance, report);
    }

  private:
    Procedure m_procedure;
    const Instance& m_instance;
    std::string_view m_names;
    std::tuple<const Values&...> m_values;
};
template <class Instance, class... Values>
Call(const Instance&, const char*, const char*, const Values&...) -> Call<Instance, Values...>;
template <class Instance>
Call(const Instance&, const Procedure&) -> Call<Instance>;

// What an unexpected failure passes through. `describe` adds what a Call knows; null where there is none.
using DescribeCall = void (*)(const void* call, ErrorReport& report);
void reportError(const Procedure& procedure, const char* description, DescribeCall describe = nullptr,
                 const void* call = nullptr) noexcept;
template <class Instance, class... Values>
void reportError(const Call<Instance, Values...>& call, const char* description) noexcept {
    const auto describe = [](const void* it, ErrorReport& report) {
        static_cast<const Call<Instance, Values...>*>(it)->describe(report);
    };
    reportError(call.procedure(), description, describe, &call);
}

// Runs `body` and returns its value, or `failure` when it throws. `Origin` is Procedure or a Call. A report gets a
// copy, made only once something has failed: as nobody takes the address of the original, the compiler need not lay it
// out in memory, and a guard under which nothing fails costs nothing.
template <class Origin, class Value, class Body>
Value guardedAt(const Origin& origin, Value failure, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (const std::exception& error) {
        reportError(Origin(origin), error.what());
    } catch (...) {
        reportError(Origin(origin), "unknown run-time error");
    }
    return failure;
}
template <class Value, class Body>
Value guarded(const Procedure& procedure, Value failure, Body&& body) noexcept {
    return guardedAt(procedure, std::move(failure), std::forward<Body>(body));
}
template <class Instance, class... Values, class Value, class Body>
Value guarded(const Call<Instance, Values...>& call, Value failure, Body&& body) noexcept {
    return guardedAt(call, std::move(failure), std::forward<Body>(body));
}

// The same for a body that returns its Outcome: what it throws is the reason.
template <class Origin, class Body>
Outcome guardedOutcome(const Origin& origin, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (const std::exception& error) {
        reportError(Origin(origin), error.what());
        return Outcome(error);
    } catch (...) {
        reportError(Origin(origin), "unknown run-time error");
        return refused("something went wrong that says nothing of itself");
    }
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
