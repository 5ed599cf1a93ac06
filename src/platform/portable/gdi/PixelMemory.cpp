#include "platform/portable/gdi/PixelMemory.h"
#include <cstdlib>
#include <sys/mman.h>

namespace pixkit::platform {

namespace {

// Filling a big bitmap spends more time in page faults than in the decoder's inner loops when pages have 4 KiB.
// Mappings of at least a few huge pages therefore start on a huge page's boundary and ask for them.
constexpr std::size_t hugePage = std::size_t{2} << 20;
constexpr std::size_t page = 4096;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool mapsBigBitmaps = false; // the sanitizer watches the borders of the C library's memory only
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool mapsBigBitmaps = false;
#else
constexpr bool mapsBigBitmaps = true;
#endif
#else
constexpr bool mapsBigBitmaps = true;
#endif

constexpr std::size_t roundedUp(std::size_t bytes, std::size_t unit) noexcept {
    return (bytes + unit - 1) / unit * unit;
}

// The last huge page is taken whole where little of it is wasted.
constexpr std::size_t mappedSize(std::size_t bytes) noexcept {
    constexpr std::size_t acceptableWaste = hugePage / 8;
    const std::size_t whole = roundedUp(bytes, hugePage);
    return whole - bytes <= acceptableWaste ? whole : roundedUp(bytes, page);
}

std::uint8_t* mapOnHugePages(std::size_t bytes) noexcept {
    const std::size_t reserved = bytes + hugePage;
    void* const mapping = mmap(nullptr, reserved, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED) return nullptr;
    auto* const first = static_cast<std::uint8_t*>(mapping);
    const std::size_t before = (hugePage - reinterpret_cast<std::uintptr_t>(first) % hugePage) % hugePage;
    std::uint8_t* const data = first + before;
    if (before != 0) munmap(first, before);
    munmap(data + bytes, hugePage - before);
    // Both are only hints: without them everything works, slower.
    madvise(data, bytes, MADV_HUGEPAGE);
#ifdef MADV_POPULATE_WRITE
    // What is left behind the last whole huge page gets its small pages at one go.
    const std::size_t rest = bytes % hugePage;
    if (rest != 0) madvise(data + bytes - rest, rest, MADV_POPULATE_WRITE);
#endif
    return data;
}

} // namespace

PixelMemory::PixelMemory(CheckedSize size) noexcept {
    // So much less than the most that rounding up does not wrap.
    if (!size.isAtMost(CheckedSize::most - 2 * hugePage)) return;
    const std::size_t bytes = size.inMemory();
    if (mapsBigBitmaps && bytes >= hugePage) {
        const std::size_t rounded = mappedSize(bytes);
        m_data = mapOnHugePages(rounded);
        if (m_data != nullptr) m_mapped = rounded;
        return;
    }
    m_data = static_cast<std::uint8_t*>(std::calloc(bytes, 1));
}

PixelMemory::~PixelMemory() {
    if (m_mapped != 0)
        munmap(m_data, m_mapped);
    else
        std::free(m_data);
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
