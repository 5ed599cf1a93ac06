// The bridge to GDI+: what the component has the system draw, load and save. It works on pixels and bytes alone; what
// they mean to an image is the affair of those who ask. Where GDI+ is not there, or does not do something right, the
// bridge answers false, and the component does it by itself.
#pragma once
#include "gdiplus/Session.h"
#include "platform/handle.h"
#include "shared/PixelView.h"
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace pixkit {

// A picture to be drawn over a rectangle.
struct GdiplusDrawing {
    ConstPixelView pixels = {}; // all of them are drawn; premultiplied
    // The pixels that are drawn on, with their alpha, which share no memory with those that are drawn; or, without any,
    // a device context.
    PixelView host = {};
    platform::Handle destinationDC = 0;
    Rect destination = {};
    bool HighQuality = false; // other sizes and angles interpolate
    float Angle = 0;          // degrees clockwise about the destination's centre
    std::uint8_t globalAlpha = 255;
};

// GDI+ is started when a bridge first needs it and not ended before the bridge.
class cGDIPlus {
  public:
    // Whether GDI+ can be started here. With KeepToken it is started for the caller, who is given the token of that.
    static bool isGDIplusOk(std::int32_t* Token = nullptr, bool KeepToken = false) noexcept;
    // Starts GDI+ for the caller, or ends what such a token stands for. False for a token that is not out.
    static bool InitializeGDIplus(std::int32_t& Token, bool ShutDown = false) noexcept;

    // Reads the data of a picture of any kind that GDI+ knows; of several pictures it is the first. `makePixels` is
    // asked for the place of an image of its size, bottom-up, and may have none; it is filled with straight pixels.
    // False when it was not, or not wholly.
    using MakePixels = std::function<PixelView(std::int32_t width, std::int32_t height)>;
    bool GDIplusLoadPNG(std::span<const std::uint8_t> Stream, const MakePixels& makePixels) noexcept;

    // Whether GDI+ draws right what a drawing asks for, whatever its pixels show.
    bool canRender(const GdiplusDrawing& drawing) noexcept;
    // Draws, and nothing outside of the destination but what the turned rectangle covers. False without canRender(),
    // for pixels that share memory with the host's, and when a call fails, of which nothing has been drawn but where
    // the last of them, the drawing itself, fails half-way.
    bool RenderGDIplus(const GdiplusDrawing& drawing) noexcept;

    // The bytes of a PNG file; none on failure. Pixels are premultiplied.
    std::vector<std::uint8_t> SaveToPNG(ConstPixelView pixels) noexcept;
    // Whether the encoder of JPEG files heeds the quality.
    bool canSaveJPG() noexcept;
    // The bytes of a JPEG file at a quality of 1 to 100. Alpha is not looked at. None on failure, and without
    // canSaveJPG().
    std::vector<std::uint8_t> SaveToJPG(ConstPixelView pixels, std::int32_t Quality) noexcept;

  private:
    bool start() noexcept;

    std::shared_ptr<const GdiplusSession> m_session;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
