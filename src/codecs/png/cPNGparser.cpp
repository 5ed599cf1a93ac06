// Container: signature, chunks, the compressed image data and its decompression.
#include "codecs/png/cPNGparser.h"
#include "codecs/GdiplusPictures.h"
#include "codecs/StatedSize.h"
#include "codecs/SystemLimits.h"
#include "codecs/png/PngChunkType.h"
#include "codecs/png/PngHeader.h"
#include "coding/ByteReader.h"
#include "coding/Crc32.h"
#include "diagnostics/guard.h"
#include "shared/cCDECL.h"
#include "shared/checked.h"
#include "surface/HostAccess.h"
#include <algorithm>
#include <charconv>

namespace pixkit {

namespace {

constexpr std::array<std::uint8_t, 8> signature = {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};

constexpr auto& chunkType = pngChunkType;

} // namespace

// --- entry points

ReadResult cPNGparser::LoadFile(const PictureSource& File, cPixSheet& dibClass) {
    return loadInto(dibClass, [&] {
        OwnBytes file = File.ownBytes();
        m_ownBytes = std::move(file.data);
        return LoadPNG({m_ownBytes.get(), file.size}, RunningEnd::ofFile);
    });
}

ReadResult cPNGparser::LoadStream(std::span<const std::uint8_t> Stream, cPixSheet& dibClass) {
    return loadInto(dibClass, [&] { return LoadPNG(Stream, RunningEnd::ofStream); });
}

template <class Body>
ReadResult cPNGparser::loadInto(cPixSheet& host, Body&& load) {
    cHost = &host;
    try {
        return load();
    } catch (const std::bad_alloc&) { // a small file may state a large picture: nothing that has to be told
        return ReadResult::unable(noMemory);
    } catch (const std::exception& error) {
        reportError(Call(*this, "cPNGparser", "pngStream", m_pngStream), error.what());
        return ReadResult::failed(error);
    }
}

void describeInstance(const cPNGparser& parser, ErrorReport& report) {
    const auto add = [&](const char* name, const auto& value) { report.variables.push_back({name, inWords(value)}); };
    add("m_Width", parser.m_Width);
    add("m_Height", parser.m_Height);
    add("m_BitDepth", parser.m_BitDepth);
    add("m_ColorType", parser.m_ColorType);
    add("m_Interlacing", parser.m_Interlacing);
    add("m_lenIDAT", parser.m_lenIDAT);
    describeInstance(*parser.cHost, report);
}

bool cPNGparser::IsPNG(std::span<const std::uint8_t> bytes) noexcept {
    return bytes.size() >= signature.size() && std::equal(signature.begin(), signature.end(), bytes.begin());
}

ReadResult cPNGparser::LoadPNG(std::span<const std::uint8_t> pngStream, RunningEnd base) {
    if (!IsPNG(pngStream)) return ReadResult::otherFormat("PNG: no signature");
    m_TransColor = -1;
    m_pngStream = pngStream;
    if (loadByGDIplus(base)) return ReadResult::loaded();
    return walkChunks(base) && PostLoadPNG() ? ReadResult::loaded() : ReadResult{m_outcome, refused(m_reason)};
}

// Follows chunk upon chunk within the data up to IEND.
cPNGparser::Walk cPNGparser::walkOver(std::span<const std::uint8_t> stream) noexcept {
    const ByteReader reader(stream);
    std::size_t position = std::min(signature.size(), stream.size());
    while (stream.size() - position >= pngChunkOverhead) {
        const std::uint32_t ChunkLen = reader.bigEndian32(position).value_or(0);
        if (ChunkLen > stream.size() - position - pngChunkOverhead) break;
        const bool isLast = reader.bigEndian32(position + 4) == chunkType("IEND");
        position += std::size_t{ChunkLen} + pngChunkOverhead;
        if (isLast) return {position, true};
    }
    return {position, false};
}

double cPNGparser::memory(std::span<const std::uint8_t> Stream) {
    const auto header = ByteReader(Stream).slice(signature.size() + 4, 17);
    cPNGparser parser;
    if (!header || parser.zChunk_IHDR({chunkType("IHDR"), 0, *header}) == ChunkResult::error) return 0;
    return static_cast<double>(parser.windowBytes());
}

// GDI+ comes first, where its picture is within the limits. Of its picture, Alpha is what this reader would say by the
// chunks.
bool cPNGparser::loadByGDIplus(RunningEnd base) {
    if (!cHost->isGDIplusEnabled() || !walkOver(m_pngStream).isWhole)
        return false; // lengths that lie lead some decoders round for ever
    const StatedSize size = statedSize(m_pngStream);
    if (size.width == 0 && HostAccess::limits(*cHost).areSet()) return false; // the header is not where it belongs
    if (systemLimit(*cHost, size.width, size.height) || !DecodeByGDIplus(m_pngStream, *cHost, false)) return false;
    if (walkChunks(base, ChunksRead::butIDAT))
        setAlpha();  // else GDI+ shows what is refused here, and its pixels have to say it
    setNotes(false); // where GDI+ has no data for rows it does not say so
    return true;
}

// Always false.
bool cPNGparser::refuse(Reason reason) noexcept {
    m_reason = reason;
    return false;
}

// Always an error.
cPNGparser::ChunkResult cPNGparser::refuseChunk(Reason reason) noexcept {
    m_reason = reason;
    return ChunkResult::error;
}

// --- chunks

// Returns false when the walk met an error. Chunk order is not enforced: a handler runs whenever its chunk is met, a
// second IHDR overwrites the first, and IDAT chunks need not be adjacent.
bool cPNGparser::walkChunks(RunningEnd base, ChunksRead chunks) {
    const ByteReader reader(m_pngStream);
    const bool bCRCchecks = zValidateZLIBversion(); // without zlib no CRC is ever checked
    std::size_t position = signature.size();
    std::uint64_t runningEnd = static_cast<std::uint64_t>(base);
    while (true) {
        const auto ChunkLen = reader.bigEndian32(position);
        if (!ChunkLen) return refuse("IEND is missing");
        runningEnd += std::uint64_t{*ChunkLen} + pngChunkOverhead;
        if (runningEnd > m_pngStream.size()) return refuse("PNG: a chunk reaches beyond the data");
        const auto typeAndData = reader.slice(position + 4, std::size_t{*ChunkLen} + 4);
        if (!typeAndData) return refuse("PNG: a chunk reaches beyond the data");

        Chunk chunk{ByteReader(*typeAndData).bigEndian32(0).value_or(0), 0, *typeAndData};
        // A CRC that the end of a stream cuts short is not there: 0, which is never checked.
        if (bCRCchecks) chunk.storedCrc = reader.bigEndian32(position + pngChunkHead + *ChunkLen).value_or(0);
        if (chunk.type == chunkType("IEND")) return true;
        m_notes.take(chunk.type, *typeAndData, reader.bigEndian32(position + pngChunkHead + *ChunkLen).value_or(0));
        const bool isRead = *ChunkLen != 0 && (chunks == ChunksRead::all || chunk.type != chunkType("IDAT"));
        if (isRead && zHandleChunk(chunk) == ChunkResult::error) return false;
        if (chunk.type == chunkType("IHDR") && chunks == ChunksRead::all && !isWithinLimits()) return false;
        position += std::size_t{*ChunkLen} + pngChunkOverhead;
    }
}

// Whether the host may hold what the header says, and have what it takes.
bool cPNGparser::isWithinLimits() noexcept {
    const Reason limit = HostAccess::limits(*cHost).problem(m_Width, m_Height, static_cast<double>(windowBytes()));
    if (!limit) return true;
    m_outcome = ReadOutcome::forbidden;
    return refuse(limit);
}

cPNGparser::ChunkResult cPNGparser::zHandleChunk(const Chunk& chunk) {
    switch (chunk.type) {
    case chunkType("IHDR"):
        return zChunk_IHDR(chunk);
    case chunkType("PLTE"):
        return zChunk_PLTE(chunk);
    case chunkType("tRNS"):
        // Can never stop the load, unlike the others: a picture without its transparency still shows.
        zChunk_tRNS(chunk);
        return ChunkResult::ok;
    case chunkType("IDAT"):
        return zChunk_IDAT(chunk);
    default:
        return ChunkResult::ok; // unread, its CRC unchecked
    }
}

cPNGparser::ChunkResult cPNGparser::zChunk_IHDR(const Chunk& chunk) {
    const auto data = chunk.data();
    if (!zCheckCRCvalue(chunk)) return refuseChunk("IHDR: the CRC does not match");
    const auto header = readPngHeader(data);
    if (!header) return refuseChunk("IHDR is too short");
    m_Width = static_cast<std::int32_t>(header->width);
    m_Height = static_cast<std::int32_t>(header->height);
    m_BitDepth = header->bitDepth;
    m_ColorType = header->colorType;
    m_Interlacing = header->interlacing;
    if (m_Width < 1 || m_Height < 1 || header->compressionMethod != 0 || header->filterMethod != 0 ||
        m_Interlacing > 1) {
        return refuseChunk("IHDR: no valid size or method");
    }
    // Whether bit depth and colour type suit each other is only looked at when there is something to decode.
    constexpr std::array<std::uint8_t, 5> bitDepths = {1, 2, 4, 8, 16};
    constexpr std::array<std::uint8_t, 5> colorTypes = {0, 2, 3, 4, 6};
    if (std::ranges::count(bitDepths, m_BitDepth) == 0 || std::ranges::count(colorTypes, m_ColorType) == 0) {
        return refuseChunk("IHDR: no valid depth or colour type");
    }
    // The bits of the store, width * 32 * height, must be countable in 31 bits: at most 67,108,863 pixels.
    const auto rowBits = checkedMultiply(m_Width, 32);
    if (!rowBits || !checkedMultiply(*rowBits, m_Height))
        return refuseChunk("IHDR: more pixels than an image can hold");
    return ChunkResult::ok;
}

cPNGparser::ChunkResult cPNGparser::zChunk_PLTE(const Chunk& chunk) {
    // Unread, its CRC too, where a palette means nothing, which includes one that comes before any IHDR.
    if (m_ColorType == 0 || m_ColorType == 4) return ChunkResult::ok;
    const auto data = chunk.data();
    if (!zCheckCRCvalue(chunk)) return refuseChunk("PLTE: the CRC does not match");
    if (data.size() % 3 != 0) return refuseChunk("PLTE: not a whole number of entries");
    // The number of entries is not held against the bit depth; those that no index reaches are left out.
    m_PaletteSize = std::min(data.size(), m_Palette.size());
    std::copy_n(data.begin(), m_PaletteSize, m_Palette.begin());
    return ChunkResult::ok;
}

void cPNGparser::zChunk_tRNS(const Chunk& chunk) {
    if (m_ColorType == 4 || m_ColorType == 6 || !zCheckCRCvalue(chunk)) return;
    const auto data = chunk.data();
    m_TransSize = std::min(data.size(), m_TransSimple.size());
    std::copy_n(data.begin(), m_TransSize, m_TransSimple.begin());
    m_TransColor = -1;
    // Of each 16-bit sample only the low byte is kept.
    if (m_ColorType == 0 && data.size() >= 2) {
        const int sampleMask = m_BitDepth == 16 ? 0xFF : (1 << m_BitDepth) - 1;
        m_TransColor = data[1] & sampleMask;
    } else if (m_ColorType == 2 && data.size() >= 6) {
        m_TransColor = data[1] << 16 | data[3] << 8 | data[5];
    } else if (m_ColorType == 3) {
        std::fill(m_TransSimple.begin() + static_cast<std::ptrdiff_t>(m_TransSize), m_TransSimple.end(),
                  std::uint8_t{255}); // entries not given are opaque
        m_TransSize = m_TransSimple.size();
        m_TransColor = 0; // marks that there is transparency
    }
}

cPNGparser::ChunkResult cPNGparser::zChunk_IDAT(const Chunk& chunk) {
    if (!zCheckCRCvalue(chunk)) return refuseChunk("IDAT: the CRC does not match");
    const auto chunkAt = static_cast<std::size_t>(chunk.typeAndData.data() - m_pngStream.data()) - 4;
    if (m_lenIDAT == 0) m_firstIDAT = chunkAt;
    m_lenIDAT += chunk.data().size();
    return ChunkResult::ok;
}

// --- zlib

namespace {

// Whether a version is "1.2" or later.
bool isVersionEnough(std::string_view version) noexcept {
    int numbers[2] = {};
    const char* at = version.data();
    const char* const end = at + version.size();
    for (int& number : numbers) {
        const auto read = std::from_chars(at, end, number);
        if (read.ec != std::errc()) return false;
        at = read.ptr == end ? end : read.ptr + 1; // over the point
    }
    return numbers[0] > 1 || (numbers[0] == 1 && numbers[1] >= 2);
}

// Libraries under the same names were built with another convention too, in which functions take their arguments off
// the stack, and count as absent, as old versions do, whose convention nobody can tell. What takes no arguments is the
// same in both, and may be asked.
bool hasCConvention(const cCDECL& library) noexcept {
    auto* const zlibVersion = library.function<const char*()>("zlibVersion");
    const char* const version = zlibVersion != nullptr ? zlibVersion() : nullptr;
    if (version == nullptr || !isVersionEnough(version)) return false;
    constexpr unsigned long otherConvention = 1UL << 10; // ZLIB_WINAPI
    auto* const zlibCompileFlags = library.function<unsigned long()>("zlibCompileFlags");
    return zlibCompileFlags == nullptr || (zlibCompileFlags() & otherConvention) == 0;
}

} // namespace

// Whether CRCs are checked: where zlib is, as callers know it. What it would compute, own code computes as fast, and
// several times as fast where the processor multiplies without carries, so that nothing else is asked of it.
bool cPNGparser::zValidateZLIBversion() {
    using Function = void();
    for (const char* zLIBname : {"zlib1.dll", "zlib.dll"}) {
        const cCDECL cCfunction(zLIBname);
        if (cCfunction.function<Function>("uncompress") == nullptr || !hasCConvention(cCfunction)) continue;
        m_hasCrc32 = cCfunction.function<Function>("crc32") != nullptr;
        return true;
    }
    return false;
}

// Whether a chunk's CRC may stand. A stored CRC of 0 is never checked, as files in circulation rely on; so a computed
// one of 0 is always a mismatch.
bool cPNGparser::zCheckCRCvalue(const Chunk& chunk) {
    if (chunk.storedCrc == 0) return true;
    if (!m_hasCrc32) {
        m_outcome = ReadOutcome::unable; // not the data's fault
        return false;
    }
    return crc32(0, chunk.typeAndData) == chunk.storedCrc;
}

// --- what is said of the picture

void cPNGparser::setNotes(bool endsEarly) noexcept {
    PictureNotes& notes = HostAccess::notes(*cHost);
    notes = m_notes.notes();
    notes.endsEarly = endsEarly;
    notes.has16Bits = m_BitDepth == 16;
    HostAccess::loadedProperties(*cHost, m_notes.properties());
}

AlphaTypeEnum cPNGparser::alphaOfChunks() const noexcept {
    const bool hasAlphaChannel = m_ColorType == 4 || m_ColorType == 6;
    // Palette images with partial alpha are classed as simple too: what draws them does not look closer.
    const AlphaTypeEnum keyed = m_TransColor == -1 ? AlphaNone : AlphaSimple;
    return hasAlphaChannel ? AlphaComplex : keyed;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
