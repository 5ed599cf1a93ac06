// The built-in DEFLATE decoder (RFC 1951) with the zlib wrapper (RFC 1950). Of the component it needs
// the kernels alone.
#pragma once
#include <cstddef>
#include <cstdint>
#include <span>

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

// How far back copies reach at most, bytes.
inline constexpr std::size_t farthestCopy = 32768;

// Where output goes, a part of it at a time.
struct Room {
    // Fewer bytes than this are only there at the end of all output.
    static constexpr std::size_t least = 1024;

    std::uint8_t*
        begin; // of the output before `next` that copies may take from: all of it, or the last farthestCopy bytes
    std::uint8_t* next; // the next byte goes here
    std::uint8_t* end;
    bool isLast; // nothing goes behind `end`
};

// Whoever has a stream in pieces, and uses up the output while more of it comes.
class Pieces {
  public:
    // The next piece of the stream, which stays until another one is asked for; empty behind the last one.
    virtual std::span<const std::uint8_t> moreInput() noexcept = 0;
    // Room for what follows the output up to `next`, which is null at first. Output before that may have moved.
    virtual Room moreRoom(std::uint8_t* next) noexcept = 0;

  protected:
    ~Pieces() = default;
};
// Inflates a zlib stream; Result::written counts all output.
Result inflatePieces(Pieces& pieces) noexcept;

} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
