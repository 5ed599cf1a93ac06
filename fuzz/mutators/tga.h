// TGA: headers and colour maps of all kinds, packets that suit them, and areas behind the pixels.
#pragma once
#include "Dice.h"

namespace pixkit::fuzz {

inline Bytes tgaPackets(std::size_t pixels, std::size_t pixelBytes, Dice& dice) {
    Bytes bytes;
    for (std::size_t done = 0; done < pixels;) {
        const std::uint8_t packet = dice.byte();
        const std::size_t count = packet % 128U + 1;
        bytes.push_back(packet);
        append(bytes, dice.noise((packet < 128 ? count : 1) * pixelBytes));
        done += count;
    }
    return bytes;
}

inline Bytes newTga(Dice& dice) {
    constexpr std::uint8_t types[] = {1, 2, 3, 9, 10, 11};
    constexpr std::size_t depths[] = {8, 15, 16, 24, 32};
    const std::uint8_t type = dice.oneOf(types);
    const std::size_t width = dice.side(), height = dice.side(), id = dice.oneIn(3) ? dice.below(30) : 0;
    const std::size_t bits = type % 8 == 2 ? dice.oneOf(depths) : dice.oneIn(8) ? 16 : 8, mapBits = dice.oneOf(depths);
    const std::size_t entries = type % 8 == 1 || dice.oneIn(4) ? dice.below(280) : 0, pixelBytes = (bits + 7) / 8;
    Bytes file = {static_cast<std::uint8_t>(id), entries != 0, type};
    ByteWriter out(file);
    out.littleEndian16(dice.oneIn(3) ? dice.below(20) : 0); // the map's first entry
    out.littleEndian16(entries);
    out.byte(mapBits);
    out.littleEndian32(dice.number()); // origins
    out.littleEndian16(width);
    out.littleEndian16(height);
    out.byte(bits);
    out.byte(dice.byte());
    append(file, dice.noise(id + entries * ((mapBits + 7) / 8)));
    append(file, type > 8 ? tgaPackets(width * height, pixelBytes, dice) : dice.noise(width * height * pixelBytes));
    return file;
}

// Perhaps an extension area, and a developer area of any content; the footer says where they are, mostly.
inline void addTgaFooter(Bytes& file, Dice& dice) {
    const std::size_t area = file.size();
    Bytes extension = dice.noise(dice.oneIn(2) ? 495 : dice.below(20));
    if (extension.size() == 495) putField(extension, 0, 2, dice.oneIn(8) ? dice.number() : 495);
    if (extension.size() == 495) extension.back() = dice.byte() % 6; // what alpha means
    append(file, extension);
    ByteWriter out(file);
    out.littleEndian32(dice.oneIn(6) ? dice.number() : area);
    out.littleEndian32(dice.oneIn(3) ? area : 0);
    out.text(dice.oneIn(6) ? "TRUEvision-xfile." : "TRUEVISION-XFILE.");
    out.byte(0);
}

// A changed file, or a new one.
inline void mutateTga(Bytes& file, Dice& dice) {
    constexpr std::size_t header = 18;
    if (file.size() < header || dice.oneIn(4)) file = newTga(dice);
    if (dice.oneIn(2)) return addTgaFooter(file, dice);
    const std::size_t field = dice.oneIn(2) ? header - 1 : dice.below(header);
    putField(file, field, 1 + dice.below(2), dice.number());
}

} // namespace pixkit::fuzz
