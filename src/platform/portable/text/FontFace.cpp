#include "platform/portable/text/FontFace.h"
#include "platform/files.h"
#include "platform/portable/text/GlyphBitmap.h"
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <freetype/ftadvanc.h>
#include <freetype/tttables.h>
#include <new>

namespace pixkit::platform {

namespace {

constexpr std::int64_t biggestFile = std::int64_t{256} << 20; // bytes of a font file that is read at once
constexpr std::int64_t mostPixels = 0xFFFF;                   // of the em square: FreeType's limit, and GDI's
constexpr std::int64_t biggestLook = std::int64_t{32} << 10;  // pixels of a glyph that is kept rendered
constexpr std::size_t mostBytesOfLooks = std::size_t{4} << 20;

// All of a file; nothing when it cannot be read or is unreasonably big.
std::vector<std::uint8_t> contentOf(const std::string& name) {
    const UniqueFile file(CreateFileW(name, FileUse::openExisting));
    if (!file) return {};
    const std::int64_t size = GetFileSize(file.get());
    if (size <= 0 || size > biggestFile) return {};
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size));
    std::uint32_t done = 0;
    if (!ReadFile(file.get(), bytes.data(), static_cast<std::uint32_t>(size), done) || done != bytes.size()) return {};
    return bytes;
}

const TT_OS2* os2Of(FT_Face face) noexcept {
    return static_cast<const TT_OS2*>(FT_Get_Sfnt_Table(face, FT_SFNT_OS2));
}

// How far a font reaches above and below its baseline, in its own units, as GDI takes it.
struct Reach {
    FT_Long ascent, descent;
};
Reach reachOf(FT_Face face) noexcept {
    const TT_OS2* os2 = os2Of(face);
    if (os2 != nullptr && os2->usWinAscent + os2->usWinDescent != 0)
        return {os2->usWinAscent, std::abs(static_cast<std::int16_t>(os2->usWinDescent))};
    return {face->ascender, -face->descender};
}

} // namespace

std::unique_ptr<FontFace> FontFace::of(Face face, bool isBold, bool isItalic, const FontRecord& record) {
    auto* const opened = face.get();
    if (!FT_IS_SCALABLE(opened) && opened->num_fixed_sizes <= 0) return nullptr;
    // Symbol fonts have a table of their own kind, which is not chosen by itself.
    if (opened->charmap == nullptr && opened->num_charmaps > 0) FT_Set_Charmap(opened, opened->charmaps[0]);
    std::unique_ptr<FontFace> result(new FontFace(std::move(face)));
    constexpr std::int32_t boldFrom = 551; // as GDI decides
    result->m_isEmboldened = record.weight >= boldFrom && !isBold;
    result->m_isSlanted = record.italic && !isItalic;
    return result;
}

std::unique_ptr<FontFace> FontFace::ofSystem(FT_Library library, const FontFile& file, const FontRecord& record) {
    FT_Face opened = nullptr;
    if (FT_New_Face(library, file.path.c_str(), file.index, &opened) != 0) return nullptr;
    return of(Face(opened, &FT_Done_Face), file.isBold, file.isItalic, record);
}

std::unique_ptr<FontFace> FontFace::ofUser(FT_Library library, const FontRecord& record) {
    std::vector<std::uint8_t> bytes = contentOf(record.Name);
    FT_Face opened = nullptr;
    if (bytes.empty() || FT_New_Memory_Face(library, bytes.data(), static_cast<FT_Long>(bytes.size()), 0, &opened) != 0)
        return nullptr;
    Face face(opened, &FT_Done_Face);
    const bool isBold = (opened->style_flags & FT_STYLE_FLAG_BOLD) != 0;
    const bool isItalic = (opened->style_flags & FT_STYLE_FLAG_ITALIC) != 0;
    auto result = of(std::move(face), isBold, isItalic, record);
    if (result) result->m_file = std::move(bytes); // where they lie does not change
    return result;
}

// --- sizes

bool FontFace::setHeight(std::int32_t height) noexcept {
    constexpr std::int32_t systemHeight = 16; // of a line: what GDI takes for 0
    if (height == 0) height = systemHeight;
    if (!FT_IS_SCALABLE(m_face.get())) return setStrike(height);
    if (height < 0) return setPixels(-std::int64_t{height});
    const Reach reach = reachOf(m_face.get());
    const std::int64_t cell = reach.ascent + reach.descent;
    if (cell <= 0) return setPixels(height);
    return setPixels((std::int64_t{height} * m_face->units_per_EM + cell / 2) / cell);
}

bool FontFace::setPixels(std::int64_t pixels) noexcept {
    if (pixels > mostPixels) return false;
    m_emPixels = static_cast<std::int32_t>(std::max<std::int64_t>(pixels, 1));
    if (FT_Set_Pixel_Sizes(m_face.get(), 0, static_cast<FT_UInt>(m_emPixels)) != 0) return false;
    measure();
    return true;
}

