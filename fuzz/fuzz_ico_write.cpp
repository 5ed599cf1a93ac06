// Pictures written as icons of any sizes and depths, sensible or not: every entry comes back with its size and depth.
#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    Input input(data, bytes);
    constexpr std::int32_t depths[] = {1, 4, 8, 24, 32, HIGH_COLOR, TRUE_COLOR, TRUE_COLOR_ALPHA, 33, -7};
    constexpr std::int32_t stored[] = {1, 4, 8, 24, 32, 24, 24, 32};
    std::vector<IconEntrySize> sizes(input.byte() % 4U);
    bool isRefused = false;
    for (IconEntrySize& size : sizes) {
        const unsigned kind = input.byte() % 8U, depth = input.byte() % std::size(depths);
        size = {kind == 0  ? 250 + input.byte() % 12
                : kind < 4 ? 0
                           : input.byte() % 80 - (kind == 4),
                kind < 3 ? 0 : input.byte() % 60, depths[depth]};
        isRefused |= size.Width < 0 || depth >= std::size(stored);
    }
    cPixSheet sheet, again;
    input.fill(sheet, 300);
    ByteArray file;
    const auto count = static_cast<std::size_t>(sheet.SaveToStream_ICO(file, {}, sizes));
    require(count == (isRefused ? 0 : std::max<std::size_t>(1, sizes.size())));
    if (isRefused) return 0;
    require(load(again, file, 0));
    std::vector<IconSourceSize> found;
    require(static_cast<std::size_t>(again.SourceIconSizes(found)) == count);
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        const std::int32_t width = sizes[i].Width == 0 ? sheet.Width() : sizes[i].Width;
        const std::int32_t height = sizes[i].Height == 0 ? sheet.Height() : sizes[i].Height;
        const bool isPng = width >= 256 || height >= 256;
        const std::int32_t depth = stored[std::ranges::find(depths, sizes[i].bitDepth) - depths];
        require(found[i] == IconSourceSize{width, height, isPng ? 32 : depth, isPng ? 1 : 0});
        require(again.LoadPicture_Stream(file, width, height, 0, 0, false, found[i].bitDepth));
        require(again.Width() == width && again.Height() == height);
    }
    return 0;
}
