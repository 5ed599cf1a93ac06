// What libjpeg makes of a JPEG file, and what it writes itself.
#pragma once
#include <array>
#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <jpeglib.h>
#include <vector>

namespace pixkit::test {

struct JpegPicture {
    std::uint32_t width = 0, height = 0, rows = 0; // rows: how many could be read
    int components = 0;
    long warnings = -1;                              // -1: given up
    std::vector<std::array<std::uint8_t, 4>> pixels; // B, G, R, 255, top row first
};

inline JpegPicture decodeJpeg(const std::uint8_t* data, std::size_t bytes) {
    struct Errors {
        jpeg_error_mgr manager;
        std::jmp_buf give_up;
    } errors;
    JpegPicture picture;
    jpeg_decompress_struct decoder;
    decoder.err = jpeg_std_error(&errors.manager);
    errors.manager.error_exit = [](j_common_ptr info) {
        std::longjmp(reinterpret_cast<Errors*>(info->err)->give_up, 1);
    };
    errors.manager.output_message = [](j_common_ptr) {};
    jpeg_create_decompress(&decoder);
    if (setjmp(errors.give_up) == 0) {
        jpeg_mem_src(&decoder, data, bytes);
        jpeg_read_header(&decoder, TRUE);
        decoder.out_color_space = JCS_EXT_BGRA;
        jpeg_start_decompress(&decoder);
        picture.width = decoder.output_width;
        picture.height = decoder.output_height;
        picture.components = decoder.num_components;
        picture.pixels.resize(std::size_t{picture.width} * picture.height);
        while (decoder.output_scanline < picture.height) {
            JSAMPROW row = picture.pixels[std::size_t{decoder.output_scanline} * picture.width].data();
            picture.rows += jpeg_read_scanlines(&decoder, &row, 1);
        }
        jpeg_finish_decompress(&decoder);
        picture.warnings = errors.manager.num_warnings;
    }
    jpeg_destroy_decompress(&decoder);
    return picture;
}

// Baseline with the standard's own Huffman codes, as libjpeg writes unless told otherwise.
inline std::vector<std::uint8_t> encodeJpeg(const std::uint8_t* bgraBottomUp, std::uint32_t width, std::uint32_t height,
                                            int quality, bool isGray = false) {
    jpeg_error_mgr errors;
    jpeg_compress_struct encoder;
    encoder.err = jpeg_std_error(&errors);
    jpeg_create_compress(&encoder);
    unsigned char* memory = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&encoder, &memory, &size);
    encoder.image_width = width;
    encoder.image_height = height;
    encoder.input_components = 4;
    encoder.in_color_space = JCS_EXT_BGRX;
    jpeg_set_defaults(&encoder);
    if (isGray) jpeg_set_colorspace(&encoder, JCS_GRAYSCALE);
    jpeg_set_quality(&encoder, quality, TRUE);
    if (quality >= 90) encoder.comp_info[0].h_samp_factor = encoder.comp_info[0].v_samp_factor = 1;
    jpeg_start_compress(&encoder, TRUE);
    for (std::uint32_t y = height; y-- > 0;) {
        JSAMPROW row = const_cast<JSAMPROW>(bgraBottomUp + std::size_t{y} * width * 4);
        jpeg_write_scanlines(&encoder, &row, 1);
    }
    jpeg_finish_compress(&encoder);
    std::vector<std::uint8_t> file(memory, memory + size);
    jpeg_destroy_compress(&encoder);
    std::free(memory);
    return file;
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
