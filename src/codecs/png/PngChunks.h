// Chunks of a PNG file, and those that carry what the properties say.
#pragma once
#include "codecs/png/PngForm.h"
#include "coding/ByteWriter.h"
#include "surface/PngProperties.h"
#include <cstdint>
#include <string_view>
#include <vector>

namespace pixkit {

// Puts chunks behind one another: length, type, data, CRC (PNG standard, 5.3).
class PngChunkWriter : public ByteWriter {
  public:
    // Begins the file.
    explicit PngChunkWriter(std::vector<std::uint8_t>& file);

    // What is put between these two is the chunk's data.
    void begin(std::string_view type);
    void end();

  private:
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
// SPDX-License-Identifier: MIT
