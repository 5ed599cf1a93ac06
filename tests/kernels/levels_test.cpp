// The faster kernels against the reference.
#include "kernels/reference.h"
#include "operations.h"

#include <algorithm>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <memory>
#include <new>

namespace pixkit::kernels::test {
namespace {

constexpr std::size_t guardBytes = 64;
constexpr std::uint8_t guardValue = 0xA5;

// A row at a chosen distance from a 64-byte boundary that ends where its memory ends, so that a sanitizer sees any
// byte touched behind it; `guarded` puts known bytes on both sides instead.
class Row {
  public:
    Row(const std::vector<std::uint8_t>& bytes, std::size_t offset, bool guarded)
        : m_size(bytes.size()), m_guard(guarded ? guardBytes : 0), m_before(offset + m_guard),
          m_memory(static_cast<std::uint8_t*>(::operator new (m_before + m_size + m_guard, std::align_val_t{64}))) {
        std::memset(m_memory.get(), guardValue, m_before + m_size + m_guard);
        if (m_size > 0) std::memcpy(data(), bytes.data(), m_size);
    }
    std::uint8_t* data() { return m_memory.get() + m_before; }
    bool guardsIntact() const {
        for (std::size_t i = 0; i < m_before; ++i)
            if (m_memory.get()[i] != guardValue) return false;
        for (std::size_t i = 0; i < m_guard; ++i)
            if (m_memory.get()[m_before + m_size + i] != guardValue) return false;
        return true;
    }

  private:
    struct Free {
        void operator()(std::uint8_t* p) const { ::operator delete (p, std::align_val_t{64}); }
    };
    std::size_t m_size, m_guard, m_before;
    std::unique_ptr<std::uint8_t, Free> m_memory;
};

class KernelLevel : public testing::TestWithParam<CpuLevel> {
  protected:
    void SetUp() override {
        if (!GetParam().isHere()) GTEST_SKIP() << "not on this processor";
        m_table = tableFor(GetParam().features);
    }

    // One call at this level and one of the reference on the same bytes.
    void compare(const Operation& operation, std::size_t count, Content content, std::size_t dstOffset,
                 std::size_t srcOffset) {
        Numbers numbers(count * 131 + dstOffset * 17 + srcOffset);
        const std::size_t dstBytes = operation.dstBytes(count);
        const std::vector<std::uint8_t> before =
            operation.inPlace ? rowOf(content, dstBytes, numbers) : std::vector<std::uint8_t>(dstBytes, 0x5A);
        const std::vector<std::uint8_t> source = rowOf(content, operation.srcBytes(count), numbers);

        std::vector<std::uint8_t> expected = before;
        const std::uint64_t expectedResult =
            operation.run(reference, expected.data(), source.data(), count, operation.argument);
        Row dst(before, dstOffset, true);
        Row src(source, srcOffset, false);
        const std::uint64_t result = operation.run(m_table, dst.data(), src.data(), count, operation.argument);

        SCOPED_TRACE(operation.name + ", count " + std::to_string(count) + ", content " +
                     std::to_string(static_cast<int>(content)) + ", offsets " + std::to_string(dstOffset) + " and " +
                     std::to_string(srcOffset));
        ASSERT_EQ(result, expectedResult);
        ASSERT_TRUE(dst.guardsIntact());
        for (std::size_t i = 0; i < dstBytes; ++i)
            ASSERT_EQ(dst.data()[i], expected[i]) << "at byte " << i;
    }

