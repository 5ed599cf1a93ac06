// Colours that all belong into one slot of the table, where hardly any finds room near it.
#include "coding/ColorIndexes.h"
#include "coding/Hash.h"
#include <gtest/gtest.h>
#include <vector>

using pixkit::ColorIndexes;

TEST(ColorIndexes, AreMixedUpOrForgottenWhereColorsCollide) {
    // The last one, so that others go on at the first. From large to small and back, so that some go between others.
    std::vector<std::uint32_t> colors;
    for (std::uint32_t color = 1U << 19; colors.size() <= ColorIndexes::mostColors; --color) {
        const std::uint32_t other = color % 2 == 0 ? color : ~color;
        if (pixkit::spreadHash<10>(other) == 1023) colors.push_back(other);
    }
    for (const std::size_t limit : {std::size_t{200}, ColorIndexes::mostColors}) {
        ColorIndexes indexes(limit);
        for (std::size_t i = 0; i < limit; ++i) {
            EXPECT_FALSE(indexes.has(colors[i]));
            ASSERT_EQ(indexes.add(colors[i]), i);
        }
        EXPECT_FALSE(indexes.add(colors[limit]));
        for (std::size_t i = 0; i < limit; ++i) {
            ASSERT_TRUE(indexes.has(colors[i]));
            ASSERT_EQ(indexes.add(colors[i]), i);
            ASSERT_EQ(indexes.indexOf(colors[i]), i);
            ASSERT_EQ(indexes.colors()[i], colors[i]);
        }
        EXPECT_FALSE(indexes.has(colors[limit]));
    }
}
// SPDX-License-Identifier: MIT
