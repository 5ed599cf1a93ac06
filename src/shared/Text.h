// Texts in UTF-8 and Latin-1, and dates in words and numbers.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace pixkit {

// The next character, which is taken off the front of a text that is not empty; nothing where no character of UTF-8
// begins.
std::optional<char32_t> takeCharacter(std::string_view& utf8) noexcept;

// The text in Latin-1; nothing when it has other characters, or is not UTF-8.
std::optional<std::string> latin1Of(std::string_view utf8);

// Latin-1 in UTF-8.
std::string utf8Of(std::string_view latin1);

// Of the Gregorian calendar, also before it came into use.
struct CalendarTime {
    std::uint16_t year;
    std::uint8_t month, day, hour, minute, second;
    bool operator==(const CalendarTime&) const = default;
};

// Of "2024-02-29", with "T" or a space and "12:34:56" behind it where wanted, and a "Z". Nothing for other texts, days
// that do not exist, and years before 100.
std::optional<CalendarTime> timeOf(std::string_view text) noexcept;
// Of days since 30 December 1899, as automation counts them; nothing outside of the years 100 to 9999. And back.
std::optional<CalendarTime> timeOf(double date) noexcept;
double dateOf(const CalendarTime& time) noexcept;

} // namespace pixkit
// SPDX-License-Identifier: MIT
