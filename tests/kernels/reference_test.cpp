// The reference kernels against values worked out by hand, so that all levels agreeing cannot mean all being wrong.
#include "kernels/reference.h"

#include <gtest/gtest.h>

#include <vector>

namespace pixkit::kernels::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(KernelReference, ScanClassifiesWrongly) {
    struct Row {
        const char* what;
        Bytes pixels;
        bool result;
        AlphaScan scan;
    };
    const Row rows[] = {
        {"clear, opaque", {0, 0, 0, 0, 9, 8, 7, 255}, true, {1, 1, AlphaScan::consistent, false}},
        {"colour up to alpha", {128, 1, 0, 128}, true, {0, 0, AlphaScan::consistent, true}},
        {"red above alpha", {0, 0, 129, 128, 0, 0, 0, 0}, false, {0, 0, AlphaScan::notPremultiplied, false}},
        {"colour in clear alone", {0, 10, 0, 0, 0, 0, 0, 0}, true, {2, 0, AlphaScan::colourInClear, false}},
        {"colour in clear, then opaque",
         {10, 0, 0, 0, 0, 0, 0, 255, 0, 0, 0, 0},
         false,
         {1, 0, AlphaScan::notPremultiplied, false}},
        {"colour in clear, then black with alpha 1",
         {10, 0, 0, 0, 0, 0, 0, 1},
         false,
         {1, 0, AlphaScan::notPremultiplied, false}},
    };
    for (const Row& row : rows) {
        AlphaScan scan;
        EXPECT_EQ(reference.scanAlpha(row.pixels.data(), row.pixels.size() / 4, scan), row.result) << row.what;
        EXPECT_EQ(scan.zeroCount, row.scan.zeroCount) << row.what;
        EXPECT_EQ(scan.opaqueCount, row.scan.opaqueCount) << row.what;
        EXPECT_EQ(scan.state, row.scan.state) << row.what;
        EXPECT_EQ(scan.partial, row.scan.partial) << row.what;
    }
}

TEST(KernelReference, AlphaArithmeticIsOff) {
    // 200 * 128 / 255 = 100.39; clear pixels lose their colour; opaque ones keep it
    Bytes pixels = {200, 100, 50, 128, 1, 2, 3, 0, 254, 255, 0, 255, 255, 1, 254, 1};
    EXPECT_TRUE(reference.premultiply(pixels.data(), 4));
    EXPECT_EQ(pixels, (Bytes{100, 50, 25, 128, 0, 0, 0, 0, 254, 255, 0, 255, 1, 0, 0, 1}));
    Bytes simple = {1, 2, 3, 0, 1, 2, 3, 255};
    EXPECT_FALSE(reference.premultiply(simple.data(), 2));

    // 100 * 255 / 128 = 199.2; above alpha: 200 * 255 / 100 = 510 = 254 in 8 bits
    const Bytes straight = {100, 50, 25, 128, 7, 8, 9, 0, 7, 8, 9, 255, 200, 100, 0, 100};
    Bytes out(16);
    reference.unpremultiply(out.data(), straight.data(), 4);
    EXPECT_EQ(out, (Bytes{199, 99, 49, 128, 7, 8, 9, 0, 7, 8, 9, 255, 254, 255, 0, 100}));

    reference.setOpaque(out.data(), 2);
    EXPECT_EQ(out, (Bytes{199, 99, 49, 255, 7, 8, 9, 255, 7, 8, 9, 255, 254, 255, 0, 100}));
}

