// Loading of files that were dropped or pasted.
#include "codecs/clipboard/ClipboardProblem.h"
#include "loading/loadMember.h"
#include "platform/DropBlocks.h"
#include "platform/clipboard.h"
#include "platform/drops.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <utility>

namespace pixkit {

namespace {

// Those that there is something of, which an index counts.
std::vector<const DroppedFile*> filesIn(std::span<const DroppedFile> files) {
    std::vector<const DroppedFile*> found;
    for (const DroppedFile& file : files.first(std::min(files.size(), mostDroppedFiles)))
        if (!file.name.empty() || file.contents) found.push_back(&file);
    return found;
}

// Those on the clipboard: files by their names, else those that are contents only.
Outcome pastedFiles(std::vector<DroppedFile>& files) {
    bool hasContents = false;
    {
        const platform::OpenClipboard clipboard;
        if (!clipboard.isOpen()) return refused(clipboardProblem(clipboard));
        files = platform::filesOfBlock(clipboard.get("CF_HDROP"));
        hasContents = files.empty() && std::ranges::any_of(clipboard.formats(), [](const std::string& format) {
                          return platform::isSameFormat(format, "FileGroupDescriptorW") ||
                                 platform::isSameFormat(format, "FileGroupDescriptor");
                      });
    }
    if (hasContents) files = platform::contentsOnClipboard();
    return doneIf(!files.empty(), "there are no files on the clipboard");
}

Outcome giveNames(std::span<const DroppedFile> files, std::vector<std::string>& FileNames) {
    std::vector<std::string> names;
    for (const DroppedFile* const file : filesIn(files))
        if (!file->name.empty()) names.push_back(file->name);
    if (names.empty()) return refused("there are no files with names");
    FileNames = std::move(names);
    return done();
}

} // namespace

bool cPixSheet::LoadPicture_DropedFiles(std::span<const DroppedFile> Data, std::int32_t FileIndex, std::int32_t iconCx,
                                        std::int32_t iconCy, bool SaveFormat, std::int32_t iconBitDepth) noexcept {
    const Call call(*this, "LoadPicture_DropedFiles", "Data, FileIndex, iconCx, iconCy, SaveFormat, iconBitDepth", Data,
                    FileIndex, iconCx, iconCy, SaveFormat, iconBitDepth);
    const auto load = [&](const DroppedFile* file) {
        if (!file->contents) return LoadPicture_File(file->name, iconCx, iconCy, SaveFormat, iconBitDepth);
        Limits& limits = state().m_limits;
        // A file whose source fails is one that does not load: the next one may.
        const ByteArray bytes(
            guarded(call, std::vector<std::uint8_t>(), [&] { return file->contents(limits.bytesToAskFor()); }));
        const Limits::Holding holding(limits, static_cast<double>(bytes.size()));
        return LoadPicture_Stream(bytes, iconCx, iconCy, 0, 0, SaveFormat, iconBitDepth);
    };
    return loadMember(call, *this, [&] {
        const auto files = filesIn(Data);
        if (files.empty()) return refused("there are no files");
        if (FileIndex < 0 || static_cast<std::uint32_t>(FileIndex) > files.size())
            return refused("there is no file of this index");
        if (FileIndex != 0 || files.size() == 1) {
            load(files[FileIndex == 0 ? 0 : static_cast<std::uint32_t>(FileIndex) - 1]);
            return state().m_outcome;
        }
        return doneIf(std::ranges::any_of(files, load), "none of the files can be loaded");
    });
}

bool cPixSheet::LoadPicture_PastedFiles(std::int32_t FileIndex, std::int32_t iconCx, std::int32_t iconCy,
                                        bool SaveFormat, std::int32_t iconBitDepth) noexcept {
    const Call call(*this, "LoadPicture_PastedFiles", "FileIndex, iconCx, iconCy, SaveFormat, iconBitDepth", FileIndex,
                    iconCx, iconCy, SaveFormat, iconBitDepth);
    return loadMember(call, *this, [&] {
        std::vector<DroppedFile> files;
        Outcome pasted = pastedFiles(files);
        if (!pasted) return pasted;
        LoadPicture_DropedFiles(files, FileIndex, iconCx, iconCy, SaveFormat, iconBitDepth);
        return state().m_outcome;
    });
}

std::int32_t cPixSheet::GetDroppedFileNames(std::span<const DroppedFile> Data,
                                            std::vector<std::string>& FileNames) const noexcept {
    const bool isDone = attempt(Call(*this, "GetDroppedFileNames", "Data, FileNames", Data, FileNames),
                                [&] { return giveNames(Data, FileNames); });
    return isDone ? static_cast<std::int32_t>(FileNames.size()) : 0;
}

std::int32_t cPixSheet::GetPastedFileNames(std::vector<std::string>& FileNames) const noexcept {
    const bool isDone = attempt(Call(*this, "GetPastedFileNames", "FileNames", FileNames), [&] {
        std::vector<DroppedFile> files;
        Outcome pasted = pastedFiles(files);
        return pasted ? giveNames(files, FileNames) : pasted;
    });
    return isDone ? static_cast<std::int32_t>(FileNames.size()) : 0;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
