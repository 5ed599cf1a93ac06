// The surface where transcripts cannot say it: systems that are not at hand, failures, and who holds which handle.
#include "platform/faults.h"
#include "platform/gdi.h"
#include "render/Canvas.h"
#include "support/Pictures.h"
#include "surface/Capabilities.h"
#include "surface/HostAccess.h"
#include <functional>

namespace pixkit::test {
namespace {

using platform::ScopedFault;
using platform::SeamCall;

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
        {"Windows 2000", {2, 5, 0, 0}, 73, 75}, {"Windows 10", {2, 10, 0, 0}, 73, 75},
        {"no record", {0, 0, 0, 0}, 96, 96},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.system);
        const auto flags = osCapabilities(row.version);
        EXPECT_EQ(flags, row.before);
        EXPECT_EQ(enableGdiPlus(flags, true, [] { return true; }), row.withGdiPlus);
        EXPECT_EQ(enableGdiPlus(flags, true, [] { return false; }), row.before);
        EXPECT_EQ(enableGdiPlus(row.withGdiPlus, false, [] { return true; }), row.before);
        cPixSheet sheet;
        HostAccess::osCAP(sheet, flags);
        sheet.isAlphaBlendFriendly(true); // ignored where there is none
        EXPECT_EQ(sheet.isAlphaBlendFriendly(), (flags & (capAlphaBlendReliable | capAlphaBlendUntrusted)) != 0);
        sheet.isAlphaBlendFriendly(false);
        EXPECT_EQ(HostAccess::osCAP(sheet), flags & ~std::uint32_t{capUseAlphaBlend});
    }
    int asked = 0;
    enableGdiPlus(2, true, [&] { return ++asked > 0; });
    EXPECT_EQ(asked, 0) << "setting the value it has already must not ask GDI+ again";
    EXPECT_EQ(HostAccess::osCAP(cPixSheet()), osCapabilities(platform::GetVersionExA()));
}

TEST(Properties, ZlibIsNotProbedAnewAtEveryRead) {
    const cPixSheet sheet;
#ifdef PIXKIT_FOREIGN
    if (!sheet.isZlibEnabled()) GTEST_SKIP() << "zlib is for another processor here";
#endif
    for (const SeamCall missing : {SeamCall::loadLibrary, SeamCall::getProcAddress}) {
        EXPECT_TRUE(sheet.isZlibEnabled());
        const ScopedFault fault(missing);
        EXPECT_FALSE(sheet.isZlibEnabled());
    }
}

struct SheetState {
    std::intptr_t handle;
    std::vector<Pixel> pixels;
    eImageFormat format;
    AlphaTypeEnum alpha;
    CursorHotspot hotspot;
    std::vector<std::uint8_t> cache;
    bool operator==(const SheetState&) const = default;
};

SheetState stateOf(const cPixSheet& sheet) {
    ByteArray cache;
    sheet.GetOrginalFormat(cache);
    return {sheet.Handle(), pixelsOf(sheet), sheet.ImageType(), sheet.Alpha(), HostAccess::hotspot(sheet),
            bytesOf(cache)};
}

