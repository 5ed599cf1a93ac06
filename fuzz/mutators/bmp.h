// BMP, and the bitmaps in icons: headers of every version, masks, palettes, rows and run-length codes that suit them.
#pragma once
#include "Dice.h"

namespace pixkit::fuzz {

inline Bytes runLengthCodes(std::size_t width, std::size_t height, Dice& dice) {
    Bytes bytes;
    for (std::size_t row = 0; row < height; ++row) {
        for (std::size_t x = 0; x < width; x += 3 + dice.below(width)) {
            const std::uint8_t count = dice.byte() % 60, index = dice.byte();
            const bool isLiteral = dice.oneIn(3), isMove = dice.oneIn(8);
            append(bytes, isLiteral ? Bytes{0, static_cast<std::uint8_t>(count + 3)}
                          : isMove  ? Bytes{0, 2, count, 1}
                                    : Bytes{count, index});
            if (isLiteral) append(bytes, dice.noise((count + 4U) / 2 * 2));
        }
        append(bytes, Bytes{0, dice.oneIn(40) ? dice.byte() : std::uint8_t{0}}); // the end of the line
    }
    append(bytes, Bytes{0, 1});
    return bytes;
}

// Of red, green, blue and alpha: bits next to each other, mostly apart from those of the others.
inline Bytes channelMasks(Dice& dice) {
    Bytes bytes;
    for (std::size_t channel = 0, at = 0; channel < 4; ++channel) {
        const std::size_t count = dice.below(11);
        ByteWriter(bytes).littleEndian32(dice.oneIn(16) ? dice.number() : ((1U << count) - 1) << at % 32);
        at += dice.oneIn(8) ? 0 : count;
    }
    return bytes;
}

// A bitmap without the header of a file; in icons with the rows of its AND mask.
inline Bytes newBitmap(bool isIcon, Dice& dice) {
    constexpr std::size_t versions[] = {40, 40, 40, 12, 16, 52, 56, 64, 108, 124};
    constexpr unsigned forms[][2] = {{1, 0},  {2, 0}, {4, 0}, {8, 0},  {16, 0}, {24, 0},
                                     {32, 0}, {8, 1}, {4, 2}, {16, 3}, {32, 3}, {32, 6}};
    const std::size_t version = dice.oneOf(versions), width = dice.side(), height = dice.side();
    const unsigned *const form = dice.oneOf(forms), bits = form[0], compression = form[1];
    const bool isCore = version == 12;
    const std::size_t colors = dice.oneIn(2) && !isCore ? dice.below(300) : 0, wide = isCore ? 2 : 4;
    const std::size_t stated = isIcon && !dice.oneIn(8) ? height * 2 : height;
    Bytes bitmap(version), masks = channelMasks(dice);
    putField(bitmap, 0, 4, version);
    putField(bitmap, 4, wide, width);
    putField(bitmap, 4 + wide, wide, dice.oneIn(4) ? 0 - stated : stated);
    putField(bitmap, 4 + wide * 2, 2, 1);
    putField(bitmap, 6 + wide * 2, 2, bits);
    if (!isCore) putField(bitmap, 16, 4, compression);
    if (!isCore) putField(bitmap, 32, 4, colors);
    masks.resize(compression == 6 ? 16 : compression == 3 ? 12 : 0);
    if (version <= 40) append(bitmap, masks);
    for (std::size_t i = 0; i < masks.size() && 40 + i < version; ++i)
        bitmap[40 + i] = masks[i];
    append(bitmap, dice.noise((colors != 0 ? colors : bits <= 8 ? std::size_t{1} << bits : 0) * (isCore ? 3 : 4)));
    const bool isRunLength = compression == 1 || compression == 2;
    append(bitmap,
           isRunLength ? runLengthCodes(width, height, dice) : dice.noise((width * bits + 31) / 32 * 4 * height));
    if (isIcon && !dice.oneIn(8)) append(bitmap, dice.noise((width + 31) / 32 * 4 * height));
    return bitmap;
}

// A field of the header that begins there.
inline void changeBitmap(Bytes& file, std::size_t at, Dice& dice) {
    constexpr std::size_t fields[][2] = {{0, 4},  {4, 4},  {8, 4},  {12, 2}, {14, 2}, {16, 4},
                                         {20, 4}, {32, 4}, {40, 4}, {44, 4}, {48, 4}, {52, 4}};
    if (dice.oneIn(6)) return dice.change(file);
    const std::size_t* const field = dice.oneOf(fields);
    putField(file, at + field[0], field[1], dice.number());
}

// A changed file, or a new one.
inline void mutateBmp(Bytes& file, Dice& dice) {
    constexpr std::size_t fileHeader = 14;
    if (file.size() > 60 && !dice.oneIn(3))
        return changeBitmap(file, dice.oneIn(8) ? fileHeader - 4 : fileHeader, dice);
    file = {'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}; // pixels where they are without an offset
    append(file, newBitmap(false, dice));
}

} // namespace pixkit::fuzz
