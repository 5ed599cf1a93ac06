// Text broken into lines that are placed in a rectangle.
#pragma once
#include "diagnostics/Outcome.h"
#include "platform/text.h"
#include "shared/Rect.h"
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace pixkit {

// How a text is to be laid out; a size of 0 is what it needs.
struct TextForm {
    std::int64_t width = 0, height = 0;
    std::int32_t Alignment = 0; // eTextAlignment
    bool WordWrap = false;
};

// Lines are made of pieces, each laid out by the system: tabs part them, and more characters than the system lays out
// at once. Time grows with the length of the text, memory too, whatever its lines are.
class TextLayout {
  public:
    // The font stays while the layout is used.
    explicit TextLayout(platform::TextFont& font) noexcept : m_font(font) {}

    // Lays out a text in UTF-8. Refuses where the system fails. Throws std::bad_alloc. To be called once.
    Outcome layOut(std::string_view text, const TextForm& form);

    // What the lines need.
    std::int64_t neededWidth() const noexcept { return m_widest; }
    std::int64_t neededHeight() const noexcept { return lineHeight() * static_cast<std::int64_t>(m_lines.size()); }
    // The rectangle's size: what was asked for, or where that was 0 what is needed.
    std::int64_t width() const noexcept { return m_form.width > 0 ? m_form.width : m_widest; }
    std::int64_t height() const noexcept { return m_form.height > 0 ? m_form.height : neededHeight(); }
    // What ink may reach, from the rectangle's top left corner.
    Rect ink() const noexcept { return m_ink; }

    // Calls draw(line, x, y) with each piece, placed from there, whose ink may lie in what `isWanted` says yes to.
    // False when a piece cannot be laid out any more, or `draw` says no.
    template <class IsWanted, class Draw>
    bool forPieces(IsWanted&& isWanted, Draw&& draw);

  private:
    using LaidOut = std::unique_ptr<platform::TextLine>;
    struct Piece {
        std::size_t begin, end; // in m_text
        std::int64_t x;         // from where reading the line begins
        std::int32_t width;
        platform::Rect ink; // from its own place
        LaidOut laid;       // null when there were too many to keep
    };
    struct Line {
        std::size_t begin = 0, end = 0;           // in m_text
        std::size_t firstPiece = 0, endPiece = 0; // in m_pieces
        std::int64_t width = 0;
    };
    // What is known of each character of a paragraph: enough to break it into lines.
    using Characters = std::vector<platform::TextLine::Character>;

    bool isRightToLeft() const noexcept;
    std::int64_t lineHeight() const noexcept;
    std::int64_t nextTab(std::int64_t x) const noexcept;
    bool wraps() const noexcept { return m_form.WordWrap && m_form.width > 0; }

    std::size_t pieceEnd(std::size_t begin, std::size_t end) const noexcept;
    LaidOut laidOut(std::size_t begin, std::size_t end);
    bool measure(std::size_t begin, std::size_t end, Characters& characters, LaidOut* whole);
    std::size_t lineEnd(const Characters& characters, std::size_t paragraph, std::size_t begin) const noexcept;

    bool addParagraph(std::size_t begin, std::size_t end);
    bool makeLine(std::size_t begin, std::size_t end, Line& line, LaidOut whole);
    bool addLine(std::size_t begin, std::size_t end, LaidOut whole);
    std::size_t linesThatFit() const noexcept;
    bool shorten();
    bool endInEllipsis(std::size_t line);
    void findInk() noexcept;

    std::int64_t left(const Line& line) const noexcept;
    std::int64_t left(const Line& line, const Piece& piece) const noexcept {
        return left(line) + (isRightToLeft() ? line.width - piece.x - piece.width : piece.x);
    }
    std::int64_t baseline(std::size_t line) const noexcept;
    static Rect placed(const platform::Rect& ink, std::int64_t x, std::int64_t y) noexcept {
        return Rect{ink.left, ink.top, ink.right, ink.bottom}.moved(x, y);
    }

    platform::TextFont& m_font;
    TextForm m_form;
    std::u32string m_text; // lines end in line feeds; behind the text, lines that got an ellipsis
    std::vector<Line> m_lines;
    std::vector<Piece> m_pieces;
    std::size_t m_kept = 0; // characters of the pieces that are kept
    std::int64_t m_widest = 0;
    Rect m_ink;
};

template <class IsWanted, class Draw>
bool TextLayout::forPieces(IsWanted&& isWanted, Draw&& draw) {
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const Line& line = m_lines[i];
        for (std::size_t p = line.firstPiece; p < line.endPiece; ++p) {
            Piece& piece = m_pieces[p];
            const std::int64_t x = left(line, piece), y = baseline(i);
            if (!isWanted(placed(piece.ink, x, y))) continue;
            if (!piece.laid) piece.laid = laidOut(piece.begin, piece.end);
            if (!piece.laid || !draw(*piece.laid, x, y)) return false;
        }
    }
    return true;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
