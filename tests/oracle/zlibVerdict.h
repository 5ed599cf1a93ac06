// What zlib makes of a stream, in the terms of the built-in inflater. Shared by the oracle test and the fuzz target.
#pragma once
#include "coding/deflate/Inflate.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>
#include <zlib.h>

struct ZlibVerdict {
    pixkit::deflate::Outcome outcome;
    std::vector<std::uint8_t> output;
};

// Runs zlib's inflate over a raw DEFLATE stream until it makes no progress. Behind an output that is full zlib goes on
// as far as it can; only the end of the stream counts there, as it does for the built-in inflater.
inline ZlibVerdict zlibInflateRaw(std::size_t capacity, const std::uint8_t* input, std::size_t bytes) {
    using pixkit::deflate::Outcome;
    ZlibVerdict verdict{Outcome::damaged, std::vector<std::uint8_t>(capacity + 1)};
    z_stream stream{};
    inflateInit2(&stream, -MAX_WBITS);
    stream.next_in = const_cast<Bytef*>(input);
    stream.avail_in = static_cast<uInt>(bytes);
    stream.next_out = verdict.output.data();
    stream.avail_out = static_cast<uInt>(capacity);
    int status = Z_OK;
    while (status == Z_OK)
        status = ::inflate(&stream, Z_NO_FLUSH);
    verdict.output.resize(stream.total_out);
    inflateEnd(&stream);

    if (status == Z_STREAM_END)
        verdict.outcome = Outcome::complete;
    else if (verdict.output.size() == capacity)
        verdict.outcome = Outcome::outputFull;
    else if (status == Z_BUF_ERROR)
        verdict.outcome = Outcome::inputEnded;
    return verdict;
}

// The same with the zlib header, the Adler-32 left aside.
inline ZlibVerdict zlibInflate(std::size_t capacity, const std::uint8_t* input, std::size_t bytes) {
    using pixkit::deflate::Outcome;
    if (bytes < 2) return {Outcome::inputEnded, {}};
    z_stream stream{};
    inflateInit(&stream);
    stream.next_in = const_cast<Bytef*>(input);
    stream.avail_in = 2;
    Bytef none; // zlib refuses to begin without an output
    stream.next_out = &none;
    const int status = ::inflate(&stream, Z_NO_FLUSH);
    // A stream that asks for a preset dictionary stops at the header, where its DICTID would have to follow.
    const bool wantsDictionary = (input[1] & 0x20) != 0;
    inflateEnd(&stream);
    if (status == Z_DATA_ERROR || wantsDictionary) return {Outcome::damaged, {}};
    return zlibInflateRaw(capacity, input + 2, bytes - 2);
}

inline bool agreesWithZlib(const pixkit::deflate::Result& result, const std::uint8_t* output, std::size_t capacity,
                           const std::uint8_t* input, std::size_t bytes) {
    const ZlibVerdict expected = zlibInflate(capacity, input, bytes);
    const bool same = result.outcome == expected.outcome && result.written == expected.output.size() &&
                      std::equal(expected.output.begin(), expected.output.end(), output);
    // Whatever `uncompress`, the entry that readers of pictures use, takes, must be complete.
    std::vector<std::uint8_t> whole(capacity + 1);
    uLongf size = static_cast<uLongf>(capacity);
    const bool accepted = uncompress(whole.data(), &size, input, static_cast<uLong>(bytes)) == Z_OK;
    return same && (!accepted || (result.outcome == pixkit::deflate::Outcome::complete && size == result.written));
}
// SPDX-License-Identifier: MIT