// Bitmaps have the sizes that they have: the nearest one serves. Pictures in colour, which come in one size, are
// scaled.
bool FontFace::setStrike(std::int32_t height) noexcept {
    const double wanted = std::abs(static_cast<double>(height));
    const auto sizeOf = [&](int strike) {
        const FT_Bitmap_Size& size = m_face->available_sizes[strike];
        return height < 0 ? static_cast<double>(size.y_ppem) / 64 : static_cast<double>(size.height);
    };
    int nearest = 0;
    for (int i = 1; i < m_face->num_fixed_sizes; ++i)
        if (std::abs(sizeOf(i) - wanted) < std::abs(sizeOf(nearest) - wanted)) nearest = i;
    if (FT_Select_Size(m_face.get(), nearest) != 0 || wanted > static_cast<double>(mostPixels)) return false;
    if (FT_HAS_COLOR(m_face.get())) m_bitmapScale = wanted / std::max(sizeOf(nearest), 1.0);
    m_emPixels = m_face->size->metrics.y_ppem;
    measure();
    return true;
}

std::int32_t FontFace::scaled(FT_Long units) const noexcept {
    constexpr FT_Long farthest = 1 << 20; // pixels; beyond them are only broken fonts
    const FT_Long pixels = (FT_MulFix(units, m_face->size->metrics.y_scale) + 32) >> 6;
    return static_cast<std::int32_t>(std::clamp(pixels, -farthest, farthest));
}

void FontFace::measure() noexcept {
    m_metrics.isScalable = FT_IS_SCALABLE(m_face.get());
    if (m_metrics.isScalable) {
        const Reach reach = reachOf(m_face.get());
        const TT_OS2* os2 = os2Of(m_face.get());
        const FT_Long average = os2 != nullptr ? os2->xAvgCharWidth : m_face->max_advance_width / 2;
        m_metrics.ascent = scaled(reach.ascent);
        m_metrics.descent = scaled(reach.descent);
        m_metrics.averageWidth = std::max(scaled(average), 1);
    } else {
        const auto pixels = [&](FT_Pos places) {
            return static_cast<std::int32_t>(std::lround(static_cast<double>(places) / 64 * m_bitmapScale));
        };
        m_metrics.ascent = pixels(m_face->size->metrics.ascender);
        m_metrics.descent = pixels(-m_face->size->metrics.descender);
        m_metrics.averageWidth = std::max(pixels(m_face->size->metrics.max_advance), 1);
    }
}

namespace {

// A line around a height above the baseline, in pixels.
TextRule ruleAt(std::int32_t middle, std::int32_t thickness) noexcept {
    thickness = std::max(thickness, 1);
    return {.top = -(middle + thickness / 2), .thickness = thickness};
}

} // namespace

TextRule FontFace::underline() const noexcept {
    if (!m_metrics.isScalable) return {.top = 0, .thickness = std::max(m_metrics.ascent, 0) / 20 + 1};
    // FreeType gives the middle of the line, and GDI takes the font's own word, its upper edge, for the middle.
    const FT_Long edge = m_face->underline_position + m_face->underline_thickness / 2;
    return ruleAt(scaled(edge), scaled(m_face->underline_thickness));
}

TextRule FontFace::strikeOut() const noexcept {
    const TT_OS2* os2 = m_metrics.isScalable ? os2Of(m_face.get()) : nullptr;
    if (os2 == nullptr) return {.top = -m_metrics.ascent / 2, .thickness = std::max(m_metrics.ascent, 0) / 20 + 1};
    return ruleAt(scaled(os2->yStrikeoutPosition), scaled(os2->yStrikeoutSize));
}

// --- glyphs

bool FontFace::has(char32_t character) const noexcept {
    if (FT_Get_Char_Index(m_face.get(), character) != 0) return true;
    // Symbol fonts have theirs in a private area.
    return m_face->charmap != nullptr && m_face->charmap->encoding == FT_ENCODING_MS_SYMBOL && character <= 0xFF &&
           FT_Get_Char_Index(m_face.get(), 0xF000 + character) != 0;
}

std::int32_t FontFace::plainAdvance(std::uint32_t index) const noexcept {
    FT_Fixed advance = 0;
    if (FT_Get_Advance(m_face.get(), index, FT_LOAD_NO_HINTING, &advance) != 0) return 0;
    return static_cast<std::int32_t>((advance + 512) >> 10);
}

bool FontFace::load(std::uint32_t index, FT_Int32 flags) const {
    const FT_Error error = FT_Load_Glyph(m_face.get(), index, flags);
    if (FT_ERROR_BASE(error) == FT_Err_Out_Of_Memory) throw std::bad_alloc(); // nothing is known of the glyph then
    return error == 0;
}