    Table m_table = reference;
};

TEST_P(KernelLevel, GivesOtherBytesOrWritesOutsideAtSomeLength) {
    for (const Operation& operation : operations()) {
        for (std::size_t count = 0; count <= 140; ++count)
            for (const Content content : contents)
                ASSERT_NO_FATAL_FAILURE(compare(operation, count, content, count * 7 % 64, count * 13 % 64));
        for (const std::size_t count : {255U, 1000U, 4099U})
            for (const Content content : contents)
                ASSERT_NO_FATAL_FAILURE(compare(operation, count, content, 0, 3));
    }
}

TEST_P(KernelLevel, GivesOtherBytesOrFaultsAtSomeAlignment) {
    for (const Operation& operation : operations()) {
        for (std::size_t offset = 0; offset < 64; ++offset) {
            ASSERT_NO_FATAL_FAILURE(compare(operation, 131, Content::bytes, offset, 0));
            ASSERT_NO_FATAL_FAILURE(compare(operation, 131, Content::premultiplied, 0, offset));
            ASSERT_NO_FATAL_FAILURE(compare(operation, 131, Content::bytes, offset, 63 - offset));
        }
    }
}

// Where in the row the proof stands must not matter, nor what comes after it.
TEST_P(KernelLevel, ScanMissesAPixelThatProvesOrCountsPastIt) {
    constexpr std::size_t count = 70;
    const std::array<std::array<std::uint8_t, 4>, 4> proofs = {
        {{129, 0, 0, 128}, {0, 2, 0, 1}, {0, 0, 255, 254}, {9, 0, 0, 0}}};
    for (const auto& proof : proofs) {
        for (std::size_t position = 0; position < count; ++position) {
            Numbers numbers(position);
            std::vector<std::uint8_t> row = rowOf(Content::premultiplied, 4 * count, numbers);
            std::memcpy(row.data() + 4 * position, proof.data(), 4);
            AlphaScan expected;
            AlphaScan scan;
            EXPECT_EQ(m_table.scanAlpha(row.data(), count, scan), reference.scanAlpha(row.data(), count, expected));
            EXPECT_EQ(scan.zeroCount, expected.zeroCount);
            EXPECT_EQ(scan.opaqueCount, expected.opaqueCount);
            EXPECT_EQ(scan.state, expected.state);
            EXPECT_EQ(scan.partial, expected.partial);
        }
    }
}

TEST_P(KernelLevel, PremultiplyTakesSomeAlphaForClearOrOpaque) {
    for (unsigned alpha = 0; alpha < 256; ++alpha) {
        std::vector<std::uint8_t> row(4 * 64, static_cast<std::uint8_t>(alpha));
        EXPECT_EQ(m_table.premultiply(row.data(), 64), alpha != 0 && alpha != 255) << alpha;
    }
}

// Every colour against every alpha, in each of the three channels: the operations where these two bytes meet.
TEST_P(KernelLevel, IsInexactForSomePairOfColourAndAlpha) {
    std::vector<std::uint8_t> pixels;
    for (unsigned colour = 0; colour < 256; ++colour)
        for (unsigned alpha = 0; alpha < 256; ++alpha)
            for (const unsigned byte : {colour, 255 - colour, colour ^ 0x55, alpha})
                pixels.push_back(static_cast<std::uint8_t>(byte));
    const std::size_t count = pixels.size() / 4;
    for (const Operation& operation : operations()) {
        if (operation.dstBits == 0 || operation.srcBits > 32) continue;
        std::vector<std::uint8_t> expected = pixels;
        std::vector<std::uint8_t> got = pixels;
        EXPECT_EQ(operation.run(m_table, got.data(), pixels.data(), count, operation.argument),
                  operation.run(reference, expected.data(), pixels.data(), count, operation.argument));
        EXPECT_TRUE(got == expected) << operation.name;
    }
}

// mixed * alpha / 25500 for every opacity, so for every value that `mixed` can take.
TEST_P(KernelLevel, BlendsInexactlyAtSomeOpacity) {
    for (std::uint32_t opacity = 1; opacity <= 100; ++opacity) {
        const std::uint8_t colour[] = {0, static_cast<std::uint8_t>(opacity * 2), 255};
        std::vector<std::uint8_t> got;
        for (unsigned value = 0; value < 65536; ++value)
            for (const unsigned byte : {value, value, value, value >> 8})
                got.push_back(static_cast<std::uint8_t>(byte));
        std::vector<std::uint8_t> expected = got;
        m_table.blendToColour(got.data(), 65536, colour, opacity);
        reference.blendToColour(expected.data(), 65536, colour, opacity);
        EXPECT_TRUE(got == expected) << opacity;
    }
}

// Every alpha over every value, with the brightest and the darkest colour that the alpha allows and one that breaks the
// rule, at every global alpha.
TEST_P(KernelLevel, DrawsInexactlyForSomeAlphaValueAndOpacity) {
    std::vector<std::uint8_t> source;
    std::vector<std::uint8_t> under;
    for (unsigned value = 0; value < 256; ++value) {
        for (unsigned alpha = 0; alpha < 256; ++alpha) {
            for (const unsigned byte : {alpha, 0U, 255U, alpha})
                source.push_back(static_cast<std::uint8_t>(byte));
            under.insert(under.end(), 4, static_cast<std::uint8_t>(value));
        }
    }
    for (unsigned globalAlpha = 0; globalAlpha <= 255; ++globalAlpha) {
        std::vector<std::uint8_t> expected = under;
        std::vector<std::uint8_t> got = under;
        reference.blendScaled(expected.data(), source.data(), 65536, static_cast<std::uint8_t>(globalAlpha));
        m_table.blendScaled(got.data(), source.data(), 65536, static_cast<std::uint8_t>(globalAlpha));
        ASSERT_TRUE(got == expected) << globalAlpha;
        if (globalAlpha != 255) continue;
        m_table.blendOver(under.data(), source.data(), 65536);
        EXPECT_TRUE(under == expected) << "both ways of drawing agree at full opacity";
    }
}

// The few colours whose gray by NTSC/PAL lies on a half above an even number, each alone among others.
TEST_P(KernelLevel, DrawsSomeTieOfGrayRoundedUp) {
    constexpr std::uint8_t ties[][5] = {{16, 8, 20, 255, 12}, {24, 54, 134, 255, 74}, {32, 100, 248, 255, 136}};
    Tone tone;
    tone.isGray = true;
    tone.weights = {0.299F, 0.587F, 0.114F};
    for (const auto& tie : ties) {
        std::vector<std::uint8_t> source(4UL * 1000, 255);
        std::copy(tie, tie + 4, source.begin() + 4 * 600);
        std::vector<std::uint8_t> drawn(source.size());
        m_table.blendToned(drawn.data(), source.data(), 1000, 255, tone);
        EXPECT_EQ(drawn[4 * 600], tie[4]);
    }
}

// Sums that rise by one every `window` columns: the tally takes every value that a box may have, one after the other.
TEST_P(KernelLevel, DividesSomeTallyOfABoxInexactly) {
    std::vector<std::uint8_t> shades;
    for (unsigned alpha = 0; alpha < 256; ++alpha)
        for (const unsigned colour : {255U, 1U, 128U, 255U})
            shades.push_back(static_cast<std::uint8_t>(colour * alpha / 255));
    for (std::size_t window = 1; window <= 21; ++window) {
        const std::size_t count = 255 * window * window;
        std::vector<std::uint16_t> sums(count + window);
        for (std::size_t i = 0; i < sums.size(); ++i)
            sums[i] = static_cast<std::uint16_t>(i / window);
        std::vector<std::uint8_t> row(4 * count);
        m_table.shadeBoxes(row.data(), sums.data(), count, window, shades.data());
        for (std::size_t i = 0; i < count; ++i)
            ASSERT_EQ(std::memcmp(&row[4 * i], &shades[(i + 1) / (window * window) * 4], 4), 0)
                << "tally " << i + 1 << " of a window of " << window;
    }
}

// As the PNG standard words it: the distances to the estimate, in order of preference.
int predicted(int left, int above, int upperLeft) {
    int best = left;
    for (const int candidate : {above, upperLeft}) {
        const int estimate = left + above - upperLeft;
        if (std::abs(estimate - candidate) < std::abs(estimate - best)) best = candidate;
    }
    return best;
}

// Rows are filtered here and must come back. Above alternates between two bytes, so that every second pixel has them
// above and to the upper left, while its left neighbour runs through all values: every triple occurs.
TEST_P(KernelLevel, PaethPredictsWronglyForSomeTriple) {
    constexpr std::size_t step = 4;
    constexpr std::size_t bytes = 256 * 2 * step;
    std::vector<std::uint8_t> above(bytes);
    std::vector<std::uint8_t> wanted(bytes);
    std::vector<std::uint8_t> row(bytes);
    for (unsigned pair = 0; pair < 65536; pair += step) {
        for (std::size_t i = 0; i < bytes; ++i) {
            const std::size_t pixel = i / step;
            const unsigned here = pair + static_cast<unsigned>(i % step);
            above[i] = static_cast<std::uint8_t>(pixel % 2 == 0 ? here >> 8 : here);
            wanted[i] = static_cast<std::uint8_t>(pixel % 2 == 0 ? pixel / 2 : 255 - pixel / 3);
            const int left = i < step ? 0 : wanted[i - step];
            const int upperLeft = i < step ? 0 : above[i - step];
            row[i] = static_cast<std::uint8_t>(wanted[i] - predicted(left, above[i], upperLeft));
        }
        m_table.unfilterPaeth(row.data(), above.data(), bytes, step);
        ASSERT_TRUE(row == wanted) << pair;
    }
}

INSTANTIATE_TEST_SUITE_P(All, KernelLevel, testing::ValuesIn(cpuLevels),
                         [](const auto& level) { return std::string(level.param.name); });

} // namespace
} // namespace pixkit::kernels::test
