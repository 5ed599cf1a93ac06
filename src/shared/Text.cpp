#include "shared/Text.h"
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <utility>

namespace pixkit {

std::optional<char32_t> takeCharacter(std::string_view& utf8) noexcept {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(utf8[i]); };
    const unsigned first = byte(0);
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    if (length == 0 || length > utf8.size()) return {};
    char32_t character = length == 1 ? first : first & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80) return {};
        character = character << 6 | (byte(i) & 0x3FU);
    }
    constexpr std::array<char32_t, 5> least = {0, 0, 0x80, 0x800, 0x10000};
    if (character < least[length] || character > 0x10FFFF || (character >= 0xD800 && character < 0xE000)) return {};
    utf8.remove_prefix(length);
    return character;
}

std::optional<std::string> latin1Of(std::string_view utf8) {
    std::string latin1;
    while (!utf8.empty()) {
        const auto character = takeCharacter(utf8);
        if (!character || *character > 255) return {};
        latin1.push_back(static_cast<char>(static_cast<unsigned char>(*character)));
    }
    return latin1;
}

std::string utf8Of(std::string_view latin1) {
    std::string utf8;
    for (const char c : latin1) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80) utf8.push_back(static_cast<char>(0xC0U | byte >> 6));
        utf8.push_back(byte < 0x80 ? c : static_cast<char>(0x80U | (byte & 0x3FU)));
    }
    return utf8;
}

namespace {

constexpr std::chrono::sys_days dayZero = std::chrono::year{1899} / 12 / 30;
constexpr std::int64_t secondsInDay = 86400;

} // namespace

// Dates before day zero have their time of day as a positive fraction, whatever the sign of the whole.
std::optional<CalendarTime> timeOf(double date) noexcept {
    using namespace std::chrono;
    if (!(date > -657435 && date < 2958466)) return {}; // the years 100 to 9999
    const double whole = std::trunc(date);
    const auto second =
        static_cast<std::int64_t>(std::llround(std::abs(date - whole) * static_cast<double>(secondsInDay)));
    const sys_days day = dayZero + days(static_cast<std::int64_t>(whole) + second / secondsInDay);
    const year_month_day civil(day);
    const hh_mm_ss clock(seconds(second % secondsInDay));
    return CalendarTime{static_cast<std::uint16_t>(static_cast<int>(civil.year())),
                        static_cast<std::uint8_t>(static_cast<unsigned>(civil.month())),
                        static_cast<std::uint8_t>(static_cast<unsigned>(civil.day())),
                        static_cast<std::uint8_t>(clock.hours().count()),
                        static_cast<std::uint8_t>(clock.minutes().count()),
                        static_cast<std::uint8_t>(clock.seconds().count())};
}

double dateOf(const CalendarTime& time) noexcept {
    using namespace std::chrono;
    const sys_days day = year{time.year} / time.month / time.day;
    const auto whole = static_cast<double>((day - dayZero).count());
    const double fraction = (time.hour * 3600 + time.minute * 60 + time.second) / static_cast<double>(secondsInDay);
    return whole < 0 ? whole - fraction : whole + fraction;
}

std::optional<CalendarTime> timeOf(std::string_view text) noexcept {
    if (!text.empty() && text.back() == 'Z') text.remove_suffix(1);
    if (text.size() != 10 && text.size() != 19) return {};
    constexpr std::string_view form = "0000-00-00T00:00:00";
    std::array<int, 6> numbers{};
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isSpace = i == 10 && text[i] == ' ';
        if (form[i] != '0' && text[i] != form[i] && !isSpace) return {};
        if (form[i] == '0' && (text[i] < '0' || text[i] > '9')) return {};
    }
    constexpr std::array<std::pair<std::size_t, std::size_t>, 6> places = {
        {{0, 4}, {5, 2}, {8, 2}, {11, 2}, {14, 2}, {17, 2}}};
    for (std::size_t i = 0; i < (text.size() == 10 ? 3 : 6); ++i) {
        const char* begin = text.data() + places[i].first;
        std::from_chars(begin, begin + places[i].second, numbers[i]);
    }
    using namespace std::chrono;
    const year_month_day civil(year{numbers[0]}, month{static_cast<unsigned>(numbers[1])},
                               day{static_cast<unsigned>(numbers[2])});
    // The format knows the 60th second; calendars of days and seconds do not.
    if (!civil.ok() || numbers[0] < 100 || numbers[3] > 23 || numbers[4] > 59 || numbers[5] > 59) return {};
    const auto small = [&](std::size_t i) { return static_cast<std::uint8_t>(numbers[i]); };
    return CalendarTime{static_cast<std::uint16_t>(numbers[0]), small(1), small(2), small(3), small(4), small(5)};
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
