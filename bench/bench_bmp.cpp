// Reading and writing 32-bit BMP files in memory against memcpy of the same bytes. Three peers: into the pixels of a
// new image, which is what a load cannot do without, and which pays for fresh pages as the load does; into memory that
// was written before; and for writing also into a new array, whose pages are fresh too.
#include "against_memcpy.h"
#include "surface/cPixSheet.h"
#include <functional>
#include <stdexcept>

namespace {

using Bytes = std::vector<std::uint8_t>;
using pixkit::ByteArray;
using pixkit::cPixSheet;

struct Size {
    const char* name;
    std::int32_t width, height;
    std::size_t bytes() const {
        return std::size_t{4} * static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    }
};
constexpr Size sizes[] = {{"1080p", 1920, 1080}, {"4K", 3840, 2160}};

// What the alpha of a file is like; the reader has another road for each.
constexpr const char* kinds[] = {"opaque", "zero", "premultiplied", "straight", "mostly-clear"};

void setAlpha(Bytes& pixels, const std::string& kind, std::size_t rowBytes) {
    for (std::size_t i = 0; i < pixels.size(); i += 4) {
        if (kind == "opaque") pixels[i + 3] = 255;
        if (kind == "zero") pixels[i + 3] = 0;
        if (kind == "straight") pixels[i] = 255; // proven by the first translucent pixel
        if (kind == "mostly-clear" && i < pixels.size() - rowBytes) std::fill_n(&pixels[i], 4, std::uint8_t{0});
    }
}

Bytes pixelsOf(const Size& size, const std::string& kind) {
    const Bytes drawing = bench::premultipliedPixels(true);
    Bytes pixels;
    while (pixels.size() < size.bytes())
        pixels.insert(pixels.end(), drawing.begin(), drawing.end());
    pixels.resize(size.bytes());
    setAlpha(pixels, kind, static_cast<std::size_t>(size.width) * 4);
    return pixels;
}

Bytes bmpOf(const Size& size, const Bytes& pixels) {
    Bytes file(54);
    const auto put = [&](std::size_t at, std::uint32_t value) {
        for (std::size_t i = 0; i < 4; ++i)
            file[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
    };
    file[0] = 'B';
    file[1] = 'M';
    put(10, 54);
    put(14, 40);
    put(18, static_cast<std::uint32_t>(size.width));
    put(22, static_cast<std::uint32_t>(size.height));
    put(26, 1 | 32U << 16);
    file.insert(file.end(), pixels.begin(), pixels.end());
    return file;
}

// Each round times the peer and the work in turn, so that both meet the same machine.
void add(const std::string& name, const Size& size, const std::function<void()>& work,
         const std::function<void()>& peer) {
    bench::addTimed(name, [=](benchmark::State& state) {
        std::vector<double> own;
        std::vector<double> copying;
        for (auto _ : state) {
            copying.push_back(bench::secondsOf(peer));
            own.push_back(bench::secondsOf(work));
            state.SetIterationTime(own.back());
        }
        const double megapixels = static_cast<double>(size.bytes()) / 4e6;
        state.counters["Mpixel/s"] = megapixels / bench::median(own);
        state.counters["memcpy Mpixel/s"] = megapixels / bench::median(copying);
    });
}

void addReading(const Size& size, const std::string& kind) {
    static std::vector<std::unique_ptr<Bytes>> kept;
    const Bytes& file = *kept.emplace_back(std::make_unique<Bytes>(bmpOf(size, pixelsOf(size, kind))));
    Bytes& warm = *kept.emplace_back(std::make_unique<Bytes>(size.bytes(), std::uint8_t{1}));
    const auto read = [&file] {
        cPixSheet sheet;
        auto* const data = const_cast<std::uint8_t*>(file.data());
        if (!sheet.LoadPicture_Stream(ByteArray::borrow(data, {0, static_cast<std::uint32_t>(file.size())})))
            throw std::runtime_error("not loaded");
    };
    const std::string name = std::string(size.name) + "-" + kind;
    add("bmp-read/" + name + "/pixkit", size, read, [&file, &size] {
        cPixSheet sheet;
        sheet.InitializeDIB(size.width, size.height);
        std::memcpy(sheet.BitsPointer(), file.data() + 54, size.bytes());
    });
    add("bmp-read-warm/" + name + "/pixkit", size, read,
        [&] { std::memcpy(warm.data(), file.data() + 54, size.bytes()); });
}

void addWriting(const Size& size, const std::string& kind) {
    static std::vector<std::unique_ptr<cPixSheet>> kept;
    static std::vector<std::unique_ptr<Bytes>> targets;
    cPixSheet& sheet = *kept.emplace_back(std::make_unique<cPixSheet>());
    Bytes& warm = *targets.emplace_back(std::make_unique<Bytes>(size.bytes() + 54, std::uint8_t{1}));
    sheet.InitializeDIB(size.width, size.height);
    const Bytes pixels = pixelsOf(size, kind);
    std::memcpy(sheet.BitsPointer(), pixels.data(), pixels.size());
    const auto write = [&sheet] {
        ByteArray stream;
        if (!sheet.SaveToStream_Bitmap(stream, true)) throw std::runtime_error("not saved");
    };
    const std::string name = std::string(size.name) + "-" + kind;
    add("bmp-write/" + name + "/pixkit", size, write, [&] {
        const std::unique_ptr<std::uint8_t[]> target(new std::uint8_t[size.bytes() + 54]);
        std::memcpy(target.get() + 54, sheet.BitsPointer(), size.bytes());
        benchmark::DoNotOptimize(target.get());
    });
    add("bmp-write-warm/" + name + "/pixkit", size, write,
        [&] { std::memcpy(warm.data() + 54, sheet.BitsPointer(), size.bytes()); });
}

} // namespace

int main(int argc, char** argv) {
    for (const Size& size : sizes) {
        for (const char* kind : kinds)
            addReading(size, kind);
        addWriting(size, "premultiplied");
    }
    return bench::run(argc, argv);
}
// SPDX-License-Identifier: MIT
