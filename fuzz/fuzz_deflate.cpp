// The built-in DEFLATE encoder: what it writes is what zlib and the built-in decoder read.
#include "coding/deflate/Deflate.h"
#include "coding/deflate/Inflate.h"
#include "targets.h"
#include <zlib.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    Input input(data, bytes); // repeated, so that short inputs make long data
    const int level = input.byte() % 10;
    std::vector<std::uint8_t> plain((input.byte() % 32U + 1) * bytes), stream;
    std::ranges::generate(plain, [&] { return input.byte(); });
    deflate::compressZlib(plain, level, stream);
    std::vector<std::uint8_t> back(plain.size() + 1);
    auto written = static_cast<uLongf>(back.size());
    require(uncompress(back.data(), &written, stream.data(), static_cast<uLong>(stream.size())) == Z_OK);
    back.resize(written);
    require(back == plain);
    back.assign(plain.size(), 0);
    const auto result = deflate::inflateZlib(back.data(), back.size(), stream.data(), stream.size());
    require(result.outcome == deflate::Outcome::complete && back == plain);
    return 0;
}
