// Drawing: puts the arguments in order and chooses between the system's AlphaBlend and the software path.
#include "gdiplus/cGDIPlus.h"
#include "platform/gdi.h"
#include "render/DrawJob.h"
#include "render/GdiplusPath.h"
#include "render/HostRelease.h"
#include "render/Rotator.h"
#include "shared/checked.h"
#include "surface/Capabilities.h"
#include "surface/attempt.h"
#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace pixkit {

namespace {

std::int32_t absoluteOrOverflow(std::int32_t value) {
    return longOrOverflow(std::abs(std::int64_t{value}));
}

// One axis of the source rectangle and of the destination.
struct Axis {
    std::int64_t from, size, destFrom, destSize;
    bool isMirrored;
};

// Brings a caller's arguments for one axis into order. A size below 1 says that the rectangle starts behind the image.
Axis inOrder(std::int32_t from, std::int32_t size, std::int32_t destFrom, std::int32_t destSize, std::int32_t imageSize,
             bool isCentred) {
    if (destSize == 0) destSize = imageSize;
    if (from < 0) from = 0; // moved, not cut: the size stays
    if (size == 0) size = imageSize;
    if (size < 0) { // asks for a mirrored picture
        size = absoluteOrOverflow(size);
        destSize = longOrOverflow(-std::int64_t{destSize});
    }
    if (longOrOverflow(std::int64_t{from} + size) > imageSize) size = imageSize - from;
    if (isCentred) destFrom = longOrOverflow(std::int64_t{destFrom} - absoluteOrOverflow(destSize) / 2);
    return {from, size, destFrom, std::abs(std::int64_t{destSize}), destSize < 0};
}

// Whole turns need no turning.
bool isRotating(float Angle) {
    if (!std::isfinite(Angle)) throw std::domain_error("the angle is no number");
    if (Angle != std::trunc(Angle)) return true;
    constexpr float beyondLong = 0x1p31F;
    if (Angle >= beyondLong || Angle < -beyondLong) throw std::overflow_error("a number that 32 bits do not hold");
    return static_cast<std::int32_t>(Angle) % 360 != 0;
}

} // namespace

// `Blend` has no effect: callers pass true, and false draws the same.
bool cPixSheet::Render(std::intptr_t destinationDC, std::int32_t destX, std::int32_t destY, std::int32_t destWidth,
                       std::int32_t destHeight, std::int32_t SrcX, std::int32_t SrcY, std::int32_t srcWidth,
                       std::int32_t srcHeight, std::int32_t Opacity, bool /*Blend*/, bool SetHalfTone,
                       cPixSheet* destHostDIB, std::int32_t grayScale, float LightAdjustment, float Angle,
                       bool CenterOnDestXY) noexcept {
    const Call call(*this, "Render",
                    "destinationDC, destX, destY, destWidth, destHeight, SrcX, SrcY, srcWidth, srcHeight, Opacity, "
                    "SetHalfTone, destHostDIB, grayScale, LightAdjustment, Angle, CenterOnDestXY",
                    destinationDC, destX, destY, destWidth, destHeight, SrcX, SrcY, srcWidth, srcHeight, Opacity,
                    SetHalfTone, destHostDIB, grayScale, LightAdjustment, Angle, CenterOnDestXY);
    return attempt(call, [&] {
        if (state().m_Handle == 0) return refused(noImage);
        if (Opacity < 1) return done(); // nothing to draw
        if (destinationDC == 0 && destHostDIB == nullptr) return refused("there is nothing to draw on");
        if (destHostDIB != nullptr && destHostDIB->state().m_Handle == 0) return refused(noHostImage);
        const Axis columns = inOrder(SrcX, srcWidth, destX, destWidth, state().m_Width, CenterOnDestXY);
        const Axis rows = inOrder(SrcY, srcHeight, destY, destHeight, state().m_Height, CenterOnDestXY);
        if (columns.size < 1 || rows.size < 1) return refused("the source rectangle has no pixels");
        const bool isAdjusted = LightAdjustment >= -100.0F && LightAdjustment <= 100.0F;
        DrawJob job = {
            .image = HostAccess::pixels(std::as_const(*this)),
            .source = {columns.from, rows.from, columns.from + columns.size, rows.from + rows.size},
            .destinationDC = destinationDC,
            .destHostDIB = destHostDIB,
            .destination = {columns.destFrom, rows.destFrom, columns.destFrom + columns.destSize,
                            rows.destFrom + rows.destSize},
            .mirrorsColumns = columns.isMirrored,
            .mirrorsRows = rows.isMirrored,
            .HighQuality = state().m_StretchQuality,
            .Angle = isRotating(Angle) ? Angle : 0.0F,
            .globalAlpha = globalAlphaOf(Opacity),
            .grayScale = grayScale,
            // Out of range, or not a number, it is ignored, not held at the limit.
            .LightAdjustment = isAdjusted ? LightAdjustment : 0.0F,
            .SetHalfTone = SetHalfTone,
        };
        const HostRelease release(destHostDIB);
        if (job.Angle != 0.0F) return state().pvRenderGDIplus(job) ? done() : spt_RotateImage(job);
        // The lowest number, whose opposite 32 bits do not hold, is a size for rotated drawing alone.
        longOrOverflow(std::max(job.destination.width(), job.destination.height()));
        if (state().pvCanUseAlphaBlend(job)) return state().pvAlphaBlend(job);
        return state().pvRenderGDIplus(job) ? done() : spt_DrawInSoftware(job);
    });
}

