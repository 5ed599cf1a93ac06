// Drawing through the public member: against the rules, against what is written down in tests/data/drawn.txt, and when
// the system fails.
#include "platform/handle.h"
#include "render/Canvas.h"
#include "render/DrawByTheBook.h"
#include "support/Ledger.h"
#include "surface/Capabilities.h"
#include "surface/HostAccess.h"

namespace pixkit::test {
namespace {

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();

enum Onto { ontoHost, ontoItself, ontoContext32, ontoContext24, ontoOwnContext };

bool render(cPixSheet& sheet, const Drawing& d, platform::Handle dc, cPixSheet* host, bool SetHalfTone = true) {
    sheet.HighQualityInterpolation(d.HighQuality);
    return sheet.Render(dc, d.destX, d.destY, d.destWidth, d.destHeight, d.SrcX, d.SrcY, d.srcWidth, d.srcHeight,
                        d.Opacity, false, SetHalfTone, host, d.grayScale, d.LightAdjustment, d.Angle, d.CenterOnDestXY);
}

// A picture and what it is drawn on: another picture, as such and through its device context, or 24 bits a pixel.
class Stage {
  public:
    Stage(std::int32_t sourceWidth, std::int32_t sourceHeight, std::int32_t width, std::int32_t height, Random& random)
        : m_canvas(width, height, 24) {
        random.fill(source, sourceWidth, sourceHeight);
        random.fill(host, width, height);
        host.Alpha(AlphaComplex);
        for (std::size_t i = 0; i < m_canvas.size; ++i)
            m_canvas.bits[i] = static_cast<std::uint8_t>(random.below(256));
    }

    bool draw(const Drawing& drawing, Onto onto, bool SetHalfTone = true) {
        const platform::Handle dc = onto == ontoContext32    ? host.LoadDIBinDC(true)
                                    : onto == ontoContext24  ? m_canvas.dc
                                    : onto == ontoOwnContext ? source.LoadDIBinDC(true)
                                                             : 4711; // a host goes before
        cPixSheet* const hosts[] = {&host, &source, nullptr, nullptr, nullptr};
        const bool isDrawn = render(source, drawing, dc, hosts[onto], SetHalfTone);
        platform::GdiFlush();
        constexpr auto asNew = platform::StretchMode::blackOnWhite;
        EXPECT_EQ(platform::SetStretchBltMode(m_canvas.dc, asNew), asNew) << "not set back";
        return isDrawn;
    }
    // The pixels of a destination; a device context keeps no alpha.
    Picture pixels(Onto onto) const {
        const cPixSheet& sheet = onto == ontoItself || onto == ontoOwnContext ? source : host;
        Picture picture{sheet.Width(), sheet.Height(), pixelsOf(sheet)};
        for (std::int64_t y = 0; y < picture.height && onto >= ontoContext32; ++y) {
            const auto row = static_cast<std::size_t>(picture.height - 1 - y);
            for (std::int64_t x = 0; x < picture.width; ++x) {
                picture.at(x, y)[3] = 0;
                if (onto == ontoContext24)
                    std::copy_n(m_canvas.bits + row * m_canvas.stride + 3 * x, 3, picture.at(x, y).data());
            }
        }
        return picture;
    }

    cPixSheet source, host;

