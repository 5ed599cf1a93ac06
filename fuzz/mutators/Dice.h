// What the mutators of formats share. A mutator takes a file apart, changes what its format consists of, and puts it
// together again with the right lengths, checksums and compression, so that what lies behind these is tested.
#pragma once
#include "coding/ByteReader.h"
#include "coding/ByteWriter.h"
#include <algorithm>
#include <random>
#include <utility>

#if __has_feature(memory_sanitizer)
#include <sanitizer/msan_interface.h>
#endif

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t bytes, std::size_t most);

namespace pixkit::fuzz {

using Bytes = std::vector<std::uint8_t>;

inline void append(Bytes& bytes, std::span<const std::uint8_t> more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

// What the engine has written, which the memory sanitizer does not see.
inline void takeAsWritten([[maybe_unused]] const void* data, [[maybe_unused]] std::size_t bytes) {
#if __has_feature(memory_sanitizer)
    __msan_unpoison(data, bytes);
#endif
}

// Writes a little-endian field of so many bytes.
inline void putField(Bytes& bytes, std::size_t at, std::size_t width, std::uint64_t value) {
    for (std::size_t i = 0; i < width && at + i < bytes.size(); ++i)
        bytes[at + i] = static_cast<std::uint8_t>(value >> i * 8);
}

class Dice {
  public:
    explicit Dice(unsigned seed) : m_engine(seed) {}

    std::size_t below(std::size_t count) { return count == 0 ? 0 : m_engine() % count; }
    bool oneIn(std::size_t count) { return below(count) == 0; }
    std::uint8_t byte() { return static_cast<std::uint8_t>(m_engine() >> 8); }
    auto oneOf(const auto& values) { return std::begin(values)[below(std::size(values))]; }
    template <typename Part>
    Part& anyOf(std::vector<Part>& parts) {
        return parts[below(parts.size())];
    }
    // As sides of pictures are.
    std::size_t side() { return 1 + below(oneIn(8) ? 300 : 40); }
    // As fields of headers may be: small, at a border, anything.
    std::uint32_t number() {
        constexpr std::uint32_t borders[] = {0,      0x7F,   0x80,       0xFF,       0x7FFF,
                                             0x8000, 0xFFFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
        const auto any = static_cast<std::uint32_t>(m_engine());
        return oneIn(4) ? oneOf(borders) + any % 3 - 1 : oneIn(8) ? any : any % 300;
    }
    // All alike, few different ones, or any.
    Bytes noise(std::size_t count) {
        constexpr std::uint8_t masks[] = {0, 0x81, 0xFF};
        const std::uint8_t mask = oneOf(masks), all = byte();
        Bytes bytes(count);
        std::ranges::generate(bytes, [&] { return (byte() & mask) | (all & ~mask); });
        return bytes;
    }
    // As libFuzzer changes bytes without a form.
    void change(Bytes& bytes) {
        const std::size_t size = bytes.size();
        bytes.resize(size + size / 4 + 8);
        const std::size_t changed = LLVMFuzzerMutate(bytes.data(), size, bytes.size());
        takeAsWritten(&changed, sizeof changed);
        takeAsWritten(bytes.data(), bytes.size());
        bytes.resize(changed);
    }
    // Takes the end off, from anywhere on.
    Bytes cut(Bytes& bytes) {
        const auto middle = bytes.begin() + static_cast<std::ptrdiff_t>(below(bytes.size() + 1));
        Bytes rest(middle, bytes.end());
        bytes.erase(middle, bytes.end());
        return rest;
    }
    // One of several parts goes, comes twice, or changes places with another.
    template <typename Part>
    void shuffle(std::vector<Part>& parts) {
        if (parts.empty()) return;
        std::swap(anyOf(parts), parts.back());
        if (oneIn(3)) return parts.pop_back();
        if (oneIn(2)) parts.push_back(Part(parts.back()));
        std::swap(anyOf(parts), parts.back());
    }

  private:
    std::minstd_rand m_engine;
};

} // namespace pixkit::fuzz
// SPDX-License-Identifier: MIT
