// Which files hold the fonts that serve for a record, as fontconfig says. It is asked with a configuration of the
// library's own: the process's is neither used nor changed.
#pragma once
#include "platform/text.h"
#include <cstddef>
#include <fontconfig/fontconfig.h>
#include <memory>
#include <optional>
#include <string>

namespace pixkit::platform {

struct FontFile {
    std::string path;
    long index = 0; // of the face in the file, as FreeType counts
    bool isBold = false, isItalic = false;
};

// The fonts that have what the one of a record lacks. Outlines come before bitmaps, and both before pictures in colour.
class FallbackFonts {
  public:
    explicit FallbackFonts(const FontRecord& record);
    std::size_t count() const noexcept;
    bool has(std::size_t font, char32_t character) const noexcept;
    std::optional<FontFile> file(std::size_t font) const;

  private:
    std::unique_ptr<FcFontSet, decltype(&FcFontSetSortDestroy)> m_fonts;
};

// The file of the family that a record names, or of what takes its place; nothing where there are no fonts.
std::optional<FontFile> fontFileOf(const FontRecord& record);

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
