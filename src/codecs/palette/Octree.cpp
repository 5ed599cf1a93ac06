// A palette that fits the picture: an octree of its colours is cut back to as many leaves as wanted, and their means
// are then moved to where they serve best. Doubles hold errors in a fixed order of operations, so that every build
// chooses alike.
#include "codecs/palette/IndexedPicture.h"
#include <algorithm>
#include <cmath>
#include <limits>
#include <queue>

namespace pixkit {

namespace {

constexpr unsigned deepest = 6; // levels below the root: so many bits of each channel tell cells apart
constexpr std::size_t cellCount = std::size_t{1} << (3 * deepest);
constexpr unsigned lowBits = 8 - deepest;
constexpr int refinements = 4;

using Color = IndexedPicture::Color;

// Red, green, blue, `bits` each: the number of a node of that level.
std::size_t nodeIndex(unsigned r, unsigned g, unsigned b, unsigned bits) noexcept {
    return (std::size_t{r} << bits | g) << bits | b;
}
std::size_t cellOf(const std::uint8_t* pixel) noexcept {
    return nodeIndex(pixel[2] >> lowBits, pixel[1] >> lowBits, pixel[0] >> lowBits, deepest);
}

// Pixels of colours that agree in their upper bits, and the sums of their lower bits: three times the most pixels that
// a picture has fits.
struct Cell {
    std::uint32_t count, low[3]; // R, G, B
};

// Pixels that are moved together: those of a cell, or, in a picture of fewer colours, of one colour.
struct Sample {
    std::uint32_t cell;
    std::uint32_t count;
    std::array<std::uint64_t, 3> sum;
    Color mean; // rounded
    std::uint8_t nearest = 0;
};

struct Node {
    double count = 0;
    std::array<double, 3> sum{};
    std::uint8_t children = 0; // how many have pixels
    std::uint8_t leaves = 0;   // how many of those are leaves
};

double squaredDistance(const Node& a, const Node& b) noexcept {
    double sum = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const double difference = a.sum[i] / a.count - b.sum[i] / b.count;
        sum += difference * difference;
    }
    return sum;
}

class Octree {
  public:
    explicit Octree(const std::vector<Sample>& samples);
    // Means of the leaves, when the tree is cut back to at most `most` of them: always there where it costs the least
    // (the squares of what the pixels change by).
    std::vector<Color> cutBack(std::size_t most);

  private:
    struct Cut {
        double cost;
        unsigned level;
        std::size_t index;
        // Of equal costs the deeper and then the first: an order that does not depend on the queue.
        bool operator>(const Cut& other) const noexcept {
            if (cost != other.cost) return cost > other.cost;
            if (level != other.level) return level < other.level;
            return index > other.index;
        }
    };

    template <class Use>
    void forChildren(unsigned level, std::size_t index, Use&& use) {
        const unsigned mask = (1U << level) - 1;
        const unsigned b = static_cast<unsigned>(index) & mask, g = static_cast<unsigned>(index >> level) & mask,
                       r = static_cast<unsigned>(index >> (2 * level)) & mask;
        for (unsigned i = 0; i < 8; ++i) {
            Node& child =
                m_levels[level + 1][nodeIndex(2 * r + (i >> 2), 2 * g + (i >> 1 & 1), 2 * b + (i & 1), level + 1)];
            if (child.count > 0) use(child);
        }
    }
    static std::size_t parentIndex(unsigned level, std::size_t index) noexcept {
        const unsigned mask = (1U << level) - 1;
        return nodeIndex((static_cast<unsigned>(index >> (2 * level)) & mask) >> 1,
                         (static_cast<unsigned>(index >> level) & mask) >> 1,
                         (static_cast<unsigned>(index) & mask) >> 1, level - 1);
    }
    Cut cutAt(unsigned level, std::size_t index) {
        const Node& node = m_levels[level][index];
        double cost = 0;
        forChildren(level, index, [&](const Node& child) { cost += child.count * squaredDistance(child, node); });
        return {cost, level, index};
    }

