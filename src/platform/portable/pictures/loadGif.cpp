#include "coding/lzw/LzwDecoder.h"
#include "platform/gdi.h"
#include "platform/portable/gdi/GdiObjects.h"
#include "platform/portable/pictures/BitmapPicture.h"
#include "platform/portable/pictures/loaders.h"
#include <algorithm>
#include <cstring>
#include <optional>
#include <vector>

namespace pixkit::platform {

namespace {

using Bytes = std::span<const std::uint8_t>;

struct Frame {
    std::size_t width = 0, height = 0;
    bool interlaced = false;
    Bytes colors; // three bytes each
    int transparent = -1;
    unsigned codeSize = 0;
    std::vector<std::uint8_t> codes; // all sub-blocks joined
};

// Goes forward over the file; the first read that the file has no bytes for fails, and so do all after it.
class Walker {
  public:
    explicit Walker(Bytes bytes) noexcept : m_bytes(bytes) {}

    bool failed() const noexcept { return m_failed; }
    Bytes take(std::size_t count) noexcept {
        if (count > m_bytes.size()) {
            m_failed = true;
            return {};
        }
        const Bytes taken = m_bytes.first(count);
        m_bytes = m_bytes.subspan(count);
        return taken;
    }
    std::uint8_t byte() noexcept {
        const Bytes taken = take(1);
        return taken.empty() ? std::uint8_t{0} : taken[0];
    }
    std::size_t word() noexcept {
        const std::size_t low = byte();
        return low | std::size_t{byte()} << 8;
    }
    // Bytes of a chain of sub-blocks, one block at a time; empty at its end.
    Bytes subBlock() noexcept { return take(byte()); }

  private:
    Bytes m_bytes;
    bool m_failed = false;
};

bool isGif(Bytes signature) noexcept {
    constexpr char names[2][7] = {"gif87a", "gif89a"};
    return signature.size() == 6 && std::ranges::any_of(names, [&](const char* name) {
               return std::equal(signature.begin(), signature.end(), name, [](std::uint8_t byte, char letter) {
                   return (byte | (letter >= 'a' ? 0x20 : 0)) == letter; // in capitals or not
               });
           });
}

Bytes takeColors(Walker& walker, std::uint8_t packed) noexcept {
    return (packed & 0x80) != 0 ? walker.take(3 * (std::size_t{2} << (packed & 7))) : Bytes{};
}

void readExtension(Walker& walker, Frame& frame) noexcept {
    constexpr std::uint8_t graphicControl = 0xF9;
    const bool isControl = walker.byte() == graphicControl;
    for (Bytes block = walker.subBlock(); !block.empty(); block = walker.subBlock())
        if (isControl && block.size() >= 4) frame.transparent = (block[0] & 1) != 0 ? block[3] : -1;
}

void readImage(Walker& walker, Frame& frame) {
    walker.take(4); // where it stands on the logical screen
    frame.width = walker.word();
    frame.height = walker.word();
    const std::uint8_t packed = walker.byte();
    frame.interlaced = (packed & 0x40) != 0;
    const Bytes local = takeColors(walker, packed);
    if (!local.empty()) frame.colors = local;
    frame.codeSize = walker.byte();
    for (Bytes block = walker.subBlock(); !block.empty(); block = walker.subBlock())
        frame.codes.insert(frame.codes.end(), block.begin(), block.end());
}

std::optional<Frame> readFirstFrame(Bytes bytes) {
    constexpr std::uint8_t extension = 0x21, image = 0x2C;
    Walker walker(bytes);
    if (!isGif(walker.take(6))) return {};
    walker.take(4); // the logical screen's size
    const std::uint8_t packed = walker.byte();
    walker.take(2);
    Frame frame;
    frame.colors = takeColors(walker, packed);
    while (!walker.failed()) {
        const std::uint8_t introducer = walker.byte();
        if (introducer == extension) {
            readExtension(walker, frame);
        } else if (introducer == image) {
            readImage(walker, frame);
            break;
        } else if (introducer != 0) {
            return {};
        }
    }
    if (walker.failed() || frame.width == 0 || frame.height == 0 || frame.colors.empty()) return {};
    return frame;
}

// Alpha in the fourth byte, which the colours of a bitmap that others make do not have.
ColorTable colorTableOf(const Frame& frame) noexcept {
    ColorTable table;
    auto* const entries = reinterpret_cast<std::uint8_t*>(table.data());
    for (std::size_t i = 0; i < table.size(); ++i) {
        std::uint8_t* const entry = entries + i * 4;
        const bool known = 3 * i < frame.colors.size();
        for (std::size_t channel = 0; channel < 3; ++channel)
            entry[channel] = known ? frame.colors[3 * i + 2 - channel] : std::uint8_t{0};
        entry[3] = static_cast<int>(i) == frame.transparent ? 0 : 255;
    }
    return table;
}

// Calls put(row of the picture, its pixels) for every row in the order of the file.
template <class Put>
void forEachRow(const Frame& frame, const std::uint8_t* pixels, Put put) {
    struct Pass {
        std::size_t first, step;
    };
    constexpr Pass passes[] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};
    constexpr Pass wholePicture[] = {{0, 1}};
    for (const Pass& pass : frame.interlaced ? std::span<const Pass>(passes) : std::span<const Pass>(wholePicture))
        for (std::size_t y = pass.first; y < frame.height; y += pass.step, pixels += frame.width)
            put(y, pixels);
}

} // namespace

std::unique_ptr<StdPicture> loadGif(std::span<const std::uint8_t> bytes) {
    const std::optional<Frame> frame = readFirstFrame(bytes);
    if (!frame) return nullptr;
    const LzwPixels pixels(frame->codes, frame->codeSize, frame->width * frame->height);
    if (!pixels) return nullptr;

    BitmapInfoHeader header{.biWidth = static_cast<std::int32_t>(frame->width),
                            .biHeight = static_cast<std::int32_t>(frame->height)};
    header.biBitCount = 8;
    const ColorTable colors = colorTableOf(*frame);
    UniqueHandle<&DeleteObject> bitmap(CreateDIBSection(0, header, nullptr, &colors));
    if (!bitmap) return nullptr;
    Bitmap& target = *findObject(bitmap.get(), ObjectType::bitmap)->bitmap;
    *target.colors = colors; // with their alpha
    forEachRow(*frame, pixels.data(),
               [&](std::size_t y, const std::uint8_t* row) { std::memcpy(target.rowFromTop(y), row, frame->width); });
    auto picture = std::make_unique<BitmapPicture>(bitmap.get(), true);
    bitmap.release();
    return picture;
}

} // namespace pixkit::platform
