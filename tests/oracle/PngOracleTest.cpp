// Pixels against libpng's.
#include "support/Pictures.h"
#include "support/PngMatrix.h"
#include "support/SourceFolder.h"
#include "surface/cPixSheet.h"
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <png.h>

using namespace pixkit;
using namespace pixkit::test;

namespace {

struct Straight {
    std::size_t width = 0, height = 0;
    Bytes rgba; // rows from the top
};

void readBytes(png_structp png, png_bytep out, std::size_t count) {
    auto& rest = *static_cast<std::span<const std::uint8_t>*>(png_get_io_ptr(png));
    if (count > rest.size()) png_error(png, "the data ends");
    std::memcpy(out, rest.data(), count);
    rest = rest.subspan(count);
}

void throwError(png_structp, png_const_charp text) {
    throw std::runtime_error(text);
}

// The row API, expanded to 8-bit RGBA; 16-bit samples keep their high byte.
Straight readWithLibpng(const Bytes& data) {
    std::span<const std::uint8_t> rest = data;
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, throwError, [](png_structp, auto) {});
    png_infop info = png_create_info_struct(png);
    const struct Ending {
        png_structp& png;
        png_infop& info;
        ~Ending() { png_destroy_read_struct(&png, &info, nullptr); }
    } ending{png, info};
    png_set_read_fn(png, &rest, readBytes);
    png_read_info(png, info);
    png_set_expand(png);
    png_set_strip_16(png);
    png_set_gray_to_rgb(png);
    png_set_add_alpha(png, 0xFF, PNG_FILLER_AFTER);
    png_set_interlace_handling(png);
    png_read_update_info(png, info);
    Straight image{png_get_image_width(png, info), png_get_image_height(png, info), {}};
    image.rgba.resize(image.width * image.height * 4);
    std::vector<png_bytep> rows;
    for (std::size_t y = 0; y < image.height; ++y)
        rows.push_back(&image.rgba[y * image.width * 4]);
    png_read_image(png, rows.data());
    png_read_end(png, info);
    return image;
}

// Premultiplied by the store's rule, B, G, R, A, rows from the bottom.
Bytes asStored(const Straight& image) {
    Bytes stored;
    for (std::size_t y = image.height; y-- != 0;) {
        for (std::size_t x = 0; x < image.width; ++x) {
            const std::uint8_t* p = &image.rgba[(y * image.width + x) * 4];
            for (const std::size_t channel : {2U, 1U, 0U})
                stored.push_back(static_cast<std::uint8_t>(p[channel] * p[3] / 255));
            stored.push_back(p[3]);
        }
    }
    return stored;
}

std::optional<Bytes> loadStored(const Bytes& data) {
    cPixSheet sheet;
    if (!sheet.LoadPicture_Stream(ByteArray(data))) return {};
    return Bytes(sheet.BitsPointer(), sheet.BitsPointer() + sheet.scanWidth() * sheet.Height());
}

} // namespace

class PngOracle : public testing::TestWithParam<PngFormat> {};

TEST_P(PngOracle, PixelsDifferFromLibpngs) {
    forEachMatrixPicture(GetParam().colorType, GetParam().bitDepth, [](const MatrixPicture& picture) {
        ASSERT_EQ(loadStored(picture.data), asStored(readWithLibpng(picture.data))) << picture.name;
    });
}

INSTANTIATE_TEST_SUITE_P(Formats, PngOracle, testing::ValuesIn(pngFormats), [](const auto& format) {
    return "colourType" + std::to_string(format.param.colorType) + "depth" + std::to_string(format.param.bitDepth);
});

TEST(PngOracleSamples, RealPicturesDifferFromLibpngs) {
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(sourceFolder() / "samples/pictures")) {
        if (entry.path().extension() != ".png") continue;
        const Bytes data = readFile(entry.path());
        EXPECT_TRUE(loadStored(data) == asStored(readWithLibpng(data))) << entry.path();
        ++count;
    }
    EXPECT_GT(count, 0U);
}
