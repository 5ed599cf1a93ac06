// What one load was asked for: where the bytes come from, and which image of an icon file is wanted.
#pragma once
#include "platform/handle.h"
#include "shared/ByteArray.h"
#include <cstdint>
#include <span>
#include <vector>

namespace pixkit {

// Which image of an icon file to take: the nearest to a size (0 = any) and a depth in bits.
struct IconRequest {
    // Sizes below 0 mean any; a depth outside 0 .. 32 means 32.
    IconRequest(std::int32_t cx, std::int32_t cy, std::int32_t depth) noexcept
        : cX(cx < 0 ? 0 : cx), cY(cy < 0 ? 0 : cy), bitDepth(depth < 0 || depth > 32 ? 32 : depth) {}

    std::int32_t cX, cY, bitDepth;
};

class LoadRequest {
  public:
    // An open file, read from its beginning; its bytes are fetched when somebody first asks for them.
    LoadRequest(platform::Handle file, const IconRequest& icon) noexcept : m_file(file), m_icon(icon) {}
    LoadRequest(const LoadRequest&) = delete; // its views look into itself
    LoadRequest& operator=(const LoadRequest&) = delete;
    // `length` bytes of an array, which outlives the request, from element `offset` (counted from 0).
    LoadRequest(const ByteArray& stream, std::size_t offset, std::size_t length, const IconRequest& icon) noexcept
        : m_icon(icon), m_offset(offset), m_whole(stream.bytes()), m_slice(m_whole.subspan(offset, length)) {}

    // invalidHandle when the source is an array.
    platform::Handle file() const noexcept { return m_file; }
    const IconRequest& icon() const noexcept { return m_icon; }
    // The bytes that readers look at. Throws std::runtime_error when the file cannot be read.
    std::span<const std::uint8_t> bytes();
    // Where in the array they begin, counted from 0; 0 in a file.
    std::size_t offset() const noexcept { return m_offset; }
    // The bytes that SaveFormat keeps: the file's, or the whole array, also what lies outside the slice. Afterwards the
    // request has no bytes any more.
    std::vector<std::uint8_t> takeSource();

  private:
    void fetchFile();

    platform::Handle m_file = platform::invalidHandle;
    IconRequest m_icon;
    std::size_t m_offset = 0;
    std::vector<std::uint8_t> m_fileBytes;
    std::span<const std::uint8_t> m_whole;
    std::span<const std::uint8_t> m_slice;
};

} // namespace pixkit
