// JPEG files (ITU-T T.81) through the TurboJPEG interface of libjpeg-turbo, borrowed at run time.
#include "coding/JpegFrame.h"
#include "platform/gdi.h"
#include "platform/libraries.h"
#include "platform/portable/gdi/GdiObjects.h"
#include "platform/portable/pictures/BitmapPicture.h"
#include "platform/portable/pictures/loaders.h"
#include <algorithm>
#include <vector>

namespace pixkit::platform {

namespace {

using Bytes = std::span<const std::uint8_t>;

// The functions and constants that are used of the TurboJPEG interface, version 2 of libjpeg-turbo.
class TurboJpeg {
  public:
    enum PixelFormat : int { formatBgra = 8, formatCmyk = 11 };

    TurboJpeg() noexcept : m_library(LoadLibraryA("libturbojpeg.so.0")) {
        find(m_initDecompress, "tjInitDecompress");
        find(m_decompress2, "tjDecompress2");
        find(m_getErrorCode, "tjGetErrorCode");
        find(m_destroy, "tjDestroy");
    }

    explicit operator bool() const noexcept { return m_found == 4; }

    // To the picture's size, or an eighth, a quarter or a half of it, rounded up, of which the library makes its scale.
    // Rows bottom-up, 4 bytes a pixel. True also where the data was damaged or ended early, as long as the decoder went
    // through to the last row.
    bool decompress(Bytes bytes, std::uint8_t* pixels, int width, int height, PixelFormat format) const {
        // After a warning the library calls its giving up a warning too. The row decoded last, which lies first, shows
        // whether it did: then it keeps what was there. That is no opaque pixel, or inks as no picture has them by
        // chance, so that none is decoded once more.
        const std::span lastRow(pixels, static_cast<std::size_t>(width) * 4);
        const auto unlikely = [state = 1U]() mutable {
            return static_cast<std::uint8_t>((state *= 0x9E3779B1U) >> 24);
        };
        if (format == formatCmyk) std::ranges::generate(lastRow, unlikely);
        const std::vector<std::uint8_t> before(lastRow.begin(), lastRow.end());
        const Outcome outcome = decode(bytes, pixels, width, height, format);
        return outcome == Outcome::done || (outcome == Outcome::warned && !std::ranges::equal(lastRow, before));
    }

  private:
    enum class Outcome { done, warned, failed };

    Outcome decode(Bytes bytes, std::uint8_t* pixels, int width, int height, PixelFormat format) const noexcept {
        constexpr int bottomUp = 2, accurateTransform = 4096, limitScans = 32768;
        constexpr int warning = 0;
        void* const decoder = m_initDecompress();
        if (decoder == nullptr) return Outcome::failed;
        const int failure = m_decompress2(decoder, bytes.data(), static_cast<unsigned long>(bytes.size()), pixels,
                                          width, width * 4, height, format, bottomUp | accurateTransform | limitScans);
        const bool warned = failure != 0 && m_getErrorCode(decoder) == warning;
        m_destroy(decoder);
        return failure == 0 ? Outcome::done : warned ? Outcome::warned : Outcome::failed;
    }

    template <class Function>
    void find(Function*& function, const char* name) noexcept {
        function = reinterpret_cast<Function*>(GetProcAddress(m_library.get(), name));
        m_found += function != nullptr;
    }

    UniqueLibrary m_library;
    int m_found = 0;
    void* (*m_initDecompress)() = nullptr;
    int (*m_decompress2)(void* decoder, const unsigned char* bytes, unsigned long size, unsigned char* pixels,
                         int width, int rowBytes, int height, int format, int flags) = nullptr;
    int (*m_getErrorCode)(void* decoder) = nullptr;
    int (*m_destroy)(void* decoder) = nullptr;
};

// C, M, Y, K in place to B, G, R, A: a channel is what its ink and black let through.
void fromCmyk(std::uint8_t* pixels, std::size_t count, bool inverted) noexcept {
    const std::uint8_t flip = inverted ? 0 : 255; // inverted values say what is let through already
    const auto through = [](unsigned color, unsigned black) { return static_cast<std::uint8_t>(color * black / 255); };
    for (std::uint8_t* p = pixels; count != 0; --count, p += 4) {
        const unsigned c = p[0] ^ flip, m = p[1] ^ flip, y = p[2] ^ flip, k = p[3] ^ flip;
        p[0] = through(y, k);
        p[1] = through(m, k);
        p[2] = through(c, k);
        p[3] = 255;
    }
}

// Blocks of 8 x 8 pixels are decoded to one, four or sixteen as quickly as to all. A picture of a single block the
// library would decode at the largest scale of all that round up to the size, which may be another.
LeastSize decodedSize(const JpegFrame& frame, LeastSize least) noexcept {
    if (frame.width <= 8 || frame.height <= 8) return {frame.width, frame.height};
    for (const std::int32_t pixels : {8, 4, 2}) {
        const LeastSize size{(frame.width + pixels - 1) / pixels, (frame.height + pixels - 1) / pixels};
        if (least.width != 0 && size.width >= least.width && size.height >= least.height) return size;
    }
    return {frame.width, frame.height};
}

} // namespace

std::unique_ptr<StdPicture> loadJpeg(std::span<const std::uint8_t> bytes, LeastSize least) {
    const auto info = readJpegFrame(bytes);
    if (!info) return nullptr;
    const TurboJpeg library;
    if (!library) return nullptr;
    void* bits = nullptr;
    const auto [width, height] = decodedSize(*info, least);
    const BitmapInfoHeader header{.biWidth = width, .biHeight = height};
    UniqueHandle<&DeleteObject> bitmap(CreateDIBSection(0, header, &bits));
    if (!bitmap) return nullptr;
    auto* const pixels = static_cast<std::uint8_t*>(bits);
    const bool isCmyk = info->components == 4;
    if (!library.decompress(bytes, pixels, width, height, isCmyk ? TurboJpeg::formatCmyk : TurboJpeg::formatBgra))
        return nullptr;
    if (isCmyk) {
        const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
        fromCmyk(pixels, count, info->hasAdobeMarker);
    }
    auto picture = std::make_unique<BitmapPicture>(bitmap.get(), true);
    bitmap.release();
    return picture;
}

bool canLoadJpeg() noexcept {
    return static_cast<bool>(TurboJpeg());
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
