#include "codecs/png/PngRows.h"
#include "codecs/png/PngFilters.h"
#include "coding/Interlace.h"
#include "coding/RowBytes.h"
#include "kernels/kernels.h"
#include <algorithm>
#include <array>
#include <cstring>
#include <span>

namespace pixkit {

namespace {

class RowMaker {
  public:
    RowMaker(ConstPixelView image, bool hasAlpha, const PngForm& form, eFilterMethods filter)
        : m_image(image), m_hasAlpha(hasAlpha), m_form(form), m_filter(filter), m_step(form.filterStep()),
          m_scratch(image.width * 4), m_gathered(image.width * 4), m_row(rowBytes(image.width)), m_above(m_row.size()) {
        // Indexes of a palette are no quantities, and samples that share a byte do not line up with their neighbours.
        const bool isPlain = form.colorType == PngColorType::palette || form.bitDepth < 8;
        if (filter == filterDefault) m_filter = isPlain ? filterNone : filterAdaptive;
    }

    std::size_t rowBytes(std::size_t columns) const noexcept {
        return static_cast<std::size_t>(packedRowBytes(columns, m_form.bitsPerPixel()));
    }

    // Returns where the next pass goes.
    std::uint8_t* makePass(const InterlacePass& pass, std::uint8_t* out) {
        const std::size_t columns = pass.columns(m_image.width);
        if (columns == 0) return out;
        const std::size_t bytes = rowBytes(columns);
        std::fill(m_above.begin(), m_above.end(), std::uint8_t{0}); // above the first row
        for (std::size_t y = 0; y < pass.rows(m_image.height); ++y) {
            const std::uint8_t* pixels = m_image.rowFromTop(pass.startRow + y * pass.rowStep);
            if (pass.columnStep != 1) pixels = gather(pixels, pass, columns);
            pngSamplesOf(m_form, m_hasAlpha, m_row.data(), pixels, columns, m_scratch.data());
            const PngFilterType type = typeFor(bytes);
            *out = static_cast<std::uint8_t>(type);
            apply(type, out + 1, bytes);
            out += bytes + 1;
            m_row.swap(m_above);
        }
        return out;
    }

  private:
    const std::uint8_t* gather(const std::uint8_t* pixels, const InterlacePass& pass, std::size_t columns) noexcept {
        for (std::size_t x = 0; x < columns; ++x)
            std::memcpy(&m_gathered[4 * x], pixels + 4 * (pass.startColumn + x * pass.columnStep), 4);
        return m_gathered.data();
    }

    PngFilterType typeFor(std::size_t bytes) const noexcept {
        // The methods of one type come in the order of the types.
        if (m_filter != filterAdaptive) return static_cast<PngFilterType>(m_filter - filterNone);
        std::array<std::uint64_t, 5> sums;
        kernels::table().filterSums(sums.data(), m_row.data(), m_above.data(), bytes, m_step);
        return static_cast<PngFilterType>(std::ranges::min_element(sums) - sums.begin());
    }

    void apply(PngFilterType type, std::uint8_t* out, std::size_t bytes) const noexcept {
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

    ConstPixelView m_image;
    bool m_hasAlpha;
    const PngForm& m_form;
    eFilterMethods m_filter;
    std::size_t m_step;
    std::vector<std::uint8_t> m_scratch, m_gathered, m_row, m_above;
};

} // namespace

std::vector<std::uint8_t> pngFilteredRows(ConstPixelView image, bool hasAlpha, const PngForm& form,
                                          eFilterMethods filter, bool isInterlaced) {
    RowMaker maker(image, hasAlpha, form, filter);
    const std::span<const InterlacePass> passes =
        isInterlaced ? std::span<const InterlacePass>(adam7) : std::span<const InterlacePass>(wholePicture);
    std::size_t size = 0;
    for (const InterlacePass& pass : passes) {
        const std::size_t columns = pass.columns(image.width);
        if (columns > 0) size += pass.rows(image.height) * (maker.rowBytes(columns) + 1);
    }
    std::vector<std::uint8_t> rows(size);
    std::uint8_t* out = rows.data();
    for (const InterlacePass& pass : passes)
        out = maker.makePass(pass, out);
    return rows;
}

} // namespace pixkit
