// Writing: the directory, and which source serves which entry.
#include "codecs/ico/IcoImage.h"
#include "codecs/ico/IcoScale.h"
#include "codecs/ico/cICOparser.h"
#include "coding/ByteWriter.h"
#include "shared/enumerations.h"
#include <algorithm>
#include <limits>
#include <utility>

namespace pixkit {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t mostEntries = 65535; // the directory counts with 16 bits
// Positions have 32 bits, of which callers can count with 31.
constexpr std::size_t largestFile = std::numeric_limits<std::int32_t>::max();

// Of cursor files, PNG images say by their hotspot alone where they came from.
bool wasCursor(const SourcePicture& picture) noexcept {
    const eImageFormat type = picture.imageType;
    return type == imgCursor || type == imgCursorARGB || (type == imgPNGicon && picture.hotspot != CursorHotspot{});
}

bool fitsStore(std::int32_t width, std::int32_t height) noexcept {
    return width >= 1 && height >= 1 && width <= largestIcon && height <= largestIcon &&
           std::int64_t{width} * height <= std::numeric_limits<std::int32_t>::max() / 4;
}

// The one of that size, else the next larger, else the largest; of equals the first.
const SourcePicture& sourceFor(std::span<const SourcePicture> sources, std::size_t width, std::size_t height) {
    const auto distance = [&](const SourcePicture& source) {
        enum { exact, larger, smaller };
        const ConstPixelView pixels = source.pixels;
        const bool isLarger = pixels.width >= width && pixels.height >= height;
        const bool isExact = pixels.width == width && pixels.height == height;
        const auto area = static_cast<std::int64_t>(pixels.width) * static_cast<std::int64_t>(pixels.height);
        return std::pair(isExact ? exact : isLarger ? larger : smaller, isLarger ? area : -area);
    };
    return *std::ranges::min_element(sources, {}, distance);
}

struct Entry {
    IconEntrySize size; // as wanted
    IcoImageBytes image;
    CursorHotspot hotspot;
};

Entry makeEntry(std::span<const SourcePicture> sources, const IconEntrySize& size) {
    const auto width = static_cast<std::size_t>(size.Width), height = static_cast<std::size_t>(size.Height);
    const SourcePicture& source = sourceFor(sources, width, height);
    Bytes pixels = icoScale(source.pixels, source.alpha != AlphaNone, width, height);
    return {size, icoImage({pixels.data(), width, height, width * 4}, icoDepth(size.bitDepth).value_or(32)),
            icoHotspot(source.pixels, source.hotspot, width, height)};
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

Outcome cICOparser::EntrySizes(std::span<const SourcePicture> Source, std::span<const IconEntrySize> Sizes,
                               std::vector<IconEntrySize>& Entries, const Limits& Bounds) {
    const auto ownSize = [](ConstPixelView pixels) {
        return IconEntrySize{static_cast<std::int32_t>(pixels.width), static_cast<std::int32_t>(pixels.height)};
    };
    const auto isImage = [](const SourcePicture& source) { return bool(source.pixels); };
    if (Source.empty() || !std::ranges::all_of(Source, isImage)) return refused("one of the sources is no image");
    std::vector<IconEntrySize> sizes(Sizes.begin(), Sizes.end());
    for (const SourcePicture& source : Sizes.empty() ? Source : std::span<const SourcePicture>())
        sizes.push_back(ownSize(source.pixels));
    const IconEntrySize first = ownSize(Source.front().pixels);
    double bytesOfOthers = 0; // of the images asked for, which are all held at once
    for (IconEntrySize& size : sizes) {
        const bool isAsked = !Sizes.empty() && (size.Width != 0 || size.Height != 0); // else the source's own
        if (size.Width == 0) size.Width = first.Width;
        if (size.Height == 0) size.Height = first.Height;
        if (!fitsStore(size.Width, size.Height)) return refused("an icon has from 1 to 65,535 pixels a side");
        if (!icoDepth(size.bitDepth)) return refused("icons have no such depth");
        if (!isAsked) continue;
        if (const Reason limit = Bounds.problem(size.Width, size.Height, bytesOfOthers)) return refused(limit);
        bytesOfOthers += 4.0 * size.Width * size.Height;
    }
    if (sizes.size() > mostEntries) return refused("an icon file holds no more than 65,535 images");
    Entries = std::move(sizes);
    return done();
}

WrittenFile cICOparser::SaveAsIcon(std::span<const SourcePicture> Source, const IcoOptions& Options) {
    std::vector<IconEntrySize> sizes;
    if (Outcome checked = EntrySizes(Source, Options.Sizes, sizes); !checked) return checked;
    std::vector<Entry> entries;
    std::uint64_t fileSize = 6 + 16 * sizes.size();
    for (const IconEntrySize& size : sizes) {
        entries.push_back(makeEntry(Source, size));
        fileSize += entries.back().image.bytes.size();
        if (fileSize > largestFile) return refused("the file would have more than 2 GiB");
    }
    const bool isCursor =
        Options.kind == IconFile::asFirstSource ? wasCursor(Source.front()) : Options.kind == IconFile::cursor;
    return FileParts(makeFile(entries, isCursor));
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
