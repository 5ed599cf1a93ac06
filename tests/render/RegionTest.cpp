// Regions against the alpha of their picture, and holes against a search that takes its time.
#include "platform/regions.h"
#include "support/Pictures.h"
#include "support/PixelRows.h"
#include <sstream>

using namespace pixkit;
using namespace pixkit::test;
using platform::UniqueRegion;

namespace {

// A character for each pixel, the top row first: '#' belongs to the shape, '.' does not.
using Rows = std::vector<std::string>;

Rows shapeOf(const cPixSheet& sheet, int tolerance) {
    Rows rows(static_cast<std::size_t>(sheet.Height()));
    const auto pixels = pixelsOf(sheet);
    const auto width = static_cast<std::size_t>(sheet.Width());
    for (std::size_t i = 0; i < pixels.size(); ++i)
        rows[i / width] += pixels[i][3] >= tolerance ? '#' : '.';
    return rows;
}

// What the rectangles cover, each pixel once, and what PtInRegion says of some pixels.
Rows rowsOf(platform::Handle region, std::size_t width, std::size_t height) {
    std::vector<platform::Rect> rectangles(platform::GetRegionData(region));
    platform::GetRegionData(region, rectangles);
    Rows rows(height, std::string(width, '.'));
    for (const platform::Rect& r : rectangles)
        for (auto y = static_cast<std::size_t>(r.top); y < static_cast<std::size_t>(r.bottom); ++y)
            for (auto x = static_cast<std::size_t>(r.left); x < static_cast<std::size_t>(r.right); ++x)
                rows.at(y).at(x) = rows[y][x] == '.' ? '#' : '2';
    Numbers numbers(width * 1009 + height);
    for (int sample = 0; sample < 40; ++sample) {
        const auto x = numbers.below(static_cast<std::uint32_t>(width));
        const auto y = numbers.below(static_cast<std::uint32_t>(height));
        const bool isIn = platform::PtInRegion(region, static_cast<int>(x), static_cast<int>(y));
        EXPECT_EQ(isIn, rows[y][x] == '#') << x << ", " << y;
    }
    return rows;
}

// From the rim, as long as anything is found.
Rows filledByTheBook(Rows rows) {
    const std::size_t height = rows.size(), width = rows[0].size();
    for (bool isMore = true; isMore;) {
        isMore = false;
        for (std::size_t y = 0; y < height; ++y)
            for (std::size_t x = 0; x < width; ++x) {
                if (rows[y][x] != '.') continue;
                if (x != 0 && x != width - 1 && y != 0 && y != height - 1 && rows[y][x - 1] != 'o' &&
                    rows[y][x + 1] != 'o' && rows[y - 1][x] != 'o' && rows[y + 1][x] != 'o')
                    continue;
                rows[y][x] = 'o';
                isMore = true;
            }
    }
    for (std::string& row : rows)
        for (char& pixel : row)
            pixel = pixel == 'o' ? '.' : '#';
    return rows;
}

void drawRows(cPixSheet& sheet, const Rows& rows) {
    draw(sheet, static_cast<std::int32_t>(rows[0].size()), static_cast<std::int32_t>(rows.size()), AlphaComplex,
         [&](unsigned x, unsigned y) {
             return Pixel{0, 0, 0, static_cast<std::uint8_t>(rows[y][x] == '#' ? 200 : 0)};
         });
}

} // namespace

TEST(CreateRegion, DiffersFromTheAlphaOfSomePicture) {
    const auto data = sourceFolder() / "tests" / "data";
    std::ifstream ledger(data / "ledger.txt");
    int loaded = 0;
    for (std::string line; std::getline(ledger, line);) {
        const auto end = line.find(": ");
        if (line.compare(end + 2, 7, "refused") == 0) continue;
        SCOPED_TRACE(line);
        cPixSheet sheet;
        if (!sheet.LoadPicture_Stream(ByteArray(readFile(data / line.substr(0, end))))) continue;
        ++loaded;
        for (const int tolerance : {1, 128, 255}) {
            const UniqueRegion region(sheet.CreateRegion(regionShaped, static_cast<std::uint8_t>(tolerance)));
            const Rows shape = shapeOf(sheet, tolerance);
            ASSERT_EQ(rowsOf(region.get(), shape[0].size(), shape.size()), shape) << tolerance;
        }
    }
    EXPECT_GT(loaded, 500);
}

TEST(CreateRegion, FillsAHoleThatIsNoneOrLeavesOne) {
    const struct {
        Rows shape, filled;
    } drawn[] = {
        {{"#######", "#.....#", "#.###.#", "#.#.#.#", "#.###.#", "#.....#", "#######"}, Rows(7, "#######")},
        {{".#.", "#.#", ".#."}, {".#.", "###", ".#."}}, // a line with steps across corners holds
        {{"##.", "#.#", "###"}, {"##.", "###", "###"}},
        {{"###", "#..", "###"}, {"###", "#..", "###"}}, // a gap at the rim
        {{"#####", "#...#", "#.#.#", "#.#.#", "#.###"}, {"#####", "#...#", "#.#.#", "#.#.#", "#.###"}},
    };
    for (const auto& [shape, filled] : drawn) {
        EXPECT_EQ(filledByTheBook(shape), filled);
        cPixSheet sheet;
        drawRows(sheet, shape);
        const UniqueRegion region(sheet.CreateRegion(regionEnclosed));
        EXPECT_EQ(rowsOf(region.get(), shape[0].size(), shape.size()), filled);
    }
    Numbers numbers(3);
    for (unsigned round = 0; round < 200; ++round) { // also at the ends of words
        const std::size_t width = round % 2 == 0 ? 1 + numbers.below(20) : 62 + numbers.below(5) + 64 * (round % 4 / 2);
        const std::uint32_t share = 35 + numbers.below(40);
        Rows shape(1 + numbers.below(24), std::string(width, '.'));
        for (std::string& row : shape)
            for (char& pixel : row)
                pixel = numbers.below(100) < share ? '#' : '.';
        cPixSheet sheet;
        drawRows(sheet, shape);
        const UniqueRegion region(sheet.CreateRegion(regionEnclosed));
        ASSERT_EQ(rowsOf(region.get(), width, shape.size()), filledByTheBook(shape)) << round;
    }
}
// SPDX-License-Identifier: MIT
