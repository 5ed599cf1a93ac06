#include "cli/Effects.h"
#include "cli/EffectParsing.h"
#include "cli/Mistakes.h"
#include "cli/Text.h"
#include "cli/UsageError.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <array>

namespace pixkit::cli {

std::string colourLiteral(std::int32_t colour) {
    const std::string rgb = formatColour(colour);
    return "0x" + rgb.substr(5, 2) + rgb.substr(3, 2) + rgb.substr(1, 2);
}

namespace {

struct Formula {
    const char* word;
    const char* constant;
    const char* title;
    eGrayScaleFormulas value;
};
constexpr std::array<Formula, 8> formulas = {{
    {"ntscpal", "gsclNTSCPAL", "NTSC / PAL", gsclNTSCPAL},
    {"ccir709", "gsclCCIR709", "CCIR 709", gsclCCIR709},
    {"simpleavg", "gsclSimpleAvg", "simple average", gsclSimpleAvg},
    {"redmask", "gsclRedMask", "red mask", gsclRedMask},
    {"greenmask", "gsclGreenMask", "green mask", gsclGreenMask},
    {"bluemask", "gsclBlueMask", "blue mask", gsclBlueMask},
    {"redgreenmask", "gsclRedGreenMask", "red-green mask", gsclRedGreenMask},
    {"bluegreenmask", "gsclBlueGreenMask", "blue-green mask", gsclBlueGreenMask},
}};

EffectStep parseGrayscale(const std::string& argument) {
    const std::string word = toLower(argument);
    for (const Formula& formula : formulas) {
        if (word != formula.word) continue;
        return {"",
                std::string("Grayscale, ") + formula.title,
                std::string("MakeGrayScale(") + formula.constant + ")",
                {},
                [value = formula.value](cPixSheet& sheet) { return sheet.MakeGrayScale(value); }};
    }
    throw unknownWord(argument, "a grayscale formula", wordsOf(formulas, &Formula::word));
}

EffectStep parseInvert(const std::string&) {
    return {"", "Inverted", "MakeImageInverse()", {}, [](cPixSheet& sheet) { return sheet.MakeImageInverse(); }};
}

EffectStep lightness(const std::string& argument, float sign, const char* direction) {
    float percent = 0;
    // The negated test refuses a NaN as well. Zero would be refused by the member.
    if (!parseEntirely(argument, percent) || !(percent > 0 && percent <= 100)) {
        throw UsageError("'" + argument + "' is not a percentage above 0 and up to 100");
    }
    return {"",
            argument + " % " + direction,
            std::string("MakeLighterDarker(") + (sign < 0 ? "-" : "") + argument + ")",
            {},
            [signedPercent = sign * percent](cPixSheet& sheet) { return sheet.MakeLighterDarker(signedPercent); }};
}

EffectStep parseLighten(const std::string& argument) {
    return lightness(argument, 1.0F, "lighter");
}

EffectStep parseDarken(const std::string& argument) {
    return lightness(argument, -1.0F, "darker");
}

EffectStep parseTransparent(const std::string& argument) {
    const std::int32_t colour = parseColour(argument);
    return {"", "Colour made transparent", "MakeTransparent(" + colourLiteral(colour) + ")", colour,
            [colour](cPixSheet& sheet) { return sheet.MakeTransparent(colour); }};
}

EffectStep parseFill(const std::string& argument) {
    const std::int32_t colour = parseColour(argument);
    return {"", "Empty pixels filled", "MakeTransparent(" + colourLiteral(colour) + ", true)", colour,
            [colour](cPixSheet& sheet) { return sheet.MakeTransparent(colour, true); }};
}

EffectStep parseBlend(const std::string& argument) {
    const std::size_t colon = argument.find(':');
    const std::int32_t colour = parseColour(std::string_view(argument).substr(0, colon));
    std::int32_t opacity = 33;
    if (colon != std::string::npos) {
        const std::string percent = argument.substr(colon + 1);
        if (!parseEntirely(percent, opacity) || opacity < 1 || opacity > 100) {
            throw UsageError("'" + percent + "' is not a whole percentage from 1 to 100");
        }
    }
    return {"", "Blended at " + std::to_string(opacity) + " %",
            "BlendToColor(" + colourLiteral(colour) + ", " + std::to_string(opacity) + ")", colour,
            [colour, opacity](cPixSheet& sheet) { return sheet.BlendToColor(colour, opacity); }};
}

EffectStep parseMirror(const std::string& argument) {
    const std::string axes = toLower(argument);
    if (axes != "x" && axes != "y" && axes != "xy") {
        throw UsageError("'" + argument +
                         "' is not an axis to mirror; known are x (left to right), y (top to bottom) "
                         "and xy");
    }
    const bool x = axes.front() == 'x';
    const bool y = axes.back() == 'y';
    return {"",
            x && y ? "Mirrored both ways"
            : x    ? "Mirrored left to right"
                   : "Mirrored top to bottom",
            std::string("MirrorImage(") + (x ? "true, " : "false, ") + (y ? "true)" : "false)"),
            {},
            [x, y](cPixSheet& sheet) { return sheet.MirrorImage(x, y); }};
}

constexpr std::array<EffectOption, 22> table = {{
    {"--grayscale", "ntscpal|ccir709|simpleavg|redmask|greenmask|bluemask|redgreenmask|bluegreenmask",
     "To grey by one of these formulas", parseGrayscale},
    {"--invert", nullptr, "Each colour to its opposite", parseInvert},
    {"--lighten", "PERCENT", "Lighter by more than 0 and up to 100 %", parseLighten},
    {"--darken", "PERCENT", "Darker by more than 0 and up to 100 %", parseDarken},
    {"--transparent", "COLOUR", "Pixels of exactly this colour become transparent", parseTransparent},
    {"--fill", "COLOUR", "Fully transparent pixels become this colour", parseFill},
    {"--blend", "COLOUR[:PERCENT]", "Mixed with a colour, at 33 % unless said otherwise", parseBlend},
    {"--mirror", "x|y|xy", "x: left to right, y: top to bottom, xy: both", parseMirror},
    {"--resize", "SIZE", "To a size, such as 640x480, 640x, x480 or 50%, in proportion\nunless said otherwise",
     parseResize},
    {"--filter", "auto|area|triangle|mitchell|lanczos|bilinear|nearest",
     "From here on resize by this; auto, unless said otherwise, is\nlanczos where pictures shrink, mitchell where they "
     "grow",
     parseResizeFilter},
    {"--nearest", nullptr, "From here on resize and rotate by nearest pixels, with hard\nedges", parseNearest},
    {"--rotate", "DEGREES", "Clockwise about the centre, onto a picture that holds it all", parseRotate},
    {"--opacity", "PERCENT", "Made translucent, from 1 to 100 %", parseOpacity},
    {"--shadow", "DEPTH[:COLOUR]", "A shadow at the lower right, 0 to 10 pixels soft, of black\nunless said otherwise",
     parseShadow},
    {"--checkerboard", "[=SIZE]", "Put on a checkerboard with squares of 12 pixels unless\nsaid otherwise",
     parseCheckerboard, "12"},
    {"--tile", "WxH", "Repeated over a picture of that size", parseTile},
    {"--trim", nullptr, "Transparent borders cut off", parseTrim},
    {"--crop", "WxH[@PLACE]",
     "That much of it, from its centre unless said otherwise;\nWxH+X+Y is another way to say where", parseCrop},
    {"--pad", "WxH[@PLACE][:COLOUR]",
     "Made at least that large by a border, transparent and\ncentred unless said otherwise; N alone adds N pixels\n"
     "everywhere. A colour lies under all of the picture, too",
     parsePad},
    {"--flatten", "COLOUR", "Put on a colour: nothing is transparent any longer", parseFlatten},
    {"--strip", nullptr, "Without what the file says beside its pixels: texts, density", parseStrip},
    {"--text", "TEXT[:PART]...", "Text, drawn as the parts say: 'pixkit help text'", parseText},
}};

} // namespace

namespace {

// An argument as a person types it: in quotation marks where a shell would read something else. Those that cmd.exe
// knows, too, are taken wherever no shell reads anything between them.
std::string shellWord(const std::string& argument) {
    const bool isPlain = !argument.starts_with('#') && std::ranges::all_of(argument, [](char c) {
        return std::string_view(" \t\n\"'\\$&|;<>()*?[]{}~!`").find(c) == std::string_view::npos;
    });
    if (isPlain) return argument;
    if (argument.find_first_of("$`\\\"%!") == std::string::npos) return '"' + argument + '"';
    std::string word = "'";
    for (const char c : argument)
        word += c == '\'' ? "'\\''" : std::string(1, c);
    return word + "'";
}

} // namespace

std::span<const EffectOption> effectOptions() {
    return table;
}

EffectStep makeStep(const EffectOption& option, const std::string& argument) {
    try {
        EffectStep step = option.parse(argument);
        step.option = option.name;
        step.argument = argument;
        if (option.argumentLeftOut != nullptr) {
            if (argument != option.argumentLeftOut) step.option += "=" + argument;
        } else if (option.argument != nullptr) {
            step.option.append(" ").append(shellWord(argument));
        }
        return step;
    } catch (const UsageError& error) {
        throw UsageError(std::string(option.name) + ": " + error.what());
    }
}

const EffectOption& effectOption(std::string_view name) {
    const auto found = std::ranges::find_if(table, [&](const EffectOption& option) { return name == option.name; });
    if (found == table.end()) throw std::logic_error("no such effect: " + std::string(name));
    return *found;
}

EffectStep makeStep(std::string_view name, const std::string& argument) {
    return makeStep(effectOption(name), argument);
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
