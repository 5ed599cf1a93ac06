// Builds PNG data in memory, right and wrong, without the help of any library, so that the same tests run everywhere.
#pragma once
#include "support/Pictures.h"
#include <span>
#include <string_view>

namespace pixkit::test {

inline Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

std::uint32_t crc32(std::span<const std::uint8_t> bytes);

// What IHDR says, and which filters the rows of a pass go through, in turn.
struct PngImage {
    std::uint32_t width = 1, height = 1;
    std::uint8_t bitDepth = 8, colorType = 6;
    std::uint8_t compressionMethod = 0, filterMethod = 0, interlace = 0;
    std::vector<std::uint8_t> filters = {0};

    std::size_t channels() const { return colorType == 2 ? 3 : colorType == 4 ? 2 : colorType == 6 ? 4 : 1; }
    std::size_t bitsPerPixel() const { return channels() * bitDepth; }
};

// The filtered rows of the image, all passes in turn, before compression. Of samples the low
// bitDepth bits count. A filter above 4 is written and not applied.
Bytes filteredRows(const PngImage& image, const Samples& samples);

// A zlib stream of stored blocks.
Bytes zlibStored(const Bytes& data);

enum class Crc : std::uint8_t { right, wrong, zero };

// Signature and chunks in the order in which they are added.
class PngBuilder {
  public:
    PngBuilder() : m_bytes{0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A} {}

    PngBuilder& chunk(std::string_view type, const Bytes& data = {}, Crc crc = Crc::right);
    PngBuilder& IHDR(const PngImage& image, Crc crc = Crc::right);
    // The stream in pieces of `pieceSize` bytes; 0 = in one.
    PngBuilder& IDAT(const Bytes& stream, std::size_t pieceSize = 0, Crc crc = Crc::right);
    PngBuilder& bytes(const Bytes& raw); // as they are
    Bytes IEND() { return chunk("IEND").m_bytes; }
    const Bytes& data() const { return m_bytes; }

  private:
    Bytes m_bytes;
};

// A whole picture; `before` is what stands between IHDR and the image data.
Bytes png(const PngImage& image, const Samples& samples, const PngBuilder& before = {});
// The same from filtered rows.
Bytes png(const PngImage& image, const Bytes& rows, const PngBuilder& before = {});

} // namespace pixkit::test
