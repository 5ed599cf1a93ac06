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
    if (!HostAccess::limits(host).areSet()) return {};
    if (const auto jpeg = readJpegFrame(file))
        return systemLimit(host, jpeg->width, jpeg->height, static_cast<double>(jpeg->coefficientBytes));
    GifFrame gif;
    findGifFrame(file, gif);
    return gif.width != 0 ? gifLimit(host, gif, file.size()) : Reason();
}

} // namespace pixkit
