// A font with all that draws it: its own face, and those of other fonts that have what it lacks. It has a FreeType of
// its own, so that fonts work at once on several threads; those that share one, because they come from one handle, take
// turns.
#pragma once
#include "platform/portable/text/FontFace.h"
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace pixkit::platform {

class OpenFont {
  public:
    // Null when the record's name is a path of no font file, and where there are no fonts. May throw std::bad_alloc.
    static std::shared_ptr<OpenFont> open(const FontRecord& record);

    const FontMetrics& metrics() const noexcept { return m_first->metrics(); }
    // As TextFont does it. May throw std::bad_alloc.
    std::unique_ptr<TextLine> layOut(std::u32string_view text, bool isRightToLeft);
    bool draw(std::span<const PlacedLine> lines, const TextTurn& turn, std::int32_t width, std::int32_t height,
              std::uint8_t* coverage);

    // The face for a character and the marks on it: the first that has them all, else the first that has the character
    // at least, else the font's own.
    FontFace& faceFor(std::u32string_view characters);
    // The lines of a text of this width, from its beginning.
    std::vector<Rect> rulesOf(std::int32_t width) const;

  private:
    explicit OpenFont(const FontRecord& record) : m_record(record) {}
    FontFace* fallback(std::size_t font);
    bool drawUpright(const PlacedLine& place, std::int32_t width, std::int32_t height, std::uint8_t* coverage);
    bool drawTurned(const PlacedLine& place, const TextTurn& turn, std::int32_t width, std::int32_t height,
                    std::uint8_t* coverage);

    struct Fallback {
        bool isTried = false;
        std::unique_ptr<FontFace> face; // null: it cannot be used
    };

    FontRecord m_record;
    std::mutex m_mutex;
    FreeType m_library{nullptr, &FT_Done_FreeType};
    std::unique_ptr<FontFace> m_first;
    std::optional<FallbackFonts> m_fallbackFonts; // looked for when they are needed
    std::vector<Fallback> m_fallbacks;            // one for each
};

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
