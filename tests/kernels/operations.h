// Every entry of the kernel table as one uniform operation, so that tests can run them all alike.
#pragma once
#include "kernels/kernels.h"

#include <cstdint>
#include <string>
#include <vector>

namespace pixkit::kernels::test {

// xorshift64*: the same numbers in every build.
class Numbers {
  public:
    explicit Numbers(std::uint64_t seed) : m_state(seed * 2 + 1) {}
    std::uint32_t next() {
        m_state ^= m_state >> 12;
        m_state ^= m_state << 25;
        m_state ^= m_state >> 27;
        return static_cast<std::uint32_t>(m_state * 0x2545F4914F6CDD1DU >> 32);
    }
    std::uint32_t below(std::uint32_t limit) { return next() % limit; }
    std::uint8_t byte() { return static_cast<std::uint8_t>(next() >> 13); }

  private:
    std::uint64_t m_state;
};

// What rows may hold.
enum class Content : std::uint8_t {
    bytes,         // any bytes
    premultiplied, // runs of clear, opaque and partly clear pixels, all valid
    opaque,        // alpha 255
    clear,         // zeros
    spoiled,       // premultiplied, but one pixel somewhere breaks the rule
};
constexpr Content contents[] = {Content::bytes, Content::premultiplied, Content::opaque, Content::clear,
                                Content::spoiled};

std::vector<std::uint8_t> rowOf(Content content, std::size_t bytes, Numbers& numbers);

struct Operation {
    std::string name;
    std::size_t dstBits, srcBits; // per count; a row takes them rounded up to bytes
    bool inPlace;                 // dst holds content before the call
    std::uint64_t (*run)(const Table& table, std::uint8_t* dst, const std::uint8_t* src, std::size_t count,
                         unsigned argument);
    unsigned argument; // what `run` makes of it: a filter's step, a depth, a choice of weights, ...

    std::size_t dstBytes(std::size_t count) const { return (count * dstBits + 7) / 8; }
    std::size_t srcBytes(std::size_t count) const { return (count * srcBits + 7) / 8; }
};

const std::vector<Operation>& operations();

} // namespace pixkit::kernels::test
