#include "cli/Saving.h"
#include "cli/Files.h"
#include "cli/Text.h"
#include "cli/UsageError.h"
#include "codecs/Writing.h"
#include "shared/AlphaChannel.h"
#include "shared/Colors.h"
#include "shared/limits.h"
#include "surface/HostAccess.h"
#include "surface/cPixSheet.h"
#include <algorithm>

namespace pixkit::cli {

namespace {

// False when PNG does not allow one of the texts.
bool setPngProperties(cPixSheet& sheet, const SavingOptions& options) {
    for (const auto& [property, value] : options.pngProperties)
        sheet.PngPropertySet(property, value);
    return std::ranges::all_of(
        options.pngTexts, [&](const auto& text) { return sheet.PngPropertySet(pngText, text.second, text.first); });
}

// A picture that could be an icon becomes one as it is; from others come the sizes that systems ask for.
std::vector<IconEntrySize> entriesFor(const cPixSheet& sheet, const SavingOptions& options) {
    constexpr std::int32_t largestOfItself = 256;
    if (!options.iconEntries.empty()) return options.iconEntries;
    if (sheet.Width() <= largestOfItself && sheet.Height() <= largestOfItself) return {};
    return {{16, 16}, {32, 32}, {48, 48}, {256, 256}};
}

// A clear picture is the background, too; but to BMP files, alpha that is 0 everywhere says nothing.
void flattenIfClear(cPixSheet& sheet, std::int32_t background) {
    const SourcePicture picture(sheet);
    cPixSheet flat;
    if (!picture.isToBeFlattened() || iparseHasAlpha(picture.pixels)) return;
    if (!flat.InitializeDIB(sheet.Width(), sheet.Height())) return;
    const PixelView pixels = HostAccess::pixels(flat);
    iparseBlendImageToColor(picture.pixels, background, {pixels.bits, pixels.stride * pixels.height}, false);
    flat.Alpha(AlphaNone);
    sheet.SwapDIBs(&flat);
}

bool saved(cPixSheet& sheet, const std::filesystem::path& target, const SavingOptions& options) {
    const std::string name = toUtf8(target);
    const bool ask = !options.overwrite;
    const std::int32_t background = options.background.value_or(0);
    switch (formatOf(target).value_or(FileFormat::bmp)) {
    case FileFormat::tga:
        return sheet.SaveToFile_TGA(name, options.tgaRle, options.tgaPalette, false, ask);
    case FileFormat::png:
        return setPngProperties(sheet, options) && sheet.SaveToFile_PNG(name, ask);
    case FileFormat::gif:
        return sheet.SaveToFile_GIF(name, !options.gifWebSafe, options.gifTolerance.value_or(128), ask);
    case FileFormat::jpg:
        return sheet.SaveToFile_JPG(name, options.quality.value_or(70), background, ask);
    case FileFormat::ico:
        return sheet.SaveToFile_ICO(name, {}, ask, entriesFor(sheet, options)) != 0;
    case FileFormat::bmp:
        if (!options.keepAlpha) flattenIfClear(sheet, background);
        break;
    }
    return sheet.SaveToFile_Bitmap(name, options.keepAlpha, background, ask);
}

} // namespace

void checkSaving(const SavingOptions& options, FileFormat format) {
    if (options.background && format != FileFormat::bmp && format != FileFormat::jpg) {
        throw UsageError("--background is for .bmp and .jpg files; the others keep transparency");
    }
    if (format != FileFormat::tga && (options.tgaRle || options.tgaPalette)) {
        throw UsageError("--tga-rle and --tga-palette are for .tga files, and the result is none");
    }
    if (format != FileFormat::png && (!options.pngProperties.empty() || !options.pngTexts.empty())) {
        throw UsageError("--png-level, --png-filter, --png-interlace and --png-text are for .png files, and the result "
                         "is none");
    }
    cPixSheet trial;
    if (!setPngProperties(trial, options)) {
        throw UsageError(
            "--png-text takes KEYWORD=TEXT: a keyword of 1 to 79 Latin letters, without spaces at its ends "
            "or two together, and a text without control characters");
    }
    if (format != FileFormat::gif && (options.gifWebSafe || options.gifTolerance)) {
        throw UsageError("--gif-websafe and --gif-tolerance are for .gif files, and the result is none");
    }
    if (format != FileFormat::ico && !options.iconEntries.empty()) {
        throw UsageError("--icon is for .ico and .cur files, and the result is none");
    }
    if (format != FileFormat::jpg && options.quality) {
        throw UsageError("--quality is for .jpg files, and the result is none");
    }
}

void savePicture(cPixSheet& sheet, const std::filesystem::path& target, const SavingOptions& options,
                 MessageBoxes& boxes) {
    boxes.about(toUtf8(target));
    if (saved(sheet, target, options)) {
        std::error_code gone;
        if (std::filesystem::file_size(target, gone) <= largestRefusedFile && !gone)
            boxes.note("saved, but pixkit does not read files of " + std::to_string(largestRefusedFile) +
                       " bytes or less");
        return;
    }
    const std::string reason = problemOf(sheet);
    throw Failed(toUtf8(target), boxes.refused() ? reason + "; --overwrite replaces it" : reason);
}

} // namespace pixkit::cli
