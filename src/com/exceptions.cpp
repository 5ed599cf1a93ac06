// Room for exceptions where memory has ended. The C++ runtime has some of its own, but looks after it with a mutex that
// takes memory when it is locked for the first time, and reports that there was none by an exception, for which it
// locks the mutex: without end. Here nothing is locked and nothing is taken.
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <cxxabi.h>
#include <exception>

namespace {

// More than what the runtime keeps right before an exception, which it wants to be zeros, and in its references to one.
constexpr std::size_t header = 256;

struct Place {
    alignas(std::max_align_t) std::array<std::byte, 1024> bytes;
    std::atomic<bool> isTaken;
};
std::array<Place, 32> places; // far more exceptions than threads have in the air at once

void* placeFor(std::size_t size) noexcept {
    if (size > sizeof(Place::bytes)) return nullptr;
    for (Place& place : places)
        if (!place.isTaken.exchange(true)) return place.bytes.data();
    return nullptr;
}

void* allocate(std::size_t size) noexcept {
    void* block = std::malloc(header + size);
    if (block == nullptr) block = placeFor(header + size);
    if (block == nullptr) std::terminate();
    return std::memset(block, 0, header);
}

void release(void* block) noexcept {
    for (Place& place : places)
        if (block == place.bytes.data()) return place.isTaken.store(false);
    std::free(block);
}

} // namespace

namespace __cxxabiv1 {

extern "C" {

void* __cxa_allocate_exception(std::size_t size) noexcept {
    return static_cast<std::byte*>(allocate(size)) + header;
}

void __cxa_free_exception(void* exception) noexcept {
    release(static_cast<std::byte*>(exception) - header);
}

__cxa_dependent_exception* __cxa_allocate_dependent_exception() noexcept {
    return static_cast<__cxa_dependent_exception*>(allocate(0));
}

void __cxa_free_dependent_exception(__cxa_dependent_exception* reference) noexcept {
    release(reference);
}
}

} // namespace __cxxabiv1
// SPDX-License-Identifier: MIT
