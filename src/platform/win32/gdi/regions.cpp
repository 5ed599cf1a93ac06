#include "platform/regions.h"
#include "platform/faults.h"
#include <algorithm>
#include <new>
#include <utility>
#include <vector>
#include <windows.h>

namespace pixkit::platform {

namespace {

static_assert(sizeof(Rect) == sizeof(RECT) && sizeof(RGNDATAHEADER) == 2 * sizeof(Rect));

HRGN native(Handle region) noexcept {
    return reinterpret_cast<HRGN>(region);
}

// Some systems take time that grows with the square of the rectangles in a call, and some no more than a few thousand.
// 400,000 rectangles take 80 ms in blocks of 16 to 50, 140 in blocks of 100.
constexpr std::size_t blockSize = 32;

// RGNDATA
struct Block {
    RGNDATAHEADER header;
    Rect rectangles[blockSize];
};

// At most a block of rectangles, and one at least.
UniqueRegion createBlock(std::span<const Rect> rectangles) noexcept {
    if (faultDue(SeamCall::extCreateRegion)) return {};
    const auto count = static_cast<DWORD>(rectangles.size());
    const auto bytes = static_cast<DWORD>(rectangles.size_bytes());
    const RECT bounds = {std::ranges::min(rectangles, {}, &Rect::left).left, rectangles.front().top,
                         std::ranges::max(rectangles, {}, &Rect::right).right, rectangles.back().bottom};
    Block block;
    block.header = {sizeof(RGNDATAHEADER), RDH_RECTANGLES, count, bytes, bounds};
    std::ranges::copy(rectangles, block.rectangles);
    return UniqueRegion(reinterpret_cast<Handle>(::ExtCreateRegion(
        nullptr, static_cast<DWORD>(sizeof(RGNDATAHEADER)) + bytes, reinterpret_cast<const RGNDATA*>(&block))));
}

// Halves of halves are united, so that nobody unites a large region with a small one time and again, and only as many
// regions exist at once as the number can be halved: a process may have some thousands.
UniqueRegion createRegion(std::span<const Rect> rectangles) noexcept {
    if (rectangles.size() <= blockSize) return createBlock(rectangles);
    const std::size_t half = rectangles.size() / 2;
    UniqueRegion upper = createRegion(rectangles.first(half));
    if (!upper) return {};
    const UniqueRegion lower = createRegion(rectangles.subspan(half));
    if (!lower || faultDue(SeamCall::combineRgn)) return {};
    const int kind = ::CombineRgn(native(upper.get()), native(upper.get()), native(lower.get()), RGN_OR);
    return kind == ERROR ? UniqueRegion() : std::move(upper);
}

} // namespace

Handle ExtCreateRegion(std::span<const Rect> rectangles) noexcept {
    if (!rectangles.empty()) return createRegion(rectangles).release();
    if (faultDue(SeamCall::extCreateRegion)) return 0;
    return reinterpret_cast<Handle>(::CreateRectRgn(0, 0, 0, 0));
}

std::size_t GetRegionData(Handle region, std::span<Rect> rectangles) noexcept {
    const DWORD bytes = faultDue(SeamCall::getRegionData) ? 0 : ::GetRegionData(native(region), 0, nullptr);
    if (bytes < sizeof(RGNDATAHEADER)) return 0;
    const std::size_t count = (bytes - sizeof(RGNDATAHEADER)) / sizeof(Rect);
    if (count == 0 || rectangles.size() < count) return count;
    try {
        std::vector<Rect> data(count + 2); // two in the place of the header
        if (faultDue(SeamCall::getRegionData) ||
            ::GetRegionData(native(region), bytes, reinterpret_cast<RGNDATA*>(data.data())) == 0)
            return 0;
        std::copy(data.begin() + 2, data.end(), rectangles.begin());
        return count;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

RegionKind GetRgnBox(Handle region, Rect& box) noexcept {
    RECT nativeBox{};
    const int kind = ::GetRgnBox(native(region), &nativeBox);
    if (kind == ERROR) return RegionKind::error;
    box = {nativeBox.left, nativeBox.top, nativeBox.right, nativeBox.bottom};
    return static_cast<RegionKind>(kind);
}

bool PtInRegion(Handle region, std::int32_t x, std::int32_t y) noexcept {
    return ::PtInRegion(native(region), x, y) != FALSE;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
