// Icons without a window system: copies of their bitmaps.
#include "platform/icons.h"
#include "platform/faults.h"
#include "platform/portable/gdi/IconObjects.h"
#include <cstring>
#include <new>
#include <utility>

namespace pixkit::platform {

namespace {

HandleTable<Icon>& icons() noexcept {
    static NeverDestroyed<HandleTable<Icon>> instance(HandleKind::icon);
    return instance.value;
}

// Null without memory.
std::unique_ptr<Bitmap> copyOf(const Bitmap& bitmap) {
    const std::size_t bytes = bitmap.stride * bitmap.height;
    auto copy = std::make_unique<Bitmap>(bytes);
    if (copy->pixels.data() == nullptr) return nullptr;
    std::memcpy(copy->pixels.data(), bitmap.pixels.data(), bytes);
    copy->width = bitmap.width;
    copy->height = bitmap.height;
    copy->stride = bitmap.stride;
    copy->bitCount = bitmap.bitCount;
    copy->topDown = bitmap.topDown;
    copy->isMonochrome = bitmap.isMonochrome;
    if (bitmap.colors) copy->colors = std::make_unique<ColorTable>(*bitmap.colors);
    return copy;
}

} // namespace

std::shared_ptr<const Icon> findIcon(Handle icon) noexcept {
    return icons().find(icon);
}

bool GetIconInfo(Handle icon, IconInfo& info) noexcept {
    const auto object = icons().find(icon);
    if (!object || faultDue(SeamCall::getIconInfo)) return false;
    IconInfo found = object->info;
    found.hbmMask = found.hbmColor = 0;
    try {
        if (auto mask = copyOf(*object->mask)) found.hbmMask = addBitmap(std::move(mask));
        if (object->color) {
            if (auto color = copyOf(*object->color)) found.hbmColor = addBitmap(std::move(color));
        }
    } catch (const std::bad_alloc&) {
        // what is missing is seen below
    }
    if (found.hbmMask == 0 || (object->color && found.hbmColor == 0)) {
        DeleteObject(found.hbmMask);
        DeleteObject(found.hbmColor);
        return false;
    }
    info = found;
    return true;
}

Handle CreateIconIndirect(const IconInfo& info) noexcept {
    const ObjectRef mask = findObject(info.hbmMask, ObjectType::bitmap);
    const ObjectRef color = findObject(info.hbmColor, ObjectType::bitmap);
    if (!mask || (info.hbmColor != 0 && !color) || faultDue(SeamCall::createIconIndirect)) return 0;
    try {
        auto icon = std::make_shared<Icon>();
        icon->info = info;
        icon->mask = copyOf(*mask->bitmap);
        if (color) icon->color = copyOf(*color->bitmap);
        if (!icon->mask || (color && !icon->color)) return 0;
        if (info.fIcon) {
            icon->info.xHotspot = static_cast<std::uint32_t>(icon->width() / 2);
            icon->info.yHotspot = static_cast<std::uint32_t>(icon->height() / 2);
        }
        return icons().add(std::move(icon));
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

bool DestroyIcon(Handle icon) noexcept {
    return icons().remove(icon) != nullptr;
}

Handle CreateMonochromeBitmap(std::int32_t width, std::int32_t height, const std::uint8_t* bits) noexcept {
    if (width <= 0 || height <= 0 || faultDue(SeamCall::createMonochromeBitmap)) return 0;
    const auto columns = static_cast<std::size_t>(width);
    const auto rows = static_cast<std::size_t>(height);
    const std::size_t sourceStride = (columns + 15) / 16 * 2;
    try {
        // Kept with 8 bits a pixel, which everything that draws understands.
        const auto stride = static_cast<std::size_t>(paddedRowBytes(columns, 8));
        auto bitmap = std::make_unique<Bitmap>(CheckedSize(stride) * rows);
        if (bitmap->pixels.data() == nullptr) return 0;
        bitmap->width = columns;
        bitmap->height = rows;
        bitmap->stride = stride;
        bitmap->bitCount = 8;
        bitmap->topDown = true;
        bitmap->isMonochrome = true;
        bitmap->colors = std::make_unique<ColorTable>();
        bitmap->colors->at(1) = 0xFFFFFF;
        for (std::size_t y = 0; y < rows && bits != nullptr; ++y)
            for (std::size_t x = 0; x < columns; ++x)
                bitmap->pixels.data()[y * stride + x] = bits[y * sourceStride + x / 8] >> (7 - x % 8) & 1;
        return addBitmap(std::move(bitmap));
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
