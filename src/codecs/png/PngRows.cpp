#include "codecs/png/PngRows.h"
#include "kernels/kernels.h"
#include <algorithm>
#include <array>
#include <cstring>
#include <span>

namespace pixkit {

namespace {

struct Pass {
    std::size_t startRow, startColumn, rowStep, columnStep;

    std::size_t rows(ConstPixelView image) const noexcept { return sizeOf(image.height, startRow, rowStep); }
    std::size_t columns(ConstPixelView image) const noexcept { return sizeOf(image.width, startColumn, columnStep); }

  private:
    static std::size_t sizeOf(std::size_t whole, std::size_t start, std::size_t step) noexcept {
        return whole > start ? (whole - start + step - 1) / step : 0;
    }
};

constexpr std::array<Pass, 1> wholeImage = {{{0, 0, 1, 1}}};
// PNG standard, 8.2
constexpr std::array<Pass, 7> adam7 = {
    {{0, 0, 8, 8}, {0, 4, 8, 8}, {4, 0, 8, 4}, {0, 2, 4, 4}, {2, 0, 4, 2}, {0, 1, 2, 2}, {1, 0, 2, 1}}};

// Filter types as they stand in front of rows (PNG standard, 9.2).
enum FilterType : std::uint8_t { typeNone, typeSub, typeUp, typeAverage, typePaeth };

class RowMaker {
  public:
    RowMaker(ConstPixelView image, bool hasAlpha, const PngForm& form, eFilterMethods filter)
        : m_image(image), m_hasAlpha(hasAlpha), m_form(form), m_filter(filter), m_step(form.filterStep()),
          m_scratch(image.width * 4), m_gathered(image.width * 4), m_row(rowBytes(image.width)), m_above(m_row.size()) {
        // Indexes of a palette are no quantities, and samples that share a byte do not line up with their neighbours.
        const bool isPlain = form.colorType == PngColorType::palette || form.bitDepth < 8;
        if (filter == filterDefault) m_filter = isPlain ? filterNone : filterAdaptive;
    }

    std::size_t rowBytes(std::size_t columns) const noexcept { return (columns * m_form.bitsPerPixel() + 7) / 8; }

    // Returns where the next pass goes.
    std::uint8_t* makePass(const Pass& pass, std::uint8_t* out) {
        const std::size_t columns = pass.columns(m_image);
        if (columns == 0) return out;
        const std::size_t bytes = rowBytes(columns);
        std::fill(m_above.begin(), m_above.end(), std::uint8_t{0}); // above the first row
        for (std::size_t y = 0; y < pass.rows(m_image); ++y) {
            const std::uint8_t* pixels = m_image.rowFromTop(pass.startRow + y * pass.rowStep);
            if (pass.columnStep != 1) pixels = gather(pixels, pass, columns);
            pngSamplesOf(m_form, m_hasAlpha, m_row.data(), pixels, columns, m_scratch.data());
            const FilterType type = typeFor(bytes);
            *out = type;
            apply(type, out + 1, bytes);
            out += bytes + 1;
            m_row.swap(m_above);
        }
        return out;
    }

  private:
    const std::uint8_t* gather(const std::uint8_t* pixels, const Pass& pass, std::size_t columns) noexcept {
        for (std::size_t x = 0; x < columns; ++x)
            std::memcpy(&m_gathered[4 * x], pixels + 4 * (pass.startColumn + x * pass.columnStep), 4);
        return m_gathered.data();
    }

    FilterType typeFor(std::size_t bytes) const noexcept {
        if (m_filter != filterAdaptive) return static_cast<FilterType>(m_filter - filterNone);
        std::array<std::uint64_t, 5> sums;
        kernels::table().filterSums(sums.data(), m_row.data(), m_above.data(), bytes, m_step);
        return static_cast<FilterType>(std::ranges::min_element(sums) - sums.begin());
    }

    void apply(FilterType type, std::uint8_t* out, std::size_t bytes) const noexcept {
        const auto& kernel = kernels::table();
        switch (type) {
        case typeNone:
            std::memcpy(out, m_row.data(), bytes);
            break;
        case typeSub:
            kernel.filterSub(out, m_row.data(), bytes, m_step);
            break;
        case typeUp:
            kernel.filterUp(out, m_row.data(), m_above.data(), bytes);
            break;
        case typeAverage:
            kernel.filterAvg(out, m_row.data(), m_above.data(), bytes, m_step);
            break;
        case typePaeth:
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
    const std::span<const Pass> passes =
        isInterlaced ? std::span<const Pass>(adam7) : std::span<const Pass>(wholeImage);
    std::size_t size = 0;
    for (const Pass& pass : passes) {
        const std::size_t columns = pass.columns(image);
        if (columns > 0) size += pass.rows(image) * (maker.rowBytes(columns) + 1);
    }
    std::vector<std::uint8_t> rows(size);
    std::uint8_t* out = rows.data();
    for (const Pass& pass : passes)
        out = maker.makePass(pass, out);
    return rows;
}

} // namespace pixkit
