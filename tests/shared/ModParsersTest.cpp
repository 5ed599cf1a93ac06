#include "shared/modParsers.h"
#include "platform/faults.h"
#include "shared/ByteArray.h"
#include "support/Pictures.h"
#include <gtest/gtest.h>
#include <stdexcept>
#include <utility>

namespace pixkit {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(Arithmetic, RowsAlignToFourBytesAndOverflowIsAnError) {
    EXPECT_EQ(iparseByteAlignOnWord(24, 3), 12);
    EXPECT_EQ(iparseByteAlignOnWord(1, 33), 8);
    EXPECT_EQ(iparseByteAlignOnWord(32, 5), 20);
    EXPECT_EQ(iparseByteAlignOnWord(8, 0), 0);
    EXPECT_THROW(iparseByteAlignOnWord(32, 67108864), std::overflow_error);
    EXPECT_EQ(iparseReverseLong(0x474E5089), -1991225785);
    EXPECT_EQ(iparseReverseLong(0x00000080), static_cast<std::int32_t>(0x80000000));
    EXPECT_EQ(iparseReverseLong(-1991225785), 0x474E5089);
}

TEST(AlphaClassification, DecidesAndRepairsByOneRule) {
    struct Row {
        const char* what;
        std::int32_t imgType;
        Bytes pixels;
        AlphaClassification classified, repaired;
        Bytes after;
    };
    constexpr AlphaClassification opaque{AlphaNone, imgBitmap};
    const Row rows[] = {
        {"alpha all 0 carries nothing", 0, {1, 2, 3, 0, 4, 5, 6, 0}, opaque, opaque, {1, 2, 3, 255, 4, 5, 6, 255}},
        {"alpha all 255", 0, {1, 2, 3, 255, 4, 5, 6, 255}, opaque, opaque, {1, 2, 3, 255, 4, 5, 6, 255}},
        {"alpha declared unused", -1, {1, 2, 3, 9, 4, 5, 6, 255}, opaque, opaque, {1, 2, 3, 255, 4, 5, 6, 255}},
        {"mask over black",
         0,
         {0, 0, 0, 0, 4, 5, 6, 255},
         {AlphaSimple, imgBmpPARGB},
         {AlphaSimple, imgBmpPARGB},
         {0, 0, 0, 0, 4, 5, 6, 255}},
        {"premultiplied",
         0,
         {9, 9, 9, 9, 0, 0, 0, 0},
         {AlphaComplex, imgBmpPARGB},
         {AlphaComplex, imgBmpPARGB},
         {9, 9, 9, 9, 0, 0, 0, 0}},
        {"colour in a clear pixel, then an opaque one",
         0,
         {10, 0, 0, 0, 4, 5, 6, 255},
         {AlphaSimple, imgBmpARGB},
         {AlphaSimple, imgBmpARGB},
         {0, 0, 0, 0, 4, 5, 6, 255}},
        {"opaque, then colour in a clear pixel",
         0,
         {4, 5, 6, 255, 10, 0, 0, 0},
         {AlphaSimple, imgBmpARGB},
         {AlphaSimple, imgBmpARGB},
         {4, 5, 6, 255, 0, 0, 0, 0}},
        {"colour in a clear pixel, then a translucent one: the early stop must not hide it",
         0,
         {10, 0, 0, 0, 1, 1, 1, 128},
         {AlphaSimple, imgBmpARGB},
         {AlphaComplex, imgBmpARGB},
         {0, 0, 0, 0, 0, 0, 0, 128}},
        {"colour above alpha",
         0,
         {200, 100, 50, 128, 0, 0, 0, 0},
         {AlphaSimple, imgBmpARGB},
         {AlphaComplex, imgBmpARGB},
         {100, 50, 25, 128, 0, 0, 0, 0}},
        {"translucent before the proof",
         0,
         {5, 5, 5, 128, 0, 0, 129, 128},
         {AlphaComplex, imgBmpARGB},
         {AlphaComplex, imgBmpARGB},
         {2, 2, 2, 128, 0, 0, 64, 128}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Bytes pixels = row.pixels;
        const PixelView view{pixels.data(), 1, 2, 4}; // two rows: what is seen must carry over
        const auto only = iparseValidateAlphaChannel(ConstPixelView(view), row.imgType);
        EXPECT_EQ(only.bIsAlpha, row.classified.bIsAlpha);
        EXPECT_EQ(only.imgType, row.classified.imgType);
        EXPECT_EQ(iparseValidateAlphaChannel(view, false, row.imgType).bIsAlpha, row.classified.bIsAlpha);
        EXPECT_EQ(pixels, row.pixels);
        const auto repaired = iparseValidateAlphaChannel(view, true, row.imgType);
        EXPECT_EQ(repaired.bIsAlpha, row.repaired.bIsAlpha);
        EXPECT_EQ(repaired.imgType, row.repaired.imgType);
        EXPECT_EQ(pixels, row.after);
    }
}

TEST(FindColor, GivesTheIndexOrWhereToInsert) {
    const std::vector<std::int32_t> items = {-5, 5, 9, 12, 40};
    for (std::int32_t count = 0; count <= 5; ++count) {
        for (std::int32_t colour = -7; colour <= 42; ++colour) {
            const auto end = items.begin() + count;
            const auto expected = std::lower_bound(items.begin(), end, colour);
            bool isNew = false;
            EXPECT_EQ(iparseFindColor(items, colour, count, isNew), expected - items.begin() + 1);
            EXPECT_EQ(isNew, expected == end || *expected != colour);
        }
    }
}

TEST(BlendImageToColor, PadsRowsAndTruncates) {
    const Bytes pixels = {10, 20, 30, 255, 64, 32, 16, 128, 0, 0, 0, 0};
    const ConstPixelView view{pixels.data(), 1, 3, 4};
    Bytes out(12, 0xEE);
    iparseBlendImageToColor(view, 0x0A6480, out, true); // B 10, G 100, R 128
    EXPECT_EQ(out, (Bytes{10, 20, 30, 0, 64 + 4, 32 + 49, 16 + 63, 0, 10, 100, 128, 0}));
    EXPECT_THROW(iparseBlendImageToColor(view, 0, std::span(out).first(11), true), std::out_of_range);
    iparseBlendImageToColor(view, 0x0A6480, out, false);
    EXPECT_EQ(out, (Bytes{10, 20, 30, 255, 64 + 4, 32 + 49, 16 + 63, 255, 10, 100, 128, 255}));
}

TEST(Files, AreFoundAndDeletedThroughWideAndNarrowFunctionsAlike) {
    const test::TemporaryFolder folder;
    for (const bool useUnicode : {true, false}) {
        for (const bool unicodeDesktop : {true, false}) {
            const auto path = folder.path(u8"file.bin");
            test::writeFile(path, {1, 2, 3});
            std::filesystem::permissions(path, std::filesystem::perms::owner_read);
            std::optional<platform::ScopedFault> narrowDesktop;
            if (!unicodeDesktop) narrowDesktop.emplace(platform::SeamCall::desktopWindowUnicode);
            const auto name = folder.name(u8"file.bin");
            EXPECT_TRUE(iparseFileExists(name, useUnicode));
            EXPECT_TRUE(iparseDeleteFile(name, useUnicode)) << "read-only files are deleted too";
            EXPECT_FALSE(iparseFileExists(name, useUnicode));
            EXPECT_FALSE(iparseDeleteFile(name, useUnicode));
            EXPECT_TRUE(iparseFileExists(folder.name(u8""), useUnicode)) << "a directory counts as existing";
            EXPECT_EQ(iparseGetFileHandle(name, true, useUnicode), platform::invalidHandle);
        }
    }
}

TEST(Files, ANameOutsideTheCodePageNeedsTheWideFunctions) {
    const test::TemporaryFolder folder;
    test::writeFile(folder.path(u8"图.bin"), {1});
    const platform::ScopedFault narrowDesktop(platform::SeamCall::desktopWindowUnicode);
    EXPECT_TRUE(iparseFileExists(folder.name(u8"图.bin"), true));
    EXPECT_TRUE(iparseDeleteFile(folder.name(u8"图.bin"), true));
}

TEST(ByteArray, OwnsCopiesAndLetsGoOfWhatItBorrows) {
    Bytes foreign = {1, 2, 3, 4, 5, 6};
    ByteArray borrowed = ByteArray::borrow(foreign.data(), {-1, 3}, {7, 2});
    EXPECT_EQ(borrowed.size(), 6U);
    EXPECT_EQ(borrowed.upperBound(), 1);
    ByteArray copy = borrowed;
    foreign[0] = 9;
    EXPECT_EQ(borrowed.data()[0], 9);
    EXPECT_EQ(copy.data()[0], 1);
    EXPECT_EQ(copy.bound(2), (ByteArray::Bound{7, 2}));
    ByteArray moved = std::move(copy);
    EXPECT_EQ(moved.data()[0], 1);
    borrowed.redim(2);
    EXPECT_EQ(foreign[1], 2) << "redim must not write into foreign memory";
    EXPECT_EQ(test::bytesOf(borrowed), (Bytes{0, 0}));
    borrowed.erase();
    EXPECT_FALSE(borrowed.isAllocated());
    EXPECT_THROW(borrowed.redim(std::size_t{1} << 31), std::length_error);
    EXPECT_FALSE(borrowed.isAllocated());
}

} // namespace
} // namespace pixkit
