// Loading icons from memory: one image out of a file of all the depths at one size. There is no peer that does this in
// the same process; scripts/bench.sh reports the time per icon.
#include "program.h"
#include "surface/cPixSheet.h"
#include <random>
#include <stdexcept>
#include <string>

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int depths[] = {1, 4, 8, 24, 32};

Bytes bitmap(int size, int depth) {
    std::mt19937 random(static_cast<unsigned>(depth));
    const auto rowBytes = [&](int bits) { return static_cast<std::size_t>((bits * size + 31) / 32 * 4); };
    const std::size_t palette = depth <= 8 ? std::size_t{4} << depth : 0;
    Bytes made(40 + palette + (rowBytes(depth) + rowBytes(1)) * static_cast<std::size_t>(size));
    for (std::size_t i = 40; i < made.size(); ++i)
        made[i] = static_cast<std::uint8_t>(random() >> 13);
    made[0] = 40;
    made[4] = static_cast<std::uint8_t>(size);
    made[5] = static_cast<std::uint8_t>(size >> 8);
    made[8] = static_cast<std::uint8_t>(size * 2);
    made[9] = static_cast<std::uint8_t>(size * 2 >> 8);
    made[12] = 1;
    made[14] = static_cast<std::uint8_t>(depth);
    return made;
}

Bytes iconFile(int size) {
    Bytes directory = {0, 0, 1, 0, std::size(depths), 0};
    Bytes images;
    for (const int depth : depths) {
        const Bytes image = bitmap(size, depth);
        const std::size_t numbers[] = {image.size(), 6 + 16 * std::size(depths) + images.size()};
        directory.insert(directory.end(), {static_cast<std::uint8_t>(size), static_cast<std::uint8_t>(size), 0, 0, 1, 0,
                                           static_cast<std::uint8_t>(depth), 0});
        for (const std::size_t number : numbers)
            for (int i = 0; i < 4; ++i)
                directory.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
        images.insert(images.end(), image.begin(), image.end());
    }
    directory.insert(directory.end(), images.begin(), images.end());
    return directory;
}

void load(benchmark::State& state, int size, int depth) {
    Bytes file = iconFile(size);
    const auto stream = pixkit::ByteArray::borrow(file.data(), {0, static_cast<std::uint32_t>(file.size())});
    for (auto _ : state) {
        pixkit::cPixSheet sheet;
        if (!sheet.LoadPicture_Stream(stream, size, size, 0, 0, false, depth)) throw std::runtime_error("not loaded");
        benchmark::DoNotOptimize(sheet.BitsPointer());
    }
    bench::countPixels(state, size * size);
}

} // namespace

int main(int argc, char** argv) {
    for (const int size : {16, 32, 48, 256})
        for (const int depth : depths)
            bench::add("ico/" + std::to_string(size) + "-" + std::to_string(depth) + "/pixkit",
                       [=](benchmark::State& state) { load(state, size, depth); })
                ->Unit(benchmark::kMicrosecond);
    return bench::run(argc, argv);
}
// SPDX-License-Identifier: MIT
