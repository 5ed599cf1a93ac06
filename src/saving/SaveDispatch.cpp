// Every save to a file first settles whether the target may be written, then runs the writer that serves streams too.
#include "codecs/bmp/cBMPparser.h"
#include "codecs/tga/cTGAparser.h"
#include "diagnostics/guard.h"
#include "platform/interaction.h"
#include "shared/modParsers.h"
#include "surface/Capabilities.h"
#include "surface/cPixSheet.h"

namespace pixkit {

bool cPixSheet::spt_DeleteFile(const std::string& FileName, bool PromptOverWrite) const {
    if (FileName.empty() || m_Handle == 0) return false;
    // Whether the file exists is asked through the desktop's own choice of functions, the deletion through the
    // system's: a directory of that name exists too, and fails to be deleted.
    if (!iparseFileExists(FileName, false)) return true;
    if (PromptOverWrite && platform::MessageBoxW("Overwrite existing file?", "Overwrite Confirmation",
                                                 platform::messageBoxYesNoQuestionDefaultNo) != platform::answerYes) {
        return false;
    }
    return iparseDeleteFile(FileName, (m_osCAP & capNtFamily) != 0);
}

bool cPixSheet::SaveToFile_Bitmap(const std::string& FileName, bool KeepPreMultipliedPixels,
                                  std::int32_t TransparentFillColor, bool PromptOverWrite) const noexcept {
    return guarded("SaveToFile_Bitmap", false, [&] {
        ByteArray noStream;
        return spt_DeleteFile(FileName, PromptOverWrite) &&
               cBMPparser::SaveAsBMP(*this, FileName, noStream, KeepPreMultipliedPixels, TransparentFillColor);
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
        return spt_DeleteFile(FileName, PromptOverWrite) &&
               cTGAparser::SaveAsTGA(FileName, AllowPreMultipliedPixels, Compress, ReduceBitDepth, *this);
    });
}

bool cPixSheet::SaveToStream_TGA(ByteArray& outStream, bool Compress, bool ReduceBitDepth,
                                 bool AllowPreMultipliedPixels) const noexcept {
    return guarded("SaveToStream_TGA", false, [&] {
        return cTGAparser::SaveToStream(outStream, AllowPreMultipliedPixels, Compress, ReduceBitDepth, *this);
    });
}

} // namespace pixkit
