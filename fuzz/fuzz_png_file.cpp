// PNG from a file: what loads, loads from an array in the same way (not the reverse: an array may lack a byte at the
// end), and its bytes are kept as they are.
#include "png_input.h"
#include <string>
#include <sys/mman.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    static const int file = memfd_create("fuzz_png_file", 0);
    static const std::string name = "/proc/self/fd/" + std::to_string(file);
    const auto png = withoutCrcs(data, bytes);
    require(ftruncate(file, 0) == 0 && pwrite(file, png.data(), png.size(), 0) == static_cast<ssize_t>(png.size()));
    cPixSheet fromFile, fromArray;
    const bool loaded = fromFile.LoadPicture_File(name, 32, 32, true);
    require(loaded == (fromFile.Handle() != 0));
    ByteArray kept;
    if (!loaded) return 0;
    require(fromFile.GetOrginalFormat(kept) && std::ranges::equal(kept.bytes(), png) && load(fromArray, kept));
    requireSame(fromFile, fromArray);
    return 0;
}
