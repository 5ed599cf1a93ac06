// A mask of coverage becomes a picture in the text's colour, and Render draws that: so device contexts, hosts, opacity
// and limits are those of every other drawing.
//
// The colour is premultiplied rounding up, because the blender truncates: text in the colour of its background then
// leaves that exactly as it is, and elsewhere differs by less than 1 from exact blending.
#include "render/TextDrawing.h"
#include "render/DrawJob.h"
#include "render/HostRelease.h"
#include "shared/Colors.h"
#include "shared/checked.h"
#include "surface/HostAccess.h"
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <memory>
#include <numbers>
#include <span>
#include <vector>

namespace pixkit {

namespace {

// A turn about a point. Quarter turns are exact, and move what would lie between pixels up and to the left by half of
// one, as Render does.
class Turn {
  public:
    Turn(float degrees, double centreX, double centreY) noexcept : m_centreX(centreX), m_centreY(centreY) {
        const double angle = std::fmod(double{degrees}, 360.0);
        const double radians = angle * std::numbers::pi / 180;
        const bool isQuarter = std::fmod(angle, 90.0) == 0;
        m_cosine = isQuarter ? std::round(std::cos(radians)) : std::cos(radians);
        m_sine = isQuarter ? std::round(std::sin(radians)) : std::sin(radians);
        if (!isQuarter) return;
        const double x = centreX - m_cosine * centreX + m_sine * centreY;
        const double y = centreY - m_sine * centreX - m_cosine * centreY;
        m_shiftX = std::floor(x) - x;
        m_shiftY = std::floor(y) - y;
    }
    bool isNone() const noexcept { return m_cosine == 1; }

    // The smallest rectangle around a turned one.
    Rect around(const Rect& rect) const noexcept { return around(rect, m_sine); }
    // The smallest rectangle around those that this turn brings to lie in `rect`.
    Rect aroundSourcesOf(const Rect& rect) const noexcept { return around(rect, -m_sine); }
    // For places counted from `left`, `top`, and a mask.
    platform::TextTurn inMask(const Rect& mask, std::int64_t left, std::int64_t top) const noexcept {
        const double dx = static_cast<double>(left) - m_centreX, dy = static_cast<double>(top) - m_centreY;
        const double x = m_shiftX + m_centreX + m_cosine * dx - m_sine * dy - static_cast<double>(mask.left);
        const double y = m_shiftY + m_centreY + m_sine * dx + m_cosine * dy - static_cast<double>(mask.top);
        return {m_cosine, m_sine, x, y};
    }

    // How much of the pixel at x, y lies in the turned rectangle, as far as its edges go: 0 to 1.
    double share(const Rect& rect, double x, double y) const noexcept {
        const double dx = x + 0.5 - m_shiftX - m_centreX, dy = y + 0.5 - m_shiftY - m_centreY;
        const double fromLeft = m_centreX + dx * m_cosine + dy * m_sine;
        const double fromTop = m_centreY + dy * m_cosine - dx * m_sine;
        const auto within = [](double at, std::int64_t low, std::int64_t high) {
            const double least = std::min(at - static_cast<double>(low), static_cast<double>(high) - at);
            return std::clamp(least + 0.5, 0.0, 1.0);
        };
        return within(fromLeft, rect.left, rect.right) * within(fromTop, rect.top, rect.bottom);
    }

  private:
    Rect around(const Rect& rect, double sine) const noexcept {
        double left = INFINITY, top = INFINITY, right = -INFINITY, bottom = -INFINITY;
        for (const std::int64_t x : {rect.left, rect.right}) {
            for (const std::int64_t y : {rect.top, rect.bottom}) {
                const double dx = static_cast<double>(x) - m_centreX, dy = static_cast<double>(y) - m_centreY;
                const double u = m_centreX + dx * m_cosine - dy * sine, v = m_centreY + dx * sine + dy * m_cosine;
                left = std::min(left, u);
                right = std::max(right, u);
                top = std::min(top, v);
                bottom = std::max(bottom, v);
            }
        }
        // A pixel more on each side: for what rounds, and for edges that are interpolated.
        return {std::llround(std::floor(left)) - 1, std::llround(std::floor(top)) - 1,
                std::llround(std::ceil(right)) + 1, std::llround(std::ceil(bottom)) + 1};
    }

