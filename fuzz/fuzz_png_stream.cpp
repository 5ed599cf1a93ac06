// PNG from an array: the same picture, or none, with zlib and without it.
#include "platform/faults.h"
#include "png_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    const ByteArray png(withoutCrcs(data, bytes));
    cPixSheet withZlib, alone;
    const bool loaded = load(withZlib, png);
    const platform::ScopedFault noZlib(platform::SeamCall::loadLibrary);
    require(load(alone, png) == loaded);
    requireSame(withZlib, alone);
    return 0;
}