TEST(KernelReference, EffectsAreOff) {
    Bytes inverted = {10, 20, 30, 128, 1, 2, 3, 0, 200, 0, 100, 100};
    reference.invert(inverted.data(), 3);
    EXPECT_EQ(inverted, (Bytes{118, 108, 98, 128, 1, 2, 3, 0, 0, 100, 0, 100}));

    // Halves meet ties: 0.5 -> 0, 1.5 -> 2, 2.5 -> 2; clear pixels keep their colour
    Bytes ties = {1, 0, 0, 255, 1, 2, 0, 255, 0, 5, 0, 7, 9, 8, 7, 0};
    reference.grayscale(ties.data(), 4, {0.0F, 0.5F, 0.5F});
    EXPECT_EQ(ties, (Bytes{0, 0, 0, 255, 2, 2, 2, 255, 2, 2, 2, 7, 9, 8, 7, 0}));
    // 0.299 * 200 + 0.587 * 100 + 0.114 * 50 = 124.2
    Bytes television = {50, 100, 200, 255};
    reference.grayscale(television.data(), 1, {0.299F, 0.587F, 0.114F});
    EXPECT_EQ(television, (Bytes{124, 124, 124, 255}));

    std::vector<std::int16_t> adjust(256, 60);
    const Bytes source = {100, 150, 190, 200, 1, 2, 3, 0};
    Bytes lighter(8);
    reference.adjustLightness(lighter.data(), source.data(), 2, adjust.data(), true);
    EXPECT_EQ(lighter, (Bytes{160, 200, 200, 200, 1, 2, 3, 0}));
    adjust.assign(256, -120);
    reference.adjustLightness(lighter.data(), source.data(), 2, adjust.data(), false);
    EXPECT_EQ(lighter, (Bytes{0, 30, 70, 200, 1, 2, 3, 0}));

    // (100 * 67 + 255 * 33) * 128 / 25500 = 75.87; blue alone replaces at 100
    const std::uint8_t blue[] = {255, 0, 0};
    Bytes blended = {100, 100, 0, 128, 1, 2, 3, 0};
    reference.blendToColour(blended.data(), 2, blue, 33);
    EXPECT_EQ(blended, (Bytes{75, 33, 0, 128, 1, 2, 3, 0}));
    reference.blendToColour(blended.data(), 1, blue, 100);
    EXPECT_EQ(blended, (Bytes{128, 0, 0, 128, 1, 2, 3, 0}));

    Bytes found = {1, 2, 3, 255, 1, 2, 3, 254, 1, 2, 3, 255};
    const std::uint8_t from[] = {1, 2, 3, 255};
    const std::uint8_t to[] = {0, 0, 0, 0};
    EXPECT_EQ(reference.replacePixel(found.data(), 3, from, to), 2U);
    EXPECT_EQ(found, (Bytes{0, 0, 0, 0, 1, 2, 3, 254, 0, 0, 0, 0}));

    // 200 * 127 / 255 = 99.6; held at 255; colour of clear pixels is not added
    const Bytes layered = {100, 250, 0, 128, 9, 9, 9, 0, 1, 2, 3, 255};
    const std::uint8_t fill[] = {200, 200, 10};
    Bytes flat(12);
    reference.flatten32(flat.data(), layered.data(), 3, fill);
    EXPECT_EQ(flat, (Bytes{199, 255, 4, 255, 200, 200, 10, 255, 1, 2, 3, 255}));
    Bytes flat3(9);
    reference.flatten24(flat3.data(), layered.data(), 3, fill);
    EXPECT_EQ(flat3, (Bytes{199, 255, 4, 200, 200, 10, 1, 2, 3}));
}

TEST(KernelReference, LayoutsMixBytesUp) {
    const Bytes pixels = {1, 2, 3, 4, 5, 6, 7, 8};
    Bytes out(8);
    reference.mirror(out.data(), pixels.data(), 2);
    EXPECT_EQ(out, (Bytes{5, 6, 7, 8, 1, 2, 3, 4}));
    reference.swapRedBlue(out.data(), out.data(), 2);
    EXPECT_EQ(out, (Bytes{7, 6, 5, 8, 3, 2, 1, 4}));
    Bytes three(6);
    reference.pack24(three.data(), pixels.data(), 2, false);
    EXPECT_EQ(three, (Bytes{1, 2, 3, 5, 6, 7}));
    reference.pack24(three.data(), pixels.data(), 2, true);
    EXPECT_EQ(three, (Bytes{3, 2, 1, 7, 6, 5}));
    reference.unpack24(out.data(), three.data(), 2, false);
    EXPECT_EQ(out, (Bytes{3, 2, 1, 255, 7, 6, 5, 255}));
    reference.unpack24(out.data(), three.data(), 2, true);
    EXPECT_EQ(out, (Bytes{1, 2, 3, 255, 5, 6, 7, 255}));
    Bytes alpha(2);
    reference.extractAlpha(alpha.data(), pixels.data(), 2);
    EXPECT_EQ(alpha, (Bytes{4, 8}));
}

