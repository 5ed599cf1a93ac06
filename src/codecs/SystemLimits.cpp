#include "codecs/SystemLimits.h"
#include "coding/JpegFrame.h"
#include "surface/HostAccess.h"

namespace pixkit {

Reason systemLimit(const cPixSheet& host, double width, double height, double besides) noexcept {
    return HostAccess::limits(host).problem(width, height, 4 * width * height + besides);
}

Reason gifLimit(const cPixSheet& host, const GifFrame& frame, std::size_t size) noexcept {
    // A file of the frame alone is made, and of that the codes are joined.
    return systemLimit(host, static_cast<double>(frame.width), static_cast<double>(frame.height),
                       2 * static_cast<double>(size));
}

Reason fileLimit(const cPixSheet& host, std::span<const std::uint8_t> file) noexcept {
    const bool areLimitsSet = HostAccess::limits(host).areSet();
    if (file.size() >= 2 && file[0] == 0xFF && file[1] == 0xD8) {
        const auto jpeg = readJpegFrame(file);
        if (!jpeg) return areLimitsSet ? Reason("JPEG: nothing tells its size") : Reason();
        const auto coefficients = static_cast<double>(jpeg->coefficientBytes);
        if (const Reason limit = systemLimit(host, jpeg->width, jpeg->height, coefficients)) return limit;
        return isInProportion(*jpeg, file) ? Reason()
                                           : "JPEG: its size or its scans are out of proportion to its bytes";
    }
    if (!areLimitsSet) return {};
    GifFrame gif;
    findGifFrame(file, gif);
    return gif.width != 0 ? gifLimit(host, gif, file.size()) : Reason();
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
