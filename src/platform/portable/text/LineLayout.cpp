#include "platform/portable/text/LineLayout.h"
#include "platform/portable/text/OpenFont.h"
#include <algorithm>
#include <array>
#include <fribidi.h>
#include <hb-ft.h>
#include <linebreak.h>

namespace pixkit::platform {

namespace {

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

// A face for each character.
std::vector<FontFace*> facesFor(OpenFont& font, std::u32string_view text) {
    std::vector<FontFace*> faces;
    for (std::size_t from = 0; from < text.size();) {
        std::size_t to = from + 1;
        while (to < text.size() && joins(text[to - 1], text[to]))
            ++to;
        FontFace& face = font.faceFor(text.substr(from, to - from));
        faces.insert(faces.end(), to - from, &face);
        from = to;
    }
    return faces;
}

// The level of each character by the Unicode bidirectional algorithm: even ones read from left to right. Empty on
// failure.
std::vector<FriBidiLevel> levelsOf(const std::vector<std::uint32_t>& text, bool isRightToLeft) {
    const auto length = static_cast<FriBidiStrIndex>(text.size());
    std::vector<FriBidiCharType> types(text.size());
    std::vector<FriBidiBracketType> brackets(text.size());
    std::vector<FriBidiLevel> levels(text.size());
    FriBidiParType direction = isRightToLeft ? FRIBIDI_PAR_RTL : FRIBIDI_PAR_LTR;
    fribidi_get_bidi_types(text.data(), length, types.data());
    fribidi_get_bracket_types(text.data(), length, types.data(), brackets.data());
    if (fribidi_get_par_embedding_levels_ex(types.data(), brackets.data(), length, &direction, levels.data()) == 0)
        return {};
    for (std::size_t i = text.size(); i > 0 && FRIBIDI_IS_EXPLICIT_OR_BN_OR_WS(types[i - 1]); --i)
        levels[i - 1] = isRightToLeft ? 1 : 0; // spaces at the end belong to the line
    return levels;
}

// The script of each character; what belongs to none has that of what stands before it, at the beginning behind it.
std::vector<hb_script_t> scriptsOf(const std::vector<std::uint32_t>& text) {
    std::vector<hb_script_t> scripts;
    const auto isOwn = [](hb_script_t script) {
        return script != HB_SCRIPT_COMMON && script != HB_SCRIPT_INHERITED && script != HB_SCRIPT_UNKNOWN;
    };
    for (const std::uint32_t character : text) {
        const hb_script_t own = hb_unicode_script(hb_unicode_funcs_get_default(), character);
        scripts.push_back(isOwn(own) || scripts.empty() ? own : scripts.back());
    }
    const auto first = std::find_if(scripts.begin(), scripts.end(), isOwn);
    if (first != scripts.end()) std::fill(scripts.begin(), first, *first);
    return scripts;
}

// Characters that are shaped together.
struct Run {
    std::size_t from, to;
    FriBidiLevel level;
    hb_script_t script;
    FontFace* face;
};

// From left to right, of characters and the face of each.
std::vector<Run> runsOf(const std::vector<std::uint32_t>& text, const std::vector<FontFace*>& faces,
                        bool isRightToLeft) {
    const std::vector<FriBidiLevel> levels = levelsOf(text, isRightToLeft);
    if (levels.empty()) return {};
    const std::vector<hb_script_t> scripts = scriptsOf(text);
    std::vector<Run> runs;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!runs.empty() && runs.back().level == levels[i] && runs.back().script == scripts[i] &&
            runs.back().face == faces[i])
            runs.back().to = i + 1;
        else
            runs.push_back({i, i + 1, levels[i], scripts[i], faces[i]});
    }
    // From the highest level down, each sequence of that level and above is turned round.
    for (FriBidiLevel level = *std::max_element(levels.begin(), levels.end()); level > 0; --level) {
        const auto isLower = [level](const Run& run) { return run.level < level; };
        for (auto from = runs.begin(); from != runs.end();) {
            from = std::find_if_not(from, runs.end(), isLower);
            const auto to = std::find_if(from, runs.end(), isLower);
            std::reverse(from, to);
            from = to;
        }
    }
    return runs;
}

using Buffer = std::unique_ptr<hb_buffer_t, decltype(&hb_buffer_destroy)>;
using ShapingFont = std::unique_ptr<hb_font_t, decltype(&hb_font_destroy)>;

