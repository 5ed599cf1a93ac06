// Watches operator new, and makes it fail on purpose, in the whole test program; what takes memory in other ways is
// left alone.
#pragma once
#include <cstddef>

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
};

// Blocks taken with operator new and not given back yet.
std::ptrdiff_t liveAllocations() noexcept;

} // namespace pixkit::test
