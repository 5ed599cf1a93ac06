#include "platform/portable/text/OpenFont.h"
#include "platform/portable/text/LineLayout.h"
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <new>

namespace pixkit::platform {

namespace {

// Throws std::bad_alloc unless there is more memory than the libraries are going to take: fontconfig and HarfBuzz do
// not all look whether they got any.
void expectRoom() {
    constexpr std::size_t enough = std::size_t{4} << 20;
    ::operator delete(::operator new(enough));
}

} // namespace

std::shared_ptr<OpenFont> OpenFont::open(const FontRecord& record) {
    expectRoom();
    const std::shared_ptr<OpenFont> font(new OpenFont(record));
    FT_Library library = nullptr;
    if (FT_Init_FreeType(&library) != 0) return nullptr;
    font->m_library.reset(library);
    if (record.Name.find('/') != std::string::npos)
        font->m_first = FontFace::ofUser(library, record);
    else if (const auto file = fontFileOf(record))
        font->m_first = FontFace::ofSystem(library, *file, record);
    return font->m_first && font->m_first->setHeight(record.height) ? font : nullptr;
}

// --- faces

FontFace* OpenFont::fallback(std::size_t font) {
    Fallback& found = m_fallbacks[font];
    if (!found.isTried) {
        if (const auto file = m_fallbackFonts->file(font))
            found.face = FontFace::ofSystem(m_library.get(), *file, m_record);
        if (found.face && !found.face->setHeight(-m_first->emPixels())) found.face = nullptr;
        found.isTried = true;
    }
    return found.face.get();
}

FontFace& OpenFont::faceFor(std::u32string_view characters) {
    if (hasAll(*m_first, characters)) return *m_first;
    if (!m_fallbackFonts) {
        m_fallbackFonts.emplace(m_record);
        m_fallbacks.resize(m_fallbackFonts->count());
    }
    FontFace* best = m_first->has(characters.front()) ? m_first.get() : nullptr;
    for (std::size_t font = 0; font < m_fallbacks.size(); ++font) {
        if (!m_fallbackFonts->has(font, characters.front())) continue;
        FontFace* const face = fallback(font);
        if (face == nullptr) continue;
        if (hasAll(*face, characters)) return *face;
        if (best == nullptr) best = face;
    }
    return best != nullptr ? *best : *m_first;
}

std::vector<Rect> OpenFont::rulesOf(std::int32_t width) const {
    std::vector<Rect> rules;
    if (width <= 0) return rules; // fonts may have widths below 0
    const auto add = [&](const TextRule& rule) { rules.push_back({0, rule.top, width, rule.top + rule.thickness}); };
    if (m_record.underline) add(m_first->underline());
    if (m_record.strikeOut) add(m_first->strikeOut());
    return rules;
}

std::unique_ptr<TextLine> OpenFont::layOut(std::u32string_view text, bool isRightToLeft) {
    const std::scoped_lock lock(m_mutex);
    expectRoom();
    return layOutLine(*this, text, isRightToLeft);
}

// --- drawing

namespace {

bool drawTurnedRule(FT_Library library, const Rect& rule, const TextTurn& place, std::uint8_t* coverage,
                    std::int32_t width, std::int32_t height) {
    FT_Outline outline{};
    if (FT_Outline_New(library, 4, 1, &outline) != 0) return false;
    const std::array<FT_Vector, 4> corners{
        {{rule.left, -rule.bottom}, {rule.left, -rule.top}, {rule.right, -rule.top}, {rule.right, -rule.bottom}}};
    for (std::size_t i = 0; i < corners.size(); ++i) {
        outline.points[i] = {corners[i].x * 64, corners[i].y * 64};
        outline.tags[i] = FT_CURVE_TAG_ON;
    }
    outline.contours[0] = 3;
    turn(outline, place);
    const bool isDrawn = renderPixels(library, outline, coverage, width, height);
    FT_Outline_Done(library, &outline);
    return isDrawn;
}

} // namespace

bool OpenFont::drawUpright(const PlacedLine& place, std::int32_t width, std::int32_t height, std::uint8_t* coverage) {
    const auto& line = static_cast<const LaidOutLine&>(*place.line);
    Subpixels strip(intersection(shifted(line.ink(), place.x, place.y), {0, 0, width, height}));
    if (isEmpty(strip.box)) return true;
    for (const PlacedGlyph& glyph : line.glyphs())
        if (!glyph.face->draw(glyph.index, std::int64_t{place.x} + glyph.x, std::int64_t{place.y} + glyph.y, strip))
            return false;
    for (const Rect& rule : rulesOf(line.width()))
        strip.fill(shifted(rule, place.x, place.y));
    strip.addMeans(coverage, width);
    return true;
}

bool OpenFont::drawTurned(const PlacedLine& place, const TextTurn& turn, std::int32_t width, std::int32_t height,
                          std::uint8_t* coverage) {
    const auto& line = static_cast<const LaidOutLine&>(*place.line);
    const auto turnAt = [&](double x, double y) {
        TextTurn result = turn;
        result.x += (x + place.x) * turn.cosine - (y + place.y) * turn.sine;
        result.y += (x + place.x) * turn.sine + (y + place.y) * turn.cosine;
        return result;
    };
    for (const PlacedGlyph& glyph : line.glyphs()) {
        const TextTurn where = turnAt(glyph.x, glyph.y);
        if (std::abs(where.x) < farthestPixel && std::abs(where.y) < farthestPixel &&
            !glyph.face->drawTurned(glyph.index, where, coverage, width, height))
            return false;
    }
    const auto rules = rulesOf(line.width());
    return std::all_of(rules.begin(), rules.end(), [&](const Rect& rule) {
        return drawTurnedRule(m_library.get(), rule, turnAt(0, 0), coverage, width, height);
    });
}

bool OpenFont::draw(std::span<const PlacedLine> lines, const TextTurn& turn, std::int32_t width, std::int32_t height,
                    std::uint8_t* coverage) {
    const std::scoped_lock lock(m_mutex);
    const bool isTurned = turn.cosine != 1 || turn.sine != 0;
    if (isTurned && !metrics().isScalable) return false;
    std::fill_n(coverage, static_cast<std::size_t>(width) * static_cast<std::size_t>(height), std::uint8_t{0});
    return std::all_of(lines.begin(), lines.end(), [&](PlacedLine place) {
        if (isTurned) return drawTurned(place, turn, width, height, coverage);
        // Upright text stands on whole pixels.
        place.x += static_cast<std::int32_t>(std::lround(turn.x));
        place.y += static_cast<std::int32_t>(std::lround(turn.y));
        return drawUpright(place, width, height, coverage);
    });
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
