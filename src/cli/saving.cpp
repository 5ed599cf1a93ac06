#include "cli/saving.h"
#include "cli/UsageError.h"
#include "cli/files.h"
#include "cli/text.h"
#include "surface/cPixSheet.h"

namespace pixkit::cli {

void checkSaving(const SavingOptions& options, bool toTga) {
    if (toTga && options.background) throw UsageError("--background is for .bmp files; a .tga file keeps alpha");
    if (!toTga && (options.tgaRle || options.tgaPalette)) {
        throw UsageError("--tga-rle and --tga-palette are for .tga files, and the result is .bmp");
    }
}

void savePicture(const cPixSheet& sheet, const std::filesystem::path& target, const SavingOptions& options,
                 MessageBoxes& boxes) {
    const std::string name = toUtf8(target);
    boxes.about(name);
    const bool saved =
        isTga(target)
            ? sheet.SaveToFile_TGA(name, options.tgaRle, options.tgaPalette, false, !options.overwrite)
            : sheet.SaveToFile_Bitmap(name, options.keepAlpha, options.background.value_or(0), !options.overwrite);
    if (saved) return;
    throw Failed(name,
                 boxes.refused() ? "exists already and was kept; --overwrite replaces it" : saveFailureReason(target));
}

} // namespace pixkit::cli
