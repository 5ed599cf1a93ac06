#include "platform/win32/system/GlobalBlock.h"
#include "platform/faults.h"

namespace pixkit::platform {

namespace {

// The heap's functions trust what they are given: some systems end the process over an address that is no block. A
// handle is the address of its entry in a table, or of the fixed block itself; code and what is not there is neither.
// Only fixed blocks lie where the heap aligns its blocks, and those it can vouch for.
bool isGlobalMemory(HGLOBAL memory) noexcept {
    MEMORY_BASIC_INFORMATION place{};
    if (::VirtualQuery(memory, &place, sizeof place) == 0 || place.State != MEM_COMMIT || place.Type == MEM_IMAGE ||
        (place.Protect & (PAGE_NOACCESS | PAGE_GUARD)) != 0)
        return false;
    const bool mayBeFixed = reinterpret_cast<ULONG_PTR>(memory) % MEMORY_ALLOCATION_ALIGNMENT == 0;
    if (mayBeFixed && !::HeapValidate(::GetProcessHeap(), 0, memory)) return false;
    return ::GlobalFlags(memory) != GMEM_INVALID_HANDLE;
}

} // namespace

GlobalBlock::GlobalBlock(HGLOBAL memory) noexcept {
    if (memory == nullptr || !isGlobalMemory(memory)) return;
    const SIZE_T size = ::GlobalSize(memory);
    const void* const data = size == 0 || faultDue(SeamCall::globalLock) ? nullptr : ::GlobalLock(memory);
    if (data == nullptr) return;
    m_memory = memory;
    m_bytes = {static_cast<const std::uint8_t*>(data), size};
}

GlobalBlock::~GlobalBlock() {
    if (m_memory != nullptr) ::GlobalUnlock(m_memory);
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
