#include "render/TextLayout.h"
#include "shared/Text.h"
#include "shared/enumerations.h"
#include <algorithm>
#include <limits>
#include <utility>

namespace pixkit {

namespace {

constexpr char32_t replacement = 0xFFFD; // stands for what is no character
constexpr std::u32string_view ellipsis = U"\u2026";

// As many characters are kept laid out between measuring and drawing: the system needs some hundred bytes for each.
constexpr std::size_t mostKept = 64 * 1024;

constexpr Reason cannotLayOut = "the system cannot lay out the text";

// Lines may end after it; what of it stands at the end of a line, where lines are broken, needs no room.
bool isSpace(char32_t character) noexcept {
    return character == U' ' || character == U'\t' || character == 0x1680 || character == 0x205F ||
           character == 0x3000 || (character >= 0x2000 && character <= 0x200A && character != 0x2007);
}

// The code points of a text, each end of a line a line feed; control characters, which have no glyph, are left out.
std::u32string decoded(std::string_view utf8) {
    std::u32string text;
    text.reserve(utf8.size());
    bool isAfterReturn = false;
    while (!utf8.empty()) {
        char32_t character = replacement;
        if (const auto taken = takeCharacter(utf8)) {
            character = *taken;
        } else {
            utf8.remove_prefix(1);
        }
        const bool endsPair = isAfterReturn && character == U'\n';
        isAfterReturn = character == U'\r';
        if (endsPair) continue;
        if (character == U'\r' || character == 0x2028 || character == 0x2029) character = U'\n';
        const bool isControl = character < 0x20 || (character >= 0x7F && character < 0xA0);
        if (!isControl || character == U'\n' || character == U'\t') text += character;
    }
    return text;
}

} // namespace

bool TextLayout::isRightToLeft() const noexcept {
    return (m_form.Alignment & txtRightToLeft) != 0;
}

std::int64_t TextLayout::lineHeight() const noexcept {
    const platform::FontMetrics& metrics = m_font.metrics();
    return std::max<std::int64_t>(std::int64_t{metrics.ascent} + metrics.descent, 1);
}

std::int64_t TextLayout::nextTab(std::int64_t x) const noexcept {
    const std::int64_t stop = std::max<std::int64_t>(8 * std::int64_t{m_font.metrics().averageWidth}, 1);
    return (x / stop + 1) * stop;
}

// --- pieces

// Where what begins at `begin`, which is no tab, ends for the system: at the next tab, or when there are too many
// characters at the last space, where that is not far, because what belongs to one word is shaped together.
std::size_t TextLayout::pieceEnd(std::size_t begin, std::size_t end) const noexcept {
    const std::size_t most = std::min(end, begin + platform::TextFont::longestLine);
    std::size_t found = begin;
    while (found < most && m_text[found] != U'\t')
        ++found;
    if (found == end || m_text[found] == U'\t') return found;
    for (std::size_t space = found; space > begin + platform::TextFont::longestLine / 2; --space) {
        if (isSpace(m_text[space - 1])) return space;
    }
    return found;
}

TextLayout::LaidOut TextLayout::laidOut(std::size_t begin, std::size_t end) {
    return m_font.layOut(std::u32string_view(m_text).substr(begin, end - begin), isRightToLeft());
}

// --- lines

// Makes a line of the characters from `begin` to `end`, of `whole` where that is given: all of it, laid out.
bool TextLayout::makeLine(std::size_t begin, std::size_t end, Line& line, LaidOut whole) {
    line = {begin, end, m_pieces.size(), m_pieces.size(), 0};
    while (begin < end) {
        if (m_text[begin] == U'\t') {
            line.width = nextTab(line.width);
            ++begin;
            continue;
        }
        const std::size_t next = whole ? end : pieceEnd(begin, end);
        LaidOut laid = whole ? std::move(whole) : laidOut(begin, next);
        if (!laid) return false;
        m_pieces.push_back({begin, next, line.width, laid->width(), laid->ink(), nullptr});
        line.width += laid->width();
        if (m_kept < mostKept) {
            m_kept += next - begin;
            m_pieces.back().laid = std::move(laid);
        }
        begin = next;
    }
    line.endPiece = m_pieces.size();
    return true;
}

bool TextLayout::addLine(std::size_t begin, std::size_t end, LaidOut whole) {
    Line line;
    if (!makeLine(begin, end, line, std::move(whole))) return false;
    m_lines.push_back(line);
    return true;
}

// What each character of a paragraph needs, tabs nothing yet. `whole` is all of it, where that is one piece.
bool TextLayout::measure(std::size_t begin, std::size_t end, Characters& characters, LaidOut* whole) {
    const std::size_t first = begin;
    characters.clear();
    characters.reserve(end - begin);
    while (begin < end) {
        if (m_text[begin] == U'\t') {
            characters.push_back({0, false});
            ++begin;
            continue;
        }
        const std::size_t next = pieceEnd(begin, end);
        LaidOut laid = laidOut(begin, next);
        if (!laid || laid->characters().size() != next - begin) return false;
        characters.insert(characters.end(), laid->characters().begin(), laid->characters().end());
        if (whole != nullptr && begin == first && next == end) *whole = std::move(laid);
        begin = next;
    }
    return true;
}

// Where a line of a paragraph that begins at `begin` has to end so that it is no wider than the rectangle: at the last
// opportunity, else within the word, but behind one character with all that belongs to it.
std::size_t TextLayout::lineEnd(const Characters& characters, std::size_t paragraph, std::size_t begin) const noexcept {
    const std::size_t end = paragraph + characters.size();
    std::int64_t x = 0;
    std::size_t opportunity = begin, cut = begin;
    for (std::size_t i = begin; i < end; ++i) {
        const auto& character = characters[i - paragraph];
        const bool isTab = m_text[i] == U'\t';
        // The system looks at pieces, and within them at runs of one script, and overlooks opportunities between them.
        const bool isAfterSpace = i > begin && isSpace(m_text[i - 1]) && !isSpace(m_text[i]);
        if (isAfterSpace || (i > begin && character.canBreak)) opportunity = i;
        if (character.isStart) cut = i;
        const std::int64_t next = isTab ? nextTab(x) : x + character.advance;
        // What moves nothing on, such as a joiner, is no reason to end a line.
        if (next > m_form.width && next > x && cut > begin && !isSpace(m_text[i]))
            return opportunity > begin ? opportunity : cut;
        x = next;
    }
    return end;
}

// Adds the lines that a paragraph takes, or as many of them as are needed to know that they do not fit.
bool TextLayout::addParagraph(std::size_t begin, std::size_t end) {
    if (!wraps() || begin == end) return addLine(begin, end, nullptr);
    Characters characters;
    LaidOut whole;
    if (!measure(begin, end, characters, &whole)) return false;
    const std::size_t paragraph = begin;
    const std::size_t enough = linesThatFit();
    while (begin < end && m_lines.size() <= enough) {
        const std::size_t next = lineEnd(characters, paragraph, begin);
        std::size_t shown = next;
        while (shown > begin && isSpace(m_text[shown - 1]))
            --shown;
        const bool isWhole = begin == paragraph && shown == end;
        if (!addLine(begin, shown, isWhole ? std::move(whole) : nullptr)) return false;
        begin = next;
    }
    return true;
}

// --- ellipses

// How many lines are shown, at least one, where those that do not fit are left out.
std::size_t TextLayout::linesThatFit() const noexcept {
    if ((m_form.Alignment & txtEllipsis) == 0 || m_form.height <= 0) return std::numeric_limits<std::size_t>::max();
    return static_cast<std::size_t>(std::max<std::int64_t>(m_form.height / lineHeight(), 1));
}

// Puts a line with an ellipsis in the place of the last line, as much of which remains as there is room for.
bool TextLayout::endInEllipsis(std::size_t line) {
    const Line& old = m_lines[line];
    std::u32string text = m_text.substr(old.begin, old.end - old.begin);
    if (m_form.width > 0) {
        Characters characters;
        const auto mark = m_font.layOut(ellipsis, isRightToLeft());
        if (!mark || !measure(old.begin, old.end, characters, nullptr)) return false;
        std::int64_t x = 0;
        std::size_t kept = 0;
        for (; kept < text.size(); ++kept) {
            x = text[kept] == U'\t' ? nextTab(x) : x + characters[kept].advance;
            if (x + mark->width() > m_form.width) break;
        }
        while (kept > 0 && kept < text.size() && !characters[kept].isStart)
            --kept;
        text.resize(kept);
    }
    while (!text.empty() && isSpace(text.back()))
        text.pop_back();
    const std::size_t begin = m_text.size();
    m_text += text;
    m_text += ellipsis;
    return makeLine(begin, m_text.size(), m_lines[line], nullptr);
}

// Puts ellipses where lines do not fit.
bool TextLayout::shorten() {
    const std::size_t shown = linesThatFit();
    const bool isCut = shown < m_lines.size();
    if (isCut) m_lines.resize(shown);
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const bool isTooWide = m_form.width > 0 && m_lines[i].width > m_form.width;
        if ((isTooWide || (isCut && i + 1 == shown)) && !endInEllipsis(i)) return false;
    }
    return true;
}

