#include "platform/gdi.h"
#include "platform/Bitmaps.h"
#include "platform/pictures.h"
#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <string>

using namespace pixkit::platform;
using namespace pixkit::test;

namespace {

std::size_t strideOf(int width, int bits) {
    return (static_cast<std::size_t>(width * bits) / 8 + 3) / 4 * 4;
}

// The memory of 3 x 4 pixels: i of them, counted from the top, is index i, or 10 + i and 101, 102, 103 as far as there
// are such channels, else 0.
Bytes rowsOf(int height, int bits, bool hasColor, bool hasAlpha) {
    Bytes rows;
    for (int y = 0; y < 4; ++y) {
        for (int i = 3 * (height < 0 ? y : 3 - y), end = i + 3; i < end; ++i) {
            const int channels[] = {bits == 8 ? i : 10 + i, hasColor ? 101 : 0, hasColor ? 102 : 0, hasAlpha ? 103 : 0};
            rows.insert(rows.end(), channels, channels + bits / 8);
        }
        rows.resize(static_cast<std::size_t>(y + 1) * strideOf(3, bits));
    }
    return rows;
}

} // namespace

TEST(Gdi, SelectingFollowsTheSystemsRules) {
    const UniqueBitmap first = makeBitmap(2, 2, 32), second = makeBitmap(2, 2, 24);
    const MemoryDC dc = makeMemoryDC(), other = makeMemoryDC();
    const ScreenDC screen;
    const Handle stock = SelectObject(dc.get(), first.get());
    EXPECT_EQ(GetObjectType(stock), ObjectType::bitmap);
    EXPECT_EQ(SelectObject(dc.get(), first.get()), first.get()) << "selecting it again answers it";
    EXPECT_EQ(SelectObject(other.get(), first.get()), 0) << "one device context at a time";
    EXPECT_EQ(SelectObject(dc.get(), second.get()), first.get());
    EXPECT_NE(SelectObject(other.get(), first.get()), 0) << "free again after another one took its place";
    EXPECT_EQ(SelectObject(dc.get(), stock), second.get());
    EXPECT_NE(SelectObject(other.get(), stock), 0) << "the stock bitmap goes everywhere";
    EXPECT_EQ(GetObjectType(screen.get()), ObjectType::dc);
    EXPECT_EQ(SelectObject(screen.get(), first.get()), 0) << "the screen holds no bitmap";
    EXPECT_TRUE(isSameObject(first.get(), first.get()) && !isSameObject(first.get(), second.get()));
}

TEST(Gdi, ABitmapDeletedWhileSelectedDiesWhenItIsDeselected) {
    for (const bool contextDies : {false, true}) {
        UniqueBitmap condemned = makeBitmap(2, 2, 32);
        const UniqueBitmap kept = makeBitmap(2, 2, 32);
        const Handle handle = condemned.get();
        MemoryDC dc = makeMemoryDC(), other = makeMemoryDC();
        const Handle stock = SelectObject(dc.get(), handle);
        EXPECT_NE(SelectObject(other.get(), kept.get()), 0);
        EXPECT_TRUE(DeleteObject(condemned.release()));
        EXPECT_EQ(GetObjectType(handle), ObjectType::bitmap) << "its device context still uses it";
        if (contextDies) {
            EXPECT_TRUE(DeleteDC(dc.release()) && DeleteObject(other.release())) << "the system takes both ways";
            EXPECT_NE(SelectObject(makeMemoryDC().get(), kept.get()), 0) << "let go";
        } else {
            EXPECT_EQ(SelectObject(dc.get(), stock), handle);
        }
        EXPECT_EQ(GetObjectType(handle), ObjectType::none);
        EXPECT_FALSE(DeleteObject(handle));
    }
}

TEST(Gdi, HandlesThatAreNotWhatIsAskedForFailEverywhere) {
    const UniqueBitmap live = makeBitmap(2, 2, 32);
    const MemoryDC liveDC = makeMemoryDC();
    const Handle staleBitmap = makeBitmap(2, 2, 32).get(), staleDC = makeMemoryDC().get();
    std::vector<UniqueBitmap> others(1000); // take the places that have become free
    for (UniqueBitmap& other : others)
        other = makeBitmap(2, 2, 32);
    int local = 0;
    std::array<std::uint8_t, 64> buffer{};
    for (const Handle handle : {Handle{0}, Handle{-1}, Handle{1}, Handle{0x7FFFFFFF}, staleBitmap, staleDC,
                                reinterpret_cast<Handle>(&local)}) {
        SCOPED_TRACE(handle);
        BitmapInfoHeader header = headerOf(2, 2, 32);
        BitmapRecord record;
        void* pixels = &local;
        EXPECT_EQ(GetObjectType(handle), ObjectType::none);
        EXPECT_EQ(SelectObject(handle, live.get()), 0);
        EXPECT_EQ(SelectObject(liveDC.get(), handle), 0);
        EXPECT_FALSE(DeleteObject(handle) || DeleteDC(handle) || ReleaseDC(0, handle) || GetObjectA(handle, record));
        EXPECT_EQ(GetDIBits(handle, live.get(), 0, 2, buffer.data(), header), 0);
        EXPECT_EQ(GetDIBits(liveDC.get(), handle, 0, 2, buffer.data(), header), 0);
        if (handle == 0) continue; // stands for the screen where a new object is made
        EXPECT_EQ(CreateCompatibleDC(handle), 0);
        EXPECT_EQ(CreateDIBSection(handle, header, &pixels), 0);
        EXPECT_EQ(pixels, nullptr);
    }
    EXPECT_EQ(SelectObject(live.get(), live.get()), 0) << "a bitmap is no device context";
    EXPECT_NE(SelectObject(liveDC.get(), live.get()), 0) << "the failures left everything usable";
}

