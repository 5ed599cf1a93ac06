#include "peers/png_decoders.h"
#include <cstring>
#include <png.h>
#include <spng.h>
#include <stb/stb_image.h>
#include <stdexcept>
#include <vector>

namespace bench {

namespace {

// What programs around these decoders do: plain loops, which the compiler vectorises as it can.
void premultiply(std::uint8_t* pixels, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i, pixels += 4) {
        const unsigned alpha = pixels[3];
        for (int channel = 0; channel < 3; ++channel) {
            pixels[channel] = static_cast<std::uint8_t>(pixels[channel] * alpha / 255);
        }
    }
}

void swapRedBlue(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i, dst += 4, src += 4) {
        dst[0] = src[2];
        dst[1] = src[1];
        dst[2] = src[0];
        dst[3] = src[3];
    }
}

Decoded makeDecoded(std::uint32_t width, std::uint32_t height) {
    return {width, height, std::make_unique_for_overwrite<std::uint8_t[]>(std::size_t{width} * height * 4)};
}

std::uint8_t* rowFromTop(const Decoded& image, std::uint32_t y) {
    return image.pixels.get() + std::size_t{image.width} * 4 * (image.height - 1 - y);
}

struct MemoryReader {
    std::span<const std::uint8_t> rest;
    static void read(png_structp png, png_bytep out, std::size_t count) {
        auto& reader = *static_cast<MemoryReader*>(png_get_io_ptr(png));
        if (count > reader.rest.size()) png_error(png, "end of data");
        std::memcpy(out, reader.rest.data(), count);
        reader.rest = reader.rest.subspan(count);
    }
};

// R, G, B, A rows from the top to B, G, R, A rows from the bottom.
Decoded fromRgbaRows(const std::uint8_t* rgba, std::uint32_t width, std::uint32_t height, bool hasAlpha) {
    Decoded image = makeDecoded(width, height);
    for (std::uint32_t y = 0; y < height; ++y) {
        std::uint8_t* row = rowFromTop(image, y);
        swapRedBlue(row, rgba + std::size_t{width} * 4 * y, width);
        if (hasAlpha) premultiply(row, width);
    }
    return image;
}

} // namespace

Decoded decodeLibpngRows(std::span<const std::uint8_t> bytes) {
    png_structp png = png_create_read_struct(
        PNG_LIBPNG_VER_STRING, nullptr, [](png_structp, png_const_charp text) { throw std::runtime_error(text); },
        [](png_structp, png_const_charp) {});
    png_infop info = png_create_info_struct(png);
    MemoryReader reader{bytes};
    png_set_read_fn(png, &reader, MemoryReader::read);
    png_read_info(png, info);
    const bool hasAlpha =
        (png_get_color_type(png, info) & PNG_COLOR_MASK_ALPHA) != 0 || png_get_valid(png, info, PNG_INFO_tRNS) != 0;
    png_set_expand(png);
    png_set_strip_16(png);
    png_set_gray_to_rgb(png);
    png_set_bgr(png);
    if (!hasAlpha) png_set_filler(png, 0xFF, PNG_FILLER_AFTER);
    const int passes = png_set_interlace_handling(png);
    png_read_update_info(png, info);
    Decoded image = makeDecoded(png_get_image_width(png, info), png_get_image_height(png, info));
    for (int pass = 0; pass < passes; ++pass) {
        for (std::uint32_t y = 0; y < image.height; ++y) {
            std::uint8_t* row = rowFromTop(image, y);
            png_read_row(png, row, nullptr);
            if (hasAlpha && pass == passes - 1) premultiply(row, image.width);
        }
    }
    png_destroy_read_struct(&png, &info, nullptr);
    return image;
}

Decoded decodeLibpngSimplified(std::span<const std::uint8_t> bytes) {
    png_image control{};
    control.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_memory(&control, bytes.data(), bytes.size()) == 0) {
        throw std::runtime_error(control.message);
    }
    const bool hasAlpha = (control.format & PNG_FORMAT_FLAG_ALPHA) != 0;
    control.format = PNG_FORMAT_BGRA;
    Decoded image = makeDecoded(control.width, control.height);
    const auto stride = -static_cast<png_int_32>(image.width * 4); // bottom-up
    if (png_image_finish_read(&control, nullptr, image.pixels.get(), stride, nullptr) == 0) {
        throw std::runtime_error(control.message);
    }
    if (hasAlpha) premultiply(image.pixels.get(), std::size_t{image.width} * image.height);
    return image;
}

Decoded decodeSpng(std::span<const std::uint8_t> bytes) {
    const std::unique_ptr<spng_ctx, decltype(&spng_ctx_free)> context(spng_ctx_new(0), spng_ctx_free);
    spng_ihdr header{};
    std::size_t size = 0;
    spng_set_png_buffer(context.get(), bytes.data(), bytes.size());
    if (spng_get_ihdr(context.get(), &header) != 0 ||
        spng_decoded_image_size(context.get(), SPNG_FMT_RGBA8, &size) != 0) {
        throw std::runtime_error("spng");
    }
    const auto rgba = std::make_unique_for_overwrite<std::uint8_t[]>(size);
    if (spng_decode_image(context.get(), rgba.get(), size, SPNG_FMT_RGBA8, SPNG_DECODE_TRNS) != 0) {
        throw std::runtime_error("spng");
    }
    return fromRgbaRows(rgba.get(), header.width, header.height, true);
}

Decoded decodeStb(std::span<const std::uint8_t> bytes) {
    int width = 0;
    int height = 0;
    int channels = 0;
    const std::unique_ptr<stbi_uc, decltype(&stbi_image_free)> rgba(
        stbi_load_from_memory(bytes.data(), static_cast<int>(bytes.size()), &width, &height, &channels, 4),
        stbi_image_free);
    if (!rgba) throw std::runtime_error(stbi_failure_reason());
    return fromRgbaRows(rgba.get(), static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), true);
}

} // namespace bench
// SPDX-License-Identifier: MIT
