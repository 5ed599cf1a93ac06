#include "gdiplus/Abilities.h"
#include "gdiplus/Drawing.h"
#include "gdiplus/Encoding.h"
#include "kernels/kernels.h"
#include "platform/Lock.h"
#include "platform/NeverDestroyed.h"
#include "platform/gdi.h"
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <optional>

namespace pixkit {

namespace {

using platform::GdiplusApi;

// What came of a trial; nothing where a call failed.
using Verdict = std::optional<bool>;

// A small picture for trials.
class Sample {
  public:
    Sample(std::int64_t width, std::int64_t height)
        : m_width(static_cast<std::size_t>(width)), m_bytes(m_width * static_cast<std::size_t>(height) * 4) {}

    PixelView view() noexcept { return {m_bytes.data(), m_width, m_bytes.size() / 4 / m_width, m_width * 4}; }
    std::uint8_t* pixel(std::int64_t x, std::int64_t y) noexcept {
        return view().rowFromTop(static_cast<std::size_t>(y)) + 4 * x;
    }
    // Colours that differ, at every alpha from nothing to all, or opaque throughout.
    void fill(bool isOpaque) noexcept {
        for (std::size_t i = 0; i < m_bytes.size() / 4; ++i) {
            const std::size_t alpha = isOpaque ? 255 : i * 37 % 11 * 255 / 10;
            for (std::size_t channel = 0; channel < 3; ++channel)
                m_bytes[4 * i + channel] = static_cast<std::uint8_t>((i * 53 + channel * 71) % 256 * alpha / 255);
            m_bytes[4 * i + 3] = static_cast<std::uint8_t>(alpha);
        }
    }
    void fill(const std::array<std::uint8_t, 4>& pixel) noexcept {
        for (std::size_t i = 0; i < m_bytes.size(); ++i)
            m_bytes[i] = pixel[i % 4];
    }
    bool isCloseTo(const Sample& other, int tolerance) const noexcept {
        return std::ranges::equal(m_bytes, other.m_bytes, [&](int a, int b) { return std::abs(a - b) <= tolerance; });
    }
    bool hasColorsCloseTo(const std::uint8_t* pixels, int tolerance) const noexcept {
        for (std::size_t i = 0; i < m_bytes.size(); ++i) {
            if (i % 4 != 3 && std::abs(m_bytes[i] - pixels[i]) > tolerance) return false;
        }
        return true;
    }

