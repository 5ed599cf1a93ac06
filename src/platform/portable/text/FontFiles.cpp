#include "platform/portable/text/FontFiles.h"
#include <cstdlib>
#include <mutex>

namespace pixkit::platform {

namespace {

using Pattern = std::unique_ptr<FcPattern, decltype(&FcPatternDestroy)>;

// Read once, by the first who asks while there is memory for it, and kept for the process's life. fontconfig takes
// questions of several threads.
FcConfig* configuration() noexcept {
    static std::mutex mutex;
    static FcConfig* config = nullptr;
    const std::scoped_lock lock(mutex);
    if (config == nullptr) config = FcInitLoadConfigAndFonts();
    return config;
}

// What is asked of fontconfig; null without memory. A path is no family: the fonts beside it are the system's own.
Pattern patternOf(const FontRecord& record) {
    Pattern pattern(FcPatternCreate(), &FcPatternDestroy);
    if (!pattern) return pattern;
    if (record.Name.find('/') == std::string::npos)
        FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(record.Name.c_str()));
    FcPatternAddInteger(pattern.get(), FC_WEIGHT, FcWeightFromOpenType(record.weight));
    FcPatternAddInteger(pattern.get(), FC_SLANT, record.italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
    FcPatternAddDouble(pattern.get(), FC_PIXEL_SIZE, std::abs(static_cast<double>(record.height)));
    FcPatternAddBool(pattern.get(), FC_VARIABLE, FcFalse); // their named instances are in the list too
    return pattern;
}

void substitute(FcPattern* pattern) noexcept {
    FcConfigSubstitute(configuration(), pattern, FcMatchPattern);
    FcDefaultSubstitute(pattern);
}

std::optional<FontFile> fileOf(FcPattern* font) {
    FcChar8* path = nullptr;
    int index = 0;
    int weight = FC_WEIGHT_REGULAR;
    int slant = FC_SLANT_ROMAN;
    if (FcPatternGetString(font, FC_FILE, 0, &path) != FcResultMatch) return std::nullopt;
    FcPatternGetInteger(font, FC_INDEX, 0, &index);
    FcPatternGetInteger(font, FC_WEIGHT, 0, &weight);
    FcPatternGetInteger(font, FC_SLANT, 0, &slant);
    return FontFile{.path = reinterpret_cast<const char*>(path),
                    .index = index,
                    .isBold = weight > FC_WEIGHT_MEDIUM,
                    .isItalic = slant != FC_SLANT_ROMAN};
}

} // namespace

std::optional<FontFile> fontFileOf(const FontRecord& record) {
    const Pattern pattern = patternOf(record);
    if (!pattern || configuration() == nullptr) return std::nullopt;
    substitute(pattern.get());
    FcResult result = FcResultNoMatch;
    const Pattern font(FcFontMatch(configuration(), pattern.get(), &result), &FcPatternDestroy);
    return font ? fileOf(font.get()) : std::nullopt;
}

FallbackFonts::FallbackFonts(const FontRecord& record) : m_fonts(nullptr, &FcFontSetSortDestroy) {
    const Pattern pattern = patternOf(record);
    if (!pattern || configuration() == nullptr) return;
    FcPatternAddBool(pattern.get(), FC_SCALABLE, FcTrue);
    FcPatternAddBool(pattern.get(), FC_COLOR, FcFalse);
    substitute(pattern.get());
    FcResult result = FcResultNoMatch;
    m_fonts.reset(FcFontSort(configuration(), pattern.get(), FcTrue, nullptr, &result));
}

std::size_t FallbackFonts::count() const noexcept {
    return m_fonts ? static_cast<std::size_t>(m_fonts->nfont) : 0;
}

bool FallbackFonts::has(std::size_t font, char32_t character) const noexcept {
    FcCharSet* characters = nullptr; // the pattern's
    return FcPatternGetCharSet(m_fonts->fonts[font], FC_CHARSET, 0, &characters) == FcResultMatch &&
           FcCharSetHasChar(characters, character) == FcTrue;
}

std::optional<FontFile> FallbackFonts::file(std::size_t font) const {
    return fileOf(m_fonts->fonts[font]);
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
