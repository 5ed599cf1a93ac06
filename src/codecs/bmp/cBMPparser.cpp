#include "codecs/bmp/cBMPparser.h"
#include "shared/modParsers.h"
#include "surface/Capabilities.h"
#include "surface/HostAccess.h"
#include <array>
#include <span>
#include <vector>

namespace pixkit {

namespace {

constexpr std::uint32_t headerSize = 54;
using BmpHeader = std::array<std::uint8_t, headerSize>;

BmpHeader makeHeader(const cPixSheet& host, std::uint16_t bitCount, std::uint32_t imageSize) {
    BmpHeader header{};
    const auto put = [&](std::size_t offset, std::size_t bytes, std::uint32_t value) {
        for (std::size_t i = 0; i < bytes; ++i)
            header[offset + i] = static_cast<std::uint8_t>(value >> (8 * i));
    };
    header[0] = 'B';
    header[1] = 'M';
    put(2, 4, imageSize + headerSize);
    put(10, 4, headerSize); // where the pixels begin
    put(14, 4, 40);         // biSize
    put(18, 4, static_cast<std::uint32_t>(host.Width()));
    put(22, 4, static_cast<std::uint32_t>(host.Height())); // positive: bottom-up
    put(26, 2, 1);                                         // biPlanes
    put(28, 2, bitCount);
    put(34, 4, imageSize); // biSizeImage
    return header;
}

bool writeFile(const cPixSheet& host, const std::string& FileName, const BmpHeader& header,
               std::span<const std::uint8_t> pixels) {
    const bool useUnicode = (HostAccess::osCAP(host) & capNtFamily) != 0;
    const platform::UniqueFile file(iparseGetFileHandle(FileName, false, useUnicode));
    return file && iparseWriteWhole(file.get(), header) && iparseWriteWhole(file.get(), pixels);
}

} // namespace

bool cBMPparser::SaveAsBMP(const cPixSheet& cHost, const std::string& FileName, ByteArray& outStream,
                           bool Keep32bppFormat, std::int32_t TransparentFillColor) {
    const ConstPixelView image = HostAccess::pixels(cHost);
    if (!image) return false;
    const bool hasAlpha = iparseHasAlpha(image);
    const bool as32bpp = hasAlpha && Keep32bppFormat;

    ByteArray rows; // 24-bit rows; a 32-bit file takes the store as it is
    std::span<const std::uint8_t> pixels(image.bits, image.stride * image.height);
    if (!as32bpp) {
        if (hasAlpha) {
            const auto rowLength = static_cast<std::size_t>(iparseByteAlignOnWord(24, cHost.Width()));
            rows.redim(rowLength, image.height);
            iparseBlendImageToColor(image, TransparentFillColor, {rows.data(), rows.size()}, true);
        } else if (!cHost.GetDIBbits(rows, true, true, false, true, true)) {
            return false;
        }
        pixels = rows.bytes();
    }
    const auto imageSize = static_cast<std::uint32_t>(pixels.size());
    const BmpHeader header = makeHeader(cHost, as32bpp ? 32 : 24, imageSize);

    if (!FileName.empty()) return writeFile(cHost, FileName, header, pixels);
    std::vector<std::uint8_t> stream; // filled as it grows, because setting it to 0 first would cost as much again
    stream.reserve(headerSize + pixels.size());
    stream.insert(stream.end(), header.begin(), header.end());
    stream.insert(stream.end(), pixels.begin(), pixels.end());
    outStream = ByteArray(std::move(stream));
    return true;
}

} // namespace pixkit
