#include "platform/portable/pictures/BitmapPicture.h"
#include "platform/faults.h"
#include "platform/portable/gdi/GdiObjects.h"
#include "platform/portable/gdi/StretchAxis.h"
#include <cstring>
#include <new>
#include <vector>

namespace pixkit::platform {

namespace {

void drawStretched(const Bitmap& source, const Bitmap& target, const StretchAxis& across, const StretchAxis& down) {
    const std::size_t count = across.visible();
    if (count == 0 || down.visible() == 0) return;
    const std::size_t step = target.bitCount / 8U;
    const auto firstColumn = static_cast<std::size_t>(across.first);
    const bool unstretched = across.length == static_cast<std::int64_t>(across.source);
    // A whole row before it is stretched; that of the other bitmap may be as large as memory with fewer bytes a pixel.
    std::vector<std::uint8_t> line(unstretched ? 0 : (CheckedSize(source.width) * step).inMemory());
    for (std::int64_t y = down.first; y < down.last; ++y) {
        const std::uint8_t* const from = source.rowFromTop(down.sourceOf(y));
        std::uint8_t* const to = target.rowFromTop(static_cast<std::size_t>(y)) + firstColumn * step;
        if (unstretched) {
            const std::size_t skipped = across.sourceOf(across.first);
            convertRow(source, from + skipped * (source.bitCount / 8U), to, target.bitCount, count);
            continue;
        }
        convertRow(source, from, line.data(), target.bitCount, source.width);
        for (std::size_t x = 0; x < count; ++x)
            std::memcpy(to + x * step, &line[across.sourceOf(across.first + static_cast<std::int64_t>(x)) * step],
                        step);
    }
}

} // namespace

bool BitmapPicture::Render(Handle dc, std::int32_t x, std::int32_t y, std::int32_t width,
                           std::int32_t height) const noexcept {
    if (width <= 0 || height <= 0 || faultDue(SeamCall::renderPicture)) return false;
    const ObjectRef source = findObject(m_bitmap, ObjectType::bitmap);
    const ObjectRef target = findSelectedBitmap(dc);
    if (!source || !target || target->bitmap->bitCount == 8) return false;
    if (source->bitmap->selectedInto != 0) return true; // as the system says, which then draws nothing
    const Bitmap& from = *source->bitmap;
    const Bitmap& to = *target->bitmap;
    try {
        drawStretched(from, to, StretchAxis(x, width, from.width, to.width),
                      StretchAxis(y, height, from.height, to.height));
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
