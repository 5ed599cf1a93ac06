#include "platform/gdi.h"
#include "platform/faults.h"
#include <array>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace pixkit::platform;

namespace {

using Bitmap = UniqueHandle<&DeleteObject>;
using MemoryDC = UniqueHandle<&DeleteObject>; // as the component frees its own
using Bytes = std::vector<std::uint8_t>;

BitmapInfoHeader headerOf(int width, int height, int bits) {
    BitmapInfoHeader header;
    header.biWidth = width;
    header.biHeight = height;
    header.biBitCount = static_cast<std::uint16_t>(bits);
    return header;
}

Bitmap makeBitmap(int width, int height, int bits, std::uint8_t** pixels = nullptr) {
    const ScreenDC screen;
    void* memory = nullptr;
    Bitmap bitmap(CreateDIBSection(screen.get(), headerOf(width, height, bits), &memory));
    if (pixels != nullptr) *pixels = static_cast<std::uint8_t*>(memory);
    return bitmap;
}

MemoryDC makeMemoryDC() {
    const ScreenDC screen;
    return MemoryDC(CreateCompatibleDC(screen.get()));
}

// The first byte of a pixel says where it is: column + 16 * (row counted from the top).
constexpr std::uint8_t place(int x, int y) {
    return static_cast<std::uint8_t>(x + 16 * y);
}

constexpr int testWidth = 3;
constexpr int testHeight = 4;

std::size_t strideOf(int width, int bits) {
    return (static_cast<std::size_t>(width) * static_cast<std::size_t>(bits) / 8 + 3) / 4 * 4;
}

// A bitmap whose pixels hold place, 101, 102 and (32 bits) 103.
Bitmap makePlaced(int height, int bits) {
    std::uint8_t* pixels = nullptr;
    Bitmap bitmap = makeBitmap(testWidth, height, bits, &pixels);
    if (!bitmap) return bitmap;
    for (int row = 0; row < testHeight; ++row)
        for (int x = 0; x < testWidth; ++x) {
            const std::array<std::uint8_t, 4> pixel{place(x, height < 0 ? row : testHeight - 1 - row), 101, 102, 103};
            const auto step = static_cast<std::size_t>(bits / 8);
            std::memcpy(pixels + static_cast<std::size_t>(row) * strideOf(testWidth, bits) +
                            static_cast<std::size_t>(x) * step,
                        pixel.data(), step);
        }
    return bitmap;
}

} // namespace

TEST(Gdi, SelectingFollowsTheSystemsRules) {
    const Bitmap first = makeBitmap(2, 2, 32);
    const Bitmap second = makeBitmap(2, 2, 24);
    const MemoryDC dc = makeMemoryDC();
    const MemoryDC other = makeMemoryDC();
    ASSERT_TRUE(first && second && dc && other);

    const Handle stock = SelectObject(dc.get(), first.get());
    EXPECT_NE(stock, 0);
    EXPECT_EQ(GetObjectType(stock), ObjectType::bitmap);
    EXPECT_EQ(SelectObject(dc.get(), first.get()), first.get()) << "selecting it again answers it";
    EXPECT_EQ(SelectObject(other.get(), first.get()), 0) << "one device context at a time";
    EXPECT_EQ(SelectObject(dc.get(), second.get()), first.get());
    EXPECT_NE(SelectObject(other.get(), first.get()), 0) << "free again after another one took its place";
    EXPECT_EQ(SelectObject(dc.get(), stock), second.get());
    EXPECT_NE(SelectObject(other.get(), stock), 0) << "the stock bitmap goes everywhere";
}

TEST(Gdi, ABitmapDeletedWhileSelectedDiesWhenItIsDeselected) {
    Bitmap bitmap = makeBitmap(2, 2, 32);
    const MemoryDC dc = makeMemoryDC();
    const Handle stock = SelectObject(dc.get(), bitmap.get());
    const Handle handle = bitmap.release();
    EXPECT_TRUE(DeleteObject(handle));
    EXPECT_EQ(GetObjectType(handle), ObjectType::bitmap) << "its device context still uses it";
    EXPECT_EQ(SelectObject(dc.get(), stock), handle);
    EXPECT_EQ(GetObjectType(handle), ObjectType::none);
    EXPECT_FALSE(DeleteObject(handle));
}

