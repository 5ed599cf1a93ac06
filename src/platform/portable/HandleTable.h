// Handles that can be checked: a handle is a place in a table and the number of times that place has been used, never
// an address, so that a stale, foreign or invented one is recognised without touching what it might point to.
#pragma once
#include "platform/NeverDestroyed.h"
#include "platform/handle.h"
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace pixkit::platform {

// From bit 0: the place (20 bits), the kind (3), the use count of the place (the rest, without the sign bit). No kind
// is 0 and use counts start at 1, so no handle is 0 or invalidHandle, nor equal to one of another kind.
enum class HandleKind : std::uint8_t { gdi = 1, file = 2, library = 3, icon = 4 };

inline std::atomic<std::size_t> openHandleCount = 0; // of all tables together, for openHandles()

// Threads may use one table at once. What an entry holds lives until its last user lets go of it.
template <class Object>
class HandleTable {
  public:
    explicit HandleTable(HandleKind kind) noexcept : m_kind(static_cast<Bits>(kind)) {}

    // The new object's handle; 0 when the table is full or there is no memory.
    Handle add(std::shared_ptr<Object> object) noexcept {
        const std::scoped_lock lock(m_mutex);
        if (m_firstFree == none && !grow()) return 0;
        // The place that has been free for longest is taken, which keeps stale handles recognisable for longer.
        const std::size_t place = m_firstFree;
        m_firstFree = m_entries[place].nextFree;
        Entry& entry = m_entries[place];
        entry.object = std::move(object);
        entry.uses = entry.uses == lastUse ? 1 : entry.uses + 1;
        ++openHandleCount;
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
        const std::size_t place = placeOf(handle);
        release(place);
        --openHandleCount;
        return std::move(m_entries[place].object);
    }

  private:
    using Bits = std::uintptr_t;
    static constexpr std::size_t none = std::numeric_limits<std::size_t>::max();
    static constexpr int kindShift = 20;
    static constexpr int useShift = 23;
    static constexpr Bits placeMask = (Bits{1} << kindShift) - 1;
    static constexpr Bits lastUse = static_cast<Bits>(std::numeric_limits<Handle>::max()) >> useShift;

    struct Entry {
        std::shared_ptr<Object> object;
        Bits uses = 0;
        std::size_t nextFree = none;
    };

    bool grow() noexcept {
        if (m_entries.size() > placeMask) return false;
        try {
            m_entries.emplace_back();
        } catch (const std::bad_alloc&) {
            return false;
        }
        release(m_entries.size() - 1);
        return true;
    }

    // Puts a place at the end of the queue of free ones.
    void release(std::size_t place) noexcept {
        m_entries[place].nextFree = none;
        (m_firstFree == none ? m_firstFree : m_entries[m_lastFree].nextFree) = place;
        m_lastFree = place;
    }

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
    std::size_t m_firstFree = none;
    std::size_t m_lastFree = none;
    Bits m_kind;
};

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
