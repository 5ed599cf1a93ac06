#include "coding/deflate/BlockWriter.h"
#include <algorithm>

namespace pixkit::deflate {

BlockWriter::BlockWriter(std::span<const std::uint8_t> input, std::vector<std::uint8_t>& out)
    : m_input(input.data()), m_coder(out), m_costs(input.first(std::min<std::size_t>(input.size(), 16384))) {}

void BlockWriter::endSegment() {
    if (m_literals > 0) {
        m_sequences.push_back({m_literals, 0, 0});
        m_segmentBytes += m_literals;
        m_literals = 0;
    }
    if (m_segmentSymbols == 0) return;
    m_costs = Costs(m_segment);
    m_costs.takeLiterals({m_input + m_blockBytes, m_segmentBytes});

    const std::uint64_t segmentCost = m_segment.blockCost();
    if (m_blockBytes > 0) {
        Histogram together = m_block;
        together.add(m_segment);
        const std::uint64_t cost = together.blockCost();
        if (cost <= m_blockCost + segmentCost && m_sequences.size() < mostSequences && m_blockBytes < mostBytes) {
            m_block = together;
            m_blockCost = cost;
        } else {
            writeBlock(m_blockSequences, false);
            m_blockBytes = 0;
        }
    }
    if (m_blockBytes == 0) {
        m_block = m_segment;
        m_blockCost = segmentCost;
    }
    m_blockBytes += m_segmentBytes;
    m_blockSequences = m_sequences.size();
    m_segment = {};
    m_segmentBytes = 0;
    m_segmentSymbols = 0;
}

void BlockWriter::finish() {
    endSegment();
    writeBlock(m_blockSequences, true);
    m_coder.finish();
}

void BlockWriter::writeBlock(std::size_t sequences, bool isLast) {
    m_coder.write({m_input, m_blockBytes}, m_block, std::span(m_sequences).first(sequences), isLast);
    m_input += m_blockBytes;
    m_sequences.erase(m_sequences.begin(), m_sequences.begin() + static_cast<std::ptrdiff_t>(sequences));
}

} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
