#include "support/AllocationFault.h"
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<bool> armed{false}, happened{false};
std::atomic<long> successesLeft{0}, failuresLeft{0};
std::atomic<std::ptrdiff_t> live{0};
std::atomic<std::size_t> largestBlock{0};

bool isToFail() noexcept {
    if (!armed || successesLeft-- > 0) return false;
    if (failuresLeft == 0) return false;
    --failuresLeft; // a negative count never comes to 0
    happened = true;
    return true;
}

void* allocate(std::size_t bytes) noexcept {
    if (bytes > largestBlock) largestBlock = bytes;
    void* const block = isToFail() ? nullptr : std::malloc(bytes == 0 ? 1 : bytes);
    if (block != nullptr) ++live;
    return block;
}

void* allocateOrThrow(std::size_t bytes) {
    if (void* const block = allocate(bytes)) return block;
    throw std::bad_alloc();
}

void release(void* block) noexcept {
    if (block != nullptr) --live;
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

AllocationWatch::AllocationWatch() noexcept {
    largestBlock = 0;
}

std::size_t AllocationWatch::largest() const noexcept { // NOLINT(readability-convert-member-functions-to-static)
    return largestBlock;
}

std::ptrdiff_t liveAllocations() noexcept {
    return live;
}

} // namespace pixkit::test
