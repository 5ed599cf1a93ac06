// BMP, and the bitmaps in icons: headers of every version, masks, palettes and rows that suit them, PNG files inside.
// Run-length codes and JPEG files inside come from the seeds.
#pragma once
#include "png.h"

namespace pixkit::fuzz {

// A bitmap without the header of a file; in icons with the rows of its AND mask.
inline Bytes newBitmap(bool isIcon, Dice& dice) {
    constexpr std::size_t versions[] = {40, 40, 12, 16, 52, 56, 64, 108, 124}, depths[] = {1, 2, 4, 8, 16, 24, 32, 64};
    const std::size_t version = dice.oneOf(versions), width = dice.side(), height = dice.side();
    const std::size_t wide = version == 12 ? 2 : 4, bits = dice.oneOf(depths),
                      doubled = isIcon && !dice.oneIn(8) ? 2 : 1;
    const std::size_t colors = wide == 4 && dice.oneIn(2) ? dice.below(300) : bits <= 8 ? std::size_t{1} << bits : 0;
    const bool hasMasks = wide == 4 && bits % 16 == 0 && dice.oneIn(2);
    Bytes bitmap(version);
    putField(bitmap, 0, 4, version);
    putField(bitmap, 4, wide, width);
    putField(bitmap, 4 + wide, wide, dice.oneIn(4) ? 0 - height * doubled : height * doubled);
    putField(bitmap, 6 + wide * 2, 2, bits);
    if (wide == 4) putField(bitmap, 16, 4, hasMasks ? 3 : 0);
    if (wide == 4) putField(bitmap, 32, 4, colors);
    if (hasMasks && version <= 40) bitmap.resize(version + 12);
    for (std::size_t at = 40, bit = 0; hasMasks && at < 56; at += 4, bit += 1 + dice.below(8))
        putField(bitmap, at, 4, dice.oneIn(16) ? dice.number() : 0xFFU >> dice.below(9) << bit % 32);
    append(bitmap, dice.noise(colors * (wide == 4 ? 4 : 3) + (width * bits + 31) / 32 * 4 * height));
    if (isIcon && !dice.oneIn(8)) append(bitmap, dice.noise((width + 31) / 32 * 4 * height));
    return bitmap;
}

// A field of the header that begins there.
inline void changeBitmap(Bytes& file, std::size_t at, Dice& dice) {
    constexpr std::size_t fields[] = {0, 4, 8, 12, 14, 14, 16, 16, 20, 32, 32, 40, 44, 48, 52};
    if (dice.oneIn(6)) return dice.change(file);
    const std::size_t field = dice.oneOf(fields);
    putField(file, at + field, field == 12 || field == 14 ? 2 : 4, dice.number());
}

// A PNG file changes that stands behind the headers instead of rows, or comes to stand there.
inline void changeEmbedded(Bytes& file, Dice& dice) {
    constexpr std::size_t headers = 14 + 40, compressionAt = 30, png = 5;
    const bool isOne = file.size() > headers && file[compressionAt] == png;
    Bytes embedded(file.begin() + static_cast<std::ptrdiff_t>(isOne ? headers : file.size()), file.end());
    mutatePng(embedded, dice);
    if (!isOne) file = {'B', 'M'};
    file.resize(headers);
    putField(file, 10, 4, dice.oneIn(16) ? dice.number() : headers);
    putField(file, 14, 4, headers - 14);
    putField(file, compressionAt, 4, png);
    putField(file, 34, 4, dice.oneIn(4) ? dice.number() : embedded.size());
    append(file, embedded);
}

// A changed file, or a new one.
inline void mutateBmp(Bytes& file, Dice& dice) {
    constexpr std::size_t fileHeader = 14;
    const bool isEmbedding = file.size() > 60 && file[30] > 3;
    if (dice.oneIn(isEmbedding ? 2 : 12)) return changeEmbedded(file, dice);
    if (file.size() > 60 && !dice.oneIn(3)) return changeBitmap(file, dice.oneIn(8) ? 10 : fileHeader, dice);
    file = {'B', 'M'};
    file.resize(fileHeader); // without an offset, pixels are where they are
    append(file, newBitmap(false, dice));
}

} // namespace pixkit::fuzz
// SPDX-License-Identifier: MIT
