// The clipboard: packed DIBs of every header, stored pixels and files, of which none is believed; what loads is copied
// and pasted as the same picture. Input that begins as a BMP file is a DIB, so that test pictures are seeds; else its
// first byte names the format.
#include "support/MemoryClipboard.h"
#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    constexpr const char* formats[] = {"CF_DIB", "CF_DIBV5", "pixkit stored pixels 1", "PNG", "CF_BITMAP", "GIF"};
    if (bytes == 0) return 0;
    const bool isFile = bytes > 14 && data[0] == 'B' && data[1] == 'M';
    const std::size_t skipped = isFile ? 14 : 1;
    pixkit::test::MemoryClipboard clipboard;
    clipboard.blocks = {{formats[isFile ? data[2] % 2 : data[0] % 6], {data + skipped, data + bytes}}};
    cPixSheet sheet, again;
    const bool loaded = sheet.LoadPicture_ClipBoard(true);
    require(loaded == (sheet.Handle() != 0) && loaded == (pixelCount(sheet) != 0) && clipboard.opened == 0);
    if (!loaded) return 0;
    require(pixelCount(sheet) <= 4096 + bytes * 4096 && sheet.CopyToClipBoard() && again.LoadPicture_ClipBoard());
    requireSame(sheet, again);
    require(sheet.ImageType() == again.ImageType());
    return 0;
}