    std::array<std::vector<Node>, deepest + 1> m_levels;
    std::size_t m_leaves = 0;
};

Octree::Octree(const std::vector<Sample>& samples) {
    for (unsigned level = 0; level <= deepest; ++level)
        m_levels[level].resize(std::size_t{1} << (3 * level));
    for (const Sample& sample : samples) {
        Node& leaf = m_levels[deepest][sample.cell];
        if (leaf.count == 0) ++m_leaves;
        leaf.count += sample.count;
        for (std::size_t i = 0; i < 3; ++i)
            leaf.sum[i] += static_cast<double>(sample.sum[i]);
    }
    for (unsigned level = deepest; level > 0; --level) {
        for (std::size_t index = 0; index < m_levels[level].size(); ++index) {
            const Node& child = m_levels[level][index];
            if (child.count == 0) continue;
            Node& parent = m_levels[level - 1][parentIndex(level, index)];
            parent.count += child.count;
            for (std::size_t i = 0; i < 3; ++i)
                parent.sum[i] += child.sum[i];
            ++parent.children;
            if (level == deepest) ++parent.leaves;
        }
    }
}

std::vector<Color> Octree::cutBack(std::size_t most) {
    std::vector<bool> isCut[deepest + 1];
    for (unsigned level = 0; level <= deepest; ++level)
        isCut[level].resize(m_levels[level].size(), level == deepest);
    std::priority_queue<Cut, std::vector<Cut>, std::greater<>> cuts;
    for (std::size_t index = 0; index < m_levels[deepest - 1].size(); ++index) {
        if (m_levels[deepest - 1][index].count > 0) cuts.push(cutAt(deepest - 1, index));
    }
    while (m_leaves > most) {
        const Cut cut = cuts.top();
        cuts.pop();
        m_leaves -= m_levels[cut.level][cut.index].children - std::size_t{1};
        isCut[cut.level][cut.index] = true;
        if (cut.level == 0) break;
        const std::size_t above = parentIndex(cut.level, cut.index);
        Node& parent = m_levels[cut.level - 1][above];
        if (++parent.leaves == parent.children) cuts.push(cutAt(cut.level - 1, above));
    }
    std::vector<Color> means;
    for (unsigned level = 0; level <= deepest; ++level) {
        for (std::size_t index = 0; index < m_levels[level].size(); ++index) {
            const Node& node = m_levels[level][index];
            if (node.count == 0 || !isCut[level][index]) continue;
            if (level > 0 && isCut[level - 1][parentIndex(level, index)]) continue; // not a leaf: cut off
            Color mean;
            for (std::size_t i = 0; i < 3; ++i)
                mean[i] = static_cast<std::uint8_t>(std::lround(node.sum[i] / node.count));
            means.push_back(mean);
        }
    }
    return means;
}

int squaredDistance(const Color& a, const Color& b) noexcept {
    int sum = 0;
    for (std::size_t i = 0; i < 3; ++i)
        sum += (a[i] - b[i]) * (a[i] - b[i]);
    return sum;
}

// Finds nearest colours. Space is divided into boxes; for each, when it is first asked for, those colours are noted
// that can be the nearest of any point in it: few.
class NearestColor {
  public:
    explicit NearestColor(const std::vector<Color>& palette) : m_palette(palette) {}

    // The first of those that are equally near.
    std::uint8_t operator()(const Color& color) {
        const std::size_t box = nodeIndex(color[0] >> boxBits, color[1] >> boxBits, color[2] >> boxBits, 8 - boxBits);
        Range& candidates = m_boxes[box];
        if (candidates.count == 0) candidates = findCandidates(color);
        int least = std::numeric_limits<int>::max();
        std::uint8_t nearest = 0;
        for (std::size_t i = 0; i < candidates.count; ++i) {
            const std::uint8_t candidate = m_candidates[candidates.begin + i];
            const int distance = squaredDistance(m_palette[candidate], color);
            if (distance < least) {
                least = distance;
                nearest = candidate;
            }
        }
        return nearest;
    }

  private:
    static constexpr unsigned boxBits = 4;
    static constexpr int boxSide = 1 << boxBits;
    struct Range {
        std::uint32_t begin = 0, count = 0; // in m_candidates; none: not looked for yet
    };

