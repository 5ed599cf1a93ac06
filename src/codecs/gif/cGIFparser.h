// GIF files: the first frame is read, one frame is written. README.md in this folder explains the format and lists what
// the reader is lenient about.
#pragma once
#include "codecs/Reading.h"
#include "codecs/Writing.h"
#include "coding/GifFrame.h"
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace pixkit {

class cPixSheet;

// Cuts the first frame out of the data, builds a GIF of that frame alone, lets the system's picture loader decode it,
// and makes pixels of what comes back. An object serves one load.
class cGIFparser {
  public:
    // Reads the first frame at its own size into the host; ImageType becomes imgGIF, Alpha AlphaSimple when the frame
    // names a transparent colour, else AlphaNone. Data that ends inside of a block counts as damaged, and so does
    // whatever else goes wrong, an end of memory included. An object serves one load, which the data must outlive.
    ReadResult LoadStream(std::span<const std::uint8_t> inStream, cPixSheet& cHost);

    // Whether the system's loader may be shown the whole of a file that LoadStream has refused. Not one in which an
    // image has no colours, neither of its own nor the file's, which some loaders do not survive, and not one of more
    // pixels than a store holds, which would be decoded in vain.
    static bool goesToSystem(std::span<const std::uint8_t> file) noexcept;

    // A GIF file of one picture. Where the Alpha property says that there is alpha, pixels whose alpha is below
    // OpaquenessTolerance become transparent and all others opaque in their straight colours; only then the file says
    // GIF89a. UseAdaptivePalette: the picture's own colours when they (and transparency) are at most 256, else a
    // palette that fits it; without, the 216 web-safe colours, with errors diffused. Nothing for more than 65,535
    // columns or rows.
    static WrittenFile SaveAsGIF(const SourcePicture& Picture, const GifOptions& Options);

  private:
    ReadResult ParseGIF(cPixSheet& cHost);
    void buildFrame();
    void grayFrameTable();
    ReadResult ConvertGIFto32bpp(cPixSheet& cHost) const;

    std::span<const std::uint8_t> c_GIFdata;
    std::vector<std::uint8_t> c_GIFframe; // a GIF of the first frame alone
    GifFrame m_frame;                     // where its parts are in c_GIFdata
    std::size_t m_frameColors = 0; // entries of its colour table in c_GIFframe, which may be more than in c_GIFdata,
    std::size_t m_frameTable = 0;  // and where it is there
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
