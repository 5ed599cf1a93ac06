// What the alpha bytes of 32-bit pixels mean, and bringing pixels into the store's form.
#pragma once
#include "kernels/kernels.h"
#include "shared/PixelView.h"
#include "shared/enumerations.h"
#include <cstddef>
#include <cstdint>

namespace pixkit {

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

// From pixels that are known to be straight, even where no colour happens to be above its alpha, to those of a store.
// `mayBeUnused`: alpha that is 0 everywhere means nothing.
AlphaTypeEnum premultiplyStraight(PixelView pixels, bool mayBeUnused);

// Whether pixels that are written with straight colours would be classified as premultiplied, and so be read as others,
// in a format that does not say which they are: no colour happens to exceed its alpha.
bool isTakenForPremultiplied(ConstPixelView straight) noexcept;
// Makes straight pixels be classified as such, where they would not be, by the least colour in a clear pixel, which
// nobody shows. False where no pixel is clear, and nothing can be done.
bool proveStraight(PixelView straight) noexcept;

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

} // namespace pixkit
// SPDX-License-Identifier: MIT
