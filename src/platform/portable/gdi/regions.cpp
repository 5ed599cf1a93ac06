// Regions without a window system: lists of rectangles.
#include "platform/regions.h"
#include "platform/faults.h"
#include "platform/portable/gdi/GdiObjects.h"
#include <algorithm>
#include <new>
#include <utility>

namespace pixkit::platform {

Handle ExtCreateRegion(std::span<const Rect> rectangles) noexcept {
    if (faultDue(SeamCall::extCreateRegion)) return 0;
    try {
        auto object = std::make_shared<GdiObject>();
        object->type = ObjectType::region;
        object->rectangles.assign(rectangles.begin(), rectangles.end());
        return gdi().objects.add(std::move(object));
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

std::size_t GetRegionData(Handle region, std::span<Rect> rectangles) noexcept {
    const ObjectRef object = findObject(region, ObjectType::region);
    if (!object || faultDue(SeamCall::getRegionData)) return 0;
    if (rectangles.size() >= object->rectangles.size())
        std::copy(object->rectangles.begin(), object->rectangles.end(), rectangles.begin());
    return object->rectangles.size();
}

RegionKind GetRgnBox(Handle region, Rect& box) noexcept {
    const ObjectRef object = findObject(region, ObjectType::region);
    if (!object) return RegionKind::error;
    const auto& all = object->rectangles;
    box = all.empty() ? Rect() : Rect{all[0].left, all[0].top, all[0].right, all.back().bottom};
    for (const Rect& rectangle : all) {
        box.left = std::min(box.left, rectangle.left);
        box.right = std::max(box.right, rectangle.right);
    }
    return all.size() > 1 ? RegionKind::complex : all.empty() ? RegionKind::empty : RegionKind::simple;
}

bool PtInRegion(Handle region, std::int32_t x, std::int32_t y) noexcept {
    const ObjectRef object = findObject(region, ObjectType::region);
    if (!object) return false;
    const auto& all = object->rectangles;
    const auto found = std::partition_point(all.begin(), all.end(), [x, y](const Rect& rectangle) {
        return rectangle.bottom <= y || (rectangle.top <= y && rectangle.right <= x);
    });
    return found != all.end() && found->top <= y && found->left <= x;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
