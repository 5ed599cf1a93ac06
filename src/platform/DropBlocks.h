// The memory blocks in which Windows programs hand files to each other. Any program can have made them, so they are
// read here, and not by the system's functions, which trust them.
#pragma once
#include "platform/drops.h"
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace pixkit::platform {

// The files that a DROPFILES block names in UTF-16 or in the narrow code page. The list ends at an empty name, at one
// that does not end within the block, and after mostDroppedFiles. None where the offset of the first name lies in the
// header or outside of the block. May throw std::bad_alloc.
std::vector<DroppedFile> filesOfBlock(std::span<const std::uint8_t> block);

// What a FILEGROUPDESCRIPTOR says of a file that is none on a disk.
struct VirtualFile {
    std::uint32_t index = 0;           // its place among the contents, from 0
    std::optional<std::uint64_t> size; // bytes; what is handed over as contents may be longer
};

// Bytes of one description in a FILEGROUPDESCRIPTORW, and in the narrow form.
inline constexpr std::size_t wideDescription = 592, narrowDescription = 332;

// The files of such a block, folders left out: as many as are there, whatever it says, and at most mostDroppedFiles.
std::vector<VirtualFile> virtualFilesOf(std::span<const std::uint8_t> block, std::size_t description);

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
