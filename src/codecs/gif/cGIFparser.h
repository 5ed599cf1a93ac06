// GIF files, the first frame. README.md in this folder explains the format and lists what the reader is lenient about.
#pragma once
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
    // names a transparent colour, else AlphaNone. False, without an image, for data that is not GIF or whose frame is
    // none that can be shown. Where the data ends inside of a block, or memory does, the host is emptied and the answer
    // is true: whether there is an image shows in the host.
    bool LoadStream(std::span<const std::uint8_t> inStream, cPixSheet& cHost);

  private:
    bool ParseGIF(cPixSheet& cHost);
    void SkipGifBlock(std::size_t& Ptr) const;
    bool ConvertGIFto32bpp(int TransIndex, std::size_t tblOffset, cPixSheet& cHost) const;

    bool findFirstImage(std::size_t Ptr);
    void buildFrame();
    void grayFrameTable();
    std::uint8_t at(std::size_t position) const;

    std::span<const std::uint8_t> c_GIFdata;
    std::vector<std::uint8_t> c_GIFframe;

    std::size_t gHeaderLen = 0;    // header and global colour table
    std::size_t g87aStart = 0;     // first byte of the first image, its descriptor
    std::size_t g87aStop = 0;      // last byte of it
    std::size_t g89aStart = 0;     // the graphic control extension before it; 0: none
    bool transUsed = false;        // that extension names a transparent index,
    std::uint8_t m_transIndex = 0; // this one
    bool aLocalTbl = false;
    std::size_t gColorsUsed = 0;   // entries of the colour table in force
    std::size_t m_frameColors = 0; // entries of the same table in c_GIFframe, which may be more,
    std::size_t m_frameTable = 0;  // and where it is there
};

} // namespace pixkit
