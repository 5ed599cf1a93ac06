// What other people's libraries and programs make of a picture.
#pragma once
#include "oracle/giflibVerdict.h"
#include "support/Pictures.h"
#include <cstdlib>
#include <optional>
#include <png.h>
#include <sstream>
#include <stb/stb_image.h>
#include <stdexcept>

namespace pixkit::test {

// Straight B, G, R, A from the top row. Alpha is 255 where the reader knows of none.
struct Straight {
    std::int32_t width = 0, height = 0;
    std::vector<Pixel> pixels;
    bool hasAlpha = true;

    void add(const std::uint8_t* rgba) { pixels.push_back({rgba[2], rgba[1], rgba[0], rgba[3]}); }
};
using Read = std::optional<Straight>; // nothing: it could not be read

// Runs a line of the shell in a folder. What is missing afterwards tells how it went.
inline int shell(const TemporaryFolder& folder, const std::string& line) {
    return std::system(("cd '" + folder.path(u8"").string() + "' && " + line).c_str());
}

inline Read withStb(const Bytes& file) {
    Straight read;
    int channels = 0;
    stbi_uc* const pixels =
        stbi_load_from_memory(file.data(), static_cast<int>(file.size()), &read.width, &read.height, &channels, 4);
    for (std::ptrdiff_t i = 0; pixels != nullptr && i < std::ptrdiff_t{read.width} * read.height; ++i)
        read.add(pixels + i * 4);
    stbi_image_free(pixels);
    return pixels != nullptr ? Read(read) : Read();
}

inline Read withGiflib(const Bytes& file) {
    const GifDecoded gif = decodeGif(file.data(), file.size());
    if (!gif.isWhole || gif.pictures != 1) return {}; // animations keep what belongs to each frame elsewhere
    return Straight{gif.width, gif.height, gif.pixels};
}

// The row API, expanded to 8 bits of R, G, B, A; 16-bit samples keep their high byte.
inline Read withLibpng(const Bytes& file) {
    std::span<const std::uint8_t> rest = file;
    png_structp png = png_create_read_struct(
        PNG_LIBPNG_VER_STRING, nullptr, [](png_structp, png_const_charp text) { throw std::runtime_error(text); },
        [](png_structp, png_const_charp) {});
    png_infop info = png_create_info_struct(png);
    Read result;
    try {
        png_set_read_fn(png, &rest, [](png_structp from, png_bytep out, std::size_t count) {
            auto& left = *static_cast<std::span<const std::uint8_t>*>(png_get_io_ptr(from));
            if (count > left.size()) png_error(from, "the data ends");
            std::copy_n(left.begin(), count, out);
            left = left.subspan(count);
        });
        png_read_info(png, info);
        png_set_expand(png);
        png_set_strip_16(png);
        png_set_gray_to_rgb(png);
        png_set_add_alpha(png, 0xFF, PNG_FILLER_AFTER);
        const int passes = png_set_interlace_handling(png);
        png_read_update_info(png, info);
        Straight read{static_cast<std::int32_t>(png_get_image_width(png, info)),
                      static_cast<std::int32_t>(png_get_image_height(png, info)),
                      {}};
        const auto rowBytes = static_cast<std::size_t>(read.width) * 4, rows = static_cast<std::size_t>(read.height);
        Bytes rgba(rowBytes * rows);
        for (std::size_t y = 0; y < rows * static_cast<std::size_t>(passes); ++y)
            png_read_row(png, &rgba[y % rows * rowBytes], nullptr);
        png_read_end(png, info);
        for (std::size_t i = 0; i < rgba.size(); i += 4)
            read.add(&rgba[i]);
        result = std::move(read);
    } catch (const std::runtime_error&) {
        result.reset();
    }
    png_destroy_read_struct(&png, &info, nullptr);
    return result;
}

// A PPM or PGM file's colours.
inline Read fromPnm(const Bytes& pnm) {
    std::istringstream header(std::string(pnm.begin(), pnm.end()));
    std::string magic;
    Straight read;
    int most = 0;
    if (!(header >> magic >> read.width >> read.height >> most) || most > 255) return {};
    read.hasAlpha = false;
    const std::size_t step = magic == "P5" ? 1 : 3;
    for (auto at = static_cast<std::size_t>(header.tellg()) + 1; at + step <= pnm.size(); at += step) {
        const auto value = [&](std::size_t c) { return static_cast<std::uint8_t>(pnm[at + c % step] * 255 / most); };
        read.pixels.push_back({value(2), value(1), value(0), 255});
    }
    return read;
}

inline Read withNetpbm(const std::filesystem::path& file, const TemporaryFolder& folder) {
    const std::string kind = file.extension().string();
    const char* const program = kind == ".bmp" ? "bmptopnm" : kind == ".gif" ? "giftopnm" : "tgatoppm";
    shell(folder, std::string(program) + " -quiet '" + file.string() + "' 2>err | ppmtoppm >out.ppm 2>err");
    return fromPnm(readFile(folder.path(u8"out.ppm")));
}

inline Read withIcotool(const std::filesystem::path& file, const TemporaryFolder& folder) {
    shell(folder, "rm -f out.png; icotool -x -i1 -o out.png '" + file.string() + "' 2>err");
    return withLibpng(readFile(folder.path(u8"out.png")));
}

// The first picture, without its place on a logical screen.
inline Read withMagick(const std::filesystem::path& file, const TemporaryFolder& folder) {
    const std::string kind = file.extension().string().substr(1);
    // Of a picture without alpha PNG32 would hold what its memory held: that of BMP files of run-length codes is never
    // set.
    shell(folder,
          "rm -f out.png; convert-im6.q16 '" + kind + ":" + file.string() + "[0]' +repage -depth 8 PNG:out.png 2>err");
    return withLibpng(readFile(folder.path(u8"out.png")));
}

// How far the store is from premultiplied colours, in its most distant channel; a reader without alpha may have been
// given them premultiplied already.
inline int difference(const cPixSheet& sheet, const Straight& read) {
    const std::vector<Pixel> ours = pixelsOf(sheet);
    if (ours.size() != read.pixels.size() || sheet.Width() != read.width) return 256;
    int asStored = 0, multiplied = 0;
    for (std::size_t i = 0; i < ours.size(); ++i) {
        if (read.hasAlpha && ours[i][3] != read.pixels[i][3]) return 256;
        for (std::size_t channel = 0; channel < 3; ++channel) {
            const int value = read.pixels[i][channel];
            asStored = std::max(asStored, std::abs(ours[i][channel] - value));
            multiplied = std::max(multiplied, std::abs(ours[i][channel] - value * ours[i][3] / 255));
        }
    }
    return read.hasAlpha ? multiplied : std::min(asStored, multiplied);
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
