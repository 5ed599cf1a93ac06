// Memory bitmaps and memory device contexts without a window system.
#include "platform/gdi.h"
#include "platform/faults.h"
#include "platform/portable/gdi/GdiObjects.h"
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

namespace pixkit::platform {

namespace {

Handle addObject(ObjectType type, std::unique_ptr<Bitmap> bitmap, Handle selected) {
    auto object = std::make_shared<GdiObject>();
    object->type = type;
    object->bitmap = std::move(bitmap);
    object->selected = selected;
    return gdi().objects.add(std::move(object));
}

Handle addBitmap(const BitmapInfoHeader& header, void** bits, const ColorTable* colors) {
    const auto width = static_cast<std::size_t>(header.biWidth);
    const auto height = static_cast<std::size_t>(rowsOf(header));
    const auto stride = static_cast<std::size_t>(paddedRowBytes(width, header.biBitCount)); // isSupported() saw to it
    auto bitmap = std::make_unique<Bitmap>(CheckedSize(stride) * height);
    std::uint8_t* const pixels = bitmap->pixels.data();
    if (pixels == nullptr) return 0;
    bitmap->width = width;
    bitmap->height = height;
    bitmap->stride = stride;
    bitmap->bitCount = header.biBitCount;
    bitmap->topDown = header.biHeight < 0;
    if (header.biBitCount == 8) {
        bitmap->colors = std::make_unique<ColorTable>(*colors);
        for (std::uint32_t& color : *bitmap->colors)
            reinterpret_cast<std::uint8_t*>(&color)[3] = 0; // no alpha, whatever the caller left there
    }
    const Handle handle = addObject(ObjectType::bitmap, std::move(bitmap), 0);
    if (handle != 0 && bits != nullptr) *bits = pixels;
    return handle;
}

// The functions that take the `selection` mutex hand dying objects out, so that big memory is freed outside of it.

// A bitmap has left its device context. Returns it when it was condemned and dies now.
ObjectRef bitmapWasDeselected(Handle handle) noexcept {
    const ObjectRef object = findObject(handle, ObjectType::bitmap);
    if (!object) return nullptr;
    object->bitmap->selectedInto = 0;
    return object->bitmap->condemned ? gdi().objects.remove(handle) : nullptr;
}

} // namespace

Handle addBitmap(std::unique_ptr<Bitmap> bitmap) {
    return addObject(ObjectType::bitmap, std::move(bitmap), 0);
}

Gdi& gdi() noexcept {
    static NeverDestroyed<Gdi> instance;
    return instance.value;
}

bool isSupported(const BitmapInfoHeader& header, const ColorTable* colors) noexcept {
    constexpr std::uint32_t BI_RGB = 0;
    if (header.biSize != sizeof(BitmapInfoHeader) || header.biPlanes != 1 || header.biCompression != BI_RGB)
        return false;
    const auto bits = header.biBitCount;
    if (bits != 24 && bits != 32 && (bits != 8 || colors == nullptr)) return false;
    if (header.biWidth <= 0 || header.biHeight == 0) return false;
    const auto width = static_cast<std::uint64_t>(header.biWidth);
    return paddedRowBytes(width, header.biBitCount) * rowsOf(header) <= std::numeric_limits<std::uint32_t>::max();
}

ObjectRef findObject(Handle handle, ObjectType type) noexcept {
    ObjectRef object = gdi().objects.find(handle);
    return object && object->type == type ? object : nullptr;
}

ObjectRef findDC(Handle handle) noexcept {
    ObjectRef object = gdi().objects.find(handle);
    return object && (object->type == ObjectType::dc || object->type == ObjectType::memoryDC) ? object : nullptr;
}

ObjectRef findSelectedBitmap(Handle dc) noexcept {
    const std::scoped_lock lock(gdi().selection);
    const ObjectRef context = findObject(dc, ObjectType::memoryDC);
    // The stock bitmap is everybody's: what is drawn on it is seen by none.
    if (!context || context->selected == gdi().stockBitmap) return nullptr;
    return findObject(context->selected, ObjectType::bitmap);
}

void convertRow(std::uint16_t fromBits, const ColorTable* colors, const std::uint8_t* from, std::uint8_t* to,
                std::uint16_t toBits, std::size_t width) noexcept {
    const std::size_t toStep = toBits / 8U;
    if (fromBits == toBits) {
        std::memmove(to, from, width * toStep);
    } else if (fromBits == 8 && toBits == 32) {
        for (std::size_t x = 0; x < width; ++x)
            std::memcpy(to + x * 4, colors->data() + from[x], 4);
    } else {
        const auto* const entries = colors != nullptr ? reinterpret_cast<const std::uint8_t*>(colors->data()) : from;
        const std::size_t fromStep = fromBits / 8U;
        for (std::size_t x = 0; x < width; ++x) {
            std::memcpy(to + x * toStep, fromBits == 8 ? entries + from[x] * 4 : from + x * fromStep, 3);
            if (toStep == 4) to[x * toStep + 3] = 0; // as the system does: 24-bit pixels have no alpha to copy
        }
    }
}

Handle GetDC(Handle window) noexcept {
    if (window != 0 || faultDue(SeamCall::getDC)) return 0;
    try {
        return addObject(ObjectType::dc, nullptr, 0);
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

bool ReleaseDC(Handle window, Handle dc) noexcept {
    return window == 0 && findObject(dc, ObjectType::dc) && gdi().objects.remove(dc) != nullptr;
}

Handle CreateCompatibleDC(Handle dc) noexcept {
    if (dc != 0 && !findDC(dc)) return 0;
    if (faultDue(SeamCall::createCompatibleDC)) return 0;
    try {
        const std::scoped_lock lock(gdi().selection);
        if (gdi().stockBitmap == 0) {
            gdi().stockBitmap = addBitmap({.biWidth = 1, .biHeight = 1}, nullptr, nullptr);
            if (gdi().stockBitmap == 0) return 0;
            --openHandleCount; // it stays for good: nobody leaks it
        }
        return addObject(ObjectType::memoryDC, nullptr, gdi().stockBitmap);
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

bool DeleteDC(Handle dc) noexcept {
    ObjectRef bitmap;
    const std::scoped_lock lock(gdi().selection);
    const ObjectRef context = findObject(dc, ObjectType::memoryDC);
    if (!context) return false;
    if (context->selected != gdi().stockBitmap) bitmap = bitmapWasDeselected(context->selected);
    gdi().objects.remove(dc);
    return true;
}

Handle SelectObject(Handle dc, Handle object) noexcept {
    if (faultDue(SeamCall::selectObject)) return 0;
    ObjectRef dying;
    const std::scoped_lock lock(gdi().selection);
    const ObjectRef context = findObject(dc, ObjectType::memoryDC);
    const ObjectRef incoming = findObject(object, ObjectType::bitmap);
    if (!context || !incoming) return 0;
    const Handle before = context->selected;
    if (before == object) return before;
    if (incoming->bitmap->selectedInto != 0) return 0;
    context->selected = object;
    if (object != gdi().stockBitmap) incoming->bitmap->selectedInto = dc;
    if (before != gdi().stockBitmap) dying = bitmapWasDeselected(before);
    return before;
}

bool DeleteObject(Handle object) noexcept {
    if (findObject(object, ObjectType::memoryDC)) return DeleteDC(object);
    const ObjectType type = GetObjectType(object);
    if (type == ObjectType::region || type == ObjectType::font) return gdi().objects.remove(object) != nullptr;
    ObjectRef dying;
    const std::scoped_lock lock(gdi().selection);
    const ObjectRef bitmap = findObject(object, ObjectType::bitmap);
    if (!bitmap) return false;
    if (object == gdi().stockBitmap) return true; // the system says so too, and keeps it
    if (bitmap->bitmap->selectedInto != 0)
        bitmap->bitmap->condemned = true;
    else
        dying = gdi().objects.remove(object);
    return true;
}

ObjectType GetObjectType(Handle object) noexcept {
    const ObjectRef found = gdi().objects.find(object);
    return found ? found->type : ObjectType::none;
}

bool isSameObject(Handle first, Handle second) noexcept {
    return first == second;
}

Handle CreateDIBSection(Handle dc, const BitmapInfoHeader& header, void** bits, const ColorTable* colors) noexcept {
    if (bits != nullptr) *bits = nullptr;
    if (dc != 0 && !findDC(dc)) return 0;
    if (!isSupported(header, colors) || faultDue(SeamCall::createDIBSection)) return 0;
    try {
        return addBitmap(header, bits, colors);
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

int GetDIBits(Handle dc, Handle bitmap, std::uint32_t start, std::uint32_t lines, void* bits, BitmapInfoHeader& header,
              ColorTable* colors) noexcept {
    const ObjectRef object = findObject(bitmap, ObjectType::bitmap);
    if (!object || !findDC(dc) || bits == nullptr || !isSupported(header, colors)) return 0;
    if (faultDue(SeamCall::getDIBits)) return 0;
    const Bitmap& source = *object->bitmap;
    if (static_cast<std::size_t>(header.biWidth) != source.width || rowsOf(header) != source.height) return 0;
    if (start >= source.height || (header.biBitCount == 8 && (source.bitCount != 8 || source.isMonochrome))) return 0;

    const auto stride = static_cast<std::size_t>(paddedRowBytes(source.width, header.biBitCount));
    const std::size_t used = source.width * (header.biBitCount / 8U);
    const std::size_t count = std::min<std::size_t>(lines, source.height - start);
    const bool sameOrder = (header.biHeight < 0) == source.topDown;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t row = sameOrder ? start + i : source.height - 1 - start - i;
        std::uint8_t* const to = static_cast<std::uint8_t*>(bits) + i * stride;
        convertRow(source, source.pixels.data() + row * source.stride, to, header.biBitCount, source.width);
        std::memset(to + used, 0, stride - used);
    }
    if (header.biBitCount == 8) *colors = *source.colors;
    header.biSizeImage = static_cast<std::uint32_t>(stride * source.height);
    return static_cast<int>(count);
}

bool GetObjectA(Handle bitmap, BitmapRecord& record) noexcept {
    const ObjectRef object = findObject(bitmap, ObjectType::bitmap);
    if (!object || faultDue(SeamCall::getObject)) return false;
    const Bitmap& found = *object->bitmap;
    record = {static_cast<std::int32_t>(found.width), static_cast<std::int32_t>(found.height),
              found.isMonochrome ? std::uint16_t{1} : found.bitCount};
    return true;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
