// How a call ended and, where it failed, why.
#pragma once
#include <exception>
#include <memory>
#include <string>
#include <string_view>

namespace pixkit {

// Why something was refused: one sentence for people, without a full stop, such as "the file does not exist". It is a
// literal, so that a refusal for want of memory needs none itself.
class Reason {
  public:
    constexpr Reason() noexcept = default; // none
    consteval Reason(const char* literal) : m_text(literal) {}

    constexpr explicit operator bool() const noexcept { return !m_text.empty(); }
    constexpr std::string_view text() const noexcept { return m_text; }

  private:
    std::string_view m_text;
};

inline constexpr Reason noImage = "there is no image";
inline constexpr Reason noMemory = "there is not enough memory";
inline constexpr Reason noMemoryForPixels = "no memory for the pixels";
inline constexpr Reason noDeviceContext = "the system gives no device context";

// What members and what works for them return: done(), or refused("why").
class Outcome {
  public:
    Outcome() noexcept = default; // success
    explicit Outcome(Reason reason) noexcept : m_reason(reason.text()) {}
    // What a run-time error says. Without memory for its words, as much is said.
    explicit Outcome(const std::exception& error) noexcept;

    explicit operator bool() const noexcept { return m_reason.data() == nullptr; }
    // Empty after success.
    std::string_view reason() const noexcept { return isOwn() ? std::string_view(*m_own) : m_reason; }

    // Become success, or this refusal: for members that do next to nothing, and must not pay more for that.
    void succeed() noexcept { m_reason = {}; }
    void refuse(Reason reason) noexcept { m_reason = reason.text(); }

  private:
    // Words of its own are what an empty view that is not null stands for; else they are of no call any more.
    bool isOwn() const noexcept { return m_reason.data() != nullptr && m_reason.empty(); }

    std::string_view m_reason;                // null after success
    std::shared_ptr<const std::string> m_own; // shared, so that copies need no memory
};

inline Outcome done() noexcept {
    return {};
}
inline Outcome refused(Reason reason) noexcept {
    return Outcome(reason);
}
inline Outcome doneIf(bool isDone, Reason otherwise) noexcept {
    return isDone ? done() : refused(otherwise);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
