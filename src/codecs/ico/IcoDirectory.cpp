#include "codecs/ico/IcoDirectory.h"
#include "coding/ByteReader.h"
#include <algorithm>
#include <array>

namespace pixkit {

namespace {

constexpr std::size_t directoryHeaderSize = 6;
constexpr std::size_t directoryEntrySize = 16;
constexpr std::uint16_t typeIcon = 1;
constexpr std::uint16_t typeCursor = 2;

// A byte holds no 256.
std::int32_t statedLength(std::uint8_t value) noexcept {
    return value == 0 ? 256 : value;
}

// What a PNG file says of itself, when its first chunk is IHDR, as the PNG standard wants it.
bool readPngFacts(IcoEntry& entry) {
    constexpr std::array<std::uint8_t, 16> beginning = {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A,
                                                        0,    0,   0,   13,  'I',  'H',  'D',  'R'};
    constexpr std::array<std::int32_t, 7> samplesOfColorType = {1, 0, 3, 1, 2, 0, 4};
    const ByteReader reader(entry.payload);
    const auto start = reader.slice(0, beginning.size());
    if (!start || !std::ranges::equal(*start, beginning)) return false;
    entry.width = static_cast<std::int32_t>(reader.bigEndian32(16).value_or(0));
    entry.height = static_cast<std::int32_t>(reader.bigEndian32(20).value_or(0));
    const std::size_t colorType = reader.byte(25).value_or(1);
    if (entry.width < 1 || entry.height < 1 || colorType >= samplesOfColorType.size()) return false;
    // Requests end at 32 bits, and so do the answers.
    entry.bitDepth = std::min(reader.byte(24).value_or(0) * samplesOfColorType[colorType], 32);
    entry.isPNG = true;
    return entry.bitDepth > 0;
}

bool readBitmapFacts(IcoEntry& entry, Reason& why) {
    const auto bitmap = readIcoBitmap(entry, why);
    if (!bitmap) return false;
    entry.width = bitmap->info.width;
    entry.height = bitmap->info.height;
    entry.bitDepth = static_cast<std::int32_t>(bitmap->info.bitCount);
    return true;
}

// A bitmap counts its mask's rows too, so that its height is twice the picture's. Writers who forgot that are
// recognised by an odd height, or by a directory that agrees with it while all those rows are there. With 1 bit a pixel
// the rows of colours and those of the mask look the same, so there the format's word stands.
bool isHeightOfPicture(const BmpInfo& info, const IcoEntry& entry) {
    if (info.height % 2 != 0) return true;
    const std::uint64_t end = info.pixelOffset + std::uint64_t{info.rowBytes()} * static_cast<unsigned>(info.height);
    return info.bitCount > 1 && entry.statedWidth == info.width && entry.statedHeight == info.height &&
           end <= entry.statedSize;
}

// Where the payload that begins at `start` must end at the latest.
std::size_t roomBehind(std::span<const std::size_t> sortedOffsets, std::size_t start, std::size_t fileSize) {
    const auto next = std::ranges::upper_bound(sortedOffsets, start);
    return (next == sortedOffsets.end() ? fileSize : std::min(*next, fileSize)) - start;
}

} // namespace

bool isIconFile(std::span<const std::uint8_t> file) noexcept {
    const ByteReader reader(file);
    const std::uint16_t type = reader.littleEndian16(2).value_or(0);
    // A TGA file of true colour without a map begins like a cursor file, and tells by its count of 0 that it is none.
    return reader.littleEndian16(0) == 0 && (type == typeIcon || type == typeCursor) &&
           reader.littleEndian16(4).value_or(0) != 0;
}

std::optional<IcoDirectory> readIcoDirectory(std::span<const std::uint8_t> file, Reason& why) {
    why = "no header of an icon file";
    if (!isIconFile(file)) return {};
    why = "the directory of the icon file reaches beyond the data";
    const ByteReader reader(file);
    const std::size_t count = reader.littleEndian16(4).value_or(0);
    if (!reader.slice(directoryHeaderSize, count * directoryEntrySize)) return {};

    std::vector<std::size_t> offsets(count);
    for (std::size_t i = 0; i < count; ++i)
        offsets[i] = reader.littleEndian32(directoryHeaderSize + i * directoryEntrySize + 12).value_or(0);
    std::vector<std::size_t> sortedOffsets = offsets;
    std::ranges::sort(sortedOffsets);

    why = {}; // of the first entry that cannot be read
    IcoDirectory directory;
    directory.isCursor = reader.littleEndian16(2) == typeCursor;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t at = directoryHeaderSize + i * directoryEntrySize;
        IcoEntry entry;
        entry.statedWidth = statedLength(reader.byte(at).value_or(0));
        entry.statedHeight = statedLength(reader.byte(at + 1).value_or(0));
        if (directory.isCursor) // in icon files planes and depth stand here, which the payload knows better
            entry.hotspot = {reader.littleEndian16(at + 4).value_or(0), reader.littleEndian16(at + 6).value_or(0)};
        entry.statedSize = reader.littleEndian32(at + 8).value_or(0);
        Reason problem = "an icon that lies outside of the file";
        if (!reader.slice(offsets[i], entry.statedSize)) {
            if (!why) why = problem;
            continue;
        }
        const std::size_t room = roomBehind(sortedOffsets, offsets[i], file.size());
        entry.payload = file.subspan(offsets[i], std::max(room, entry.statedSize));
        if (readPngFacts(entry) || readBitmapFacts(entry, problem)) {
            directory.entries.push_back(entry);
        } else if (!why) {
            why = problem;
        }
    }
    if (directory.entries.empty()) return {};
    return directory;
}

std::optional<IcoBitmap> readIcoBitmap(const IcoEntry& entry, Reason& why) {
    auto info = readDibInfo(entry.payload, why);
    if (!info) return {};
    why = "an icon that is run-length coded"; // nobody could tell where the codes end and the mask begins
    if (info->isRunLength()) return {};
    why = "an icon of a depth that icons do not have";
    if (info->bitCount > 32) return {};
    why = "an icon that lacks rows of colours";
    if (!isHeightOfPicture(*info, entry)) info->height /= 2;
    const std::uint64_t colors = std::uint64_t{info->rowBytes()} * static_cast<unsigned>(info->height);
    if (info->pixelOffset + colors > entry.payload.size()) return {};
    const auto maskOffset = static_cast<std::size_t>(info->pixelOffset + colors);
    // A size that does not even cover the colours is not to be believed.
    const std::size_t end = entry.statedSize >= maskOffset ? entry.statedSize : entry.payload.size();
    IcoBitmap bitmap{*info, entry.payload.subspan(info->pixelOffset, static_cast<std::size_t>(colors)),
                     entry.payload.subspan(maskOffset, end - maskOffset)};
    return bitmap;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
