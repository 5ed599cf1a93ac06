#include "platform/pictures.h"
#include "platform/faults.h"
#include "platform/portable/BitmapPicture.h"
#include <new>

namespace pixkit::platform {

std::unique_ptr<StdPicture> OleLoadPicture(std::span<const std::uint8_t> bytes) noexcept {
    if (bytes.empty() || faultDue(SeamCall::oleLoadPicture)) return nullptr;
    return nullptr;
}

std::unique_ptr<StdPicture> OleCreatePictureIndirect(Handle image, PictureType type, bool own) noexcept {
    if (faultDue(SeamCall::oleCreatePictureIndirect)) return nullptr;
    if (type != PictureType::bitmap || GetObjectType(image) != ObjectType::bitmap) return nullptr;
    return std::unique_ptr<StdPicture>(new (std::nothrow) BitmapPicture(image, own));
}

bool canLoadJpeg() noexcept {
    return false;
}

bool canLoadMetafiles() noexcept {
    return false;
}

} // namespace pixkit::platform
