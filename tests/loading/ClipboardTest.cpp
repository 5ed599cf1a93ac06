// What other programs may put on the clipboard, and what comes of it; tests/data/transcripts/clipboard.txt has the
// rest.
#include "MemoryClipboard.h"
#include "codecs/clipboard/StoredPixels.h"
#include "support/QuietLoads.h"
#include "surface/HostAccess.h"
#include <chrono>

using namespace pixkit;
using namespace pixkit::test;

namespace {

class Clipboard : public QuietLoads {
  protected:
    ~Clipboard() override { EXPECT_EQ(clipboard.opened, 0) << "the clipboard is still open"; }
    void put(const std::string& format, Bytes bytes) { clipboard.blocks.push_back({format, std::move(bytes)}); }

    MemoryClipboard clipboard;
    cPixSheet sheet;
};

void number(Bytes& bytes, std::size_t at, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i)
        bytes.at(at + i) = static_cast<std::uint8_t>(value >> 8 * i);
}

Bytes withoutFileHeader(const Bytes& bmp) {
    return {bmp.begin() + std::min<std::ptrdiff_t>(14, std::ssize(bmp)), bmp.end()};
}

// The files say where their pixels begin; a block says it by what stands before them, as the reader assumes where a
// file gives no place.
TEST_F(Clipboard, PackedDibsOfEveryHeaderLoadAsTheirFilesDo) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(sourceFolder() / "tests/data/pictures/bmp")) {
        SCOPED_TRACE(entry.path().filename().string());
        Bytes file = readFile(entry.path());
        if (file.size() < 20 || file[0] != 'B' || file[1] != 'M') continue;
        cPixSheet expected;
        number(file, 10, 0);
        expected.LoadPicture_Stream(ByteArray(file));
        for (const char* format : {"CF_DIB", "CF_DIBV5"}) {
            clipboard.blocks = {{format, withoutFileHeader(file)}};
            EXPECT_EQ(sheet.LoadPicture_ClipBoard(), expected.Handle() != 0);
            EXPECT_EQ(pixelsOf(sheet), pixelsOf(expected));
            EXPECT_EQ(sheet.ImageType(), expected.ImageType());
            EXPECT_EQ(sheet.Alpha(), expected.Alpha());
            ++count;
        }
    }
    EXPECT_GT(count, 100);
}

TEST_F(Clipboard, WhatStandsBetweenHeaderAndPixelsIsNoPixel) {
    fill(sheet, 2, 2, {{64, 32, 16, 128}, {9, 8, 7, 255}, {1, 2, 3, 4}, {0, 0, 0, 0}});
    sheet.Alpha(AlphaComplex);
    ASSERT_TRUE(sheet.CopyToClipBoard());
    const Bytes v5 = clipboard.bytes("CF_DIBV5");
    const auto with = [&](std::size_t size, bool isProfile) {
        Bytes dib = v5;
        if (isProfile) number(dib, 112, 124), number(dib, 116, static_cast<std::uint32_t>(size));
        const Bytes between = isProfile ? Bytes(size, 77) : Bytes(dib.begin() + 40, dib.begin() + 52);
        dib.insert(dib.begin() + 124, between.begin(), between.end());
        return dib;
    };
    clipboard.blocks = {{"CF_DIBV5", v5}};
    ASSERT_TRUE(sheet.LoadPicture_ClipBoard());
    const auto expected = pixelsOf(sheet);
    EXPECT_EQ(sheet.ImageType(), imgBmpARGB);
    Bytes lyingProfile = v5;
    number(lyingProfile, 112, 124), number(lyingProfile, 116, 0xFFFFFFFF);
    for (const Bytes& dib : {with(12, false), with(300, true), lyingProfile}) {
        clipboard.blocks = {{"CF_DIBV5", dib}};
        EXPECT_TRUE(sheet.LoadPicture_ClipBoard());
        EXPECT_EQ(pixelsOf(sheet), expected);
    }
}

TEST_F(Clipboard, IsThereThoughNobodyProvidesOne) {
    platform::setClipboardProvider({});
    fill(sheet, 1, 1, {{1, 2, 3, 255}});
    const bool hasOne = platform::OpenClipboard().exists();
    EXPECT_TRUE(hasOne || !sheet.CopyToClipBoard());
    EXPECT_TRUE(hasOne || sheet.LastErrorText() == "there is no clipboard");
    EXPECT_TRUE(hasOne || !sheet.LoadPicture_ClipBoard());
    EXPECT_TRUE(hasOne || sheet.Handle() == 0);
}

