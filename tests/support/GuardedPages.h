// Memory between two pages that end the program when they are touched, so that a row that begins or ends there shows
// every byte that is read or written outside it.
#pragma once
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

class GuardedPages {
  public:
    GuardedPages(); // a megabyte
    ~GuardedPages();
    GuardedPages(const GuardedPages&) = delete;
    GuardedPages& operator=(const GuardedPages&) = delete;
    std::uint8_t* begin() const { return m_begin; }
    std::uint8_t* end() const { return m_end; }

    // A copy of the values that ends where the memory does.
    template <class T>
    T* atEnd(const std::vector<T>& values) const {
        std::uint8_t* const p = m_end - values.size() * sizeof(T);
        if (!values.empty()) std::memcpy(p, values.data(), values.size() * sizeof(T));
        return reinterpret_cast<T*>(p);
    }

  private:
    std::uint8_t *m_begin, *m_end;
};
// SPDX-License-Identifier: MIT
