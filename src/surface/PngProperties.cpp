#include "surface/PngProperties.h"
#include "shared/Text.h"
#include <algorithm>
#include <array>
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

} // namespace

Outcome PngProperties::set(ePngProperties property, const PngValue& value, const std::string& keyword) {
    Outcome outcome = isTextProperty(property)      ? setText(keywordOf(property, keyword), value)
                      : property == pngLastModified ? setTime(value)
                                                    : setNumber(property, value);
    const auto* const text = std::get_if<std::string>(&value);
    const bool isRemoval = std::holds_alternative<std::monostate>(value) || (text != nullptr && text->empty());
    if (outcome && isRemoval && m_loaded) dropLoaded(property, keyword);
    return outcome;
}

// The file's values may be other instances' too, and stay what they are for those.
void PngProperties::dropLoaded(ePngProperties property, const std::string& keyword) {
    auto rest = std::make_shared<PngProperties>(*m_loaded);
    rest->set(property, PngValue(), keyword);
    m_loaded = std::move(rest);
}

bool PngProperties::addText(std::string keyword, std::string value) {
    if (!isKeyword(keyword) || !isText(value)) return false;
    m_texts.push_back({std::move(keyword), std::move(value)});
    return true;
}

std::vector<const PngProperties::Text*> PngProperties::texts() const {
    std::vector<const Text*> all;
    for (const Text& text : m_texts)
        all.push_back(&text);
    if (!m_loaded) return all;
    for (const Text& text : m_loaded->m_texts)
        if (std::ranges::count(m_texts, text.keyword, &Text::keyword) == 0) all.push_back(&text);
    return all;
}

PngValue PngProperties::get(ePngProperties property, const std::string& keyword) const {
    if (isTextProperty(property)) {
        const auto known = std::ranges::find(m_texts, keywordOf(property, keyword), &Text::keyword);
        if (known != m_texts.end()) return known->value;
        return m_loaded ? m_loaded->get(property, keyword) : PngValue();
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
        const bool isDensity = property == pngPixelsPerMeterX || property == pngPixelsPerMeterY;
        const auto value = m_loaded && isDensity && !hasDensity() ? m_loaded->number(property) : number(property);
        return value ? PngValue(*value) : PngValue();
    }
}

Outcome PngProperties::setText(const std::string& keyword, const PngValue& value) {
    const auto* text = std::get_if<std::string>(&value);
    const bool isRemoval = std::holds_alternative<std::monostate>(value) || (text != nullptr && text->empty());
    if (!isKeyword(keyword)) return refused("PNG allows no such keyword");
    if (!isRemoval && (text == nullptr || !isText(*text))) return refused("PNG allows no such text");
    if (isRemoval) {
        std::erase_if(m_texts, [&](const Text& entry) { return entry.keyword == keyword; });
        return done();
    }
    const auto known = std::ranges::find(m_texts, keyword, &Text::keyword);
    if (known != m_texts.end()) {
        known->value = *text;
    } else {
        m_texts.push_back({keyword, *text});
    }
    return done();
}

Outcome PngProperties::setTime(const PngValue& value) {
    std::optional<PngTime> time;
    if (const auto* text = std::get_if<std::string>(&value)) time = timeOf(*text);
    if (const auto* date = std::get_if<double>(&value)) time = timeOf(*date);
    if (!time && !std::holds_alternative<std::monostate>(value)) return refused("that is no date");
    m_lastModified = time;
    return done();
}

Outcome PngProperties::setNumber(ePngProperties property, const PngValue& value) {
    const auto isThis = [&](const auto& entry) { return entry.first == property; };
    if (rangeOf(property).least > rangeOf(property).most) return refused("there is no such property");
    if (std::holds_alternative<std::monostate>(value)) {
        std::erase_if(m_numbers, isThis);
        return done();
    }
    const auto* number = std::get_if<std::int32_t>(&value);
    if (number == nullptr || *number < rangeOf(property).least || *number > rangeOf(property).most)
        return refused("the property has no such value");
    const auto known = std::ranges::find_if(m_numbers, isThis);
    if (known != m_numbers.end()) {
        known->second = *number;
    } else {
        m_numbers.emplace_back(property, *number);
    }
    return done();
}

std::optional<std::int32_t> PngProperties::number(ePngProperties property) const noexcept {
    for (const auto& [known, value] : m_numbers)
        if (known == property) return value;
    return {};
}

std::optional<std::pair<std::int32_t, std::int32_t>> PngProperties::density() const noexcept {
    const auto x = number(pngPixelsPerMeterX);
    const auto y = number(pngPixelsPerMeterY);
    if (!x && !y) return m_loaded ? m_loaded->density() : std::nullopt;
    return std::pair(x.value_or(y.value_or(0)), y.value_or(x.value_or(0)));
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
