// Every save to a file first settles whether the target may be written, then runs the writer that serves streams too,
// on a file beside the target, which takes the target's place when it is complete: a full disk costs nobody both.
#include "codecs/bmp/cBMPparser.h"
#include "codecs/gif/cGIFparser.h"
#include "codecs/ico/cICOparser.h"
#include "codecs/jpg/cJPGWriter.h"
#include "codecs/png/cPNGwriter.h"
#include "codecs/tga/cTGAparser.h"
#include "diagnostics/guard.h"
#include "platform/interaction.h"
#include "saving/NeighbourFile.h"
#include "shared/modParsers.h"
#include "surface/Capabilities.h"
#include "surface/cPixSheet.h"

namespace pixkit {

bool cPixSheet::spt_SaveToFile(const std::string& FileName, bool PromptOverWrite,
                               const std::function<bool(const std::string&)>& writer) const {
    return m_Handle != 0 && pvReplaceFile(FileName, PromptOverWrite, writer);
}

bool cPixSheet::pvReplaceFile(const std::string& FileName, bool PromptOverWrite,
                              const std::function<bool(const std::string&)>& writer) const {
    if (FileName.empty()) return false;
    // Whether the file exists is asked through the desktop's own choice of functions, everything else goes through the
    // system's.
    if (PromptOverWrite && iparseFileExists(FileName, false) &&
        platform::MessageBoxW("Overwrite existing file?", "Overwrite Confirmation",
                              platform::messageBoxYesNoQuestionDefaultNo) != platform::answerYes) {
        return false;
    }
    const bool useUnicode = (m_osCAP & capNtFamily) != 0;
    if (iparseIsDirectory(FileName, useUnicode)) return false;
    NeighbourFile neighbour(FileName, useUnicode);
    return neighbour.exists() && writer(neighbour.name()) && neighbour.takeItsPlace();
}

bool cPixSheet::SaveToFile_Bitmap(const std::string& FileName, bool KeepPreMultipliedPixels,
                                  std::int32_t TransparentFillColor, bool PromptOverWrite) const noexcept {
    return guarded("SaveToFile_Bitmap", false, [&] {
        ByteArray noStream;
        return spt_SaveToFile(FileName, PromptOverWrite, [&](const std::string& name) {
            return cBMPparser::SaveAsBMP(*this, name, noStream, KeepPreMultipliedPixels, TransparentFillColor);
        });
    });
}

bool cPixSheet::SaveToStream_Bitmap(ByteArray& outStream, bool KeepPreMultipliedPixels,
                                    std::int32_t TransparentFillColor) const noexcept {
    return guarded("SaveToStream_Bitmap", false, [&] {
        return cBMPparser::SaveAsBMP(*this, "", outStream, KeepPreMultipliedPixels, TransparentFillColor);
    });
}

bool cPixSheet::SaveToFile_TGA(const std::string& FileName, bool Compress, bool ReduceBitDepth,
                               bool AllowPreMultipliedPixels, bool PromptOverWrite) const noexcept {
    return guarded("SaveToFile_TGA", false, [&] {
        return spt_SaveToFile(FileName, PromptOverWrite, [&](const std::string& name) {
            return cTGAparser::SaveAsTGA(name, AllowPreMultipliedPixels, Compress, ReduceBitDepth, *this);
        });
    });
}

bool cPixSheet::SaveToStream_TGA(ByteArray& outStream, bool Compress, bool ReduceBitDepth,
                                 bool AllowPreMultipliedPixels) const noexcept {
    return guarded("SaveToStream_TGA", false, [&] {
        return cTGAparser::SaveToStream(outStream, AllowPreMultipliedPixels, Compress, ReduceBitDepth, *this);
    });
}

bool cPixSheet::SaveToFile_PNG(const std::string& FileName, bool PromptOverWrite) const noexcept {
    return guarded("SaveToFile_PNG", false, [&] {
        ByteArray noStream;
        return spt_SaveToFile(FileName, PromptOverWrite, [&](const std::string& name) {
            return cPNGwriter::SavePNGex(*this, name, noStream, m_PNGprops);
        });
    });
}

bool cPixSheet::SaveToStream_PNG(ByteArray& outStream) const noexcept {
    return guarded("SaveToStream_PNG", false, [&] { return cPNGwriter::SavePNGex(*this, "", outStream, m_PNGprops); });
}

bool cPixSheet::PngPropertySet(ePngProperties Property, const PngValue& Value, const std::string& Keyword) noexcept {
    return guarded("PngPropertySet", false, [&] { return m_PNGprops.set(Property, Value, Keyword); });
}

PngValue cPixSheet::PngPropertyGet(ePngProperties Property, const std::string& Keyword) const noexcept {
    return guarded("PngPropertyGet", PngValue(), [&] { return m_PNGprops.get(Property, Keyword); });
}

bool cPixSheet::SaveToFile_JPG(const std::string& FileName, std::int32_t Quality, std::int32_t TransparentFillColor,
                               bool PromptOverWrite) const noexcept {
    return guarded("SaveToFile_JPG", false, [&] {
        ByteArray noStream;
        return spt_SaveToFile(FileName, PromptOverWrite, [&](const std::string& name) {
            return cJPGWriter::SaveAsJPG(*this, name, noStream, Quality, TransparentFillColor);
        });
    });
}

bool cPixSheet::SaveToStream_JPG(ByteArray& outStream, std::int32_t Quality) const noexcept {
    constexpr std::int32_t black = 0;
    return guarded("SaveToStream_JPG", false,
                   [&] { return cJPGWriter::SaveAsJPG(*this, "", outStream, Quality, black); });
}

bool cPixSheet::SaveToFile_GIF(const std::string& FileName, bool UseAdaptivePalette, std::uint8_t OpaquenessTolerance,
                               bool PromptOverWrite) const noexcept {
    return guarded("SaveToFile_GIF", false, [&] {
        ByteArray noStream;
        return spt_SaveToFile(FileName, PromptOverWrite, [&](const std::string& name) {
            return cGIFparser::SaveAsGIF(*this, name, noStream, UseAdaptivePalette, OpaquenessTolerance);
        });
    });
}

// PromptOverWrite is part of the interface only: an array is no file that could be lost.
bool cPixSheet::SaveToStream_GIF(ByteArray& outStream, bool UseAdaptivePalette, std::uint8_t OpaquenessTolerance,
                                 bool /*PromptOverWrite*/) const noexcept {
    return guarded("SaveToStream_GIF", false, [&] {
        return cGIFparser::SaveAsGIF(*this, "", outStream, UseAdaptivePalette, OpaquenessTolerance);
    });
}

std::int32_t cPixSheet::SaveToFile_ICO(const std::string& FileName, std::span<const cPixSheet* const> Source,
                                       bool PromptOverWrite, std::span<const IconEntrySize> Sizes) const noexcept {
    const cPixSheet* const self = this;
    const auto sources = Source.empty() ? std::span(&self, 1) : Source;
    return guarded("SaveToFile_ICO", 0, [&] {
        // Nobody is asked about a file that will not be written.
        if (cICOparser::EntrySizes(sources, Sizes).empty()) return 0;
        std::int32_t count = 0;
        ByteArray noStream;
        const bool isSaved = pvReplaceFile(FileName, PromptOverWrite, [&](const std::string& name) {
            count = cICOparser::SaveAsIcon(sources, Sizes, name, noStream, (m_osCAP & capNtFamily) != 0);
            return count != 0;
        });
        return isSaved ? count : 0;
    });
}

std::int32_t cPixSheet::SaveToStream_ICO(ByteArray& outStream, std::span<const cPixSheet* const> Source,
                                         std::span<const IconEntrySize> Sizes) const noexcept {
    const cPixSheet* const self = this;
    const auto sources = Source.empty() ? std::span(&self, 1) : Source;
    return guarded("SaveToStream_ICO", 0, [&] { return cICOparser::SaveAsIcon(sources, Sizes, "", outStream, false); });
}

} // namespace pixkit
