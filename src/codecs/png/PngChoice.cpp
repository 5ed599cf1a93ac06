#include "codecs/png/PngChoice.h"
#include "codecs/png/PngRows.h"
#include "coding/deflate/Deflate.h"
#include <algorithm>
#include <span>

namespace pixkit {

namespace {

// In bytes of pixels. Of larger pictures at most the greater of this and a share of them is looked at.
constexpr std::size_t smallPicture = 1U << 18;
constexpr std::size_t share = 32;
// Rows that are looked at stand together, since filters look at the row above.
constexpr std::size_t bandRows = 16;

// The bands of rows to be tried, spread evenly.
std::vector<ConstPixelView> bandsOf(ConstPixelView image, bool isAll) {
    const std::size_t bytes = image.width * 4 * image.height;
    if (isAll || bytes <= smallPicture || image.height <= bandRows) return {image};
    const std::size_t bandBytes = image.width * 4 * bandRows;
    const std::size_t most = image.height / bandRows;
    const std::size_t count = std::clamp<std::size_t>(std::max(smallPicture, bytes / share) / bandBytes, 1, most);
    std::vector<ConstPixelView> bands;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t first = (2 * i + 1) * most / (2 * count) * bandRows;
        bands.push_back({image.row(first), image.width, bandRows, image.stride});
    }
    return bands;
}

// What stands in the file beside the rows: PLTE and tRNS.
std::size_t chunkBytes(const PngForm& form) noexcept {
    constexpr std::size_t head = 12;
    if (form.colorType == PngColorType::palette) {
        const auto notOpaque = static_cast<std::size_t>(
            std::ranges::count_if(form.palette, [](PngPixel color) { return color >> 24 != 255; }));
        return head + 3 * form.palette.size() + (notOpaque > 0 ? head + notOpaque : 0);
    }
    return form.clearColor ? head + (form.colorType == PngColorType::gray ? 2 : 6) : 0;
}

} // namespace

std::vector<PngChoice> pngChoices(ConstPixelView image, bool hasAlpha, const std::vector<PngForm>& forms,
                                  const PngProperties& props) {
    const int level = props.compressionLevel();
    std::vector<eFilterMethods> filters = {props.filter()};
    if (filters.front() == filterDefault && level > 0)
        filters = {filterNone, filterAdaptive, filterPaeth, filterSub, filterUp, filterAverage};
    if (forms.size() * filters.size() == 1) return {{0, filters.front()}};

    const bool isThorough = level >= deflate::smallestLevel;
    const int trialLevel = level < deflate::defaultLevel ? std::min(level, deflate::fastestLevel) : 3;
    const std::vector<ConstPixelView> bands = bandsOf(image, isThorough);
    const std::size_t triedRows = bands.size() * bands.front().height;
    struct Trial {
        PngChoice choice;
        std::uint64_t bytes;
    };
    std::vector<Trial> trials;
    std::vector<std::uint8_t> rows, compressed;
    for (std::size_t form = 0; form < forms.size(); ++form) {
        for (const eFilterMethods filter : filters) {
            rows.clear();
            for (const ConstPixelView& band : bands) {
                const auto more = pngFilteredRows(band, hasAlpha, forms[form], filter, props.isInterlaced());
                rows.insert(rows.end(), more.begin(), more.end());
            }
            compressed.clear();
            deflate::compressZlib(rows, trialLevel, compressed);
            // For as many bytes as all rows would take.
            const std::uint64_t bytes = std::uint64_t{compressed.size()} * image.height / triedRows;
            trials.push_back({{form, filter}, bytes + chunkBytes(forms[form])});
        }
    }
    std::ranges::stable_sort(trials, {}, &Trial::bytes);
    // The level itself may put those into another order that are close together.
    const bool isOpen = trialLevel != level && triedRows == image.height;
    const std::uint64_t close = trials.front().bytes + trials.front().bytes / 32 + 24;
    std::size_t left = 1;
    while (isOpen && left < std::min<std::size_t>(trials.size(), 4) && trials[left].bytes <= close)
        ++left;
    std::vector<PngChoice> choices(left);
    std::ranges::transform(std::span(trials).first(left), choices.begin(), &Trial::choice);
    return choices;
}

} // namespace pixkit
