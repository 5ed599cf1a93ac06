// Objects of GDI+ for the length of a scope.
#pragma once
#include "platform/gdiplus.h"
#include "shared/PixelView.h"

namespace pixkit {

// Owns one, which the library gives back by `Dispose`.
template <class Object, auto Dispose>
class GdiplusObject {
  public:
    explicit GdiplusObject(const platform::GdiplusApi& api) noexcept : m_api(api) {}
    ~GdiplusObject() {
        if (m_object != nullptr) (m_api.*Dispose)(m_object);
    }
    GdiplusObject(const GdiplusObject&) = delete;
    GdiplusObject& operator=(const GdiplusObject&) = delete;

    Object* get() const noexcept { return m_object; }
    Object*& receive() noexcept { return m_object; }

  private:
    const platform::GdiplusApi& m_api;
    Object* m_object = nullptr;
};

using GdiplusImage = GdiplusObject<platform::GpImage, &platform::GdiplusApi::GdipDisposeImage>;
using GdiplusGraphics = GdiplusObject<platform::GpGraphics, &platform::GdiplusApi::GdipDeleteGraphics>;
using GdiplusAttributes = GdiplusObject<platform::GpImageAttributes, &platform::GdiplusApi::GdipDisposeImageAttributes>;

// Pixels as GDI+ counts them, from the top. It writes into them only where it draws on them or copies into them.
inline platform::GpScan scanOf(ConstPixelView pixels, platform::GpPixelFormat format) noexcept {
    return {.width = static_cast<std::int32_t>(pixels.width),
            .height = static_cast<std::int32_t>(pixels.height),
            .stride = -static_cast<std::int32_t>(pixels.stride),
            .format = format,
            .scan0 = const_cast<std::uint8_t*>(pixels.rowFromTop(0))};
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
