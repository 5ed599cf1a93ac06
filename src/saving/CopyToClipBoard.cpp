#include "codecs/Formats.h"
#include "codecs/clipboard/ClipboardProblem.h"
#include "codecs/clipboard/PackedDib.h"
#include "codecs/clipboard/StoredPixels.h"
#include "surface/attempt.h"
#include <string>
#include <utility>

namespace pixkit {

namespace {

// Flattened pictures are pasted into pages of text, messages, and canvases that start white.
constexpr std::int32_t paper = 0xFFFFFF;

std::vector<platform::ClipboardBlock> blocksOf(const SourcePicture& picture, const PngProperties& properties) {
    std::vector<platform::ClipboardBlock> blocks;
    blocks.push_back({"PNG", std::move(write({&picture, 1}, &properties).parts()).join()});
    blocks.push_back({"CF_DIBV5", makeStraightDib(picture)});
    blocks.push_back({"CF_DIB", makeFlatDib(picture, paper)});
    blocks.push_back({std::string(storedPixelsFormat), makeStoredPixels(picture)});
    // What cannot be made is not offered.
    std::erase_if(blocks, [](const platform::ClipboardBlock& block) { return block.bytes.empty(); });
    return blocks;
}

} // namespace

// All is made at once. A format that is only promised is asked for when somebody pastes: then the program that promised
// it would still have to run, the instance to hold the same picture, and the window to be served with messages.
bool cPixSheet::CopyToClipBoard() const noexcept {
    return attempt(Call(*this, "CopyToClipBoard"), [&] {
        const SourcePicture picture(*this);
        if (!picture.pixels) return refused(noImage);
        auto blocks = blocksOf(picture, state().m_PNGprops);
        const platform::OpenClipboard clipboard;
        if (!clipboard.isOpen()) return refused(clipboardProblem(clipboard));
        return doneIf(clipboard.set(std::move(blocks)), "the clipboard does not take the picture");
    });
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
