// Text, measured and drawn.
#include "platform/text.h"
#include "render/TextDrawing.h"
#include "shared/checked.h"
#include "surface/attempt.h"
#include <cmath>
#include <memory>

namespace pixkit {

namespace {

using TextFont = std::unique_ptr<platform::TextFont>;
using UniqueFont = platform::UniqueHandle<platform::DeleteObject>;

constexpr Reason noText = "no text can be drawn here";
constexpr Reason noFont = "the system cannot draw with the font";

// The font behind a handle, or why there is none.
Outcome openFont(std::intptr_t hFont, TextFont& font) {
    if (!platform::canDrawText()) return refused(noText);
    if (platform::GetObjectType(hFont) != platform::ObjectType::font) return refused("the handle is no font");
    font = platform::openFont(hFont);
    return doneIf(font != nullptr, noFont);
}

Outcome openFont(const platform::StdFont& stdFont, TextFont& font) {
    if (!platform::canDrawText()) return refused(noText);
    const UniqueFont made(platform::CreateFontIndirectW(platform::recordOf(stdFont)));
    return made ? openFont(made.get(), font) : refused("the system has no font to offer");
}

// Onto the image of `sheet` where the caller names no other destination. `Font` is a handle or a StdFont.
template <class Font>
Outcome draw(cPixSheet& sheet, const Font& chosen, TextDrawing drawing) {
    if (drawing.destinationDC == 0 && drawing.destHostDIB == nullptr) {
        if (sheet.Handle() == 0) return refused(noImage);
        drawing.destHostDIB = &sheet;
    }
    if (drawing.form.width < 0 || drawing.form.height < 0) return refused("a size of the rectangle is negative");
    if (!std::isfinite(drawing.Angle)) return refused("the angle is no number");
    TextFont font;
    if (Outcome isOpen = openFont(chosen, font); !isOpen) return isOpen;
    return spt_DrawText(sheet, *font, drawing);
}

template <class Font>
Outcome measure(const Font& chosen, const std::string& Text, const TextForm& form, std::int32_t& Width,
                std::int32_t& Height) {
    if (form.width < 0) return refused("the greatest width is negative");
    TextFont font;
    if (Outcome isOpen = openFont(chosen, font); !isOpen) return isOpen;
    TextLayout layout(*font);
    if (Outcome isLaidOut = layout.layOut(Text, form); !isLaidOut) return isLaidOut;
    const auto width = toLong(layout.neededWidth()), height = toLong(layout.neededHeight());
    if (!width || !height) return refused("the text is larger than 32 bits can tell");
    Width = *width;
    Height = *height;
    return done();
}

} // namespace

bool cPixSheet::DrawText_hFont(std::intptr_t destinationDC, std::intptr_t hFont, const std::string& Text,
                               std::int32_t destX, std::int32_t destY, std::int32_t destWidth, std::int32_t destHeight,
                               std::int32_t Color, std::int32_t Opacity, std::int32_t Alignment, bool WordWrap,
                               float Angle, cPixSheet* destHostDIB) noexcept {
    const TextDrawing drawing{destinationDC, destHostDIB, Text,
                              destX,         destY,       {destWidth, destHeight, Alignment, WordWrap},
                              Color,         Opacity,     Angle};
    const Call call(*this, "DrawText_hFont",
                    "destinationDC, hFont, Text, destX, destY, destWidth, destHeight, Color, Opacity, Alignment, "
                    "WordWrap, Angle, destHostDIB",
                    destinationDC, hFont, Text, destX, destY, destWidth, destHeight, Color, Opacity, Alignment,
                    WordWrap, Angle, destHostDIB);
    return attempt(call, [&] { return draw(*this, hFont, drawing); });
}

bool cPixSheet::DrawText_stdFont(std::intptr_t destinationDC, const platform::StdFont& Font, const std::string& Text,
                                 std::int32_t destX, std::int32_t destY, std::int32_t destWidth,
                                 std::int32_t destHeight, std::int32_t Color, std::int32_t Opacity,
                                 std::int32_t Alignment, bool WordWrap, float Angle, cPixSheet* destHostDIB) noexcept {
    const TextDrawing drawing{destinationDC, destHostDIB, Text,
                              destX,         destY,       {destWidth, destHeight, Alignment, WordWrap},
                              Color,         Opacity,     Angle};
    const Call call(*this, "DrawText_stdFont",
                    "destinationDC, Font, Text, destX, destY, destWidth, destHeight, Color, Opacity, Alignment, "
                    "WordWrap, Angle, destHostDIB",
                    destinationDC, Font.Name, Text, destX, destY, destWidth, destHeight, Color, Opacity, Alignment,
                    WordWrap, Angle, destHostDIB);
    return attempt(call, [&] { return draw(*this, Font, drawing); });
}

bool cPixSheet::MeasureText_hFont(std::intptr_t hFont, const std::string& Text, std::int32_t& Width,
                                  std::int32_t& Height, std::int32_t maxWidth, bool WordWrap,
                                  std::int32_t Alignment) const noexcept {
    const Call call(*this, "MeasureText_hFont", "hFont, Text, Width, Height, maxWidth, WordWrap, Alignment", hFont,
                    Text, Width, Height, maxWidth, WordWrap, Alignment);
    return attempt(call, [&] { return measure(hFont, Text, {maxWidth, 0, Alignment, WordWrap}, Width, Height); });
}

bool cPixSheet::MeasureText_stdFont(const platform::StdFont& Font, const std::string& Text, std::int32_t& Width,
                                    std::int32_t& Height, std::int32_t maxWidth, bool WordWrap,
                                    std::int32_t Alignment) const noexcept {
    const Call call(*this, "MeasureText_stdFont", "Font, Text, Width, Height, maxWidth, WordWrap, Alignment", Font.Name,
                    Text, Width, Height, maxWidth, WordWrap, Alignment);
    return attempt(call, [&] { return measure(Font, Text, {maxWidth, 0, Alignment, WordWrap}, Width, Height); });
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
