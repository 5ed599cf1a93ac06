#include "kernels/cpu.h"
#include "kernels/reference.h"
#include "kernels/simd/units.h"

namespace pixkit::kernels {

namespace {

struct Unit {
    CpuFeatures needs;
    void (*use)(Table& table) noexcept;
};

// A later unit takes precedence over an earlier one; an entry that it has no kernel for keeps the earlier one.
#ifdef PIXKIT_X86
constexpr Unit units[] = {{cpuSse2, useSse2}, {cpuSse2 | cpuAvx2, useAvx2}, {cpuSse2 | cpuAvx2 | cpuAvx512, useAvx512}};
#elif defined(PIXKIT_ARM64)
constexpr Unit units[] = {{cpuNeon, useNeon}, {cpuNeonCrc, useNeonCrc}};
#else
constexpr Unit units[] = {{0, [](Table&) noexcept {}}};
#endif

} // namespace

Table tableFor(CpuFeatures features) noexcept {
    Table table = reference;
    for (const Unit& unit : units)
        if ((unit.needs & ~features) == 0) unit.use(table);
    return table;
}

const Table& table() noexcept {
    static const Table chosen = tableFor(features());
    return chosen;
}

} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
