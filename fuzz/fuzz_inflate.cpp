// The built-in inflater against zlib: the same verdict, the same number of bytes, the same bytes.
//
// The first two bytes of the input give the capacity of the output, the rest is a zlib stream.
#include "coding/deflate/Inflate.h"
#include "oracle/zlibVerdict.h"

#include <cstdlib>
#include <memory>

using namespace pixkit::deflate;

// Exact sizes on the heap, so that the address sanitizer sees every byte too far.
static std::unique_ptr<std::uint8_t[]> copyOf(const std::uint8_t* data, std::size_t bytes) {
    auto copy = std::make_unique_for_overwrite<std::uint8_t[]>(bytes);
    std::copy(data, data + bytes, copy.get());
    return copy;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    if (bytes < 2) return 0;
    const std::size_t capacity = data[0] + data[1] * 256u;
    const auto stream = copyOf(data + 2, bytes - 2);
    const auto output = std::make_unique_for_overwrite<std::uint8_t[]>(capacity);

    const Result result = inflateZlib(output.get(), capacity, stream.get(), bytes - 2);
    if (!agreesWithZlib(result, output.get(), capacity, stream.get(), bytes - 2)) std::abort();
    return 0;
}
