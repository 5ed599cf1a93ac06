// System pictures that hold an icon or cursor of the portable side.
#pragma once
#include "platform/pictures.h"
#include "platform/portable/gdi/IconObjects.h"

namespace pixkit::platform {

class IconPicture final : public StdPicture {
  public:
    // Destroys the icon at its end when `own` is true.
    IconPicture(Handle icon, bool own) noexcept : m_icon(icon), m_own(own) {}
    ~IconPicture() override {
        if (m_own) DestroyIcon(m_icon);
    }

    PictureType Type() const noexcept override { return PictureType::icon; }
    Handle handle() const noexcept override { return m_icon; }
    std::int32_t Width() const noexcept override;
    std::int32_t Height() const noexcept override;
    // Blends where the colours have alpha; else the mask lets the target through, and what has a colour there inverts
    // it. Stretches as BitmapPicture does. Pixels that cover the target entirely become opaque.
    bool Render(Handle dc, std::int32_t x, std::int32_t y, std::int32_t width,
                std::int32_t height) const noexcept override;

  private:
    Handle m_icon;
    bool m_own;
};

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
