// What the system's picture loader makes of GIF or JPEG data: pictures whose pixels can all be read and drawn.
#include "platform/gdi.h"
#include "platform/pictures.h"
#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    const auto picture = platform::OleLoadPicture({data, bytes});
    if (!picture) return 0;
    cPixSheet sheet, canvas;
    require(sheet.LoadPicture_StdPicture(picture.get()) && pixelCount(sheet) != 0);
    require(sheet.Width() == picture->Width() && sheet.Height() == picture->Height());
    require(canvas.InitializeDIB(31, 17) && picture->Render(canvas.LoadDIBinDC(true), -3, 2, 40, 9));
    canvas.LoadDIBinDC(false);
    return 0;
}
