// The whole image as rows of bytes from top to bottom, as most other programs keep pictures.
#include "kernels/kernels.h"
#include "shared/AlphaType.h"
#include "surface/attempt.h"
#include <cstring>
#include <utility>
#include <vector>

namespace pixkit {

namespace {

// A caller's rows.
class RowLayout {
  public:
    RowLayout(std::size_t width, std::size_t stride, RowFormat format) noexcept
        : m_rowBytes(width * 4), m_stride(stride == 0 ? m_rowBytes : stride),
          m_isRGB(format == RowFormat::straightRGBA || format == RowFormat::premultipliedRGBA),
          m_isStraight(format == RowFormat::straightRGBA || format == RowFormat::straightBGRA) {}

    std::size_t rowBytes() const noexcept { return m_rowBytes; }
    // Whether so many rows, of which there is one at least, lie in so many bytes. No product wraps round.
    bool fits(std::size_t rows, std::size_t bytes) const noexcept {
        return m_stride >= m_rowBytes && bytes >= m_rowBytes && (bytes - m_rowBytes) / m_stride >= rows - 1;
    }
    void copyOut(ConstPixelView image, bool isOpaque, std::uint8_t* out) const;
    void copyIn(PixelView image, const std::uint8_t* rows) const;

  private:
    std::size_t m_rowBytes, m_stride;
    bool m_isRGB, m_isStraight;
};

void RowLayout::copyOut(ConstPixelView image, bool isOpaque, std::uint8_t* out) const {
    const auto& kernel = kernels::table();
    for (std::size_t y = 0; y < image.height; ++y, out += m_stride) {
        if (m_isStraight && !isOpaque) {
            kernel.straighten(out, image.rowFromTop(y), image.width);
        } else {
            std::memcpy(out, image.rowFromTop(y), m_rowBytes);
        }
        if (isOpaque) kernel.setOpaque(out, image.width);
        if (m_isRGB) kernel.swapRedBlue(out, out, image.width);
    }
}

void RowLayout::copyIn(PixelView image, const std::uint8_t* rows) const {
    const auto& kernel = kernels::table();
    for (std::size_t y = 0; y < image.height; ++y, rows += m_stride) {
        std::uint8_t* const stored = image.rowFromTop(y);
        if (m_isRGB) {
            kernel.swapRedBlue(stored, rows, image.width);
        } else {
            std::memcpy(stored, rows, m_rowBytes);
        }
        // There and back holds colours at their alpha, and changes no others.
        if (!m_isStraight) kernel.straighten(stored, stored, image.width);
        kernel.premultiply(stored, image.width);
    }
}

constexpr Reason tooFewBytes = "the rows do not fit into the bytes";

} // namespace

bool cPixSheet::GetRows(std::span<std::uint8_t> rows, RowFormat Format, std::size_t Stride) const noexcept {
    return attempt(Call(*this, "GetRows", "rows, Format, Stride", rows, Format, Stride), [&] {
        const ConstPixelView image = HostAccess::pixels(*this);
        if (!image) return refused(noImage);
        const RowLayout layout(image.width, Stride, Format);
        if (!layout.fits(image.height, rows.size())) return refused(tooFewBytes);
        layout.copyOut(image, Alpha() == AlphaNone, rows.data());
        return done();
    });
}

std::vector<std::uint8_t> cPixSheet::GetRows(RowFormat Format) const noexcept {
    std::vector<std::uint8_t> rows;
    attempt(Call(*this, "GetRows", "Format", Format), [&] {
        rows.resize(HostAccess::pixels(*this).bytes().size());
        GetRows(rows, Format);
        return state().m_outcome;
    });
    return rows;
}

bool cPixSheet::SetRows(std::span<const std::uint8_t> rows, std::int32_t Width, std::int32_t Height, RowFormat Format,
                        std::size_t Stride) noexcept {
    const Call call(*this, "SetRows", "rows, Width, Height, Format, Stride", rows, Width, Height, Format, Stride);
    const bool isSet = attempt(call, [&] {
        if (Width < 1 || Height < 1) return refused("a width or height below 1");
        const RowLayout layout(static_cast<std::size_t>(Width), Stride, Format);
        if (!layout.fits(static_cast<std::size_t>(Height), rows.size())) return refused(tooFewBytes);
        std::vector<std::uint8_t> own; // the old image goes before its pixels could be read
        if (overlap(HostAccess::pixels(*this).bytes(), rows)) own.assign(rows.begin(), rows.end());
        if (Outcome made = state().pvInitializeDIB(Width, Height); !made) return made;
        const PixelView image = HostAccess::pixels(*this);
        layout.copyIn(image, own.empty() ? rows.data() : own.data());
        state().m_AlphaImage = alphaTypeOf(image);
        return done();
    });
    if (!isSet) state().pvDestroyDIB();
    return isSet;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
