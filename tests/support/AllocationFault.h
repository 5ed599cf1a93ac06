// Watches memory that is taken, and makes it fail on purpose, in the whole test program: natively malloc and its kin,
// so that borrowed libraries are in the same case; under sanitizers, which have a malloc of their own, and on Windows
// operator new.
#pragma once
#include <cstddef>
#include <cstdint>

namespace pixkit::test {

class AllocationFault {
  public:
    // Lets `after` allocations succeed, then fails `times` of them (negative: all) until the end of the scope.
    explicit AllocationFault(long after, long times = 1) noexcept;
    ~AllocationFault();
    AllocationFault(const AllocationFault&) = delete;
    AllocationFault& operator=(const AllocationFault&) = delete;

    bool hasHappened() const noexcept;
};

// What is asked for from here on.
class AllocationWatch {
  public:
    AllocationWatch() noexcept;
    // Bytes of the largest block.
    std::size_t largest() const noexcept;
    long count() const noexcept;

  private:
    long m_before;
};

// Blocks taken and not given back yet.
std::ptrdiff_t liveAllocations() noexcept;

// What new memory holds from now on, up to a megabyte of each block. It is never what chance brings, often 0.
void fillAllocations(std::uint8_t byte) noexcept;

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
