#include "codecs/Writing.h"
#include "shared/AlphaChannel.h"
#include "surface/HostAccess.h"
#include <algorithm>
#include <utility>

namespace pixkit {

SourcePicture::SourcePicture(const cPixSheet& host) noexcept
    : pixels(HostAccess::pixels(host)), alpha(host.Alpha()), imageType(host.ImageType()),
      hotspot(HostAccess::hotspot(host)) {}

bool SourcePicture::isToBeFlattened() const noexcept {
    const auto isZero = [](std::uint8_t byte) { return byte == 0; };
    return iparseHasAlpha(pixels) || (alpha != AlphaNone && std::ranges::all_of(pixels.bytes(), isZero));
}

void FileParts::add(std::vector<std::uint8_t>&& bytes) {
    m_owned.push_back(std::move(bytes));
    addView(m_owned.back());
}

void FileParts::addView(std::span<const std::uint8_t> bytes) {
    if (!bytes.empty()) m_pieces.push_back(bytes);
}

std::vector<std::uint8_t> FileParts::join() && {
    if (m_pieces.size() == 1 && m_owned.size() == 1) return std::move(m_owned.front());
    std::size_t size = 0;
    for (const auto piece : m_pieces)
        size += piece.size();
    std::vector<std::uint8_t> bytes; // filled as it grows, because setting it to 0 first would cost as much again
    bytes.reserve(size);
    for (const auto piece : m_pieces)
        bytes.insert(bytes.end(), piece.begin(), piece.end());
    return bytes;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
