#include "codecs/PictureFacts.h"

namespace pixkit {

std::optional<PictureFacts> readPictureFacts(HeaderSource& file) {
    const auto start = file.read(0, sniffedBytes);
    for (const Format& format : formats()) {
        if (format.sniff == nullptr || !format.sniff(start)) continue;
        switch (format.id) {
        case FileFormat::png:
            return readPngFacts(file);
        case FileFormat::jpg:
            return readJpgFacts(file);
        case FileFormat::gif:
            return readGifFacts(file);
        case FileFormat::bmp:
            return readBmpFacts(file);
        default:
            return {};
        }
    }
    return readTgaFacts(file); // which bear no signature
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
