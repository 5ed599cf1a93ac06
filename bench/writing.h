// What the benchmarks share that write pictures of the corpus in formats which lose something.
#pragma once
#include "pictures.h"
#include "program.h"
#include "surface/cPixSheet.h"
#include <cmath>
#include <memory>
#include <span>

namespace bench {

struct SourcePicture {
    std::string name;
    pixkit::cPixSheet sheet;

    std::size_t pixels() const {
        return static_cast<std::size_t>(sheet.Width()) * static_cast<std::size_t>(sheet.Height());
    }
    const std::uint8_t* pixelFromTop(std::size_t i) const {
        const auto width = static_cast<std::size_t>(sheet.Width()), height = static_cast<std::size_t>(sheet.Height());
        return sheet.BitsPointer() + ((height - 1 - i / width) * width + i % width) * 4;
    }
};

// Those of the names that the corpus has; `Picture` is a SourcePicture with what peers want beside.
template <class Picture>
std::vector<std::unique_ptr<Picture>> sourcePictures(std::initializer_list<const char*> names) {
    std::vector<std::unique_ptr<Picture>> pictures;
    for (const char* name : names) {
        auto picture = std::make_unique<Picture>();
        picture->name = name;
        if (picture->sheet.LoadPicture_File((corpusFolder() / (std::string(name) + ".png")).string()))
            pictures.push_back(std::move(picture));
    }
    return pictures;
}

// How near a decoded picture (B, G, R, A, top row first) is: the PSNR in decibels over B, G and R.
inline double psnr(const SourcePicture& picture, const std::vector<std::array<std::uint8_t, 4>>& decoded) {
    double squares = 0;
    for (std::size_t i = 0; i < decoded.size(); ++i) {
        const std::uint8_t* const pixel = picture.pixelFromTop(i);
        for (std::size_t channel = 0; channel < 3; ++channel)
            squares += std::pow(pixel[channel] - decoded[i][channel], 2);
    }
    return 10 * std::log10(255.0 * 255.0 * 3 * static_cast<double>(decoded.size()) / squares);
}

// `write` makes a file of the picture, `decode` pixels of a file.
template <class Picture, class Write, class Decode>
void addWriting(const std::string& name, const Picture& picture, Write write, Decode decode) {
    add(name, [&picture, write, decode](benchmark::State& state) {
        Bytes file;
        for (auto _ : state)
            write(picture, file);
        countPixels(state, static_cast<double>(picture.pixels()));
        state.counters["bytes"] = static_cast<double>(file.size());
        state.counters["PSNR"] = psnr(picture, decode(file.data(), file.size()).pixels);
    });
}

} // namespace bench
// SPDX-License-Identifier: MIT
