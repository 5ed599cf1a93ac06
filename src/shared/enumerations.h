// The enumerations of the public interface. Names and values are part of the binary interface: never renumber.
#pragma once
#include <cstdint>

namespace pixkit {

// Where the current image came from.
enum eImageFormat : std::int32_t {
    imgError = -1, // no image
    imgNone = 0,   // created by InitializeDIB or emptied by EraseDIB
    imgBitmap = 1,
    imgWMF = 2,
    imgIcon = 3,
    imgEMF = 4,
    imgCursor = 5,
    imgBmpARGB = 6,  // 32-bit source whose colours were not premultiplied
    imgBmpPARGB = 7, // 32-bit source whose colours were premultiplied already
    imgIconARGB = 8,
    imgGIF = 9,
    imgPNG = 10,
    imgPNGicon = 11,
    imgCursorARGB = 12,
    imgCheckerBoard = 64,
    imgTGA = 128,
};

// How much transparency an image has.
enum AlphaTypeEnum : std::int32_t {
    AlphaNone = 0,    // every pixel opaque
    AlphaSimple = 1,  // alpha is only 0 or 255
    AlphaComplex = 2, // partial transparency present
};

// Weights by which MakeGrayScale mixes red, green and blue; see iparseGrayScaleRatios for the numbers.
enum eGrayScaleFormulas : std::int32_t {
    gsclNone = -1, // no conversion
    gsclNTSCPAL = 0,
    gsclCCIR709 = 1,
    gsclSimpleAvg = 2,
    gsclRedMask = 3,
    gsclGreenMask = 4,
    gsclBlueMask = 5,
    gsclRedGreenMask = 6,
    gsclBlueGreenMask = 7,
};

// How ScaleImage fits the image into a size.
enum eScaleOptions : std::int32_t {
    ScaleToSize = 0,       // as large as fits
    scaleDownAsNeeded = 1, // as large as fits, but never enlarged
    ScaleStretch = 2,      // the size as it is
};

// By which filter Resample makes another size.
enum eResampleFilters : std::int32_t {
    resampleAuto = 0,     // Lanczos 3 along axes that shrink, Mitchell along those that grow
    resampleArea = 1,     // the mean of what a pixel covers: no pixel becomes brighter or darker than what is there
    resampleTriangle = 2, // soft; linear interpolation where the picture grows
    resampleMitchell = 3, // cubic: a compromise of sharp, smooth and free of halos
    resampleLanczos3 = 4, // sharpest, with slight halos along edges
};

// Sides that TrimImage cuts, to be combined.
enum eTrimOptions : std::int32_t {
    trimLeft = 1,
    trimTop = 2,
    trimRight = 4,
    trimBottom = 8,
    trimAll = 15,
};

// Where text stands in its rectangle, and how it is drawn there, to be combined: one of each axis, and further bits.
enum eTextAlignment : std::int32_t {
    txtLeft = 0,
    txtCenter = 1,
    txtRight = 2,
    txtTop = 0,
    txtMiddle = 4,
    txtBottom = 8,
    txtEllipsis = 16,    // a line that does not fit ends in an ellipsis, as does the last that fits when more follow
    txtClip = 32,        // nothing is drawn outside of the rectangle
    txtRightToLeft = 64, // reading order
};

// What CreateBitmap and CreateStdPicture make of an image.
enum ePictureStyles : std::int32_t {
    pictAuto = -1,         // only CreateStdPicture: pictIcon where Alpha says that there is some, else pictFlat
    pictPremultiplied = 0, // a bitmap of 32 bits with alpha, as AlphaBlend, menus and ribbons want it
    pictStraight = 1,      // a bitmap of 32 bits with alpha and straight colours, as in icons
    pictFlat = 2,          // a bitmap of 24 bits, flattened onto a colour
    pictIcon = 3,          // only CreateStdPicture: an icon, which is drawn with its alpha
};

// The files that StreamOf makes; numbered as in eImageFormat, which has none for JPEG. Options, in order:
enum eStreamFormats : std::int32_t {
    streamBitmap = 1, // KeepPreMultipliedPixels, TransparentFillColor
    streamIcon = 3,   // width, height and bit depth of each entry; none: the image's own size at 32 bits
    streamGIF = 9,    // UseAdaptivePalette, OpaquenessTolerance
    streamPNG = 10,   // none
    streamTGA = 128,  // Compress, ReduceBitDepth, AllowPreMultipliedPixels
    streamJPG = 129,  // Quality
};

// What of an image CreateRegion makes a region of.
enum eRegionStyles : std::int32_t {
    regionBounds = 0,   // one rectangle around all of its shape
    regionEnclosed = 1, // its shape without holes
    regionShaped = 2,   // its shape
};

// What PngPropertyGet and PngPropertySet are about.
enum ePngProperties : std::int32_t {
    // texts, under the keywords that the PNG standard gives
    pngTitle = 1,
    pngAuthor = 2,
    pngDescription = 3,
    pngCopyright = 4,
    pngCreationTime = 5, // of the original, in words
    pngSoftware = 6,
    pngDisclaimer = 7,
    pngWarning = 8,
    pngSource = 9,
    pngComment = 10,
    pngText = 11, // a text under a keyword of the caller's
    // what else the file says
    pngBackgroundColor = 12, // COLORREF to show the picture on
    pngPixelsPerMeterX = 13,
    pngPixelsPerMeterY = 14,
    pngLastModified = 15, // date and time of UTC
    // how it is written
    pngCompressionLevel = 16, // 0 to 9
    pngFilterMethod = 17,     // eFilterMethods
    pngInterlaced = 18,       // Boolean
};

// What is subtracted from the bytes of a PNG's rows before compression.
enum eFilterMethods : std::int32_t {
    filterDefault = 0, // the one that compresses best, of large pictures parts of them
    filterNone = 1,
    filterSub = 2,
    filterUp = 3,
    filterAverage = 4,
    filterPaeth = 5,
    filterAdaptive = 6, // for each row the one that leaves the smallest sum
};

// Bit-depth selectors of the icon writer.
enum eConstants : std::int32_t {
    HIGH_COLOR = 16776960,
    TRUE_COLOR = -16777216,
    TRUE_COLOR_ALPHA = -1,
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
