// What a program sets for the whole process, to answer or provide something in place of the system.
#pragma once
#include "platform/Lock.h"
#include <memory>
#include <mutex>
#include <utility>

namespace pixkit {

// Holds one handler: a std::function, or a structure of them that is false when it has none. It may be set at any time,
// also by a handler while it runs: calls end with the handler that they began with.
template <class Handler>
class HandlerSlot {
  public:
    // An empty handler leaves the slot empty. May throw std::bad_alloc.
    void set(Handler handler) {
        auto next = handler ? std::make_shared<const Handler>(std::move(handler)) : nullptr;
        const std::scoped_lock lock(m_mutex);
        m_handler.swap(next);
    }

    // Null when there is none.
    std::shared_ptr<const Handler> get() const noexcept {
        const std::scoped_lock lock(m_mutex);
        return m_handler;
    }

  private:
    mutable platform::Lock m_mutex;
    std::shared_ptr<const Handler> m_handler;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
