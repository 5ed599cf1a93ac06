#include "support/AllocationFault.h"
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#if defined(__has_feature)
#define PIXKIT_HAS_FEATURE(name) __has_feature(name)
#else
#define PIXKIT_HAS_FEATURE(name) 0
#endif
#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !PIXKIT_HAS_FEATURE(address_sanitizer) &&                  \
    !PIXKIT_HAS_FEATURE(memory_sanitizer)
#define PIXKIT_WATCHES_MALLOC
#include <dlfcn.h>
#endif

namespace {

std::atomic<bool> armed{false}, happened{false};
std::atomic<long> successesLeft{0}, failuresLeft{0}, asked{0};
std::atomic<std::ptrdiff_t> live{0};
std::atomic<std::size_t> largestBlock{0};
std::atomic<std::uint8_t> filler{sizeof(void*) == 4 ? 0x5A : 0xA5}; // what golden results know nothing of

bool isToFail(std::size_t bytes) noexcept {
    ++asked;
    if (bytes > largestBlock) largestBlock = bytes;
    if (!armed || successesLeft-- > 0) return false;
    if (failuresLeft == 0) return false;
    --failuresLeft; // a negative count never comes to 0
    happened = true;
    errno = ENOMEM;
    return true;
}

// Of a new block, or the part that is new from `start` on.
void* taken(void* block, std::size_t bytes, std::size_t start = 0) noexcept {
    if (block == nullptr) return nullptr;
    const std::size_t end = std::min<std::size_t>(bytes, 1 << 20);
    if (start < end) std::memset(static_cast<char*>(block) + start, filler, end - start);
    return block;
}

} // namespace

#ifdef PIXKIT_WATCHES_MALLOC

// The functions in whose place these stand: the C library's, or those of a program that looks for errors.
template <class Function>
Function* theNext(Function*& found, const char* name) noexcept {
    if (found == nullptr) found = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
    return found;
}

extern "C" {

void* malloc(std::size_t bytes) {
    static void* (*next)(std::size_t) = nullptr;
    void* const block = isToFail(bytes) ? nullptr : theNext(next, "malloc")(bytes);
    live += block != nullptr;
    return taken(block, bytes);
}
void* calloc(std::size_t count, std::size_t bytes) {
    static void* (*next)(std::size_t, std::size_t) = nullptr;
    void* const block = isToFail(count * bytes) ? nullptr : theNext(next, "calloc")(count, bytes);
    live += block != nullptr;
    return block;
}
void* realloc(void* block, std::size_t bytes) {
    static void* (*next)(void*, std::size_t) = nullptr;
    static std::size_t (*sizeOf)(void*) = nullptr;
    const std::size_t before = block != nullptr ? theNext(sizeOf, "malloc_usable_size")(block) : 0;
    if (isToFail(bytes)) return nullptr;
    void* const moved = theNext(next, "realloc")(block, bytes);
    live += (block == nullptr && moved != nullptr) - (block != nullptr && moved == nullptr && bytes == 0);
    return taken(moved, bytes, before);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t bytes) {
    static int (*next)(void**, std::size_t, std::size_t) = nullptr;
    const int error = isToFail(bytes) ? ENOMEM : theNext(next, "posix_memalign")(block, alignment, bytes);
    live += error == 0;
    if (error == 0) taken(*block, bytes);
    return error;
}
void* aligned_alloc(std::size_t alignment, std::size_t bytes) {
    void* block = nullptr;
    return posix_memalign(&block, std::max(alignment, sizeof block), bytes) == 0 ? block : nullptr;
}
void free(void* block) {
    static void (*next)(void*) = nullptr;
    live -= block != nullptr;
    theNext(next, "free")(block);
}

} // extern "C"

#else

namespace {

void* allocate(std::size_t bytes) noexcept {
    void* const block = isToFail(bytes) ? nullptr : std::malloc(bytes == 0 ? 1 : bytes);
    live += block != nullptr;
    return taken(block, bytes);
}

void* allocateOrThrow(std::size_t bytes) {
    if (void* const block = allocate(bytes)) return block;
    throw std::bad_alloc();
}

void release(void* block) noexcept {
    live -= block != nullptr;
    std::free(block);
}

} // namespace

void* operator new(std::size_t bytes) {
    return allocateOrThrow(bytes);
}
void* operator new[](std::size_t bytes) {
    return allocateOrThrow(bytes);
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return allocate(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
    return allocate(bytes);
}
void operator delete(void* block) noexcept {
    release(block);
}
void operator delete[](void* block) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t) noexcept {
    release(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    release(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    release(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    release(block);
}

#endif

namespace pixkit::test {

AllocationFault::AllocationFault(long after, long times) noexcept {
    successesLeft = after;
    failuresLeft = times;
    happened = false;
    armed = true;
}

AllocationFault::~AllocationFault() {
    armed = false;
}

bool AllocationFault::hasHappened() const noexcept {
    return happened;
}

AllocationWatch::AllocationWatch() noexcept : m_before(asked) {
    largestBlock = 0;
}

std::size_t AllocationWatch::largest() const noexcept { // NOLINT(readability-convert-member-functions-to-static)
    return largestBlock;
}

long AllocationWatch::count() const noexcept {
    return asked - m_before;
}

std::ptrdiff_t liveAllocations() noexcept {
    return live;
}

void fillAllocations(std::uint8_t byte) noexcept {
    filler = byte;
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
