// The reference: the plain definition of every kernel (scalar/). Vector kernels end their rows with it, where less than
// one vector is left.
#pragma once
#include "kernels/kernels.h"

namespace pixkit::kernels {

extern const Table reference;

namespace scalar {

// The row filters from byte `from` on, everything before it being undone already.
void unfilterSubFrom(std::uint8_t* row, std::size_t from, std::size_t bytes, std::size_t step);
void unfilterAvgFrom(std::uint8_t* row, const std::uint8_t* above, std::size_t from, std::size_t bytes,
                     std::size_t step);
void unfilterPaethFrom(std::uint8_t* row, const std::uint8_t* above, std::size_t from, std::size_t bytes,
                       std::size_t step);

// The same for filtering, from byte `from` to before byte `to`; the sums are added to.
void filterSubPart(std::uint8_t* dst, const std::uint8_t* row, std::size_t from, std::size_t to, std::size_t step);
void filterAvgPart(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t from,
                   std::size_t to, std::size_t step);
void filterPaethPart(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t from,
                     std::size_t to, std::size_t step);
void filterSumsPart(std::uint64_t* sums, const std::uint8_t* row, const std::uint8_t* above, std::size_t from,
                    std::size_t to, std::size_t step);

} // namespace scalar
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
