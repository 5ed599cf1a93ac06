#include "coding/GifFrame.h"
#include "coding/ByteReader.h"
#include <algorithm>
#include <string_view>

namespace pixkit {

namespace {

using namespace std::string_view_literals;

// Goes forward over the file. Once a byte that is asked for is not there, `endsEarly` stays true, and all bytes are 0.
class Walker {
  public:
    explicit Walker(std::span<const std::uint8_t> file) noexcept : m_file(file) {}

    bool endsEarly() const noexcept { return m_endsEarly; }
    std::size_t position() const noexcept { return m_position; }

    std::uint8_t byte() noexcept {
        const auto value = m_file.byte(m_position++);
        if (!value) m_endsEarly = true;
        return value.value_or(0);
    }
    std::size_t word() noexcept {
        const std::size_t low = byte();
        return low | std::size_t{byte()} << 8;
    }
    // Whether the bytes are there is found out by what is read behind them: something is, always.
    void skip(std::size_t count) noexcept { m_position += count; }
    // A chain of sub-blocks: each begins with its length, and one of length 0 ends them.
    void SkipGifBlock() noexcept {
        for (std::uint8_t length = byte(); length != 0; length = byte())
            skip(length);
    }

  private:
    ByteReader m_file;
    std::size_t m_position = 0;
    bool m_endsEarly = false;
};

// In capitals or not.
bool hasGifSignature(std::span<const std::uint8_t> file) noexcept {
    const auto lower = [](std::uint8_t byte) {
        return static_cast<char>(byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte);
    };
    return file.size() >= 6 && (std::ranges::equal(file.first(6), "gif89a"sv, {}, lower) ||
                                std::ranges::equal(file.first(6), "gif87a"sv, {}, lower));
}

// A packed byte that announces a colour table, which begins here, holds the logarithm of its number of entries, less
// one. False when it announces none.
bool skipColorTable(Walker& walker, std::uint8_t packed, GifFrame& frame) noexcept {
    if ((packed & 0x80) == 0) return false;
    frame.tblOffset = walker.position();
    frame.gColorsUsed = std::size_t{2} << (packed & 7);
    walker.skip(3 * frame.gColorsUsed);
    return true;
}

void readExtension(Walker& walker, GifFrame& frame) noexcept {
    constexpr std::uint8_t graphicControl = 0xF9, application = 0xFF;
    const std::size_t start = walker.position() - 1;
    switch (walker.byte()) {
    case graphicControl: {
        walker.skip(1); // its length, whatever it says
        const bool isTransparent = (walker.byte() & 1) != 0;
        frame.delay = static_cast<std::uint16_t>(walker.word());
        const std::uint8_t index = walker.byte();
        frame.TransIndex = isTransparent ? std::optional(index) : std::nullopt;
        frame.g89aStart = start;
        walker.skip(1);
        break;
    }
    case application: // its first block says its length too, but 0 does not end the chain there
        walker.skip(walker.byte());
        walker.SkipGifBlock();
        break;
    default: // comment, plain text
        walker.SkipGifBlock();
    }
}

void readImage(Walker& walker, GifFrame& frame) noexcept {
    frame.g87aStart = walker.position() - 1;
    walker.skip(4); // where it stands on the logical screen
    frame.width = walker.word();
    frame.height = walker.word();
    const std::uint8_t packed = walker.byte();
    frame.isInterlaced = (packed & 0x40) != 0;
    frame.aLocalTbl = skipColorTable(walker, packed, frame);
    frame.codeSizeAt = walker.position();
    walker.skip(1);
    walker.SkipGifBlock();
    frame.g87aStop = walker.position() - 1;
}

// Signature, logical screen and global table. False when there is no such table.
bool readScreen(Walker& walker, GifFrame& frame) noexcept {
    walker.skip(10);
    const std::uint8_t packed = walker.byte();
    walker.skip(2); // background, shape of pixels
    const bool hasTable = skipColorTable(walker, packed, frame);
    frame.gHeaderLen = walker.position();
    return hasTable;
}

// Up to the end of the next image.
GifWalk findImage(Walker& walker, GifFrame& frame) noexcept {
    constexpr std::uint8_t extension = 0x21, image = 0x2C;
    while (!walker.endsEarly()) {
        const std::uint8_t introducer = walker.byte();
        if (introducer == extension) {
            readExtension(walker, frame);
        } else if (introducer == image) {
            readImage(walker, frame);
            return walker.endsEarly() ? GifWalk::endsEarly : GifWalk::found;
        } else if (introducer != 0) {
            return GifWalk::refused;
        }
    }
    return GifWalk::endsEarly;
}

} // namespace

GifWalk findGifFrame(std::span<const std::uint8_t> file, GifFrame& frame) noexcept {
    frame = {};
    if (!hasGifSignature(file)) return GifWalk::refused;
    Walker walker(file);
    readScreen(walker, frame);
    return findImage(walker, frame);
}

bool areGifColorsComplete(std::span<const std::uint8_t> file) noexcept {
    GifFrame frame;
    Walker walker(file);
    if (!hasGifSignature(file)) return false;
    if (readScreen(walker, frame)) return true;
    while (findImage(walker, frame) == GifWalk::found && frame.aLocalTbl) {
    }
    return frame.aLocalTbl; // the last image's, and so far all others'
}

bool forEachGifImage(std::span<const std::uint8_t> file, const std::function<void(const GifFrame&)>& take) {
    GifFrame frame;
    Walker walker(file);
    if (!hasGifSignature(file)) return false;
    readScreen(walker, frame);
    GifWalk walk = findImage(walker, frame);
    for (; walk == GifWalk::found; walk = findImage(walker, frame))
        take(frame);
    return walk == GifWalk::endsEarly; // a trailer is a block that is none
}

std::vector<std::uint8_t> joinGifCodes(std::span<const std::uint8_t> file, const GifFrame& frame) {
    std::vector<std::uint8_t> codes;
    codes.reserve(frame.g87aStop - frame.codeSizeAt);
    for (std::size_t at = frame.codeSizeAt + 1; at < frame.g87aStop; at += file[at] + std::size_t{1}) {
        const auto block = file.subspan(at + 1, file[at]);
        codes.insert(codes.end(), block.begin(), block.end());
    }
    return codes;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
