#include "codecs/png/PngChoice.h"
#include "codecs/png/PngRows.h"
#include "coding/deflate/Deflate.h"
#include "coding/deflate/RunCompressor.h"
#include <algorithm>
#include <span>
#include <utility>

namespace pixkit {

namespace {

// In bytes of pixels. Of larger pictures a share is tried, or as much as this if that is more.
constexpr std::size_t smallPicture = 1U << 18;
constexpr std::size_t share = 32, thoroughShare = 4;
// Pieces are at most so large, not more than a small picture: filters look at the row above, and copies come from
// there.
constexpr std::size_t pieceRows = 16, pieceColumns = smallPicture / 4 / pieceRows;

// The pieces to be tried, spread evenly.
std::vector<ConstPixelView> piecesOf(ConstPixelView image, std::size_t parts) {
    const std::size_t bytes = image.width * 4 * image.height;
    if (bytes <= smallPicture) return {image};
    const std::size_t rows = std::min(image.height, pieceRows);
    const std::size_t columns = std::min(image.width, pieceColumns);
    const std::size_t count = std::max(smallPicture, bytes / parts) / (rows * columns * 4);
    std::vector<ConstPixelView> pieces(count);
    for (std::size_t i = 0; i < count; ++i) {
        // As many places from side to side as there are pieces, again and again on the way up.
        const std::size_t across = image.width / columns;
        const std::uint64_t last = image.width - columns;
        const auto x = across == 1 ? 0 : static_cast<std::size_t>(i % across * last / (across - 1));
        const auto y = static_cast<std::size_t>(std::uint64_t{image.height - rows} * (2 * i + 1) / (2 * count));
        pieces[i] = {image.row(y) + 4 * x, columns, rows, image.stride};
    }
    return pieces;
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

std::uint64_t compressedSize(std::span<const std::uint8_t> rows, const PngForm& form, int level) {
    if (level == deflate::fastestLevel) return deflate::runCompressedSize(rows, form.filterStep());
    std::vector<std::uint8_t> compressed;
    deflate::compressZlib(rows, level, compressed);
    return compressed.size();
}

} // namespace

std::vector<PngChoice> pngChoices(ConstPixelView image, bool hasAlpha, const std::vector<PngForm>& forms,
                                  const PngProperties& props) {
    const int level = props.compressionLevel();
    std::vector<eFilterMethods> filters = {props.filter()};
    if (filters.front() == filterDefault && level > 0)
        filters = {filterNone, filterAdaptive, filterPaeth, filterSub, filterUp, filterAverage};
    if (forms.size() * filters.size() == 1) return {{0, filters.front(), 0}};

    const bool isThorough = level >= deflate::smallestLevel;
    const int trialLevel = level < deflate::defaultLevel ? std::min(level, 2) : 3;
    const std::vector<ConstPixelView> pieces = piecesOf(image, isThorough ? thoroughShare : share);
    const std::uint64_t pixels = std::uint64_t{image.width} * image.height;
    const std::uint64_t tried = std::uint64_t{pieces.front().width} * pieces.front().height * pieces.size();
    struct Trial {
        PngChoice choice;
        std::uint64_t bytes;
        std::size_t place;
    };
    std::vector<Trial> trials;
    std::vector<std::uint8_t> rows;
    for (std::size_t form = 0; form < forms.size(); ++form) {
        for (const eFilterMethods filter : filters) {
            rows.clear();
            for (const ConstPixelView& piece : pieces) {
                auto more = pngFilteredRows(piece, hasAlpha, forms[form], filter, props.isInterlaced());
                if (rows.empty())
                    rows = std::move(more);
                else
                    rows.insert(rows.end(), more.begin(), more.end());
            }
            // What all pixels would take; a picture has fewer than 2^29.
            const std::uint64_t bytes =
                compressedSize(rows, forms[form], trialLevel) * pixels / tried + chunkBytes(forms[form]);
            trials.push_back({{form, filter, static_cast<std::size_t>(bytes + bytes / 32)}, bytes, trials.size()});
        }
    }
    std::ranges::sort(trials, {}, [](const Trial& trial) { return std::pair(trial.bytes, trial.place); });
    // The level itself may put those into another order that are close together.
    const bool isSmall = tried == pixels;
    const std::uint64_t close = trials.front().bytes + trials.front().bytes / (isSmall ? 32 : 128) + 24;
    const std::size_t most = trialLevel == level ? 1 : isSmall ? 4 : isThorough ? 2 : 1;
    std::size_t left = 1;
    while (left < std::min(trials.size(), most) && trials[left].bytes <= close)
        ++left;
    std::vector<PngChoice> choices(left);
    std::ranges::transform(std::span(trials).first(left), choices.begin(), &Trial::choice);
    return choices;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
