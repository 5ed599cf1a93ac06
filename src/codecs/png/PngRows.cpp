#include "codecs/png/PngRows.h"
#include "coding/RowBytes.h"
#include "kernels/kernels.h"
#include <algorithm>
#include <array>
#include <cstring>

namespace pixkit {

PngRowMaker::PngRowMaker(ConstPixelView image, bool hasAlpha, const PngForm& form, eFilterMethods filter,
                         bool isInterlaced)
    : m_image(image), m_hasAlpha(hasAlpha), m_form(form), m_filter(filter), m_step(form.filterStep()),
      m_scratch(image.width * 4), m_row(rowBytes(image.width)), m_above(m_row.size()),
      m_passes(pngPasses(isInterlaced)) {
    // Indexes of a palette are no quantities, and samples that share a byte do not line up with their neighbours.
    const bool isPlain = form.colorType == PngColorType::palette || form.bitDepth < 8;
    if (filter == filterDefault) m_filter = isPlain ? filterNone : filterAdaptive;
    if (isInterlaced) m_gathered.resize(image.width * 4);
}

std::size_t PngRowMaker::rowBytes(std::size_t columns) const noexcept {
    return static_cast<std::size_t>(packedRowBytes(columns, m_form.bitsPerPixel()));
}

std::size_t PngRowMaker::allBytes() const noexcept {
    std::size_t bytes = 0;
    for (const InterlacePass& pass : m_passes) {
        const std::size_t columns = pass.columns(m_image.width);
        if (columns > 0) bytes += pass.rows(m_image.height) * (rowBytes(columns) + 1);
    }
    return bytes;
}

std::size_t PngRowMaker::make(std::span<std::uint8_t> out) {
    std::size_t made = 0;
    for (; !m_passes.empty(); m_passes = m_passes.subspan(1), m_y = 0) {
        const InterlacePass& pass = m_passes.front();
        const std::size_t columns = pass.columns(m_image.width);
        const std::size_t rows = columns == 0 ? 0 : pass.rows(m_image.height);
        const std::size_t bytes = rowBytes(columns);
        for (; m_y < rows; ++m_y) {
            if (out.size() - made < bytes + 1) return made;
            if (m_y == 0) std::fill(m_above.begin(), m_above.end(), std::uint8_t{0}); // above the first row
            const std::uint8_t* pixels = m_image.rowFromTop(pass.startRow + m_y * pass.rowStep);
            if (pass.columnStep != 1) pixels = gather(pixels, columns);
            pngSamplesOf(m_form, m_hasAlpha, m_row.data(), pixels, columns, m_scratch.data());
            const PngFilterType type = typeFor(bytes);
            out[made] = static_cast<std::uint8_t>(type);
            apply(type, &out[made + 1], bytes);
            made += bytes + 1;
            m_row.swap(m_above);
        }
    }
    return made;
}

const std::uint8_t* PngRowMaker::gather(const std::uint8_t* pixels, std::size_t columns) noexcept {
    const InterlacePass& pass = m_passes.front();
    for (std::size_t x = 0; x < columns; ++x)
        std::memcpy(&m_gathered[4 * x], pixels + 4 * (pass.startColumn + x * pass.columnStep), 4);
    return m_gathered.data();
}

PngFilterType PngRowMaker::typeFor(std::size_t bytes) const noexcept {
    // The methods of one type come in the order of the types.
    if (m_filter != filterAdaptive) return static_cast<PngFilterType>(m_filter - filterNone);
    std::array<std::uint64_t, 5> sums;
    kernels::table().filterSums(sums.data(), m_row.data(), m_above.data(), bytes, m_step);
    return static_cast<PngFilterType>(std::ranges::min_element(sums) - sums.begin());
}

void PngRowMaker::apply(PngFilterType type, std::uint8_t* out, std::size_t bytes) const noexcept {
    const auto& kernel = kernels::table();
    switch (type) {
    case PngFilterType::none:
        std::memcpy(out, m_row.data(), bytes);
        break;
    case PngFilterType::sub:
        kernel.filterSub(out, m_row.data(), bytes, m_step);
        break;
    case PngFilterType::up:
        kernel.filterUp(out, m_row.data(), m_above.data(), bytes);
        break;
    case PngFilterType::average:
        kernel.filterAvg(out, m_row.data(), m_above.data(), bytes, m_step);
        break;
    case PngFilterType::paeth:
        kernel.filterPaeth(out, m_row.data(), m_above.data(), bytes, m_step);
        break;
    }
}

std::vector<std::uint8_t> pngFilteredRows(ConstPixelView image, bool hasAlpha, const PngForm& form,
                                          eFilterMethods filter, bool isInterlaced) {
    PngRowMaker maker(image, hasAlpha, form, filter, isInterlaced);
    std::vector<std::uint8_t> rows(maker.allBytes());
    maker.make(rows);
    return rows;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
