// What transparency comes to, and the codes. Bytes stand in the ledger of written files, and tests/oracle has every
// quality.
#include "codecs/jpg/JpgHuffman.h"
#include "codecs/jpg/JpgQuantisation.h"
#include "support/QuietLoads.h"

using namespace pixkit;
using namespace pixkit::test;

namespace {

class Jpg : public QuietLoads {};

Bytes saved(const cPixSheet& sheet, std::int32_t quality) {
    ByteArray stream;
    EXPECT_TRUE(sheet.SaveToStream_JPG(stream, quality));
    return bytesOf(stream);
}

} // namespace

TEST_F(Jpg, TransparencyIsFlattenedOntoAnotherColour) {
    const TemporaryFolder folder;
    const auto savedOnto = [&](const cPixSheet& sheet, std::int32_t colour) {
        EXPECT_TRUE(sheet.SaveToFile_JPG(folder.name(u8"größe 图.jpg"), 95, colour, false));
        return readFile(folder.path(u8"größe 图.jpg"));
    };
    // The pixels count, not what the property says. 10 * 127 / 255 = 4, 20 * 127 / 255 = 9, 30 * 127 / 255 = 14
    cPixSheet translucent, onColour, onBlack, claimed;
    fill(translucent, 2, 1, {{100, 50, 25, 128}, {0, 0, 0, 0}});
    fill(onColour, 2, 1, {{104, 59, 39, 255}, {10, 20, 30, 255}});
    fill(onBlack, 2, 1, {{100, 50, 25, 255}, {0, 0, 0, 255}});
    fill(claimed, 2, 1, {{100, 50, 25, 0}, {0, 0, 0, 0}}); // alpha that carries nothing
    EXPECT_EQ(savedOnto(translucent, 0x0A141E), saved(onColour, 95));
    EXPECT_EQ(savedOnto(claimed, 0x0A141E), saved(onBlack, 95));
}

TEST_F(Jpg, AQuantisedCoefficientIsNotTheRoundedQuotient) {
    for (std::uint32_t divisor = 1; divisor <= 255; ++divisor) {
        JpgQuantisation table;
        table.fill(static_cast<std::uint8_t>(divisor));
        const kernels::BlockQuantiser q = jpgBlockQuantiser(table);
        for (std::uint32_t x = 0; x < 15000; ++x) {
            const std::uint32_t quotient = ((x + q.bias[9]) * q.reciprocal[9] >> 16) * q.scale[9] >> 16;
            ASSERT_EQ(quotient, (x + 4 * divisor) / (8 * divisor)) << x << " / " << 8 * divisor;
        }
    }
}

TEST_F(Jpg, CodesAreTooLongOrLackOne) {
    // Fibonacci's numbers give the deepest trees, 40 levels here; all 256 symbols; one; and two.
    std::array<std::array<std::uint32_t, 256>, 4> kinds{};
    for (std::size_t i = 0; i < 40; ++i)
        kinds[0][i] = i < 2 ? 1 : kinds[0][i - 1] + kinds[0][i - 2];
    kinds[1].fill(1);
    kinds[2][7] = 5;
    kinds[3][7] = kinds[3][9] = 5;
    for (const auto& frequencies : kinds) {
        const auto table = JpgHuffmanTable::make(frequencies);
        double room = 1; // Kraft's sum, with the code of ones left over
        for (std::size_t i = 0; i < 256; ++i) {
            EXPECT_EQ(table.codes[i].length > 0, frequencies[i] > 0);
            if (frequencies[i] == 0) continue;
            EXPECT_LE(table.codes[i].length, 16);
            EXPECT_NE(table.codes[i].bits, (1U << table.codes[i].length) - 1);
            room -= 1.0 / (1 << table.codes[i].length);
        }
        EXPECT_TRUE(room > 0 && (room <= 0.5 || frequencies[7] == 5)) << room;
    }
}