    // Of the box that a colour lies in.
    Range findCandidates(const Color& inside) {
        std::array<int, 256> nearestCorner;
        int bound = std::numeric_limits<int>::max(); // some colour is at least that near everywhere in the box
        for (std::size_t i = 0; i < m_palette.size(); ++i) {
            int near = 0, far = 0;
            for (std::size_t channel = 0; channel < 3; ++channel) {
                const int value = m_palette[i][channel];
                const int low = inside[channel] / boxSide * boxSide, high = low + boxSide - 1;
                const int gap = std::max({low - value, value - high, 0});
                const int reach = std::max(value - low, high - value);
                near += gap * gap;
                far += reach * reach;
            }
            nearestCorner[i] = near;
            bound = std::min(bound, far);
        }
        Range range{static_cast<std::uint32_t>(m_candidates.size()), 0};
        for (std::size_t i = 0; i < m_palette.size(); ++i) {
            if (nearestCorner[i] <= bound) m_candidates.push_back(static_cast<std::uint8_t>(i));
        }
        range.count = static_cast<std::uint32_t>(m_candidates.size()) - range.begin;
        return range;
    }

    const std::vector<Color>& m_palette;
    std::array<Range, std::size_t{1} << (3 * (8 - boxBits))> m_boxes{};
    std::vector<std::uint8_t> m_candidates;
};

void assignNearest(std::vector<Sample>& samples, const std::vector<Color>& palette) {
    NearestColor nearest(palette);
    for (Sample& sample : samples)
        sample.nearest = nearest(sample.mean);
}

// Moves every colour to the mean of what is nearest to it. One that nothing is nearest to goes where the error is
// greatest.
void moveToMeans(std::vector<Sample>& samples, std::vector<Color>& palette) {
    struct Sum {
        std::uint64_t count = 0;
        std::array<std::uint64_t, 3> sum{};
    };
    std::vector<Sum> sums(palette.size());
    for (const Sample& sample : samples) {
        Sum& sum = sums[sample.nearest];
        sum.count += sample.count;
        for (std::size_t i = 0; i < 3; ++i)
            sum.sum[i] += sample.sum[i];
    }
    for (std::size_t entry = 0; entry < palette.size(); ++entry) {
        const Sum& sum = sums[entry];
        if (sum.count > 0) {
            for (std::size_t i = 0; i < 3; ++i)
                palette[entry][i] = static_cast<std::uint8_t>((sum.sum[i] + sum.count / 2) / sum.count);
            continue;
        }
        Sample* worst = nullptr;
        std::uint64_t greatest = 0;
        for (Sample& sample : samples) {
            const auto distance = static_cast<std::uint64_t>(squaredDistance(sample.mean, palette[sample.nearest]));
            if (distance * sample.count > greatest) {
                greatest = distance * sample.count;
                worst = &sample;
            }
        }
        if (worst == nullptr) continue;
        palette[entry] = worst->mean;
        worst->nearest = static_cast<std::uint8_t>(entry);
    }
}

// --- from pixels to samples and back

// Calls `visit` with each pixel that is not transparent, until it answers false; then the result is false too.
template <class Visit>
bool visitOpaque(StraightRows& rows, bool& hasTransparency, Visit&& visit) {
    for (std::size_t y = 0; y < rows.height(); ++y) {
        const std::uint8_t* pixel = rows[y];
        for (std::size_t x = 0; x < rows.width(); ++x, pixel += 4) {
            if (rows.isTransparent(pixel)) {
                hasTransparency = true;
            } else if (!visit(pixel)) {
                return false;
            }
        }
    }
    return true;
}

// Samples of one colour each, for pictures that have not too many.
class SamplesOfColors {
  public:
    // Such that a picture of more colours has pixels in at least 256 cells.
    static constexpr std::size_t most = std::size_t{256} << (3 * lowBits);

    // False for a picture of more colours.
    bool collect(StraightRows& rows, std::vector<Sample>& samples, bool& hasTransparency) {
        const bool haveFew = visitOpaque(rows, hasTransparency, [&](const std::uint8_t* pixel) {
            std::uint16_t& number = numberOf(pixel);
            if (number == 0) {
                if (samples.size() == most) return false;
                samples.push_back({static_cast<std::uint32_t>(cellOf(pixel)), 0, {}, {pixel[2], pixel[1], pixel[0]}});
                number = static_cast<std::uint16_t>(samples.size());
            }
            ++samples[number - 1U].count;
            return true;
        });
        if (!haveFew) return false;
        for (Sample& sample : samples) {
            for (std::size_t i = 0; i < 3; ++i)
                sample.sum[i] = std::uint64_t{sample.mean[i]} * sample.count;
        }
        return true;
    }
    std::uint32_t sampleOf(const std::uint8_t* pixel) { return numberOf(pixel) - 1U; }