  private:
    Canvas m_canvas;
};

// Arguments around pictures of up to `extent` pixels; wild ones reach for the ends of 32 bits.
Drawing anyDrawing(Random& random, std::int32_t extent, bool isWild) {
    const auto odd = [&] {
        constexpr std::int32_t numbers[] = {lowest, lowest + 1, -(1 << 30), -1, 0, 1, 1 << 30, highest - 1, highest};
        return numbers[random.below(9)];
    };
    const auto place = [&] { return isWild && random.below(6) == 0 ? odd() : random.between(-extent / 2, extent); };
    const auto size = [&] {
        const std::int32_t kind = random.below(8);
        if (isWild && random.below(6) == 0) return odd();
        return kind < 3 ? 0 : kind < 5 ? -random.between(1, extent) : random.between(1, 2 * extent);
    };
    Drawing d{.destX = place(), .destY = place()};
    if (random.below(2) == 0) {
        d.destWidth = size();
        d.destHeight = size();
    }
    if (random.below(2) == 0) {
        d.SrcX = place();
        d.SrcY = place();
        d.srcWidth = size();
        d.srcHeight = size();
    }
    if (random.below(2) == 0) d.Opacity = random.between(-1, 320);
    if (random.below(3) == 0) d.grayScale = random.between(-3, 9);
    if (random.below(3) == 0) d.LightAdjustment = static_cast<float>(random.between(-420, 420)) / 4;
    const std::int32_t turn = random.below(8);
    if (turn == 0) d.Angle = static_cast<float>(90 * random.between(-9, 9));
    if (turn == 1) d.Angle = static_cast<float>(random.between(-90000, 90000)) / 128;
    if (isWild && turn == 2) d.Angle = random.below(2) == 0 ? std::numeric_limits<float>::quiet_NaN() : 1e20F;
    d.CenterOnDestXY = random.below(4) == 0;
    d.HighQuality = random.below(2) == 0;
    return d;
}

// Sizes at which a pixel is a whole number of sixteenths of one of the source, which are resampled in a way of their
// own.
void stretchBySixteenths(Drawing& d, const cPixSheet& source, Random& random) {
    const auto chosen = [&](std::int32_t size, std::int32_t& from) {
        from = random.between(1, size);
        std::int32_t step = random.between(1, 48);
        while (16 * from % step != 0)
            --step;
        return 16 * from / step;
    };
    d.destWidth = chosen(source.Width(), d.srcWidth);
    d.destHeight = chosen(source.Height(), d.srcHeight);
    d.SrcX = random.below(source.Width() - d.srcWidth + 1);
    d.SrcY = random.below(source.Height() - d.srcHeight + 1);
    d.HighQuality = true;
}

std::string textOf(const Drawing& d, Onto onto) {
    constexpr const char* names[] = {"host", "itself", "context of 32 bits", "context of 24 bits", "own context"};
    std::ostringstream text;
    text << names[onto] << " at " << d.destX << " " << d.destY << " " << d.destWidth << "x" << d.destHeight << " from "
         << d.SrcX << " " << d.SrcY << " " << d.srcWidth << "x" << d.srcHeight;
    text << ", opacity " << d.Opacity << ", gray " << d.grayScale << ", light " << d.LightAdjustment << ", angle "
         << d.Angle;
    text << (d.CenterOnDestXY ? ", centred" : "") << (d.HighQuality ? ", interpolated" : "");
    return text.str();
}

// Pixels that differ by more than `tolerance` in some channel.
std::size_t countDiffering(const Picture& drawn, const Picture& expected, int tolerance) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < drawn.pixels.size(); ++i) {
        bool isSame = true;
        for (std::size_t channel = 0; channel < 4; ++channel)
            isSame = isSame && std::abs(drawn.pixels[i][channel] - expected.pixels[i][channel]) <= tolerance;
        count += isSame ? 0 : 1;
    }
    return count;
}

void compare(Stage& stage, const Drawing& d, Onto onto, bool bySystem, Random& random) {
    HostAccess::osCAP(stage.source, capAlphaBlendReliable | (random.below(2) == 0 ? std::uint32_t{capNtFamily} : 0U) |
                                        (bySystem || onto == ontoItself ? std::uint32_t{capUseAlphaBlend} : 0U));
    if (random.below(2) == 0) stage.host.LoadDIBinDC(true);
    const std::intptr_t dc = random.below(2) == 0 || onto == ontoOwnContext ? stage.source.LoadDIBinDC(true) : 0;
    for (cPixSheet* const sheet : {&stage.host, &stage.source})
        if (random.below(4) == 0) sheet->ManageOwnDC(true); // a context, whether the image is in it or not
    const bool hostWasSelected = isSelected(stage.host);

    Picture expected = stage.pixels(onto);
    const Picture source{stage.source.Width(), stage.source.Height(), pixelsOf(stage.source)};
    const bool mayDraw = DrawByTheBook(source, d).onto(expected);
    for (Pixel& pixel : expected.pixels)
        if (onto >= ontoContext32) pixel[3] = 0;
    const std::vector<Pixel> hostBefore = pixelsOf(stage.host);
    ASSERT_EQ(stage.draw(d, onto, random.below(2) == 0), mayDraw);
    // Where a position falls on a border, sines and steps of 2^-32 may decide otherwise: a step of weights or, without
    // interpolation, another pixel. Quarters of turns without stretching are exact.
    const bool hasSizes = d.destWidth != 0 || d.destHeight != 0 || d.srcWidth != 0 || d.srcHeight != 0;
    const bool isExact = std::fmod(d.Angle, hasSizes || d.SrcX > 0 || d.SrcY > 0 ? 360.0F : 90.0F) == 0;
    const int tolerance = bySystem ? 2 : isExact || !d.HighQuality ? 0 : 4;
    const std::size_t others = d.HighQuality ? 3 : 9 + expected.pixels.size() / 8;
    EXPECT_LE(countDiffering(stage.pixels(onto), expected, tolerance), isExact ? 0 : others);
    EXPECT_TRUE(onto == ontoHost || onto == ontoContext32 || pixelsOf(stage.host) == hostBefore);
    EXPECT_TRUE(onto == ontoItself || onto == ontoOwnContext || pixelsOf(stage.source) == source.pixels)
        << "the source is only read";
    if (onto != ontoItself) {
        EXPECT_EQ(isSelected(stage.source), dc != 0);
        EXPECT_TRUE(dc == 0 || stage.source.LoadDIBinDC(true) == dc) << "its own device context was lost";
    }
    // A host is out of its device context afterwards, whichever way it was drawn on.
    const bool isTakenOut = onto == ontoHost && mayDraw && d.Opacity > 0;
    EXPECT_TRUE(!isTakenOut || !isSelected(stage.host));
    EXPECT_TRUE(onto == ontoHost || isSelected(stage.host) == (hostWasSelected || onto == ontoContext32));
    EXPECT_EQ(stage.host.Alpha(), AlphaComplex) << "what a host says of itself is its owner's affair";
}

