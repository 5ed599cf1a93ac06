// The units, one for each instruction set. Each enters its kernels into a table; what it has none of stays as it is.
#pragma once
#include "kernels/kernels.h"

namespace pixkit::kernels {

void useSse2(Table& table) noexcept;
void useAvx2(Table& table) noexcept;
void useAvx512(Table& table) noexcept;

void useNeon(Table& table) noexcept;
void useNeonCrc(Table& table) noexcept;

} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
