#include "shared/modParsers.h"
#include "platform/faults.h"
#include "support/Pictures.h"
#include <gtest/gtest.h>
#include <stdexcept>
#include <utility>

namespace pixkit {
namespace {

TEST(Helpers, ArithmeticWrapsOrAnIndexIsOffByOne) {
    EXPECT_EQ(iparseByteAlignOnWord(1, 33) * 100 + iparseByteAlignOnWord(24, 3), 812);
    EXPECT_THROW(iparseByteAlignOnWord(32, 67108864), std::overflow_error);
    EXPECT_EQ(iparseReverseLong(-1991225785), 0x474E5089);
    const std::vector<std::int32_t> items = {-5, 5, 9, 12, 40};
    for (std::int32_t count = 0; count <= 5; ++count)
        for (std::int32_t color = -7; color <= 42; ++color) {
            const auto end = items.begin() + count, expected = std::lower_bound(items.begin(), end, color);
            bool isNew = false;
            EXPECT_EQ(iparseFindColor(items, color, count, isNew), expected - items.begin() + 1);
            EXPECT_EQ(isNew, expected == end || *expected != color);
        }
}

TEST(Helpers, AlphaIsJudgedOrRepairedByAnotherRule) {
    using Bytes = std::vector<std::uint8_t>;
    using Verdict = std::pair<int, int>; // AlphaTypeEnum, eImageFormat
    const Verdict opaque{AlphaNone, imgBitmap}, mask{AlphaSimple, imgBmpPARGB}, straightMask{AlphaSimple, imgBmpARGB},
        partial{AlphaComplex, imgBmpPARGB}, straight{AlphaComplex, imgBmpARGB};
    const struct {
        const char* what;
        int imgType;
        Bytes pixels;
        Verdict only, repaired;
        Bytes after;
    } rows[] = {
        {"carries nothing", 0, {1, 2, 3, 0, 4, 5, 6, 0}, opaque, opaque, {1, 2, 3, 255, 4, 5, 6, 255}},
        {"all 255", 0, {1, 2, 3, 255, 4, 5, 6, 255}, opaque, opaque, {1, 2, 3, 255, 4, 5, 6, 255}},
        {"declared unused", -1, {1, 2, 3, 9, 4, 5, 6, 255}, opaque, opaque, {1, 2, 3, 255, 4, 5, 6, 255}},
        {"mask over black", 0, {0, 0, 0, 0, 4, 5, 6, 255}, mask, mask, {0, 0, 0, 0, 4, 5, 6, 255}},
        {"premultiplied", 0, {9, 9, 9, 9, 0, 0, 0, 0}, partial, partial, {9, 9, 9, 9, 0, 0, 0, 0}},
        {"clear, opaque", 0, {9, 0, 0, 0, 4, 5, 6, 255}, straightMask, straightMask, {0, 0, 0, 0, 4, 5, 6, 255}},
        {"opaque, clear", 0, {4, 5, 6, 255, 9, 0, 0, 0}, straightMask, straightMask, {4, 5, 6, 255, 0, 0, 0, 0}},
        {"early stop", 0, {9, 0, 0, 0, 1, 1, 1, 128}, straightMask, straight, {0, 0, 0, 0, 0, 0, 0, 128}},
        {"above alpha", 0, {200, 100, 50, 128, 0, 0, 0, 0}, straightMask, straight, {100, 50, 25, 128, 0, 0, 0, 0}},
        {"late proof", 0, {5, 5, 5, 128, 0, 0, 129, 128}, straight, straight, {2, 2, 2, 128, 0, 0, 64, 128}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Bytes pixels = row.pixels;
        const PixelView view{pixels.data(), 1, 2, 4}; // two rows: what is seen must carry over
        const auto judged = [&](const AlphaClassification& alpha) { return Verdict{alpha.bIsAlpha, alpha.imgType}; };
        EXPECT_EQ(judged(iparseValidateAlphaChannel(view, false, row.imgType)), row.only);
        EXPECT_EQ(pixels, row.pixels);
        EXPECT_EQ(judged(iparseValidateAlphaChannel(view, true, row.imgType)), row.repaired);
        EXPECT_EQ(pixels, row.after);
    }
}

TEST(Helpers, FilesAreSoughtByTheOtherKindOfName) {
    const test::TemporaryFolder folder;
    for (const auto& [useUnicode, narrowDesktop, name] :
         {std::tuple(true, true, u8"\u56FE"), {true, false, u8"a"}, {false, true, u8"b"}, {false, false, u8"\u56FE"}}) {
        const platform::ScopedFault desktop(platform::SeamCall::desktopWindowUnicode, 0, narrowDesktop ? -1 : 0);
        test::writeFile(folder.path(name), {1, 2, 3});
        std::filesystem::permissions(folder.path(name), std::filesystem::perms::owner_read);
        EXPECT_TRUE(iparseFileExists(folder.name(name), useUnicode));
        EXPECT_TRUE(iparseDeleteFile(folder.name(name), useUnicode)) << "read-only files are deleted too";
        EXPECT_FALSE(iparseFileExists(folder.name(name), useUnicode) ||
                     iparseDeleteFile(folder.name(name), useUnicode));
        EXPECT_TRUE(iparseFileExists(folder.name(u8""), useUnicode)) << "a directory counts as existing";
    }
}

TEST(Helpers, AnArrayKeepsOrChangesWhatItBorrows) {
    std::vector<std::uint8_t> foreign = {1, 2, 3, 4, 5, 6};
    ByteArray borrowed = ByteArray::borrow(foreign.data(), {-1, 3}, {7, 2});
    const ByteArray copy = borrowed;
    foreign[0] = 9;
    EXPECT_EQ(borrowed.size() * 100 + borrowed.data()[0] * 10U + copy.data()[0], 691U);
    EXPECT_EQ(borrowed.upperBound(), 1);
    EXPECT_EQ(copy.bound(2), (ByteArray::Bound{7, 2}));
    borrowed.redim(2);
    EXPECT_EQ(foreign[1], 2) << "redim must not write into foreign memory";
    EXPECT_EQ(test::bytesOf(borrowed), (std::vector<std::uint8_t>{0, 0}));
    borrowed.erase();
    EXPECT_THROW(borrowed.redim(std::size_t{1} << 31), std::length_error);
    EXPECT_FALSE(borrowed.isAllocated());
}

} // namespace
} // namespace pixkit
// SPDX-License-Identifier: MIT
