#include "cli/Names.h"
#include <iomanip>
#include <sstream>
#include <utility>

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

const char* typeWord(eImageFormat type, bool isJpeg) {
    return isJpeg ? "JPEG" : imageTypeName(type).word;
}

const char* containerName(FileFormat format) {
    constexpr const char* names[] = {"BMP", "TGA", "PNG", "JPEG", "GIF", "icon"};
    return names[static_cast<std::size_t>(format)];
}

std::string bytesText(std::uintmax_t bytes) {
    constexpr const char* units[] = {"", " kB", " MB", " GB", " TB", " PB", " EB"};
    if (bytes < 10000) return std::to_string(bytes);
    auto number = static_cast<double>(bytes);
    std::size_t unit = 0;
    while (number >= 999.5) {
        number /= 1000;
        ++unit;
    }
    std::ostringstream text;
    text << std::fixed << std::setprecision(number < 9.995 ? 2 : number < 99.95 ? 1 : 0) << number << units[unit];
    return std::move(text).str();
}

std::string bytesWithUnit(std::uintmax_t bytes) {
    constexpr const char* noBreak = "\u00A0";
    std::string text = bytesText(bytes);
    const std::size_t space = text.find(' ');
    return space == std::string::npos ? text.append(noBreak).append("bytes") : text.replace(space, 1, noBreak);
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
