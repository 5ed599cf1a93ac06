#include "platform/portable/text/SubpixelMask.h"
#include <algorithm>
#include <array>
#include <cmath>

namespace pixkit::platform {

namespace {

std::int32_t within(std::int64_t place) noexcept {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(place, -farthestPixel, farthestPixel));
}

// Grey coverage of what lies in a bitmap whose left lower corner is the outline's origin.
bool render(FT_Library library, FT_Outline& outline, std::int64_t width, std::int64_t height, std::uint8_t* bytes) {
    FT_Bitmap bitmap{};
    bitmap.width = static_cast<unsigned>(width);
    bitmap.rows = static_cast<unsigned>(height);
    bitmap.pitch = static_cast<int>(width);
    bitmap.buffer = bytes;
    bitmap.num_grays = 256;
    bitmap.pixel_mode = FT_PIXEL_MODE_GRAY;
    return FT_Outline_Get_Bitmap(library, &outline, &bitmap) == 0;
}

// FreeType's default filter for such screens.
void filterRow(std::uint8_t* row, std::size_t count) noexcept {
    constexpr std::array<unsigned, 5> weights{0x08, 0x4D, 0x56, 0x4D, 0x08}; // of 256
    std::array<unsigned, 5> near{0, 0, 0, row[0], count > 1 ? row[1] : 0U};
    for (std::size_t i = 0; i < count; ++i) {
        std::shift_left(near.begin(), near.end(), 1);
        near[4] = i + 2 < count ? row[i + 2] : 0U;
        unsigned sum = 0;
        for (std::size_t k = 0; k < weights.size(); ++k)
            sum += weights[k] * near[k];
        row[i] = static_cast<std::uint8_t>(std::min(sum >> 8, 255U));
    }
}

} // namespace

Rect intersection(const Rect& first, const Rect& second) noexcept {
    return {std::max(first.left, second.left), std::max(first.top, second.top), std::min(first.right, second.right),
            std::min(first.bottom, second.bottom)};
}

Rect unionOf(const Rect& first, const Rect& second) noexcept {
    if (isEmpty(first)) return second;
    if (isEmpty(second)) return first;
    return {std::min(first.left, second.left), std::min(first.top, second.top), std::max(first.right, second.right),
            std::max(first.bottom, second.bottom)};
}

Rect shifted(const Rect& box, std::int64_t x, std::int64_t y) noexcept {
    return {within(box.left + x), within(box.top + y), within(box.right + x), within(box.bottom + y)};
}

Rect pixelsOf(const FT_Outline& outline) noexcept {
    if (outline.n_points <= 0) return {};
    FT_BBox box{};
    FT_Outline_Get_CBox(&outline, &box);
    return {within(box.xMin >> 6), within(-((box.yMax + 63) >> 6)), within((box.xMax + 63) >> 6),
            within(-(box.yMin >> 6))};
}

Subpixels::Subpixels(const Rect& area) : box(area) {
    if (!isEmpty(box))
        bytes.resize(static_cast<std::size_t>(widthOf(box)) * static_cast<std::size_t>(heightOf(box)) * 3);
}

void Subpixels::fill(const Rect& pixels) noexcept {
    const Rect part = intersection(pixels, box);
    if (isEmpty(part)) return;
    for (std::int64_t y = part.top; y < part.bottom; ++y)
        std::fill_n(bytes.data() + ((y - box.top) * widthOf(box) + part.left - box.left) * 3, widthOf(part) * 3,
                    std::uint8_t{255});
}

void Subpixels::add(const Subpixels& other, std::int64_t x, std::int64_t y) noexcept {
    const Rect place = shifted(other.box, x, y);
    const Rect part = intersection(place, box);
    if (isEmpty(part)) return;
    for (std::int64_t row = part.top; row < part.bottom; ++row) {
        std::uint8_t* to = bytes.data() + ((row - box.top) * widthOf(box) + part.left - box.left) * 3;
        const std::uint8_t* from =
            other.bytes.data() + ((row - place.top) * widthOf(place) + part.left - place.left) * 3;
        for (std::int64_t i = 0; i < widthOf(part) * 3; ++i)
            if (from[i] != 0) to[i] = covered(to[i], from[i]);
    }
}

void Subpixels::addMeans(std::uint8_t* mask, std::int32_t width) const noexcept {
    const std::uint8_t* from = bytes.data();
    for (std::int64_t y = box.top; y < box.bottom; ++y) {
        std::uint8_t* to = mask + y * width + box.left;
        for (std::int64_t x = box.left; x < box.right; ++x, ++to, from += 3)
            if (const int sum = from[0] + from[1] + from[2]; sum != 0)
                *to = covered(*to, static_cast<std::uint8_t>((sum + 1) / 3));
    }
}

void turn(FT_Outline& outline, const TextTurn& place) noexcept {
    const auto fixed = [](double value) { return static_cast<FT_Fixed>(std::lround(value * 0x10000)); };
    const FT_Matrix matrix{fixed(place.cosine), fixed(place.sine), fixed(-place.sine), fixed(place.cosine)};
    FT_Outline_Transform(&outline, &matrix);
    FT_Outline_Translate(&outline, std::lround(place.x * 64), std::lround(place.y * -64));
}

bool renderSubpixels(FT_Library library, FT_Outline& outline, Subpixels& result) {
    const Rect& box = result.box;
    if (isEmpty(box)) return true;
    for (FT_Vector* point = outline.points; point != outline.points + outline.n_points; ++point) {
        point->x = (point->x - FT_Pos{box.left} * 64) * 3;
        point->y += FT_Pos{box.bottom} * 64;
    }
    const std::int64_t rowBytes = widthOf(box) * 3;
    if (!render(library, outline, rowBytes, heightOf(box), result.bytes.data())) return false;
    for (std::int64_t y = 0; y < heightOf(box); ++y)
        filterRow(result.bytes.data() + y * rowBytes, static_cast<std::size_t>(rowBytes));
    return true;
}

bool renderPixels(FT_Library library, FT_Outline& outline, std::uint8_t* mask, std::int32_t width,
                  std::int32_t height) {
    const Rect box = intersection(pixelsOf(outline), {0, 0, width, height});
    if (isEmpty(box)) return true;
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(widthOf(box)) * static_cast<std::size_t>(heightOf(box)));
    FT_Outline_Translate(&outline, FT_Pos{box.left} * -64, FT_Pos{box.bottom} * 64);
    if (!render(library, outline, widthOf(box), heightOf(box), bytes.data())) return false;
    const std::uint8_t* from = bytes.data();
    for (std::int64_t y = box.top; y < box.bottom; ++y)
        for (std::int64_t x = box.left; x < box.right; ++x, ++from)
            if (*from != 0) mask[y * width + x] = covered(mask[y * width + x], *from);
    return true;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
