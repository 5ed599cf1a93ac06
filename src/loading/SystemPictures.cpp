// Loading from what the system already has in memory.
#include "codecs/bmp/cBMPparser.h"
#include "diagnostics/guard.h"
#include "platform/pictures.h"
#include "surface/cPixSheet.h"

namespace pixkit {

bool cPixSheet::LoadPicture_StdPicture(const platform::StdPicture* Picture) noexcept {
    const bool loaded = guarded("LoadPicture_StdPicture", false, [&] {
        DestroyDIB();
        return Picture != nullptr && cBMPparser::ConvertstdPicTo32bpp(*Picture, *this);
    });
    if (!loaded) DestroyDIB();
    return loaded;
}

} // namespace pixkit
