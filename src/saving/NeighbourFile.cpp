#include "saving/NeighbourFile.h"
#include "platform/files.h"
#include "shared/modParsers.h"

namespace pixkit {

NeighbourFile::NeighbourFile(const std::string& target, bool useUnicode) : m_target(target), m_useUnicode(useUnicode) {
    const std::size_t folder = platform::folderLength(target);
    const std::size_t dot = target.rfind('.');
    const std::string extension = dot != std::string::npos && dot >= folder ? target.substr(dot) : std::string();
    // Others may be saving here at the same time, and may once have been stopped half-way.
    constexpr int mostTries = 10000;
    for (int number = 0; number < mostTries; ++number) {
        std::string name = target.substr(0, folder) + "~pixkit" + std::to_string(number) + extension;
        const platform::UniqueFile file(iparseCreateNewFile(name, useUnicode));
        if (file) {
            m_name = std::move(name);
            return;
        }
        if (!iparseFileExists(name, useUnicode)) return;
    }
}

NeighbourFile::~NeighbourFile() {
    if (exists()) iparseDeleteFile(m_name, m_useUnicode);
}

bool NeighbourFile::takeItsPlace() noexcept {
    if (!iparseReplaceFile(m_name, m_target, m_useUnicode)) return false;
    m_name.clear();
    return true;
}

} // namespace pixkit
