#include "kernels/variants.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace pixkit::kernels {

namespace {

// What the environment allows; an unknown word allows everything.
CpuLevel allowedLevel() noexcept {
    const char* const wanted = std::getenv("PIXKIT_CPU");
    if (wanted != nullptr && std::strcmp(wanted, "scalar") == 0) return CpuLevel::scalar;
    if (wanted != nullptr && std::strcmp(wanted, "sse2") == 0) return CpuLevel::sse2;
    return CpuLevel::avx2;
}

} // namespace

CpuLevel detectedLevel() noexcept {
#ifdef PIXKIT_X86
    // The compiler's answer for AVX2 includes whether the operating system saves the wide registers.
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx2")) return CpuLevel::avx2;
    if (__builtin_cpu_supports("sse2")) return CpuLevel::sse2;
#endif
    return CpuLevel::scalar;
}

CpuLevel level() noexcept {
    static const CpuLevel chosen = std::min(detectedLevel(), allowedLevel());
    return chosen;
}

} // namespace pixkit::kernels
