// Reads PNG data (the PNG standard, ISO/IEC 15948) into the pixels of a cPixSheet: of IHDR, PLTE, tRNS, IDAT and IEND.
// What other chunks say is noted (PngNotes.h), and changes no pixel. README.md in this folder lists what it is lenient
// about.
#pragma once
#include "codecs/Reading.h"
#include "codecs/png/PngNotes.h"
#include "coding/Interlace.h"
#include "surface/cPixSheet.h"
#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

namespace pixkit {

struct ErrorReport;  // diagnostics/ErrorReport.h
struct PictureFacts; // codecs/PictureFacts.h

// One parser serves one load.
class cPNGparser {
  public:
    // Reads a whole file into memory of its own.
    ReadResult LoadFile(const PictureSource& File, cPixSheet& dibClass);
    // The same for bytes in memory, which are read in place.
    ReadResult LoadStream(std::span<const std::uint8_t> Stream, cPixSheet& dibClass);

    // Whether the signature is there.
    static bool IsPNG(std::span<const std::uint8_t> bytes) noexcept;
    // How many of the bytes a PNG file takes: those up to the end of IEND, or of the last chunk that is whole.
    static std::size_t extent(std::span<const std::uint8_t> Stream) noexcept { return walkOver(Stream).end; }
    // What the chunks say, for readPictureFacts; the image data may be left out of them (PngFacts.cpp).
    bool readHeaders(std::span<const std::uint8_t> Stream, PictureFacts& facts);
    // Bytes that LoadStream takes besides the image, by the header, which is the first chunk; 0 where that is damaged.
    static double memory(std::span<const std::uint8_t> Stream);

  private:
    // Adds the parser's variables and those of the host.
    friend void describeInstance(const cPNGparser& parser, ErrorReport& report);

    // A chunk's last byte is counted from a base that differs between the two sources: in a stream it may lie one byte
    // beyond the data. Callers hand over streams cut that way, so the tolerance stays.
    enum class RunningEnd : std::uint8_t { ofStream = 7, ofFile = 8 };

    struct Chunk {
        std::uint32_t type;
        std::uint32_t storedCrc;                   // 0 when it is not to be checked
        std::span<const std::uint8_t> typeAndData; // what the CRC covers
        std::span<const std::uint8_t> data() const noexcept { return typeAndData.subspan(4); }
    };
    enum class ChunkResult : std::uint8_t { ok, error };

    // The orders of rows: that of an image that is not interlaced, or the passes.
    std::span<const InterlacePass> m_MatrixDat() const noexcept { return pngPasses(m_Interlacing != 0); }

    struct DepthInfo {
        std::size_t rawBitsPP;  // bits of a source pixel
        std::size_t rawBytesPP; // the filters' distance to the pixel on the left
    };

    template <class Body>
    ReadResult loadInto(cPixSheet& host, Body&& load);
    ReadResult LoadPNG(std::span<const std::uint8_t> pngStream, RunningEnd base);
    struct Walk {
        std::size_t end; // of the last chunk that is whole
        bool isWhole;    // that chunk is IEND
    };
    static Walk walkOver(std::span<const std::uint8_t> stream) noexcept;
    bool loadByGDIplus(RunningEnd base);
    enum class ChunksRead : std::uint8_t { all, butIDAT };
    bool walkChunks(RunningEnd base, ChunksRead chunks = ChunksRead::all);
    bool isWithinLimits() noexcept;
    bool refuse(Reason reason) noexcept;
    ChunkResult refuseChunk(Reason reason) noexcept;
    ChunkResult zHandleChunk(const Chunk& chunk);
    ChunkResult zChunk_IHDR(const Chunk& chunk);
    ChunkResult zChunk_PLTE(const Chunk& chunk);
    void zChunk_tRNS(const Chunk& chunk);
    ChunkResult zChunk_IDAT(const Chunk& chunk);
    bool zValidateZLIBversion();
    bool zCheckCRCvalue(const Chunk& chunk);

    // PngImageData.cpp
    class ImageData;
    bool PostLoadPNG();
    bool beginPicture();
    AlphaTypeEnum alphaOfChunks() const noexcept;
    void setAlpha() noexcept { cHost->Alpha(alphaOfChunks()); }
    void setNotes(bool endsEarly) noexcept;
    bool isDepthSuited() const noexcept;
    DepthInfo GetDepthInfo() const noexcept;
    std::size_t GetBytesPerPixel(std::size_t totalWidth) const noexcept;
    std::size_t firstRowBytes() const noexcept;
    std::size_t CalcUncompressedWidth() const noexcept;
    std::size_t neededBytes() const noexcept;
    std::size_t windowBytes() const noexcept;

    // PngPixels.cpp
    void InitializePalette();
    void prepareConversion();
    void convertRow(std::uint8_t* hostRow, const std::uint8_t* raw, std::size_t count, const InterlacePass& pass) const;
    void convertPixels(std::uint8_t* dst, const std::uint8_t* raw, std::size_t count) const;
    void ConvertPNGtoBMP_16Bit(std::uint8_t* dst, const std::uint8_t* raw, std::size_t count) const;
    void ConvertPNGtoBMP_NonPalette(std::uint8_t* dst, const std::uint8_t* raw, std::size_t count) const;
    void ConvertPNGtoBMP_Palettes(std::uint8_t* dst, const std::uint8_t* raw, std::size_t count) const;

    cPixSheet* cHost = nullptr;                   // only for the length of a load
    Reason m_reason;                              // why the load ends without a picture
    ReadOutcome m_outcome = ReadOutcome::damaged; // and how
    std::int32_t m_Width = 0;
    std::int32_t m_Height = 0;
    std::uint8_t m_BitDepth = 0;
    std::uint8_t m_ColorType = 0;
    std::uint8_t m_Interlacing = 0;
    // At most 256 entries can be meant, so PLTE and tRNS need no memory that could be missing.
    std::array<std::uint8_t, 256 * 3> m_Palette; // R, G, B per entry
    std::size_t m_PaletteSize = 0;               // bytes of it in use
    std::array<std::uint8_t, 256> m_TransSimple; // raw tRNS data; for palette images padded with 255
    std::size_t m_TransSize = 0;                 // bytes of it in use
    std::int32_t m_TransColor = -1;              // -1 = no transparent colour
    std::size_t m_firstIDAT = 0;                 // where the first IDAT that has data is in the file
    std::size_t m_lenIDAT = 0;                   // bytes of data in all so far
    std::unique_ptr<std::uint8_t[]> m_ownBytes;  // a whole file
    std::span<const std::uint8_t> m_pngStream;   // the data that is walked
    PngNotes m_notes;
    bool m_hasCrc32 = false; // zlib is there, and computes CRCs

    std::array<std::uint8_t, 256 * 4> m_lookup;                  // ready pixels of gray levels or palette entries
    std::optional<std::array<std::uint8_t, 4>> m_transparentKey; // opaque pixel that stands for a transparent one
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