// Shapes a run into a buffer: its glyphs from left to right. False without memory.
bool shape(hb_buffer_t* buffer, const std::vector<std::uint32_t>& text, const Run& run) {
    // GDI neither kerns nor joins letters that can stand alone.
    constexpr auto off = [](char a, char b, char c, char d) {
        return hb_feature_t{HB_TAG(a, b, c, d), 0, HB_FEATURE_GLOBAL_START, HB_FEATURE_GLOBAL_END};
    };
    const std::array features = {off('k', 'e', 'r', 'n'), off('l', 'i', 'g', 'a'), off('c', 'l', 'i', 'g')};
    const ShapingFont font(hb_ft_font_create_referenced(run.face->face()), &hb_font_destroy);
    hb_ft_font_set_load_flags(font.get(), FT_LOAD_NO_HINTING);
    hb_buffer_clear_contents(buffer);
    hb_buffer_add_utf32(buffer, text.data(), static_cast<int>(text.size()), static_cast<unsigned>(run.from),
                        static_cast<int>(run.to - run.from));
    hb_buffer_set_direction(buffer, run.level % 2 != 0 ? HB_DIRECTION_RTL : HB_DIRECTION_LTR);
    hb_buffer_set_script(buffer, run.script);
    hb_buffer_set_language(buffer, hb_language_get_default());
    hb_shape(font.get(), buffer, features.data(), static_cast<unsigned>(features.size()));
    return hb_buffer_allocation_successful(buffer) != 0;
}

// 64ths of a pixel to pixels; halves away from 0.
std::int32_t rounded(std::int64_t places) noexcept {
    return static_cast<std::int32_t>((places + (places < 0 ? -32 : 32)) / 64);
}

// The hinted width, and what shaping has made of the plain one: nothing for a mark. The sum of a line's
// stays a number, whatever a broken font says.
std::int32_t advanceOf(FontFace& face, std::uint32_t index, hb_position_t shaped) {
    constexpr std::int64_t widest = 1 << 17; // pixels: two em squares of the biggest size
    if (shaped == 0) return 0;
    const std::int64_t change = rounded(std::int64_t{shaped} - face.plainAdvance(index));
    return static_cast<std::int32_t>(std::clamp(face.glyph(index).advance + change, -widest, widest));
}

// What is drawn together belongs to its first character, and shares its width out.
void shareWidths(std::span<TextLine::Character> characters, const std::vector<bool>& isFirst) noexcept {
    for (std::size_t from = 0; from < characters.size();) {
        std::size_t to = from + 1;
        while (to < characters.size() && !isFirst[to])
            ++to;
        std::int32_t rest = characters[from].advance;
        for (std::size_t i = from; i < to; ++i) {
            characters[i].advance = rest / static_cast<std::int32_t>(to - i);
            rest -= characters[i].advance;
            characters[i].isStart = i == from;
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

// Adds the glyphs of a run, and their widths to the characters that they begin with.
void LaidOutLine::add(FontFace& face, hb_buffer_t* shaped, std::vector<bool>& isFirst) {
    unsigned count = 0;
    const hb_glyph_info_t* const glyphs = hb_buffer_get_glyph_infos(shaped, &count);
    const hb_glyph_position_t* const places = hb_buffer_get_glyph_positions(shaped, &count);
    for (unsigned i = 0; i < count; ++i) {
        const std::uint32_t index = glyphs[i].codepoint;
        const PlacedGlyph placed{&face, index, m_width + rounded(places[i].x_offset), -rounded(places[i].y_offset)};
        const std::int32_t advance = advanceOf(face, index, places[i].x_advance);
        m_ink = unionOf(m_ink, shifted(face.glyph(index).ink, placed.x, placed.y));
        m_glyphs.push_back(placed);
        m_characters[glyphs[i].cluster].advance += advance;
        isFirst[glyphs[i].cluster] = true;
        m_width += advance;
    }
}

std::unique_ptr<TextLine> layOutLine(OpenFont& font, std::u32string_view text, bool isRightToLeft) {
    const std::vector<std::uint32_t> characters(text.begin(), text.end());
    const std::vector<Run> runs = runsOf(characters, facesFor(font, text), isRightToLeft);
    const Buffer buffer(hb_buffer_create(), &hb_buffer_destroy);
    if (runs.empty()) return nullptr;
    auto line = std::make_unique<LaidOutLine>();
    line->m_characters.resize(text.size());
    std::vector<bool> isFirst(text.size());
    for (const Run& run : runs) {
        if (!shape(buffer.get(), characters, run)) return nullptr;
        line->add(*run.face, buffer.get(), isFirst);
    }
    for (const Rect& rule : font.rulesOf(line->m_width))
        line->m_ink = unionOf(line->m_ink, rule);
    shareWidths(line->m_characters, isFirst);
    findBreaks(characters, line->m_characters);
    return line;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
