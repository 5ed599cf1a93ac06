// Writing: the directory, and which source serves which entry.
#include "codecs/ico/IcoImage.h"
#include "codecs/ico/IcoScale.h"
#include "codecs/ico/cICOparser.h"
#include "coding/ByteWriter.h"
#include "shared/enumerations.h"
#include "shared/modParsers.h"
#include "surface/HostAccess.h"
#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

namespace pixkit {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t mostEntries = 65535; // the directory counts with 16 bits
// Positions have 32 bits, of which callers can count with 31.
constexpr std::size_t largestFile = std::numeric_limits<std::int32_t>::max();

// `extension` in lower case, the name in any.
bool endsWith(std::string_view name, std::string_view extension) {
    if (name.size() < extension.size()) return false;
    return std::ranges::equal(name.substr(name.size() - extension.size()), extension, [](char found, char wanted) {
        return found == wanted || (found >= 'A' && found <= 'Z' && found - 'A' + 'a' == wanted);
    });
}

// Of cursor files, PNG images say by their hotspot alone where they came from.
bool wasCursor(const cPixSheet& sheet) noexcept {
    const eImageFormat type = sheet.ImageType();
    return type == imgCursor || type == imgCursorARGB ||
           (type == imgPNGicon && HostAccess::hotspot(sheet) != CursorHotspot{});
}

bool fitsStore(std::int32_t width, std::int32_t height) noexcept {
    return width >= 1 && height >= 1 && width <= largestIcon && height <= largestIcon &&
           std::int64_t{width} * height <= std::numeric_limits<std::int32_t>::max() / 4;
}

// The one of that size, else the next larger, else the largest; of equals the first.
const cPixSheet& sourceFor(std::span<const cPixSheet* const> sources, std::int32_t width, std::int32_t height) {
    const auto distance = [&](const cPixSheet* sheet) {
        enum { exact, larger, smaller };
        const bool isLarger = sheet->Width() >= width && sheet->Height() >= height;
        const bool isExact = sheet->Width() == width && sheet->Height() == height;
        const std::int64_t area = std::int64_t{sheet->Width()} * sheet->Height();
        return std::pair(isExact ? exact : isLarger ? larger : smaller, isLarger ? area : -area);
    };
    return **std::ranges::min_element(sources, {}, distance);
}

// Where the hotspot is after scaling; the directory has 16 bits for it.
CursorHotspot scaledHotspot(const cPixSheet& source, std::int32_t width, std::int32_t height) {
    const IcoPlacement place =
        icoPlacement(HostAccess::pixels(source), static_cast<std::size_t>(width), static_cast<std::size_t>(height));
    const auto scaled = [](std::int32_t at, std::size_t from, std::size_t to, std::size_t offset) {
        const std::int64_t there = std::int64_t{at} * static_cast<std::int64_t>(to) / static_cast<std::int64_t>(from);
        return static_cast<std::int32_t>(std::clamp<std::int64_t>(there + static_cast<std::int64_t>(offset), 0, 65535));
    };
    const ConstPixelView pixels = HostAccess::pixels(source);
    const CursorHotspot spot = HostAccess::hotspot(source);
    return {scaled(spot.x, pixels.width, place.width, place.left),
            scaled(spot.y, pixels.height, place.height, place.top)};
}

struct Entry {
    IconEntrySize size; // as wanted
    IcoImageBytes image;
    CursorHotspot hotspot;
};

Entry makeEntry(const cPixSheet& source, const IconEntrySize& size) {
    const ConstPixelView from = HostAccess::pixels(source);
    const auto width = static_cast<std::size_t>(size.Width), height = static_cast<std::size_t>(size.Height);
    Bytes pixels = icoScale(from, source.Alpha() != AlphaNone, width, height);
    return {size, icoImage({pixels.data(), width, height, width * 4}, icoDepth(size.bitDepth).value_or(32)),
            scaledHotspot(source, size.Width, size.Height)};
}

Bytes makeFile(const std::vector<Entry>& entries, bool isCursor) {
    Bytes file;
    ByteWriter out(file);
    out.littleEndian16(0);
    out.littleEndian16(isCursor ? 2 : 1);
    out.littleEndian16(entries.size());
    std::size_t offset = 6 + 16 * entries.size();
    // A byte has no room for 256 and above, which are written as 0.
    const auto putLength = [&](std::int32_t length) {
        out.byte(length < 256 ? static_cast<std::uint8_t>(length) : 0U);
    };
    for (const Entry& entry : entries) {
        const unsigned depth = entry.image.bitDepth;
        putLength(entry.size.Width);
        putLength(entry.size.Height);
        out.byte(depth < 8 ? 1U << depth : 0U); // colours
        out.byte(0);
        out.littleEndian16(isCursor ? static_cast<std::uint32_t>(entry.hotspot.x) : 1U); // or planes
        out.littleEndian16(isCursor ? static_cast<std::uint32_t>(entry.hotspot.y) : depth);
        out.littleEndian32(entry.image.bytes.size());
        out.littleEndian32(offset);
        offset += entry.image.bytes.size();
    }
    for (const Entry& entry : entries)
        out.bytes(entry.image.bytes);
    return file;
}

} // namespace

std::vector<IconEntrySize> cICOparser::EntrySizes(std::span<const cPixSheet* const> Source,
                                                  std::span<const IconEntrySize> Sizes) {
    const auto isImage = [](const cPixSheet* sheet) { return sheet != nullptr && sheet->Handle() != 0; };
    if (Source.empty() || !std::ranges::all_of(Source, isImage)) return {};
    std::vector<IconEntrySize> sizes(Sizes.begin(), Sizes.end());
    for (const cPixSheet* sheet : Sizes.empty() ? Source : std::span<const cPixSheet* const>())
        sizes.push_back({sheet->Width(), sheet->Height(), TRUE_COLOR_ALPHA});
    for (IconEntrySize& size : sizes) {
        if (size.Width == 0) size.Width = Source.front()->Width();
        if (size.Height == 0) size.Height = Source.front()->Height();
        if (!fitsStore(size.Width, size.Height) || !icoDepth(size.bitDepth)) return {};
    }
    if (sizes.size() > mostEntries) return {};
    return sizes;
}

std::int32_t cICOparser::SaveAsIcon(std::span<const cPixSheet* const> Source, std::span<const IconEntrySize> Sizes,
                                    const std::string& FileName, ByteArray& outStream, bool useUnicode) {
    const std::vector<IconEntrySize> sizes = EntrySizes(Source, Sizes);
    if (sizes.empty()) return 0;
    std::vector<Entry> entries;
    std::size_t fileSize = 6 + 16 * sizes.size();
    for (const IconEntrySize& size : sizes) {
        entries.push_back(makeEntry(sourceFor(Source, size.Width, size.Height), size));
        fileSize += entries.back().image.bytes.size();
        if (fileSize > largestFile) return 0;
    }
    const bool isCursor = endsWith(FileName, ".cur") || (!endsWith(FileName, ".ico") && wasCursor(*Source.front()));
    Bytes file = makeFile(entries, isCursor);
    const auto count = static_cast<std::int32_t>(entries.size());
    return iparseDeliver(std::move(file), FileName, useUnicode, outStream) ? count : 0;
}

} // namespace pixkit
