// What the system's picture loader makes of the bytes, GIF or JPEG on this side: pictures whose pixels can all be read
// and drawn.
#include "platform/gdi.h"
#include "platform/pictures.h"
#include "surface/cPixSheet.h"
#include <cstdlib>

using namespace pixkit;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    const auto picture = platform::OleLoadPicture({data, bytes});
    if (!picture) return 0;
    cPixSheet sheet;
    if (!sheet.LoadPicture_StdPicture(picture.get())) std::abort();
    if (sheet.Width() != picture->Width() || sheet.Height() != picture->Height()) std::abort();
    if (sheet.Width() <= 0 || sheet.Height() <= 0) std::abort();

    cPixSheet canvas;
    if (!canvas.InitializeDIB(31, 17)) std::abort();
    if (!picture->Render(canvas.LoadDIBinDC(true), -3, 2, 40, 9)) std::abort();
    canvas.LoadDIBinDC(false);
    return 0;
}
