#include "support/PngLoading.h"
#include "support/PngMatrix.h"

using namespace pixkit;
using namespace pixkit::test;

namespace {

class PngGolden : public QuietLoads {};

// FNV-1a, 64 bits.
class Checksum {
  public:
    void add(std::span<const std::uint8_t> bytes) {
        for (const std::uint8_t byte : bytes)
            m_value = (m_value ^ byte) * 0x100000001B3U;
    }
    void add(std::int32_t value) {
        for (int shift = 0; shift < 32; shift += 8)
            add(std::array{static_cast<std::uint8_t>(value >> shift)});
    }
    std::uint64_t value() const { return m_value; }

  private:
    std::uint64_t m_value = 0xCBF29CE484222325U;
};

} // namespace

// One number for every build, word size, system and kernel level. The same pictures are compared with libpng in
// tests/oracle, so a new number is right when that test passes.
TEST_F(PngGolden, PixelsOfAnyKindOfPictureDifferBetweenBuilds) {
    Checksum checksum;
    cPixSheet sheet;
    for (const PngFormat& format : pngFormats) {
        forEachMatrixPicture(format.colorType, format.bitDepth, [&](const MatrixPicture& picture) {
            ASSERT_TRUE(sheet.LoadPicture_Stream(ByteArray(picture.data))) << picture.name;
            checksum.add({sheet.BitsPointer(), static_cast<std::size_t>(sheet.scanWidth() * sheet.Height())});
            checksum.add(sheet.Alpha());
            checksum.add(sheet.ImageType());
        });
    }
    EXPECT_EQ(checksum.value(), 7050497945262005493U);
}
