// What the writers of all formats are given, and what they give. A writer is a function from a picture and its options
// to the bytes of a file; where those go is not its affair.
#pragma once
#include "diagnostics/Outcome.h"
#include "shared/PixelView.h"
#include "surface/PngProperties.h"
#include "surface/cPixSheet.h"
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <variant>
#include <vector>

namespace pixkit {

// A picture to be written, which outlives what is made of it.
struct SourcePicture {
    SourcePicture() = default;
    explicit SourcePicture(const cPixSheet& host) noexcept;

    ConstPixelView pixels;             // premultiplied; none without an image
    AlphaTypeEnum alpha = AlphaNone;   // as the picture says; what the pixels say may be something else
    eImageFormat imageType = imgError; // where it came from
    CursorHotspot hotspot;

    // Whether a format without alpha needs a colour to put the picture on: as the pixels say, but that one of which
    // nothing is there is clear if it says so, not black.
    bool isToBeFlattened() const noexcept;
};

// --- options; the members of cPixSheet that save say what they do

struct BmpOptions {
    bool Keep32bppFormat = false;
    std::int32_t TransparentFillColor = 0;
};

struct TgaOptions {
    bool allowPreMultipliedAlpha = false, useCompression = false, useBitReduction = false;
};

struct JpgOptions {
    std::int32_t Quality = 70, TransparentFillColor = 0;
};

struct GifOptions {
    bool UseAdaptivePalette = true;
    std::uint8_t OpaquenessTolerance = 128;
};

enum class IconFile : std::uint8_t { icon, cursor, asFirstSource };

struct IcoOptions {
    std::span<const IconEntrySize> Sizes;
    IconFile kind = IconFile::asFirstSource;
};

// They tell the format too; PNG's are an instance's own, which outlives the call.
using WriteOptions = std::variant<BmpOptions, TgaOptions, const PngProperties*, JpgOptions, GifOptions, IcoOptions>;

// --- the result

// The bytes of a file in pieces, as they were made: only who needs them in one place has to copy them.
class FileParts {
  public:
    explicit FileParts(std::vector<std::uint8_t>&& bytes) { add(std::move(bytes)); }
    FileParts() = default;

    // Appends bytes; of a view, those must outlive the parts.
    void add(std::vector<std::uint8_t>&& bytes);
    void addView(std::span<const std::uint8_t> bytes);

    // One after the other, none of them empty.
    std::span<const std::span<const std::uint8_t>> pieces() const noexcept { return m_pieces; }
    // All pieces in one, which uses them up.
    std::vector<std::uint8_t> join() &&;

  private:
    std::vector<std::vector<std::uint8_t>> m_owned;
    std::vector<std::span<const std::uint8_t>> m_pieces;
};

// What a writer gives: a file, or why there is none.
class WrittenFile {
  public:
    WrittenFile(FileParts&& parts) : m_parts(std::move(parts)) {}
    WrittenFile(Outcome&& refusal) : m_outcome(std::move(refusal)) {}

    const Outcome& outcome() const noexcept { return m_outcome; }
    // Empty where there is no file.
    FileParts& parts() noexcept { return m_parts; }

  private:
    Outcome m_outcome;
    FileParts m_parts;
};

inline constexpr Reason tooLargeForFormat = "the format holds no more than 65,535 columns or rows";

} // namespace pixkit
// SPDX-License-Identifier: MIT
