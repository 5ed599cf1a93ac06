#include "peers/jpg_encoders.h"
#include "peers/png_encoders.h"
#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>

namespace {

void append(void* context, void* data, int size) {
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    auto& file = *static_cast<std::vector<std::uint8_t>*>(context);
    file.insert(file.end(), bytes, bytes + size);
}

} // namespace

void bench::encodeJpegStb(const std::uint8_t* rgb, int width, int height, int quality, std::vector<std::uint8_t>& out) {
    out.clear();
    stbi_write_jpg_to_func(append, &out, width, height, 3, rgb, quality);
}

void bench::encodePngStb(const std::uint8_t* rgba, int width, int height, int level, std::vector<std::uint8_t>& out) {
    out.clear();
    stbi_write_png_compression_level = level;
    stbi_write_png_to_func(append, &out, width, height, 4, rgba, 4 * width);
}
// SPDX-License-Identifier: MIT
