// Which copies make a stream smallest, found by weighing all ways through the data against each other.
#pragma once
#include "coding/deflate/BlockWriter.h"
#include "coding/deflate/MatchFinder.h"

namespace pixkit::deflate {

// Gives the literals and copies of the input to `blocks`. Copies have `shortest` bytes at least, 3 or 4; they are
// looked for at `depth` earlier places. Symbols are weighed by the fixed codes, or by how often they are chosen. Throws
// std::bad_alloc.
void parseOptimally(const Input& input, std::size_t shortest, unsigned depth, bool byFixedCodes, BlockWriter& blocks);

} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
