// Counts the boxes that the component shows, in the whole process.
#pragma once
#include <atomic>

namespace pixkit::platform {

// One of them, for as long as it is open.
class OpenBox {
  public:
    enum class Beside { others, none };

    // Beside none, it is open only if no other is.
    explicit OpenBox(Beside beside) noexcept {
        int others = 0;
        m_isOpen = beside == Beside::others ? ++count != 0 : count.compare_exchange_strong(others, 1);
    }
    ~OpenBox() {
        if (m_isOpen) --count;
    }
    OpenBox(const OpenBox&) = delete;
    OpenBox& operator=(const OpenBox&) = delete;

    bool isOpen() const noexcept { return m_isOpen; }

  private:
    inline static std::atomic<int> count = 0;
    bool m_isOpen;
};

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