// --- places

std::int64_t TextLayout::left(const Line& line) const noexcept {
    const std::int64_t rest = width() - line.width;
    if ((m_form.Alignment & txtRight) != 0) return rest;
    return (m_form.Alignment & txtCenter) != 0 ? rest >> 1 : 0;
}

std::int64_t TextLayout::baseline(std::size_t line) const noexcept {
    const std::int64_t rest = height() - neededHeight();
    std::int64_t top = 0;
    if ((m_form.Alignment & txtBottom) != 0) {
        top = rest;
    } else if ((m_form.Alignment & txtMiddle) != 0) {
        top = rest >> 1; // also where the text is the higher one: half a pixel upwards
    }
    return top + static_cast<std::int64_t>(line) * lineHeight() + m_font.metrics().ascent;
}

void TextLayout::findInk() noexcept {
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        for (std::size_t p = m_lines[i].firstPiece; p < m_lines[i].endPiece; ++p) {
            const Rect ink = placed(m_pieces[p].ink, left(m_lines[i], m_pieces[p]), baseline(i));
            m_ink = m_ink.isEmpty() ? ink
                                    : Rect{std::min(m_ink.left, ink.left), std::min(m_ink.top, ink.top),
                                           std::max(m_ink.right, ink.right), std::max(m_ink.bottom, ink.bottom)};
        }
    }
}

Outcome TextLayout::layOut(std::string_view text, const TextForm& form) {
    m_form = form;
    m_text = decoded(text);
    const std::size_t length = m_text.size();
    const std::size_t enough = linesThatFit();
    for (std::size_t begin = 0; begin <= length && m_lines.size() <= enough;) {
        const std::size_t end = std::min(m_text.find(U'\n', begin), length);
        if (!addParagraph(begin, end)) return refused(cannotLayOut);
        begin = end + 1;
    }
    if ((m_form.Alignment & txtEllipsis) != 0 && !shorten()) return refused(cannotLayOut);
    for (const Line& line : m_lines)
        m_widest = std::max(m_widest, line.width);
    findInk();
    return done();
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
