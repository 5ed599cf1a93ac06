// PNG from an array: the same picture, or none, with zlib and without it.
#include "platform/faults.h"
#include "png_input.h"

using namespace pixkit;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    if (!bearsSignature(data, bytes)) return 0;
    std::vector<std::uint8_t> png(data, data + bytes);
    if (withoutCrcs(png) > mostPixels) return 0;
    const ByteArray array(std::move(png));
    cPixSheet withZlib, alone;
    const bool loaded = withZlib.LoadPicture_Stream(array);
    const platform::ScopedFault noZlib(platform::SeamCall::loadLibrary);
    if (alone.LoadPicture_Stream(array) != loaded || !isSame(withZlib, alone)) std::abort();
    if (loaded != (withZlib.Handle() != 0)) std::abort();
    return 0;
}
