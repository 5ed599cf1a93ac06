// Which copies make a stream smallest, found by weighing all ways through the data against each other.
#pragma once
#include "coding/deflate/BlockWriter.h"
#include <cstdint>
#include <span>

namespace pixkit::deflate {

// Gives the literals and copies of `data` to `blocks`. Copies have `shortest` bytes at least, 3 or 4; they are looked
// for at `depth` earlier places. Throws std::bad_alloc.
void parseOptimally(std::span<const std::uint8_t> data, std::size_t shortest, unsigned depth, BlockWriter& blocks);

} // namespace pixkit::deflate
