// Fonts and lines of text through FreeType, fontconfig, FriBidi and HarfBuzz.
#include "platform/text.h"
#include "platform/faults.h"
#include "platform/portable/gdi/GdiObjects.h"
#include "platform/portable/text/OpenFont.h"
#include <new>
#include <utility>

namespace pixkit::platform {

namespace {

class SharedFont final : public TextFont {
  public:
    explicit SharedFont(std::shared_ptr<OpenFont> font) noexcept : m_font(std::move(font)) {}

    const FontMetrics& metrics() const noexcept override { return m_font->metrics(); }

    std::unique_ptr<TextLine> layOut(std::u32string_view text, bool isRightToLeft) noexcept override {
        if (faultDue(SeamCall::layOutText) || text.empty() || text.size() > longestLine) return nullptr;
        try {
            return m_font->layOut(text, isRightToLeft);
        } catch (const std::bad_alloc&) {
            return nullptr;
        }
    }

    bool draw(std::span<const PlacedLine> lines, const TextTurn& turn, std::int32_t width, std::int32_t height,
              std::uint8_t* coverage) noexcept override {
        if (faultDue(SeamCall::drawText) || width <= 0 || height <= 0) return false;
        try {
            return m_font->draw(lines, turn, width, height, coverage);
        } catch (const std::bad_alloc&) {
            return false;
        }
    }

  private:
    std::shared_ptr<OpenFont> m_font;
};

} // namespace

Handle CreateFontIndirectW(const FontRecord& record) noexcept {
    if (faultDue(SeamCall::createFont)) return 0;
    try {
        auto object = std::make_shared<GdiObject>();
        object->type = ObjectType::font;
        object->font = OpenFont::open(record);
        return object->font ? gdi().objects.add(std::move(object)) : 0;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

std::unique_ptr<TextFont> openFont(Handle font) noexcept {
    const ObjectRef object = findObject(font, ObjectType::font);
    if (!object || faultDue(SeamCall::openFont)) return nullptr;
    try {
        return std::make_unique<SharedFont>(object->font);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

bool canDrawText() noexcept {
    return true;
}

bool takesFontFiles() noexcept {
    return true;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
