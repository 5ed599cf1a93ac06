// Inflating the image data of PNG files: the built-in inflater, zlib's uncompress, libdeflate, igzip.
#include "coding/deflate/Inflate.h"
#include "pictures.h"
#include "program.h"
#include <algorithm>
#include <cstring>
#include <isa-l/igzip_lib.h>
#include <libdeflate.h>
#include <stdexcept>
#include <zlib.h>

namespace {

using bench::Bytes;

struct Stream {
    Bytes data;                // a zlib stream
    std::size_t inflatedBytes; // exactly
};

// All IDAT data of a PNG file in one piece.
Bytes imageData(const Bytes& file) {
    Bytes data;
    for (std::size_t at = 8; at + 12 <= file.size();) {
        const std::size_t bytes = std::size_t{file[at]} << 24 | std::size_t{file[at + 1]} << 16 |
                                  std::size_t{file[at + 2]} << 8 | file[at + 3];
        const std::uint8_t* const chunk = file.data() + at + 8;
        if (std::memcmp(chunk - 4, "IDAT", 4) == 0) data.insert(data.end(), chunk, chunk + bytes);
        at += 12 + bytes;
    }
    return data;
}

Stream measured(Bytes data) {
    Bytes output(data.size() * 4 + 4096);
    uLongf bytes = output.size();
    while (uncompress(output.data(), &bytes, data.data(), data.size()) == Z_BUF_ERROR) {
        output.resize(output.size() * 2);
        bytes = output.size();
    }
    return {std::move(data), bytes};
}

// Without pictures: noise around zero, as filtered photographs have it.
Bytes synthesised() {
    Bytes plain(8'000'000);
    std::uint32_t state = 1;
    for (auto& byte : plain) {
        int sum = 0;
        for (int i = 0; i < 4; ++i)
            sum += static_cast<int>((state = state * 1664525 + 1013904223) >> 28) - 8;
        byte = static_cast<std::uint8_t>(sum / 2);
    }
    uLongf bytes = compressBound(plain.size());
    Bytes data(bytes);
    compress(data.data(), &bytes, plain.data(), plain.size());
    data.resize(bytes);
    return data;
}

void withPixkit(const Stream& stream, Bytes& output) {
    using namespace pixkit::deflate;
    const Result result = inflateZlib(output.data(), stream.inflatedBytes, stream.data.data(), stream.data.size());
    if (result.outcome != Outcome::complete) throw std::runtime_error("pixkit did not inflate");
}

void withZlib(const Stream& stream, Bytes& output) {
    uLongf bytes = stream.inflatedBytes;
    if (uncompress(output.data(), &bytes, stream.data.data(), stream.data.size()) != Z_OK)
        throw std::runtime_error("zlib did not inflate");
}

// These peers inflate what is behind the zlib header alone: the built-in inflater does not look at the Adler-32 either.
void withLibdeflate(const Stream& stream, Bytes& output) {
    static libdeflate_decompressor* const decompressor = libdeflate_alloc_decompressor();
    if (libdeflate_deflate_decompress(decompressor, stream.data.data() + 2, stream.data.size() - 2, output.data(),
                                      stream.inflatedBytes, nullptr) != LIBDEFLATE_SUCCESS)
        throw std::runtime_error("libdeflate did not inflate");
}

void withIgzip(const Stream& stream, Bytes& output) {
    static inflate_state state;
    isal_inflate_init(&state);
    state.crc_flag = ISAL_DEFLATE;
    state.next_in = const_cast<std::uint8_t*>(stream.data.data()) + 2;
    state.avail_in = static_cast<std::uint32_t>(stream.data.size() - 2);
    state.next_out = output.data();
    state.avail_out = static_cast<std::uint32_t>(stream.inflatedBytes);
    if (isal_inflate_stateless(&state) != ISAL_DECOMP_OK) throw std::runtime_error("igzip did not inflate");
}

void addBenchmark(const std::string& name, const std::vector<Stream>& streams, const char* who,
                  void (*inflate)(const Stream&, Bytes&)) {
    bench::add("inflate/" + name + "/" + who, [&streams, inflate](benchmark::State& state) {
        std::size_t sum = 0, largest = 0;
        for (const Stream& stream : streams) {
            sum += stream.inflatedBytes;
            largest = std::max(largest, stream.inflatedBytes);
        }
        Bytes output(largest);
        for (auto _ : state) {
            for (const Stream& stream : streams)
                inflate(stream, output);
            benchmark::ClobberMemory();
        }
        state.SetBytesProcessed(static_cast<std::int64_t>(sum) * state.iterations());
    });
}

} // namespace

int main(int argc, char** argv) {
    static std::vector<std::pair<std::string, std::vector<Stream>>> cases;
    for (const bench::Group& group : bench::pngGroups()) {
        auto& streams = cases.emplace_back(group.name, std::vector<Stream>{}).second;
        for (const Bytes& file : group.files)
            streams.push_back(measured(imageData(file)));
    }
    if (cases.empty()) {
        std::cerr << "no pictures in PIXKIT_CORPUS: synthesised noise instead\n";
        cases.emplace_back("noise", std::vector<Stream>{}).second.push_back(measured(synthesised()));
    }
    for (const auto& [name, streams] : cases) {
        addBenchmark(name, streams, "pixkit", withPixkit);
        addBenchmark(name, streams, "zlib", withZlib);
        addBenchmark(name, streams, "libdeflate", withLibdeflate);
        addBenchmark(name, streams, "igzip", withIgzip);
    }
    return bench::run(argc, argv);
}
// SPDX-License-Identifier: MIT
