// Small pictures and files that tests share.
#pragma once
#include "support/SourceFolder.h"
#include "surface/cPixSheet.h"
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace pixkit::test {

using Bytes = std::vector<std::uint8_t>;
using Pixel = std::array<std::uint8_t, 4>; // B, G, R, A as stored

// Pixels given top row first, as one reads them.
inline void fill(cPixSheet& sheet, std::int32_t width, std::int32_t height, const std::vector<Pixel>& topRowFirst) {
    sheet.InitializeDIB(width, height);
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            const Pixel& pixel = topRowFirst[static_cast<std::size_t>(y * width + x)];
            std::copy(pixel.begin(), pixel.end(), sheet.BitsPointer() + ((height - 1 - y) * width + x) * 4);
        }
    }
}

// A picture from a function of the place, x from the left and y from the top.
template <class At>
void draw(cPixSheet& sheet, std::int32_t width, std::int32_t height, AlphaTypeEnum alpha, At&& at) {
    std::vector<Pixel> pixels;
    pixels.reserve(static_cast<std::size_t>(width * height));
    for (std::int32_t i = 0; i < width * height; ++i)
        pixels.push_back(at(static_cast<unsigned>(i % width), static_cast<unsigned>(i / width)));
    fill(sheet, width, height, pixels);
    sheet.Alpha(alpha);
}

// The same numbers on every machine: 16 bits that look random.
using Samples = std::function<unsigned(std::size_t x, std::size_t y, std::size_t channel)>;
inline Samples noise(std::uint32_t seed) {
    return [seed](std::size_t x, std::size_t y, std::size_t channel) {
        auto value = seed * 2654435761U ^ static_cast<std::uint32_t>((y * 1009 + x) * 4 + channel) * 2246822519U;
        value = (value ^ value >> 15) * 2246822519U;
        value = (value ^ value >> 13) * 3266489917U;
        return value >> 16;
    };
}

inline std::vector<Pixel> pixelsOf(const cPixSheet& sheet) {
    std::vector<Pixel> pixels;
    for (std::int32_t y = 0; y < sheet.Height(); ++y) {
        for (std::int32_t x = 0; x < sheet.Width(); ++x) {
            const std::uint8_t* p = sheet.BitsPointer() + ((sheet.Height() - 1 - y) * sheet.Width() + x) * 4;
            pixels.push_back({p[0], p[1], p[2], p[3]});
        }
    }
    return pixels;
}

// The same numbers and pictures on every system.
class Random {
  public:
    explicit Random(unsigned seed) : m_engine(seed) {}

    std::int32_t below(std::int32_t limit) {
        return static_cast<std::int32_t>(m_engine() % static_cast<std::uint32_t>(limit));
    }
    std::int32_t between(std::int32_t low, std::int32_t high) { return low + below(high - low + 1); }
    // Premultiplied pixels: all opaque, or some opaque, some translucent and some empty.
    void fill(cPixSheet& sheet, std::int32_t width, std::int32_t height) {
        const bool isOpaque = below(4) == 0;
        std::vector<Pixel> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        for (Pixel& pixel : pixels) {
            const std::int32_t kind = isOpaque ? 0 : below(3);
            const std::int32_t alpha = kind == 0 ? 255 : kind == 1 ? below(256) : 0;
            for (std::size_t channel = 0; channel < 3; ++channel)
                pixel[channel] = static_cast<std::uint8_t>(below(alpha + 1));
            pixel[3] = static_cast<std::uint8_t>(alpha);
        }
        test::fill(sheet, width, height, pixels);
        sheet.Alpha(isOpaque ? AlphaNone : AlphaComplex);
    }

  private:
    std::mt19937 m_engine;
};

inline std::vector<std::uint8_t> bytesOf(const ByteArray& array) {
    return {array.data(), array.data() + array.size()};
}

// A folder that goes with the test. Names are UTF-8.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        static int count = 0;
        const auto* suite = testing::UnitTest::GetInstance()->current_test_info();
        m_path = std::filesystem::temp_directory_path() /
                 ("pixkit." + std::string(suite != nullptr ? suite->name() : "test") + "-" +
                  std::to_string(std::random_device{}()) + "-" + std::to_string(count++));
        std::filesystem::create_directories(m_path);
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::filesystem::path path(const std::u8string& name) const { return m_path / name; }
    std::string name(const std::u8string& file) const {
        const auto text = path(file).u8string();
        return {text.begin(), text.end()};
    }

  private:
    std::filesystem::path m_path;
};

inline void writeFile(const std::filesystem::path& path, const std::vector<std::uint8_t>& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

inline std::vector<std::uint8_t> readFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A file of tests/data/pictures.
inline Bytes picture(const std::string& name) {
    return readFile(sourceFolder() / "tests" / "data" / "pictures" / name);
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
