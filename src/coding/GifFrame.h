// Where the parts of a GIF file's first image are (GIF89a): the one way in which blocks of GIF files are walked.
#pragma once
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace pixkit {

// Positions are counted from the beginning of the file.
struct GifFrame {
    static constexpr std::size_t screenEnd = 13;        // signature and logical screen descriptor
    static constexpr std::size_t descriptorLength = 10; // of an image
    static constexpr std::size_t packedInDescriptor = 9;
    static constexpr std::size_t controlLength = 8; // graphic control extension

    std::size_t gHeaderLen = 0;             // header and global colour table
    std::size_t g89aStart = 0;              // the last graphic control extension before the image; 0: none
    std::optional<std::uint8_t> TransIndex; // the transparent index that it names
    std::uint16_t delay = 0;                // how long the image is shown, in hundredths of a second
    std::size_t g87aStart = 0;              // the image: descriptor, perhaps a colour table, codes
    std::size_t g87aStop = 0;               // its last byte, which ends the chain of codes
    std::size_t width = 0, height = 0;
    bool isInterlaced = false;
    bool aLocalTbl = false;      // the image has a colour table of its own
    std::size_t tblOffset = 0;   // the colour table in force, three bytes an entry: R, G, B
    std::size_t gColorsUsed = 0; // its entries; 0: there is no table
    std::size_t codeSizeAt = 0;  // the byte that says how many bits an index has; the codes follow
};

enum class GifWalk : std::uint8_t {
    found,
    refused,   // another format, or a block that is none
    endsEarly, // the file ends before the first image does
};

// Walks the blocks up to the end of the first image. The signature may be in capitals or not; bytes of 0 may stand
// between blocks; a graphic control extension is taken to be eight bytes long whatever it says.
GifWalk findGifFrame(std::span<const std::uint8_t> file, GifFrame& frame) noexcept;

// Calls `take` with image after image, as far as they are whole. Whether the file ends early: without a trailer.
bool forEachGifImage(std::span<const std::uint8_t> file, const std::function<void(const GifFrame&)>& take);

// Whether there is a colour table for each image of the file, which has at least one image or a table for all.
bool areGifColorsComplete(std::span<const std::uint8_t> file) noexcept;

// The codes of an image that was found, without the lengths between them.
std::vector<std::uint8_t> joinGifCodes(std::span<const std::uint8_t> file, const GifFrame& frame);

} // namespace pixkit
// SPDX-License-Identifier: MIT
