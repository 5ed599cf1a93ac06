// The bridge to GDI+ on a library under watch: the system's under Windows, a small one elsewhere.
#include "gdiplus/CountingGdiplus.h"
#include "gdiplus/Session.h"
#include "platform/faults.h"
#include "support/AllocationFault.h"
#include "support/Pictures.h"
#include "surface/Capabilities.h"
#include "surface/HostAccess.h"
#include <functional>

namespace pixkit::test {
namespace {

using platform::ScopedFault;
using platform::SeamCall;

TEST(Gdiplus, IsOffOrOnAtStartOnTheWrongSystem) {
    const bool hasLibrary = platform::systemGdiplus().isComplete();
#ifdef _WIN32
    EXPECT_TRUE(hasLibrary);
#else
    EXPECT_FALSE(hasLibrary);
#endif
    for (const bool isUsed : {true, false}) {
        if (isUsed)
            platform::setGdiplusProvider({}); // the system's own
        else
            platform::setGdiplusProvider([] { return platform::GdiplusApi(); });
        const cPixSheet sheet;
        EXPECT_EQ(sheet.isGDIplusEnabled(), isUsed && hasLibrary);
        EXPECT_EQ(sheet.HighQualityInterpolation(), isUsed && hasLibrary);
    }
    platform::setGdiplusProvider([] { return platform::GdiplusApi(); });
}

struct BridgeTest : testing::Test {
    static void draw(cPixSheet& sheet, cPixSheet& host) {
        EXPECT_TRUE(sheet.Render(0, 1, 1, 0, 0, 0, 0, 0, 0, 60, true, true, &host, gsclNTSCPAL, 20));
    }
    CountingGdiplus gdiplus;
};

TEST_F(BridgeTest, StartsGdiPlusForEachCallOrDoesNotEndIt) {
    {
        cPixSheet first, second, host;
        EXPECT_EQ(gdiplus.startups, 1) << "to find out that it starts";
        gdiplus.expectGone();
        fill(first, 2, 1, {{64, 32, 16, 128}, {9, 8, 7, 255}});
        host.InitializeDIB(5, 5);
        for (int i = 0; i < 20; ++i)
            draw(first, host);
        EXPECT_EQ(gdiplus.startups, 2);
        EXPECT_EQ(gdiplus.shutdowns, 1) << "ended between calls";
        for (cPixSheet* sheet : {&first, &second, &host})
            sheet->isGDIplusEnabled(false);
        gdiplus.expectGone();
        EXPECT_FALSE(second.KeepGDIplusActive());
        first.isGDIplusEnabled(true);
        draw(first, host);
        EXPECT_EQ(gdiplus.startups, 3) << "that it starts was known";
    }
    gdiplus.expectGone();
    { // the component as a whole stays in between
        const GdiplusUser component;
        for (int i = 0; i < 3; ++i) {
            cPixSheet sheet, host;
            fill(sheet, 1, 1, {{1, 2, 3, 255}});
            host.InitializeDIB(2, 2);
            draw(sheet, host);
        }
        EXPECT_EQ(gdiplus.startups, 4);
    }
    gdiplus.expectGone();
}

TEST_F(BridgeTest, KeepsABridgeThatNobodyWants) {
    cPixSheet sheet, other, host;
    const auto isKept = [&](const std::function<void()>& end) {
        fill(sheet, 1, 1, {{1, 2, 3, 255}});
        host.InitializeDIB(2, 2);
        sheet.isGDIplusEnabled(true);
        sheet.KeepGDIplusActive(true);
        draw(sheet, host);
        for (cPixSheet* one : {&sheet, &other, &host}) // the kept bridge alone holds it now
            one->isGDIplusEnabled(false);
        const bool wasKept = gdiplus.startups > gdiplus.shutdowns;
        end();
        return wasKept && gdiplus.startups > gdiplus.shutdowns;
    };
    EXPECT_TRUE(isKept([] {}));
    EXPECT_FALSE(isKept([&] { sheet.DestroyDIB(); }));
    EXPECT_FALSE(isKept([&] { sheet.SwapDIBs(&other); }));
    EXPECT_FALSE(isKept([&] { other.SwapDIBs(&sheet); }));
    EXPECT_FALSE(isKept([&] { sheet.gdiToken(5); }));
    EXPECT_FALSE(isKept([&] { sheet.KeepGDIplusActive(false); }));
    sheet.KeepGDIplusActive(true);
    EXPECT_FALSE(sheet.KeepGDIplusActive()) << "must not stick while GDI+ is off";
}

TEST_F(BridgeTest, LosesATokenOrTakesAWildOne) {
    cPixSheet sheet, other;
    const std::int32_t first = sheet.CreateGDIplusToken();
    const std::int32_t second = sheet.CreateGDIplusToken();
    EXPECT_NE(first, 0);
    EXPECT_NE(second, 0);
    EXPECT_TRUE(areGdiplusTokensOut());
    EXPECT_FALSE(other.DestroyGDIplusToken(0));
    EXPECT_FALSE(other.DestroyGDIplusToken(0x1234567));
    EXPECT_TRUE(other.DestroyGDIplusToken(first)) << "by another instance";
    EXPECT_TRUE(other.DestroyGDIplusToken(second));
    EXPECT_FALSE(other.DestroyGDIplusToken(second));
    EXPECT_FALSE(areGdiplusTokensOut());
    gdiplus.expectGone();
}

TEST_F(BridgeTest, DrawsWhereAlphaBlendShouldOrLeavesToSoftwareWhatItCanDraw) {
    cPixSheet sheet, host;
    fill(sheet, 2, 1, {{64, 32, 16, 128}, {9, 8, 7, 255}});
    host.InitializeDIB(9, 9);
    HostAccess::osCAP(sheet, HostAccess::osCAP(sheet) | capAlphaBlendReliable);
    const auto drawsByGdiplus = [&](std::int32_t width, std::int32_t gray, cPixSheet& onto) {
        sheet.Render(0, 0, 0, width, 0, 0, 0, 0, 0, 100, true, true, &onto, gray);
        const int before = gdiplus.draws; // the first drawing of a kind brings trials
        EXPECT_TRUE(sheet.Render(0, 0, 0, width, 0, 0, 0, 0, 0, 100, true, true, &onto, gray));
        return gdiplus.draws > before;
    };
    for (const bool byToken : {false, true}) {
        sheet.gdiToken(byToken ? 5 : 0);
        sheet.isAlphaBlendFriendly(true);
        EXPECT_EQ(drawsByGdiplus(0, gsclNone, host), byToken);
        EXPECT_TRUE(drawsByGdiplus(0, gsclNTSCPAL, host));
        sheet.isAlphaBlendFriendly(false);
        EXPECT_TRUE(drawsByGdiplus(0, gsclNone, host));
        EXPECT_TRUE(drawsByGdiplus(-2, gsclNone, host));
        EXPECT_FALSE(drawsByGdiplus(0, gsclNone, sheet)) << "over itself";
        const int before = gdiplus.draws;
        EXPECT_TRUE(sheet.TileImage(0, 0, 0, 7, 7, 100, 0, 0, 0, &host));
        EXPECT_GT(gdiplus.draws, before);
    }
}

// Every call fails once, and memory ends everywhere: drawings come out all the same, loads and saves are as they would
// be without GDI+, and nothing is lost.
TEST_F(BridgeTest, LosesSomethingWhenACallFails) {
    const std::vector<std::uint8_t> foreign = foreignPicture();
    cPixSheet picture;
    picture.isGDIplusEnabled(false); // holds nothing
    fill(picture, 3, 2, {{64, 32, 16, 128}, {9, 8, 7, 255}, {}, {1, 1, 1, 1}, {0, 90, 200, 255}, {7, 7, 7, 9}});
    picture.Alpha(AlphaComplex);
    struct Deed {
        const char* name;
        bool mustSucceed;
        std::function<bool(cPixSheet&, cPixSheet&)> act;
    };
    const auto rendered = [](std::int32_t width, float angle) {
        return [=](cPixSheet& sheet, cPixSheet& host) {
            host.InitializeDIB(12, 12);
            const bool isDrawn =
                sheet.Render(0, 4, 4, width, 2, 0, 0, 0, 0, 50, true, true, &host, gsclNTSCPAL, 10, angle);
            const auto pixels = pixelsOf(host);
            return isDrawn && std::ranges::any_of(pixels, [](const Pixel& p) { return p[3] > 50; }) &&
                   std::ranges::none_of(pixels, [](const Pixel& p) { return p[3] > 150; }); // not drawn twice
        };
    };
    const Deed deeds[] = {
        {"draw", true, rendered(-3, 0)},
        {"stretch", true, rendered(7, 0)},
        {"turn", true, rendered(0, 30)},
        {"copy", true,
         [](cPixSheet& sheet, cPixSheet& host) { return sheet.CopyImageTo(host, 7, 5), host.Width() == 7; }},
        {"jpg", true,
         [](cPixSheet& sheet, cPixSheet&) {
             ByteArray out;
             return sheet.SaveToStream_JPG(out, 60);
         }},
        {"load", false,
         [&](cPixSheet&, cPixSheet& host) {
             ByteArray kept;
             const bool isLoaded = host.LoadPicture_Stream(ByteArray(foreign), 0, 0, 0, 0, true);
             EXPECT_EQ(pixelsOf(host), isLoaded ? std::vector<Pixel>({{0, 0, 64, 128}, {}}) : std::vector<Pixel>());
             EXPECT_EQ(host.GetOrginalFormat(kept), isLoaded);
             return isLoaded && host.ImageType() == imgPNG && host.Alpha() == AlphaComplex;
         }},
        {"token", false,
         [](cPixSheet& sheet, cPixSheet&) { return sheet.DestroyGDIplusToken(sheet.CreateGDIplusToken()); }},
    };
    for (const auto& deed : deeds) {
        SCOPED_TRACE(deed.name);
        const auto once = [&] {
            gdiplus.reset();
            cPixSheet sheet, host;
            picture.CopyImageTo(sheet);
            return deed.act(sheet, host);
        };
        ASSERT_TRUE(once());
        int after = 0;
        for (bool isMet = true; isMet; ++after) {
            SCOPED_TRACE("call " + std::to_string(after));
            const ScopedFault fault(SeamCall::gdiplus, after, 1);
            const bool isDone = once();
            isMet = true;
            for (int unmade = 0; unmade <= after; ++unmade) // armed still: there were fewer calls
                isMet = isMet && !platform::faultDue(SeamCall::gdiplus);
            gdiplus.expectGone();
            EXPECT_TRUE(isDone || (isMet && !deed.mustSucceed));
            ASSERT_LT(after, 1000);
        }
        EXPECT_GT(after, 1);
    }
}

} // namespace
} // namespace pixkit::test
// SPDX-License-Identifier: MIT
