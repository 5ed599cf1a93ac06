// The faster kernels against the reference, and all of them against what they have always given.
#include "GuardedPages.h"
#include "Ledger.h"
#include "kernels/reference.h"
#include "operations.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <numeric>

namespace pixkit::kernels::test {
namespace {

using namespace pixkit::test;

using Row = std::vector<std::uint8_t>;

constexpr std::uint8_t untouched = 0xA5;

// Where rows lie between their guard pages: so many bytes in front of the second, or at the first.
constexpr std::size_t atBegin = SIZE_MAX;

std::uint8_t* placed(const GuardedPages& pages, const Row& row, std::size_t before) {
    std::uint8_t* const p = before == atBegin ? pages.begin() : pages.end() - before - row.size();
    std::memset(before == atBegin ? p + row.size() : p - 64, untouched, 64);
    std::memset(p + row.size(), untouched, before == atBegin ? 64 : before);
    if (!row.empty()) std::memcpy(p, row.data(), row.size());
    return p;
}

class KernelLevel : public testing::TestWithParam<CpuLevel> {
  protected:
    void SetUp() override {
        if (!GetParam().isHere()) GTEST_SKIP() << "not on this processor";
        m_table = tableFor(GetParam().features);
    }

    // One call at this level and one of the reference on the same bytes.
    void compare(const Operation& operation, std::size_t count, const Row& before, const Row& source,
                 std::size_t dstPlace = 0, std::size_t srcPlace = 0) {
        Row expected = before;
        const std::uint64_t expectedResult = operation.run({reference, expected.data(), source.data(), count});
        std::uint8_t* const dst = placed(m_dst, before, dstPlace);
        const std::uint8_t* const src = placed(m_src, source, srcPlace);
        const std::uint64_t result = operation.run({m_table, dst, src, count});
        SCOPED_TRACE(operation.name + ", count " + std::to_string(count) + ", places " + std::to_string(dstPlace) +
                     " and " + std::to_string(srcPlace));
        ASSERT_EQ(result, expectedResult);
        ASSERT_TRUE(std::equal(expected.begin(), expected.end(), dst));
        const auto isUntouched = [](std::uint8_t byte) { return byte == untouched; };
        ASSERT_TRUE(dstPlace == atBegin || std::all_of(dst - 64, dst, isUntouched));
        ASSERT_TRUE(
            std::all_of(dst + before.size(), dst + before.size() + (dstPlace == atBegin ? 64 : dstPlace), isUntouched));
    }
    void compare(const Operation& operation, std::size_t count, Content content, std::size_t dstPlace,
                 std::size_t srcPlace) {
        Numbers numbers(count * 131 + dstPlace * 17 + srcPlace);
        Row before(operation.dstBytes(count), 0x5A);
        if (operation.inPlace) before = rowOf(content, before.size(), numbers);
        compare(operation, count, before, rowOf(content, operation.srcBytes(count), numbers), dstPlace, srcPlace);
    }

