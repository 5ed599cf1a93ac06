// A line of text, laid out: which glyph of which face stands where. FriBidi says in which direction what reads,
// HarfBuzz shapes it; places for breaks are libunibreak's.
#pragma once
#include "platform/portable/text/FontFace.h"
#include "platform/text.h"
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

struct hb_buffer_t;

namespace pixkit::platform {

class OpenFont;

struct PlacedGlyph {
    FontFace* face = nullptr; // the font's
    std::uint32_t index = 0;
    std::int32_t x = 0, y = 0; // from the line's left end on its baseline, y downwards
};

class LaidOutLine final : public TextLine {
  public:
    std::int32_t width() const noexcept override { return m_width; }
    std::span<const Character> characters() const noexcept override { return m_characters; }
    Rect ink() const noexcept override { return m_ink; }
    std::span<const PlacedGlyph> glyphs() const noexcept { return m_glyphs; }

  private:
    friend std::unique_ptr<TextLine> layOutLine(OpenFont& font, std::u32string_view text, bool isRightToLeft);
    void add(FontFace& face, hb_buffer_t* shaped, std::vector<bool>& isFirst);

    std::int32_t m_width = 0;
    std::vector<Character> m_characters;
    std::vector<PlacedGlyph> m_glyphs; // from left to right
    Rect m_ink;
};

// Null on failure; may throw std::bad_alloc.
std::unique_ptr<TextLine> layOutLine(OpenFont& font, std::u32string_view text, bool isRightToLeft);

// Whether a face shows all of these characters: as they are, put together, or by nothing.
bool hasAll(const FontFace& face, std::u32string_view characters) noexcept;

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
