// From pixels to the filtered rows that a PNG file compresses (PNG standard, clauses 8 and 9).
#pragma once
#include "codecs/png/PngFilters.h"
#include "codecs/png/PngForm.h"
#include "coding/Interlace.h"
#include "shared/enumerations.h"
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace pixkit {

// The rows of a picture one after the other, each with its filter type in front; interlaced ones pass by pass. The
// image's memory rows are bottom-up. What is given must outlive the maker.
class PngRowMaker {
  public:
    PngRowMaker(ConstPixelView image, bool hasAlpha, const PngForm& form, eFilterMethods filter, bool isInterlaced);

    // Of the longest row.
    std::size_t mostRowBytes() const noexcept { return rowBytes(m_image.width) + 1; }
    // Of all, before the first is made.
    std::size_t allBytes() const noexcept;
    // Fills `out`, which has room for one of them at least, with as many rows as fit; returns their bytes, 0 when there
    // are no more.
    std::size_t make(std::span<std::uint8_t> out);

  private:
    std::size_t rowBytes(std::size_t columns) const noexcept;
    const std::uint8_t* gather(const std::uint8_t* pixels, std::size_t columns) noexcept;
    PngFilterType typeFor(std::size_t bytes) const noexcept;
    void apply(PngFilterType type, std::uint8_t* out, std::size_t bytes) const noexcept;

    ConstPixelView m_image;
    bool m_hasAlpha;
    const PngForm& m_form;
    eFilterMethods m_filter;
    std::size_t m_step;
    std::vector<std::uint8_t> m_scratch, m_gathered, m_row, m_above;
    std::span<const InterlacePass> m_passes; // those that are left
    std::size_t m_y = 0;                     // of the next row, in its pass
};

// All of them.
std::vector<std::uint8_t> pngFilteredRows(ConstPixelView image, bool hasAlpha, const PngForm& form,
                                          eFilterMethods filter, bool isInterlaced);

} // namespace pixkit
// SPDX-License-Identifier: MIT
