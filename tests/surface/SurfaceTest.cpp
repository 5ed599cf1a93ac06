#include "platform/faults.h"
#include "platform/gdi.h"
#include "support/Pictures.h"
#include "surface/Capabilities.h"
#include "surface/HostAccess.h"
#include <gtest/gtest.h>
#include <limits>
#include <numeric>

namespace pixkit {
namespace {

using platform::ObjectType;
using platform::ScopedFault;
using platform::SeamCall;
using test::Pixel;

constexpr std::int32_t longMax = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t longMin = std::numeric_limits<std::int32_t>::min();

void expectEmpty(const cPixSheet& sheet) {
    EXPECT_EQ(sheet.Handle(), 0);
    EXPECT_EQ(sheet.BitsPointer(), nullptr);
    EXPECT_EQ(sheet.Width(), 0);
    EXPECT_EQ(sheet.Height(), 0);
    EXPECT_EQ(sheet.scanWidth(), 0);
    EXPECT_EQ(sheet.Alpha(), AlphaNone);
    EXPECT_EQ(sheet.ImageType(), imgError);
    ByteArray cache;
    EXPECT_FALSE(sheet.GetOrginalFormat(cache));
}

// A picture whose every byte differs from its neighbours.
void numbered(cPixSheet& sheet, std::int32_t width, std::int32_t height, std::uint8_t first) {
    ASSERT_TRUE(sheet.InitializeDIB(width, height));
    std::iota(sheet.BitsPointer(), sheet.BitsPointer() + sheet.scanWidth() * height, first);
}

TEST(Capabilities, FollowTheOperatingSystemAndTheAnswerOfGdiPlus) {
    struct Row {
        const char* system;
        platform::OsVersion version;
        std::uint32_t before, withGdiPlus;
    };
    const Row rows[] = {
        {"Windows 95", {1, 4, 0, 0}, 32, 32},   {"Windows 98", {1, 4, 10, 0}, 16, 18},
        {"Windows ME", {1, 4, 90, 0}, 16, 18},  {"NT 3.51 SP5", {2, 3, 51, 5}, 96, 96},
        {"NT 4 SP3", {2, 4, 0, 3}, 96, 96},     {"NT 4 SP6", {2, 4, 0, 6}, 64, 66},
        {"Windows 2000", {2, 5, 0, 0}, 73, 75}, {"Windows 2000 SP4", {2, 5, 0, 4}, 73, 75},
        {"Windows 10", {2, 10, 0, 0}, 73, 75},  {"no record at all", {0, 0, 0, 0}, 96, 96},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.system);
        const auto flags = osCapabilities(row.version);
        EXPECT_EQ(flags, row.before);
        EXPECT_EQ(enableGdiPlus(flags, true, [] { return true; }), row.withGdiPlus);
        EXPECT_EQ(enableGdiPlus(flags, true, [] { return false; }), row.before);
        EXPECT_EQ(enableGdiPlus(row.withGdiPlus, false, [] { return true; }), row.before);
    }
    int asked = 0;
    enableGdiPlus(2, true, [&] { return ++asked > 0; });
    EXPECT_EQ(asked, 0) << "setting the value it has already must not ask GDI+ again";
}

TEST(Properties, AFreshInstanceSaysImgErrorAndTrustsOnlyWhatTheSystemHas) {
    cPixSheet sheet;
    expectEmpty(sheet);
    EXPECT_EQ(sheet.Version(), "3.0.41");
    EXPECT_FALSE(sheet.isGDIplusEnabled());
    EXPECT_FALSE(sheet.HighQualityInterpolation());
    sheet.isGDIplusEnabled(true);
    EXPECT_FALSE(sheet.isGDIplusEnabled());
    sheet.KeepGDIplusActive(true);
    EXPECT_FALSE(sheet.KeepGDIplusActive()) << "must not stick while GDI+ is off";

    const auto flags = osCapabilities(platform::GetVersionExA());
    const bool mayBlend = (flags & (capAlphaBlendReliable | capAlphaBlendUntrusted)) != 0;
    EXPECT_EQ(sheet.isAlphaBlendFriendly(), (flags & capUseAlphaBlend) != 0);
    sheet.isAlphaBlendFriendly(false);
    EXPECT_FALSE(sheet.isAlphaBlendFriendly());
    sheet.isAlphaBlendFriendly(true);
    EXPECT_EQ(sheet.isAlphaBlendFriendly(), mayBlend);

    sheet.Tag(std::string("anything"));
    EXPECT_EQ(std::any_cast<std::string>(sheet.Tag()), "anything");
    sheet.gdiToken(-7);
    EXPECT_EQ(sheet.gdiToken(), -7);
}

TEST(Properties, ZlibIsProbedAnewAtEveryRead) {
    cPixSheet sheet;
    EXPECT_TRUE(sheet.isZlibEnabled());
    {
        const ScopedFault noLibrary(SeamCall::loadLibrary);
        EXPECT_FALSE(sheet.isZlibEnabled());
    }
    {
        const ScopedFault noExport(SeamCall::getProcAddress);
        EXPECT_FALSE(sheet.isZlibEnabled());
    }
    EXPECT_TRUE(sheet.isZlibEnabled());
}

TEST(InitializeDIB, EmptiesTheInstanceEvenWhenItRefusesTheSize) {
    struct Row {
        std::int32_t width, height, storedHeight; // 0 = refused
    };
    const Row rows[] = {
        {10, 5, 5},      {10, -5, 5},     {1, 1, 1},         {-1, 5, 0},        {5, 0, 0},
        {0, 5, 0},       {0, 0, 0},       {40000, 40000, 0}, {longMax, 1, 0},   {1, longMax, 0},
        {1, longMin, 0}, {longMin, 1, 0}, {32768, 16384, 0}, {65536, 65536, 0},
    };
    cPixSheet sheet;
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.width) + " x " + std::to_string(row.height));
        numbered(sheet, 3, 3, 1);
        ASSERT_EQ(sheet.InitializeDIB(row.width, row.height), row.storedHeight != 0);
        if (row.storedHeight == 0) {
            expectEmpty(sheet);
            continue;
        }
        EXPECT_EQ(sheet.Width(), row.width);
        EXPECT_EQ(sheet.Height(), row.storedHeight);
        EXPECT_EQ(sheet.scanWidth(), row.width * 4);
        EXPECT_EQ(sheet.Alpha(), AlphaSimple);
        EXPECT_EQ(sheet.ImageType(), imgNone);
        EXPECT_EQ(std::count(sheet.BitsPointer(), sheet.BitsPointer() + row.width * row.storedHeight * 4, 0),
                  row.width * row.storedHeight * 4);
    }
}

