// Writing PNG files of 8 million RGBA pixels into memory: the component and its peers at their default, fastest, fast
// and best levels. What they compress they have to filter first, and that is timed with it. Sizes are in the counter
// "MB".
#include "kernels/kernels.h"
#include "peers/png_encoders.h"
#include "pictures.h"
#include "program.h"
#include "surface/cPixSheet.h"
#include <libdeflate.h>
#include <memory>
#include <png.h>

namespace {

using bench::Bytes;
using pixkit::cPixSheet;

std::size_t writeWithPixkit(cPixSheet& sheet, int level) {
    sheet.PngPropertySet(pixkit::pngCompressionLevel, level);
    pixkit::ByteArray file;
    if (!sheet.SaveToStream_PNG(file)) throw std::runtime_error("not saved");
    benchmark::DoNotOptimize(file.data());
    return file.size();
}

// Straight R, G, B, A of a row, as PNG files hold them.
void straightRow(const cPixSheet& sheet, std::size_t y, std::uint8_t* row) {
    const auto width = static_cast<std::size_t>(sheet.Width()), height = static_cast<std::size_t>(sheet.Height());
    const auto& kernel = pixkit::kernels::table();
    kernel.straighten(row, sheet.BitsPointer() + (height - 1 - y) * width * 4, width);
    kernel.swapRedBlue(row, row, width);
}

// All rows by Paeth's filter, and what is left to libdeflate.
std::size_t writeWithLibdeflate(cPixSheet& sheet, int level) {
    const auto width = static_cast<std::size_t>(sheet.Width()), height = static_cast<std::size_t>(sheet.Height());
    Bytes rows(height * (4 * width + 1)), row(4 * width), above(4 * width);
    for (std::size_t y = 0; y < height; ++y) {
        straightRow(sheet, y, row.data());
        std::uint8_t* const out = &rows[y * (4 * width + 1)];
        *out = 4;
        pixkit::kernels::table().filterPaeth(out + 1, row.data(), above.data(), 4 * width, 4);
        row.swap(above);
    }
    const std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)> packer(
        libdeflate_alloc_compressor(level), libdeflate_free_compressor);
    Bytes file(libdeflate_zlib_compress_bound(packer.get(), rows.size()));
    const std::size_t size = libdeflate_zlib_compress(packer.get(), rows.data(), rows.size(), file.data(), file.size());
    benchmark::DoNotOptimize(libdeflate_crc32(0, file.data(), size));
    return size;
}

std::size_t writeWithStb(cPixSheet& sheet, int level) {
    const auto width = static_cast<std::size_t>(sheet.Width()), height = static_cast<std::size_t>(sheet.Height());
    Bytes rows(height * width * 4), file;
    for (std::size_t y = 0; y < height; ++y)
        straightRow(sheet, y, &rows[y * width * 4]);
    bench::encodePngStb(rows.data(), sheet.Width(), sheet.Height(), level, file);
    return file.size();
}

// What a program around libpng does with such pixels: straight R, G, B, A, row by row; a negative level is libpng's
// own.
std::size_t writeWithLibpng(cPixSheet& sheet, int level) {
    Bytes file;
    png_structp png = png_create_write_struct(
        PNG_LIBPNG_VER_STRING, nullptr, [](png_structp, png_const_charp text) { throw std::runtime_error(text); },
        [](png_structp, png_const_charp) {});
    png_infop info = png_create_info_struct(png);
    const auto append = [](png_structp writer, png_bytep bytes, std::size_t count) {
        auto& out = *static_cast<Bytes*>(png_get_io_ptr(writer));
        out.insert(out.end(), bytes, bytes + count);
    };
    png_set_write_fn(png, &file, append, [](png_structp) {});
    if (level >= 0) png_set_compression_level(png, level);
    const auto width = static_cast<std::size_t>(sheet.Width());
    const auto height = static_cast<std::size_t>(sheet.Height());
    png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8, PNG_COLOR_TYPE_RGBA,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    Bytes row(width * 4);
    for (std::size_t y = 0; y < height; ++y) {
        straightRow(sheet, y, row.data());
        png_write_row(png, row.data());
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return file.size();
}

void addBenchmark(const std::string& picture, const char* who, cPixSheet& sheet, std::size_t (*write)(cPixSheet&, int),
                  int level) {
    bench::add("png-write/" + picture + "/" + who, [=, &sheet](benchmark::State& state) {
        std::size_t size = 0;
        for (auto _ : state)
            size = write(sheet, level);
        state.counters["MB"] = static_cast<double>(size) / 1e6;
        bench::countPixels(state, static_cast<double>(sheet.Width()) * sheet.Height());
    });
}

} // namespace

int main(int argc, char** argv) {
    static std::vector<std::unique_ptr<cPixSheet>> sheets;
    for (const std::string name : {"photo_rgba8", "draw_rgba8", "clip_rgba8"}) {
        cPixSheet& sheet = *sheets.emplace_back(std::make_unique<cPixSheet>());
        if (!sheet.LoadPicture_File((bench::corpusFolder() / (name + ".png")).string())) {
            sheets.pop_back();
            continue;
        }
        addBenchmark(name, "pixkit", sheet, writeWithPixkit, 6);
        addBenchmark(name, "libpng", sheet, writeWithLibpng, -1);
        addBenchmark(name, "libdeflate", sheet, writeWithLibdeflate, 6);
        addBenchmark(name + "-fastest", "pixkit", sheet, writeWithPixkit, 1);
        addBenchmark(name + "-fastest", "libpng", sheet, writeWithLibpng, 1);
        addBenchmark(name + "-fastest", "libdeflate", sheet, writeWithLibdeflate, 1);
        addBenchmark(name + "-fastest", "stb_image_write", sheet, writeWithStb, 1);
        addBenchmark(name + "-fast", "pixkit", sheet, writeWithPixkit, 2);
        addBenchmark(name + "-fast", "libpng", sheet, writeWithLibpng, 2);
        addBenchmark(name + "-fast", "libdeflate", sheet, writeWithLibdeflate, 2);
        addBenchmark(name + "-small", "pixkit", sheet, writeWithPixkit, 9);
        addBenchmark(name + "-small", "libdeflate", sheet, writeWithLibdeflate, 12);
    }
    return sheets.empty() ? bench::noPictures() : bench::run(argc, argv);
}
// SPDX-License-Identifier: MIT
