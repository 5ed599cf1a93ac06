// What the effects' arguments are made of.
#pragma once
#include "cli/Colour.h"
#include "cli/Effects.h"
#include "cli/Scaling.h"
#include "cli/Text.h"
#include <charconv>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace pixkit::cli {

// False, and the value as it was, when something stands behind the number, or it is none.
template <class Number>
bool parseEntirely(std::string_view text, Number& value) {
    const char* const end = text.data() + text.size();
    Number read{};
    const auto result = std::from_chars(text.data(), end, read);
    if (result.ec != std::errc{} || result.ptr != end) return false;
    value = read;
    return true;
}

// 'WxH', both at least 1. Throws UsageError.
PictureSize parseSize(std::string_view text);

// Puts a fresh image of that size in the picture's place, with what `draw` makes of the picture on it.
bool redraw(cPixSheet& sheet, PictureSize size, const std::function<bool(cPixSheet& canvas)>& draw);
bool drawOn(cPixSheet& canvas, cPixSheet& sheet, std::int32_t x, std::int32_t y, std::int32_t opacity = 100,
            float angle = 0);

// 'P' or 'P%', a whole number from 1 to 100. Throws UsageError.
std::int32_t parsePercentage(const std::string& text);
// Degrees, -36000 .. 36000. Throws UsageError.
float parseAngle(const std::string& text);

// A COLORREF as C++ has it; its digits stand in the order blue, green, red.
std::string colourLiteral(std::int32_t colour);

// Looks at every pixel and sets Alpha accordingly: after drawing onto a fresh image nothing else knows it.
void classifyAlpha(cPixSheet& sheet);

// Effects that give the picture another size or draw it (cli/DrawingEffects.cpp).
EffectStep parseResize(const std::string& argument);
EffectStep parseResizeFilter(const std::string& argument);
EffectStep parseNearest(const std::string& argument);
EffectStep parseRotate(const std::string& argument);
EffectStep parseOpacity(const std::string& argument);
EffectStep parseShadow(const std::string& argument);
EffectStep parseCheckerboard(const std::string& argument);
EffectStep parseTile(const std::string& argument);
EffectStep parseTrim(const std::string& argument);

// Effects that give the picture another frame or background (cli/FramingEffects.cpp).
EffectStep parseCrop(const std::string& argument);
EffectStep parsePad(const std::string& argument);
EffectStep parseFlatten(const std::string& argument);
EffectStep parseStrip(const std::string& argument);

// Draws text (cli/TextEffect.cpp).
EffectStep parseText(const std::string& argument);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
