// Icon and cursor files. README.md in this folder explains the format, lists what the reader is lenient about, and says
// what is written.
#pragma once
#include "codecs/Reading.h"
#include "codecs/Writing.h"
#include "codecs/ico/IcoDirectory.h"
#include "platform/icons.h"
#include "surface/Limits.h"
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace pixkit {

class cPixSheet;

// One parser serves one file, whose bytes outlive it.
class cICOparser {
  public:
    // Reads the image of an icon or cursor file that suits a size in pixels and a depth in bits best: one of exactly
    // that size, else the next larger, else the largest; among those the nearest depth, the greater of two. 0 for cX,
    // cY or bitDepth means any: then the largest, or deepest. Should that image be damaged, the next best is taken.
    // Alpha and ImageType follow from the image: imgPNGicon for a PNG; imgIconARGB or imgCursorARGB where a bitmap's
    // alpha counts, imgIcon or imgCursor where its mask does. The hotspot stays with the host (HostAccess).
    ReadResult LoadStream(std::span<const std::uint8_t> Stream, std::int32_t cX, std::int32_t cY, cPixSheet& Host,
                          std::int32_t bitDepth);

    // Only looks at what the file holds, for the members below; refuses other data.
    Outcome LoadDirectory(std::span<const std::uint8_t> Stream);
    // How many images the file has that can be read as far as their headers tell.
    std::int32_t IconCount() const noexcept { return static_cast<std::int32_t>(m_directory.entries.size()); }
    // Of image `Index`, from 0 to IconCount() - 1 in the file's order: size in pixels, bits of a source pixel, and
    // whether it is a PNG. Its own header says so; what the directory claims does not count.
    std::int32_t Width(std::int32_t Index) const { return entry(Index).width; }
    std::int32_t Height(std::int32_t Index) const { return entry(Index).height; }
    std::int32_t bitDepth(std::int32_t Index) const { return entry(Index).bitDepth; }
    bool isPNG(std::int32_t Index) const { return entry(Index).isPNG; }

    // Reads an icon or cursor of the system's, which stays as it is: with colours, alpha in them, or monochrome. Alpha,
    // ImageType and hotspot as from a file. Refuses, and empties the host, for a handle that is none, or without
    // memory.
    static Outcome ConvertstdPicTo32bpp(platform::Handle hIcon, cPixSheet& Host);

    // Makes an icon of the system's of the picture at a size, as for a file (below): 32 bits a pixel with straight
    // alpha, and a mask. A hotspot makes it a cursor; coordinates of it that are below 0 are the picture's own, in
    // scale. Refuses sizes that files refuse, and a hotspot outside of the cursor.
    static Outcome CreateIcon(const SourcePicture& Source, IconEntrySize Size,
                              const std::optional<CursorHotspot>& Hotspot, platform::UniqueIcon& Icon,
                              const Limits& Bounds);

    // An icon or cursor file with an image of each of the sizes, made of the source of exactly that size, else of the
    // next larger, else of the largest (IcoScale.h, IcoImage.h); of cursors with hotspots in scale. Nothing when there
    // is nothing to write (EntrySizes) or the file would exceed 31 bits.
    static WrittenFile SaveAsIcon(std::span<const SourcePicture> Source, const IcoOptions& Options);
    // The images that such a file gets: of no sizes, each source's own at 32 bits; a 0 is the first source's width or
    // height. Refused when there is no source, when one has no image, for more than 65,535 sizes, a side outside 1 ..
    // 65,535, pixels beyond 31 bits of bytes, sizes asked for that are beyond the limits, those of memory all of them
    // together, or a depth that icoDepth does not know.
    static Outcome EntrySizes(std::span<const SourcePicture> Source, std::span<const IconEntrySize> Sizes,
                              std::vector<IconEntrySize>& Entries, const Limits& Bounds = {});

  private:
    const IcoEntry& entry(std::int32_t index) const { return m_directory.entries.at(static_cast<std::size_t>(index)); }
    Outcome loadEntry(const IcoEntry& entry, cPixSheet& host) const;
    Outcome loadBitmap(const IcoEntry& entry, cPixSheet& host) const;

    IcoDirectory m_directory;
    std::size_t m_fileSize = 0;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
