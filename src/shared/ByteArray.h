// Byte arrays as callers pass them: one or two dimensions, any lower bound, owned or borrowed.
#pragma once
#include "platform/api.h"
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace pixkit {

// An array of bytes, unallocated (no dimensions) at first. With two dimensions the first index runs fastest: in a
// picture it is the byte within the row, the second the row. Elements lie without gaps.
class PIXKIT_API ByteArray {
  public:
    struct Bound {
        std::int32_t lower = 0;
        std::uint32_t count = 0;
        bool operator==(const Bound&) const = default;
    };

    // Memory of another kind for what redim makes, such as a caller's own arrays.
    class Memory {
      public:
        // All zero and large enough for the bounds; good until the next call. Throws std::bad_alloc.
        virtual std::uint8_t* redim(int dimensions, Bound first, Bound second) = 0;

      protected:
        ~Memory() = default;
    };

    ByteArray() = default;
    // One dimension holding `bytes`, first index `lower`.
    explicit ByteArray(std::vector<std::uint8_t> bytes, std::int32_t lower = 0);

    // A view of foreign bytes, which must outlive it and every use of it; `redim` and `erase` let go of them untouched.
    static ByteArray borrow(std::uint8_t* data, Bound first);
    static ByteArray borrow(std::uint8_t* data, Bound first, Bound second);

    // From now on redim takes its memory from there; `memory` must outlive every use of the array. Assigning to the
    // array ends that, and copies do not take it over.
    void allocateFrom(Memory& memory) noexcept { m_memory = &memory; }

    // A copy always owns its bytes, whatever it was copied from.
    ByteArray(const ByteArray& other);
    ByteArray& operator=(const ByteArray& other);
    ByteArray(ByteArray&& other) noexcept;
    ByteArray& operator=(ByteArray&& other) noexcept;
    ~ByteArray() = default;

    // Makes the array hold `count` zero bytes, first index 0.
    void redim(std::size_t count);
    // Two dimensions: `fast` bytes in each of `slow` rows, all zero, indexes from 0.
    void redim(std::size_t fast, std::size_t slow);
    // Back to unallocated.
    void erase() noexcept;

    bool isAllocated() const noexcept { return m_dimensions != 0; }
    int dimensions() const noexcept { return m_dimensions; }
    // Bounds of dimension 1 (the fast one) or 2; a zero bound for a dimension that is not there.
    Bound bound(int dimension) const noexcept;
    std::int32_t lowerBound() const noexcept { return m_bounds[0].lower; }
    // Last valid index of the first dimension.
    std::int64_t upperBound() const noexcept { return std::int64_t{m_bounds[0].lower} + m_bounds[0].count - 1; }

    std::uint8_t* data() noexcept { return m_data; }
    const std::uint8_t* data() const noexcept { return m_data; }
    std::size_t size() const noexcept;
    std::span<const std::uint8_t> bytes() const noexcept { return {m_data, size()}; }

  private:
    void place(int dimensions, Bound first, Bound second);

    std::vector<std::uint8_t> m_owned;
    Memory* m_memory = nullptr; // null: m_owned
    std::uint8_t* m_data = nullptr;
    Bound m_bounds[2];
    int m_dimensions = 0;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