// Large enough for whatever works on several rows or columns at a time.
TEST(Render, LeavesASeamBetweenRowsThatAreWorkedOutTogether) {
    Random random(25);
    for (const Drawing& d : {Drawing{.destX = -7, .destY = -3, .srcWidth = -2600},
                             Drawing{.destX = 4, .destY = 9, .srcWidth = -2600, .srcHeight = -70},
                             Drawing{.destY = -5, .destHeight = -90, .srcWidth = 2000},
                             Drawing{.destWidth = -2500, .destHeight = 100, .HighQuality = true}}) {
        for (const Onto onto : {ontoHost, ontoItself}) {
            Stage stage(2600, 70, 2600, 75, random);
            SCOPED_TRACE(textOf(d, onto));
            ASSERT_NO_FATAL_FAILURE(compare(stage, d, onto, false, random));
        }
    }
}

// A turned row that crosses more than a thousand rows of its source is walked in tiles.
TEST(Render, LeavesASeamBetweenTilesOfATurnedPicture) {
    Random random(26);
    for (const bool HighQuality : {false, true}) {
        Stage stage(1500, 1500, 1500, 1500, random);
        const Drawing d{.Angle = 60, .HighQuality = HighQuality};
        Picture expected = stage.pixels(ontoHost);
        DrawByTheBook({1500, 1500, pixelsOf(stage.source)}, d).onto(expected);
        ASSERT_TRUE(stage.draw(d, ontoHost));
        EXPECT_LE(countDiffering(stage.pixels(ontoHost), expected, HighQuality ? 4 : 0), 40U);
    }
}

// Steps of whole sixteenths of a pixel, as far as their patterns of columns go.
TEST(Render, LosesItsPlaceInALongRow) {
    Random random(27);
    const std::int32_t widths[][2] = {{6000, 9600}, {10240, 8192}, {9000, 3000},
                                      {6400, 100},  {8193, 9364},  {70000, 1000}};
    for (const auto& [width, newWidth] : widths) {
        Stage stage(width, 2, newWidth, 2, random);
        const Drawing d{.destWidth = newWidth, .HighQuality = true};
        SCOPED_TRACE(textOf(d, ontoHost));
        ASSERT_NO_FATAL_FAILURE(compare(stage, d, ontoHost, false, random));
    }
}

TEST(Render, DrawsOtherwiseThanTheRulesSay) {
    Random random(2024);
    for (int round = 0; round < 12000; ++round) {
        const std::int32_t extent = random.below(8) == 0 ? 90 : 24;
        Stage stage{random.between(1, extent), random.between(1, extent), random.between(1, extent),
                    random.between(1, extent), random};
        const bool isWild = random.below(4) == 0;
        Drawing d = anyDrawing(random, extent, isWild);
        if (round % 4 == 0) stretchBySixteenths(d, stage.source, random);
        const auto onto = static_cast<Onto>(random.below(5));
        // The system's AlphaBlend draws what is plain; it rounds where the component truncates.
        const bool bySystem = !isWild && onto != ontoItself && onto != ontoOwnContext && random.below(4) == 0;
        if (bySystem) d = {.destX = d.destX, .destY = d.destY, .Opacity = d.Opacity, .HighQuality = d.HighQuality};
        SCOPED_TRACE(textOf(d, onto) + ", round " + std::to_string(round));
        compare(stage, d, onto, bySystem, random);
    }
}

TEST(DrawnLedger, ADrawingGivesSomethingElseThanIsWrittenDown) {
    Random random(1);
    std::ostringstream lines;
    for (int i = 0; i < 600; ++i) {
        Stage stage(161, 119, 203, 157, random);
        stage.source.isAlphaBlendFriendly(false);
        const Drawing d = anyDrawing(random, 170, i % 10 == 9);
        const auto onto = static_cast<Onto>(random.below(5));
        lines << textOf(d, onto) << ": " << (stage.draw(d, onto) ? "True " : "False ");
        const Picture drawn = stage.pixels(onto);
        lines << checksum({drawn.pixels.data()->data(), 4 * drawn.pixels.size()}) << '\n';
    }
    compareWithLedger("drawn.txt", lines.str());
}

} // namespace
} // namespace pixkit::test
// SPDX-License-Identifier: MIT
