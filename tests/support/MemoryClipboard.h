// A clipboard of the test's own, natively and on Windows.
#pragma once
#include "platform/clipboard.h"
#include <algorithm>
#include <utility>

namespace pixkit::test {

class MemoryClipboard {
  public:
    MemoryClipboard() {
        platform::setClipboardProvider({[this] { return busyFor <= 0 ? ++opened > 0 : busyFor-- < 0; },
                                        [this] { --opened; },
                                        [this] {
                                            std::vector<std::string> names;
                                            for (const auto& block : blocks)
                                                names.push_back(block.format);
                                            return names;
                                        },
                                        [this](const std::string& format) { return bytes(format); },
                                        [this](std::vector<platform::ClipboardBlock>&& given) {
                                            if (isFull) return false;
                                            blocks = std::move(given);
                                            return true;
                                        },
                                        [this] { return opened == 0 ? contents : std::vector<DroppedFile>(); }});
    }
    ~MemoryClipboard() { platform::setClipboardProvider({}); }
    MemoryClipboard(const MemoryClipboard&) = delete;
    MemoryClipboard& operator=(const MemoryClipboard&) = delete;

    std::vector<std::uint8_t> bytes(const std::string& format) const {
        const auto found = std::ranges::find(blocks, format, &platform::ClipboardBlock::format);
        return found != blocks.end() ? found->bytes : std::vector<std::uint8_t>();
    }

    std::vector<platform::ClipboardBlock> blocks;
    std::vector<DroppedFile> contents;
    int opened = 0;
    int busyFor = 0; // tries
    bool isFull = false;
};

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
