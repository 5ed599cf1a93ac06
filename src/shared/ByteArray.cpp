#include "shared/ByteArray.h"
#include <limits>
#include <stdexcept>
#include <utility>

namespace pixkit {

namespace {

std::uint32_t checkedCount(std::size_t count) {
    // Indexes are signed 32-bit for every caller of the component.
    if (count > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        throw std::length_error("array dimension does not fit 32 bits");
    }
    return static_cast<std::uint32_t>(count);
}

} // namespace

ByteArray::ByteArray(std::vector<std::uint8_t> bytes, std::int32_t lower)
    : m_owned(std::move(bytes)), m_data(m_owned.data()), m_bounds{{lower, checkedCount(m_owned.size())}, {}},
      m_dimensions(1) {}

ByteArray ByteArray::borrow(std::uint8_t* data, Bound first) {
    ByteArray array;
    array.m_data = data;
    array.m_bounds[0] = first;
    array.m_dimensions = 1;
    return array;
}

ByteArray ByteArray::borrow(std::uint8_t* data, Bound first, Bound second) {
    ByteArray array = borrow(data, first);
    array.m_bounds[1] = second;
    array.m_dimensions = 2;
    return array;
}

ByteArray::ByteArray(const ByteArray& other)
    : m_owned(other.m_data, other.m_data + other.size()),
      m_data(m_owned.data()), m_bounds{other.m_bounds[0], other.m_bounds[1]}, m_dimensions(other.m_dimensions) {}

ByteArray& ByteArray::operator=(const ByteArray& other) {
    if (this != &other) *this = ByteArray(other);
    return *this;
}

ByteArray::ByteArray(ByteArray&& other) noexcept {
    *this = std::move(other);
}

ByteArray& ByteArray::operator=(ByteArray&& other) noexcept {
    if (this != &other) {
        m_owned = std::move(other.m_owned); // a moved vector keeps its buffer, so m_data stays good
        m_data = std::exchange(other.m_data, nullptr);
        m_bounds[0] = std::exchange(other.m_bounds[0], {});
        m_bounds[1] = std::exchange(other.m_bounds[1], {});
        m_dimensions = std::exchange(other.m_dimensions, 0);
        m_memory = nullptr;
        other.m_owned.clear();
    }
    return *this;
}

void ByteArray::place(int dimensions, Bound first, Bound second) {
    Memory* const memory = m_memory;
    if (memory == nullptr) {
        *this = ByteArray(std::vector<std::uint8_t>(std::size_t{first.count} * (dimensions == 2 ? second.count : 1)));
    } else {
        std::uint8_t* const data = memory->redim(dimensions, first, second);
        *this = borrow(data, first);
        m_memory = memory;
    }
    m_bounds[0] = first;
    m_bounds[1] = second;
    m_dimensions = dimensions;
}

void ByteArray::redim(std::size_t count) {
    place(1, {0, checkedCount(count)}, {});
}

void ByteArray::redim(std::size_t fast, std::size_t slow) {
    const Bound first{0, checkedCount(fast)}, second{0, checkedCount(slow)};
    if (std::uint64_t{first.count} * second.count > std::numeric_limits<std::ptrdiff_t>::max()) {
        throw std::length_error("array is too large");
    }
    place(2, first, second);
}

void ByteArray::erase() noexcept {
    *this = ByteArray();
}

ByteArray::Bound ByteArray::bound(int dimension) const noexcept {
    return dimension >= 1 && dimension <= m_dimensions ? m_bounds[dimension - 1] : Bound{};
}

std::size_t ByteArray::size() const noexcept {
    if (m_dimensions == 0) return 0;
    const std::size_t first = m_bounds[0].count;
    return m_dimensions == 1 ? first : first * m_bounds[1].count;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