TEST(KernelReference, RowFiltersAreOff) {
    const Bytes above = {10, 20, 30, 40, 50, 60};
    Bytes row = {1, 2, 3, 4, 5, 255};
    reference.unfilterSub(row.data(), 6, 2);
    EXPECT_EQ(row, (Bytes{1, 2, 4, 6, 9, 5}));
    row = {1, 2, 3, 4, 5, 200};
    reference.unfilterUp(row.data(), above.data(), 6);
    EXPECT_EQ(row, (Bytes{11, 22, 33, 44, 55, 4}));
    // The sum may pass 255 before it is halved: (250 + 255) / 2 = 252
    const Bytes bright = {255, 255};
    row = {123, 10};
    reference.unfilterAvg(row.data(), bright.data(), 2, 1);
    EXPECT_EQ(row, (Bytes{250, 6}));
    // Left 10, above 20, upper left 15: the distances are 5, 5, 0. All equal: left. First pixel: above.
    struct Triple {
        std::uint8_t left, above, upperLeft, predicted;
    };
    for (const Triple& t : {Triple{10, 20, 15, 15}, Triple{7, 7, 7, 7}, Triple{10, 30, 0, 30}, Triple{30, 10, 0, 30},
                            Triple{100, 90, 200, 90}, Triple{255, 0, 0, 255}, Triple{0, 255, 255, 0},
                            Triple{20, 10, 18, 10}, Triple{4, 8, 7, 4}}) {
        const Bytes higher = {t.upperLeft, t.above};
        row = {static_cast<std::uint8_t>(t.left - t.upperLeft), 0};
        reference.unfilterPaeth(row.data(), higher.data(), 2, 1);
        EXPECT_EQ(row, (Bytes{t.left, t.predicted}));
    }
}

TEST(KernelReference, PngSamplesBecomeOtherPixels) {
    Bytes out(8);
    const Bytes samples = {200, 100, 50, 128, 9, 8, 7, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    reference.fromRgb8(out.data(), samples.data(), 2);
    EXPECT_EQ(out, (Bytes{50, 100, 200, 255, 8, 9, 128, 255}));
    reference.fromRgba8(out.data(), samples.data(), 2);
    EXPECT_EQ(out, (Bytes{25, 50, 100, 128, 0, 0, 0, 0}));
    reference.fromGrayAlpha8(out.data(), samples.data() + 2, 2);
    EXPECT_EQ(out, (Bytes{25, 25, 25, 128, 0, 0, 0, 8})) << "50 with 128, 9 with 8";
    Bytes lut(1024);
    for (std::size_t i = 0; i < 4; ++i)
        lut[4 * 200 + i] = lut[i] = static_cast<std::uint8_t>(i + 1);
    reference.fromIndex8(out.data(), samples.data(), 2, lut.data());
    EXPECT_EQ(out, (Bytes{1, 2, 3, 4, 0, 0, 0, 0}));

    // The low bytes, here 255, count for nothing.
    const Bytes deep = {200, 255, 100, 255, 50, 255, 128, 255, 9, 255, 8, 255, 7, 255, 0, 255};
    reference.fromGray16(out.data(), deep.data(), 2);
    EXPECT_EQ(out, (Bytes{200, 200, 200, 255, 100, 100, 100, 255}));
    reference.fromRgb16(out.data(), deep.data(), 2);
    EXPECT_EQ(out, (Bytes{50, 100, 200, 255, 8, 9, 128, 255}));
    reference.fromRgba16(out.data(), deep.data(), 2);
    EXPECT_EQ(out, (Bytes{25, 50, 100, 128, 0, 0, 0, 0}));
    reference.fromGrayAlpha16(out.data(), deep.data() + 4, 2);
    EXPECT_EQ(out, (Bytes{25, 25, 25, 128, 0, 0, 0, 8}));

    const Bytes packed = {0xB4, 0x1F}; // 1011 0100 0001 1111
    reference.unpackSamples(out.data(), packed.data(), 8, 1);
    EXPECT_EQ(out, (Bytes{1, 0, 1, 1, 0, 1, 0, 0}));
    reference.unpackSamples(out.data(), packed.data(), 8, 2);
    EXPECT_EQ(out, (Bytes{2, 3, 1, 0, 0, 1, 3, 3}));
    Bytes nibbles(3);
    reference.unpackSamples(nibbles.data(), packed.data(), 3, 4);
    EXPECT_EQ(nibbles, (Bytes{11, 4, 1}));
}

} // namespace
} // namespace pixkit::kernels::test
