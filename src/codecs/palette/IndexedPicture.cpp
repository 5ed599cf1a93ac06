#include "codecs/palette/IndexedPicture.h"
#include "kernels/kernels.h"
#include <algorithm>

namespace pixkit {

namespace {

// The indexes of colours, in the order in which they came.
class ColorIndexes {
  public:
    explicit ColorIndexes(std::size_t mostColors) noexcept : m_most(mostColors) {}
    // Nothing for a colour too many.
    std::optional<std::uint8_t> indexOf(const std::uint8_t* pixel) {
        const std::uint32_t color = pixel[0] | std::uint32_t{pixel[1]} << 8 | std::uint32_t{pixel[2]} << 16;
        std::size_t slot = color * 0x9E3779B1U >> 22; // 10 bits
        while (m_slots[slot].color != color) {
            if (m_slots[slot].color == unused) {
                if (m_colors.size() == m_most) return {};
                m_slots[slot] = {color, static_cast<std::uint8_t>(m_colors.size())};
                m_colors.push_back({pixel[2], pixel[1], pixel[0]});
                break;
            }
            slot = (slot + 1) % m_slots.size();
        }
        return m_slots[slot].index;
    }
    std::vector<IndexedPicture::Color>& colors() noexcept { return m_colors; }

  private:
    static constexpr std::uint32_t unused = 0xFFFFFFFF; // no colour: those have 24 bits
    struct Slot {
        std::uint32_t color = unused;
        std::uint8_t index = 0;
    };
    std::size_t m_most;
    std::array<Slot, 1024> m_slots{}; // four times the most colours, so that searches are short
    std::vector<IndexedPicture::Color> m_colors;
};

// --- error diffusion

constexpr int webSafeStep = 51;
constexpr std::uint8_t webSafeTransparent = 216;

// What is still owed to the pixels of two rows, in sixteenths; one pixel more on each side.
class DiffusedErrors {
  public:
    explicit DiffusedErrors(std::size_t width) : m_here(width + 2), m_below(width + 2) {}

    // The channel with what is owed to it, held within 0 .. 255.
    int corrected(std::size_t x, std::size_t channel, int value) const noexcept {
        return std::clamp(value + ((m_here[x + 1][channel] + 8) >> 4), 0, 255);
    }
    // Floyd and Steinberg: 7 sixteenths go ahead, 3, 5 and 1 to the row below, from behind to ahead.
    void spread(std::size_t x, int ahead, std::size_t channel, int error) noexcept {
        const std::size_t at = x + 1;
        const std::size_t front = at + static_cast<std::size_t>(ahead), back = at - static_cast<std::size_t>(ahead);
        m_here[front][channel] += 7 * error;
        m_below[back][channel] += 3 * error;
        m_below[at][channel] += 5 * error;
        m_below[front][channel] += error;
    }
    void nextRow() {
        std::swap(m_here, m_below);
        std::ranges::fill(m_below, std::array<int, 3>{});
    }

  private:
    std::vector<std::array<int, 3>> m_here, m_below;
};

} // namespace

StraightRows::StraightRows(ConstPixelView image, bool hasAlpha, std::uint8_t tolerance)
    : m_image(image), m_hasAlpha(hasAlpha), m_tolerance(tolerance) {
    if (hasAlpha) m_straight.resize(image.width * 4);
}

const std::uint8_t* StraightRows::operator[](std::size_t y) {
    const std::uint8_t* row = m_image.rowFromTop(y);
    if (!m_hasAlpha) return row;
    kernels::table().unpremultiply(m_straight.data(), row, m_image.width);
    return m_straight.data();
}

std::optional<IndexedPicture> exactPicture(StraightRows& rows, std::size_t mostColors) {
    IndexedPicture picture;
    picture.indexes.resize(rows.width() * rows.height());
    ColorIndexes colors(mostColors);
    std::vector<std::size_t> clear; // where runs of transparent pixels begin and end, by turns
    std::uint8_t* out = picture.indexes.data();
    for (std::size_t y = 0; y < rows.height(); ++y) {
        const std::uint8_t* pixel = rows[y];
        for (std::size_t x = 0; x < rows.width(); ++x, pixel += 4, ++out) {
            const bool isClear = rows.isTransparent(pixel);
            if (isClear != (clear.size() % 2 == 1))
                clear.push_back(static_cast<std::size_t>(out - picture.indexes.data()));
            if (isClear) continue;
            const auto index = colors.indexOf(pixel);
            if (!index) return {};
            *out = *index;
        }
    }
    picture.palette = std::move(colors.colors());
    if (clear.empty()) return picture;
    if (picture.palette.size() == mostColors) return {};
    picture.transparentIndex = static_cast<std::uint8_t>(picture.palette.size());
    picture.palette.push_back({});
    if (clear.size() % 2 == 1) clear.push_back(picture.indexes.size());
    for (std::size_t i = 0; i < clear.size(); i += 2)
        std::fill_n(picture.indexes.begin() + static_cast<std::ptrdiff_t>(clear[i]), clear[i + 1] - clear[i],
                    *picture.transparentIndex);
    return picture;
}

IndexedPicture webSafePicture(StraightRows& rows) {
    IndexedPicture picture;
    for (int color = 0; color < webSafeTransparent; ++color) {
        const auto channel = [&](int level) { return static_cast<std::uint8_t>(level % 6 * webSafeStep); };
        picture.palette.push_back({channel(color / 36), channel(color / 6), channel(color)});
    }
    picture.indexes.resize(rows.width() * rows.height());
    DiffusedErrors errors(rows.width());
    for (std::size_t y = 0; y < rows.height(); ++y, errors.nextRow()) {
        const std::uint8_t* pixels = rows[y];
        std::uint8_t* out = picture.indexes.data() + y * rows.width();
        // To the right and to the left by turns, so that errors do not drift to one side.
        const int ahead = y % 2 == 0 ? 1 : -1;
        for (std::size_t i = 0; i < rows.width(); ++i) {
            const std::size_t x = ahead > 0 ? i : rows.width() - 1 - i;
            const std::uint8_t* pixel = pixels + 4 * x;
            if (rows.isTransparent(pixel)) { // nothing is seen of it, and nothing passed on
                out[x] = webSafeTransparent;
                picture.transparentIndex = webSafeTransparent;
                continue;
            }
            int index = 0;
            for (std::size_t channel = 3; channel-- > 0;) { // red first
                const int wanted = errors.corrected(x, channel, pixel[channel]);
                const int level = (wanted + webSafeStep / 2) / webSafeStep;
                errors.spread(x, ahead, channel, wanted - level * webSafeStep);
                index = index * 6 + level;
            }
            out[x] = static_cast<std::uint8_t>(index);
        }
    }
    if (picture.transparentIndex) picture.palette.push_back({});
    return picture;
}

} // namespace pixkit
