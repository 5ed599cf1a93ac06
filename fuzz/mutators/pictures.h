// Changes a picture file by the rules of its format, most of the time; what is none becomes one. JPEG files have their
// markers in the dictionary.
#pragma once
#include "gif.h"
#include "ico.h"
#include "tga.h"

namespace pixkit::fuzz {

inline void mutatePicture(Bytes& file, Dice& dice) {
    constexpr std::pair<std::uint8_t, void (*)(Bytes&, Dice&)> formats[] = {
        {0x89, mutatePng}, {'G', mutateGif}, {0, mutateIco}, {'B', mutateBmp}, {0xFF, [](Bytes& bytes, Dice& chosen) {
                                                                                    chosen.change(bytes);
                                                                                }}};
    if (file.size() < 20 || dice.oneIn(16)) {
        file.clear();
        return dice.oneOf(formats).second(file, dice);
    }
    for (const auto& [first, mutate] : formats)
        if (file[0] == first && (first != 0 || (file[1] == 0 && file[4] != 0))) return mutate(file, dice);
    mutateTga(file, dice);
}

// The work of LLVMFuzzerCustomMutator: `mutate` changes the input a few times, and libFuzzer does where that changes
// nothing or makes too much of it.
inline std::size_t mutateInput(std::uint8_t* data, std::size_t bytes, std::size_t most, unsigned seed,
                               const auto& mutate) {
    takeAsWritten(data, bytes);
    Dice dice(seed);
    Bytes file(data, data + bytes);
    for (std::size_t rounds = dice.below(4); rounds > 0; --rounds)
        mutate(file, dice);
    if (file.size() > most || std::ranges::equal(file, std::span(data, bytes)))
        return LLVMFuzzerMutate(data, bytes, most);
    std::ranges::copy(file, data);
    return file.size();
}

} // namespace pixkit::fuzz
// SPDX-License-Identifier: MIT
