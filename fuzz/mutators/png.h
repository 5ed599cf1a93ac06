// PNG: chunks with right CRCs, and rows that are inflated, changed and compressed anew.
#pragma once
#include "Dice.h"
#include "coding/Crc32.h"
#include "coding/Interlace.h"
#include "coding/deflate/Deflate.h"
#include "coding/deflate/Inflate.h"
#include <string>

namespace pixkit::fuzz {

struct PngChunk {
    std::string type;
    Bytes data;
    bool isRows() const { return type == "IDAT"; }
};

inline std::vector<PngChunk> pngChunks(std::span<const std::uint8_t> file) {
    std::vector<PngChunk> chunks;
    const ByteReader reader(file);
    for (std::size_t at = 8; const auto length = reader.bigEndian32(at); at += *length + std::size_t{12}) {
        const auto type = reader.slice(at + 4, 4), data = reader.slice(at + 8, *length);
        if (!type || !data) break;
        chunks.push_back({{type->begin(), type->end()}, {data->begin(), data->end()}});
    }
    return chunks;
}

// With CRCs that are made of the right ones.
inline Bytes pngFile(const std::vector<PngChunk>& chunks, const auto& crcOf) {
    Bytes file;
    ByteWriter out(file);
    out.text("\x89PNG\r\n\x1A\n");
    for (const PngChunk& chunk : chunks) {
        const std::size_t start = file.size();
        out.bigEndian32(chunk.data.size());
        out.text(chunk.type);
        out.bytes(chunk.data);
        out.bigEndian32(crcOf(crc32(0, std::span(file).subspan(start + 4))));
    }
    return file;
}

// Size, depth, colour type and interlacing, mostly such as there are.
inline Bytes newPngForm(Dice& dice) {
    constexpr std::uint8_t depths[] = {1, 2, 4, 8, 16}, types[] = {0, 2, 3, 4, 6};
    Bytes ihdr;
    ByteWriter out(ihdr);
    out.bigEndian32(dice.oneIn(20) ? dice.number() : dice.side());
    out.bigEndian32(dice.oneIn(20) ? dice.number() : dice.side());
    const std::uint8_t depth = dice.oneOf(depths), type = dice.oneOf(types);
    out.bytes({type % 4 == 0 || depth >= 8 ? depth : std::uint8_t{8}, type, 0, 0, dice.oneIn(2)});
    if (dice.oneIn(10)) ihdr[8 + dice.below(5)] = dice.byte();
    return ihdr;
}

// Where rows begin in inflated data, and where the last one ends, as far as they are not very many.
inline std::vector<std::size_t> pngRowStarts(const Bytes& ihdr) {
    constexpr unsigned channels[] = {1, 1, 3, 1, 2, 1, 4, 1};
    const ByteReader reader(ihdr);
    std::vector<std::size_t> starts = {0};
    for (const InterlacePass& pass : ihdr[12] != 0 ? std::span<const InterlacePass>(adam7) : wholePicture) {
        const std::uint64_t columns = pass.columns(*reader.bigEndian32(0));
        const std::uint64_t bits = columns * channels[ihdr[9] % 8] * ihdr[8];
        for (std::size_t row = pass.rows(*reader.bigEndian32(4)); row > 0 && bits > 0; --row) {
            if (starts.back() + bits / 8 > 1 << 15) return starts;
            starts.push_back(starts.back() + 1 + static_cast<std::size_t>((bits + 7) / 8));
        }
    }
    return starts;
}

// Inflates the rows, changes them or their filters, and compresses them: into one chunk, where the first was. With a
// new form they are new, too.
inline void changePngRows(std::vector<PngChunk>& chunks, Bytes& ihdr, bool isNew, Dice& dice) {
    const auto first = std::ranges::find_if(chunks, &PngChunk::isRows);
    if (first == chunks.end() || &first->data == &ihdr || ihdr.size() < 13) return;
    Bytes stream, rows(1 << 16);
    for (PngChunk& chunk : chunks)
        if (chunk.isRows()) append(stream, std::exchange(chunk.data, {}));
    rows.resize(deflate::inflateZlib(rows.data(), rows.size(), stream.data(), stream.size()).written);
    if (isNew) ihdr = newPngForm(dice);
    const std::vector<std::size_t> starts = pngRowStarts(ihdr);
    if (isNew) rows = dice.noise(starts.back() + 1);
    if (!isNew && dice.oneIn(2)) dice.change(rows);
    const std::uint8_t all = dice.byte() % 6, kind = dice.byte() % 3;
    for (const std::size_t start : starts)
        if (start < rows.size() && kind < 2) rows[start] = kind == 0 ? all : dice.byte() % 5;
    deflate::compressZlib(rows, static_cast<int>(dice.below(10)), first->data);
    if (dice.oneIn(10)) first->data.resize(dice.below(first->data.size()));
    std::erase_if(chunks, [](const PngChunk& chunk) { return chunk.isRows() && chunk.data.empty(); });
}

inline PngChunk newPngChunk(Dice& dice) {
    constexpr const char* types[] = {"PLTE", "tRNS", "tRNS", "PLTE", "IDAT", "IHDR", "IEND", "eXIf", "zTXt", "iTXt"};
    const std::size_t size = dice.below(dice.oneIn(4) ? 900 : 40);
    return {dice.oneOf(types), dice.noise(size)};
}

// A changed file, or a new one of what is none.
inline void mutatePng(Bytes& file, Dice& dice) {
    std::vector<PngChunk> chunks = pngChunks(file);
    const bool isNew = chunks.empty();
    if (isNew) chunks = {{"IHDR", Bytes(13)}, newPngChunk(dice), {"IDAT", {}}, {"IEND", {}}};
    PngChunk& any = dice.anyOf(chunks);
    const std::size_t what = isNew ? 9 : dice.below(9);
    if (what == 0) any.data = dice.noise(dice.below(800));
    if (what == 1) dice.change(any.data);
    if (what == 2) { // in two
        PngChunk rest{any.type, dice.cut(any.data)};
        chunks.insert(chunks.begin() + (&any - chunks.data()) + 1, std::move(rest));
    }
    if (what > 4) changePngRows(chunks, chunks[0].data, isNew || dice.oneIn(3), dice);
    if (what == 3) dice.shuffle(chunks);
    if (what == 4) chunks.insert(chunks.begin() + (&any - chunks.data()), newPngChunk(dice));
    file = pngFile(chunks, [&](std::uint32_t crc) { return dice.oneIn(50) ? dice.number() : crc; });
}

} // namespace pixkit::fuzz
// SPDX-License-Identifier: MIT
