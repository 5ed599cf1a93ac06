// What memory holds before anybody has written to it shows nowhere: everything is done twice, with other bytes in new
// memory, and gives the same.
#include "platform/pictures.h"
#include "platform/regions.h"
#include "platform/text.h"
#include "support/AllocationFault.h"
#include "support/MemoryClipboard.h"
#include "support/Pictures.h"

using namespace pixkit;
using namespace pixkit::test;

namespace {

// Everything that can be had of a picture, from one load on.
Bytes everythingOf(const ByteArray& file) {
    Bytes all;
    ByteArray array;
    const auto add = [&](bool isDone) {
        all.push_back(isDone);
        if (isDone) all.insert(all.end(), array.data(), array.data() + array.size());
    };
    const auto addPixels = [&](const cPixSheet& sheet) {
        if (sheet.Handle() == 0) return;
        const auto bytes = static_cast<std::ptrdiff_t>(sheet.scanWidth()) * sheet.Height();
        all.insert(all.end(), sheet.BitsPointer(), sheet.BitsPointer() + bytes);
    };
    cPixSheet sheet, host;
    if (!sheet.LoadPicture_Stream(file, 0, 0, 0, 0, true) || sheet.Width() * sheet.Height() > 20'000) return all;
    addPixels(sheet);
    add(sheet.GetOrginalFormat(array));
    add(sheet.GetDIBbits(array, true, false, false)); // padded rows
    add(sheet.GetDIBbits(array, false, true, true, true, true, 0, 0, 0, 0, false));
    add(sheet.GetAlphaMask(array));
    add(sheet.SaveToStream_Bitmap(array));
    add(sheet.SaveToStream_Bitmap(array, true));
    add(sheet.SaveToStream_TGA(array, true, true));
    add(sheet.SaveToStream_PNG(array));
    add(sheet.SaveToStream_JPG(array, 60));
    add(sheet.SaveToStream_GIF(array));
    add(sheet.SaveToStream_GIF(array, false));
    const IconEntrySize sizes[] = {{9, 9, 1}, {10, 3, 4}, {5, 5, 8}, {7, 6, 24}, {257, 3, 32}};
    add(sheet.SaveToStream_ICO(array, {}, sizes) == 5);
    sheet.HighQualityInterpolation(true);
    host.InitializeDIB(17, 13);
    for (const float angle : {0.0F, 90.0F, 33.0F})
        add(sheet.Render(0, 1, 1, -15, 11, 0, 0, 0, 0, 80, true, true, &host, gsclNTSCPAL, 20, angle));
    add(sheet.RenderDropShadow_JIT(0, -2, -2, 3, 255, 50, 0, &host));
    add(sheet.TileImage(0, 0, 0, 17, 13, 50, 1, 1, 2, &host));
    addPixels(host);
    sheet.CopyImageTo(host, 19, 7);
    addPixels(host);
    // What is handed to the system and taken back, and what is drawn there.
    const auto text = [&](std::string_view value) { all.insert(all.end(), value.begin(), value.end()); };
    for (const std::int32_t style : {pictPremultiplied, pictFlat, pictIcon}) {
        const auto made = sheet.CreateStdPicture(style);
        host.LoadPicture_StdPicture(made.get());
        addPixels(host);
    }
    for (const std::int32_t style : {regionEnclosed, regionShaped}) {
        const platform::UniqueRegion region(sheet.CreateRegion(style));
        std::vector<platform::Rect> rectangles(platform::GetRegionData(region.get()));
        platform::GetRegionData(region.get(), rectangles);
        for (const platform::Rect& one : rectangles)
            text(std::to_string(one.left) + ' ' + std::to_string(one.top) + ' ' + std::to_string(one.right) + ' ');
    }
    MemoryClipboard clipboard;
    all.push_back(sheet.CopyToClipBoard());
    for (const auto& block : clipboard.blocks)
        all.insert(all.end(), block.bytes.begin(), block.bytes.end());
    all.push_back(host.LoadPicture_ClipBoard());
    addPixels(host);
    text(sheet.LoadNotes());
    if (sheet.Resize(-11, 23)) addPixels(sheet);
    if (sheet.Resample(17, -9)) addPixels(sheet);
    if (sheet.TrimImage()) addPixels(sheet);
    return all;
}

} // namespace

TEST(FreshMemory, ReachesAText) {
    if (!platform::canDrawText()) GTEST_SKIP() << "no text here";
    const auto drawn = [](std::uint8_t filler) {
        fillAllocations(filler);
        cPixSheet sheet;
        sheet.InitializeDIB(60, 40);
        const platform::StdFont font{"Tahoma", 12};
        std::int32_t width = 0, height = 0;
        for (const float angle : {0.0F, 20.0F})
            EXPECT_TRUE(sheet.DrawText_stdFont(0, font, "A w\u05D0rd\nand more of them", 0, 0, 50, 0, 255, 80,
                                               txtCenter | txtEllipsis, angle == 0, angle));
        EXPECT_TRUE(sheet.MeasureText_stdFont(font, "A word", width, height));
        return std::tuple(pixelsOf(sheet), width, height);
    };
    EXPECT_TRUE(drawn(0x55) == drawn(0xAA));
}

TEST(FreshMemory, ReachesAPictureAFileOrAnArray) {
#ifdef __SANITIZE_ADDRESS__
    const std::size_t step = 8; // of 1,200 pictures
#else
    const std::size_t step = platform::canLoadMetafiles() ? 8 : 3; // a system's own loader is slow
#endif
    std::size_t bytes = 0, files = 0;
    for (const char* folder :
         {"tests/data/pictures", "tests/data/regression", "tests/data/metafiles", "fuzz/seeds/picture"})
        for (const auto& entry : std::filesystem::recursive_directory_iterator(sourceFolder() / folder)) {
            if (!entry.is_regular_file() || files++ % step != 0) continue;
            const ByteArray file(readFile(entry.path()));
            fillAllocations(0x55);
            const Bytes once = everythingOf(file);
            fillAllocations(0xAA);
            EXPECT_TRUE(everythingOf(file) == once) << entry.path();
            bytes += once.size();
        }
    EXPECT_GT(bytes, 100'000U);
}
// SPDX-License-Identifier: MIT
