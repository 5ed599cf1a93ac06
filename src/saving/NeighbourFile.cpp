#include "saving/NeighbourFile.h"
#include "shared/Files.h"
#include <algorithm>

namespace pixkit {

NeighbourFile::NeighbourFile(const std::string& target, bool useUnicode) : m_target(target), m_useUnicode(useUnicode) {
    const std::size_t folder = platform::folderLength(target);
    const std::size_t dot = target.rfind('.');
    const std::string extension = dot != std::string::npos && dot >= folder ? target.substr(dot) : std::string();
    // Others may be saving here at the same time, and may once have been stopped half-way.
    constexpr int mostTries = 10000;
    for (int number = 0; number < mostTries; ++number) {
        std::string name = target.substr(0, folder) + "~pixkit" + std::to_string(number) + extension;
        m_file.reset(iparseCreateNewFile(name, useUnicode));
        if (m_file) {
            m_name = std::move(name);
            return;
        }
        if (!iparseFileExists(name, useUnicode)) return;
    }
}

NeighbourFile::~NeighbourFile() {
    m_file.reset();
    if (exists()) iparseDeleteFile(m_name, m_useUnicode);
}

bool NeighbourFile::write(std::span<const std::span<const std::uint8_t>> pieces) noexcept {
    const auto arrives = [&](std::span<const std::uint8_t> piece) { return iparseWriteWhole(m_file.get(), piece); };
    const bool isWhole = std::ranges::all_of(pieces, arrives);
    m_file.reset();
    return isWhole;
}

bool NeighbourFile::takeItsPlace() noexcept {
    if (!iparseReplaceFile(m_name, m_target, m_useUnicode)) return false;
    m_name.clear();
    return true;
}

} // namespace pixkit
