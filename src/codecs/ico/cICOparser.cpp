#include "codecs/ico/cICOparser.h"
#include "codecs/bmp/BmpRows.h"
#include "codecs/ico/IcoMask.h"
#include "codecs/png/cPNGparser.h"
#include "kernels/kernels.h"
#include "shared/AlphaChannel.h"
#include "surface/HostAccess.h"
#include <algorithm>
#include <cstdlib>
#include <tuple>
#include <utility>
#include <vector>

namespace pixkit {

namespace {

// How little an image suits a request: the least is the best. Among equals the first in the file is taken.
using Distance = std::tuple<int, std::int64_t, int, int>;

Distance distance(const IcoEntry& entry, std::int32_t cX, std::int32_t cY, std::int32_t bitDepth) {
    enum { exact, larger, smaller };
    const bool isExact = (cX == 0 || entry.width == cX) && (cY == 0 || entry.height == cY);
    const int size = isExact ? exact : entry.width >= cX && entry.height >= cY ? larger : smaller;
    const std::int64_t area = std::int64_t{entry.width} * entry.height;
    const int wanted = bitDepth == 0 ? 32 : bitDepth;
    return {size, size == larger ? area : -area, std::abs(entry.bitDepth - wanted), -entry.bitDepth};
}

// Why the host may not take an image.
Reason limitOf(const IcoEntry& entry, const cPixSheet& host) {
    const Limits& limits = HostAccess::limits(host);
    if (!limits.areSet()) return {};
    const double pixels = static_cast<double>(entry.width) * entry.height;
    // Rows as in BMP files, of at most 32 bits, and the mask.
    const double besides = entry.isPNG ? cPNGparser::memory(entry.payload) : 5.0 * entry.width + pixels;
    return limits.problem(entry.width, entry.height, besides);
}

// A file may list one damaged image tens of thousands of times.
constexpr int mostAttempts = 4;

// The PNG files in an icon file that have been decoded in vain. Entries may share bytes, whole images or parts of them;
// no more are decoded than the file has, or than anybody may waste. What counts is where a PNG file itself ends: a
// directory that lies may say more of images that follow upon each other as they should.
class RefusedPngs {
  public:
    explicit RefusedPngs(std::size_t fileSize) noexcept : m_bytesLeft(std::max(fileSize, bytesOfAny)) {}

    // Whether another one is worth decoding, which then counts as refused.
    bool isWorthTrying(std::span<const std::uint8_t> payload) {
        const std::size_t bytes = cPNGparser::extent(payload);
        const auto isSame = [&](std::span<const std::uint8_t> other) {
            return other.data() == payload.data() && other.size() == payload.size();
        };
        if (std::ranges::any_of(m_refused, isSame) || bytes > m_bytesLeft) return false;
        m_bytesLeft -= bytes;
        m_refused.push_back(payload);
        return true;
    }

  private:
    static constexpr std::size_t bytesOfAny = 65536;

