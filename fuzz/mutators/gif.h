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
    constexpr unsigned tableSize = 4096;
    constexpr std::size_t clearings[] = {2, 50, 3000, 100000};
    const std::size_t clearEvery = dice.oneOf(clearings);
    const unsigned taste = dice.byte() % 3, clear = 1U << codeSize; // taste: single indexes, the newest string, any
    std::array<std::size_t, tableSize> lengths{};
    Bytes bytes;
    BitWriter writer(bytes);
    unsigned next = clear + 2, width = codeSize + 1;
    std::size_t last = 0; // the length of the string before; 0: none since the table was cleared
    for (std::size_t done = 0; done < count;) {
        const unsigned known = last == 0 ? clear - 1 : std::min(next, tableSize - 1);
        unsigned code = static_cast<unsigned>(dice.below(taste == 0 ? clear : known + 1));
        if (taste == 1 && !dice.oneIn(8)) code = known;
        if (code == clear + 1) code = 0; // the end
        if (dice.oneIn(clearEvery)) code = clear;
        writer.reserve(2);
        writer.put(code, width);
        writer.flush();
        if (code == clear) {
            next = clear + 2;
            width = codeSize + 1;
            last = 0;
            continue;
        }
        if (last != 0 && next < tableSize) lengths[next++] = last + 1;
        if (next == 1U << width && width < 12) ++width;
        last = code < clear ? 1 : lengths[code];
        done += last;
    }
    writer.reserve(2);
    writer.put(clear + 1, width);
    writer.alignToByte();
    writer.finish();
    return bytes;
}

inline GifBlock newGifImage(Dice& dice) {
    const std::size_t width = dice.side(), height = dice.side();
    const std::uint8_t packed = dice.byte() & 0xC7;
    const auto codeSize = static_cast<unsigned>(1 + dice.below(dice.oneIn(4) ? 11 : 8));
    GifBlock image{dice.noise(11 + gifTableBytes(packed)), gifCodes(codeSize, width * height, dice)};
    if (dice.oneIn(8)) image.data.resize(dice.below(image.data.size()));
    image.head[0] = 0x2C;
    putField(image.head, 5, 2, width);
    putField(image.head, 7, 2, height);
    image.head[9] = packed;
    image.head.back() = static_cast<std::uint8_t>(codeSize);
    return image;
}

// A changed file, or a new one of what is none.
inline void mutateGif(Bytes& file, Dice& dice) {
    constexpr std::uint8_t labels[] = {0xF9, 0xF9, 0xF9, 0xFE, 0xFF, 0x01, 0x00};
    const ByteReader reader(file);
    const auto screen = reader.slice(0, 13).value_or(std::span<const std::uint8_t>());
    Bytes start =
        screen.empty() ? Bytes{'G', 'I', 'F', '8', '9', 'a', 9, 0, 9, 0, 0, 0, 0} : Bytes(screen.begin(), screen.end());
    const std::size_t table = gifTableBytes(start[10]);
    std::vector<GifBlock> blocks = gifBlocks(reader, 13 + table);
    const auto any = blocks.begin() + static_cast<std::ptrdiff_t>(dice.below(blocks.size()));
    switch (blocks.empty() ? 4 : dice.below(7)) {
    case 0:
        start[dice.below(13)] = dice.byte();
        break;
    case 1:
        dice.shuffle(blocks);
        break;
    case 2:
        dice.change(any->data);
        break;
    case 3: // an extension, mostly one that makes an index transparent
        blocks.insert(any, {{0x21, dice.oneOf(labels)},
                            dice.oneIn(3) ? dice.noise(dice.below(300)) : Bytes{1, 0, 0, dice.byte()}});
        break;
    case 4:
        blocks.insert(any, newGifImage(dice));
        break;
    case 5:
        *any = newGifImage(dice);
        break;
    default:
        any->head[1 + dice.below(any->head.size() - 1)] = dice.byte();
    }
    if (dice.oneIn(4)) start[10] ^= 0x80; // the table for all
    const auto colors = reader.slice(13, gifTableBytes(start[10])).value_or(std::span<const std::uint8_t>());
    append(start, colors.empty() ? dice.noise(gifTableBytes(start[10])) : Bytes(colors.begin(), colors.end()));
    for (const GifBlock& block : blocks) {
        append(start, block.head);
        const std::size_t most = dice.oneIn(4) ? 1 + dice.below(255) : 255;
        for (std::size_t at = 0; at < block.data.size(); at += most) {
            const auto part = std::span(block.data).subspan(at, std::min(most, block.data.size() - at));
            start.push_back(static_cast<std::uint8_t>(part.size()));
            append(start, part);
        }
        start.push_back(0);
    }
    start.push_back(0x3B);
    file = std::move(start);
}

} // namespace pixkit::fuzz
