// Drawing through the public member, onto images and device contexts.
#include "platform/faults.h"
#include "platform/gdi.h"
#include "platform/handle.h"
#include "render/Canvas.h"
#include "surface/Capabilities.h"
#include "surface/HostAccess.h"
#include "surface/cPixSheet.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>

using namespace pixkit;
using test::Canvas;

namespace {

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t hostWidth = 5;
constexpr std::int32_t hostHeight = 4;

// Opaque pixels that hold letters: abc above def.
void makeLetters(cPixSheet& sheet) {
    sheet.InitializeDIB(3, 2);
    sheet.Alpha(AlphaNone);
    for (std::int32_t i = 0; i < 6; ++i)
        sheet.SetPixel(i % 3, i / 3, 'a' + i);
}

// The letters on a picture of hostWidth x hostHeight, rows from the top; a dot where nothing was drawn.
std::string lettersOn(const std::uint8_t* bits, std::size_t stride, std::size_t step) {
    std::string rows;
    for (std::size_t y = 0; y < hostHeight; ++y) {
        for (std::size_t x = 0; x < hostWidth; ++x) {
            const std::uint8_t red = bits[(hostHeight - 1 - y) * stride + x * step + 2];
            rows += red == 0 ? '.' : static_cast<char>(red);
        }
        if (y + 1 < hostHeight) rows += '/';
    }
    return rows;
}

struct Call {
    const char* what;
    std::int32_t destX, destY, destWidth, destHeight, SrcX, SrcY, srcWidth, srcHeight;
    float angle;
    bool center;
    bool expected;
    const char* letters;
};

constexpr const char* nothing = "...../...../...../.....";
constexpr const char* plain = ".abc./.def./...../.....";
const float nan = std::numeric_limits<float>::quiet_NaN();

const Call calls[] = {
    {"defaults", 1, 0, 0, 0, 0, 0, 0, 0, 0, false, true, plain},
    {"whole turns", 1, 0, 0, 0, 0, 0, 0, 0, -720, false, true, plain},
    {"half a turn", 1, 0, 0, 0, 0, 0, 0, 0, 180, false, true, ".fed./.cba./...../....."},
    {"a quarter, clockwise", 1, 1, 3, 3, 0, 0, 0, 0, 90, false, true, "...../.dda./.eeb./.ffc."},
    {"turned to be mirrored", 1, 0, 0, -2, 0, 0, 0, 0, -180, false, true, ".cba./.fed./...../....."},
    {"a part", 0, 1, 2, 1, 1, 1, 2, 1, 0, false, true, "...../ef.../...../....."},
    {"cut at left and top", -1, -1, 0, 0, 0, 0, 0, 0, 0, false, true, "ef.../...../...../....."},
    {"cut at right and bottom", 3, 3, 0, 0, 0, 0, 0, 0, 0, false, true, "...../...../...../...ab"},
    {"out of sight", 5, 0, 0, 0, 0, 0, 0, 0, 0, false, true, nothing},
    {"out of sight, stretched", 0, -9, 9, 9, 0, 0, 0, 0, 0, false, true, nothing},
    {"far out of sight", highest, lowest, 0, 0, 0, 0, 0, 0, 0, false, true, nothing},
    {"negative source position", 1, 0, 0, 0, -7, -7, 0, 0, 0, false, true, plain},
    {"mirrored by the source", 0, 0, 2, 2, 0, 0, -2, 2, 0, false, true, "ba.../ed.../...../....."},
    {"mirrored by the destination", 1, 0, -3, 0, 0, 0, 0, 0, 0, false, true, ".cba./.fed./...../....."},
    {"mirrored both ways, so not", 1, 0, -3, 2, 0, 0, -3, 2, 0, false, true, plain},
    {"upside down", 1, 0, 0, -2, 0, 0, 0, 0, 0, false, true, ".def./.abc./...../....."},
    {"mirrored part", 0, 0, -2, 1, 1, 1, 2, 1, 0, false, true, "fe.../...../...../....."},
    {"mirrored by its height, its width standing", 1, 0, 0, 0, 0, 0, 0, -2, 0, false, true, ".def./.abc./...../....."},
    {"source cut, destination not", 0, 0, 3, 2, 1, 0, 9, 2, 0, false, true, "bbc../eef../...../....."},
    {"twice the size, cut", -1, 0, 6, 4, 0, 0, 0, 0, 0, false, true, "abbcc/abbcc/deeff/deeff"},
    {"half the size", 1, 1, 1, 1, 0, 0, 0, 0, 0, false, true, "...../.d.../...../....."},
    {"mirrored and stretched", 0, 0, -6, 1, 0, 0, 3, 1, 0, false, true, "ccbba/...../...../....."},
    {"centred", 2, 2, 5, 2, 0, 0, 0, 0, 0, true, true, "...../aabbc/ddeef/....."},
    {"immense", -1073741824, 0, highest, highest, 0, 0, 0, 0, 0, false, true, "bbbbb/bbbbb/bbbbb/bbbbb"},
    {"immense and mirrored", 0, -9, -highest, 18, 0, 0, 0, 0, 0, false, true, "fffff/fffff/fffff/fffff"},
    {"source behind the image", 0, 0, 0, 0, 3, 0, 0, 0, 0, false, false, nothing},
    {"source far behind", 0, 0, 0, 0, 0, 100, 1, 1, 0, false, false, nothing},
    {"overflow of the source", 0, 0, 0, 0, 1, 0, highest, 0, 0, false, false, nothing},
    {"no opposite of the source", 0, 0, 0, 0, 0, 0, 0, lowest, 0, false, false, nothing},
    {"no opposite of the destination", 0, 0, lowest, 0, 0, 0, 0, 0, 0, false, false, nothing},
    {"overflow of the centre", lowest, 0, 9, 9, 0, 0, 0, 0, 0, true, false, nothing},
    {"no angle", 0, 0, 0, 0, 0, 0, 0, 0, nan, false, false, nothing},
    {"an angle beyond 32 bits", 0, 0, 0, 0, 0, 0, 0, 0, 1e20F, false, false, nothing},
};

bool make(cPixSheet& sheet, const Call& call, std::intptr_t dc, cPixSheet* host) {
    return sheet.Render(dc, call.destX, call.destY, call.destWidth, call.destHeight, call.SrcX, call.SrcY,
                        call.srcWidth, call.srcHeight, 100, false, true, host, gsclNone, 101, call.angle, call.center);
}

TEST(Render, PutsThePictureElsewhereThanTheArgumentsSay) {
    cPixSheet sheet;
    makeLetters(sheet);
    sheet.isAlphaBlendFriendly(false);
    for (const Call& call : calls) {
        SCOPED_TRACE(call.what);
        cPixSheet host;
        host.InitializeDIB(hostWidth, hostHeight);
        EXPECT_EQ(make(sheet, call, 4711, &host), call.expected) << "a host goes before a device context";
        EXPECT_EQ(lettersOn(host.BitsPointer(), 4 * hostWidth, 4), call.letters);
        for (const std::uint16_t bitCount : {std::uint16_t{24}, std::uint16_t{32}}) {
            const Canvas canvas(hostWidth, hostHeight, bitCount);
            EXPECT_EQ(make(sheet, call, canvas.dc, nullptr), call.expected);
            platform::GdiFlush();
            EXPECT_EQ(lettersOn(canvas.bits, canvas.stride, bitCount / 8U), call.letters) << bitCount << " bits";
        }
    }
}

TEST(Render, OpacityOrTonesAreTakenForOthers) {
    // Alpha of an opaque black pixel drawn on an empty host: the global alpha.
    const struct {
        std::int32_t opacity, alpha;
    } rows[] = {{lowest, 0}, {0, 0}, {1, 2}, {50, 127}, {99, 252}, {100, 255}, {101, 2}, {150, 127}, {200, 255}};
    for (const auto& row : rows) {
        cPixSheet dot;
        cPixSheet host;
        EXPECT_FALSE(dot.Render(0, 0, 0, 0, 0, 0, 0, 0, 0, row.opacity, true, true, &host)) << "no image";
        dot.InitializeDIB(1, 1);
        dot.SetPixel(0, 0, 0);
        dot.isAlphaBlendFriendly(false);
        host.InitializeDIB(1, 1);
        EXPECT_TRUE(dot.Render(0, 0, 0, 0, 0, 0, 0, 0, 0, row.opacity, true, true, &host)) << row.opacity;
        EXPECT_EQ(host.BitsPointer()[3], row.alpha) << row.opacity;
        EXPECT_EQ(host.Alpha(), AlphaSimple) << "what a host says of itself is its owner's affair";
    }
    const struct {
        float light;
        std::int32_t gray;
        std::uint8_t red;
    } tones[] = {{0, gsclNone, 200},   {100, gsclNone, 255},  {-100, gsclNone, 0}, {100.5F, gsclNone, 200},
                 {nan, gsclNone, 200}, {0, gsclRedMask, 160}, {0, 99, 60},         {-50, gsclRedMask, 58}};
    for (const auto& row : tones) {
        cPixSheet dot;
        cPixSheet host;
        dot.InitializeDIB(1, 1);
        dot.SetPixel(0, 0, 200);
        host.InitializeDIB(1, 1);
        EXPECT_TRUE(dot.Render(0, 0, 0, 0, 0, 0, 0, 0, 0, 100, true, true, &host, row.gray, row.light));
        EXPECT_EQ(host.BitsPointer()[2], row.red) << row.light << ", " << row.gray;
    }
}

TEST(Render, NoDestinationIsTakenForOne) {
    cPixSheet sheet;
    cPixSheet empty;
    makeLetters(sheet);
    for (const bool friendly : {false, true}) {
        sheet.isAlphaBlendFriendly(friendly);
        EXPECT_FALSE(sheet.Render(0));
        EXPECT_FALSE(sheet.Render(sheet.Handle())) << "a bitmap is no device context";
        EXPECT_FALSE(sheet.Render(0, 0, 0, 0, 0, 0, 0, 0, 0, 100, true, true, &empty));
    }
    EXPECT_FALSE(empty.Render(0, 0, 0, 0, 0, 0, 0, 0, 0, 100, true, true, &sheet));
    EXPECT_EQ(sheet.CreateGDIplusToken(), 0);
    EXPECT_FALSE(sheet.DestroyGDIplusToken(0));
}

// Scrolled over itself by less than its size, every way of reading it while it is written would show.
TEST(Render, AnImageDrawnOverItselfReadsWhatItHasWritten) {
    for (const auto& [x, y, expected] :
         {std::tuple{1, 0, "aabdde"}, {0, 1, "abcabc"}, {1, 1, "abcdab"}, {-1, 0, "bcceff"}}) {
        cPixSheet sheet;
        makeLetters(sheet);
        EXPECT_TRUE(sheet.Render(0, x, y, 0, 0, 0, 0, 0, 0, 100, true, true, &sheet));
        for (std::int32_t i = 0; i < 6; ++i)
            EXPECT_EQ(sheet.GetPixel(i % 3, i / 3), expected[i]) << x << ", " << y << " at " << i;
        EXPECT_NE(sheet.LoadDIBinDC(true), 0) << "its device context was lost";
    }
}

// Systems whose AlphaBlend is used: everything fails once, and then works.
TEST(Render, AFailingSystemLeavesSomethingBehind) {
    using platform::SeamCall;
    const std::size_t before = platform::openHandles();
    {
        cPixSheet sheet;
        makeLetters(sheet);
        const Canvas canvas(hostWidth, hostHeight, 24);
        cPixSheet host;
        host.InitializeDIB(hostWidth, hostHeight);
        const std::uint32_t flags = capNtFamily | capAlphaBlendReliable;
        const struct {
            SeamCall call;
            bool friendly, ontoHost;
        } rows[] = {{SeamCall::getClipBox, false, false},
                    {SeamCall::createDIBSection, false, false},
                    {SeamCall::createCompatibleDC, false, false},
                    {SeamCall::selectObject, false, false},
                    {SeamCall::bitBlt, false, false},
                    {SeamCall::setDIBitsToDevice, false, false},
                    {SeamCall::createCompatibleDC, true, false},
                    {SeamCall::selectObject, true, false},
                    {SeamCall::alphaBlend, true, false},
                    {SeamCall::alphaBlend, true, true},
                    {SeamCall::selectObject, true, true}};
        for (const auto& row : rows) {
            SCOPED_TRACE(static_cast<int>(row.call));
            HostAccess::osCAP(sheet, flags | (row.friendly ? std::uint32_t{capUseAlphaBlend} : 0U));
            const auto draw = [&] {
                return sheet.Render(canvas.dc, 1, 0, 0, 0, 0, 0, 0, 0, 100, true, true, row.ontoHost ? &host : nullptr);
            };
            std::memset(canvas.bits, 0, canvas.size);
            host.EraseDIB();
            for (const int after : {0, 1}) {
                const platform::ScopedFault fault(row.call, after, 1);
                const bool isDrawn = draw();
                EXPECT_TRUE(!isDrawn || after == 1);
            }
            EXPECT_TRUE(draw());
            platform::GdiFlush();
            EXPECT_EQ(row.ontoHost ? lettersOn(host.BitsPointer(), 4 * hostWidth, 4)
                                   : lettersOn(canvas.bits, canvas.stride, 3),
                      plain);
        }
    }
    EXPECT_EQ(platform::openHandles(), before);
}

// What the instance's own device context held, and whether there was one, is as before.
TEST(Render, TheOwnDeviceContextIsLostOrLeftBehind) {
    cPixSheet sheet;
    makeLetters(sheet);
    HostAccess::osCAP(sheet, capNtFamily | capAlphaBlendReliable | capUseAlphaBlend);
    const Canvas canvas(hostWidth, hostHeight, 32);
    EXPECT_TRUE(sheet.Render(canvas.dc, 1, 0));
    const std::intptr_t dc = sheet.LoadDIBinDC(true);
    ASSERT_NE(dc, 0);
    EXPECT_TRUE(sheet.Render(canvas.dc, 1, 0));
    EXPECT_EQ(sheet.LoadDIBinDC(true), dc);
    EXPECT_TRUE(platform::BitBlt(canvas.dc, 0, 0, 3, 2, dc, 0, 0, platform::rasterCopy)) << "still selected";
    platform::GdiFlush();
    EXPECT_EQ(lettersOn(canvas.bits, canvas.stride, 4), "abcc./deff./...../.....");
    sheet.LoadDIBinDC(false);

    sheet.ManageOwnDC(true);
    EXPECT_TRUE(sheet.Render(canvas.dc));
    EXPECT_NE(sheet.LoadDIBinDC(true), 0);
}

// Every way of drawing takes the host out of its context, a scaled copy leaves it there, and none draws nothing.
TEST(Render, TheWayOfDrawingShowsInTheHostsContextOrTheAnswer) {
    cPixSheet sheet;
    cPixSheet host;
    makeLetters(sheet);
    host.InitializeDIB(hostWidth, hostHeight);
    const Canvas canvas(1, 1, 32);
    const auto isSelected = [&] {
        const platform::Handle before = platform::SelectObject(canvas.dc, host.Handle());
        if (before != 0) platform::SelectObject(canvas.dc, before);
        return before == 0;
    };
    for (const bool friendly : {false, true}) {
        for (const float angle : {0.0F, 45.0F}) {
            for (const std::int32_t SrcX : {0, 3, 4}) { // 3: behind the last column
                HostAccess::osCAP(sheet, capAlphaBlendReliable | (friendly ? std::uint32_t{capUseAlphaBlend} : 0U));
                const std::intptr_t dc = host.LoadDIBinDC(true);
                EXPECT_EQ(sheet.Render(0, 0, 0, 0, 0, SrcX, 0, 0, 0, 100, true, true, &host, gsclNone, 0, angle),
                          SrcX == 0);
                EXPECT_EQ(isSelected(), SrcX != 0) << friendly << ", " << angle;
                EXPECT_TRUE(SrcX == 0 || host.LoadDIBinDC(true) == dc);
            }
        }
    }
    const std::intptr_t dc = host.LoadDIBinDC(true);
    sheet.CopyImageTo(host, hostWidth, hostHeight);
    EXPECT_TRUE(isSelected());
    EXPECT_EQ(host.LoadDIBinDC(true), dc);
    EXPECT_FALSE(host.ManageOwnDC());
}

TEST(RenderDropShadow, IsNoShadowOrStandsElsewhere) {
    cPixSheet sheet;
    cPixSheet host;
    cPixSheet expected;
    makeLetters(sheet);
    EXPECT_FALSE(cPixSheet().RenderDropShadow_JIT(0, 0, 0, 4, 0, 50, 0, &host));
    EXPECT_FALSE(sheet.RenderDropShadow_JIT(0, 0, 0));
    for (cPixSheet* image : {&host, &expected})
        image->InitializeDIB(9, 9);
    sheet.isAlphaBlendFriendly(false);
    EXPECT_TRUE(sheet.RenderDropShadow_JIT(0, 1, 2, 2, 0x102030, 70, -20, &host));
    EXPECT_TRUE(sheet.CreateDropShadow(2, 0x102030)
                    ->Render(0, 1, 2, 0, 0, 0, 0, 0, 0, 70, true, true, &expected, gsclNone, -20));
    EXPECT_EQ(std::memcmp(host.BitsPointer(), expected.BitsPointer(), 9 * 9 * 4), 0);
    EXPECT_EQ(host.BitsPointer()[4 * (9 * (8 - 5) + 5) + 3], 42) << "6 of 25 pixels: 61 at 70 per cent";
}

} // namespace