    Table m_table = reference;
    GuardedPages m_dst, m_src;
    const std::vector<Operation> m_operations = operations(false);
};

TEST_P(KernelLevel, GivesOtherBytesOrTouchesOthersAtSomeLength) {
    std::vector<std::size_t> counts(141);
    std::iota(counts.begin(), counts.end(), 0U);
    counts.insert(counts.end(), {255, 1000, 4099});
    for (const Operation& operation : m_operations)
        for (const std::size_t count : counts)
            for (const Content content : contents)
                for (const std::size_t place : {std::size_t{0}, atBegin})
                    ASSERT_NO_FATAL_FAILURE(compare(operation, count, content, place, place));
}

TEST_P(KernelLevel, GivesOtherBytesOrFaultsAtSomeAlignment) {
    for (const Operation& operation : m_operations)
        for (std::size_t place = 0; place < 64; ++place)
            for (const std::size_t other : {std::size_t{0}, 63 - place})
                ASSERT_NO_FATAL_FAILURE(compare(operation, 131, Content::premultiplied, place, other));
}

// Every colour against every alpha in each of the three channels, and every alpha over every value with the brightest
// colour that it allows, the darkest, and one that breaks the rule.
TEST_P(KernelLevel, IsInexactForSomePairOfBytesOrOpacity) {
    Row pixels, source, under;
    const auto append = [](Row& row, std::initializer_list<unsigned> bytes) {
        for (const unsigned byte : bytes)
            row.push_back(static_cast<std::uint8_t>(byte));
    };
    for (unsigned value = 0; value < 256; ++value) {
        for (unsigned alpha = 0; alpha < 256; ++alpha) {
            append(pixels, {value, 255 - value, value ^ 0x55, alpha});
            append(source, {alpha, 0, 255, alpha});
            append(under, {value, value, value, value});
        }
    }
    for (const Operation& operation : operations(true)) {
        if (operation.dstBits == 0 || operation.srcBits > 32) continue;
        ASSERT_NO_FATAL_FAILURE(compare(operation, 65536, pixels, pixels));
        if (!operation.inPlace || operation.srcBits != 32) continue;
        ASSERT_NO_FATAL_FAILURE(compare(operation, 65536, under, source));
    }
}

// All premultiplied pixels of one colour, in each channel: what a file of straight alpha holds becomes the same pixel
// again.
TEST_P(KernelLevel, StraightensSomePixelThatPremultiplyingDoesNotGiveBack) {
    Row pixels;
    for (unsigned alpha = 0; alpha < 256; ++alpha)
        for (unsigned colour = 0; colour <= alpha; ++colour)
            for (const unsigned byte : {colour, alpha - colour, colour / 2, alpha})
                pixels.push_back(static_cast<std::uint8_t>(byte));
    Row straight(pixels.size()), again(pixels.size());
    m_table.straighten(straight.data(), pixels.data(), pixels.size() / 4);
    m_table.copyPremultiplying(again.data(), straight.data(), pixels.size() / 4);
    EXPECT_TRUE(again == pixels);
}

// Rows of one value, which is clear, opaque or neither, and with one pixel at each place of a vector that proves them
// not premultiplied.
TEST_P(KernelLevel, TakesSomeAlphaOrPixelForAnother) {
    for (const Operation& operation : m_operations) {
        if (operation.srcBits > 32 || operation.dstBits > 32) continue;
        for (unsigned value = 0; value < 256; ++value) {
            const Row row(4 * 64, static_cast<std::uint8_t>(value));
            ASSERT_NO_FATAL_FAILURE(compare(operation, 64, row, row));
            Row spoiled = row;
            ++spoiled[value + (value % 4 == 3 ? 0 : 1)];
            ASSERT_NO_FATAL_FAILURE(compare(operation, 64, spoiled, spoiled));
        }
    }
}

// A colour whose gray by NTSC/PAL lies on a half above an even number, alone among others.
TEST_P(KernelLevel, DrawsALoneTieOfGrayRoundedUp) {
    Tone tone;
    tone.isGray = true;
    tone.weights = {0.299F, 0.587F, 0.114F};
    for (std::size_t pixel = 0; pixel < 100; ++pixel) {
        Row source(4UL * 100, 255), drawn(source.size());
        std::memcpy(&source[4 * pixel], "\x18\x36\x86", 3); // 0.114 * 24 + 0.587 * 54 + 0.299 * 134 = 74.5
        m_table.blendToned(drawn.data(), source.data(), 100, 255, tone);
        EXPECT_EQ(drawn[4 * pixel], 74) << pixel;
    }
}

// Sums that rise by one every `window` columns: the tally takes every value that a box may have, one after the other.
TEST_P(KernelLevel, DividesSomeTallyOfABoxInexactly) {
    Row shades(1024); // of white
    for (std::size_t i = 0; i < shades.size(); ++i)
        shades[i] = static_cast<std::uint8_t>(i / 4);
    for (std::size_t window = 1; window <= 21; ++window) {
        const std::size_t count = 255 * window * window;
        std::vector<std::uint16_t> sums(count + window);
        for (std::size_t i = 0; i < sums.size(); ++i)
            sums[i] = static_cast<std::uint16_t>(i / window);
        Row row(4 * count);
        m_table.shadeBoxes(row.data(), sums.data(), count, window, shades.data());
        for (std::size_t i = 0; i < count; ++i)
            ASSERT_EQ(std::memcmp(&row[4 * i], &shades[(i + 1) / (window * window) * 4], 4), 0)
                << "tally " << i + 1 << " of a window of " << window;
    }
}

// Rows are filtered by the reference and must come back. Above alternates between two bytes, so that every second pixel
// has them above and to the upper left, while its left neighbour runs through all values: every triple occurs.
TEST_P(KernelLevel, PaethPredictsWronglyForSomeTriple) {
    constexpr std::size_t step = 4, bytes = 256 * 2 * step;
    Row above(bytes), wanted(bytes), row(bytes);
    for (unsigned pair = 0; pair < 65536; pair += step) {
        for (std::size_t i = 0; i < bytes; ++i) {
            const std::size_t pixel = i / step;
            const unsigned here = pair + static_cast<unsigned>(i % step);
            above[i] = static_cast<std::uint8_t>(pixel % 2 == 0 ? here >> 8 : here);
            wanted[i] = static_cast<std::uint8_t>(pixel % 2 == 0 ? pixel / 2 : 255 - pixel / 3);
        }
        reference.filterPaeth(row.data(), wanted.data(), above.data(), bytes, step);
        m_table.unfilterPaeth(row.data(), above.data(), bytes, step);
        ASSERT_TRUE(row == wanted) << pair;
    }
}

// Tables as no code would give them: any meaning and length, special entries and copies among literals.
TEST_P(KernelLevel, JoinsSomeCodesThatDoNotFitOrAreNoLiterals) {
    Numbers numbers(5);
    for (int round = 0; round < 200; ++round) {
        const unsigned indexBits = 3 + numbers.below(9);
        std::vector<CodeEntry> entries(std::size_t{1} << indexBits);
        for (CodeEntry& entry : entries) {
            const CodeEntry bits = 1 + numbers.below(indexBits), kind = numbers.below(4);
            const CodeEntry flags = kind == 0 ? specialFlag : kind == 1 ? 0 : literalFlag | oneLiteral;
            const CodeEntry meaning = kind == 1 ? numbers.next() & 0xFF000000 : numbers.byte() * 0x01010000U;
            entry = meaning | flags | bits << 8 | bits;
        }
        for (const unsigned joinedBits : {indexBits, indexBits + 1}) {
            std::vector<CodeEntry> expected(std::size_t{1} << joinedBits);
            reference.joinCodes(expected.data(), joinedBits, entries.data(), indexBits);
            CodeEntry* const joined = m_dst.atEnd(std::vector<CodeEntry>(expected.size()));
            m_table.joinCodes(joined, joinedBits, m_src.atEnd(entries), indexBits);
            ASSERT_TRUE(std::equal(expected.begin(), expected.end(), joined)) << indexBits << " to " << joinedBits;
        }
    }
}

// One number for what all kernels give over a long random run: the same on every processor, compiler and system.
TEST_P(KernelLevel, DiffersBetweenBuildsOrProcessors) {
    Row all;
    Numbers numbers(20);
    for (const Operation& operation : m_operations) {
        for (int round = 0; round < 40; ++round) {
            const std::size_t count = 1 + numbers.below(2000);
            Row dst = rowOf(contents[round % 5], operation.dstBytes(count), numbers);
            const Row src = rowOf(contents[round % 5], operation.srcBytes(count), numbers);
            const std::uint64_t result = operation.run({m_table, dst.data(), src.data(), count});
            for (int shift = 0; shift < 64; shift += 8)
                all.push_back(static_cast<std::uint8_t>(result >> shift));
            all.insert(all.end(), dst.begin(), dst.end());
        }
    }
    EXPECT_EQ(checksum(all), "c646ba38aa7ed5ae");
}

INSTANTIATE_TEST_SUITE_P(All, KernelLevel, testing::ValuesIn(cpuLevels),
                         [](const auto& level) { return std::string(level.param.name); });

} // namespace
} // namespace pixkit::kernels::test
// SPDX-License-Identifier: MIT
