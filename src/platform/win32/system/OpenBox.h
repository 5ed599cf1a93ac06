// Counts the boxes that the component shows, in the whole process.
#pragma once
#include <atomic>

namespace pixkit::platform {

// One of them, for as long as it is open.
class OpenBox {
  public:
    OpenBox() noexcept { ++count; }
    ~OpenBox() { --count; }
    OpenBox(const OpenBox&) = delete;
    OpenBox& operator=(const OpenBox&) = delete;

    static bool isAny() noexcept { return count != 0; }

  private:
    inline static std::atomic<int> count = 0;
};

} // namespace pixkit::platform
