// System pictures that hold a bitmap of the portable side.
#pragma once
#include "platform/gdi.h"
#include "platform/pictures.h"

namespace pixkit::platform {

class BitmapPicture final : public StdPicture {
  public:
    // Frees the bitmap at its end when `own` is true.
    BitmapPicture(Handle bitmap, bool own) noexcept : m_bitmap(bitmap), m_own(own) {}
    ~BitmapPicture() override {
        if (m_own) DeleteObject(m_bitmap);
    }

    PictureType Type() const noexcept override { return PictureType::bitmap; }
    Handle handle() const noexcept override { return m_bitmap; }
    std::int32_t Width() const noexcept override { return record().bmWidth; }
    std::int32_t Height() const noexcept override { return record().bmHeight; }
    // Stretches by taking for each pixel the one that lies at its upper left corner.
    bool Render(Handle dc, std::int32_t x, std::int32_t y, std::int32_t width,
                std::int32_t height) const noexcept override;

  private:
    BitmapRecord record() const noexcept {
        BitmapRecord found;
        GetObjectA(m_bitmap, found);
        return found;
    }

    Handle m_bitmap;
    bool m_own;
};

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
