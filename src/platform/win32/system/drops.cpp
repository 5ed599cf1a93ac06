#include "platform/drops.h"
#include "platform/DropBlocks.h"
#include "platform/SystemDrops.h"
#include "platform/win32/system/GlobalBlock.h"
#include "platform/win32/system/names.h"
#include <windows.h>

namespace pixkit::platform {

std::string fromNarrow(std::span<const std::uint8_t> name) {
    const auto* const bytes = reinterpret_cast<const char*>(name.data());
    const int count = static_cast<int>(name.size());
    const int units = ::MultiByteToWideChar(CP_ACP, 0, bytes, count, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(units), L'\0');
    ::MultiByteToWideChar(CP_ACP, 0, bytes, count, wide.data(), units);
    return toUtf8(wide);
}

std::vector<DroppedFile> filesOfDrop(Handle drop) {
    const GlobalBlock block(reinterpret_cast<HGLOBAL>(drop));
    return filesOfBlock(block.bytes());
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