    std::size_t m_bytesLeft;
    std::vector<std::span<const std::uint8_t>> m_refused;
};

// One byte a pixel in the order of the store. Rows that the file lacks are clear.
std::vector<std::uint8_t> expandMask(const IcoBitmap& bitmap) {
    const auto width = static_cast<std::size_t>(bitmap.info.width);
    const auto height = static_cast<std::size_t>(bitmap.info.height);
    const std::size_t rowBytes = bitmap.maskRowBytes();
    std::vector<std::uint8_t> mask(width * height);
    const std::size_t rows = std::min(height, bitmap.mask.size() / rowBytes);
    for (std::size_t y = 0; y < rows; ++y) {
        const std::size_t storeRow = bitmap.info.isTopDown ? height - 1 - y : y;
        kernels::table().unpackSamples(&mask[storeRow * width], &bitmap.mask[y * rowBytes], width, 1);
    }
    return mask;
}

// Whether it is of 32 bits in the usual order and its values show that they are straight.
bool provesStraight(const IcoBitmap& bitmap) {
    const BmpMasks& masks = bitmap.info.masks;
    if (bitmap.info.bitCount != 32 || masks.alpha != 0xFF000000 || masks.red != 0xFF0000 || masks.green != 0xFF00)
        return false;
    const ConstPixelView pixels{bitmap.colors.data(), static_cast<std::size_t>(bitmap.info.width),
                                static_cast<std::size_t>(bitmap.info.height), bitmap.info.rowBytes()};
    return iparseValidateAlphaChannel(pixels, imgNone).imgType == imgBmpARGB;
}

// Whether one of the images does, of which no more bytes are looked at than the file has: entries may share them.
bool anyProvesStraight(const std::vector<IcoEntry>& entries, std::size_t fileSize) {
    return std::ranges::any_of(entries, [left = fileSize](const IcoEntry& entry) mutable {
        Reason unused;
        const auto bitmap = entry.isPNG || entry.bitDepth != 32 ? std::nullopt : readIcoBitmap(entry, unused);
        if (!bitmap || bitmap->colors.size() > left) return false;
        left -= bitmap->colors.size();
        return provesStraight(*bitmap);
    });
}

} // namespace

Outcome cICOparser::LoadDirectory(std::span<const std::uint8_t> Stream) {
    m_fileSize = Stream.size();
    Reason why;
    auto directory = readIcoDirectory(Stream, why);
    if (!directory) return refused(why);
    m_directory = std::move(*directory);
    return done();
}

ReadResult cICOparser::LoadStream(std::span<const std::uint8_t> Stream, std::int32_t cX, std::int32_t cY,
                                  cPixSheet& Host, std::int32_t bitDepth) {
    if (!isIconFile(Stream)) return ReadResult::otherFormat("no header of an icon file");
    ReadResult refusal{ReadOutcome::damaged, LoadDirectory(Stream)};
    if (!refusal.why) return refusal;
    std::vector<const IcoEntry*> candidates;
    Reason limit;
    for (const IcoEntry& entry : m_directory.entries) {
        limit = limitOf(entry, Host);
        if (!limit) candidates.push_back(&entry);
    }
    if (candidates.empty()) return ReadResult::forbidden(limit);
    RefusedPngs refusedPngs(Stream.size());
    for (int attempt = 0; attempt < mostAttempts && !candidates.empty(); ++attempt) {
        const auto best = std::ranges::min_element(
            candidates, {}, [&](const IcoEntry* entry) { return distance(*entry, cX, cY, bitDepth); });
        const IcoEntry& entry = **best;
        candidates.erase(best);
        if (entry.isPNG && !refusedPngs.isWorthTrying(entry.payload)) continue;
        Outcome outcome = loadEntry(entry, Host);
        if (outcome) return ReadResult::loaded();
        if (attempt == 0) refusal.why = std::move(outcome);
    }
    return refusal; // of the image that suits best
}

Outcome cICOparser::loadEntry(const IcoEntry& entry, cPixSheet& host) const {
    if (!entry.isPNG) {
        if (Outcome loaded = loadBitmap(entry, host); !loaded) return loaded;
    } else {
        // As a stream, for which the PNG reader has no least size.
        if (const ReadResult read = cPNGparser().LoadStream(entry.payload, host); !read) return read.why;
        HostAccess::ImageType(host, imgPNGicon);
    }
    HostAccess::hotspot(host, entry.hotspot);
    return done();
}

Outcome cICOparser::loadBitmap(const IcoEntry& entry, cPixSheet& host) const {
    Reason why;
    const auto bitmap = readIcoBitmap(entry, why);
    if (!bitmap) return refused(why);
    BmpRows rows(bitmap->info, bitmap->colors);
    if (!host.InitializeDIB(bitmap->info.width, bitmap->info.height)) return HostAccess::outcome(host);
    const PixelView pixels = HostAccess::pixels(host);
    for (std::size_t y = 0; y < pixels.height; ++y)
        rows.nextRow(bitmap->info.isTopDown ? pixels.rowFromTop(y) : pixels.row(y));
    // What one image leaves open another may tell: a program writes all the images of a file in the same way.
    if (bitmap->info.masks.alpha != 0 && isTakenForPremultiplied(pixels) &&
        anyProvesStraight(m_directory.entries, m_fileSize)) {
        for (std::size_t y = 0; y < pixels.height; ++y)
            kernels::table().premultiply(pixels.row(y), pixels.width);
    }
    // Alpha that is everywhere 0 says nothing, and the mask rules as at other depths.
    if (bitmap->info.masks.alpha != 0 && completeIconByAlpha(host, m_directory.isCursor)) return done();
    completeIconByMask(host, expandMask(*bitmap), m_directory.isCursor);
    return done();
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
