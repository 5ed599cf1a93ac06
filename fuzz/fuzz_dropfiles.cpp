// DROPFILES and FILEGROUPDESCRIPTOR blocks: never more names or files than the bytes hold.
#include "platform/DropBlocks.h"
#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    const std::span<const std::uint8_t> block(data, bytes);
    const auto files = platform::filesOfBlock(block);
    std::size_t letters = 0;
    for (const DroppedFile& file : files) {
        require(!file.name.empty() && !file.contents && file.name.find('\0') == std::string::npos);
        letters += file.name.size();
    }
    require(files.size() <= mostDroppedFiles && files.size() <= bytes / 2 && letters <= bytes * 3 / 2);
    for (const std::size_t description : {platform::wideDescription, platform::narrowDescription}) {
        const auto contents = platform::virtualFilesOf(block, description);
        require(contents.size() <= bytes / description);
        for (const platform::VirtualFile& file : contents)
            require(4 + (file.index + 1) * description <= bytes);
    }
    return 0;
}
// SPDX-License-Identifier: MIT
