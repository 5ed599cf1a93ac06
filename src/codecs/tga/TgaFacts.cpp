// What the header of a TGA file tells.
#include "codecs/PictureFacts.h"
#include "codecs/tga/cTGAparser.h"

namespace pixkit {

bool cTGAparser::readHeader(std::span<const std::uint8_t> start, PictureFacts& facts) noexcept {
    constexpr unsigned bitsOfHighColor = 16;
    if (!readHeader(start)) return false;
    const bool isGray = (m_header.imageType & 3) == 3;
    facts.width = m_header.width;
    facts.height = m_header.height;
    facts.isCertain = false; // other formats' data may begin so
    facts.type = imgTGA;
    facts.color = m_header.isColorMapped() ? "palette"
                  : isGray                 ? "gray"
                  : m_header.depth == 32   ? "RGB and alpha"
                                           : "RGB";
    facts.depth = m_header.isColorMapped() || isGray || m_header.depth > bitsOfHighColor ? 8 : 5;
    facts.coding = m_header.isRunLength() ? "run-length" : "";
    return true;
}

std::optional<PictureFacts> readTgaFacts(HeaderSource& file) {
    constexpr std::size_t headerBytes = 18;
    PictureFacts facts{FileFormat::tga};
    const bool isOne = cTGAparser().readHeader(file.read(0, headerBytes), facts);
    return isOne ? std::optional(std::move(facts)) : std::nullopt;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
