// Text, measured and drawn.
#include "platform/text.h"
#include "surface/attempt.h"
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

} // namespace

bool cPixSheet::DrawText_hFont(std::intptr_t destinationDC, std::intptr_t hFont, const std::string& Text,
                               std::int32_t destX, std::int32_t destY, std::int32_t destWidth, std::int32_t destHeight,
                               std::int32_t Color, std::int32_t Opacity, std::int32_t Alignment, bool WordWrap,
                               float Angle, cPixSheet* destHostDIB) noexcept {
    const Call call(*this, "DrawText_hFont",
                    "destinationDC, hFont, Text, destX, destY, destWidth, destHeight, Color, Opacity, Alignment, "
                    "WordWrap, Angle, destHostDIB",
                    destinationDC, hFont, Text, destX, destY, destWidth, destHeight, Color, Opacity, Alignment,
                    WordWrap, Angle, destHostDIB);
    return attempt(call, [&] {
        TextFont font;
        return openFont(hFont, font);
    });
}

bool cPixSheet::DrawText_stdFont(std::intptr_t destinationDC, const platform::StdFont& Font, const std::string& Text,
                                 std::int32_t destX, std::int32_t destY, std::int32_t destWidth,
                                 std::int32_t destHeight, std::int32_t Color, std::int32_t Opacity,
                                 std::int32_t Alignment, bool WordWrap, float Angle, cPixSheet* destHostDIB) noexcept {
    const Call call(*this, "DrawText_stdFont",
                    "destinationDC, Font, Text, destX, destY, destWidth, destHeight, Color, Opacity, Alignment, "
                    "WordWrap, Angle, destHostDIB",
                    destinationDC, Font.Name, Text, destX, destY, destWidth, destHeight, Color, Opacity, Alignment,
                    WordWrap, Angle, destHostDIB);
    return attempt(call, [&] {
        TextFont font;
        return openFont(Font, font);
    });
}

bool cPixSheet::MeasureText_hFont(std::intptr_t hFont, const std::string& Text, std::int32_t& Width,
                                  std::int32_t& Height, std::int32_t maxWidth, bool WordWrap,
                                  std::int32_t Alignment) const noexcept {
    const Call call(*this, "MeasureText_hFont", "hFont, Text, Width, Height, maxWidth, WordWrap, Alignment", hFont,
                    Text, Width, Height, maxWidth, WordWrap, Alignment);
    return attempt(call, [&] {
        TextFont font;
        return openFont(hFont, font);
    });
}

bool cPixSheet::MeasureText_stdFont(const platform::StdFont& Font, const std::string& Text, std::int32_t& Width,
                                    std::int32_t& Height, std::int32_t maxWidth, bool WordWrap,
                                    std::int32_t Alignment) const noexcept {
    const Call call(*this, "MeasureText_stdFont", "Font, Text, Width, Height, maxWidth, WordWrap, Alignment", Font.Name,
                    Text, Width, Height, maxWidth, WordWrap, Alignment);
    return attempt(call, [&] {
        TextFont font;
        return openFont(Font, font);
    });
}

} // namespace pixkit
