// Bytes as the system's streams.
#pragma once
#include "platform/faults.h"
#include <cstdint>
#include <cstring>
#include <span>
#include <utility>
#include <windows.h>
// Streams need what comes before them here.
#include <objidl.h>

namespace pixkit::platform {

// One reference to a COM object.
template <class Interface>
class Reference {
  public:
    Reference() noexcept = default;
    explicit Reference(Interface* adopted) noexcept : m_object(adopted) {}
    Reference(Reference&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    Reference& operator=(Reference&&) = delete;
    Reference(const Reference&) = delete;
    Reference& operator=(const Reference&) = delete;
    ~Reference() {
        if (m_object != nullptr) m_object->Release();
    }
    Interface* operator->() const noexcept { return m_object; }
    Interface* get() const noexcept { return m_object; }
    Interface** receive() noexcept { return &m_object; }
    explicit operator bool() const noexcept { return m_object != nullptr; }

  private:
    Interface* m_object = nullptr;
};

// A stream on a block of memory, which it owns from then on, or on an empty one of its own for null. Null on failure,
// and the block is still the caller's.
inline Reference<IStream> streamOn(HGLOBAL memory) noexcept {
    Reference<IStream> stream;
    if (faultDue(SeamCall::createStream) || ::CreateStreamOnHGlobal(memory, TRUE, stream.receive()) != S_OK) return {};
    return stream;
}

// A stream over a copy of the bytes, which it owns.
inline Reference<IStream> streamOver(std::span<const std::uint8_t> bytes) noexcept {
    const HGLOBAL memory = faultDue(SeamCall::globalAlloc) ? nullptr : ::GlobalAlloc(GMEM_MOVEABLE, bytes.size());
    if (memory == nullptr) return {};
    void* const copy = faultDue(SeamCall::globalLock) ? nullptr : ::GlobalLock(memory);
    if (copy != nullptr) {
        std::memcpy(copy, bytes.data(), bytes.size());
        ::GlobalUnlock(memory);
        if (Reference<IStream> stream = streamOn(memory)) return stream;
    }
    ::GlobalFree(memory);
    return {};
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