TEST(Gdi, SectionsStartZeroAndCanBeWrittenToTheirLastByte) {
    // The last two are big enough for memory straight from the system, on and off a huge page's multiple.
    const int sizes[][2] = {{1, 1}, {5, -3}, {7, 2}, {1024, 1024}, {1331, 1001}};
    for (const auto& [width, height] : sizes)
        for (const int bits : {24, 32}) {
            std::uint8_t* pixels = nullptr;
            const UniqueBitmap bitmap = makeBitmap(width, height, bits, &pixels);
            ASSERT_NE(pixels, nullptr);
            const std::size_t bytes = strideOf(width, bits) * static_cast<std::size_t>(std::abs(height));
            EXPECT_EQ(Bytes(pixels, pixels + bytes), Bytes(bytes, 0)) << width;
            std::memset(pixels, 0xFF, bytes);
        }
}

TEST(Gdi, ImpossibleHeadersAreTaken) {
    constexpr int most = std::numeric_limits<int>::max(), least = std::numeric_limits<int>::min();
    std::vector<BitmapInfoHeader> impossible = {
        headerOf(0, 4, 32),       headerOf(4, 0, 32),     headerOf(-4, 4, 32),           headerOf(4, 4, 17),
        headerOf(most, most, 32), headerOf(4, least, 32), headerOf(0x10000, 0x10000, 24)};
    for (const std::uint32_t size : {12U, 44U, 124U})
        (impossible.emplace_back() = headerOf(4, 4, 32)).biSize = size;
    const UniqueBitmap bitmap = makeBitmap(4, 4, 32);
    for (BitmapInfoHeader& header : impossible) {
        SCOPED_TRACE(std::to_string(header.biWidth) + " x " + std::to_string(header.biHeight));
        void* pixels = &header;
        const UniqueBitmap made(CreateDIBSection(0, header, &pixels));
        if (header.biHeight == least && made) continue; // a system that has so much memory
        EXPECT_FALSE(made || pixels != nullptr);
        Bytes rows(64);
        EXPECT_EQ(header.biSize != 40 && GetDIBits(ScreenDC().get(), bitmap.get(), 0, 4, rows.data(), header) != 0, 0);
    }
    EXPECT_EQ(CreateDIBSection(0, headerOf(3, 2, 8), nullptr), 0) << "colours are needed";
}

TEST(Gdi, GetDIBitsTurnsRowsAndDepthsIntoWhatTheHeaderAsks) {
    const struct {
        std::uint32_t start, lines;
        int rows;
    } parts[] = {{0, 4, 4}, {1, 2, 2}, {3, 5, 1}, {0, 0x7FFFFFFF, 4}, {4, 1, 0}, {0xFFFFFFFF, 1, 0}};
    const auto check = [&](Handle bitmap, int fromBits, int bits, int height) {
        const Bytes all = rowsOf(height, bits, fromBits != 8, fromBits == 32);
        for (const auto& part : parts) {
            // Wine counts other rows where colours are looked up, and from the top.
            if ((bits == 8 || height < 0) && part.start != 0) continue;
            const int rows = bits == 8 && fromBits != 8 ? 0 : part.rows; // no palette was chosen
            Bytes got(all.size(), 0xEE), expected(all.size(), 0xEE);
            std::copy_n(all.data() + part.start % 4 * strideOf(3, bits),
                        static_cast<std::size_t>(rows) * strideOf(3, bits), expected.begin());
            ColorTable colors{};
            BitmapInfoHeader header = headerOf(3, height, bits);
            const ScreenDC screen;
            EXPECT_EQ(GetDIBits(screen.get(), bitmap, part.start, part.lines, got.data(), header, &colors), rows);
            EXPECT_EQ(got, expected) << fromBits << " to " << bits << " bits, " << height << " from " << part.start;
            EXPECT_EQ(colors[200], rows > 0 && bits == 8 ? 210U : 0U);
        }
        BitmapInfoHeader header = headerOf(3, height, bits);
        EXPECT_EQ(GetDIBits(ScreenDC().get(), bitmap, 0, 4, nullptr, header), 0);
    };
    for (const int fromBits : {8, 24, 32})
        for (const int fromHeight : {4, -4}) {
            std::uint8_t* pixels = nullptr;
            const UniqueBitmap bitmap = makeBitmap(3, fromHeight, fromBits, &pixels);
            std::ranges::copy(rowsOf(fromHeight, fromBits, true, true), pixels);
            for (const int bits : {8, 24, 32})
                for (const int height : {4, -4})
                    check(bitmap.get(), fromBits, bits, height);
        }
}

