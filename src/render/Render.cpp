// Drawing: puts the arguments in order and chooses between the system's AlphaBlend and the software path.
#include "diagnostics/guard.h"
#include "platform/gdi.h"
#include "render/Blender.h"
#include "render/PixelWorkers.h"
#include "render/Resampler.h"
#include "render/Rotator.h"
#include "shared/checked.h"
#include "surface/Capabilities.h"
#include "surface/HostAccess.h"
#include "surface/cPixSheet.h"
#include <cmath>
#include <stdexcept>
#include <utility>

namespace pixkit {

// What one call asks for. At first the caller's arguments; normalise() brings them into order.
struct RenderRequest {
    platform::Handle destinationDC;
    std::int32_t destX, destY, destWidth, destHeight;
    std::int32_t SrcX, SrcY, srcWidth, srcHeight;
    std::int32_t Opacity;
    bool SetHalfTone;
    cPixSheet* destHostDIB;
    std::int32_t grayScale;
    float LightAdjustment;
    float Angle;
    bool CenterOnDestXY;

    void normalise(std::int32_t imageWidth, std::int32_t imageHeight);

    bool isRotating() const;
    // A width can only be 0 where an image has none.
    bool isMirroring() const noexcept { return destWidth <= 0 || destHeight < 0; }
    bool isStretching() const;
    std::int32_t globalAlpha() const noexcept { return Opacity * 255 / 100; }
};

namespace {

std::int32_t absoluteOrOverflow(std::int32_t value) {
    return longOrOverflow(std::abs(std::int64_t{value}));
}

// One axis of the source rectangle and of the size that it is drawn at.
void normaliseAxis(std::int32_t& from, std::int32_t& size, std::int32_t& destSize, std::int32_t imageSize) {
    if (destSize == 0) destSize = imageSize;
    if (from < 0) from = 0; // moved, not cut: the size stays
    if (size == 0) size = imageSize;
    if (size < 0) { // asks for a mirrored picture
        size = absoluteOrOverflow(size);
        destSize = longOrOverflow(-std::int64_t{destSize});
    }
    if (longOrOverflow(std::int64_t{from} + size) > imageSize) size = imageSize - from;
}

// Takes the host out of its device context after drawing, whichever way it was drawn: also when it was selected
// before, so that callers do not depend on the way.
class HostRelease {
  public:
    explicit HostRelease(cPixSheet* host) noexcept : m_host(host) {}
    ~HostRelease() {
        if (m_host != nullptr) m_host->LoadDIBinDC(false);
    }
    HostRelease(const HostRelease&) = delete;
    HostRelease& operator=(const HostRelease&) = delete;

