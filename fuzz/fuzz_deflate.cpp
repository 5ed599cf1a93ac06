// The built-in DEFLATE encoder: what it writes is what zlib and the built-in decoder read.
//
// The first byte of the input is the level; the second says how the rest becomes data, so that short inputs make long
// data: it is repeated, each time with one byte changed.
#include "coding/deflate/Deflate.h"
#include "coding/deflate/Inflate.h"
#include <cstdlib>
#include <zlib.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t bytes) {
    if (bytes < 2) return 0;
    std::vector<std::uint8_t> data;
    const std::size_t period = bytes - 2;
    for (unsigned turn = 0; turn <= input[1] % 32U && period > 0; ++turn) {
        data.insert(data.end(), input + 2, input + bytes);
        data[data.size() - 1 - turn * 37U % period] ^= static_cast<std::uint8_t>(turn);
    }
    std::vector<std::uint8_t> stream;
    pixkit::deflate::compressZlib(data, input[0] % 10, stream);

    std::vector<std::uint8_t> back(data.size() + 1);
    auto written = static_cast<uLongf>(back.size());
    if (uncompress(back.data(), &written, stream.data(), static_cast<uLong>(stream.size())) != Z_OK) std::abort();
    back.resize(written);
    if (back != data) std::abort();
    back.assign(data.size(), 0);
    if (pixkit::deflate::inflateZlib(back.data(), back.size(), stream.data(), stream.size()).outcome !=
        pixkit::deflate::Outcome::complete)
        std::abort();
    if (back != data) std::abort();
    return 0;
}