// What the emulation is tempted to be kinder about than the system.
TEST(Gdi, WhatTheSystemDoesNotDrawIsDrawn) {
    std::uint8_t *to = nullptr, *from = nullptr;
    const UniqueBitmap target = makeBitmap(4, 4, 32, &to), plain = makeBitmap(4, 4, 24);
    const UniqueBitmap bright = makeBitmap(4, 4, 32, &from);
    const MemoryDC dc = makeMemoryDC(), plainDC = makeMemoryDC(), brightDC = makeMemoryDC();
    SelectObject(dc.get(), target.get());
    SelectObject(brightDC.get(), bright.get());
    *to = *from = 200; // a colour above its alpha, of which each system makes something else
    EXPECT_TRUE(AlphaBlend(dc.get(), 0, 0, 4, 4, brightDC.get(), 0, 0, 4, 4, {.AlphaFormat = 1}));
    EXPECT_TRUE(canLoadMetafiles() || *to == 255) << "it must not wrap here";
    SelectObject(plainDC.get(), plain.get());
    EXPECT_TRUE(AlphaBlend(dc.get(), 0, 0, 2, 2, plainDC.get(), 0, 0, 2, 2, {}));
    EXPECT_FALSE(AlphaBlend(dc.get(), 0, 0, 2, 2, plainDC.get(), 0, 0, 2, 2, {.AlphaFormat = 1})) << "it has no alpha";
    const Bytes rows(64);
    const auto taken = [&](std::int32_t x, std::uint32_t width, std::int32_t sourceX, std::int32_t sourceY) {
        return SetDIBitsToDevice(dc.get(), x, 0, width, 4, sourceX, sourceY, 0, 4, rows.data(), headerOf(4, 4, 32));
    };
    EXPECT_EQ(taken(9, 4, 0, 0), 4) << "beside the target";
    EXPECT_EQ(taken(0, 0, 0, 0) + taken(0, 4, 4, 0) + taken(0, 4, 0, 4), 0) << "empty, or beside the DIB";
}

// Bitmaps of one column, whose blue counts 1, 2, 3, 4 from the top.
TEST(Gdi, RowsAreCopiedToOtherPlacesOrAfterTheyWereWrittenOver) {
    struct Row {
        int y, height, sourceY, startScan, lines; // from the memory of a bitmap that holds 11, 12, ...; or none
        Bytes seen;
    };
    const Row rows[] = {{1, 3, 0, 0, 0, {1, 1, 2, 3}},     {0, 3, 1, 0, 0, {2, 3, 4, 4}},
                        {0, 4, -1, 0, 0, {1, 1, 2, 3}},    {-1, 4, 0, 0, 0, {2, 3, 4, 4}},
                        {0, 4, 0, 0, 4, {14, 13, 12, 11}}, {0, 4, 0, 1, 2, {1, 12, 11, 4}},
                        {0, 2, 1, 1, 3, {12, 11, 3, 4}},   {1, 4, 0, 2, 2, {1, 12, 11, 4}}};
    for (const Row& row : rows) {
        std::uint8_t* pixels = nullptr;
        const UniqueBitmap bitmap = makeBitmap(1, -4, 32, &pixels);
        const MemoryDC dc = makeMemoryDC();
        Bytes lines(16), seen(4);
        for (std::uint8_t i = 0; i < 4; ++i) {
            pixels[4 * i] = i + 1;
            lines[4U * i] = i + 11;
        }
        SelectObject(dc.get(), bitmap.get());
        if (row.lines == 0)
            EXPECT_TRUE(BitBlt(dc.get(), 0, row.y, 1, row.height, dc.get(), 0, row.sourceY, rasterCopy));
        else
            SetDIBitsToDevice(dc.get(), 0, row.y, 1, static_cast<std::uint32_t>(row.height), 0, row.sourceY,
                              static_cast<std::uint32_t>(row.startScan), static_cast<std::uint32_t>(row.lines),
                              lines.data(), headerOf(1, 4, 32));
        GdiFlush();
        for (std::size_t i = 0; i < 4; ++i)
            seen[i] = pixels[4 * i];
        EXPECT_EQ(seen, row.seen) << &row - rows;
    }
}
// SPDX-License-Identifier: MIT
