// Icons and cursors: entries with PNG files and bitmaps of all kinds, some of which share bytes or lie outside.
#pragma once
#include "bmp.h"

namespace pixkit::fuzz {

struct IcoEntry {
    Bytes listed, image; // the directory's line, the image itself
};

inline std::vector<IcoEntry> icoEntries(const Bytes& file) {
    std::vector<IcoEntry> entries;
    const ByteReader reader(file);
    for (std::size_t at = 6; entries.size() < reader.byte(4).value_or(0) % 32U; at += 16) {
        const auto listed = reader.slice(at, 16);
        if (!listed) break;
        const std::size_t start = *reader.littleEndian32(at + 12), size = *reader.littleEndian32(at + 8);
        const auto image = reader.slice(start, size).value_or(std::span<const std::uint8_t>());
        entries.push_back({{listed->begin(), listed->end()}, {image.begin(), image.end()}});
    }
    return entries;
}

// A changed file, or a new one of what is none.
inline void mutateIco(Bytes& file, Dice& dice) {
    std::vector<IcoEntry> entries = icoEntries(file);
    if (entries.empty() || dice.oneIn(5))
        entries.push_back({dice.noise(16), dice.oneIn(2) ? Bytes() : newBitmap(true, dice)});
    IcoEntry& any = dice.anyOf(entries);
    const std::size_t what = dice.below(6);
    if (what == 1) any.listed[dice.below(8)] = dice.byte();
    if (what == 2) any.image = newBitmap(true, dice);
    if (any.image.size() < 4 || any.image[1] == 'P') {
        mutatePng(any.image, dice);
    } else if (what > 2) {
        changeBitmap(any.image, 0, dice);
    }
    if (what == 0) dice.shuffle(entries);
    file = {0, 0, static_cast<std::uint8_t>(1 + dice.below(2)), 0};
    ByteWriter(file).littleEndian16(dice.oneIn(30) ? dice.number() : entries.size());
    std::size_t at = 6 + 16 * entries.size();
    for (IcoEntry& entry : entries) { // some elsewhere: in another's bytes, in the directory, beyond the end
        putField(entry.listed, 8, 4, dice.oneIn(16) ? dice.number() : entry.image.size());
        putField(entry.listed, 12, 4, dice.oneIn(16) ? dice.below(at * 2) : at);
        append(file, entry.listed);
        at += entry.image.size();
    }
    for (const IcoEntry& entry : entries)
        append(file, entry.image);
}

} // namespace pixkit::fuzz
// SPDX-License-Identifier: MIT
