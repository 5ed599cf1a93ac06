// One font of a file at one size, through FreeType: its measures, and how each of its glyphs looks. Sizes, widths and
// pixels are those of GDI for the same file.
#pragma once
#include "platform/portable/text/FontFiles.h"
#include "platform/portable/text/SubpixelMask.h"
#include "platform/text.h"
#include <cstdint>
#include <freetype/freetype.h>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace pixkit::platform {

using FreeType = std::unique_ptr<FT_LibraryRec_, decltype(&FT_Done_FreeType)>;

// A line through or below text: its upper edge, counted downwards from the baseline, and how thick it is.
struct TextRule {
    std::int32_t top = 0, thickness = 0;
};

class FontFace {
  public:
    struct Glyph {
        std::int32_t advance = 0;      // pixels
        Rect ink;                      // the pixels that it may touch, hinted or not, from where it stands
        std::optional<Subpixels> look; // rendered, once it has been drawn, unless it is big
    };

    // The font of a file of the system's, which is read as it is used; or of a file that anybody named, which is read
    // at once, because nobody knows what becomes of it. Null when no font can be drawn from it. May throw
    // std::bad_alloc.
    static std::unique_ptr<FontFace> ofSystem(FT_Library library, const FontFile& file, const FontRecord& record);
    static std::unique_ptr<FontFace> ofUser(FT_Library library, const FontRecord& record);

    // Chooses the size for the height of a record; false for sizes that it does not have.
    bool setHeight(std::int32_t height) noexcept;
    // Pixels of the em square, once it has a size.
    std::int32_t emPixels() const noexcept { return m_emPixels; }
    const FontMetrics& metrics() const noexcept { return m_metrics; }
    TextRule underline() const noexcept;
    TextRule strikeOut() const noexcept;

    // As shaping needs it.
    FT_Face face() const noexcept { return m_face.get(); }
    bool has(char32_t character) const noexcept;
    // May throw std::bad_alloc.
    const Glyph& glyph(std::uint32_t index) { return find(index); }
    // How far it moves on before it is hinted, in 64ths of a pixel.
    std::int32_t plainAdvance(std::uint32_t index) const noexcept;

    // Adds a glyph that stands at x, y. May throw std::bad_alloc.
    bool draw(std::uint32_t index, std::int64_t x, std::int64_t y, Subpixels& line);
    // Adds a turned one to a mask. It is not hinted and its place is exact; what has no outline is not turned.
    bool drawTurned(std::uint32_t index, const TextTurn& place, std::uint8_t* mask, std::int32_t width,
                    std::int32_t height);

  private:
    using Face = std::unique_ptr<FT_FaceRec_, decltype(&FT_Done_Face)>;
    explicit FontFace(Face face) noexcept : m_face(std::move(face)) {}
    static std::unique_ptr<FontFace> of(Face face, bool isBold, bool isItalic, const FontRecord& record);

    bool setPixels(std::int64_t pixels) noexcept;
    bool setStrike(std::int32_t height) noexcept;
    void measure() noexcept;
    std::int32_t scaled(FT_Long units) const noexcept;
    bool load(std::uint32_t index, FT_Int32 flags) const;
    bool loadOutline(std::uint32_t index, bool isHinted) const;
    Glyph measured(std::uint32_t index) const;
    Glyph& find(std::uint32_t index);
    Rect drawnPart(const Rect& ink) const noexcept;
    bool render(std::uint32_t index, const Rect& area, Subpixels& look) const;
    bool keepLook(std::uint32_t index, Glyph& glyph);

    std::vector<std::uint8_t> m_file; // what the face reads, when it does not read a file itself
    Face m_face;
    bool m_isEmboldened = false, m_isSlanted = false;
    std::int32_t m_emPixels = 0;
    double m_bitmapScale = 1; // of pictures of glyphs
    FontMetrics m_metrics;
    std::unordered_map<std::uint32_t, Glyph> m_glyphs;
    std::size_t m_bytesOfLooks = 0;
};

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
