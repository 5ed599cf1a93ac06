#include "cli/Place.h"
#include "cli/EffectParsing.h"
#include "cli/Mistakes.h"
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>

namespace pixkit::cli {

std::int32_t PlaceOnAxis::position(std::int32_t canvas, std::int32_t size) const {
    using Limits = std::numeric_limits<std::int32_t>;
    const double free = static_cast<double>(std::int64_t{canvas} - size);
    const auto start = static_cast<std::int64_t>(std::ceil(free * percent / 100 - 0.5));
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(start + offset, Limits::min(), Limits::max()));
}

// An offset to the right needs room on the right, which is 100 - percent of all that is free; one to the left likewise.
// At an edge itself there is none on its other side.
std::int64_t PlaceOnAxis::canvasFor(std::int32_t size) const {
    constexpr double beyondAnyCanvas = 1e12;
    const double share = offset < 0 ? -percent : 100 - percent;
    if (share != 0) {
        return size + static_cast<std::int64_t>(std::min(std::ceil(offset * 100.0 / share), beyondAnyCanvas));
    }
    return std::int64_t{size} - std::abs(std::int64_t{offset});
}

namespace {

enum class Axis { either, x, y };

struct Anchor {
    std::string_view word;
    Axis axis;
    double percent;
};
constexpr std::array<Anchor, 7> anchors = {{{"left", Axis::x, 0},
                                            {"right", Axis::x, 100},
                                            {"top", Axis::y, 0},
                                            {"bottom", Axis::y, 100},
                                            {"center", Axis::either, 50},
                                            {"centre", Axis::either, 50},
                                            {"middle", Axis::either, 50}}};

struct Coordinate {
    Axis axis = Axis::either;
    bool isWord = false;
    PlaceOnAxis place;
};

bool readOffset(std::string_view text, std::int32_t& offset) {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) return false;
    }
    return parseEntirely(text, offset);
}

std::optional<Coordinate> readCoordinate(std::string_view text) {
    Coordinate coordinate;
    if (parseEntirely(text, coordinate.place.offset)) return coordinate;
    const std::size_t sign = std::min(text.find_first_of("+-"), text.size());
    if (sign < text.size() && !readOffset(text.substr(sign), coordinate.place.offset)) return {};
    text = text.substr(0, sign);
    double& percent = coordinate.place.percent;
    if (text.ends_with('%')) {
        text.remove_suffix(1);
        return parseEntirely(text, percent) && percent >= 0 && percent <= 100 ? std::optional(coordinate)
                                                                              : std::nullopt;
    }
    const std::string word = toLower(text);
    const auto found = std::ranges::find_if(anchors, [&](const Anchor& anchor) { return word == anchor.word; });
    if (found == anchors.end()) return {};
    percent = found->percent;
    coordinate.axis = found->axis;
    coordinate.isWord = true;
    return coordinate;
}

} // namespace

std::optional<Place> readPlace(std::string_view text) {
    const std::size_t comma = text.find(',');
    std::optional<Coordinate> x = readCoordinate(text.substr(0, comma));
    std::optional<Coordinate> y = Coordinate{Axis::either, true, {50, 0}};
    if (comma != std::string_view::npos) {
        y = readCoordinate(text.substr(comma + 1));
    } else if (x && !x->isWord) {
        return {}; // a number alone does not say of which axis it is
    }
    if (!x || !y) return {};
    if (x->axis == Axis::y || y->axis == Axis::x) std::swap(x, y); // words say themselves where they belong
    if (x->axis == Axis::y || y->axis == Axis::x) return {};
    return Place{x->place, y->place};
}

Place parsePlace(std::string_view text) {
    if (const auto place = readPlace(text)) return *place;
    const std::vector<std::string_view> known = wordsOf(anchors, &Anchor::word);
    for (std::size_t begin = 0; begin < text.size();) { // of each word between what is no letter
        const std::size_t end = std::min(text.find_first_of(",+-", begin), text.size());
        const std::string word = toLower(text.substr(begin, end - begin));
        const std::string suggestion = std::ranges::count(known, word) == 0 ? suggestionFor(word, known) : "";
        if (!suggestion.empty()) throw UsageError("'" + std::string(text) + "' is not a place; " + suggestion);
        begin = end + 1;
    }
    throw UsageError("'" + std::string(text) +
                     "' is not a place; write X,Y, such as 20,30 or right-10,bottom-10 or 50%,top, or one word of "
                     "center, left, right, top and bottom");
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
