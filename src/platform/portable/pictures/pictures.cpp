#include "platform/pictures.h"
#include "platform/faults.h"
#include "platform/portable/pictures/BitmapPicture.h"
#include "platform/portable/pictures/IconPicture.h"
#include "platform/portable/pictures/loaders.h"
#include <new>

namespace pixkit::platform {

std::unique_ptr<StdPicture> OleLoadPicture(std::span<const std::uint8_t> bytes, LeastSize least) noexcept {
    if (bytes.empty() || faultDue(SeamCall::oleLoadPicture)) return nullptr;
    try {
        if (auto picture = loadGif(bytes)) return picture;
        return loadJpeg(bytes, least);
    } catch (const std::bad_alloc&) {
        // as if the picture were not there
    }
    return nullptr;
}

bool mayBePicture(std::span<const std::uint8_t> start) noexcept {
    if (start.size() < 2) return false;
    const bool isLikeGif = (start[0] | 0x20) == 'g', isLikeJpeg = start[0] == 0xFF && start[1] == 0xD8;
    return isLikeGif || isLikeJpeg;
}

std::unique_ptr<StdPicture> OleCreatePictureIndirect(Handle image, PictureType type, bool own) noexcept {
    if (faultDue(SeamCall::oleCreatePictureIndirect)) return nullptr;
    if (type == PictureType::bitmap && GetObjectType(image) == ObjectType::bitmap)
        return std::unique_ptr<StdPicture>(new (std::nothrow) BitmapPicture(image, own));
    if (type == PictureType::icon && findIcon(image))
        return std::unique_ptr<StdPicture>(new (std::nothrow) IconPicture(image, own));
    return nullptr;
}

bool canLoadMetafiles() noexcept {
    return false;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
