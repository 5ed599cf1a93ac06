// The members that hand the image out as an object of the system's, which is the caller's from then on.
#include "codecs/SystemBitmaps.h"
#include "codecs/ico/cICOparser.h"
#include "platform/icons.h"
#include "platform/layered.h"
#include "platform/pictures.h"
#include "surface/attempt.h"
#include <algorithm>
#include <limits>

namespace pixkit {

namespace {

using platform::PictureType;

// A picture object, which takes the handle over.
template <class UniqueImage>
Outcome makePicture(UniqueImage&& image, PictureType type, std::unique_ptr<platform::StdPicture>& picture) {
    picture = platform::OleCreatePictureIndirect(image.get(), type, true);
    if (!picture) return refused("the system makes no picture object");
    image.release();
    return done();
}

} // namespace

std::intptr_t cPixSheet::CreateBitmap(std::int32_t Style, std::int32_t BackColor) const noexcept {
    platform::UniqueBitmap bitmap;
    const bool isMade = attempt(Call(*this, "CreateBitmap", "Style, BackColor", Style, BackColor), [&] {
        const SourcePicture picture(*this);
        return picture.pixels ? makeBitmap(picture, Style, BackColor, bitmap) : refused(noImage);
    });
    return isMade ? bitmap.release() : 0;
}

std::intptr_t cPixSheet::CreateIcon(std::int32_t Width, std::int32_t Height) const noexcept {
    platform::UniqueIcon icon;
    const bool isMade = attempt(Call(*this, "CreateIcon", "Width, Height", Width, Height), [&] {
        const SourcePicture picture(*this);
        return picture.pixels ? cICOparser::CreateIcon(picture, {Width, Height}, {}, icon, state().m_limits)
                              : refused(noImage);
    });
    return isMade ? icon.release() : 0;
}

std::intptr_t cPixSheet::CreateCursor(std::int32_t HotspotX, std::int32_t HotspotY, std::int32_t Width,
                                      std::int32_t Height) const noexcept {
    platform::UniqueIcon cursor;
    const Call call(*this, "CreateCursor", "HotspotX, HotspotY, Width, Height", HotspotX, HotspotY, Width, Height);
    const bool isMade = attempt(call, [&] {
        const SourcePicture picture(*this);
        if (!picture.pixels) return refused(noImage);
        return cICOparser::CreateIcon(picture, {Width, Height}, CursorHotspot{HotspotX, HotspotY}, cursor,
                                      state().m_limits);
    });
    return isMade ? cursor.release() : 0;
}

std::unique_ptr<platform::StdPicture> cPixSheet::CreateStdPicture(std::int32_t Style,
                                                                  std::int32_t BackColor) const noexcept {
    std::unique_ptr<platform::StdPicture> made;
    attempt(Call(*this, "CreateStdPicture", "Style, BackColor", Style, BackColor), [&] {
        const SourcePicture picture(*this);
        if (!picture.pixels) return refused(noImage);
        const bool isOpaque = picture.alpha == AlphaNone;
        if (Style == pictIcon || (Style == pictAuto && !isOpaque)) {
            platform::UniqueIcon icon;
            Outcome outcome = cICOparser::CreateIcon(picture, {}, {}, icon, state().m_limits);
            return outcome ? makePicture(std::move(icon), PictureType::icon, made) : outcome;
        }
        platform::UniqueBitmap bitmap;
        Outcome outcome = makeBitmap(picture, Style == pictAuto ? pictFlat : Style, BackColor, bitmap);
        return outcome ? makePicture(std::move(bitmap), PictureType::bitmap, made) : outcome;
    });
    return made;
}

bool cPixSheet::UpdateLayeredWindow(std::intptr_t hWnd, std::int32_t x, std::int32_t y,
                                    std::int32_t Opacity) const noexcept {
    return attempt(Call(*this, "UpdateLayeredWindow", "hWnd, x, y, Opacity", hWnd, x, y, Opacity), [&] {
        if (state().m_Handle == 0) return refused(noImage);
        if (!platform::canShowWindows()) return refused("there are no windows here");
        // A copy, because the image itself may be selected somewhere, and without alpha has any bytes for it.
        platform::UniqueBitmap bitmap;
        if (Outcome made = makeBitmap(SourcePicture(*this), pictPremultiplied, 0, bitmap); !made) return made;
        const platform::UniqueHandle<platform::DeleteDC> dc(platform::CreateCompatibleDC(0)); // goes before the bitmap
        if (!dc || platform::SelectObject(dc.get(), bitmap.get()) == 0) return refused(noDeviceContext);
        const auto position = [](std::int32_t at) { return at != keepPosition ? std::optional(at) : std::nullopt; };
        const auto alpha = static_cast<std::uint8_t>(std::clamp(Opacity, 0, 100) * 255 / 100);
        const bool isShown = platform::UpdateLayeredWindow(
            hWnd, {dc.get(), state().m_Width, state().m_Height, alpha, position(x), position(y)});
        return doneIf(isShown, "the system does not show the picture in that window");
    });
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