bool FontFace::loadOutline(std::uint32_t index, bool isHinted) const {
    const FT_Int32 hinting = isHinted ? FT_LOAD_TARGET_LCD : FT_LOAD_NO_HINTING;
    if (!load(index, FT_LOAD_NO_BITMAP | hinting)) return false;
    if (m_face->glyph->format != FT_GLYPH_FORMAT_OUTLINE) return false;
    FT_Outline& outline = m_face->glyph->outline;
    if (m_isEmboldened) FT_Outline_Embolden(&outline, FT_Pos{m_emPixels} * 64 / 24);
    if (m_isSlanted) {
        const FT_Matrix slant{0x10000, 0x4000, 0, 0x10000}; // GDI's
        FT_Outline_Transform(&outline, &slant);
    }
    return true;
}

FontFace::Glyph FontFace::measured(std::uint32_t index) const {
    Glyph glyph;
    auto* const slot = m_face->glyph;
    if (!m_metrics.isScalable) {
        glyph.ink = lookOfBitmap(m_face.get(), index, m_bitmapScale).box;
        glyph.advance =
            static_cast<std::int32_t>(std::lround(static_cast<double>(slot->advance.x) / 64 * m_bitmapScale));
        return glyph;
    }
    // Widths are those of hinting for shades of gray, even though the pixels are hinted for thirds of them.
    if (load(index, FT_LOAD_NO_BITMAP) || load(index, FT_LOAD_NO_BITMAP | FT_LOAD_NO_HINTING))
        glyph.advance = static_cast<std::int32_t>((slot->advance.x + 32) >> 6);
    if (loadOutline(index, false)) glyph.ink = pixelsOf(slot->outline);
    if (loadOutline(index, true)) {
        Rect hinted = pixelsOf(slot->outline);
        if (!isEmpty(hinted)) {
            --hinted.left; // what the filter reaches
            ++hinted.right;
        }
        glyph.ink = unionOf(glyph.ink, hinted);
    }
    return glyph;
}

FontFace::Glyph& FontFace::find(std::uint32_t index) {
    const auto known = m_glyphs.find(index);
    return known != m_glyphs.end() ? known->second : m_glyphs.emplace(index, measured(index)).first->second;
}

// GDI cuts glyphs off above the font's ascent and below its descent.
Rect FontFace::drawnPart(const Rect& ink) const noexcept {
    if (!m_metrics.isScalable) return ink;
    const Rect line{ink.left, -m_metrics.ascent, ink.right, m_metrics.descent};
    return intersection(ink, line);
}

// The part of a glyph that lies in an area; a bitmap all of it.
bool FontFace::render(std::uint32_t index, const Rect& area, Subpixels& look) const {
    if (!m_metrics.isScalable) {
        look = lookOfBitmap(m_face.get(), index, m_bitmapScale);
        return true;
    }
    look = Subpixels(area);
    return (loadOutline(index, true) || loadOutline(index, false)) &&
           renderSubpixels(m_face->glyph->library, m_face->glyph->outline, look);
}

bool FontFace::keepLook(std::uint32_t index, Glyph& glyph) {
    if (m_bytesOfLooks > mostBytesOfLooks) {
        for (auto& [otherIndex, other] : m_glyphs)
            other.look.reset();
        m_bytesOfLooks = 0;
    }
    Subpixels look;
    if (!render(index, drawnPart(glyph.ink), look)) return false;
    m_bytesOfLooks += look.bytes.size();
    glyph.look = std::move(look);
    return true;
}

bool FontFace::draw(std::uint32_t index, std::int64_t x, std::int64_t y, Subpixels& line) {
    Glyph& glyph = find(index);
    const Rect part = drawnPart(glyph.ink);
    if (isEmpty(part)) return true;
    if (!glyph.look && widthOf(part) * heightOf(part) <= biggestLook && !keepLook(index, glyph)) return false;
    if (glyph.look) {
        line.add(*glyph.look, x, y);
        return true;
    }
    // Of a big one only what is seen is rendered; a pixel more on both sides is for the filter.
    Rect seen = shifted(line.box, -x, -y);
    --seen.left;
    ++seen.right;
    seen = intersection(seen, part);
    Subpixels look;
    if (isEmpty(seen)) return true;
    if (!render(index, seen, look)) return false;
    line.add(look, x, y);
    return true;
}

bool FontFace::drawTurned(std::uint32_t index, const TextTurn& place, std::uint8_t* mask, std::int32_t width,
                          std::int32_t height) {
    if (isEmpty(find(index).ink)) return true;
    if (!m_metrics.isScalable) {
        Subpixels line({0, 0, width, height});
        if (!draw(index, std::llround(place.x), std::llround(place.y), line)) return false;
        line.addMeans(mask, width);
        return true;
    }
    if (!loadOutline(index, false)) return false;
    FT_Outline& outline = m_face->glyph->outline;
    turn(outline, place);
    return renderPixels(m_face->glyph->library, outline, mask, width, height);
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
