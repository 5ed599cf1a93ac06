#include "platform/DropBlocks.h"
#include "coding/ByteReader.h"
#include "platform/SystemDrops.h"
#include <string>

namespace pixkit::platform {

namespace {

// DROPFILES: pFiles, a point, fNC, fWide.
constexpr std::size_t headerSize = 20, wideAt = 16;

// Of a FILEDESCRIPTOR.
constexpr std::size_t flagsAt = 0, attributesAt = 36, sizeHighAt = 64, sizeLowAt = 68;
constexpr std::uint32_t hasAttributes = 4, hasSize = 0x40, isFolder = 0x10;

// The character at an offset; nothing beyond the block.
std::optional<std::uint16_t> unitAt(const ByteReader& block, std::size_t offset, bool isWide) {
    if (isWide) return block.littleEndian16(offset);
    return block.byte(offset);
}

void append(std::string& text, char32_t character) {
    constexpr char32_t marks[] = {0, 0xC0, 0xE0, 0xF0};
    const unsigned more = character < 0x80 ? 0 : character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    text += static_cast<char>(marks[more] | character >> (6 * more));
    for (unsigned i = more; i-- > 0;)
        text += static_cast<char>(0x80 | (character >> (6 * i) & 0x3F));
}

// What is not UTF-16 comes out as what is not UTF-8: with U+FFFD in its place the name would be another file's.
std::string fromUtf16(std::span<const std::uint8_t> name) {
    const ByteReader units(name);
    std::string text;
    for (std::size_t i = 0; i + 1 < name.size(); i += 2) {
        char32_t character = *units.littleEndian16(i);
        if (character >= 0xD800 && character < 0xE000) {
            const char32_t low = units.littleEndian16(i + 2).value_or(0);
            const bool isPair = character < 0xDC00 && low >= 0xDC00 && low < 0xE000;
            character = isPair ? 0x10000 + ((character - 0xD800) << 10) + (low - 0xDC00) : character;
            if (isPair) i += 2;
        }
        append(text, character);
    }
    return text;
}

} // namespace

std::vector<DroppedFile> filesOfBlock(std::span<const std::uint8_t> block) {
    const ByteReader reader(block);
    const auto first = reader.littleEndian32(0), wide = reader.littleEndian32(wideAt);
    std::vector<DroppedFile> files;
    if (!wide || *first < headerSize) return files;
    const bool isWide = *wide != 0;
    const std::size_t unit = isWide ? 2 : 1;
    for (std::size_t start = *first; files.size() < mostDroppedFiles;) {
        std::size_t end = start;
        auto next = unitAt(reader, end, isWide);
        for (; next && *next != 0; next = unitAt(reader, end, isWide))
            end += unit;
        if (!next || end == start) break;
        const auto name = block.subspan(start, end - start);
        files.push_back({isWide ? fromUtf16(name) : fromNarrow(name)});
        start = end + unit;
    }
    return files;
}

std::vector<VirtualFile> virtualFilesOf(std::span<const std::uint8_t> block, std::size_t description) {
    const ByteReader reader(block);
    const std::uint32_t count = reader.littleEndian32(0).value_or(0);
    std::vector<VirtualFile> files;
    for (std::uint32_t i = 0; i < count && files.size() < mostDroppedFiles; ++i) {
        const auto bytes = reader.slice(4 + i * description, description);
        if (!bytes) break;
        const ByteReader file(*bytes);
        const std::uint32_t flags = *file.littleEndian32(flagsAt);
        if ((flags & hasAttributes) != 0 && (*file.littleEndian32(attributesAt) & isFolder) != 0) continue;
        VirtualFile& one = files.emplace_back(VirtualFile{i, {}});
        if ((flags & hasSize) != 0)
            one.size = std::uint64_t{*file.littleEndian32(sizeHighAt)} << 32 | *file.littleEndian32(sizeLowAt);
    }
    return files;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
