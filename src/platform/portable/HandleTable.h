// Handles that can be checked: a handle is a place in a table and the number of times that place has been used, never an
// address, so that a stale, foreign or invented one is recognised without touching what it might point to.
#pragma once
#include "platform/handle.h"
#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace pixkit::platform {

// From bit 0: the place (20 bits), the kind (3), the use count of the place (the rest, without the sign bit). No kind
// is 0 and use counts start at 1, so no handle is 0 or invalidHandle, nor equal to one of another kind.
enum class HandleKind : std::uint8_t { gdi = 1, file = 2, library = 3 };

// Threads may use one table at once. What an entry holds lives until its last user lets go of it.
template <class Object>
class HandleTable {
  public:
    explicit HandleTable(HandleKind kind) noexcept : m_kind(static_cast<Bits>(kind)) {}

    // The new object's handle; 0 when the table is full or there is no memory.
    Handle add(std::shared_ptr<Object> object) noexcept {
        const std::scoped_lock lock(m_mutex);
        try {
            if (m_free.empty()) {
                if (m_entries.size() > placeMask) return 0;
                m_entries.emplace_back();
                m_free.push_back(m_entries.size() - 1);
            }
        } catch (const std::bad_alloc&) {
            return 0;
        }
        // The place that has been free for longest comes first, which keeps stale handles recognisable for longer.
        const std::size_t place = m_free.front();
        m_free.pop_front();
        Entry& entry = m_entries[place];
        entry.object = std::move(object);
        entry.uses = entry.uses == lastUse ? 1 : entry.uses + 1;
        return static_cast<Handle>(entry.uses << useShift | m_kind << kindShift | place);
    }

    std::shared_ptr<Object> find(Handle handle) const noexcept {
        const std::scoped_lock lock(m_mutex);
        return isLive(handle) ? m_entries[placeOf(handle)].object : nullptr;
    }

    // Takes the object out; its handle is stale from now on. Null when it was already.
    std::shared_ptr<Object> remove(Handle handle) noexcept {
        const std::scoped_lock lock(m_mutex);
        if (!isLive(handle)) return nullptr;
        std::shared_ptr<Object> object = std::move(m_entries[placeOf(handle)].object);
        try {
            m_free.push_back(placeOf(handle));
        } catch (const std::bad_alloc&) {
            // The place is not used again; its object is gone all the same.
        }
        return object;
    }

    std::size_t count() const noexcept {
        const std::scoped_lock lock(m_mutex);
        std::size_t live = 0;
        for (const Entry& entry : m_entries)
            live += entry.object != nullptr;
        return live;
    }

  private:
    using Bits = std::uintptr_t;
    static constexpr int kindShift = 20;
    static constexpr int useShift = 23;
    static constexpr Bits placeMask = (Bits{1} << kindShift) - 1;
    static constexpr Bits lastUse = static_cast<Bits>(std::numeric_limits<Handle>::max()) >> useShift;

    struct Entry {
        std::shared_ptr<Object> object;
        Bits uses = 0;
    };

    static std::size_t placeOf(Handle handle) noexcept { return static_cast<Bits>(handle) & placeMask; }

    bool isLive(Handle handle) const noexcept {
        const auto bits = static_cast<Bits>(handle);
        const std::size_t place = placeOf(handle);
        if (place >= m_entries.size()) return false;
        const Entry& entry = m_entries[place];
        return entry.object != nullptr && bits == (entry.uses << useShift | m_kind << kindShift | place);
    }

    mutable std::mutex m_mutex;
    std::vector<Entry> m_entries;
    std::deque<std::size_t> m_free;
    Bits m_kind;
};

} // namespace pixkit::platform
