// What the headers of a BMP file tell.
#include "codecs/PictureFacts.h"
#include "codecs/bmp/BmpInfo.h"
#include "codecs/bmp/cBMPparser.h"
#include "coding/ByteReader.h"

namespace pixkit {

std::optional<PictureFacts> readBmpFacts(HeaderSource& file) {
    constexpr std::size_t headers = 65536;
    const auto start = file.read(0, headers);
    Reason why;
    const auto info = readBmpInfo(start, why);
    if (!info || file.size() < info->pixelOffset) return {};
    if (cBMPparser::problem(*info, file.size() - info->pixelOffset)) return {};
    PictureFacts facts{FileFormat::bmp, info->width, info->height};
    const bool hasPalette = info->bitCount <= 8, hasMasks = info->bitCount == 16;
    facts.isCertain = info->masks.alpha == 0 && info->bitCount != 64; // whether alpha means anything only pixels tell
    facts.depth = hasPalette ? info->bitCount : hasMasks ? 5 : info->bitCount == 64 ? 16 : 8;
    facts.color = hasPalette ? "palette" : "RGB";
    facts.coding = info->isRunLength() ? "run-length" : "";
    const ByteReader reader(start);
    const std::uint32_t x = reader.littleEndian32(38).value_or(0), y = reader.littleEndian32(42).value_or(0);
    const bool hasDensity = reader.littleEndian32(14).value_or(0) >= 40 && x != 0 && y != 0;
    if (hasDensity) facts.density = PictureDensity{x, y, PictureDensity::Unit::metre};
    facts.notes = cBMPparser::notes(*info, start, file.size() - info->pixelOffset);
    if (facts.notes.hasProfile) facts.profile = "unnamed";
    return facts;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
