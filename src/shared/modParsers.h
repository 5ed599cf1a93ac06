// Stateless helpers that readers, writers, effects and the surface share.
#pragma once
#include "kernels/kernels.h"
#include "platform/files.h"
#include "platform/pictures.h"
#include "shared/ByteArray.h"
#include "shared/PixelView.h"
#include "shared/enumerations.h"
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace pixkit {

// --- arithmetic

// Length in bytes of a row of `Width` pixels at `bitDepth` bits padded to a multiple of four bytes (the name says word,
// the alignment is a double word). Throws std::overflow_error where the result does not fit 32 bits signed.
std::int32_t iparseByteAlignOnWord(std::uint8_t bitDepth, std::int32_t Width);

// The value with its four bytes in reverse order (big-endian to little-endian and back).
constexpr std::int32_t iparseReverseLong(std::int32_t inLong) noexcept {
    const auto value = static_cast<std::uint32_t>(inLong);
    return static_cast<std::int32_t>((value >> 24) | ((value >> 8) & 0xFF00U) | ((value << 8) & 0xFF0000U) |
                                     (value << 24));
}

// The three channels of a COLORREF (red in bits 0-7, green 8-15, blue 16-23), taken bit by bit: negative values too.
struct ColorChannels {
    std::uint8_t b, g, r;
};
constexpr ColorChannels iparseColorChannels(std::int32_t Color) noexcept {
    const auto bits = static_cast<std::uint32_t>(Color);
    return {static_cast<std::uint8_t>(bits >> 16), static_cast<std::uint8_t>(bits >> 8),
            static_cast<std::uint8_t>(bits)};
}

// --- alpha

struct AlphaClassification {
    AlphaTypeEnum bIsAlpha = AlphaNone;
    eImageFormat imgType = imgBitmap; // imgBitmap, imgBmpARGB or imgBmpPARGB
};

// Decides what the alpha bytes of 32-bit pixels mean and, with `bPreMultiply`, brings the pixels into the store's
// canonical form: premultiplied (colour * alpha / 255 truncated), or opaque when the alpha bytes carry nothing (all 0,
// all 255, or `imgType` -1 on entry, which says that they are unused). `imgType` is otherwise not looked at on entry.
AlphaClassification iparseValidateAlphaChannel(PixelView inStream, bool bPreMultiply, std::int32_t imgType);
// The same without touching the pixels.
AlphaClassification iparseValidateAlphaChannel(ConstPixelView inStream, std::int32_t imgType);
// Whether the classification is another than AlphaNone; looks no further than it takes to know.
bool iparseHasAlpha(ConstPixelView inStream) noexcept;

// iparseValidateAlphaChannel with `bPreMultiply` for rows that are written one after the other, each of which is looked
// at and brought into form while it is in the cache. The order of rows is without influence on the result.
class AlphaOfRows {
  public:
    // `isTopDown`: rows come from the last in memory to the first.
    AlphaOfRows(PixelView image, bool isTopDown) noexcept : m_image(image), m_isTopDown(isTopDown) {}

    // Where the next row goes.
    std::uint8_t* next() const noexcept { return row(m_rows); }
    // To be called when it is there.
    void isWritten() noexcept;
    // Both at once, for rows that are given as B, G, R, A.
    void copy(const std::uint8_t* pixels) noexcept;
    // To be called when all rows are there.
    AlphaClassification finish() noexcept;

  private:
    std::uint8_t* row(std::size_t index) const noexcept {
        return m_isTopDown ? m_image.rowFromTop(index) : m_image.row(index);
    }
    // What the scan came to after row `index`.
    void weigh(std::size_t index) noexcept;
    void setOpaque(std::size_t from, std::size_t to) const noexcept;
    void premultiply(std::size_t from, std::size_t to) noexcept;

    PixelView m_image;
    bool m_isTopDown;
    std::size_t m_rows = 0; // that are there
    kernels::AlphaScan m_scan;
    bool m_isPartial = false; // whether a pixel that was premultiplied has an alpha of 1 to 254
    // Of the rows that are there, those from the first on that wait to be premultiplied when colours are straight.
    std::size_t m_untouched = 0;
    // Rows that were made opaque, because nothing spoke against unused alpha yet.
    std::size_t m_opaqueFrom = 0, m_opaqueTo = 0;
};

// --- colour

// The weights of a formula; gsclNone gives 1, 1, 1, a value outside the enumeration the NTSC/PAL weights.
kernels::GrayWeights iparseGrayScaleRatios(std::int32_t Formula) noexcept;

// Flattens premultiplied pixels onto a colour: alpha 255 copies, 0 writes the fill, between: fill * (255 - alpha) / 255
// (truncated) + colour, held at 255. With `bitDepth24` the rows of `outStream` hold B, G, R and are padded to four
// bytes with 0; else B, G, R, 255. Rows are in the view's memory order; outStream must hold height rows of
// iparseByteAlignOnWord(bitDepth24 ? 24 : 32, width) bytes.
void iparseBlendImageToColor(ConstPixelView cHost, std::int32_t FillColor, std::span<std::uint8_t> outStream,
                             bool bitDepth24);

// Binary search in ascending colours; `PaletteItems` holds items 1 .. Count at its indexes 0 .. Count - 1. Returns the
// 1-based index of `Color` with isNew false, or where it would have to be inserted with isNew true (1 when Count is 0).
std::int32_t iparseFindColor(std::span<const std::int32_t> PaletteItems, std::int32_t Color, std::int32_t Count,
                             bool& isNew) noexcept;

// --- system pictures

// The picture in `Size` bytes of an array from byte `Offset` on, as the system's picture loader sees it; null when it
// knows none there, or when the array does not hold that many bytes.
std::unique_ptr<platform::StdPicture> iparseArrayToPicture(std::span<const std::uint8_t> inArray, std::size_t Offset,
                                                           std::size_t Size) noexcept;
// A picture around a bitmap or icon, which stays the caller's and must outlive it; null when the handle is not one.
std::unique_ptr<platform::StdPicture> iparseHandleToStdPicture(platform::Handle hImage,
                                                               platform::PictureType imgType) noexcept;

// --- files and libraries; names are UTF-8

// Opens an existing file for reading, or creates one for writing when `bOpen` is false; -1 on failure. Here and below
// the wide functions are used when `useUnicode` is true, else the desktop window decides between wide and narrow ones.
platform::Handle iparseGetFileHandle(const std::string& FileName, bool bOpen, bool useUnicode) noexcept;
// Creates a file for writing; -1 when the name exists already, or on failure.
platform::Handle iparseCreateNewFile(const std::string& FileName, bool useUnicode) noexcept;
// Writes all the bytes, in one piece; false when fewer arrived.
bool iparseWriteWhole(platform::Handle FileHandle, std::span<const std::uint8_t> bytes) noexcept;
// Whether the name has attributes: a directory counts as existing.
bool iparseFileExists(const std::string& FileName, bool useUnicode) noexcept;
bool iparseIsDirectory(const std::string& FileName, bool useUnicode) noexcept;
// Sets the attributes to normal, so that read-only files go too, and deletes the file; true when both steps succeed.
bool iparseDeleteFile(const std::string& FileName, bool useUnicode) noexcept;
// Makes a file the content of another name in one step. Whoever has that name is replaced, read-only or not; on failure
// it stays as it was.
bool iparseReplaceFile(const std::string& FileName, const std::string& ReplacedName, bool useUnicode) noexcept;
// Whether a library can be loaded and exports a function.
bool iparseValidateDLL(const char* DllName, const char* dllProc) noexcept;

} // namespace pixkit
