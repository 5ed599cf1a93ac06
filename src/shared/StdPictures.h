// System pictures of what callers have: bytes of a file, or a handle.
#pragma once
#include "platform/pictures.h"
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace pixkit {

// The picture in `Size` bytes of an array from byte `Offset` on, as the system's picture loader sees it; null when it
// knows none there, or when the array does not hold that many bytes.
inline std::unique_ptr<platform::StdPicture> iparseArrayToPicture(std::span<const std::uint8_t> inArray,
                                                                  std::size_t Offset, std::size_t Size) noexcept {
    if (Offset > inArray.size() || Size > inArray.size() - Offset) return nullptr;
    return platform::OleLoadPicture(inArray.subspan(Offset, Size));
}

// A picture around a bitmap or icon, which stays the caller's and must outlive it; null when the handle is not one.
inline std::unique_ptr<platform::StdPicture> iparseHandleToStdPicture(platform::Handle hImage,
                                                                      platform::PictureType imgType) noexcept {
    return platform::OleCreatePictureIndirect(hImage, imgType, false);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
