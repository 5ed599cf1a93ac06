// What the processor can do, as far as kernels ask for it.
#pragma once
#include <cstdint>

namespace pixkit::kernels {

// Instruction sets that kernels exist for, as bits of a set.
using CpuFeatures = std::uint32_t;
constexpr CpuFeatures cpuSse2 = 1;
constexpr CpuFeatures cpuAvx2 = 2;
constexpr CpuFeatures cpuAvx512 = 4;   // F, BW, DQ, VL, VBMI and VNNI: what Ice Lake and Zen 4 began with
constexpr CpuFeatures cpuNeon = 8;     // which all 64-bit ARM processors have
constexpr CpuFeatures cpuNeonCrc = 16; // instructions for the CRC of PNG

// What the processor has and the operating system lets programs use, whatever the environment says.
CpuFeatures detectedFeatures() noexcept;

// The same, lowered by the environment variable PIXKIT_CPU, which names one of these levels, those of the kind of
// processor. Any other value is ignored. Asked once.
struct CpuLevel {
    const char* name;
    CpuFeatures features;
    bool isHere() const noexcept { return (features & ~detectedFeatures()) == 0; }
};
constexpr CpuLevel cpuLevels[] = {
    {"scalar", 0},
#ifdef __aarch64__
    {"neon", cpuNeon},
    {"neoncrc", cpuNeon | cpuNeonCrc},
#else
    {"sse2", cpuSse2},
    {"avx2", cpuSse2 | cpuAvx2},
    {"avx512", cpuSse2 | cpuAvx2 | cpuAvx512},
#endif
};

CpuFeatures features() noexcept;

} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