  private:
    static constexpr unsigned mask = (1U << lowBits) - 1;
    // Numbers of the colours of a cell, by their lower bits; samples and blocks are counted from 1, and 0 is none yet.
    using Block = std::array<std::uint16_t, std::size_t{1} << (3 * lowBits)>;
    static_assert(most <= 0xFFFF);

    // Two steps whatever the colours are: with a hash somebody could choose them so that they all meet in one place.
    std::uint16_t& numberOf(const std::uint8_t* pixel) {
        std::uint16_t& block = m_blockOfCell[cellOf(pixel)];
        if (block == 0) {
            m_blocks.emplace_back();
            block = static_cast<std::uint16_t>(m_blocks.size());
        }
        return m_blocks[block - 1U][nodeIndex(pixel[2] & mask, pixel[1] & mask, pixel[0] & mask, lowBits)];
    }

    std::vector<std::uint16_t> m_blockOfCell = std::vector<std::uint16_t>(cellCount);
    std::vector<Block> m_blocks; // at most one more than there are samples
};

std::vector<Sample> samplesOfCells(StraightRows& rows, bool& hasTransparency) {
    std::vector<Cell> cells(cellCount);
    visitOpaque(rows, hasTransparency, [&](const std::uint8_t* pixel) {
        Cell& cell = cells[cellOf(pixel)];
        constexpr unsigned mask = (1U << lowBits) - 1;
        ++cell.count;
        cell.low[0] += pixel[2] & mask;
        cell.low[1] += pixel[1] & mask;
        cell.low[2] += pixel[0] & mask;
        return true;
    });
    std::vector<Sample> samples;
    for (std::size_t index = 0; index < cellCount; ++index) {
        const Cell& cell = cells[index];
        if (cell.count == 0) continue;
        Sample sample{static_cast<std::uint32_t>(index), cell.count, {}, {}};
        for (unsigned i = 0; i < 3; ++i) {
            const std::uint64_t upper = (index >> (deepest * (2 - i)) & ((1U << deepest) - 1)) << lowBits;
            sample.sum[i] = upper * cell.count + cell.low[i];
            sample.mean[i] = static_cast<std::uint8_t>((sample.sum[i] + cell.count / 2) / cell.count);
        }
        samples.push_back(sample);
    }
    return samples;
}

template <class EntryOf>
void fillIndexes(IndexedPicture& picture, StraightRows& rows, EntryOf&& entryOf) {
    picture.indexes.resize(rows.width() * rows.height());
    std::uint8_t* out = picture.indexes.data();
    for (std::size_t y = 0; y < rows.height(); ++y) {
        const std::uint8_t* pixel = rows[y];
        for (std::size_t x = 0; x < rows.width(); ++x, pixel += 4)
            *out++ = rows.isTransparent(pixel) ? *picture.transparentIndex : entryOf(pixel);
    }
}

} // namespace

IndexedPicture adaptivePicture(StraightRows& rows, std::size_t mostColors) {
    bool hasTransparency = false;
    std::vector<Sample> samples;
    SamplesOfColors colors;
    const bool hasFewColors = colors.collect(rows, samples, hasTransparency);
    if (!hasFewColors) samples = samplesOfCells(rows, hasTransparency);

    const std::size_t most = hasTransparency ? mostColors - 1 : mostColors;
    IndexedPicture picture;
    std::vector<Color>& palette = picture.palette;
    palette = Octree(samples).cutBack(most);
    // A cut may take up to seven leaves more than it had to, and cells may be too few; there are samples enough, and
    // the entries go where they are needed.
    palette.resize(most, palette.back());
    assignNearest(samples, palette);
    for (int i = 0; i < refinements; ++i) {
        moveToMeans(samples, palette);
        assignNearest(samples, palette);
    }
    if (hasTransparency) {
        picture.transparentIndex = static_cast<std::uint8_t>(most);
        palette.push_back({});
    }

    if (hasFewColors) {
        fillIndexes(picture, rows, [&](const std::uint8_t* pixel) { return samples[colors.sampleOf(pixel)].nearest; });
    } else {
        std::vector<std::uint8_t> entryOfCell(cellCount);
        for (const Sample& sample : samples)
            entryOfCell[sample.cell] = sample.nearest;
        fillIndexes(picture, rows, [&](const std::uint8_t* pixel) { return entryOfCell[cellOf(pixel)]; });
    }
    return picture;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
