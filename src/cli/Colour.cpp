#include "cli/Colour.h"
#include "cli/EffectParsing.h"
#include "cli/Mistakes.h"
#include "cli/Text.h"
#include "cli/UsageError.h"
#include "surface/HostAccess.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <vector>

namespace pixkit::cli {

namespace {

struct NamedColour {
    std::string_view name;
    std::uint32_t rgb; // red in the highest byte, as in #rrggbb
};

// CSS Color Module Level 4, section 6.1.
constexpr NamedColour namedColours[] = {{"aliceblue", 0xF0F8FF},
                                        {"antiquewhite", 0xFAEBD7},
                                        {"aqua", 0x00FFFF},
                                        {"aquamarine", 0x7FFFD4},
                                        {"azure", 0xF0FFFF},
                                        {"beige", 0xF5F5DC},
                                        {"bisque", 0xFFE4C4},
                                        {"black", 0x000000},
                                        {"blanchedalmond", 0xFFEBCD},
                                        {"blue", 0x0000FF},
                                        {"blueviolet", 0x8A2BE2},
                                        {"brown", 0xA52A2A},
                                        {"burlywood", 0xDEB887},
                                        {"cadetblue", 0x5F9EA0},
                                        {"chartreuse", 0x7FFF00},
                                        {"chocolate", 0xD2691E},
                                        {"coral", 0xFF7F50},
                                        {"cornflowerblue", 0x6495ED},
                                        {"cornsilk", 0xFFF8DC},
                                        {"crimson", 0xDC143C},
                                        {"cyan", 0x00FFFF},
                                        {"darkblue", 0x00008B},
                                        {"darkcyan", 0x008B8B},
                                        {"darkgoldenrod", 0xB8860B},
                                        {"darkgray", 0xA9A9A9},
                                        {"darkgreen", 0x006400},
                                        {"darkgrey", 0xA9A9A9},
                                        {"darkkhaki", 0xBDB76B},
                                        {"darkmagenta", 0x8B008B},
                                        {"darkolivegreen", 0x556B2F},
                                        {"darkorange", 0xFF8C00},
                                        {"darkorchid", 0x9932CC},
                                        {"darkred", 0x8B0000},
                                        {"darksalmon", 0xE9967A},
                                        {"darkseagreen", 0x8FBC8F},
                                        {"darkslateblue", 0x483D8B},
                                        {"darkslategray", 0x2F4F4F},
                                        {"darkslategrey", 0x2F4F4F},
                                        {"darkturquoise", 0x00CED1},
                                        {"darkviolet", 0x9400D3},
                                        {"deeppink", 0xFF1493},
                                        {"deepskyblue", 0x00BFFF},
                                        {"dimgray", 0x696969},
                                        {"dimgrey", 0x696969},
                                        {"dodgerblue", 0x1E90FF},
                                        {"firebrick", 0xB22222},
                                        {"floralwhite", 0xFFFAF0},
                                        {"forestgreen", 0x228B22},
                                        {"fuchsia", 0xFF00FF},
                                        {"gainsboro", 0xDCDCDC},
                                        {"ghostwhite", 0xF8F8FF},
                                        {"gold", 0xFFD700},
                                        {"goldenrod", 0xDAA520},
                                        {"gray", 0x808080},
                                        {"green", 0x008000},
                                        {"greenyellow", 0xADFF2F},
                                        {"grey", 0x808080},
                                        {"honeydew", 0xF0FFF0},
                                        {"hotpink", 0xFF69B4},
                                        {"indianred", 0xCD5C5C},
                                        {"indigo", 0x4B0082},
                                        {"ivory", 0xFFFFF0},
                                        {"khaki", 0xF0E68C},
                                        {"lavender", 0xE6E6FA},
                                        {"lavenderblush", 0xFFF0F5},
                                        {"lawngreen", 0x7CFC00},
                                        {"lemonchiffon", 0xFFFACD},
                                        {"lightblue", 0xADD8E6},
                                        {"lightcoral", 0xF08080},
                                        {"lightcyan", 0xE0FFFF},
                                        {"lightgoldenrodyellow", 0xFAFAD2},
                                        {"lightgray", 0xD3D3D3},
                                        {"lightgreen", 0x90EE90},
                                        {"lightgrey", 0xD3D3D3},
                                        {"lightpink", 0xFFB6C1},
                                        {"lightsalmon", 0xFFA07A},
                                        {"lightseagreen", 0x20B2AA},
                                        {"lightskyblue", 0x87CEFA},
                                        {"lightslategray", 0x778899},
                                        {"lightslategrey", 0x778899},
                                        {"lightsteelblue", 0xB0C4DE},
                                        {"lightyellow", 0xFFFFE0},
                                        {"lime", 0x00FF00},
                                        {"limegreen", 0x32CD32},
                                        {"linen", 0xFAF0E6},
                                        {"magenta", 0xFF00FF},
                                        {"maroon", 0x800000},
                                        {"mediumaquamarine", 0x66CDAA},
                                        {"mediumblue", 0x0000CD},
                                        {"mediumorchid", 0xBA55D3},
                                        {"mediumpurple", 0x9370DB},
                                        {"mediumseagreen", 0x3CB371},
                                        {"mediumslateblue", 0x7B68EE},
                                        {"mediumspringgreen", 0x00FA9A},
                                        {"mediumturquoise", 0x48D1CC},
                                        {"mediumvioletred", 0xC71585},
                                        {"midnightblue", 0x191970},
                                        {"mintcream", 0xF5FFFA},
                                        {"mistyrose", 0xFFE4E1},
                                        {"moccasin", 0xFFE4B5},
                                        {"navajowhite", 0xFFDEAD},
                                        {"navy", 0x000080},
                                        {"oldlace", 0xFDF5E6},
                                        {"olive", 0x808000},
                                        {"olivedrab", 0x6B8E23},
                                        {"orange", 0xFFA500},
                                        {"orangered", 0xFF4500},
                                        {"orchid", 0xDA70D6},
                                        {"palegoldenrod", 0xEEE8AA},
                                        {"palegreen", 0x98FB98},
                                        {"paleturquoise", 0xAFEEEE},
                                        {"palevioletred", 0xDB7093},
                                        {"papayawhip", 0xFFEFD5},
                                        {"peachpuff", 0xFFDAB9},
                                        {"peru", 0xCD853F},
                                        {"pink", 0xFFC0CB},
                                        {"plum", 0xDDA0DD},
                                        {"powderblue", 0xB0E0E6},
                                        {"purple", 0x800080},
                                        {"rebeccapurple", 0x663399},
                                        {"red", 0xFF0000},
                                        {"rosybrown", 0xBC8F8F},
                                        {"royalblue", 0x4169E1},
                                        {"saddlebrown", 0x8B4513},
                                        {"salmon", 0xFA8072},
                                        {"sandybrown", 0xF4A460},
                                        {"seagreen", 0x2E8B57},
                                        {"seashell", 0xFFF5EE},
                                        {"sienna", 0xA0522D},
                                        {"silver", 0xC0C0C0},
                                        {"skyblue", 0x87CEEB},
                                        {"slateblue", 0x6A5ACD},
                                        {"slategray", 0x708090},
                                        {"slategrey", 0x708090},
                                        {"snow", 0xFFFAFA},
                                        {"springgreen", 0x00FF7F},
                                        {"steelblue", 0x4682B4},
                                        {"tan", 0xD2B48C},
                                        {"teal", 0x008080},
                                        {"thistle", 0xD8BFD8},
                                        {"tomato", 0xFF6347},
                                        {"turquoise", 0x40E0D0},
                                        {"violet", 0xEE82EE},
                                        {"wheat", 0xF5DEB3},
                                        {"white", 0xFFFFFF},
                                        {"whitesmoke", 0xF5F5F5},
                                        {"yellow", 0xFFFF00},
                                        {"yellowgreen", 0x9ACD32}};

constexpr std::int32_t colorref(std::uint32_t rgb) {
    return static_cast<std::int32_t>((rgb >> 16 & 0xFFU) | (rgb & 0xFF00U) | ((rgb & 0xFFU) << 16));
}

// What stands behind '#'.
std::optional<Colour> readDigits(std::string_view digits) {
    const bool isShort = digits.size() == 3 || digits.size() == 4;
    const bool hasAlpha = digits.size() == 4 || digits.size() == 8;
    std::string all;
    for (const char digit : digits)
        all += std::string(isShort ? 2 : 1, digit); // #f80 is #ff8800
    if (all.size() != 6 && all.size() != 8) return {};
    std::uint32_t value = 0;
    const char* const end = all.data() + all.size();
    if (std::from_chars(all.data(), end, value, 16).ptr != end) return {};
    if (!hasAlpha) return Colour{colorref(value), 255};
    return Colour{colorref(value >> 8), static_cast<std::uint8_t>(value & 0xFF)};
}

// A number, or a percentage of `whole`; of what is out of range, the nearest.
bool readPart(std::string_view text, double whole, double scale, std::uint8_t& value) {
    double number = 0;
    const bool isPercent = text.ends_with('%');
    if (isPercent) text.remove_suffix(1);
    if (!parseEntirely(text, number) || !std::isfinite(number)) return false;
    const double share = isPercent ? number / 100 : number / whole;
    value = static_cast<std::uint8_t>(std::lround(std::clamp(share, 0.0, 1.0) * scale));
    return true;
}

// rgb(R,G,B), rgba(R,G,B,A), with commas, spaces or, before A, a slash between.
std::optional<Colour> readFunction(std::string_view text) {
    const std::size_t open = text.find('(');
    const std::string_view name = text.substr(0, open);
    if ((name != "rgb" && name != "rgba") || !text.ends_with(')')) return {};
    std::vector<std::string_view> parts;
    constexpr std::string_view between = ", /";
    for (std::size_t at = open + 1; (at = text.find_first_not_of(between, at)) < text.size() - 1;) {
        const std::size_t end = std::min(text.find_first_of(between, at), text.size() - 1);
        parts.push_back(text.substr(at, end - at));
        at = end;
    }
    if (parts.size() != 3 && parts.size() != 4) return {};
    std::array<std::uint8_t, 3> rgb{};
    Colour colour;
    for (std::size_t i = 0; i < rgb.size(); ++i)
        if (!readPart(parts[i], 255, 255, rgb[i])) return {};
    if (parts.size() == 4 && !readPart(parts[3], 1, 255, colour.alpha)) return {};
    colour.rgb = rgb[0] | (rgb[1] << 8) | (rgb[2] << 16);
    return colour;
}

std::optional<Colour> readColour(std::string_view text) {
    const std::string word = toLower(text);
    if (word.starts_with('#')) return readDigits(std::string_view(word).substr(1));
    if (word == "transparent") return Colour{0, 0};
    if (const auto colour = readFunction(word)) return colour;
    const auto found = std::ranges::find(namedColours, word, &NamedColour::name);
    return found != std::end(namedColours) ? std::optional(Colour{colorref(found->rgb), 255}) : std::nullopt;
}

} // namespace

Colour parseAnyColour(std::string_view text) {
    if (const auto colour = readColour(text)) return *colour;
    if (readDigits(text))
        throw UsageError("'" + std::string(text) + "' is not a colour; did you mean #" + std::string(text) + "?");
    throw UsageError("'" + std::string(text) + "' is not a colour; " +
                     suggestionOr(text, colourNames(),
                                  "write a name, such as orange, or its parts, such as #ff8000 or rgb(255,128,0)"));
}

std::vector<std::string_view> colourNames() {
    return wordsOf(namedColours, &NamedColour::name);
}

std::int32_t parseColour(std::string_view text) {
    const Colour colour = parseAnyColour(text);
    if (colour.alpha == 255) return colour.rgb;
    throw UsageError("'" + std::string(text) + "' is not opaque, as the colour has to be here");
}

std::string formatColour(std::int32_t colour) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text = "#";
    for (int shift = 0; shift <= 16; shift += 8) {
        text += digits[static_cast<unsigned>(colour) >> (shift + 4) & 15];
        text += digits[static_cast<unsigned>(colour) >> shift & 15];
    }
    return text;
}

void fillWith(cPixSheet& sheet, const Colour& colour) {
    const PixelView pixels = HostAccess::pixels(sheet);
    const auto premultiplied = [&](int shift) {
        const unsigned value = static_cast<unsigned>(colour.rgb) >> shift & 0xFF;
        return static_cast<std::uint8_t>((value * colour.alpha + 127) / 255);
    };
    const std::uint8_t pixel[] = {premultiplied(16), premultiplied(8), premultiplied(0), colour.alpha};
    for (std::size_t i = 0; i < pixels.stride * pixels.height; ++i)
        pixels.bits[i] = pixel[i % 4];
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
