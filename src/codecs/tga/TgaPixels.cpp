// Pixels: raw rows and run-length packets to B, G, R, A in the rows of the store.
#include "codecs/tga/cTGAparser.h"
#include "kernels/kernels.h"
#include "shared/ByteReader.h"
#include "shared/modParsers.h"
#include "surface/HostAccess.h"
#include <algorithm>
#include <cstring>

namespace pixkit {

// The low three bits repeat below the five, not the high three as usual: the colours of 16-bit files are known by it.
const std::array<std::uint8_t, 32> cTGAparser::pal32LUT = [] {
    std::array<std::uint8_t, 32> table{};
    for (unsigned x = 0; x < table.size(); ++x)
        table[x] = static_cast<std::uint8_t>(x * 8 + (x & 7));
    return table;
}();

const cTGAparser::Lookup cTGAparser::grayLookup = [] {
    Lookup pixels{};
    for (std::size_t gray = 0; gray < 256; ++gray) {
        std::fill_n(&pixels[gray * 4], 3, static_cast<std::uint8_t>(gray));
        pixels[gray * 4 + 3] = 255;
    }
    return pixels;
}();

namespace {

// The best that run-length coding can do is packets of 128 equal pixels.
bool canFill(std::size_t pixels, std::size_t dataBytes, std::size_t bytesPerPixel) noexcept {
    const std::size_t fewestPackets = (pixels + 127) / 128;
    return dataBytes / (1 + bytesPerPixel) >= fewestPackets;
}

void fillPixels(std::uint8_t* dst, const std::uint8_t* pixel, std::size_t count) noexcept {
    std::uint32_t value = 0;
    std::memcpy(&value, pixel, 4);
    for (std::size_t i = 0; i < count; ++i)
        std::memcpy(dst + i * 4, &value, 4);
}

// Pixels of a right-to-left file begin at the last pixel's place less one byte, and the store is one row after the
// other: each byte lies one lower than it would, which mixes up the channels. Programs that set this bit have been
// shown so ever since, so it stays. The store's first byte would be the one before it and is dropped; its last stays 0.
void turnRightToLeft(PixelView image, bool hasAlpha) noexcept {
    for (std::size_t y = 0; y < image.height; ++y) {
        std::uint8_t* left = image.row(y);
        for (std::uint8_t* right = left + (image.width - 1) * 4; left < right; left += 4, right -= 4)
            std::swap_ranges(left, left + 4, right);
    }
    const std::size_t bytes = image.stride * image.height;
    // Alpha that the file does not supply is 0 here, which becomes somebody's red.
    for (std::size_t i = 3; !hasAlpha && i < bytes; i += 4)
        image.bits[i] = 0;
    std::memmove(image.bits, image.bits + 1, bytes - 1);
    image.bits[bytes - 1] = 0;
}

} // namespace

// Alpha that the layout does not have comes out as 255.
void cTGAparser::convertPixels(std::uint8_t* dst, const std::uint8_t* src, std::size_t count,
                               const PixelLayout& layout) {
    switch (layout.bytes) {
    case 1:
        kernels::table().fromIndex8(dst, src, count, layout.lookup);
        break;
    case 2:
        for (std::size_t i = 0; i < count; ++i, src += 2, dst += 4) {
            const unsigned v = src[0] | static_cast<unsigned>(src[1]) << 8;
            dst[0] = pal32LUT[v & 31];
            dst[1] = pal32LUT[v >> 5 & 31];
            dst[2] = pal32LUT[v >> 10 & 31];
            // A set bit means transparent here: the polarity of the programs that this reader was made for.
            dst[3] = layout.hasAlpha && (v & 0x8000) != 0 ? 0 : 255;
        }
        break;
    case 3:
        kernels::table().unpack24(dst, src, count, false);
        break;
    default:
        std::memcpy(dst, src, count * 4);
    }
}

bool cTGAparser::buildSurface(cPixSheet& cHost, const PixelLayout& layout) const {
    const bool isRunLength = m_header.isRunLength();
    const std::size_t pixels = std::size_t{m_header.width} * m_header.height;
    if (isRunLength && !canFill(pixels, m_pixelData.size(), layout.bytes)) return false;
    if (!cHost.InitializeDIB(m_header.width, m_header.height)) return false;
    const PixelView image = HostAccess::pixels(cHost);
    if (!isRunLength) {
        placeRawRows(image, layout);
    } else if (!uncompress(image, layout)) {
        cHost.DestroyDIB();
        return false;
    }
    AlphaTypeEnum alpha = AlphaNone;
    const bool isTurned = m_header.isRightToLeft();
    if (isTurned) turnRightToLeft(image, layout.hasAlpha);
    // Without alpha all pixels are opaque already, which is what the classification would come to.
    if (isTurned || layout.hasAlpha) alpha = iparseValidateAlphaChannel(image, true, imgNone).bIsAlpha;
    cHost.Alpha(alpha);
    HostAccess::ImageType(cHost, imgTGA);
    return true;
}

std::uint8_t* cTGAparser::destinationRow(PixelView image, std::size_t fileRow) const noexcept {
    return m_header.isTopDown() ? image.rowFromTop(fileRow) : image.row(fileRow);
}

void cTGAparser::placeRawRows(PixelView image, const PixelLayout& layout) const {
    const std::size_t rowBytes = image.width * layout.bytes;
    for (std::size_t y = 0; y < image.height; ++y)
        convertPixels(destinationRow(image, y), m_pixelData.data() + y * rowBytes, image.width, layout);
}

// Packets may cross rows; what a packet holds beyond the image is left alone. False when the data ends before the image
// is full.
bool cTGAparser::uncompress(PixelView image, const PixelLayout& layout) const {
    const ByteReader reader(m_pixelData);
    std::size_t at = 0;
    std::size_t left = 0; // of the packet
    bool isRun = false;
    std::array<std::uint8_t, 4> runPixel{};
    for (std::size_t y = 0; y < image.height; ++y) {
        std::uint8_t* dst = destinationRow(image, y);
        for (std::size_t x = 0; x < image.width;) {
            if (left == 0) {
                const auto head = reader.byte(at++);
                if (!head) return false;
                left = (*head & 127U) + 1;
                isRun = *head >= 128;
                if (isRun) {
                    const auto source = reader.slice(at, layout.bytes);
                    if (!source) return false;
                    convertPixels(runPixel.data(), source->data(), 1, layout);
                    at += layout.bytes;
                }
            }
            const std::size_t count = std::min(left, image.width - x);
            if (isRun) {
                fillPixels(dst + x * 4, runPixel.data(), count);
            } else {
                const auto source = reader.slice(at, count * layout.bytes);
                if (!source) return false;
                convertPixels(dst + x * 4, source->data(), count, layout);
                at += count * layout.bytes;
            }
            x += count;
            left -= count;
        }
    }
    return true;
}

} // namespace pixkit
