// What transparency comes to, and the codes. Bytes stand in the ledger of written files, and tests/oracle has every
// quality.
#include "codecs/PictureFacts.h"
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

// Remarks of more bytes than a part has; and an end that is not where it belongs, on the edge of a block, or missing.
TEST_F(Jpg, HeadersAreReadInPartsHoweverFarApartTheyAre) {
    struct Parts : HeaderSource {
        std::uint64_t size() const override { return bytes.size(); }
        Bytes read(std::uint64_t position, std::size_t count) override {
            EXPECT_LE(count, 128U << 10);
            const auto rest = std::span(bytes).subspan(static_cast<std::size_t>(position));
            const auto part = rest.first(std::min(count, rest.size()));
            return {part.begin(), part.end()};
        }
        Bytes bytes;
    } file;
    for (const unsigned length : {100U, 65535U, 40000U}) {
        file.bytes = readFile(sourceFolder() / "tests/data/notes/turned.jpg");
        Bytes remark = {0xFF, 0xFE, static_cast<std::uint8_t>(length >> 8), static_cast<std::uint8_t>(length)};
        remark.resize(length + 2, 0xFF);
        for (int i = 0; i < 8; ++i)
            file.bytes.insert(file.bytes.begin() + 20, remark.begin(), remark.end());
        const std::size_t size = file.bytes.size();
        for (const std::size_t behind : {0U, 65534U, 65535U, 300000U}) {
            file.bytes.resize(size + behind);
            const auto facts = readJpgFacts(file);
            ASSERT_TRUE(facts && facts->width == 8 && facts->height == 16) << length;
            EXPECT_TRUE(facts->density && facts->notes.orientation == 6 && facts->quality == 100) << length;
            EXPECT_FALSE(facts->notes.endsEarly) << behind;
        }
        file.bytes[size - 1] = 0;
        EXPECT_TRUE(readJpgFacts(file)->notes.endsEarly);
    }
}
// SPDX-License-Identifier: MIT