TEST(InitializeDIB, SurvivesASystemThatGivesNothing) {
    cPixSheet sheet;
    sheet.ManageOwnDC(true);
    for (const auto call : {SeamCall::createDIBSection, SeamCall::getDC, SeamCall::createCompatibleDC}) {
        numbered(sheet, 3, 3, 1);
        const ScopedFault fault(call);
        const bool made = sheet.InitializeDIB(4, 4);
        EXPECT_TRUE(call != SeamCall::createDIBSection || !made);
        if (!made) expectEmpty(sheet);
    }
    EXPECT_TRUE(sheet.InitializeDIB(4, 4)) << "the object must stay usable";
}

TEST(EraseDIB, KeepsTheSizeAndDestroyDIBDoesNot) {
    cPixSheet sheet;
    sheet.EraseDIB();
    expectEmpty(sheet);
    numbered(sheet, 3, 2, 1);
    sheet.Alpha(AlphaNone);
    sheet.EraseDIB();
    EXPECT_EQ(sheet.Width(), 3);
    EXPECT_EQ(test::pixelsOf(sheet), std::vector<Pixel>(6, Pixel{0, 0, 0, 0}));
    EXPECT_EQ(sheet.Alpha(), AlphaSimple);
    EXPECT_EQ(sheet.ImageType(), imgNone);
    sheet.DestroyDIB();
    expectEmpty(sheet);
}

