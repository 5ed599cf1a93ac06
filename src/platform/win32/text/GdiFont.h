// A font of the system, and lines laid out with it.
#pragma once
#include "platform/text.h"
#include "platform/win32/text/Uniscribe.h"
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace pixkit::platform {

// The system's analysis of a line, which remembers the device context that it was made with.
class GdiLine final : public TextLine {
  public:
    explicit GdiLine(const Uniscribe& api) noexcept : m_api(api) {}
    ~GdiLine() override;

    // False on failure.
    bool analyse(HDC dc, std::wstring_view units, bool isRightToLeft) noexcept;

    // False when the system does not tell. Throws std::bad_alloc.
    bool measure(std::u32string_view text, std::wstring_view units, const Rect& glyphBox);
    // Where the device context's text alignment is the baseline.
    bool draw(const PlacedLine& at) const noexcept;

    std::int32_t width() const noexcept override { return m_width; }
    std::span<const Character> characters() const noexcept override { return m_characters; }
    Rect ink() const noexcept override { return m_ink; }

  private:
    const Uniscribe& m_api;
    SCRIPT_STRING_ANALYSIS m_analysis = nullptr;
    std::int32_t m_width = 0;
    std::vector<Character> m_characters;
    Rect m_ink;
};

class GdiFont final : public TextFont {
  public:
    // Of a copy of the font. Null on failure. Throws std::bad_alloc.
    static std::unique_ptr<GdiFont> open(HFONT font);

    const FontMetrics& metrics() const noexcept override { return m_metrics; }
    std::unique_ptr<TextLine> layOut(std::u32string_view text, bool isRightToLeft) noexcept override;
    bool draw(std::span<const PlacedLine> lines, const TextTurn& turn, std::int32_t width, std::int32_t height,
              std::uint8_t* coverage) noexcept override;

  private:
    explicit GdiFont(const Uniscribe& api) noexcept : m_api(api) {}
    bool select(HFONT font) noexcept;
    bool setTurn(const TextTurn& turn) noexcept;
    void endTurn() noexcept;
    bool drawAll(std::span<const PlacedLine> lines) const noexcept;
    HDC dc() const noexcept { return reinterpret_cast<HDC>(m_dc.get()); }

    const Uniscribe& m_api;
    UniqueHandle<&DeleteObject> m_font;
    UniqueHandle<&DeleteDC> m_dc; // with the font in it; goes first
    FontMetrics m_metrics;
    Rect m_glyphBox; // what a glyph may reach from its place
};

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
