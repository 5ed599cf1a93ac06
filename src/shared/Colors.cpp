#include "shared/Colors.h"
#include "shared/checked.h"
#include <cstring>
#include <stdexcept>

namespace pixkit {

kernels::GrayWeights iparseGrayScaleRatios(std::int32_t Formula) noexcept {
    switch (Formula) {
    case gsclNone:
        return {1.0F, 1.0F, 1.0F};
    case gsclCCIR709:
        return {0.213F, 0.715F, 0.072F};
    case gsclSimpleAvg:
        return {0.333F, 0.334F, 0.333F};
    case gsclRedMask:
        return {0.8F, 0.1F, 0.1F};
    case gsclGreenMask:
        return {0.1F, 0.8F, 0.1F};
    case gsclBlueMask:
        return {0.1F, 0.1F, 0.8F};
    case gsclRedGreenMask:
        return {0.45F, 0.45F, 0.1F};
    case gsclBlueGreenMask:
        return {0.1F, 0.45F, 0.45F};
    default: // gsclNTSCPAL, and every value that is no formula
        return {0.299F, 0.587F, 0.114F};
    }
}

void iparseBlendImageToColor(ConstPixelView cHost, std::int32_t FillColor, std::span<std::uint8_t> outStream,
                             bool bitDepth24) {
    const auto& kernel = kernels::table();
    const ColorChannels channels = iparseColorChannels(FillColor);
    const std::uint8_t fill[3] = {channels.b, channels.g, channels.r};
    const std::size_t used = cHost.width * (bitDepth24 ? 3 : 4);
    const auto rowLength =
        static_cast<std::size_t>(iparseByteAlignOnWord(bitDepth24 ? 24 : 32, static_cast<std::int32_t>(cHost.width)));
    if (outStream.size() < rowLength * cHost.height) throw std::out_of_range("subscript out of range");
    const auto flatten = bitDepth24 ? kernel.flatten24 : kernel.flatten32;
    for (std::size_t y = 0; y < cHost.height; ++y) {
        std::uint8_t* out = outStream.data() + y * rowLength;
        flatten(out, cHost.row(y), cHost.width, fill);
        std::memset(out + used, 0, rowLength - used);
    }
}

std::int32_t iparseFindColor(std::span<const std::int32_t> PaletteItems, std::int32_t Color, std::int32_t Count,
                             bool& isNew) noexcept {
    isNew = true;
    if (Count < 1) return 1;
    std::int32_t LB = 1;
    std::int32_t UB = Count;
    std::int32_t probe = 1;
    while (LB <= UB) {
        probe = LB + (UB - LB) / 2;
        const std::int32_t item = PaletteItems[static_cast<std::size_t>(probe) - 1];
        if (item == Color) {
            isNew = false;
            return probe;
        }
        if (Color > item) {
            LB = probe + 1;
        } else {
            UB = probe - 1;
        }
    }
    return Color > PaletteItems[static_cast<std::size_t>(probe) - 1] ? probe + 1 : probe;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