    double m_centreX, m_centreY;
    double m_cosine, m_sine;
    double m_shiftX = 0, m_shiftY = 0;
};

// Coverage of the pixels of a rectangle, top row first.
struct Mask {
    explicit Mask(const Rect& itsArea) : area(itsArea) {
        const auto width = toLong(area.width()), height = toLong(area.height());
        if (!width || !height || !checkedMultiply(*width, *height)) throw std::bad_alloc();
        bytes = std::make_unique_for_overwrite<std::uint8_t[]>(std::size_t(*width) * std::size_t(*height));
    }
    std::span<std::uint8_t> row(std::int64_t y) const noexcept {
        const auto width = static_cast<std::size_t>(area.width());
        return {bytes.get() + static_cast<std::size_t>(y - area.top) * width, width};
    }

    Rect area;
    std::unique_ptr<std::uint8_t[]> bytes;
};

// Draws the lines, which begin at `rect`, turned into the mask.
bool fill(const Mask& mask, platform::TextFont& font, TextLayout& layout, const Rect& rect, const Turn& turn) {
    // Places are counted from the mask's corner, turned ones from the rectangle's.
    const Rect& origin = turn.isNone() ? mask.area : rect;
    std::vector<platform::PlacedLine> lines;
    const auto isSeen = [&](const Rect& ink) {
        const Rect there = ink.moved(rect.left, rect.top);
        return !(turn.isNone() ? there : turn.around(there)).cut(mask.area).isEmpty();
    };
    const auto place = [&](const platform::TextLine& line, std::int64_t x, std::int64_t y) {
        const auto left = toLong(x + rect.left - origin.left), baseline = toLong(y + rect.top - origin.top);
        if (left && baseline) lines.push_back({&line, *left, *baseline});
        return left && baseline;
    };
    if (!layout.forPieces(isSeen, place)) return false;
    const platform::TextTurn inMask =
        turn.isNone() ? platform::TextTurn() : turn.inMask(mask.area, rect.left, rect.top);
    return font.draw(lines, inMask, static_cast<std::int32_t>(mask.area.width()),
                     static_cast<std::int32_t>(mask.area.height()), mask.bytes.get());
}

// Takes away what lies outside of the turned rectangle; its edges are smooth.
void clip(const Mask& mask, const Rect& rect, const Turn& turn) {
    for (std::int64_t y = mask.area.top; y < mask.area.bottom; ++y) {
        std::int64_t x = mask.area.left;
        for (std::uint8_t& coverage : mask.row(y)) {
            if (coverage != 0)
                coverage = static_cast<std::uint8_t>(
                    std::lround(coverage * turn.share(rect, static_cast<double>(x), static_cast<double>(y))));
            ++x;
        }
    }
}

// What of a mask has ink.
Rect inked(const Mask& mask) {
    Rect found = {mask.area.right, mask.area.bottom, mask.area.left, mask.area.top};
    for (std::int64_t y = mask.area.top; y < mask.area.bottom; ++y) {
        const auto row = mask.row(y);
        const auto hasInk = [](std::uint8_t coverage) { return coverage != 0; };
        const auto first = std::find_if(row.begin(), row.end(), hasInk);
        if (first == row.end()) continue;
        const auto last = std::find_if(row.rbegin(), row.rend(), hasInk);
        found = {std::min(found.left, mask.area.left + (first - row.begin())), std::min(found.top, y),
                 std::max(found.right, mask.area.right - (last - row.rbegin())), y + 1};
    }
    return found;
}

// A mask as an image of the rectangle `area` in a colour. Refuses where there is no memory for one.
Outcome colour(cPixSheet& sheet, const Mask& mask, const Rect& area, std::int32_t Color) {
    if (!sheet.InitializeDIB(longOrOverflow(area.width()), longOrOverflow(area.height())))
        return HostAccess::outcome(sheet);
    const ColorChannels channels = iparseColorChannels(Color);
    std::array<std::array<std::uint8_t, 4>, 256> shades{};
    for (std::size_t alpha = 0; alpha < shades.size(); ++alpha) {
        const auto shade = [&](std::size_t channel) {
            return static_cast<std::uint8_t>((channel * alpha + 254) / 255);
        };
        shades[alpha] = {shade(channels.b), shade(channels.g), shade(channels.r), static_cast<std::uint8_t>(alpha)};
    }
    const Rect part = area.cut(mask.area);
    const PixelView pixels = HostAccess::pixels(sheet).part(part.moved(-area.left, -area.top));
    for (std::int64_t y = part.top; y < part.bottom; ++y) {
        std::uint8_t* pixel = pixels.rowFromTop(static_cast<std::size_t>(y - part.top));
        const auto row = mask.row(y).subspan(static_cast<std::size_t>(part.left - mask.area.left), pixels.width);
        for (const std::uint8_t coverage : row) {
            std::memcpy(pixel, shades[coverage].data(), 4);
            pixel += 4;
        }
    }
    sheet.Alpha(AlphaComplex);
    return done();
}

// Where an image said that it has no partly transparent pixels, and has some in `drawn` now, it says so.
void noteTranslucence(cPixSheet& host, const Rect& drawn) {
    const Rect part = drawn.cut(HostAccess::pixels(host).rect());
    if (host.Alpha() != AlphaSimple || part.isEmpty()) return;
    const PixelView pixels = HostAccess::pixels(host).part(part);
    for (std::size_t y = 0; y < pixels.height; ++y) {
        const std::uint8_t* const row = pixels.row(y);
        for (std::size_t x = 0; x < pixels.width; ++x) {
            const std::uint8_t alpha = row[x * 4 + 3];
            if (alpha != 0 && alpha != 255) return host.Alpha(AlphaComplex);
        }
    }
}

// The smallest rectangle around `part` whose centre is that of `rect`.
Rect centredAround(const Rect& part, const Rect& rect) {
    const std::int64_t twiceX = rect.left + rect.right, twiceY = rect.top + rect.bottom;
    const auto reach = [](std::int64_t twice, std::int64_t low, std::int64_t high) {
        return std::max(twice - 2 * low, 2 * high - twice); // twice as far as it reaches, with the parity of the centre
    };
    const std::int64_t x = reach(twiceX, part.left, part.right), y = reach(twiceY, part.top, part.bottom);
    return {(twiceX - x) / 2, (twiceY - y) / 2, (twiceX + x) / 2, (twiceY + y) / 2};
}

} // namespace

Outcome spt_DrawText(const cPixSheet& settings, platform::TextFont& font, const TextDrawing& drawing) {
    DrawJob job;
    job.destinationDC = drawing.destinationDC;
    job.destHostDIB = drawing.destHostDIB;
    if (Outcome limits = job.findLimits(); !limits) return limits;
    const HostRelease release(drawing.destHostDIB);
    if (drawing.Opacity < 1) return done();
    TextLayout layout(font);
    if (Outcome laidOut = layout.layOut(drawing.Text, drawing.form); !laidOut) return laidOut;
    const Rect rect = Rect::ofSize(layout.width(), layout.height()).moved(drawing.destX, drawing.destY);
    const auto middle = [](std::int64_t low, std::int64_t high) { return static_cast<double>(low + high) / 2; };
    const Turn turn(drawing.Angle, middle(rect.left, rect.right), middle(rect.top, rect.bottom));
    const Turn none(0, 0, 0);
    // Who cannot draw turned glyphs draws a picture that Render turns.
    const bool turnsPicture = !turn.isNone() && !font.metrics().isScalable;
    const Turn& glyphTurn = turnsPicture ? none : turn;
    const bool isClipping = (drawing.form.Alignment & txtClip) != 0;

    Rect area = layout.ink().moved(rect.left, rect.top);
    if (isClipping) area = area.cut(rect);
    if (area.isEmpty()) return done();
    if (!glyphTurn.isNone()) area = glyphTurn.around(area);
    area = area.cut(turnsPicture ? turn.aroundSourcesOf(job.limits) : job.limits);
    if (area.isEmpty()) return done();
    const Mask mask(area);
    if (!fill(mask, font, layout, rect, glyphTurn)) return refused("the system cannot draw the text");
    if (isClipping && !glyphTurn.isNone()) clip(mask, rect, glyphTurn);

    area = inked(mask);
    if (area.isEmpty()) return done();
    if (turnsPicture) area = centredAround(area, rect);
    cPixSheet sheet;
    HostAccess::drawLike(sheet, settings);
    sheet.KeepGDIplusActive(settings.KeepGDIplusActive());
    if (Outcome coloured = colour(sheet, mask, area, drawing.Color); !coloured) return coloured;
    sheet.HighQualityInterpolation(turnsPicture);
    sheet.Render(drawing.destinationDC, longOrOverflow(area.left), longOrOverflow(area.top), 0, 0, 0, 0, 0, 0,
                 drawing.Opacity, true, true, drawing.destHostDIB, gsclNone, 0, turnsPicture ? drawing.Angle : 0.0F);
    if (drawing.destHostDIB != nullptr) noteTranslucence(*drawing.destHostDIB, turnsPicture ? turn.around(area) : area);
    return HostAccess::outcome(sheet);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
