// Reads TGA data into the pixels of a cPixSheet, and writes a cPixSheet as TGA (the Truevision TGA file format,
// version 2.0). README.md in this folder teaches the format and lists where this reader goes its own way.
#pragma once
#include "codecs/Reading.h"
#include "codecs/Writing.h"
#include "codecs/tga/TgaSamples.h"
#include "shared/PixelView.h"
#include "surface/cPixSheet.h"
#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace pixkit {

class AlphaOfRows;
struct PictureFacts;

class cTGAparser {
  public:
    // Reads `inStream`, which the caller took from index `streamOffset` of its array. Data that is too short for its
    // picture counts as another format.
    ReadResult LoadStream(std::span<const std::uint8_t> inStream, cPixSheet& cHost, std::size_t streamOffset);

    // The same for a file, which is not read whole where neither its header nor a footer says that it is one.
    ReadResult LoadFile(PictureSource& File, cPixSheet& cHost);

    // A TGA file with footer, bottom row first. The Alpha property decides between 24 bits a pixel and 32, whatever the
    // pixels say. useBitReduction writes an opaque image of at most 256 colours with a palette; useCompression
    // run-length codes, where that is shorter; with allowPreMultipliedAlpha the pixels of an image with alpha are
    // written as stored, and an extension area says so, else as straight colours. Nothing for an image of more than
    // 65,535 columns or rows, which the header cannot say.
    static WrittenFile SaveAsTGA(const SourcePicture& Picture, const TgaOptions& Options);

    // What data that begins so says of its picture, if it is a TGA file (TgaFacts.cpp); false where it can be none.
    bool readHeader(std::span<const std::uint8_t> start, PictureFacts& facts) noexcept;

  private:
    struct Header {
        std::uint8_t idLength, colorMapType, imageType;
        std::uint16_t firstEntry, mapLength;
        std::uint8_t entrySize; // bits
        std::uint16_t width, height;
        std::uint8_t depth; // bits
        std::uint8_t descriptor;

        bool isColorMapped() const noexcept { return (imageType & 247) == 1; }
        bool isRunLength() const noexcept { return (imageType & 8) != 0; }
        bool isTopDown() const noexcept { return (descriptor & 32) != 0; }
        bool isRightToLeft() const noexcept { return (descriptor & 64) != 0; }
    };
    using Lookup = std::array<std::uint8_t, 256 * 4>;

    bool readHeader(std::span<const std::uint8_t> start) noexcept;
    bool isTGA() noexcept;
    bool refuse(Reason reason) noexcept;
    bool AllowAlphaChannel() const noexcept;
    ReadResult ProcessTrueColor(cPixSheet& cHost);
    ReadResult ProcessColorMap(cPixSheet& cHost);

    // TgaPixels.cpp
    static const Lookup grayLookup;
    ReadResult buildSurface(cPixSheet& cHost, const TgaLayout& layout) const;
    bool placeRows(PixelView image, const TgaLayout& layout, AlphaOfRows* alpha) const;

    std::span<const std::uint8_t> m_stream; // the TGA's own bytes
    std::size_t m_streamOffset = 0;         // where they begin in the caller's array
    Header m_header{};
    Reason m_reason; // why the data is no TGA
    std::size_t m_mapBytes = 0;
    std::span<const std::uint8_t> m_pixelData; // all that follows the colour map
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
