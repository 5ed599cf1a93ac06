// The file that is written in the place of another before it takes that place.
#pragma once
#include <string>

namespace pixkit {

// A new, empty file in the folder of the target. It has the target's extension, since writers may go by it. Unless it
// takes the target's place it is deleted in the end.
class NeighbourFile {
  public:
    NeighbourFile(const std::string& target, bool useUnicode);
    ~NeighbourFile();
    NeighbourFile(const NeighbourFile&) = delete;
    NeighbourFile& operator=(const NeighbourFile&) = delete;

    // False when the folder takes no new file, or when the file has become the target.
    bool exists() const noexcept { return !m_name.empty(); }
    const std::string& name() const noexcept { return m_name; }
    // Replaces the target, if there is one. On failure the target is as it was.
    bool takeItsPlace() noexcept;

  private:
    const std::string& m_target; // of the caller
    std::string m_name;
    bool m_useUnicode;
};

} // namespace pixkit
