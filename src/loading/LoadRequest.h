// What one load was asked for: where the bytes come from, and which image of an icon file is wanted. Nobody else reads
// files.
#pragma once
#include "codecs/Reading.h"
#include "platform/handle.h"
#include "shared/ByteArray.h"
#include <optional>
#include <vector>

namespace pixkit {

class LoadRequest final : public PictureSource {
  public:
    // An open file, read from its beginning; its bytes are fetched when somebody first asks for them.
    LoadRequest(platform::Handle file, const IconRequest& icon) noexcept : m_file(file), m_icon(icon) {}
    LoadRequest(const LoadRequest&) = delete; // its views look into itself
    LoadRequest& operator=(const LoadRequest&) = delete;
    // `length` bytes of an array, which outlives the request, from element `offset` (counted from 0).
    LoadRequest(const ByteArray& stream, std::size_t offset, std::size_t length, const IconRequest& icon) noexcept
        : m_icon(icon), m_offset(offset), m_whole(stream.bytes()), m_slice(m_whole.subspan(offset, length)) {}

    // Bytes that outlive the request.
    LoadRequest(std::span<const std::uint8_t> bytes, const IconRequest& icon) noexcept
        : m_icon(icon), m_whole(bytes), m_slice(bytes) {}

    std::vector<std::uint8_t> start(std::size_t count) const override;
    std::vector<std::uint8_t> end(std::size_t count) const override;
    std::span<const std::uint8_t> bytes() override;
    bool isFile() const noexcept override { return m_file != platform::invalidHandle; }
    OwnBytes ownBytes() const override;
    std::size_t offset() const noexcept override { return m_offset; }
    const IconRequest& icon() const noexcept override { return m_icon; }
    // The bytes that SaveFormat keeps: the file's, or the whole array, also what lies outside the slice. Afterwards the
    // request has no bytes any more.
    std::vector<std::uint8_t> takeSource();

    // How many bytes a load holds until its end, besides what readers take: its file, read once, or the copy that
    // SaveFormat makes of an array.
    double bytesHeld(bool SaveFormat) const;

    bool isReadByGDIplus = false; // whoever read it says so

  private:
    std::size_t fileSize() const;
    void read(std::span<std::uint8_t> into, std::size_t position = 0) const;

    platform::Handle m_file = platform::invalidHandle;
    IconRequest m_icon;
    std::size_t m_offset = 0;
    std::vector<std::uint8_t> m_fileBytes;
    std::span<const std::uint8_t> m_whole;
    std::span<const std::uint8_t> m_slice;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
