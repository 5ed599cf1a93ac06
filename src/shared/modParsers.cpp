#include "shared/modParsers.h"
#include "platform/interaction.h"
#include "platform/libraries.h"
#include "shared/checked.h"
#include <cstring>
#include <stdexcept>
#include <utility>

namespace pixkit {

using kernels::AlphaScan;

// --- arithmetic

std::int32_t iparseByteAlignOnWord(std::uint8_t bitDepth, std::int32_t Width) {
    const std::int64_t bits = longOrOverflow(std::int64_t{bitDepth} * Width + 31);
    return static_cast<std::int32_t>((bits & ~std::int64_t{31}) / 8);
}

// --- alpha

namespace {

constexpr std::int32_t alphaBytesUnused = -1;

// Nothing to tell pixels apart: all alpha is 0, or all is 255.
bool isAlphaUnused(const AlphaScan& scan, std::size_t pixelCount) noexcept {
    return scan.zeroCount == pixelCount || scan.opaqueCount == pixelCount;
}

} // namespace

void AlphaOfRows::setOpaque(std::size_t from, std::size_t to) const noexcept {
    for (; from < to; ++from)
        kernels::table().setOpaque(row(from), m_image.width);
}

void AlphaOfRows::premultiply(std::size_t from, std::size_t to) noexcept {
    for (; from < to; ++from)
        m_isPartial |= kernels::table().premultiply(row(from), m_image.width);
}

void AlphaOfRows::isWritten() noexcept {
    const std::size_t index = m_rows++;
    if (m_scan.state == AlphaScan::notPremultiplied) {
        premultiply(index, m_rows);
        return;
    }
    kernels::table().scanAlpha(row(index), m_image.width, m_scan);
    weigh(index);
}

void AlphaOfRows::copy(const std::uint8_t* pixels) noexcept {
    const std::size_t index = m_rows++;
    if (m_scan.state == AlphaScan::notPremultiplied) {
        m_isPartial |= kernels::table().copyPremultiplying(row(index), pixels, m_image.width);
        return;
    }
    kernels::table().copyScanningAlpha(row(index), pixels, m_image.width, m_scan);
    weigh(index);
}

void AlphaOfRows::weigh(std::size_t index) noexcept {
    m_untouched = m_rows;
    if (m_scan.zeroCount < m_rows * m_image.width) {
        // Alpha is used after all. What was clear had colour, so it is premultiplied to nothing.
        for (; m_opaqueFrom < m_opaqueTo; ++m_opaqueFrom)
            std::memset(row(m_opaqueFrom), 0, m_image.width * 4);
    } else if (m_scan.state == AlphaScan::colourInClear) {
        // Most such files do not use their alpha. Rows without any colour are left alone: they may be an edge.
        if (m_opaqueTo == 0) m_opaqueFrom = index;
        m_opaqueTo = m_rows;
        setOpaque(index, m_rows);
    }
}

AlphaClassification AlphaOfRows::finish() noexcept {
    const std::size_t pixelCount = m_image.width * m_image.height;
    if (m_scan.zeroCount == pixelCount) setOpaque(0, m_opaqueTo == 0 ? m_rows : m_opaqueFrom);
    if (isAlphaUnused(m_scan, pixelCount)) return {AlphaNone, imgBitmap};
    if (m_scan.state == AlphaScan::consistent) return {m_scan.partial ? AlphaComplex : AlphaSimple, imgBmpPARGB};
    premultiply(0, m_untouched);
    return {m_isPartial ? AlphaComplex : AlphaSimple, imgBmpARGB};
}

AlphaClassification iparseValidateAlphaChannel(PixelView inStream, bool bPreMultiply, std::int32_t imgType) {
    if (!bPreMultiply) return iparseValidateAlphaChannel(ConstPixelView(inStream), imgType);
    if (imgType == alphaBytesUnused) {
        for (std::size_t y = 0; y < inStream.height; ++y)
            kernels::table().setOpaque(inStream.row(y), inStream.width);
        return {};
    }
    AlphaOfRows rows(inStream, false);
    for (std::size_t y = 0; y < inStream.height; ++y)
        rows.isWritten();
    return rows.finish();
}

AlphaClassification iparseValidateAlphaChannel(ConstPixelView inStream, std::int32_t imgType) {
    if (imgType == alphaBytesUnused) return {};
    AlphaScan scan;
    for (std::size_t y = 0; y < inStream.height; ++y) {
        if (!kernels::table().scanAlpha(inStream.row(y), inStream.width, scan)) break;
    }
    if (isAlphaUnused(scan, inStream.width * inStream.height)) return {};
    return {scan.partial ? AlphaComplex : AlphaSimple, scan.state == AlphaScan::consistent ? imgBmpPARGB : imgBmpARGB};
}

bool iparseHasAlpha(ConstPixelView inStream) noexcept {
    AlphaScan scan;
    for (std::size_t y = 0; y < inStream.height; ++y) {
        const bool goesOn = kernels::table().scanAlpha(inStream.row(y), inStream.width, scan);
        if (!goesOn || !isAlphaUnused(scan, inStream.width * (y + 1))) return true;
    }
    return false;
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
