// Text on a picture: TEXT[:PART]..., where the parts, in any order, say how it looks and where it goes.
#include "cli/EffectParsing.h"
#include "cli/Files.h"
#include "cli/Mistakes.h"
#include "cli/Place.h"
#include "platform/text.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <optional>
#include <vector>

namespace pixkit::cli {

namespace {

// Pixels, or per cent of the picture's height or width.
struct Length {
    std::int32_t pixels = 0;
    double percent = 0; // above 0: counts instead

    std::int32_t of(std::int32_t size) const { return percent > 0 ? percentOf(size, percent) : pixels; }
};

struct TextPicture {
    std::string text;
    platform::StdFont font;
    Length size{24, 0};
    std::optional<Length> width; // where lines are wrapped
    std::int32_t colour = 0;
    std::int32_t opacity = 100;
    float degrees = 0;
    Place place{{50, 0}, {50, 0}};
    std::optional<std::int32_t> alignment;

    bool drawOn(cPixSheet& sheet) const;
};

Length parseLength(const std::string& text, const char* expected) {
    constexpr std::int32_t longest = 32767;
    Length length;
    if (text.ends_with('%')) {
        const std::string_view number = std::string_view(text).substr(0, text.size() - 1);
        if (parseEntirely(number, length.percent) && length.percent > 0 && length.percent <= 100) return length;
    } else if (parseEntirely(text, length.pixels) && length.pixels > 0 && length.pixels <= longest) {
        return length;
    }
    throw UsageError("'" + text + "' is not " + expected);
}

std::int32_t parseAlignment(const std::string& text) {
    if (text == "left") return txtLeft;
    if (text == "center" || text == "centre") return txtCenter;
    if (text == "right") return txtRight;
    constexpr std::string_view known[] = {"left", "center", "right"};
    throw unknownWord(text, "a way to align lines", known);
}

// A family, or the path of a font file, which the system knows by its slash.
std::string parseFont(const std::string& text) {
    const bool hasSlash = text.find_first_of("/\\") != std::string::npos;
    if (!hasSlash && !(toPath(text).has_extension() && isFile(text))) return text;
    if (!isFile(text)) throw UsageError("'" + text + "' is neither a font file nor the name of a family");
    if (platform::canDrawText() && !platform::takesFontFiles()) {
        throw UsageError("'" + text +
                         "' is a font file, which this system draws only when it is installed; name its "
                         "family then");
    }
    return hasSlash ? text : "./" + text;
}

void readPart(TextPicture& picture, const std::string& part) {
    const std::size_t equals = std::min(part.find('='), part.size());
    const std::string key = part.substr(0, equals);
    const std::string value = part.substr(std::min(equals + 1, part.size()));
    if (part == "bold") {
        picture.font.Bold = true;
    } else if (part == "italic") {
        picture.font.Italic = true;
    } else if (key == "font" && !value.empty()) {
        picture.font.Name = parseFont(value);
    } else if (key == "size") {
        picture.size = parseLength(value, "a size in pixels, or in per cent of the picture's height, such as 5%");
    } else if (key == "color" || key == "colour") {
        picture.colour = parseColour(value);
    } else if (key == "at") {
        picture.place = parsePlace(value);
    } else if (key == "opacity") {
        picture.opacity = parsePercentage(value);
    } else if (key == "angle") {
        picture.degrees = parseAngle(value);
    } else if (key == "width") {
        picture.width = parseLength(value, "a width in pixels, or in per cent of the picture's, such as 80%");
    } else if (key == "align") {
        picture.alignment = parseAlignment(value);
    } else {
        constexpr std::string_view known[] = {
            "font=", "size=", "color=", "at=", "opacity=", "angle=", "width=", "align=", "bold", "italic"};
        const std::string word = equals < part.size() ? key + "=" : key;
        throw UsageError("'" + part + "' is no part of a text (a colon in the text itself is written \\:); " +
                         suggestionOr(word, known));
    }
}

// What stands between colons, but for those behind a backslash, and for that of a drive (font=C:\Fonts\sign.ttf).
std::vector<std::string> splitAtColons(const std::string& argument) {
    std::vector<std::string> pieces(1);
    for (std::size_t i = 0; i < argument.size(); ++i) {
        const std::string& piece = pieces.back();
        const char next = i + 1 < argument.size() ? argument[i + 1] : '\0';
        const bool isDrive = piece.size() == 6 && piece.starts_with("font=") && (next == '\\' || next == '/');
        if (argument[i] == ':' && !isDrive) {
            pieces.emplace_back();
        } else {
            pieces.back() += argument[i];
            if (argument[i] == '\\' && next != '\0') pieces.back() += argument[++i];
        }
    }
    return pieces;
}

// \: in all pieces; in the text also \n and \\. Before anything else a backslash is one, as in paths.
std::string unescaped(const std::string& piece, bool isText) {
    std::string result;
    for (std::size_t i = 0; i < piece.size(); ++i) {
        const char next = piece[i] == '\\' && i + 1 < piece.size() ? piece[i + 1] : '\0';
        if (next != ':' && !(isText && (next == 'n' || next == '\\'))) {
            result += piece[i];
            continue;
        }
        result += next == 'n' ? '\n' : next;
        ++i;
    }
    return result;
}

// Lines lean to the edge that the text goes to.
std::int32_t alignmentAt(const PlaceOnAxis& x) {
    if (x.percent == 0) return txtLeft;
    return x.percent == 100 ? txtRight : txtCenter;
}

bool TextPicture::drawOn(cPixSheet& sheet) const {
    constexpr double pointsPerPixel = 72.0 / 96;
    platform::StdFont scaled = font;
    scaled.Size = size.of(sheet.Height()) * pointsPerPixel;
    const bool wraps = width.has_value();
    PictureSize box{wraps ? width->of(sheet.Width()) : 0, 0};
    std::int32_t widest = 0;
    if (!sheet.MeasureText_stdFont(scaled, text, widest, box.height, box.width, wraps)) return false;
    if (!wraps) box.width = widest;
    // What is turned is placed by the space that it takes.
    const PictureSize turned = turnedSize(box, static_cast<double>(degrees));
    const std::int32_t x = place.x.position(sheet.Width(), turned.width) + ((turned.width - box.width + 1) >> 1);
    const std::int32_t y = place.y.position(sheet.Height(), turned.height) + ((turned.height - box.height + 1) >> 1);
    sheet.isAlphaBlendFriendly(false); // which rounds otherwise on some systems: the same bytes everywhere
    if (!sheet.DrawText_stdFont(0, scaled, text, x, y, box.width, box.height, colour, opacity,
                                alignment.value_or(alignmentAt(place.x)), wraps, degrees)) {
        return false;
    }
    classifyAlpha(sheet);
    return true;
}

} // namespace

EffectStep parseText(const std::string& argument) {
    const std::vector<std::string> pieces = splitAtColons(argument);
    TextPicture picture;
    picture.font.Name = "Arial"; // on systems that do not have it, what takes its place
    picture.text = unescaped(pieces.front(), true);
    if (picture.text.empty()) throw UsageError("'" + argument + "' has no text before its parts");
    for (std::size_t i = 1; i < pieces.size(); ++i)
        readPart(picture, unescaped(pieces[i], false));
    return {"", "Text", "DrawText_stdFont(0, font, " + jsonString(picture.text) + ", x, y, …)", picture.colour,
            [picture](cPixSheet& sheet) { return picture.drawOn(sheet); }};
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