TEST(LoadDIBinDC, SelectsAndFreesAsManageOwnDCSays) {
    for (const bool manage : {false, true}) {
        SCOPED_TRACE(manage);
        cPixSheet sheet;
        EXPECT_EQ(sheet.LoadDIBinDC(true), 0) << "no image";
        sheet.ManageOwnDC(manage);
        numbered(sheet, 3, 3, 1);
        const auto dc = sheet.LoadDIBinDC(true);
        ASSERT_NE(dc, 0);
        EXPECT_EQ(sheet.LoadDIBinDC(true), dc) << "repeated calls are harmless";
        EXPECT_EQ(platform::GetObjectType(dc), ObjectType::memoryDC);
        const platform::UniqueHandle<&platform::DeleteDC> other(platform::CreateCompatibleDC(0));
        EXPECT_EQ(platform::SelectObject(other.get(), sheet.Handle()), 0) << "selected in one context already";
        EXPECT_EQ(sheet.LoadDIBinDC(false), 0);
        EXPECT_EQ(platform::GetObjectType(dc), manage ? ObjectType::memoryDC : ObjectType::none);
        EXPECT_EQ(sheet.LoadDIBinDC(true) == dc, manage) << "a managed context survives";
        sheet.ManageOwnDC(false);
        EXPECT_EQ(platform::GetObjectType(dc), ObjectType::none);
        EXPECT_NE(sheet.LoadDIBinDC(true), 0);
        const auto last = sheet.LoadDIBinDC(true);
        const auto bitmap = sheet.Handle();
        sheet.DestroyDIB();
        EXPECT_EQ(platform::GetObjectType(last), ObjectType::none) << "leaked device context";
        EXPECT_EQ(platform::GetObjectType(bitmap), ObjectType::none) << "leaked bitmap";
    }
}

TEST(LoadDIBinDC, GivesNothingWhenTheSystemRefuses) {
    cPixSheet sheet;
    numbered(sheet, 3, 3, 1);
    const auto handlesBefore = platform::openHandles();
    for (const auto call : {SeamCall::createCompatibleDC, SeamCall::selectObject}) {
        const ScopedFault fault(call);
        EXPECT_EQ(sheet.LoadDIBinDC(true), 0);
        EXPECT_EQ(platform::openHandles(), handlesBefore) << "a context that holds nothing must not stay";
    }
    EXPECT_NE(sheet.LoadDIBinDC(true), 0);
}

TEST(CopyImageTo, CopiesBytesAndOnlyResizesWhenItMust) {
    cPixSheet source;
    numbered(source, 3, 2, 1);
    source.Alpha(AlphaComplex);
    source.gdiToken(5);
    source.HighQualityInterpolation(true);
    HostAccess::ImageType(source, imgTGA);
    HostAccess::SetOriginalFormat(source, ByteArray({1, 2, 3}));

    std::unique_ptr<cPixSheet> created;
    source.CopyImageTo(created);
    ASSERT_TRUE(created);
    EXPECT_EQ(test::pixelsOf(*created), test::pixelsOf(source));
    EXPECT_EQ(created->Alpha(), AlphaComplex);
    EXPECT_EQ(created->ImageType(), imgTGA);
    EXPECT_EQ(created->gdiToken(), 5);
    EXPECT_TRUE(created->HighQualityInterpolation());
    ByteArray cache;
    EXPECT_FALSE(created->GetOrginalFormat(cache));

    cPixSheet target;
    numbered(target, 3, 2, 100);
    const auto handle = target.Handle();
    source.CopyImageTo(target, 3, 0, true);
    EXPECT_EQ(target.Handle(), handle) << "same size: the store is kept";
    EXPECT_EQ(test::pixelsOf(target), test::pixelsOf(source));
    EXPECT_FALSE(target.HighQualityInterpolation()) << "only a new instance takes over settings";
    ASSERT_TRUE(target.GetOrginalFormat(cache));
    EXPECT_EQ(test::bytesOf(cache), (std::vector<std::uint8_t>{1, 2, 3}));

    numbered(target, 9, 9, 100);
    source.CopyImageTo(target, 0, -2);
    EXPECT_EQ(test::pixelsOf(target), test::pixelsOf(source));

    const auto before = test::pixelsOf(source);
    source.CopyImageTo(source, 7, 7);
    EXPECT_EQ(test::pixelsOf(source), before) << "a copy onto itself must not destroy the image";
    cPixSheet().CopyImageTo(target);
    EXPECT_EQ(target.Width(), 3) << "an empty instance copies nothing";
}

