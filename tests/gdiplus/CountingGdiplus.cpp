#include "gdiplus/CountingGdiplus.h"
#include "kernels/kernels.h"
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>

namespace pixkit::test {

using platform::GdiplusApi;
using platform::GpGraphics;
using platform::GpImage;
using platform::GpImageAttributes;
using platform::GpScan;
using platform::GpStatus;

namespace {

// --- a small library for where there is none

struct Image {
    GpScan scan;
    std::vector<std::uint8_t> own;
    std::uint8_t* pixel(std::int64_t x, std::int64_t y) const { return scan.scan0 + y * scan.stride + 4 * x; }
};
struct Graphics {
    Image* target;
    platform::Rect clip;
    bool isTurned = false;
};
struct Attributes {
    std::uint8_t globalAlpha = 255;
};

template <class Real, class Shown>
Real& real(Shown* shown) {
    return *reinterpret_cast<Real*>(shown);
}
template <class Real, class Shown, class... Parts>
GpStatus make(Shown*& shown, Parts&&... parts) {
    shown = reinterpret_cast<Shown*>(new Real{std::forward<Parts>(parts)...});
    return GpStatus::Ok;
}
template <class Real>
auto disposer() {
    return [](auto* shown) {
        delete reinterpret_cast<Real*>(shown);
        return GpStatus::Ok;
    };
}
constexpr auto accepts = [](auto&&...) { return GpStatus::Ok; };

GpStatus load(std::span<const std::uint8_t> bytes, GpImage*& image) {
    if (bytes.size() < 12 || std::memcmp(bytes.data(), "II*", 4) != 0) return GpStatus::GenericError;
    std::int32_t size[2];
    std::memcpy(size, bytes.data() + 4, 8);
    if (size[0] < 1 || size[1] < 1 ||
        bytes.size() != 12 + 4 * static_cast<std::size_t>(size[0]) * static_cast<std::size_t>(size[1]))
        return GpStatus::GenericError;
    Image made{{size[0], size[1], 4 * size[0]}, {bytes.begin() + 12, bytes.end()}};
    made.scan.scan0 = made.own.data();
    return make<Image>(image, std::move(made));
}

GpStatus draw(GpGraphics* shown, GpImage* image, const platform::Rect& to, const platform::Rect& from,
              const GpImageAttributes* attributes) {
    const Graphics& graphics = real<Graphics>(shown);
    if (graphics.isTurned) return GpStatus::Ok; // as if it had
    const Image& target = *graphics.target;
    for (std::int64_t y = std::max(to.top, 0); y < std::min(to.bottom, target.scan.height); ++y)
        for (std::int64_t x = std::max(to.left, 0); x < std::min(to.right, target.scan.width); ++x)
            kernels::table().blendScaled(
                target.pixel(x, y),
                real<Image>(image).pixel((x - to.left) * (from.right - from.left) / (to.right - to.left),
                                         (y - to.top) * (from.bottom - from.top) / (to.bottom - to.top)),
                1, real<const Attributes>(attributes).globalAlpha);
    return GpStatus::Ok;
}

GdiplusApi smallGdiplus() {
    GdiplusApi api;
    api.GdiplusStartup = [](std::uintptr_t& token) {
        token = 77;
        return GpStatus::Ok;
    };
    api.GdipLoadImageFromStream = load;
    api.GdipCreateBitmapFromScan0 = [](const GpScan& scan, GpImage*& image) {
        return make<Image>(image, Image{scan, {}});
    };
    api.GdipDisposeImage = disposer<Image>();
    api.GdipGetImageWidth = [](GpImage* image, std::uint32_t& width) {
        width = static_cast<std::uint32_t>(real<Image>(image).scan.width);
        return GpStatus::Ok;
    };
    api.GdipGetImageHeight = [](GpImage* image, std::uint32_t& height) {
        height = static_cast<std::uint32_t>(real<Image>(image).scan.height);
        return GpStatus::Ok;
    };
    api.GdipBitmapLockBits = [](GpImage* image, const GpScan& into) {
        const Image target{into, {}};
        for (std::int32_t y = 0; y < into.height; ++y)
            std::memcpy(target.pixel(0, y), real<Image>(image).pixel(0, y), 4 * static_cast<std::size_t>(into.width));
        return GpStatus::Ok;
    };
    api.GdipSaveImageToStream = [](GpImage*, const platform::GpEncoding& encoding, std::vector<std::uint8_t>& bytes) {
        bytes.assign(10 + static_cast<std::size_t>(encoding.quality), 7);
        return GpStatus::Ok;
    };
    api.GdipCreateFromHDC = [](auto&&...) { return GpStatus::GenericError; };
    api.GdipGetImageGraphicsContext = [](GpImage* image, GpGraphics*& graphics) {
        return make<Graphics>(graphics, &real<Image>(image), platform::Rect());
    };
    api.GdipDeleteGraphics = disposer<Graphics>();
    api.GdipRotateWorldTransform = [](GpGraphics* graphics, float) {
        real<Graphics>(graphics).isTurned = true;
        return GpStatus::Ok;
    };
    api.GdipCreateImageAttributes = [](GpImageAttributes*& attributes) { return make<Attributes>(attributes); };
    api.GdipDisposeImageAttributes = disposer<Attributes>();
    api.GdipSetImageAttributesColorMatrix = [](GpImageAttributes* attributes, const platform::GpColorMatrix& matrix) {
        real<Attributes>(attributes).globalAlpha = static_cast<std::uint8_t>(std::lround(matrix[3][3] * 255.0F));
        return GpStatus::Ok;
    };
    api.GdipDrawImageRectRectI = draw;
    // What decides nothing here is accepted.
    std::apply([](auto&... function) { ((function ? void() : void(function = accepts)), ...); }, api.functions());
    return api;
}

} // namespace

GdiplusApi someGdiplus() {
    GdiplusApi api = platform::systemGdiplus();
    return api.isComplete() ? api : smallGdiplus();
}

// A TIFF file, too: little-endian, one strip of RGBA.
std::vector<std::uint8_t> foreignPicture() {
    if (!platform::systemGdiplus().isComplete())
        return {'I', 'I', '*', 0, 2, 0, 0, 0, 1, 0, 0, 0, 0, 0, 128, 128, 9, 9, 9, 0};
    std::vector<std::uint8_t> file = {'I', 'I', '*', 0, 16, 0, 0, 0, 128, 0, 0, 128, 9, 9, 9, 0};
    const auto number = [&](unsigned value, int bytes) {
        for (; bytes > 0; --bytes, value >>= 8)
            file.push_back(static_cast<std::uint8_t>(value));
    };
    constexpr unsigned shortType = 3;
    constexpr unsigned longType = 4;
    constexpr unsigned bitsAt = 16 + 2 + 11 * 12 + 4;
    struct Entry {
        unsigned tag, type, count, value;
    };
    constexpr Entry entries[] = {
        {256, longType, 1, 2},  {257, longType, 1, 1},  {258, shortType, 4, bitsAt}, {259, shortType, 1, 1},
        {262, shortType, 1, 2}, {273, longType, 1, 8},  {277, shortType, 1, 4},      {278, longType, 1, 1},
        {279, longType, 1, 8},  {284, shortType, 1, 1}, {338, shortType, 1, 2}, // unassociated alpha
    };
    number(std::size(entries), 2);
    for (const auto& [tag, type, count, value] : entries) {
        number(tag, 2);
        number(type, 2);
        number(count, 4);
        number(value, 4);
    }
    number(0, 4);
    for (int sample = 0; sample < 4; ++sample)
        number(8, 2);
    return file;
}

// --- the watch

CountingGdiplus::CountingGdiplus() {
    reset();
}

CountingGdiplus::~CountingGdiplus() {
    expectGone();
    platform::setGdiplusProvider([] { return GdiplusApi(); });
}

void CountingGdiplus::reset() {
    expectGone();
    platform::setGdiplusProvider([this] { return watched(); });
    startups = shutdowns = loads = draws = saves = 0;
}

void CountingGdiplus::expectGone() const {
    EXPECT_EQ(startups, shutdowns);
    EXPECT_TRUE(objects.empty());
}

GdiplusApi CountingGdiplus::watched() {
    GdiplusApi api = someGdiplus();
    const auto isStarted = [this] { return startups > shutdowns; };
    // Before every call something else happens.
    const auto before = [](auto& function, auto what) {
        function = [original = std::move(function), what](auto&&... arguments) {
            what();
            return original(std::forward<decltype(arguments)>(arguments)...);
        };
    };
    const auto made = [this](auto& function) {
        function = [this, original = std::move(function)](auto&&... arguments) {
            const GpStatus status = original(std::forward<decltype(arguments)>(arguments)...);
            if (status == GpStatus::Ok) objects.insert(std::get<sizeof...(arguments) - 1>(std::tie(arguments...)));
            return status;
        };
    };
    const auto gone = [this](auto& function) {
        function = [this, original = std::move(function)](auto* object) {
            EXPECT_EQ(objects.erase(object), 1u) << "given back twice";
            return original(object);
        };
    };
    std::apply(
        [&](auto& start, auto& shutdown, auto&... others) {
            (before(others, [isStarted] { EXPECT_TRUE(isStarted()) << "used before it is started"; }), ...);
            start = [this, original = std::move(start)](std::uintptr_t& token) {
                const GpStatus status = original(token);
                startups += status == GpStatus::Ok ? 1 : 0;
                return status;
            };
            before(shutdown, [this] {
                ++shutdowns;
                EXPECT_LE(shutdowns, startups);
                EXPECT_TRUE(shutdowns < startups || objects.empty()) << "outlived by what it made";
            });
        },
        api.functions());
    before(api.GdipLoadImageFromStream, [this] { ++loads; });
    before(api.GdipDrawImageRectRectI, [this] { ++draws; });
    before(api.GdipSaveImageToStream, [this] { ++saves; });
    made(api.GdipLoadImageFromStream);
    made(api.GdipCreateBitmapFromScan0);
    made(api.GdipCreateFromHDC);
    made(api.GdipGetImageGraphicsContext);
    made(api.GdipCreateImageAttributes);
    gone(api.GdipDisposeImage);
    gone(api.GdipDeleteGraphics);
    gone(api.GdipDisposeImageAttributes);
    return api;
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
