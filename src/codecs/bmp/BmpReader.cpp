// From the pixels of a BMP file to the store.
#include "codecs/bmp/BmpInfo.h"
#include "codecs/bmp/BmpMasks.h"
#include "codecs/bmp/BmpRunLength.h"
#include "codecs/bmp/cBMPparser.h"
#include "kernels/kernels.h"
#include "shared/modParsers.h"
#include "surface/HostAccess.h"
#include <algorithm>
#include <vector>

namespace pixkit {

namespace {

// Whether the data is worth a store. Of rows at least half must be there, so that a file that was cut short still shows
// what it has, while a header that lies cannot take more than twice what the data fills. Run-length codes must be able
// to describe every pixel.
bool canFill(const BmpInfo& info, std::size_t bytes) {
    const auto height = static_cast<std::uint64_t>(info.height);
    if (info.isRunLength()) return BmpRunLength::mostPixels(bytes) >= static_cast<std::uint64_t>(info.width) * height;
    return bytes >= (info.rowBytes() * height + 1) / 2;
}

// Takes all the memory that it needs when it is made.
class RowReader {
  public:
    RowReader(const BmpInfo& info, std::span<const std::uint8_t> data)
        : m_info(info), m_data(data), m_width(static_cast<std::size_t>(info.width)), m_rowBytes(info.rowBytes()),
          m_runLength(data, info.compression == BmpCompression::rle4), m_masked(info.masks, info.bitCount) {
        if (info.isRunLength() || info.bitCount < 8) m_indexes.resize(m_width);
        if (!info.isRunLength()) m_lastBytes.resize(m_rowBytes);
    }

    // The next row in the order of the file.
    void nextRow(std::uint8_t* dst) {
        const auto& kernel = kernels::table();
        if (m_info.isRunLength()) {
            m_runLength.nextRow(m_indexes);
            kernel.fromIndex8(dst, m_indexes.data(), m_width, m_info.palette.data());
            return;
        }
        const std::uint8_t* const src = nextRowBytes();
        switch (m_info.bitCount) {
        case 8:
            kernel.fromIndex8(dst, src, m_width, m_info.palette.data());
            break;
        case 16:
        case 32:
            m_masked.convert(dst, src, m_width);
            break;
        case 24:
            kernel.unpack24(dst, src, m_width, false);
            break;
        default: // 1, 2, 4
            kernel.unpackSamples(m_indexes.data(), src, m_width, m_info.bitCount);
            kernel.fromIndex8(dst, m_indexes.data(), m_width, m_info.palette.data());
        }
    }

  private:
    // Bytes that the data lacks are 0.
    const std::uint8_t* nextRowBytes() {
        if (m_data.size() >= m_rowBytes) {
            const std::uint8_t* const row = m_data.data();
            m_data = m_data.subspan(m_rowBytes);
            return row;
        }
        std::ranges::fill(std::ranges::copy(m_data, m_lastBytes.begin()).out, m_lastBytes.end(), std::uint8_t{0});
        m_data = {};
        return m_lastBytes.data();
    }

    const BmpInfo& m_info;
    std::span<const std::uint8_t> m_data; // what is left of it
    std::size_t m_width, m_rowBytes;
    BmpRunLength m_runLength;
    BmpMaskedRows m_masked;
    std::vector<std::uint8_t> m_indexes;   // of one row
    std::vector<std::uint8_t> m_lastBytes; // of the row in which the data ends, and those after it
};

} // namespace

bool cBMPparser::LoadStream(std::span<const std::uint8_t> Stream, cPixSheet& Host) {
    const auto info = readBmpInfo(Stream);
    if (!info) return false;
    const auto data = Stream.subspan(info->pixelOffset);
    if (!canFill(*info, data.size())) return false;
    RowReader rows(*info, data);
    if (!Host.InitializeDIB(info->width, info->height)) return false;
    const PixelView pixels = HostAccess::pixels(Host);
    for (std::size_t y = 0; y < pixels.height; ++y)
        rows.nextRow(info->isTopDown ? pixels.rowFromTop(y) : pixels.row(y));
    AlphaClassification alpha;
    if (info->masks.alpha != 0) alpha = iparseValidateAlphaChannel(pixels, true, imgNone);
    Host.Alpha(alpha.bIsAlpha);
    HostAccess::ImageType(Host, alpha.imgType);
    return true;
}

} // namespace pixkit
