// What the blocks of a GIF file tell. Every one says where the next begins, so all of the file is walked.
#include "codecs/PictureFacts.h"
#include "coding/GifFrame.h"
#include <limits>
#include <stdexcept>

namespace pixkit {

std::optional<PictureFacts> readGifFacts(HeaderSource& file) {
    constexpr std::uint32_t millisecondsOfDelay = 10;
    if (file.size() > std::numeric_limits<std::int32_t>::max()) throw std::runtime_error("the file cannot be read");
    const auto bytes = file.read(0, static_cast<std::size_t>(file.size()));
    PictureFacts facts{FileFormat::gif};
    facts.frames = 0;
    facts.notes.endsEarly = forEachGifImage(bytes, [&](const GifFrame& frame) {
        if (facts.frames++ == 0) {
            facts.width = static_cast<std::int32_t>(frame.width);
            facts.height = static_cast<std::int32_t>(frame.height);
            facts.alpha = frame.TransIndex ? AlphaSimple : AlphaNone;
            facts.coding = frame.isInterlaced ? "interlaced" : "";
            for (std::size_t colors = 2; colors <= frame.gColorsUsed; colors *= 2)
                ++facts.depth;
        }
        facts.delays.push_back(frame.delay * millisecondsOfDelay);
    });
    if (facts.width == 0 || facts.height == 0 || facts.depth == 0) return {};
    if (facts.frames == 1) facts.delays.clear();
    facts.type = imgGIF;
    facts.color = "palette";
    facts.notes.moreFrames = facts.frames - 1;
    return facts;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
