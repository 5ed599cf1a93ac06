// Writing: header, palette, pixels raw or run-length coded, extension area, footer.
#include "codecs/tga/cTGAparser.h"
#include "kernels/kernels.h"
#include "platform/system.h"
#include "shared/modParsers.h"
#include "surface/Capabilities.h"
#include "surface/HostAccess.h"
#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>
#include <string_view>
#include <vector>

namespace pixkit {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t headerSize = 18;

template <class Unsigned>
void putLittleEndian(std::uint8_t* at, Unsigned value) noexcept {
    for (std::size_t i = 0; i < sizeof value; ++i)
        at[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

// --- palette

class Palette {
  public:
    // The index of a colour, which is added when it is new; nothing when it would be the 257th.
    std::optional<std::uint8_t> indexOf(const std::uint8_t* pixel) noexcept {
        const std::uint32_t colour =
            pixel[0] | static_cast<std::uint32_t>(pixel[1]) << 8 | static_cast<std::uint32_t>(pixel[2]) << 16;
        std::size_t slot = colour * 0x9E3779B1U >> 22; // 10 bits
        while (m_slots[slot].colour != colour) {
            if (m_slots[slot].colour == unused) {
                if (m_count == 256) return {};
                std::copy_n(pixel, 3, &m_entries[m_count * 3]);
                m_slots[slot] = {colour, static_cast<std::uint8_t>(m_count++)};
                break;
            }
            slot = (slot + 1) % m_slots.size();
        }
        return m_slots[slot].index;
    }
    // B, G, R each, in the order in which the colours came.
    std::span<const std::uint8_t> entries() const noexcept { return std::span(m_entries).first(m_count * 3); }

  private:
    static constexpr std::uint32_t unused = 0xFFFFFFFF; // no colour: those have 24 bits
    struct Slot {
        std::uint32_t colour = unused;
        std::uint8_t index = 0;
    };
    std::array<Slot, 1024> m_slots{}; // four times the most colours, so that searches are short
    std::array<std::uint8_t, 256 * 3> m_entries{};
    std::size_t m_count = 0;
};

// One index a pixel; nothing for an image of more than 256 colours. Alpha is not looked at.
std::optional<Bytes> PalettizeImage(ConstPixelView image, Palette& palette) {
    Bytes indexes(image.width * image.height);
    std::uint8_t* out = indexes.data();
    for (std::size_t y = 0; y < image.height; ++y) {
        const std::uint8_t* pixel = image.row(y);
        for (std::size_t x = 0; x < image.width; ++x, pixel += 4) {
            const auto index = palette.indexOf(pixel);
            if (!index) return {};
            *out++ = *index;
        }
    }
    return indexes;
}

// B, G, R, or B, G, R, A: straight colours unless asPreMultiplied.
Bytes FormatTrueColor(ConstPixelView image, bool hasAlpha, bool asPreMultiplied) {
    const std::size_t rowBytes = image.width * (hasAlpha ? 4 : 3);
    Bytes rows(rowBytes * image.height);
    const auto& kernel = kernels::table();
    for (std::size_t y = 0; y < image.height; ++y) {
        std::uint8_t* out = rows.data() + y * rowBytes;
        if (!hasAlpha) {
            kernel.pack24(out, image.row(y), image.width, false);
        } else if (asPreMultiplied) {
            std::memcpy(out, image.row(y), rowBytes);
        } else {
            kernel.unpremultiply(out, image.row(y), image.width);
        }
    }
    return rows;
}

// --- run-length coding

constexpr std::size_t largestPacket = 128; // pixels

// Codes one row. `write` takes a packet: its first byte and what follows; false ends the row.
template <std::size_t bPP, class Write>
bool compressRow(const std::uint8_t* row, std::size_t imgWidth, Write&& write) {
    const auto isLikePrevious = [&](std::size_t x) {
        return std::memcmp(row + x * bPP, row + (x - 1) * bPP, bPP) == 0;
    };
    for (std::size_t x = 0; x < imgWidth;) {
        const std::size_t end = std::min(imgWidth, x + largestPacket);
        std::size_t next = x + 1;
        while (next < end && isLikePrevious(next))
            ++next;
        const std::uint8_t* source = row + x * bPP;
        std::size_t count = next - x;
        if (count > 1) {
            if (!write((count - 1) | 128, source, bPP)) return false;
        } else { // raw, up to the first of two equal pixels; a pixel alone at the row's end is raw too
            while (next < end && !isLikePrevious(next))
                ++next;
            if (next < end) --next;
            count = next - x;
            if (!write(count - 1, source, count * bPP)) return false;
        }
        x += count;
    }
    return true;
}

// Codes each row by itself. Returns nothing when that would not be shorter than the rows are.
template <std::size_t bPP>
std::optional<Bytes> CompressImage(std::span<const std::uint8_t> rows, std::size_t imgWidth, std::size_t imgHeight) {
    Bytes coded(rows.size() - 1);
    std::size_t used = 0;
    const auto write = [&](std::size_t head, const std::uint8_t* source, std::size_t bytes) {
        if (coded.size() - used < bytes + 1) return false;
        coded[used] = static_cast<std::uint8_t>(head);
        std::memcpy(&coded[used + 1], source, bytes);
        used += bytes + 1;
        return true;
    };
    for (std::size_t y = 0; y < imgHeight; ++y) {
        if (!compressRow<bPP>(rows.data() + y * imgWidth * bPP, imgWidth, write)) return {};
    }
    coded.resize(used);
    return coded;
}

// --- the parts of the file

struct PixelData {
    Bytes bytes;
    bool isColorMapped;
    std::size_t bytesPerPixel;
};

PixelData makePixelData(ConstPixelView image, Palette& palette, bool hasAlpha, bool asPreMultiplied,
                        bool useBitReduction) {
    if (useBitReduction && !hasAlpha) {
        if (auto indexes = PalettizeImage(image, palette)) return {std::move(*indexes), true, 1};
    }
    return {FormatTrueColor(image, hasAlpha, asPreMultiplied), false, hasAlpha ? std::size_t{4} : 3};
}

bool compress(PixelData& data, ConstPixelView image) {
    const auto codec = data.bytesPerPixel == 1   ? CompressImage<1>
                       : data.bytesPerPixel == 3 ? CompressImage<3>
                                                 : CompressImage<4>;
    auto coded = codec(data.bytes, image.width, image.height);
    if (!coded) return false;
    data.bytes = std::move(*coded);
    return true;
}

std::array<std::uint8_t, headerSize> makeHeader(ConstPixelView image, const PixelData& data, std::size_t entries,
                                                bool isRunLength) {
    std::array<std::uint8_t, headerSize> header{};
    header[2] = static_cast<std::uint8_t>((data.isColorMapped ? 1 : 2) | (isRunLength ? 8 : 0));
    if (data.isColorMapped) {
        header[1] = 1;
        putLittleEndian(&header[5], static_cast<std::uint16_t>(entries));
        header[7] = 24;
    }
    putLittleEndian(&header[12], static_cast<std::uint16_t>(image.width));
    putLittleEndian(&header[14], static_cast<std::uint16_t>(image.height));
    header[16] = static_cast<std::uint8_t>(data.bytesPerPixel * 8);
    header[17] = data.bytesPerPixel == 4 ? 8 : 0; // bits of alpha; bottom row first
    return header;
}

// Written for premultiplied pixels only: without it readers take alpha for straight.
std::array<std::uint8_t, 495> CreateTGAextensionBlock() {
    std::array<std::uint8_t, 495> area{};
    putLittleEndian(&area[0], static_cast<std::uint16_t>(area.size()));
    const platform::LocalTime now = platform::GetLocalTime();
    const std::uint16_t stamp[] = {now.wMonth, now.wDay, now.wYear, now.wHour, now.wMinute, now.wSecond};
    for (std::size_t i = 0; i < std::size(stamp); ++i)
        putLittleEndian(&area[367 + i * 2], stamp[i]);
    constexpr std::string_view softwareID = "Harwick cPixSheet Suite";
    std::ranges::copy(softwareID, &area[426]);
    area[467] = 3; // the version, in hundredths, and its letter: not those of today, but what files always said
    area[469] = 1;
    std::fill_n(&area[470], 4, std::uint8_t{255}); // key colour
    area[494] = 4;                                 // attributes type: premultiplied alpha
    return area;
}

std::array<std::uint8_t, 26> makeFooter(std::uint32_t extensionOffset) {
    std::array<std::uint8_t, 26> footer{};
    putLittleEndian(footer.data(), extensionOffset);
    constexpr std::string_view signature = "TRUEVISION-XFILE.";
    std::ranges::copy(signature, &footer[8]); // its closing zero is there
    return footer;
}

// All parts of the file.
class Parts {
  public:
    // Nothing for a picture that cannot be written.
    static std::optional<Parts> make(const cPixSheet& cHost, bool allowPreMultipliedAlpha, bool useCompression,
                                     bool useBitReduction) {
        const ConstPixelView image = HostAccess::pixels(cHost);
        constexpr std::size_t largestSide = std::numeric_limits<std::uint16_t>::max();
        if (!image || image.width > largestSide || image.height > largestSide) return {};
        const bool hasAlpha = cHost.Alpha() != AlphaNone;
        const bool asPreMultiplied = hasAlpha && allowPreMultipliedAlpha;

        Parts parts;
        PixelData& data = parts.m_pixelData;
        data = makePixelData(image, parts.m_palette, hasAlpha, asPreMultiplied, useBitReduction);
        const bool isRunLength = useCompression && compress(data, image);
        const std::size_t mapBytes = parts.map().size();
        parts.m_header = makeHeader(image, data, mapBytes / 3, isRunLength);
        if (asPreMultiplied) parts.m_extension = CreateTGAextensionBlock();
        parts.m_footer =
            makeFooter(asPreMultiplied ? static_cast<std::uint32_t>(headerSize + mapBytes + data.bytes.size()) : 0);
        return parts;
    }

    // In the order in which they stand in the file; some may be empty.
    std::array<std::span<const std::uint8_t>, 5> list() const noexcept {
        std::span<const std::uint8_t> extension;
        if (m_extension) extension = *m_extension;
        return {m_header, map(), m_pixelData.bytes, extension, m_footer};
    }

  private:
    Parts() = default;

    std::span<const std::uint8_t> map() const noexcept {
        if (!m_pixelData.isColorMapped) return {}; // a palette may have been begun all the same
        return m_palette.entries();
    }

    std::array<std::uint8_t, headerSize> m_header{};
    Palette m_palette;
    PixelData m_pixelData{};
    std::optional<std::array<std::uint8_t, 495>> m_extension;
    std::array<std::uint8_t, 26> m_footer{};
};

} // namespace

bool cTGAparser::SaveAsTGA(const std::string& FileName, bool allowPreMultipliedAlpha, bool useCompression,
                           bool useBitReduction, const cPixSheet& cHost) {
    const auto parts = Parts::make(cHost, allowPreMultipliedAlpha, useCompression, useBitReduction);
    if (!parts) return false;
    const bool useUnicode = (HostAccess::osCAP(cHost) & capNtFamily) != 0;
    const platform::UniqueFile file(iparseGetFileHandle(FileName, false, useUnicode));
    return file && std::ranges::all_of(parts->list(), [&](std::span<const std::uint8_t> part) {
               return part.empty() || iparseWriteWhole(file.get(), part);
           });
}

bool cTGAparser::SaveToStream(ByteArray& outStream, bool allowPreMultipliedAlpha, bool useCompression,
                              bool useBitReduction, const cPixSheet& cHost) {
    const auto parts = Parts::make(cHost, allowPreMultipliedAlpha, useCompression, useBitReduction);
    if (!parts) return false;
    std::size_t size = 0;
    for (const auto part : parts->list())
        size += part.size();
    Bytes stream;
    stream.reserve(size);
    for (const auto part : parts->list())
        stream.insert(stream.end(), part.begin(), part.end());
    outStream = ByteArray(std::move(stream));
    return true;
}

} // namespace pixkit