TEST(Gdi, ADyingDeviceContextLetsItsBitmapGo) {
    const Bitmap kept = makeBitmap(2, 2, 32);
    Bitmap condemned = makeBitmap(2, 2, 32);
    for (const Bitmap* bitmap : {&kept, &std::as_const(condemned)}) {
        MemoryDC dc = makeMemoryDC();
        ASSERT_NE(SelectObject(dc.get(), bitmap->get()), 0);
        const bool dies = bitmap == &condemned;
        EXPECT_EQ(dies && DeleteObject(condemned.get()), dies);
        EXPECT_TRUE(dies ? DeleteDC(dc.release()) : DeleteObject(dc.release()));
    }
    EXPECT_EQ(GetObjectType(condemned.release()), ObjectType::none);
    const MemoryDC next = makeMemoryDC();
    EXPECT_NE(SelectObject(next.get(), kept.get()), 0);
}

TEST(Gdi, HandlesThatAreNotWhatIsAskedForFailEverywhere) {
    Bitmap bitmap = makeBitmap(2, 2, 32);
    MemoryDC dc = makeMemoryDC();
    const Bitmap live = makeBitmap(2, 2, 32);
    const MemoryDC liveDC = makeMemoryDC();
    const Handle staleBitmap = bitmap.release();
    const Handle staleDC = dc.release();
    EXPECT_EQ(GetObjectType(staleDC), ObjectType::memoryDC);
    EXPECT_TRUE(DeleteObject(staleBitmap));
    EXPECT_TRUE(DeleteObject(staleDC)) << "the system frees a memory DC this way too";

    int local = 0;
    std::array<std::uint8_t, 64> buffer{};
    const Handle wrong[] = {0, -1, 1, 0x7FFFFFFF, staleBitmap, staleDC, reinterpret_cast<Handle>(&local)};
    for (const Handle handle : wrong) {
        SCOPED_TRACE(handle);
        BitmapInfoHeader header = headerOf(2, 2, 32);
        void* pixels = &local;
        EXPECT_EQ(GetObjectType(handle), ObjectType::none);
        EXPECT_EQ(SelectObject(handle, live.get()), 0);
        EXPECT_EQ(SelectObject(liveDC.get(), handle), 0);
        EXPECT_FALSE(DeleteObject(handle));
        EXPECT_FALSE(DeleteDC(handle));
        EXPECT_FALSE(ReleaseDC(0, handle));
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

TEST(Gdi, TheScreenHoldsNoBitmap) {
    const Bitmap bitmap = makeBitmap(2, 2, 32);
    const ScreenDC screen;
    EXPECT_EQ(GetObjectType(screen.get()), ObjectType::dc);
    EXPECT_EQ(SelectObject(screen.get(), bitmap.get()), 0);
}

TEST(Gdi, SectionsStartZeroAndCanBeWrittenToTheirLastByte) {
    // The last two are big enough for memory straight from the system, on and off a huge page's multiple.
    const int sizes[][2] = {{1, 1}, {5, -3}, {7, 2}, {1024, 1024}, {1331, 1001}};
    for (const auto& size : sizes)
        for (const int bits : {24, 32}) {
            SCOPED_TRACE(std::to_string(size[0]) + " x " + std::to_string(size[1]) + " x " + std::to_string(bits));
            std::uint8_t* pixels = nullptr;
            const Bitmap bitmap = makeBitmap(size[0], size[1], bits, &pixels);
            ASSERT_TRUE(bitmap);
            ASSERT_NE(pixels, nullptr);
            const std::size_t bytes = strideOf(size[0], bits) * static_cast<std::size_t>(std::abs(size[1]));
            EXPECT_EQ(Bytes(pixels, pixels + bytes), Bytes(bytes, 0));
            std::memset(pixels, 0xFF, bytes);
        }
}

TEST(Gdi, ImpossibleSectionsAreRefused) {
    std::vector<BitmapInfoHeader> impossible = {headerOf(0, 4, 32),
                                                headerOf(4, 0, 32),
                                                headerOf(-4, 4, 32),
                                                headerOf(4, 4, 17),
                                                headerOf(0x7FFFFFFF, 0x7FFFFFFF, 32),
                                                headerOf(4, std::numeric_limits<int>::min(), 32),
                                                headerOf(0x10000, 0x10000, 24)};
    impossible.push_back(headerOf(4, 4, 32));
    impossible.back().biSize = 12;
    for (const BitmapInfoHeader& header : impossible) {
        SCOPED_TRACE(std::to_string(header.biWidth) + " x " + std::to_string(header.biHeight));
        int local = 0;
        void* pixels = &local;
        const Bitmap bitmap(CreateDIBSection(0, header, &pixels));
        if (header.biHeight == std::numeric_limits<int>::min() && bitmap) continue;
        EXPECT_FALSE(bitmap);
        EXPECT_EQ(pixels, nullptr);
    }
}

TEST(Gdi, GetDIBitsTurnsRowsAndDepthsIntoWhatTheHeaderAsks) {
    const ScreenDC screen;
    for (const int fromBits : {24, 32})
        for (const int fromHeight : {testHeight, -testHeight})
            for (const int toBits : {24, 32})
                for (const int toHeight : {testHeight, -testHeight}) {
                    SCOPED_TRACE(std::to_string(fromHeight) + " rows of " + std::to_string(fromBits) + " bits to " +
                                 std::to_string(toHeight) + " of " + std::to_string(toBits));
                    const Bitmap bitmap = makePlaced(fromHeight, fromBits);
                    ASSERT_TRUE(bitmap);
                    const std::size_t stride = strideOf(testWidth, toBits);
                    Bytes got(stride * testHeight + 1, 0xEE);
                    BitmapInfoHeader header = headerOf(testWidth, toHeight, toBits);
                    ASSERT_EQ(GetDIBits(screen.get(), bitmap.get(), 0, testHeight, got.data(), header), testHeight);
                    EXPECT_EQ(got.back(), 0xEE) << "wrote past the end";
                    for (int row = 0; row < testHeight; ++row)
                        for (int x = 0; x < testWidth; ++x) {
                            const std::uint8_t* pixel = got.data() + static_cast<std::size_t>(row) * stride +
                                                        static_cast<std::size_t>(x * toBits / 8);
                            ASSERT_EQ(pixel[0], place(x, toHeight < 0 ? row : testHeight - 1 - row));
                            ASSERT_EQ(pixel[1], 101);
                            ASSERT_EQ(pixel[2], 102);
                            if (toBits == 32) {
                                ASSERT_EQ(pixel[3], fromBits == 32 ? 103 : 0);
                            }
                        }
                }
}

TEST(Gdi, GetDIBitsGivesPartsAndNoMoreThanThereIs) {
    const ScreenDC screen;
    const Bitmap bitmap = makePlaced(testHeight, 32);
    const struct {
        std::uint32_t start, lines;
        int expected;
    } rows[] = {{1, 2, 2}, {3, 5, 1}, {0, 0x7FFFFFFF, 4}, {4, 1, 0}, {0xFFFFFFFF, 1, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.start);
        Bytes got(strideOf(testWidth, 32) * testHeight, 0xEE);
        BitmapInfoHeader header = headerOf(testWidth, testHeight, 32);
        ASSERT_EQ(GetDIBits(screen.get(), bitmap.get(), row.start, row.lines, got.data(), header), row.expected);
        for (int i = 0; i < testHeight; ++i) {
            const auto y = testHeight - 1 - static_cast<int>(row.start) - i;
            EXPECT_EQ(got[static_cast<std::size_t>(i) * strideOf(testWidth, 32)],
                      i < row.expected ? place(0, y) : 0xEE);
        }
    }
    BitmapInfoHeader header = headerOf(testWidth, testHeight, 32);
    EXPECT_EQ(GetDIBits(screen.get(), bitmap.get(), 0, testHeight, nullptr, header), 0);
}

TEST(Gdi, FaultsReachEachCallAndEndWithTheirScope) {
    const Bitmap bitmap = makeBitmap(2, 2, 32);
    const MemoryDC dc = makeMemoryDC();
    {
        const ScopedFault fault(SeamCall::getDC);
        EXPECT_EQ(GetDC(0), 0);
    }
    {
        const ScopedFault fault(SeamCall::createCompatibleDC);
        EXPECT_FALSE(makeMemoryDC());
    }
    {
        const ScopedFault fault(SeamCall::selectObject);
        EXPECT_EQ(SelectObject(dc.get(), bitmap.get()), 0);
    }
    {
        const ScopedFault fault(SeamCall::getDIBits);
        std::array<std::uint8_t, 16> pixels{};
        BitmapInfoHeader header = headerOf(2, 2, 32);
        EXPECT_EQ(GetDIBits(dc.get(), bitmap.get(), 0, 2, pixels.data(), header), 0);
    }
    {
        const ScopedFault fault(SeamCall::createDIBSection, 1, 1);
        EXPECT_TRUE(makeBitmap(2, 2, 32)) << "the first one still succeeds";
        EXPECT_FALSE(makeBitmap(2, 2, 32));
        EXPECT_TRUE(makeBitmap(2, 2, 32)) << "only once";
    }
    EXPECT_NE(SelectObject(dc.get(), bitmap.get()), 0);
    EXPECT_TRUE(makeMemoryDC());
}

TEST(Gdi, ThreadsMakeAndFreeObjectsAtOnce) {
    constexpr int rounds = 500;
    std::array<int, 4> successes{};
    std::vector<std::thread> threads;
    threads.reserve(successes.size());
    for (int& count : successes)
        threads.emplace_back([&count] {
            for (int i = 0; i < rounds; ++i) {
                std::uint8_t* pixels = nullptr;
                const Bitmap bitmap = makeBitmap(3, 3, 32, &pixels);
                const MemoryDC dc = makeMemoryDC();
                if (pixels == nullptr || SelectObject(dc.get(), bitmap.get()) == 0) continue;
                pixels[35] = 1;
                ++count;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    for (const int count : successes)
        EXPECT_EQ(count, rounds);
}

TEST(Gdi, EightBitsAreReadAsIndexesWithTheirColoursOrAsThoseColours) {
    ColorTable colors{};
    for (std::uint32_t i = 0; i < 256; ++i)
        colors[i] = i | (255 - i) << 8 | 7U << 16;
    const ScreenDC screen;
    EXPECT_EQ(CreateDIBSection(screen.get(), headerOf(3, 2, 8), nullptr), 0) << "colours are needed";
    void* pixels = nullptr;
    const Bitmap bitmap(CreateDIBSection(screen.get(), headerOf(3, 2, 8), &pixels, &colors));
    ASSERT_TRUE(bitmap);
    const Bytes indexes{1, 2, 3, 0, 4, 5, 50, 0};
    std::memcpy(pixels, indexes.data(), indexes.size());

    BitmapRecord record;
    ASSERT_TRUE(GetObjectA(bitmap.get(), record));
    EXPECT_EQ(record.bmWidth, 3);
    EXPECT_EQ(record.bmHeight, 2);
    EXPECT_EQ(record.bmBitsPixel, 8);
    EXPECT_FALSE(GetObjectA(screen.get(), record));

    Bytes read(8, 99);
    ColorTable found{};
    BitmapInfoHeader header = headerOf(3, 2, 8);
    EXPECT_EQ(GetDIBits(screen.get(), bitmap.get(), 0, 2, read.data(), header, &found), 2);
    EXPECT_EQ(read, indexes);
    EXPECT_EQ(found, colors);
    EXPECT_EQ(GetDIBits(screen.get(), bitmap.get(), 0, 2, read.data(), header), 0) << "nowhere to put the colours";
    Bytes wide(24);
    header = headerOf(3, -2, 32); // from the top
    EXPECT_EQ(GetDIBits(screen.get(), bitmap.get(), 0, 2, wide.data(), header), 2);
    EXPECT_EQ(Bytes(wide.begin(), wide.begin() + 12), (Bytes{4, 251, 7, 0, 5, 250, 7, 0, 50, 205, 7, 0}));
    header = headerOf(3, 2, 24);
    EXPECT_EQ(GetDIBits(screen.get(), bitmap.get(), 0, 2, wide.data(), header), 2);
    EXPECT_EQ(Bytes(wide.begin() + 12, wide.end()), (Bytes{4, 251, 7, 5, 250, 7, 50, 205, 7, 0, 0, 0}));

    const Bitmap deep = makeBitmap(3, 2, 32);
    header = headerOf(3, 2, 8);
    EXPECT_EQ(GetDIBits(screen.get(), deep.get(), 0, 2, read.data(), header, &found), 0) << "no palette was chosen";
}
