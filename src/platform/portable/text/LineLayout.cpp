#include "platform/portable/text/LineLayout.h"
#include "platform/portable/text/OpenFont.h"
#include <algorithm>
#include <hb.h>
#include <linebreak.h>
#include <raqm.h>

namespace pixkit::platform {

namespace {

using Raqm = std::unique_ptr<raqm_t, decltype(&raqm_destroy)>;

hb_unicode_general_category_t categoryOf(char32_t character) noexcept {
    return hb_unicode_general_category(hb_unicode_funcs_get_default(), character);
}

// Characters that only say how others are shown.
bool isSelector(char32_t character) noexcept {
    return (character >= 0xFE00 && character <= 0xFE0F) || (character >= 0xE0100 && character <= 0xE01EF) ||
           categoryOf(character) == HB_UNICODE_GENERAL_CATEGORY_FORMAT;
}

// What belongs to the character before it, and is drawn with the same font.
bool joins(char32_t before, char32_t character) noexcept {
    constexpr char32_t zeroWidthJoiner = 0x200D;
    const auto category = categoryOf(character);
    return before == zeroWidthJoiner || isSelector(character) ||
           category == HB_UNICODE_GENERAL_CATEGORY_NON_SPACING_MARK ||
           category == HB_UNICODE_GENERAL_CATEGORY_SPACING_MARK ||
           category == HB_UNICODE_GENERAL_CATEGORY_ENCLOSING_MARK ||
           (character >= 0x1F3FB && character <= 0x1F3FF); // colours of skin
}

// Chooses a face for each character. False on failure.
bool chooseFaces(raqm_t* raqm, OpenFont& font, std::u32string_view text, std::vector<FontFace*>& faces) {
    for (std::size_t from = 0; from < text.size();) {
        std::size_t to = from + 1;
        while (to < text.size() && joins(text[to - 1], text[to]))
            ++to;
        FontFace& face = font.faceFor(text.substr(from, to - from));
        faces.insert(faces.end(), to - from, &face);
        from = to;
    }
    for (std::size_t from = 0; from < text.size();) {
        std::size_t to = from + 1;
        while (to < text.size() && faces[to] == faces[from])
            ++to;
        if (!raqm_set_freetype_face_range(raqm, faces[from]->face(), from, to - from)) return false;
        from = to;
    }
    return true;
}

// GDI neither kerns nor joins letters that can stand alone.
bool leaveLettersAlone(raqm_t* raqm) noexcept {
    return raqm_add_font_feature(raqm, "kern=0", -1) && raqm_add_font_feature(raqm, "liga=0", -1) &&
           raqm_add_font_feature(raqm, "clig=0", -1);
}

// 64ths of a pixel to pixels; halves away from 0.
std::int32_t rounded(std::int64_t places) noexcept {
    return static_cast<std::int32_t>((places + (places < 0 ? -32 : 32)) / 64);
}

// The hinted width, and what shaping has made of the plain one: nothing for a mark. The sum of a line's
// stays a number, whatever a broken font says.
std::int32_t advanceOf(FontFace& face, const raqm_glyph_t& glyph) {
    constexpr std::int64_t widest = 1 << 17; // pixels: two em squares of the biggest size
    if (glyph.x_advance == 0) return 0;
    const std::int64_t change = rounded(std::int64_t{glyph.x_advance} - face.plainAdvance(glyph.index));
    return static_cast<std::int32_t>(std::clamp(face.glyph(glyph.index).advance + change, -widest, widest));
}

// The width of glyphs that stand for several characters is shared out among them.
void shareWidths(std::span<TextLine::Character> characters, const std::vector<bool>& isFirst) noexcept {
    for (std::size_t from = 0; from < characters.size();) {
        std::size_t to = from + 1;
        while (to < characters.size() && !isFirst[to])
            ++to;
        std::int32_t rest = characters[from].advance;
        for (std::size_t i = from; i < to; ++i) {
            characters[i].advance = rest / static_cast<std::int32_t>(to - i);
            rest -= characters[i].advance;
        }
        from = to;
    }
}

void findBreaks(const std::vector<std::uint32_t>& text, std::span<TextLine::Character> characters) {
    static const bool isReady = (init_linebreak(), true); // its tables, once
    std::vector<char> after(text.size());
    if (isReady) set_linebreaks_utf32(text.data(), text.size(), "", after.data());
    for (std::size_t i = 1; i < text.size(); ++i)
        characters[i].canBreak = after[i - 1] == LINEBREAK_ALLOWBREAK;
}

} // namespace

bool hasAll(const FontFace& face, std::u32string_view characters) noexcept {
    hb_codepoint_t composed = characters.front();
    bool isComposed = face.has(composed); // all so far are one character that the face has
    bool hasEach = isComposed;
    for (const char32_t character : characters.substr(1)) {
        if (isSelector(character)) continue;
        hasEach = hasEach && face.has(character);
        isComposed = hb_unicode_compose(hb_unicode_funcs_get_default(), composed, character, &composed) != 0 &&
                     face.has(composed);
        if (!hasEach && !isComposed) return false;
    }
    return hasEach || isComposed;
}

std::unique_ptr<TextLine> layOutLine(OpenFont& font, std::u32string_view text, bool isRightToLeft) {
    const Raqm raqm(raqm_create(), &raqm_destroy);
    const std::vector<std::uint32_t> characters(text.begin(), text.end());
    std::vector<FontFace*> faces;
    if (!raqm || text.empty() || !raqm_set_text(raqm.get(), characters.data(), characters.size()) ||
        !raqm_set_par_direction(raqm.get(), isRightToLeft ? RAQM_DIRECTION_RTL : RAQM_DIRECTION_LTR) ||
        !leaveLettersAlone(raqm.get()) || !chooseFaces(raqm.get(), font, text, faces) ||
        !raqm_set_freetype_load_flags(raqm.get(), FT_LOAD_NO_HINTING) || !raqm_layout(raqm.get()))
        return nullptr;
    std::size_t count = 0;
    const raqm_glyph_t* const glyphs = raqm_get_glyphs(raqm.get(), &count);
    if (glyphs == nullptr) return nullptr;

    auto line = std::make_unique<LaidOutLine>();
    line->m_characters.resize(text.size());
    std::vector<bool> isFirst(text.size());
    for (const raqm_glyph_t& glyph : std::span(glyphs, count)) {
        FontFace& face = *faces[glyph.cluster];
        const PlacedGlyph placed{&face, glyph.index, line->m_width + rounded(glyph.x_offset), -rounded(glyph.y_offset)};
        const std::int32_t advance = advanceOf(face, glyph);
        line->m_ink = unionOf(line->m_ink, shifted(face.glyph(glyph.index).ink, placed.x, placed.y));
        line->m_glyphs.push_back(placed);
        line->m_characters[glyph.cluster].advance += advance;
        isFirst[glyph.cluster] = true;
        line->m_width += advance;
    }
    for (const Rect& rule : font.rulesOf(line->m_width))
        line->m_ink = unionOf(line->m_ink, rule);
    shareWidths(line->m_characters, isFirst);
    findBreaks(characters, line->m_characters);
    return line;
}

} // namespace pixkit::platform
