#include "cli/Names.h"

namespace pixkit::cli {

Name alphaName(AlphaTypeEnum alpha) {
    switch (alpha) {
    case AlphaNone:
        return {"opaque", "AlphaNone"};
    case AlphaSimple:
        return {"on or off", "AlphaSimple"};
    case AlphaComplex:
        return {"partial", "AlphaComplex"};
    }
    return {"unknown", "unknown"};
}

Name imageTypeName(eImageFormat type) {
    switch (type) {
    case imgError:
        return {"no image", "imgError"};
    case imgNone:
        return {"made here", "imgNone"};
    case imgBitmap:
        return {"bitmap", "imgBitmap"};
    case imgWMF:
        return {"WMF", "imgWMF"};
    case imgIcon:
        return {"icon", "imgIcon"};
    case imgEMF:
        return {"EMF", "imgEMF"};
    case imgCursor:
        return {"cursor", "imgCursor"};
    case imgBmpARGB:
        return {"straight BMP", "imgBmpARGB"};
    case imgBmpPARGB:
        return {"premult. BMP", "imgBmpPARGB"};
    case imgIconARGB:
        return {"alpha icon", "imgIconARGB"};
    case imgGIF:
        return {"GIF", "imgGIF"};
    case imgPNG:
        return {"PNG", "imgPNG"};
    case imgPNGicon:
        return {"PNG icon", "imgPNGicon"};
    case imgCursorARGB:
        return {"alpha cursor", "imgCursorARGB"};
    case imgCheckerBoard:
        return {"checkerboard", "imgCheckerBoard"};
    case imgTGA:
        return {"TGA", "imgTGA"};
    }
    return {"unknown", "unknown"};
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
