// The built-in inflater against zlib: the same verdict, the same bytes. The first two bytes of the input give the
// capacity of the output, the rest is a zlib stream.
// And whatever the deflater makes of the input is by the inflater's and zlib's account a stream of just that.
#include "coding/deflate/Deflate.h"
#include "support/InflateInPieces.h"
#include "targets.h"
#include <memory>
#ifdef PIXKIT_FUZZ_PEERS
#include "oracle/zlibVerdict.h"
#endif

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    if (bytes < 2) return 0;
    const std::size_t capacity = data[0] + data[1] * 256u;
    // Exact sizes on the heap, so that the address sanitizer sees every byte too far.
    const auto stream = std::make_unique_for_overwrite<std::uint8_t[]>(bytes - 2);
    const auto output = std::make_unique_for_overwrite<std::uint8_t[]>(capacity);
    std::copy(data + 2, data + bytes, stream.get());
    const auto result = pixkit::deflate::inflateZlib(output.get(), capacity, stream.get(), bytes - 2);
#ifdef PIXKIT_FUZZ_PEERS
    require(agreesWithZlib(result, output.get(), capacity, stream.get(), bytes - 2));
#endif

    // The same in pieces of any length.
    pixkit::test::InPieces pieces({stream.get(), bytes - 2}, 1 + data[0] * data[1] % 2000u, capacity);
    const auto inPieces = pieces.run();
    require(inPieces.outcome == result.outcome && inPieces.written == result.written);
    require(std::equal(pieces.output.begin(), pieces.output.end(), output.get()));

    std::vector<std::uint8_t> packed, back(bytes);
    pixkit::deflate::compressZlib({data, bytes}, data[0] % 10, packed);
    const auto unpacked = pixkit::deflate::inflateZlib(back.data(), bytes, packed.data(), packed.size());
    require(unpacked.outcome == pixkit::deflate::Outcome::complete && unpacked.written == bytes);
    require(std::equal(back.begin(), back.end(), data));
#ifdef PIXKIT_FUZZ_PEERS
    require(agreesWithZlib(unpacked, back.data(), bytes, packed.data(), packed.size()));
#endif
    return 0;
}
// SPDX-License-Identifier: MIT
