// The file that is written in the place of another before it takes that place.
#pragma once
#include "platform/files.h"
#include <cstdint>
#include <span>
#include <string>

namespace pixkit {

// A new, empty file in the folder of the target. It has the target's extension, which tells what it holds should a
// crash leave it behind. Unless it takes the target's place it is deleted in the end.
class NeighbourFile {
  public:
    NeighbourFile(const std::string& target, bool useUnicode);
    ~NeighbourFile();
    NeighbourFile(const NeighbourFile&) = delete;
    NeighbourFile& operator=(const NeighbourFile&) = delete;

    // False when the folder takes no new file, or when the file has become the target.
    bool exists() const noexcept { return !m_name.empty(); }
    // Once: all the pieces, one after the other. False when not all of their bytes arrived.
    bool write(std::span<const std::span<const std::uint8_t>> pieces) noexcept;
    // Replaces the target, if there is one. On failure the target is as it was.
    bool takeItsPlace() noexcept;

  private:
    const std::string& m_target; // of the caller
    std::string m_name;
    platform::UniqueFile m_file; // until it is written
    bool m_useUnicode;
};

} // namespace pixkit
