// Chunks of a PNG file, and those that carry what the properties say.
#pragma once
#include "codecs/png/PngForm.h"
#include "surface/PngProperties.h"
#include <cstdint>
#include <string_view>
#include <vector>

namespace pixkit {

// Puts chunks behind one another: length, type, data, CRC (PNG standard, 5.3).
class PngChunkWriter {
  public:
    PngChunkWriter();

    // Between these two the data is put.
    void begin(std::string_view type);
    void end();

    void put8(std::uint32_t value) { m_bytes.push_back(static_cast<std::uint8_t>(value)); }
    void put16(std::uint32_t value) {
        put8(value >> 8);
        put8(value);
    }
    void put32(std::uint32_t value) {
        put16(value >> 16);
        put16(value);
    }
    void put(std::string_view text) { m_bytes.insert(m_bytes.end(), text.begin(), text.end()); }

    // The file so far; what is appended while a chunk is open is its data.
    std::vector<std::uint8_t>& bytes() noexcept { return m_bytes; }

  private:
    std::vector<std::uint8_t> m_bytes;
    std::size_t m_start = 0; // of the open chunk
};

void pngWritePalette(PngChunkWriter& out, const PngForm& form);      // PLTE
void pngWriteTransparency(PngChunkWriter& out, const PngForm& form); // tRNS
void pngWriteDensity(PngChunkWriter& out, const PngProperties& props);
void pngWriteBackground(PngChunkWriter& out, const PngForm& form, const PngProperties& props);
void pngWriteTime(PngChunkWriter& out, const PngProperties& props);
// tEXt where Latin-1 has all the characters, else iTXt; long ones compressed.
void pngWriteTexts(PngChunkWriter& out, const PngProperties& props);

} // namespace pixkit