TEST(SwapDIBs, ExchangesLessOrMoreThanTheImagesOrLosesWhatIsSelected) {
    for (int selected = 0; selected < 4; ++selected) {
        SCOPED_TRACE(selected);
        cPixSheet first, second;
        Random random(2);
        random.fill(first, 3, 2);
        random.fill(second, 2, 5);
        HostAccess::ImageType(first, imgPNG);
        HostAccess::hotspot(second, {4, -7});
        HostAccess::SetOriginalFormat(first, ByteArray({7, 8}));
        first.Tag(1);
        second.ManageOwnDC(true);
        if ((selected & 1) != 0) first.LoadDIBinDC(true);
        if ((selected & 2) != 0) second.LoadDIBinDC(true);
        const auto firstBefore = stateOf(first);
        const auto secondBefore = stateOf(second);
        for (const bool isBack : {false, true}) {
            (isBack ? second : first).SwapDIBs(isBack ? &first : &second);
            EXPECT_EQ(stateOf(first), isBack ? firstBefore : secondBefore);
            EXPECT_EQ(stateOf(second), isBack ? secondBefore : firstBefore);
            EXPECT_EQ(isSelected(first), (selected & 1) != 0) << "what was selected is again, with the new image";
            EXPECT_EQ(isSelected(second), (selected & 2) != 0);
            EXPECT_EQ(std::any_cast<int>(first.Tag()), 1);
            EXPECT_TRUE(second.ManageOwnDC());
        }
        for (cPixSheet* const other : {&first, static_cast<cPixSheet*>(nullptr)})
            first.SwapDIBs(other);
        EXPECT_EQ(stateOf(first), firstBefore);
        cPixSheet empty;
        empty.SwapDIBs(&first);
        EXPECT_EQ(first.Handle(), 0);
        EXPECT_EQ(stateOf(empty), firstBefore);
    }
}

TEST(Moving, LeavesThingsBehindOrTakesWhatIsTheOthers) {
    cPixSheet first;
    Random(2).fill(first, 3, 2);
    HostAccess::SetOriginalFormat(first, ByteArray({7, 8}));
    HostAccess::notes(first).endsEarly = true;
    first.Tag(1);
    first.MaxPixels(6);
    first.Unattended(true);
    first.PngPropertySet(pngTitle, "a title");
    const auto before = stateOf(first);
    const auto context = first.LoadDIBinDC(true);
    first.Resize(4, 4);
    const std::string reason(first.LastErrorText());
    const auto isAllThere = [&](cPixSheet& sheet) {
        EXPECT_EQ(sheet.LastErrorText(), reason);
        EXPECT_EQ(std::any_cast<int>(sheet.Tag()), 1);
        EXPECT_EQ(sheet.MaxPixels(), 6);
        EXPECT_TRUE(sheet.Unattended());
        EXPECT_EQ(sheet.LoadNotes(), "the file ends early");
        EXPECT_EQ(sheet.PngPropertyGet(pngTitle), PngValue("a title"));
        EXPECT_TRUE(isSelected(sheet));
        EXPECT_EQ(sheet.LoadDIBinDC(true), context);
        EXPECT_EQ(stateOf(sheet), before);
        sheet.Resize(4, 4);
    };
    const auto isAsNew = [](cPixSheet& sheet) {
        EXPECT_EQ(sheet.Handle(), 0);
        EXPECT_EQ(sheet.ImageType(), imgError);
        EXPECT_FALSE(sheet.Tag().has_value());
        EXPECT_EQ(sheet.MaxPixels(), 0);
        EXPECT_EQ(sheet.isAlphaBlendFriendly(), cPixSheet().isAlphaBlendFriendly());
        EXPECT_TRUE(sheet.InitializeDIB(9, 9));
    };
    cPixSheet second(std::move(first));
    isAllThere(second);
    isAsNew(first);
    first = std::move(second);
    isAllThere(first);
    isAsNew(second);
    cPixSheet& itself = first;
    first = std::move(itself);
    isAllThere(first);
    swap(first, second);
    isAllThere(second);
    EXPECT_EQ(first.Width(), 9);
    std::vector<cPixSheet> sheets(1);
    sheets[0] = std::move(second);
    sheets.resize(100);
    isAllThere(sheets[0]);
}