bool SheetState::pvCanUseAlphaBlend(const DrawJob& job) const noexcept {
    if (m_KeepGDIplusActive || (pvUsesGDIplus() && m_GDItoken != 0)) return false;
    if ((m_osCAP & capUseAlphaBlend) == 0 || job.isMirroring() || job.grayScale != gsclNone) return false;
    if (job.LightAdjustment != 0.0F) return false;
    // The system refuses to draw a picture over itself.
    if (job.destHostDIB != nullptr && &HostAccess::state(*job.destHostDIB) == this) return false;
    return !job.isStretching() || !m_StretchQuality;
}

bool SheetState::pvRenderGDIplus(const DrawJob& job) {
    // GDI+ would read the pixels that it has just drawn.
    if (job.destHostDIB == nullptr && m_prevDCobject != 0 && platform::isSameObject(job.destinationDC, m_hDC))
        return false;
    const auto cGDIp = pvGDIplus();
    if (m_KeepGDIplusActive) m_GDIplus = cGDIp;
    return cGDIp && spt_RenderGDIplus(job, *cGDIp);
}

Outcome SheetState::pvAlphaBlend(const DrawJob& job) {
    // The image has to be in a device context of its own; what was made for that goes afterwards.
    const bool isTemporaryDC = m_hDC == 0;
    if (isTemporaryDC) m_hDC = platform::CreateCompatibleDC(platform::ScreenDC().get());
    const platform::Handle hOldImage = m_prevDCobject == 0 ? platform::SelectObject(m_hDC, m_Handle) : 0;
    bool isDrawn = false;
    if (m_prevDCobject != 0 || hOldImage != 0) {
        const platform::Handle destination =
            job.destHostDIB != nullptr ? HostAccess::LoadDIBinDC(*job.destHostDIB, true) : job.destinationDC;
        const bool setsMode = job.SetHalfTone && (m_osCAP & capNtFamily) != 0;
        const auto lStretchMode = setsMode ? platform::SetStretchBltMode(destination, platform::StretchMode::halftone)
                                           : platform::StretchMode::none;
        const platform::BlendFunction lBlendFunc = {.SourceConstantAlpha = job.globalAlpha,
                                                    .AlphaFormat =
                                                        static_cast<std::uint8_t>(m_AlphaImage != AlphaNone)};
        const auto edge = [](std::int64_t value) { return static_cast<std::int32_t>(value); };
        const Rect& from = job.source;
        const Rect& to = job.destination;
        isDrawn =
            platform::AlphaBlend(destination, edge(to.left), edge(to.top), edge(to.width()), edge(to.height()), m_hDC,
                                 edge(from.left), edge(from.top), edge(from.width()), edge(from.height()), lBlendFunc);
        if (lStretchMode != platform::StretchMode::none) platform::SetStretchBltMode(destination, lStretchMode);
    }
    if (hOldImage != 0) platform::SelectObject(m_hDC, hOldImage);
    if (isTemporaryDC && m_hDC != 0) {
        platform::DeleteDC(m_hDC);
        m_hDC = 0;
    }
    return doneIf(isDrawn, "the system cannot draw on the destination");
}

bool cPixSheet::RenderDropShadow_JIT(std::intptr_t hDC, std::int32_t x, std::int32_t y, std::int32_t blurDepth,
                                     std::int32_t Color, std::int32_t Opacity, float LightAdjustment,
                                     cPixSheet* destHostDIB) noexcept {
    const Limits limits = std::exchange(state().m_limits, {}); // what may be held may be drawn, and with it its shadow
    const auto shadow = CreateDropShadow(blurDepth, Color);
    state().m_limits = limits;
    if (!shadow) return false;
    shadow->Render(hDC, x, y, 0, 0, 0, 0, 0, 0, Opacity, true, true, destHostDIB, gsclNone, LightAdjustment);
    return HostAccess::outcome(*this, std::move(shadow->state().m_outcome));
}

std::int32_t cPixSheet::CreateGDIplusToken() noexcept {
    std::int32_t Token = 0;
    const bool isStarted = cGDIPlus::isGDIplusOk(&Token, true);
    state().m_outcome = doneIf(isStarted, "GDI+ cannot be started");
    return Token;
}

bool cPixSheet::DestroyGDIplusToken(std::int32_t Token) noexcept {
    const bool isEnded = cGDIPlus::InitializeGDIplus(Token, true);
    state().m_outcome = doneIf(isEnded, "no such token of GDI+ is out");
    return isEnded;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