TEST_F(Clipboard, PicturesOfEveryKindArriveWithEveryByte) {
    Random random(11);
    for (int round = 0; round < 200; ++round) {
        cPixSheet source;
        random.fill(source, random.between(1, 40), random.between(1, 9));
        if (round % 4 == 1) source.EraseDIB();
        if (round % 4 == 2) std::fill_n(source.BitsPointer(), source.scanWidth(), std::uint8_t{200}); // above alpha
        source.Alpha(static_cast<AlphaTypeEnum>(random.below(3)));
        HostAccess::ImageType(source, imgCursorARGB);
        HostAccess::hotspot(source, {-3, 70000});
        ASSERT_TRUE(source.CopyToClipBoard());
        ASSERT_TRUE(sheet.LoadPicture_ClipBoard());
        EXPECT_EQ(pixelsOf(sheet), pixelsOf(source));
        EXPECT_EQ(sheet.Width(), source.Width());
        EXPECT_EQ(sheet.Alpha(), source.Alpha());
        EXPECT_EQ(sheet.ImageType(), imgCursorARGB);
        EXPECT_EQ(HostAccess::hotspot(sheet), HostAccess::hotspot(source));
        // Others find what they know, in front of what they do not.
        EXPECT_EQ(clipboard.blocks.back().format, storedPixelsFormat);
        for (const char* format : {"PNG", "CF_DIBV5", "CF_DIB"}) {
            cPixSheet other;
            clipboard.blocks = {{format, clipboard.bytes(format)}};
            EXPECT_TRUE(other.LoadPicture_ClipBoard() && other.Width() == source.Width());
            ASSERT_TRUE(source.CopyToClipBoard());
        }
    }
}

TEST_F(Clipboard, StoredPixelsAreNotBelieved) {
    fill(sheet, 3, 1, {{1, 2, 3, 255}, {4, 5, 6, 255}, {7, 8, 9, 255}});
    ASSERT_TRUE(sheet.CopyToClipBoard());
    const Bytes good = clipboard.bytes(std::string(storedPixelsFormat));
    const auto load = [&](const Bytes& block) {
        clipboard.blocks = {{std::string(storedPixelsFormat), block}};
        return sheet.LoadPicture_ClipBoard(true);
    };
    Bytes padded = good;
    padded.resize(good.size() + 9);
    EXPECT_TRUE(load(padded)); // kept is the PNG of the pixels, as none lies beside them
    cPixSheet again;
    ByteArray kept;
    EXPECT_TRUE(sheet.GetOrginalFormat(kept) && again.LoadPicture_Stream(kept));
    EXPECT_EQ(pixelsOf(again), pixelsOf(sheet));
    for (std::size_t size = 0; size < good.size(); ++size)
        EXPECT_FALSE(load({good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size)}));
    const struct {
        std::size_t at;
        std::uint32_t value;
    } lies[] = {{0, 0}, {0, 4},          {0, 0x80000000}, {0, 0x40000000}, {0, 0xFFFFFFFF},
                {4, 0}, {4, 0x80000001}, {8, 3},          {12, 13},        {12, 0xFFFFFFFF}};
    for (const auto& [at, value] : lies) {
        Bytes block = good;
        number(block, at, value);
        EXPECT_FALSE(load(block)) << at << ' ' << value;
    }
}

TEST_F(Clipboard, ABusyClipboardIsTriedForHalfASecondAndThenLeftAlone) {
    using Clock = std::chrono::steady_clock;
    cPixSheet source;
    fill(source, 2, 1, {{64, 32, 16, 128}, {9, 8, 7, 255}});
    clipboard.blocks = {{"old", {1}}};
    EXPECT_FALSE(sheet.CopyToClipBoard()) << "an empty instance";
    clipboard.isFull = true;
    EXPECT_FALSE(source.CopyToClipBoard());
    clipboard.isFull = false;
    clipboard.busyFor = 1000;
    const auto start = Clock::now();
    EXPECT_FALSE(source.CopyToClipBoard());
    EXPECT_EQ(source.LastErrorText(), "another program keeps the clipboard open");
    const auto taken = Clock::now() - start;
    EXPECT_TRUE(taken >= std::chrono::milliseconds(450) && clipboard.busyFor < 990) << "gave up too early";
    EXPECT_LT(taken, std::chrono::seconds(3));
    EXPECT_EQ(clipboard.blocks.size(), 1u);
    clipboard.busyFor = 3;
    EXPECT_TRUE(source.CopyToClipBoard());
    clipboard.busyFor = 3;
    EXPECT_TRUE(sheet.LoadPicture_ClipBoard());
}

} // namespace
// SPDX-License-Identifier: MIT
