// Effects that give the picture another frame, or something behind it.
#include "cli/EffectParsing.h"
#include "cli/Place.h"
#include "cli/Saving.h"
#include "cli/UsageError.h"
#include "surface/HostAccess.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <limits>

namespace pixkit::cli {

namespace {

std::string sizeText(PictureSize size) {
    return std::to_string(size.width) + " × " + std::to_string(size.height);
}

// 'WxH', and '@PLACE' or '+X+Y' behind it.
struct Frame {
    PictureSize size{};
    Place place{{50, 0}, {50, 0}};
};

Frame parseFrame(std::string_view text) {
    Frame frame;
    const std::size_t at = text.find_first_of("@+-");
    frame.size = parseSize(text.substr(0, at));
    if (at == std::string_view::npos) return frame;
    if (text[at] == '@') {
        frame.place = parsePlace(text.substr(at + 1));
        return frame;
    }
    const std::size_t second = text.find_first_of("+-", at + 1);
    const auto read = [&](std::string_view number, std::int32_t& offset) {
        if (number.starts_with('+')) number.remove_prefix(1);
        return parseEntirely(number, offset);
    };
    frame.place = {};
    if (second == std::string_view::npos || !read(text.substr(at, second - at), frame.place.x.offset) ||
        !read(text.substr(second), frame.place.y.offset)) {
        throw UsageError("'" + std::string(text.substr(at)) +
                         "' is not a place; write +X+Y, such as +20+30, or @PLACE, such as @center or @20,30");
    }
    return frame;
}

// What a frame, of that length and that begins there, has of a picture.
struct Part {
    std::int32_t start, length;
};
Part partOf(std::int32_t picture, std::int64_t start, std::int32_t length) {
    const std::int64_t from = std::clamp<std::int64_t>(start, 0, picture);
    const std::int64_t to = std::clamp<std::int64_t>(start + length, from, picture);
    return {static_cast<std::int32_t>(from), static_cast<std::int32_t>(to - from)};
}

} // namespace

EffectStep parseCrop(const std::string& argument) {
    const Frame frame = parseFrame(argument);
    return {"", "Cut to " + sizeText(frame.size), "InitializeDIB(w, h), Render(…)", {}, [frame](cPixSheet& sheet) {
                const auto& [size, place] = frame;
                const Part x = partOf(sheet.Width(), place.x.position(sheet.Width(), size.width), size.width);
                const Part y = partOf(sheet.Height(), place.y.position(sheet.Height(), size.height), size.height);
                if (x.length == 0 || y.length == 0)
                    return HostAccess::outcome(sheet, refused("nothing of the picture lies there"));
                return redraw(sheet, {x.length, y.length},
                              [&](cPixSheet& canvas) { return drawOn(canvas, sheet, -x.start, -y.start); });
            }};
}

EffectStep parsePad(const std::string& argument) {
    const std::size_t colon = argument.find(':');
    const std::string text = argument.substr(0, colon);
    const Colour colour = colon == std::string::npos ? Colour{0, 0} : parseAnyColour(argument.substr(colon + 1));
    Frame frame;
    std::int32_t border = 0;
    const bool isBorder = parseEntirely(text, border);
    if (!isBorder) frame = parseFrame(text);
    if (isBorder && (border < 1 || border > 65535)) {
        throw UsageError("'" + text + "' is not a border from 1 to 65535 pixels");
    }
    return {"", isBorder ? "With a border of " + text : "With a border, at least " + sizeText(frame.size),
            "InitializeDIB(w, h), Render(…)", colour.rgb, [=](cPixSheet& sheet) {
                constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
                const auto side = [&](std::int32_t picture, std::int32_t wanted) {
                    const std::int64_t length = isBorder ? std::int64_t{picture} + 2 * border : wanted;
                    return static_cast<std::int32_t>(std::clamp<std::int64_t>(length, picture, most));
                };
                const PictureSize size{side(sheet.Width(), frame.size.width), side(sheet.Height(), frame.size.height)};
                return redraw(sheet, size, [&](cPixSheet& canvas) {
                    fillWith(canvas, colour);
                    return drawOn(canvas, sheet, frame.place.x.position(size.width, sheet.Width()),
                                  frame.place.y.position(size.height, sheet.Height()));
                });
            }};
}

EffectStep parseFlatten(const std::string& argument) {
    const std::int32_t colour = parseColour(argument);
    return {"", "Put on a colour", "Render(…)", colour, [colour](cPixSheet& sheet) { return flatten(sheet, colour); }};
}

EffectStep parseStrip(const std::string&) {
    return {"", "Without what the file says", "PngPropertySet", {}, [](cPixSheet& sheet) {
                HostAccess::loadedProperties(sheet, nullptr);
                return true;
            }};
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
