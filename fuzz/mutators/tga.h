// TGA: headers of all kinds, with bytes that are enough for their pixels or packets, and areas behind these.
#pragma once
#include "Dice.h"

namespace pixkit::fuzz {

// A changed file, or a new one.
inline void mutateTga(Bytes& file, Dice& dice) {
    constexpr std::uint8_t types[] = {1, 2, 3, 9, 10, 11}, depths[] = {8, 15, 16, 24, 32};
    constexpr std::size_t header = 18;
    if (file.size() < header || dice.oneIn(4)) {
        file = {0, dice.oneIn(2), dice.oneOf(types), 0, 0, dice.byte(), dice.oneIn(8), dice.oneOf(depths), 0, 0, 0, 0};
        const std::size_t width = dice.side(), height = dice.side();
        ByteWriter out(file);
        out.littleEndian16(width);
        out.littleEndian16(height);
        out.bytes({file[2] % 8 == 2 ? dice.oneOf(depths) : std::uint8_t{8}, dice.byte()});
        append(file, dice.noise(1024 + width * height * 4));
    }
    const std::size_t area = file.size();
    if (dice.oneIn(2)) return putField(file, dice.oneIn(2) ? 17 : dice.below(header), 1 + dice.below(2), dice.number());
    // Perhaps an extension area, or a developer area of any content; the footer says where it is, mostly.
    append(file, dice.noise(dice.oneIn(2) ? 495 : dice.below(20)));
    putField(file, area, 2, dice.oneIn(8) ? dice.number() : 495);
    file.back() = dice.byte() % 6; // what alpha means
    ByteWriter out(file);
    out.littleEndian32(dice.oneIn(6) ? dice.number() : area);
    out.littleEndian32(dice.oneIn(3) ? area : 0);
    out.text(dice.oneIn(6) ? "TRUEvision-xfile." : "TRUEVISION-XFILE.");
    out.byte(0);
}

} // namespace pixkit::fuzz
// SPDX-License-Identifier: MIT