TEST(CopyImageTo, MovesTheHostsContextOrLosesTheHotspotOrSettings) {
    Random random(3);
    cPixSheet source, target;
    random.fill(source, 3, 2);
    source.gdiToken(5);
    source.HighQualityInterpolation(true);
    HostAccess::hotspot(source, {2, 1});
    HostAccess::ImageType(source, imgTGA);
    HostAccess::SetOriginalFormat(source, ByteArray({1, 2, 3}));
    random.fill(target, 12, 10);
    const auto context = target.LoadDIBinDC(true);
    source.CopyImageTo(target, 12, 10, true);
    EXPECT_TRUE(isSelected(target));
    EXPECT_EQ(target.LoadDIBinDC(true), context);
    EXPECT_FALSE(target.ManageOwnDC());
    EXPECT_FALSE(target.HighQualityInterpolation()) << "only a new instance takes over settings";
    EXPECT_EQ(HostAccess::hotspot(target), (CursorHotspot{8, 5}));
    EXPECT_EQ(target.gdiToken(), 5);
    EXPECT_EQ(target.ImageType(), imgTGA);
    EXPECT_EQ(stateOf(target).cache, (std::vector<std::uint8_t>{1, 2, 3}));
    std::unique_ptr<cPixSheet> created;
    source.CopyImageTo(created);
    EXPECT_EQ(pixelsOf(*created), pixelsOf(source));
    EXPECT_TRUE(created->HighQualityInterpolation());
    EXPECT_TRUE(stateOf(*created).cache.empty());
}

// Callers overlay arrays on BitsPointer.
TEST(AnArrayOverTheStore, IsReadWhileItChanges) {
    cPixSheet sheet;
    fill(sheet, 1, 3, {{1, 1, 1, 255}, {2, 2, 2, 255}, {3, 3, 3, 255}});
    const auto store = ByteArray::borrow(sheet.BitsPointer(), {0, 12});
    ASSERT_TRUE(sheet.SetDIBbits(store, true, true, true, false)); // turns the picture upside down
    EXPECT_EQ(pixelsOf(sheet), (std::vector<Pixel>{{3, 3, 3, 255}, {2, 2, 2, 255}, {1, 1, 1, 255}}));
    sheet.InitializeDIB(10, 10);
    EXPECT_FALSE(sheet.LoadPicture_Stream(ByteArray::borrow(sheet.BitsPointer(), {0, 400})));
}

TEST(Surface, PixelsAreTouchedBeforeDrawingThatWasPutOffIsDone) {
    cPixSheet sheet, other;
    ByteArray bytes;
    const auto isFlushed = [](const std::function<void()>& member) {
        const ScopedFault plan(SeamCall::gdiFlush, 0, 1);
        member();
        return !platform::faultDue(SeamCall::gdiFlush);
    };
    for (const bool isSelected : {false, true}) {
        fill(sheet, 2, 1, {{1, 2, 3, 255}, {}});
        sheet.LoadDIBinDC(isSelected);
        EXPECT_EQ(isFlushed([&] { sheet.GetPixel(0, 0); }), isSelected) << "slow for nothing, or too early";
        EXPECT_EQ(isFlushed([&] { sheet.SetPixel(0, 0, 0); }), isSelected);
        const std::function<void()> members[] = {
            [&] { sheet.GetAlphaMask(bytes); },
            [&] { sheet.GetDIBbits(bytes); },
            [&] { sheet.SetDIBbits(bytes); },
            [&] { sheet.EraseDIB(); },
            [&] { sheet.MakeImageInverse(); },
            [&] { sheet.Resize(3, 1); },
            [&] { sheet.CopyImageTo(other); },
            [&] { other.CopyImageTo(sheet); },
            [&] { sheet.SaveToStream_PNG(bytes); },
            [&] { other.Render(0, 0, 0, 0, 0, 0, 0, 0, 0, 100, true, true, &sheet); },
            [&] { sheet.CreateDropShadow(); },
            [&] { sheet.CreateCheckerBoard(); },
            [&] { sheet.TrimImage(trimAll, true); },
        };
        for (const auto& member : members)
            EXPECT_TRUE(isFlushed(member)) << &member - members;
    }
}

} // namespace
} // namespace pixkit::test
// SPDX-License-Identifier: MIT
