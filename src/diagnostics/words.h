// Values of parameters in words, for reports.
#pragma once
#include <concepts>
#include <cstdint>
#include <ranges>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

namespace pixkit {

std::string numberInWords(long long value);
std::string numberInWords(double value);
std::string textInWords(std::string_view text); // in quotes, cut after 80 bytes

template <class Value>
std::string inWords(const Value& value) {
    if constexpr (std::same_as<Value, bool>) {
        return value ? "True" : "False";
    } else if constexpr (std::is_enum_v<Value> || std::integral<Value>) {
        return numberInWords(static_cast<long long>(value));
    } else if constexpr (std::floating_point<Value>) {
        return numberInWords(static_cast<double>(value));
    } else if constexpr (std::convertible_to<const Value&, std::string_view>) {
        return textInWords(value);
    } else if constexpr (std::is_pointer_v<Value>) {
        return value == nullptr ? "Nothing" : "an object"; // addresses help nobody afterwards
    } else if constexpr (std::same_as<Value, std::monostate>) {
        return "Nothing";
    } else if constexpr (requires { std::variant_size<Value>::value; }) {
        return std::visit([](const auto& held) { return inWords(held); }, value);
    } else if constexpr (requires { value.size(); }) {
        return numberInWords(static_cast<long long>(value.size())) + " elements";
    } else {
        return "an object";
    }
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
