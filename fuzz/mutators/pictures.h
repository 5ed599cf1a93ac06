// Changes a picture file by the rules of its format, most of the time; what is none becomes one. JPEG files have their
// markers in the dictionary.
#pragma once
#include "gif.h"
#include "ico.h"
#include "tga.h"

namespace pixkit::fuzz {

inline void mutatePicture(Bytes& file, Dice& dice) {
    using namespace std::string_view_literals;
    constexpr std::string_view signatures[] = {"\x89PNG", "GIF", "\0\0\1\0"sv, "\0\0\2\0"sv, "BM", "\xFF\xD8"};
    const auto known = std::ranges::find_if(signatures, [&](std::string_view signature) {
        return file.size() > 20 && std::ranges::equal(signature, std::span(file).first(signature.size()), {},
                                                      [](char c) { return static_cast<std::uint8_t>(c); });
    });
    std::ptrdiff_t kind = known - signatures;
    if (file.size() < 20 || (kind == 6 && dice.oneIn(8))) {
        file.clear();
        kind = static_cast<std::ptrdiff_t>(dice.below(7));
    }
    switch (kind) {
    case 0:
        return mutatePng(file, dice);
    case 1:
        return mutateGif(file, dice);
    case 2:
    case 3:
        return mutateIco(file, dice);
    case 4:
        return mutateBmp(file, dice);
    case 5:
        return dice.change(file);
    default:
        return mutateTga(file, dice);
    }
}

// The work of LLVMFuzzerCustomMutator: `mutate` changes the input a few times, and libFuzzer does where that changes
// nothing or makes too much of it.
inline std::size_t mutateInput(std::uint8_t* data, std::size_t bytes, std::size_t most, unsigned seed,
                               const auto& mutate) {
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
