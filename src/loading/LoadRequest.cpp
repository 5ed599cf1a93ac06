#include "loading/LoadRequest.h"
#include "diagnostics/fileReason.h"
#include "platform/files.h"
#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

namespace pixkit {

std::vector<std::uint8_t> LoadRequest::start(std::size_t count) const {
    if (!isFile()) {
        const auto first = m_slice.first(std::min(count, m_slice.size()));
        return {first.begin(), first.end()};
    }
    std::vector<std::uint8_t> bytes(std::min(count, fileSize()));
    read(bytes);
    return bytes;
}

std::vector<std::uint8_t> LoadRequest::end(std::size_t count) const {
    if (!isFile()) {
        const auto last = m_slice.last(std::min(count, m_slice.size()));
        return {last.begin(), last.end()};
    }
    const std::size_t size = fileSize();
    std::vector<std::uint8_t> bytes(std::min(count, size));
    read(bytes, size - bytes.size());
    return bytes;
}

std::span<const std::uint8_t> LoadRequest::bytes() {
    if (isFile() && m_whole.empty()) {
        m_fileBytes.resize(fileSize());
        read(m_fileBytes);
        m_whole = m_slice = m_fileBytes;
    }
    return m_slice;
}

OwnBytes LoadRequest::ownBytes() const {
    const std::size_t size = fileSize();
    OwnBytes own{std::make_unique_for_overwrite<std::uint8_t[]>(size), size};
    read(own.bytes());
    return own;
}

std::vector<std::uint8_t> LoadRequest::takeSource() {
    bytes();
    if (!isFile()) return {m_whole.begin(), m_whole.end()};
    m_whole = m_slice = {};
    return std::move(m_fileBytes);
}

double LoadRequest::bytesHeld(bool SaveFormat) const {
    return static_cast<double>(isFile() ? fileSize() : SaveFormat ? m_whole.size() : 0);
}

std::size_t LoadRequest::fileSize() const {
    const std::int64_t size = platform::GetFileSize(m_file);
    if (size < 0 || size > std::numeric_limits<std::int32_t>::max())
        throw std::runtime_error("the file cannot be read");
    return static_cast<std::size_t>(size);
}

void LoadRequest::read(std::span<std::uint8_t> into, std::size_t position) const {
    constexpr Reason cannotBeRead = "the file cannot be read";
    std::uint32_t done = 0;
    const auto count = static_cast<std::uint32_t>(into.size());
    if (!platform::SetFilePointer(m_file, static_cast<std::uint32_t>(position)) ||
        !platform::ReadFile(m_file, into.data(), count, done)) {
        throw std::runtime_error(std::string(fileReason(cannotBeRead).text()));
    }
    if (done != count) throw std::runtime_error(std::string(cannotBeRead.text())); // somebody cut it meanwhile
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
