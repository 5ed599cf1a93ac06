#include "surface/PngProperties.h"
#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <limits>

namespace pixkit {

namespace {

// PNG standard, 11.3.4.2, in the order of the enumeration from pngTitle.
constexpr std::array<std::string_view, 10> keywords = {"Title",         "Author",   "Description", "Copyright",
                                                       "Creation Time", "Software", "Disclaimer",  "Warning",
                                                       "Source",        "Comment"};

bool isTextProperty(ePngProperties property) noexcept {
    return property >= pngTitle && property <= pngText;
}

std::string keywordOf(ePngProperties property, const std::string& given) {
    return property == pngText ? given : std::string(keywords[static_cast<std::size_t>(property - pngTitle)]);
}

// The next character, which is taken off the front; nothing where no character of UTF-8 begins.
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

// PNG standard, 11.3.4.2: 1 to 79 printable characters of Latin-1, no spaces at the ends nor two together.
bool isKeyword(const std::string& utf8) {
    const auto keyword = latin1Of(utf8);
    if (!keyword || keyword->empty() || keyword->size() > 79) return false;
    const auto isPrintable = [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return (byte >= 32 && byte <= 126) || byte >= 161;
    };
    return std::ranges::all_of(*keyword, isPrintable) && keyword->front() != ' ' && keyword->back() != ' ' &&
           keyword->find("  ") == std::string::npos;
}

// UTF-8 without control characters other than those that lay out text.
bool isText(std::string_view utf8) noexcept {
    while (!utf8.empty()) {
        const auto character = takeCharacter(utf8);
        if (!character) return false;
        const bool isLayout = *character == '\t' || *character == '\n' || *character == '\r';
        if ((*character < 32 && !isLayout) || (*character >= 127 && *character < 160)) return false;
    }
    return true;
}

struct Range {
    std::int32_t least, most;
};

Range rangeOf(ePngProperties property) noexcept {
    switch (property) {
    case pngBackgroundColor:
        return {0, 0xFFFFFF};
    case pngPixelsPerMeterX:
    case pngPixelsPerMeterY:
        return {1, std::numeric_limits<std::int32_t>::max()};
    case pngCompressionLevel:
        return {0, 9};
    case pngFilterMethod:
        return {filterDefault, filterAdaptive};
    case pngInterlaced:
        return {-1, 1}; // True is -1 where callers come from
    default:
        return {1, 0}; // no such property
    }
}

// --- dates

constexpr std::chrono::sys_days dayZero = std::chrono::year{1899} / 12 / 30;
constexpr std::int64_t secondsInDay = 86400;

// Dates before day zero have their time of day as a positive fraction, whatever the sign of the whole.
std::optional<PngTime> timeOf(double date) noexcept {
    using namespace std::chrono;
    if (!(date > -657435 && date < 2958466)) return {}; // the years 100 to 9999
    const double whole = std::trunc(date);
    const auto second =
        static_cast<std::int64_t>(std::llround(std::abs(date - whole) * static_cast<double>(secondsInDay)));
    const sys_days day = dayZero + days(static_cast<std::int64_t>(whole) + second / secondsInDay);
    const year_month_day civil(day);
    const hh_mm_ss clock(seconds(second % secondsInDay));
    return PngTime{static_cast<std::uint16_t>(static_cast<int>(civil.year())),
                   static_cast<std::uint8_t>(static_cast<unsigned>(civil.month())),
                   static_cast<std::uint8_t>(static_cast<unsigned>(civil.day())),
                   static_cast<std::uint8_t>(clock.hours().count()),
                   static_cast<std::uint8_t>(clock.minutes().count()),
                   static_cast<std::uint8_t>(clock.seconds().count())};
}

double dateOf(const PngTime& time) noexcept {
    using namespace std::chrono;
    const sys_days day = year{time.year} / time.month / time.day;
    const auto whole = static_cast<double>((day - dayZero).count());
    const double fraction = (time.hour * 3600 + time.minute * 60 + time.second) / static_cast<double>(secondsInDay);
    return whole < 0 ? whole - fraction : whole + fraction;
}

// "2024-02-29", with "T" or a space and "12:34:56" behind it where wanted, and a "Z".
std::optional<PngTime> timeOf(std::string_view text) noexcept {
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
    return PngTime{static_cast<std::uint16_t>(numbers[0]), small(1), small(2), small(3), small(4), small(5)};
}

} // namespace

std::optional<std::string> latin1Of(std::string_view utf8) {
    std::string latin1;
    while (!utf8.empty()) {
        const auto character = takeCharacter(utf8);
        if (!character || *character > 255) return {};
        latin1.push_back(static_cast<char>(static_cast<unsigned char>(*character)));
    }
    return latin1;
}

bool PngProperties::set(ePngProperties property, const PngValue& value, const std::string& keyword) {
    if (isTextProperty(property)) return setText(keywordOf(property, keyword), value);
    return property == pngLastModified ? setTime(value) : setNumber(property, value);
}

PngValue PngProperties::get(ePngProperties property, const std::string& keyword) const {
    if (isTextProperty(property)) {
        const auto known = std::ranges::find(m_texts, keywordOf(property, keyword), &Text::keyword);
        return known == m_texts.end() ? PngValue() : PngValue(known->value);
    }
    switch (property) {
    case pngLastModified:
        return m_lastModified ? PngValue(dateOf(*m_lastModified)) : PngValue();
    case pngCompressionLevel:
        return compressionLevel();
    case pngFilterMethod:
        return static_cast<std::int32_t>(filter());
    case pngInterlaced:
        return isInterlaced() ? -1 : 0;
    default:
        const auto value = number(property);
        return value ? PngValue(*value) : PngValue();
    }
}

bool PngProperties::setText(const std::string& keyword, const PngValue& value) {
    const auto* text = std::get_if<std::string>(&value);
    const bool isRemoval = std::holds_alternative<std::monostate>(value) || (text != nullptr && text->empty());
    if (!isKeyword(keyword) || (!isRemoval && (text == nullptr || !isText(*text)))) return false;
    const auto known = std::ranges::find(m_texts, keyword, &Text::keyword);
    if (isRemoval) {
        if (known != m_texts.end()) m_texts.erase(known);
    } else if (known != m_texts.end()) {
        known->value = *text;
    } else {
        m_texts.push_back({keyword, *text});
    }
    return true;
}

bool PngProperties::setTime(const PngValue& value) {
    std::optional<PngTime> time;
    if (const auto* text = std::get_if<std::string>(&value)) time = timeOf(*text);
    if (const auto* date = std::get_if<double>(&value)) time = timeOf(*date);
    if (!time && !std::holds_alternative<std::monostate>(value)) return false;
    m_lastModified = time;
    return true;
}

bool PngProperties::setNumber(ePngProperties property, const PngValue& value) {
    const auto isThis = [&](const auto& entry) { return entry.first == property; };
    if (rangeOf(property).least > rangeOf(property).most) return false;
    if (std::holds_alternative<std::monostate>(value)) {
        std::erase_if(m_numbers, isThis);
        return true;
    }
    const auto* number = std::get_if<std::int32_t>(&value);
    if (number == nullptr || *number < rangeOf(property).least || *number > rangeOf(property).most) return false;
    const auto known = std::ranges::find_if(m_numbers, isThis);
    if (known != m_numbers.end()) {
        known->second = *number;
    } else {
        m_numbers.emplace_back(property, *number);
    }
    return true;
}

std::optional<std::int32_t> PngProperties::number(ePngProperties property) const noexcept {
    for (const auto& [known, value] : m_numbers)
        if (known == property) return value;
    return {};
}

std::optional<std::pair<std::int32_t, std::int32_t>> PngProperties::density() const noexcept {
    const auto x = number(pngPixelsPerMeterX);
    const auto y = number(pngPixelsPerMeterY);
    if (!x && !y) return {};
    return std::pair(x.value_or(y.value_or(0)), y.value_or(x.value_or(0)));
}

} // namespace pixkit
