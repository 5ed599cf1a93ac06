#include "kernels/cpu.h"

#include <cstdlib>
#include <cstring>
#if defined(PIXKIT_ARM64) && defined(__linux__)
#include <sys/auxv.h>
#endif

namespace pixkit::kernels {

namespace {

// What the environment allows; an unknown word allows everything.
CpuFeatures allowedFeatures() noexcept {
    const char* const wanted = std::getenv("PIXKIT_CPU");
    for (const CpuLevel& level : cpuLevels)
        if (wanted != nullptr && std::strcmp(wanted, level.name) == 0) return level.features;
    return ~CpuFeatures{0};
}

} // namespace

CpuFeatures detectedFeatures() noexcept {
    CpuFeatures found = 0;
#ifdef PIXKIT_X86
    // The compiler's answers include whether the operating system saves the wide registers and the masks (XGETBV).
    __builtin_cpu_init();
    if (__builtin_cpu_supports("sse2")) found |= cpuSse2;
    // Processors that have it have BMI2, too, and multiply without carries; virtual ones may not say so.
    if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("pclmul"))
        found |= cpuAvx2;
    // Processors before these sets were together lower their clock for vectors of 64 bytes, and gain little by them.
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512vbmi") &&
        __builtin_cpu_supports("avx512vnni"))
        found |= cpuAvx512;
#endif
#ifdef PIXKIT_ARM64
    found |= cpuNeon;
#if defined(__ARM_FEATURE_CRC32)
    found |= cpuNeonCrc;
#elif defined(__linux__)
    if ((getauxval(AT_HWCAP) & HWCAP_CRC32) != 0) found |= cpuNeonCrc;
#endif
#endif
    return found;
}

CpuFeatures features() noexcept {
    static const CpuFeatures chosen = detectedFeatures() & allowedFeatures();
    return chosen;
}

} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
