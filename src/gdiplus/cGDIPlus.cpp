#include "gdiplus/cGDIPlus.h"
#include "gdiplus/Abilities.h"
#include "gdiplus/Drawing.h"
#include "gdiplus/Encoding.h"
#include "gdiplus/Objects.h"
#include <algorithm>
#include <cmath>
#include <limits>

namespace pixkit {

bool cGDIPlus::isGDIplusOk(std::int32_t* Token, bool KeepToken) noexcept {
    if (!KeepToken || Token == nullptr) return GdiplusSession::isPossible();
    *Token = 0;
    return InitializeGDIplus(*Token);
}

bool cGDIPlus::InitializeGDIplus(std::int32_t& Token, bool ShutDown) noexcept {
    if (ShutDown) return destroyGdiplusToken(Token);
    Token = createGdiplusToken();
    return Token != 0;
}

bool cGDIPlus::start() noexcept {
    if (!m_session) m_session = GdiplusSession::get();
    return m_session != nullptr;
}

bool cGDIPlus::GDIplusLoadPNG(std::span<const std::uint8_t> Stream, const MakePixels& makePixels) noexcept {
    if (Stream.empty() || !start()) return false;
    const platform::GdiplusApi& api = m_session->api();
    GdiplusImage image(api);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    if (!succeeded(api.GdipLoadImageFromStream, Stream, image.receive()) ||
        !succeeded(api.GdipGetImageWidth, image.get(), width) ||
        !succeeded(api.GdipGetImageHeight, image.get(), height))
        return false;
    constexpr std::uint32_t most = std::numeric_limits<std::int32_t>::max();
    if (width < 1 || height < 1 || width > most || height > most) return false;
    const PixelView pixels = makePixels(static_cast<std::int32_t>(width), static_cast<std::int32_t>(height));
    return pixels && succeeded(api.GdipBitmapLockBits, image.get(), scanOf(pixels, platform::GpPixelFormat::argb32));
}

namespace {

// Beyond these GDI+, which counts in single precision, is not trusted with places, nor with the memory for sizes.
bool isWithinReach(const Rect& rect) noexcept {
    constexpr std::int64_t farthest = 1 << 20;
    constexpr std::int64_t largest = 1 << 14;
    return rect.left >= -farthest && rect.top >= -farthest && rect.right <= farthest && rect.bottom <= farthest &&
           rect.width() <= largest && rect.height() <= largest;
}

bool canDraw(const GdiplusSession& session, const GdiplusDrawing& drawing) noexcept {
    using enum GdiplusAbility;
    if (!hasAbility(session, drawing.host ? blending : contexts)) return false;
    const ConstPixelView& from = drawing.pixels;
    if (from.rect().width() != drawing.destination.width() || from.rect().height() != drawing.destination.height()) {
        if (!hasAbility(session, drawing.HighQuality ? interpolating : stretching)) return false;
    }
    if (drawing.Angle == 0.0F) return true;
    return hasAbility(session, turning) &&
           (std::fmod(drawing.Angle, 90.0F) != 0.0F || hasAbility(session, quarterTurns));
}

} // namespace

bool cGDIPlus::canRender(const GdiplusDrawing& drawing) noexcept {
    return drawing.pixels && isWithinReach(drawing.destination) && isWithinReach(drawing.pixels.rect()) && start() &&
           canDraw(*m_session, drawing);
}

bool cGDIPlus::RenderGDIplus(const GdiplusDrawing& drawing) noexcept {
    return !overlap(drawing.pixels.bytes(), ConstPixelView(drawing.host).bytes()) && canRender(drawing) &&
           drawByGdiplus(m_session->api(), drawing);
}

std::vector<std::uint8_t> encodeByGdiplus(const platform::GdiplusApi& api, ConstPixelView pixels,
                                          const platform::GpEncoding& encoding) noexcept {
    GdiplusImage image(api);
    std::vector<std::uint8_t> bytes;
    if (!succeeded(api.GdipCreateBitmapFromScan0, scanOf(pixels, platform::GpPixelFormat::pargb32), image.receive()) ||
        !succeeded(api.GdipSaveImageToStream, image.get(), encoding, bytes))
        bytes.clear();
    return bytes;
}

std::vector<std::uint8_t> cGDIPlus::SaveToPNG(ConstPixelView pixels) noexcept {
    if (!pixels || !start()) return {};
    return encodeByGdiplus(m_session->api(), pixels, {.mimeType = "image/png"});
}

bool cGDIPlus::canSaveJPG() noexcept {
    return start() && hasAbility(*m_session, GdiplusAbility::jpegQuality);
}

std::vector<std::uint8_t> cGDIPlus::SaveToJPG(ConstPixelView pixels, std::int32_t Quality) noexcept {
    if (!pixels || !canSaveJPG()) return {};
    return encodeByGdiplus(m_session->api(), pixels,
                           {.mimeType = "image/jpeg", .quality = std::clamp(Quality, 1, 100)});
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
