// Files that were dropped on a program or pasted into it.
#pragma once
#include "platform/api.h"
#include "platform/handle.h"
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace pixkit {

// One of them. Most lie somewhere and have a name; what comes out of a mail or an archive has contents only.
struct DroppedFile {
    std::string name = {}; // UTF-8; empty where there is none
    // The bytes of a file that is not to be opened by its name; empty for all others. Called each time the file is to
    // be loaded, on the thread that loads, and no more than `most` of them are of use: a limit on memory lies below.
    // May throw: then, as with no bytes, there is nothing to load.
    std::function<std::vector<std::uint8_t>(std::uint64_t most)> contents = {};
};

// No more files of one drop are looked at, whatever it claims to hold.
inline constexpr std::size_t mostDroppedFiles = 0x10000;

namespace platform {

// The files of a system's drop handle (HDROP, such as WM_DROPFILES brings), which stays the caller's. None for any
// other number, a block that is damaged, and where the system has no such handles. May throw std::bad_alloc.
PIXKIT_API std::vector<DroppedFile> filesOfDrop(Handle drop);

} // namespace platform

} // namespace pixkit
// SPDX-License-Identifier: MIT
