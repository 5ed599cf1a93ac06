// What the benchmarks share that decode files made from the pictures of the corpus.
#pragma once
#include "pictures.h"
#include "program.h"
#include "surface/cPixSheet.h"
#include <stb/stb_image.h>
#include <stdexcept>

namespace bench {

inline pixkit::ByteArray borrowed(const Bytes& file) {
    return pixkit::ByteArray::borrow(const_cast<std::uint8_t*>(file.data()),
                                     {0, static_cast<std::uint32_t>(file.size())});
}

struct CodedPicture {
    std::string name;
    Bytes file;
    double pixels;
};

// `code` makes a file of a picture and its name.
template <class Code>
std::vector<CodedPicture> codedPictures(Code code) {
    std::vector<CodedPicture> pictures;
    for (const Group& group : pngGroups()) {
        if (group.files.size() != 1) continue;
        pixkit::cPixSheet sheet;
        if (!sheet.LoadPicture_Stream(borrowed(group.files[0])))
            throw std::runtime_error(group.name + " is not loaded");
        pictures.push_back({group.name, code(sheet, group.name), static_cast<double>(sheet.Width()) * sheet.Height()});
    }
    return pictures;
}

inline void addReading(const std::string& name, const CodedPicture& picture, void (*decode)(const Bytes&)) {
    add(name, [&picture, decode](benchmark::State& state) {
        for (auto _ : state)
            decode(picture.file);
        countPixels(state, picture.pixels);
    });
}

inline void decodeOurs(const Bytes& file) {
    pixkit::cPixSheet sheet;
    if (!sheet.LoadPicture_Stream(borrowed(file))) throw std::runtime_error("not loaded");
    benchmark::DoNotOptimize(sheet.BitsPointer());
}

// R, G, B, A from the top, as stb_image gives them.
inline void decodeStbAlone(const Bytes& file) {
    int width = 0, height = 0, channels = 0;
    stbi_uc* const pixels =
        stbi_load_from_memory(file.data(), static_cast<int>(file.size()), &width, &height, &channels, 4);
    if (pixels == nullptr) throw std::runtime_error(stbi_failure_reason());
    benchmark::DoNotOptimize(pixels);
    stbi_image_free(pixels);
}

} // namespace bench
// SPDX-License-Identifier: MIT