  private:
    cPixSheet* m_host;
};

} // namespace

void RenderRequest::normalise(std::int32_t imageWidth, std::int32_t imageHeight) {
    normaliseAxis(SrcX, srcWidth, destWidth, imageWidth);
    normaliseAxis(SrcY, srcHeight, destHeight, imageHeight);
    Opacity %= 100; // above 100 it starts again: 150 draws at 50, 200 at 100
    if (Opacity == 0) Opacity = 100;
    // Out of range it is ignored, not held at the limit; the negated test catches a NaN as well.
    if (!(LightAdjustment >= -100.0F && LightAdjustment <= 100.0F)) LightAdjustment = 0;
    if (CenterOnDestXY) {
        destX = longOrOverflow(std::int64_t{destX} - absoluteOrOverflow(destWidth) / 2);
        destY = longOrOverflow(std::int64_t{destY} - absoluteOrOverflow(destHeight) / 2);
    }
}

bool RenderRequest::isRotating() const {
    if (!std::isfinite(Angle)) throw std::domain_error("the angle is no number");
    if (Angle != std::trunc(Angle)) return true;
    constexpr float beyondLong = 0x1p31F;
    if (Angle >= beyondLong || Angle < -beyondLong) throw std::overflow_error("overflow");
    return static_cast<std::int32_t>(Angle) % 360 != 0;
}

bool RenderRequest::isStretching() const {
    return absoluteOrOverflow(destWidth) != srcWidth || absoluteOrOverflow(destHeight) != srcHeight;
}

// `Blend` has no effect: callers pass true, and false draws the same.
bool cPixSheet::Render(std::intptr_t destinationDC, std::int32_t destX, std::int32_t destY, std::int32_t destWidth,
                       std::int32_t destHeight, std::int32_t SrcX, std::int32_t SrcY, std::int32_t srcWidth,
                       std::int32_t srcHeight, std::int32_t Opacity, bool /*Blend*/, bool SetHalfTone,
                       cPixSheet* destHostDIB, std::int32_t grayScale, float LightAdjustment, float Angle,
                       bool CenterOnDestXY) noexcept {
    if (Opacity < 1) return m_Handle != 0; // nothing to draw, which succeeds
    if (m_Handle == 0 || (destinationDC == 0 && destHostDIB == nullptr)) return false;
    return guarded("Render", false, [&] {
        RenderRequest request{destinationDC, destX,           destY,     destWidth,     destHeight,  SrcX,
                              SrcY,          srcWidth,        srcHeight, Opacity,       SetHalfTone, destHostDIB,
                              grayScale,     LightAdjustment, Angle,     CenterOnDestXY};
        request.normalise(m_Width, m_Height);
        if (request.srcWidth < 1 || request.srcHeight < 1) return false; // it starts behind the image
        const bool isRotating = request.isRotating();
        const HostRelease release(destHostDIB);
        if (isRotating) {
            return spt_RotateImage(HostAccess::pixels(std::as_const(*this)), m_StretchQuality, request.destinationDC,
                                   request.Angle, request.destX, request.destY, request.destWidth, request.destHeight,
                                   request.SrcX, request.SrcY, request.srcWidth, request.srcHeight, request.Opacity,
                                   request.destHostDIB, request.grayScale, request.LightAdjustment);
        }
        return pvCanUseAlphaBlend(request) ? pvAlphaBlend(request) : pvRenderInSoftware(request);
    });
}

bool cPixSheet::pvCanUseAlphaBlend(const RenderRequest& request) const {
    const bool isStretching = request.isStretching();
    if (m_KeepGDIplusActive || (isGDIplusEnabled() && m_GDItoken != 0)) return false;
    if (!isAlphaBlendFriendly() || request.isMirroring() || request.grayScale != gsclNone) return false;
    if (request.LightAdjustment != 0.0F) return false;
    // The system refuses to draw a picture over itself.
    if (request.destHostDIB == this) return false;
    return !isStretching || !m_StretchQuality;
}

bool cPixSheet::pvAlphaBlend(const RenderRequest& request) {
    // The image has to be in a device context of its own; what was made for that goes afterwards.
    const bool isTemporaryDC = m_hDC == 0;
    if (isTemporaryDC) m_hDC = platform::CreateCompatibleDC(platform::ScreenDC().get());
    const platform::Handle hOldImage = m_prevDCobject == 0 ? platform::SelectObject(m_hDC, m_Handle) : 0;
    bool isDrawn = false;
    if (m_prevDCobject != 0 || hOldImage != 0) {
        const platform::Handle destination =
            request.destHostDIB != nullptr ? request.destHostDIB->LoadDIBinDC(true) : request.destinationDC;
        const bool setsMode = request.SetHalfTone && (m_osCAP & capNtFamily) != 0;
        const auto lStretchMode = setsMode ? platform::SetStretchBltMode(destination, platform::StretchMode::halftone)
                                           : platform::StretchMode::none;
        const platform::BlendFunction lBlendFunc = {
            .SourceConstantAlpha = static_cast<std::uint8_t>(request.globalAlpha()),
            .AlphaFormat = static_cast<std::uint8_t>(m_AlphaImage != AlphaNone)};
        isDrawn =
            platform::AlphaBlend(destination, request.destX, request.destY, request.destWidth, request.destHeight,
                                 m_hDC, request.SrcX, request.SrcY, request.srcWidth, request.srcHeight, lBlendFunc);
        if (lStretchMode != platform::StretchMode::none) platform::SetStretchBltMode(destination, lStretchMode);
    }
    if (hOldImage != 0) platform::SelectObject(m_hDC, hOldImage);
    if (isTemporaryDC && m_hDC != 0) {
        platform::DeleteDC(m_hDC);
        m_hDC = 0;
    }
    return isDrawn;
}

bool cPixSheet::pvRenderInSoftware(RenderRequest request) const {
    const auto limits = spt_DestinationLimits(request.destinationDC, request.destHostDIB);
    if (!limits) return false;
    const bool isStretching = request.isStretching();
    const bool isMirroring = request.isMirroring();
    const std::int32_t destWidth = absoluteOrOverflow(request.destWidth);
    const std::int32_t destHeight = absoluteOrOverflow(request.destHeight);
    const PixelRect visible = PixelRect{request.destX, request.destY, std::int64_t{request.destX} + destWidth,
                                        std::int64_t{request.destY} + destHeight}
                                  .cut(*limits);
    if (visible.isEmpty()) return true;

    platform::GdiFlush();
    ConstPixelView source = HostAccess::pixels(*this);
    PixelBuffer aMirrorBytes;
    if (isMirroring) {
        aMirrorBytes =
            PixelBuffer(static_cast<std::size_t>(request.srcWidth), static_cast<std::size_t>(request.srcHeight));
        MirrorRequest mirror{request.SrcX,      request.SrcY,      request.srcWidth,
                             request.srcHeight, request.destWidth, request.destHeight};
        spt_MirrorDIB(mirror, aMirrorBytes.view(), source);
        source = aMirrorBytes.view();
        request.SrcX = 0;
        request.SrcY = 0;
        request.destWidth = mirror.newWidth;
        request.destHeight = mirror.newHeight;
    }
    PixelBuffer aResizedBytes;
    if (isStretching) {
        const VisiblePart part{static_cast<std::int32_t>(visible.left), static_cast<std::int32_t>(visible.top),
                               static_cast<std::int32_t>(visible.right), static_cast<std::int32_t>(visible.bottom)};
        if (!spt_pvResize(aResizedBytes, source, request.SrcX, request.SrcY, request.srcWidth, request.srcHeight,
                          request.destX, request.destY, request.destWidth, request.destHeight, m_StretchQuality, part))
            return false;
        source = aResizedBytes.view();
        request.SrcX = 0;
        request.SrcY = 0;
    }
    return spt_Win9xBlend(request.destinationDC, source, request.SrcX, request.SrcY, request.destX, request.destY,
                          request.destWidth, request.destHeight, request.globalAlpha(), request.destHostDIB,
                          request.grayScale, request.LightAdjustment);
}

bool cPixSheet::RenderDropShadow_JIT(std::intptr_t hDC, std::int32_t x, std::int32_t y, std::int32_t blurDepth,
                                     std::int32_t Color, std::int32_t Opacity, float LightAdjustment,
                                     cPixSheet* destHostDIB) noexcept {
    const auto shadow = CreateDropShadow(blurDepth, Color);
    return shadow &&
           shadow->Render(hDC, x, y, 0, 0, 0, 0, 0, 0, Opacity, true, true, destHostDIB, gsclNone, LightAdjustment);
}

// Without GDI+ there is nothing to start, and no token that somebody could hold.
std::int32_t cPixSheet::CreateGDIplusToken() noexcept {
    return 0;
}

bool cPixSheet::DestroyGDIplusToken(std::int32_t /*Token*/) noexcept {
    return false;
}

} // namespace pixkit
