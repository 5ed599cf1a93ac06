#include "shared/modParsers.h"
#include "platform/interaction.h"
#include "platform/libraries.h"
#include "shared/checked.h"
#include <cstring>
#include <stdexcept>

namespace pixkit {

using kernels::AlphaScan;

// --- arithmetic

std::int32_t iparseByteAlignOnWord(std::uint8_t bitDepth, std::int32_t Width) {
    const std::int64_t bits = longOrOverflow(std::int64_t{bitDepth} * Width + 31);
    return static_cast<std::int32_t>((bits & ~std::int64_t{31}) / 8);
}

// --- alpha

namespace {

struct ScanVerdict {
    AlphaTypeEnum bIsAlpha;
    bool isPremultiplied;
};

ScanVerdict scanAlphaChannel(ConstPixelView inStream) noexcept {
    const auto& kernel = kernels::table();
    AlphaScan scan;
    for (std::size_t y = 0; y < inStream.height; ++y) {
        if (!kernel.scanAlpha(inStream.row(y), inStream.width, scan)) break;
    }
    const std::size_t pixelCount = inStream.width * inStream.height;
    if (scan.zeroCount == pixelCount || scan.opaqueCount == pixelCount) return {AlphaNone, false};
    return {scan.partial ? AlphaComplex : AlphaSimple, scan.state == AlphaScan::consistent};
}

AlphaTypeEnum premultiplyAndReclassify(PixelView pixels) noexcept {
    const auto& kernel = kernels::table();
    bool partial = false;
    for (std::size_t y = 0; y < pixels.height; ++y) {
        partial |= kernel.premultiply(pixels.row(y), pixels.width);
    }
    return partial ? AlphaComplex : AlphaSimple;
}

constexpr std::int32_t alphaBytesUnused = -1;

AlphaClassification classify(ConstPixelView inStream, std::int32_t imgType, bool& isPremultiplied) noexcept {
    const ScanVerdict verdict =
        imgType == alphaBytesUnused ? ScanVerdict{AlphaNone, false} : scanAlphaChannel(inStream);
    isPremultiplied = verdict.isPremultiplied;
    if (verdict.bIsAlpha == AlphaNone) return {AlphaNone, imgBitmap};
    return {verdict.bIsAlpha, verdict.isPremultiplied ? imgBmpPARGB : imgBmpARGB};
}

} // namespace

AlphaClassification iparseValidateAlphaChannel(PixelView inStream, bool bPreMultiply, std::int32_t imgType) {
    bool isPremultiplied = false;
    AlphaClassification result = classify(inStream, imgType, isPremultiplied);
    if (!bPreMultiply) return result;
    if (result.bIsAlpha == AlphaNone) {
        for (std::size_t y = 0; y < inStream.height; ++y) {
            kernels::table().setOpaque(inStream.row(y), inStream.width);
        }
    } else if (!isPremultiplied) {
        // The scan may have stopped early, so what it saw of partial alpha says nothing about the whole image.
        result.bIsAlpha = premultiplyAndReclassify(inStream);
    }
    return result;
}

AlphaClassification iparseValidateAlphaChannel(ConstPixelView inStream, std::int32_t imgType) {
    bool isPremultiplied = false;
    return classify(inStream, imgType, isPremultiplied);
}

// --- colour

kernels::GrayWeights iparseGrayScaleRatios(std::int32_t Formula) noexcept {
    switch (Formula) {
    case gsclNone:
        return {1.0F, 1.0F, 1.0F};
    case gsclCCIR709:
        return {0.213F, 0.715F, 0.072F};
    case gsclSimpleAvg:
        return {0.333F, 0.334F, 0.333F};
    case gsclRedMask:
        return {0.8F, 0.1F, 0.1F};
    case gsclGreenMask:
        return {0.1F, 0.8F, 0.1F};
    case gsclBlueMask:
        return {0.1F, 0.1F, 0.8F};
    case gsclRedGreenMask:
        return {0.45F, 0.45F, 0.1F};
    case gsclBlueGreenMask:
        return {0.1F, 0.45F, 0.45F};
    default: // gsclNTSCPAL, and every value that is no formula
        return {0.299F, 0.587F, 0.114F};
    }
}

void iparseBlendImageToColor(ConstPixelView cHost, std::int32_t FillColor, std::span<std::uint8_t> outStream,
                             bool bitDepth24) {
    const auto& kernel = kernels::table();
    const ColorChannels channels = iparseColorChannels(FillColor);
    const std::uint8_t fill[3] = {channels.b, channels.g, channels.r};
    const std::size_t used = cHost.width * (bitDepth24 ? 3 : 4);
    const auto rowLength =
        static_cast<std::size_t>(iparseByteAlignOnWord(bitDepth24 ? 24 : 32, static_cast<std::int32_t>(cHost.width)));
    if (outStream.size() < rowLength * cHost.height) throw std::out_of_range("subscript out of range");
    const auto flatten = bitDepth24 ? kernel.flatten24 : kernel.flatten32;
    for (std::size_t y = 0; y < cHost.height; ++y) {
        std::uint8_t* out = outStream.data() + y * rowLength;
        flatten(out, cHost.row(y), cHost.width, fill);
        std::memset(out + used, 0, rowLength - used);
    }
}

std::int32_t iparseFindColor(std::span<const std::int32_t> PaletteItems, std::int32_t Color, std::int32_t Count,
                             bool& isNew) noexcept {
    isNew = true;
    if (Count < 1) return 1;
    std::int32_t LB = 1;
    std::int32_t UB = Count;
    std::int32_t probe = 1;
    while (LB <= UB) {
        probe = LB + (UB - LB) / 2;
        const std::int32_t item = PaletteItems[static_cast<std::size_t>(probe) - 1];
        if (item == Color) {
            isNew = false;
            return probe;
        }
        if (Color > item) {
            LB = probe + 1;
        } else {
            UB = probe - 1;
        }
    }
    return Color > PaletteItems[static_cast<std::size_t>(probe) - 1] ? probe + 1 : probe;
}

// --- system pictures

std::unique_ptr<platform::StdPicture> iparseArrayToPicture(std::span<const std::uint8_t> inArray, std::size_t Offset,
                                                           std::size_t Size) noexcept {
    if (Offset > inArray.size() || Size > inArray.size() - Offset) return nullptr;
    return platform::OleLoadPicture(inArray.subspan(Offset, Size));
}

std::unique_ptr<platform::StdPicture> iparseHandleToStdPicture(platform::Handle hImage,
                                                               platform::PictureType imgType) noexcept {
    return platform::OleCreatePictureIndirect(hImage, imgType, false);
}

// --- files and libraries

namespace {

bool useWideFunctions(bool useUnicode) noexcept {
    return useUnicode || platform::isDesktopWindowUnicode();
}

std::uint32_t attributesOf(const std::string& FileName, bool wide) noexcept {
    return wide ? platform::GetFileAttributesW(FileName) : platform::GetFileAttributesA(FileName);
}

} // namespace

platform::Handle iparseGetFileHandle(const std::string& FileName, bool bOpen, bool useUnicode) noexcept {
    const auto use = bOpen ? platform::FileUse::openExisting : platform::FileUse::createAlways;
    return useWideFunctions(useUnicode) ? platform::CreateFileW(FileName, use) : platform::CreateFileA(FileName, use);
}

platform::Handle iparseCreateNewFile(const std::string& FileName, bool useUnicode) noexcept {
    constexpr auto use = platform::FileUse::createNew;
    return useWideFunctions(useUnicode) ? platform::CreateFileW(FileName, use) : platform::CreateFileA(FileName, use);
}

bool iparseWriteWhole(platform::Handle FileHandle, std::span<const std::uint8_t> bytes) noexcept {
    std::uint32_t done = 0;
    const auto count = static_cast<std::uint32_t>(bytes.size());
    return platform::WriteFile(FileHandle, bytes.data(), count, done) && done == count;
}

bool iparseFileExists(const std::string& FileName, bool useUnicode) noexcept {
    return attributesOf(FileName, useWideFunctions(useUnicode)) != platform::invalidFileAttributes;
}

bool iparseIsDirectory(const std::string& FileName, bool useUnicode) noexcept {
    const std::uint32_t attributes = attributesOf(FileName, useWideFunctions(useUnicode));
    return attributes != platform::invalidFileAttributes && (attributes & platform::fileAttributeDirectory) != 0;
}

bool iparseDeleteFile(const std::string& FileName, bool useUnicode) noexcept {
    if (useWideFunctions(useUnicode)) {
        return platform::SetFileAttributesW(FileName, platform::fileAttributeNormal) && platform::DeleteFileW(FileName);
    }
    return platform::SetFileAttributesA(FileName, platform::fileAttributeNormal) && platform::DeleteFileA(FileName);
}

bool iparseReplaceFile(const std::string& FileName, const std::string& ReplacedName, bool useUnicode) noexcept {
    const bool wide = useWideFunctions(useUnicode);
    const auto setAttributes = wide ? platform::SetFileAttributesW : platform::SetFileAttributesA;
    const auto moveFile = wide ? platform::MoveFileExW : platform::MoveFileExA;
    const std::uint32_t attributes = attributesOf(ReplacedName, wide);
    if (attributes == platform::invalidFileAttributes) return moveFile(FileName, ReplacedName);
    if (!setAttributes(ReplacedName, platform::fileAttributeNormal)) return false;
    if (moveFile(FileName, ReplacedName)) return true;
    setAttributes(ReplacedName, attributes);
    return false;
}

bool iparseValidateDLL(const char* DllName, const char* dllProc) noexcept {
    const platform::UniqueLibrary library(platform::LoadLibraryA(DllName));
    return library && platform::GetProcAddress(library.get(), dllProc) != nullptr;
}

} // namespace pixkit
