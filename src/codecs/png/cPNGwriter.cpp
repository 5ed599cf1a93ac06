// The container of a PNG file that is written: chunks in the order that the PNG standard asks for (5.6).
#include "codecs/png/cPNGwriter.h"
#include "codecs/png/PngChoice.h"
#include "codecs/png/PngChunks.h"
#include "codecs/png/PngForm.h"
#include "codecs/png/PngRows.h"
#include "coding/deflate/Deflate.h"
#include "coding/deflate/RunCompressor.h"
#include "shared/Colors.h"
#include <algorithm>
#include <span>

namespace pixkit {

namespace {

using Bytes = std::vector<std::uint8_t>;

void writeHeader(PngChunkWriter& out, ConstPixelView image, const PngForm& form, bool isInterlaced) {
    out.begin("IHDR");
    out.bigEndian32(image.width);
    out.bigEndian32(image.height);
    out.byte(form.bitDepth);
    out.byte(static_cast<std::uint8_t>(form.colorType));
    out.byte(0); // compression method
    out.byte(0); // filter method
    out.byte(isInterlaced ? 1 : 0);
    out.end();
}

// Rows are made and compressed while they are in the cache; copies are those of the pixel on the left.
void compressRuns(PngRowMaker rows, const PngForm& form, Bytes& out) {
    deflate::RunCompressor stream(out, form.filterStep());
    Bytes piece(std::max(rows.mostRowBytes(), deflate::RunCompressor::pieceBytes));
    for (std::size_t left = rows.allBytes(); left > 0;) {
        const std::size_t made = rows.make(piece);
        left -= made;
        stream.add(std::span(piece).first(made), left == 0);
    }
}

// Rows of some drawings and soft shadows take less when only pixels are repeated, because then the codes of their
// differences are worth more than the copies that a search finds.
void compress(const Bytes& rows, const PngForm& form, int level, Bytes& out) {
    const std::size_t before = out.size();
    deflate::compressZlib(rows, level, out);
    if (level < deflate::defaultLevel) return;
    const std::size_t size = out.size() - before;
    // Noise, which nothing makes smaller, is not worth another try.
    if (deflate::runCompressedSize(rows, form.filterStep()) + size / 1024 >= size) return;
    // In the place of the first stream, and not beside it: one is held at a time.
    out.resize(before);
    deflate::RunCompressor(out, form.filterStep()).add(rows, true);
    if (out.size() - before < size) return;
    out.resize(before);
    deflate::compressZlib(rows, level, out);
}

Bytes makeFile(ConstPixelView image, bool hasAlpha, const PngForm& form, eFilterMethods filter, std::size_t expected,
               const PngProperties& props) {
    Bytes file;
    file.reserve(expected);
    PngChunkWriter out(file);
    writeHeader(out, image, form, props.isInterlaced());
    pngWriteDensity(out, props);
    pngWritePalette(out, form);
    pngWriteTransparency(out, form);
    pngWriteBackground(out, form, props);
    pngWriteTime(out, props);
    pngWriteTexts(out, props);
    out.begin("IDAT");
    if (props.compressionLevel() == deflate::fastestLevel) {
        compressRuns(PngRowMaker(image, hasAlpha, form, filter, props.isInterlaced()), form, file);
    } else {
        compress(pngFilteredRows(image, hasAlpha, form, filter, props.isInterlaced()), form, props.compressionLevel(),
                 file);
    }
    out.end();
    out.begin("IEND");
    out.end();
    return file;
}

Bytes smallestFile(ConstPixelView image, bool hasAlpha, const std::vector<PngForm>& forms, const PngProperties& props) {
    Bytes best;
    for (const PngChoice& choice : pngChoices(image, hasAlpha, forms, props)) {
        Bytes file = makeFile(image, hasAlpha, forms[choice.form], choice.filter, choice.expected, props);
        if (best.empty() || file.size() < best.size()) best = std::move(file);
    }
    return best;
}

std::vector<PngForm> formsOf(ConstPixelView image, bool hasAlpha, const PngProperties& props) {
    std::optional<std::array<std::uint8_t, 3>> background;
    if (const auto color = props.backgroundColor()) {
        const ColorChannels channels = iparseColorChannels(*color);
        background = {channels.r, channels.g, channels.b};
    }
    return pngFormsOf(image, hasAlpha, background);
}

} // namespace

std::vector<std::uint8_t> cPNGwriter::TrueColorAlpha(ConstPixelView image) {
    return smallestFile(image, true, {{PngColorType::rgba, 8, {}, {}, {}}}, PngProperties());
}

WrittenFile cPNGwriter::SavePNGex(const SourcePicture& Picture, const PngProperties& props) {
    if (!Picture.pixels) return refused(noImage);
    const bool hasAlpha = Picture.alpha != AlphaNone;
    return FileParts(smallestFile(Picture.pixels, hasAlpha, formsOf(Picture.pixels, hasAlpha, props), props));
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