  private:
    std::size_t m_width;
    std::vector<std::uint8_t> m_bytes;
};

constexpr int tolerance = 2;

Verdict draws(const GdiplusApi& api, Sample& picture, Sample& host, GdiplusDrawing drawing, const Sample& expected) {
    drawing.pixels = picture.view();
    drawing.host = host.view();
    if (!drawByGdiplus(api, drawing)) return {};
    return host.isCloseTo(expected, tolerance);
}

Verdict tryBlending(const GdiplusApi& api) {
    for (const bool isOpaque : {true, false}) {
        for (const std::uint8_t globalAlpha : {std::uint8_t{255}, std::uint8_t{127}}) {
            Sample picture(11, 4);
            Sample host(15, 7);
            picture.fill(false);
            host.fill(isOpaque);
            Sample expected = host;
            for (std::int64_t y = 0; y < 4; ++y)
                kernels::table().blendScaled(expected.pixel(2, y + 1), picture.pixel(0, y), 11, globalAlpha);
            const Verdict verdict =
                draws(api, picture, host, {.destination = Rect::ofSize(11, 4).moved(2, 1), .globalAlpha = globalAlpha},
                      expected);
            if (!verdict.value_or(false)) return verdict;
        }
    }
    return true;
}

// A bitmap of 32 bits in a device context, whose alpha means nothing.
Verdict tryContexts(const GdiplusApi& api) {
    constexpr std::int32_t width = 15;
    constexpr std::int32_t height = 7;
    Sample picture(11, 4);
    Sample expected(width, height);
    picture.fill(false);
    expected.fill(true);
    const platform::BitmapInfoHeader header{.biWidth = width, .biHeight = height};
    void* bits = nullptr;
    const platform::ScreenDC screen;
    const platform::Handle bitmap = platform::CreateDIBSection(screen.get(), header, &bits);
    const platform::Handle dc = platform::CreateCompatibleDC(screen.get());
    const platform::Handle before = bitmap != 0 ? platform::SelectObject(dc, bitmap) : 0;
    Verdict verdict;
    if (before != 0) {
        auto* const pixels = static_cast<std::uint8_t*>(bits);
        std::memcpy(pixels, expected.view().bits, expected.view().bytes().size());
        const bool isDrawn = drawByGdiplus(
            api, {.pixels = picture.view(), .destinationDC = dc, .destination = Rect::ofSize(11, 4).moved(2, 1)});
        platform::GdiFlush();
        for (std::int64_t y = 0; y < 4; ++y)
            kernels::table().blendScaled(expected.pixel(2, y + 1), picture.pixel(0, y), 11, 255);
        if (isDrawn) verdict = expected.hasColorsCloseTo(pixels, tolerance);
        platform::SelectObject(dc, before);
    }
    platform::DeleteDC(dc);
    platform::DeleteObject(bitmap);
    return verdict;
}

Verdict tryStretching(const GdiplusApi& api) {
    Sample picture(3, 2);
    Sample host(11, 10);
    picture.fill(true);
    Sample expected = host;
    for (std::int64_t y = 0; y < 8; ++y)
        for (std::int64_t x = 0; x < 9; ++x)
            std::copy_n(picture.pixel(x / 3, y / 4), 4, expected.pixel(x + 1, y + 1));
    return draws(api, picture, host, {.destination = Rect::ofSize(9, 8).moved(1, 1)}, expected);
}

// One colour stays what it is everywhere, enlarged or reduced; two are not exchanged.
Verdict tryInterpolating(const GdiplusApi& api) {
    constexpr std::array<std::uint8_t, 4> colour = {40, 200, 90, 255};
    for (const Rect& to : {Rect::ofSize(8, 5).moved(1, 1), Rect::ofSize(2, 3).moved(4, 2)}) {
        Sample picture(4, 3);
        Sample host(10, 7);
        picture.fill(colour);
        Sample expected = host;
        for (std::int64_t y = to.top; y < to.bottom; ++y)
            for (std::int64_t x = to.left; x < to.right; ++x)
                std::copy_n(colour.begin(), 4, expected.pixel(x, y));
        const Verdict verdict = draws(api, picture, host, {.destination = to, .HighQuality = true}, expected);
        if (!verdict.value_or(false)) return verdict;
    }
    Sample picture(2, 2);
    Sample host(8, 8);
    picture.fill({0, 0, 0, 255});
    std::fill_n(picture.pixel(1, 0), 3, 255);
    if (!drawByGdiplus(
            api,
            {.pixels = picture.view(), .host = host.view(), .destination = Rect::ofSize(8, 8), .HighQuality = true}))
        return {};
    return *host.pixel(7, 0) > 200 && *host.pixel(0, 0) < 55 && *host.pixel(7, 7) < 55;
}

// A square, red on its left, blue on its right, on its tip.
Verdict tryTurning(const GdiplusApi& api) {
    for (const bool HighQuality : {false, true}) {
        Sample picture(9, 9);
        Sample host(17, 17);
        picture.fill({255, 0, 0, 255});
        for (std::int64_t y = 0; y < 9; ++y)
            for (std::int64_t x = 0; x < 4; ++x)
                std::copy_n(std::array<std::uint8_t, 4>{0, 0, 255, 255}.begin(), 4, picture.pixel(x, y));
        if (!drawByGdiplus(api, {.pixels = picture.view(),
                                 .host = host.view(),
                                 .destination = Rect::ofSize(9, 9).moved(4, 4),
                                 .HighQuality = HighQuality,
                                 .Angle = 45.0F}))
            return {};
        for (std::int64_t y = 0; y < 17; ++y) {
            for (std::int64_t x = 0; x < 17; ++x) {
                const int alpha = host.pixel(x, y)[3];
                const std::int64_t fromTip = std::abs(x - 8) + std::abs(y - 8); // the edge is at 6.4
                if ((fromTip <= 4 && alpha != 255) || (fromTip >= 9 && alpha != 0)) return false;
            }
        }
        if (host.pixel(6, 6)[2] != 255 || host.pixel(10, 10)[0] != 255) return false;
    }
    return true;
}

// Of equal and of different oddness of their sides: where a turned picture would lie between pixels it moves up and
// left, as the component's does.
Verdict tryQuarterTurns(const GdiplusApi& api) {
    for (const std::int64_t width : {5, 4}) {
        for (int turns = 1; turns < 4; ++turns) {
            constexpr std::int64_t height = 3;
            Sample picture(width, height);
            Sample host(10, 10);
            picture.fill(true);
            Sample expected = host;
            const bool isUpright = turns == 2;
            const std::int64_t newWidth = isUpright ? width : height;
            const std::int64_t newHeight = isUpright ? height : width;
            const Rect destination = Rect::ofSize(width, height).moved(2, 3);
            const auto left = static_cast<std::int64_t>(
                std::floor((static_cast<double>(destination.left + destination.right - newWidth)) / 2.0));
            const auto top = static_cast<std::int64_t>(
                std::floor((static_cast<double>(destination.top + destination.bottom - newHeight)) / 2.0));
            for (std::int64_t y = 0; y < height; ++y) {
                for (std::int64_t x = 0; x < width; ++x) {
                    const std::int64_t toX = isUpright ? width - 1 - x : turns == 1 ? height - 1 - y : y;
                    const std::int64_t toY = isUpright ? height - 1 - y : turns == 1 ? x : width - 1 - x;
                    std::copy_n(picture.pixel(x, y), 4, expected.pixel(left + toX, top + toY));
                }
            }
            const Verdict verdict = draws(
                api, picture, host,
                {.destination = destination, .HighQuality = true, .Angle = static_cast<float>(90 * turns)}, expected);
            if (!verdict.value_or(false)) return verdict;
        }
    }
    return true;
}

Verdict tryJpegQuality(const GdiplusApi& api) {
    Sample picture(32, 32);
    picture.fill(true);
    const auto rough = encodeByGdiplus(api, picture.view(), {"image/jpeg", 10});
    const auto fine = encodeByGdiplus(api, picture.view(), {"image/jpeg", 95});
    if (rough.empty() || fine.empty()) return {};
    return fine.size() > rough.size() + rough.size() / 2;
}

constexpr std::array<Verdict (*)(const GdiplusApi&), static_cast<std::size_t>(GdiplusAbility::count)> trials = {
    tryBlending, tryContexts, tryStretching, tryInterpolating, tryTurning, tryQuarterTurns, tryJpegQuality};

struct Verdicts {
    platform::Lock mutex;
    std::weak_ptr<const GdiplusApi> library; // whose they are
    std::array<Verdict, trials.size()> verdicts;
};

Verdicts& found() noexcept {
    static constinit platform::NeverDestroyed<Verdicts> only;
    return only.value;
}

} // namespace

bool hasAbility(const GdiplusSession& session, GdiplusAbility ability) noexcept {
    const auto index = static_cast<std::size_t>(ability);
    Verdicts& all = found();
    {
        const std::scoped_lock lock(all.mutex);
        if (all.library.lock() != session.library()) all.verdicts.fill({});
        all.library = session.library();
        if (all.verdicts[index]) return *all.verdicts[index];
    }
    try {
        const Verdict verdict = trials[index](session.api());
        const std::scoped_lock lock(all.mutex);
        if (all.library.lock() == session.library()) all.verdicts[index] = verdict;
        return verdict.value_or(false);
    } catch (...) {
        return false; // no memory
    }
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
