// Fonts, and lines of text drawn with them as coverage. What stands above the seam breaks text into lines and places
// them (render/TextLayout.h); a side lays out and draws one line at a time, as its system does: bidirectional, with
// ligatures where a script needs them, and with other fonts for characters that the font lacks.
#pragma once
#include "platform/api.h"
#include "platform/gdi.h"
#include "platform/handle.h"
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace pixkit::platform {

// What a font is made from (LOGFONT).
struct FontRecord {
    // UTF-8: a family, or on the portable side the path of a font file, which has a '/'. Windows takes 31 UTF-16 units.
    std::string Name;
    std::int32_t height = 0;   // pixels: below 0 of the em square, above 0 of a line; 0: the system's own
    std::int32_t weight = 400; // 1 .. 1000
    bool italic = false, underline = false, strikeOut = false;
    std::uint8_t charSet = 1; // the system's number; 1: any. It only helps to choose a font.
};
// A font, which the caller frees with DeleteObject. A family that is not there is replaced by another. 0 on failure.
PIXKIT_API Handle CreateFontIndirectW(const FontRecord& record) noexcept;

// A font as a program's user chooses it (the system's StdFont, IFont).
struct StdFont {
    std::string Name;  // as above
    double Size = 8.0; // points, of which 72 are an inch of 96 pixels
    bool Bold = false, Italic = false, Underline = false, Strikethrough = false;
    std::int16_t Weight = 400; // 700 where Bold says more
    std::int16_t Charset = 1;
};
// Its record: the em square's height, rounded to pixels.
PIXKIT_API FontRecord recordOf(const StdFont& font);

struct FontMetrics {
    std::int32_t ascent = 0, descent = 0; // pixels; a line's height is their sum. Glyphs may be cut off there.
    std::int32_t averageWidth = 0;        // of a character, pixels; tab stops are eight of them apart
    bool isScalable = true;               // false: a bitmap font, which is never turned
};

// One line of text, laid out.
class TextLine {
  public:
    struct Character {
        std::int32_t advance = 0; // how far it moves on, pixels. What is drawn as one glyph may share its width out.
        bool canBreak = false;    // whether a line may end before it, by the system; it always may after a space
        bool isStart = true;      // whether it belongs to none before it, as accents do: lines are cut nowhere else
    };

    TextLine() noexcept = default;
    TextLine(const TextLine&) = delete;
    TextLine& operator=(const TextLine&) = delete;
    virtual ~TextLine() = default;

    virtual std::int32_t width() const noexcept = 0; // pixels, the sum of the advances that are drawn
    // In the order of the text, one for each that layOut was given.
    virtual std::span<const Character> characters() const noexcept = 0;
    // What ink may reach, from the line's left end on its baseline, unturned. Never less than what is drawn.
    virtual Rect ink() const noexcept = 0;
};

// Where a line begins: its left end, on its baseline, in pixels.
struct PlacedLine {
    const TextLine* line = nullptr;
    std::int32_t x = 0, y = 0;
};

// How places become pixels of the mask: turned clockwise about 0, 0 (x right, y down), then moved.
struct TextTurn {
    double cosine = 1, sine = 0;
    double x = 0, y = 0;
};

// A font, open for drawing. It stays valid when the handle that it came from is deleted. Used by one thread at a time,
// as are its lines.
class TextFont {
  public:
    // As many characters as one line may have.
    static constexpr std::size_t longestLine = 8192;

    TextFont() noexcept = default;
    TextFont(const TextFont&) = delete;
    TextFont& operator=(const TextFont&) = delete;
    virtual ~TextFont() = default;

    virtual const FontMetrics& metrics() const noexcept = 0;
    // Lays out 1 to longestLine code points (no surrogates) without line breaks and other control characters. Null on
    // failure. The line is used no longer than the font.
    virtual std::unique_ptr<TextLine> layOut(std::u32string_view text, bool isRightToLeft) noexcept = 0;
    // Fills a mask of width x height bytes, top row first, with the coverage of the lines' ink: 0 none, 255 full,
    // linear. Lines are this font's. False on failure. A turn other than none only for fonts that are scalable.
    virtual bool draw(std::span<const PlacedLine> lines, const TextTurn& turn, std::int32_t width, std::int32_t height,
                      std::uint8_t* coverage) noexcept = 0;
};

// The font of a handle; null when it is none, where no text can be drawn, and on Windows for lines or letters of more
// than 16,384 pixels, for which the system may find no memory.
std::unique_ptr<TextFont> openFont(Handle font) noexcept;
// Whether text can be drawn here: Windows always, the portable side when it was built with its libraries.
PIXKIT_API bool canDrawText() noexcept;
// Whether the name of a FontRecord may be the path of a font file.
PIXKIT_API bool takesFontFiles() noexcept;

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
