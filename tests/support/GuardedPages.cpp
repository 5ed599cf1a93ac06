#include "GuardedPages.h"

#include <new>
#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#endif

namespace {

constexpr std::size_t pageBytes = 65536; // a multiple of every system's
constexpr std::size_t bytes = 16 * pageBytes;

} // namespace

GuardedPages::GuardedPages() {
#ifdef _WIN32
    void* const all = VirtualAlloc(nullptr, bytes + 2 * pageBytes, MEM_RESERVE, PAGE_NOACCESS);
    if (all == nullptr) throw std::bad_alloc();
    m_begin = static_cast<std::uint8_t*>(all) + pageBytes;
    if (VirtualAlloc(m_begin, bytes, MEM_COMMIT, PAGE_READWRITE) == nullptr) throw std::bad_alloc();
#else
    void* const all = mmap(nullptr, bytes + 2 * pageBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (all == MAP_FAILED) throw std::bad_alloc();
    m_begin = static_cast<std::uint8_t*>(all) + pageBytes;
    if (mprotect(m_begin, bytes, PROT_READ | PROT_WRITE) != 0) throw std::bad_alloc();
#endif
    m_end = m_begin + bytes;
}

GuardedPages::~GuardedPages() {
#ifdef _WIN32
    VirtualFree(m_begin - pageBytes, 0, MEM_RELEASE);
#else
    munmap(m_begin - pageBytes, bytes + 2 * pageBytes);
#endif
}
// SPDX-License-Identifier: MIT
