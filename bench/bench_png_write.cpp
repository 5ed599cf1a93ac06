// Writing PNG files of 8 million RGBA pixels into memory: the component and libpng, at their default and fast levels.
// Sizes are in the counter "MB".
#include "pictures.h"
#include "program.h"
#include "surface/cPixSheet.h"
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
        const std::uint8_t* from = sheet.BitsPointer() + (height - 1 - y) * width * 4;
        for (std::size_t x = 0; x < width; ++x) {
            const unsigned alpha = from[4 * x + 3];
            for (std::size_t channel = 0; channel < 3; ++channel) {
                const unsigned stored = from[4 * x + 2 - channel];
                row[4 * x + channel] = static_cast<std::uint8_t>(alpha == 0 ? 0 : stored * 255 / alpha);
            }
            row[4 * x + 3] = static_cast<std::uint8_t>(alpha);
        }
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
        addBenchmark(name + "-fast", "pixkit", sheet, writeWithPixkit, 1);
        addBenchmark(name + "-fast", "libpng", sheet, writeWithLibpng, 1);
        addBenchmark(name + "-small", "pixkit", sheet, writeWithPixkit, 9);
    }
    return sheets.empty() ? bench::noPictures() : bench::run(argc, argv);
}
