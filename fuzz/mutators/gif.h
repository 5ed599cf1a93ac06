// GIF: blocks whose lengths are right, and LZW codes that stand for something: of any size, with a table that is
// cleared at odd places, and one that stays full for long.
#pragma once
#include "Dice.h"
#include "coding/BitWriter.h"
#include <array>

namespace pixkit::fuzz {

struct GifBlock {
    Bytes head; // of an extension two bytes; of an image descriptor, colour table and code size
    Bytes data; // what stands in sub-blocks
};

inline std::size_t gifTableBytes(std::uint8_t packed) {
    return (packed & 0x80) != 0 ? 6U << (packed & 7) : 0;
}

// The blocks from there on, as far as they are such.
inline std::vector<GifBlock> gifBlocks(const ByteReader& reader, std::size_t at) {
    for (std::vector<GifBlock> blocks;; ++at) {
        const std::uint8_t kind = reader.byte(at).value_or(0), packed = reader.byte(at + 9).value_or(0);
        const auto head = reader.slice(at, kind == 0x21 ? 2 : kind == 0x2C ? 11 + gifTableBytes(packed) : 0);
        if (!head || head->empty()) return blocks;
        GifBlock& block = blocks.emplace_back(GifBlock{{head->begin(), head->end()}, {}});
        for (at += head->size(); const std::size_t length = reader.byte(at).value_or(0); at += length + 1)
            if (const auto data = reader.slice(at + 1, length)) append(block.data, *data);
    }
}

// Codes for at least so many indexes, every one of which stands for a string.
inline Bytes gifCodes(unsigned codeSize, std::size_t count, Dice& dice) {
    constexpr std::size_t tableSize = 4096, clearings[] = {2, 50, 3000, 100000};
    const std::size_t clearEvery = dice.oneOf(clearings), taste = dice.below(3); // single indexes, the newest, any
    const std::size_t clear = std::size_t{1} << codeSize;
    std::array<std::size_t, tableSize> lengths{};
    Bytes bytes;
    BitWriter writer(bytes);
    std::size_t next = clear + 2, last = 0; // the string before; 0: none since the table was cleared
    unsigned width = codeSize + 1;
    for (std::size_t done = 0; done < count; done += last) {
        const std::size_t known = last == 0 ? clear - 1 : std::min(next, tableSize - 1);
        std::size_t code = taste == 1 ? known : dice.below(taste == 0 ? clear : known + 1);
        if (code == clear + 1) code = 0; // the end
        if (dice.oneIn(clearEvery)) code = clear;
        writer.reserve(2);
        writer.put(code, width);
        writer.flush();
        if (code == clear) {
            next = clear + 2;
        } else if (last != 0 && next < tableSize) {
            lengths[next++] = last + 1;
        }
        last = code == clear ? 0 : code < clear ? 1 : lengths[code];
        if (code == clear) width = codeSize + 1;
        if (code != clear && next == 1U << width && width < 12) ++width;
    }
    writer.reserve(2);
    writer.put(clear + 1, width);
    writer.alignToByte();
    writer.finish();
    return bytes;
}

inline GifBlock newGifImage(Dice& dice) {
    const std::size_t width = dice.side(), height = dice.side(), codeSize = 1 + dice.below(dice.oneIn(4) ? 11 : 8);
    const std::uint8_t packed = dice.byte() & 0xC7;
    GifBlock image{dice.noise(11 + gifTableBytes(packed)),
                   gifCodes(static_cast<unsigned>(codeSize), width * height, dice)};
    if (dice.oneIn(8)) dice.cut(image.data);
    image.head[0] = 0x2C;
    putField(image.head, 5, 4, width | height << 16);
    image.head[9] = packed;
    image.head.back() = static_cast<std::uint8_t>(codeSize);
    return image;
}

// A changed file, or a new one of what is none.
inline void mutateGif(Bytes& file, Dice& dice) {
    constexpr std::uint8_t labels[] = {0xF9, 0xF9, 0xFE, 0xFF}; // one that makes an index transparent, others
    if (file.size() < 13) file = {'G', 'I', 'F', '8', '9', 'a', 9, 0, 9, 0, 0, 0, 0};
    const std::size_t table = gifTableBytes(file[10]);
    std::vector<GifBlock> blocks = gifBlocks(ByteReader(file), 13 + table);
    const std::size_t what = blocks.empty() ? 6 : dice.below(7);
    if (what == 0) dice.shuffle(blocks);
    if (what == 1) dice.change(dice.anyOf(blocks).data);
    if (what == 2) dice.anyOf(blocks) = newGifImage(dice);
    if (what == 3) dice.anyOf(blocks).head[1] = dice.byte();
    if (what == 4) blocks.insert(blocks.begin(), {{0x21, dice.oneOf(labels)}, dice.noise(dice.below(300))});
    if (what == 5) blocks.insert(blocks.begin(), {{0x21, 0xF9}, {1, 0, 0, dice.byte()}});
    if (what == 6) blocks.insert(blocks.begin(), newGifImage(dice));
    file.resize(13 + table);
    if (dice.oneIn(4)) file[dice.below(13)] = dice.byte();
    file.resize(13 + gifTableBytes(file[10])); // the colours for all
    for (const GifBlock& block : blocks) {
        append(file, block.head);
        const std::size_t most = dice.oneIn(4) ? 1 + dice.below(255) : 255;
        for (std::size_t at = 0; at < block.data.size(); at += most) {
            const auto part = std::span(block.data).subspan(at, std::min(most, block.data.size() - at));
            file.push_back(static_cast<std::uint8_t>(part.size()));
            append(file, part);
        }
        file.push_back(0);
    }
    file.push_back(0x3B);
}

} // namespace pixkit::fuzz
// SPDX-License-Identifier: MIT
