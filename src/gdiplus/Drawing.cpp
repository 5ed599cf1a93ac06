#include "gdiplus/Drawing.h"
#include "gdiplus/Objects.h"
#include <limits>

namespace pixkit {

namespace {

using platform::GdiplusApi;

platform::Rect edges(const Rect& rect) noexcept {
    const auto edge = [](std::int64_t value) { return static_cast<std::int32_t>(value); };
    return {edge(rect.left), edge(rect.top), edge(rect.right), edge(rect.bottom)};
}

// What the picture is drawn with: no fading at its edges, which are where they are, and the opacity.
bool prepareAttributes(const GdiplusApi& api, GdiplusAttributes& attributes, std::uint8_t globalAlpha) {
    if (!succeeded(api.GdipCreateImageAttributes, attributes.receive()) ||
        !succeeded(api.GdipSetImageAttributesWrapMode, attributes.get(), platform::GpWrapMode::tileFlipXY))
        return false;
    if (globalAlpha == 255) return true;
    platform::GpColorMatrix matrix{};
    for (std::size_t i = 0; i < matrix.size(); ++i)
        matrix[i][i] = 1.0F;
    matrix[3][3] = static_cast<float>(globalAlpha) / 255.0F;
    return succeeded(api.GdipSetImageAttributesColorMatrix, attributes.get(), matrix);
}

bool prepareGraphics(const GdiplusApi& api, platform::GpGraphics* graphics, const GdiplusDrawing& drawing) {
    const auto mode = drawing.HighQuality ? platform::GpInterpolationMode::highQualityBicubic
                                          : platform::GpInterpolationMode::nearestNeighbor;
    if (!succeeded(api.GdipSetInterpolationMode, graphics, mode) ||
        !succeeded(api.GdipSetPixelOffsetMode, graphics, platform::GpPixelOffsetMode::half))
        return false;
    const Rect& to = drawing.destination;
    if (drawing.Angle == 0.0F) return succeeded(api.GdipSetClipRectI, graphics, edges(to));
    const auto centreX = static_cast<float>(static_cast<double>(to.left + to.right) / 2.0);
    const auto centreY = static_cast<float>(static_cast<double>(to.top + to.bottom) / 2.0);
    return succeeded(api.GdipTranslateWorldTransform, graphics, centreX, centreY) &&
           succeeded(api.GdipRotateWorldTransform, graphics, drawing.Angle) &&
           succeeded(api.GdipTranslateWorldTransform, graphics, -centreX, -centreY);
}

} // namespace

bool drawByGdiplus(const GdiplusApi& api, const GdiplusDrawing& drawing) noexcept {
    constexpr auto format = platform::GpPixelFormat::pargb32;
    GdiplusImage image(api);
    GdiplusImage target(api);
    GdiplusAttributes attributes(api);
    GdiplusGraphics graphics(api); // goes before the image that it draws on
    if (!succeeded(api.GdipCreateBitmapFromScan0, scanOf(drawing.pixels, format), image.receive())) return false;
    if (drawing.host) {
        if (!succeeded(api.GdipCreateBitmapFromScan0, scanOf(drawing.host, format), target.receive()) ||
            !succeeded(api.GdipGetImageGraphicsContext, target.get(), graphics.receive()))
            return false;
    } else if (!succeeded(api.GdipCreateFromHDC, drawing.destinationDC, graphics.receive())) {
        return false;
    }
    if (!prepareGraphics(api, graphics.get(), drawing) || !prepareAttributes(api, attributes, drawing.globalAlpha) ||
        !succeeded(api.GdipDrawImageRectRectI, graphics.get(), image.get(), edges(drawing.destination),
                   edges(drawing.pixels.rect()), attributes.get()))
        return false;
    api.GdipFlush(graphics.get()); // drawn it is in any case
    return true;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
