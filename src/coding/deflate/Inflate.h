// The built-in DEFLATE decoder (RFC 1951) with the zlib wrapper (RFC 1950). It stands alone: nothing of the component
// is needed around it.
#pragma once
#include <cstddef>
#include <cstdint>

namespace pixkit::deflate {

enum class Outcome : std::uint8_t {
    complete,   // the final block ended
    outputFull, // the output was filled and the stream does not end there; damage behind that point is not damage
    inputEnded, // the data ended early; every symbol that was whole has been written
    damaged,    // not a DEFLATE stream, or an impossible code, distance or length
};

struct Result {
    Outcome outcome;
    std::size_t written; // bytes of output that hold data
};

// Inflates a raw DEFLATE stream into `output`. Never reads or writes outside the two buffers. Bytes of `output` past
// `written` hold no promise.
Result inflate(std::uint8_t* output, std::size_t capacity, const std::uint8_t* input, std::size_t bytes) noexcept;

// The same for a zlib stream: the two header bytes are checked as zlib checks them (method 8, window at most 32 K,
// header checksum, no preset dictionary); the Adler-32 behind the data is not looked at.
Result inflateZlib(std::uint8_t* output, std::size_t capacity, const std::uint8_t* input, std::size_t bytes) noexcept;

} // namespace pixkit::deflate
