// PNG from a file: what loads, loads from an array in the same way (not the reverse: an array may lack a byte at the
// end), and its bytes are kept as they are.
#include "png_input.h"
#include <string>
#include <sys/mman.h>
#include <unistd.h>

using namespace pixkit;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    static const int file = memfd_create("fuzz_png_file", 0);
    static const std::string name = "/proc/self/fd/" + std::to_string(file);
    std::vector<std::uint8_t> png(data, data + bytes);
    if (withoutCrcs(png) > mostPixels) return 0;
    if (ftruncate(file, 0) != 0 || pwrite(file, png.data(), bytes, 0) != static_cast<ssize_t>(bytes)) std::abort();

    cPixSheet fromFile, fromArray;
    if (!fromFile.LoadPicture_File(name, 32, 32, true)) return fromFile.Handle() == 0 ? 0 : (std::abort(), 0);
    ByteArray kept;
    if (!fromFile.GetOrginalFormat(kept) || !std::ranges::equal(kept.bytes(), png)) std::abort();
    if (!fromArray.LoadPicture_Stream(kept) || !isSame(fromFile, fromArray)) std::abort();
    return 0;
}
