// The formats: how each is recognised, read and written. Loading, saving and the command share this table.
#pragma once
#include "codecs/Reading.h"
#include "codecs/Writing.h"
#include <string_view>

namespace pixkit {

// In the order of the alternatives of WriteOptions.
enum class FileFormat : std::uint8_t { bmp, tga, png, jpg, gif, ico };

struct Format {
    FileFormat id;
    const char* description; // with its article
    // Of file names, in lower case; the second may be empty.
    std::string_view extension, otherExtension;
    // Whether data that begins so is meant to be of this format, damaged or not; the first sniffedBytes are enough.
    // Null for a format without a signature, whose reader is asked when all others have refused.
    bool (*sniff)(std::span<const std::uint8_t> start) noexcept;
    // Null where the system's loader reads it.
    ReadResult (*read)(PictureSource& source, cPixSheet& host);
    // Whether the system's loader may be shown what the reader has refused; null where it never may.
    bool (*goesToSystem)(std::span<const std::uint8_t> file) noexcept;
    // Icon files are made of all the pictures, others of the first.
    WrittenFile (*write)(std::span<const SourcePicture> pictures, const WriteOptions& options);
};
inline constexpr std::size_t sniffedBytes = 64;

// In the order in which readers are asked.
std::span<const Format> formats() noexcept;

// The bytes of a file in the format of the options.
WrittenFile write(std::span<const SourcePicture> pictures, const WriteOptions& options);

} // namespace pixkit
// SPDX-License-Identifier: MIT