TEST(CopyImageTo, AtAnotherSizeKeepsStalePixelsOrSettingsOfTheWrongSide) {
    cPixSheet source;
    numbered(source, 3, 2, 1);
    source.Alpha(AlphaComplex);
    HostAccess::ImageType(source, imgTGA);
    cPixSheet resized;
    source.CopyImageTo(resized);
    resized.Resize(5, 4);
    for (const bool alreadyThatSize : {false, true}) {
        cPixSheet target;
        if (alreadyThatSize) numbered(target, 5, 4, 9);
        const bool friendly = source.isAlphaBlendFriendly();
        source.CopyImageTo(target, 5, 4);
        EXPECT_EQ(source.isAlphaBlendFriendly(), friendly);
        EXPECT_EQ(test::pixelsOf(target), test::pixelsOf(resized));
        EXPECT_EQ(target.ImageType(), imgTGA);
        EXPECT_EQ(target.Alpha(), AlphaComplex);
    }
    cPixSheet target;
    source.CopyImageTo(target, -3, 2);
    expectEmpty(target);
}

struct SheetState {
    std::intptr_t handle;
    std::vector<Pixel> pixels;
    eImageFormat format;
    AlphaTypeEnum alpha;
    std::vector<std::uint8_t> cache;
    bool operator==(const SheetState&) const = default;
};

SheetState stateOf(const cPixSheet& sheet) {
    ByteArray cache;
    sheet.GetOrginalFormat(cache);
    return {sheet.Handle(), test::pixelsOf(sheet), sheet.ImageType(), sheet.Alpha(), test::bytesOf(cache)};
}

TEST(SwapDIBs, ExchangesImagesAndNothingElseWhateverIsSelected) {
    for (int selected = 0; selected < 4; ++selected) {
        SCOPED_TRACE(selected);
        cPixSheet first;
        cPixSheet second;
        numbered(first, 3, 2, 1);
        numbered(second, 2, 5, 50);
        HostAccess::ImageType(first, imgPNG);
        first.Alpha(AlphaComplex);
        HostAccess::SetOriginalFormat(first, ByteArray({7, 8}));
        first.Tag(1);
        second.Tag(2);
        second.ManageOwnDC(true);
        if ((selected & 1) != 0) first.LoadDIBinDC(true);
        if ((selected & 2) != 0) second.LoadDIBinDC(true);
        const auto firstBefore = stateOf(first);
        const auto secondBefore = stateOf(second);

        first.SwapDIBs(&second);
        EXPECT_EQ(stateOf(first), secondBefore);
        EXPECT_EQ(stateOf(second), firstBefore);
        {
            const platform::UniqueHandle<&platform::DeleteDC> probe(platform::CreateCompatibleDC(0));
            const auto stock = platform::SelectObject(probe.get(), first.Handle());
            EXPECT_EQ(stock == 0, (selected & 1) != 0) << "what was selected is selected again, with the new image";
            if (stock != 0) platform::SelectObject(probe.get(), stock);
        }
        EXPECT_EQ(std::any_cast<int>(first.Tag()), 1);
        EXPECT_TRUE(second.ManageOwnDC());
        second.SwapDIBs(&first);
        EXPECT_EQ(stateOf(first), firstBefore);
        EXPECT_EQ(stateOf(second), secondBefore);
        first.SwapDIBs(&first);
        EXPECT_EQ(stateOf(first), firstBefore) << "an exchange with itself";
        first.SwapDIBs(nullptr);
        EXPECT_EQ(stateOf(first), firstBefore);
        EXPECT_NE(first.LoadDIBinDC(true), 0) << "the image must still be selectable";
        EXPECT_NE(second.LoadDIBinDC(true), 0);
    }
}

TEST(SwapDIBs, WithAnEmptyInstanceMovesTheImage) {
    for (const bool callTheEmptyOne : {false, true}) {
        cPixSheet full;
        cPixSheet empty;
        numbered(full, 3, 2, 1);
        const auto before = stateOf(full);
        (callTheEmptyOne ? empty : full).SwapDIBs(callTheEmptyOne ? &full : &empty);
        expectEmpty(full);
        EXPECT_EQ(stateOf(empty), before);
    }
}

} // namespace
} // namespace pixkit
