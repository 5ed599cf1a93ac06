#include "loading/LoadRequest.h"
#include "platform/files.h"
#include <limits>
#include <stdexcept>
#include <utility>

namespace pixkit {

std::span<const std::uint8_t> LoadRequest::bytes() {
    fetchFile();
    return m_slice;
}

std::vector<std::uint8_t> LoadRequest::takeSource() {
    fetchFile();
    if (m_file == platform::invalidHandle) return {m_whole.begin(), m_whole.end()};
    m_whole = m_slice = {};
    return std::move(m_fileBytes);
}

void LoadRequest::fetchFile() {
    if (m_file == platform::invalidHandle || !m_whole.empty()) return;
    const std::int64_t size = platform::GetFileSize(m_file);
    std::uint32_t done = 0;
    if (size < 0 || size > std::numeric_limits<std::int32_t>::max() || !platform::SetFilePointer(m_file, 0)) {
        throw std::runtime_error("the file cannot be read");
    }
    m_fileBytes.resize(static_cast<std::size_t>(size));
    if (!platform::ReadFile(m_file, m_fileBytes.data(), static_cast<std::uint32_t>(size), done) || done != size) {
        throw std::runtime_error("the file cannot be read");
    }
    m_whole = m_slice = m_fileBytes;
}

} // namespace pixkit
