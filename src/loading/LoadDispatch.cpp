// Every load goes through spt_LoadPictureEx, which offers the source to the readers in a fixed order.
#include "codecs/bmp/cBMPparser.h"
#include "codecs/gif/cGIFparser.h"
#include "codecs/ico/cICOparser.h"
#include "codecs/png/cPNGparser.h"
#include "codecs/tga/cTGAparser.h"
#include "diagnostics/guard.h"
#include "loading/LoadRequest.h"
#include "platform/files.h"
#include "platform/interaction.h"
#include "shared/limits.h"
#include "shared/modParsers.h"
#include "surface/Capabilities.h"
#include "surface/HostAccess.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <utility>

namespace pixkit {

namespace {

// Below this size of an array no reader is asked. The minimum of files is another one; callers know both.
constexpr std::int64_t smallestStream = 20;

void readPNG(LoadRequest& request, cPixSheet& host) {
    cPNGparser parser;
    if (request.file() != platform::invalidHandle) {
        parser.LoadFile(request.file(), host);
    } else {
        parser.LoadStream(request.bytes(), host);
    }
    // Only an error that nobody expected is left standing here; data that is no PNG, or a damaged one, goes on in
    // silence.
    if (!parser.runtimeError().empty()) {
        platform::MessageBoxW(parser.runtimeError(), "pixkit", platform::messageBoxOk);
    }
}

void readGIF(LoadRequest& request, cPixSheet& host) {
    cGIFparser().LoadStream(request.bytes(), host);
}

void readICO(LoadRequest& request, cPixSheet& host) {
    const IconRequest& icon = request.icon();
    cICOparser().LoadStream(request.bytes(), icon.cX, icon.cY, host, icon.bitDepth);
}

void readBMP(LoadRequest& request, cPixSheet& host) {
    cBMPparser::LoadStream(request.bytes(), host);
}

void readTGA(LoadRequest& request, cPixSheet& host) {
    cTGAparser().LoadStream(request.bytes(), host, request.offset());
}

// In the order in which they are asked; whether one succeeded shows in the host. Formats without a signature come last.
using Reader = void (*)(LoadRequest& request, cPixSheet& host);
constexpr Reader readers[] = {readPNG, readGIF, readICO, readBMP, readTGA};

} // namespace

bool cPixSheet::spt_LoadPictureEx(LoadRequest& request, bool SaveFormat) {
    DestroyDIB(); // a load that fails leaves the instance empty
    for (const Reader reader : readers) {
        reader(request, *this);
        if (m_Handle != 0) break;
    }
    if (m_Handle == 0) return false;
    if (SaveFormat) {
        m_ImageByteCache = ByteArray(request.takeSource());
    }
    return true;
}

bool cPixSheet::LoadPicture_File(const std::string& FileName, std::int32_t iconCx, std::int32_t iconCy, bool SaveFormat,
                                 std::int32_t iconBitDepth) noexcept {
    const bool loaded = guarded("LoadPicture_File", false, [&] {
        const bool useUnicode = (m_osCAP & capNtFamily) != 0;
        const platform::UniqueFile file(iparseGetFileHandle(FileName, true, useUnicode));
        if (!file || platform::GetFileSize(file.get()) <= largestRefusedFile) return false;
        LoadRequest request(file.get(), IconRequest(iconCx, iconCy, iconBitDepth));
        return spt_LoadPictureEx(request, SaveFormat);
    });
    if (!loaded) DestroyDIB();
    return loaded;
}

bool cPixSheet::LoadPicture_Stream(const ByteArray& inStream, std::int32_t iconCx, std::int32_t iconCy,
                                   std::int32_t streamStart, std::int32_t streamLength, bool SaveFormat,
                                   std::int32_t iconBitDepth) noexcept {
    const bool loaded = guarded("LoadPicture_Stream", false, [&] {
        if (inStream.dimensions() != 1) return false;
        if (pvOverlapsStore(inStream)) { // the load frees the store before it reads
            return LoadPicture_Stream(ByteArray(inStream), iconCx, iconCy, streamStart, streamLength, SaveFormat,
                                      iconBitDepth);
        }
        const std::int64_t start = std::max(streamStart, inStream.lowerBound());
        const std::int64_t available = inStream.upperBound() - start + 1;
        const std::int64_t length = streamLength == 0 ? available : streamLength;
        if (length < smallestStream || length > available) return false;
        LoadRequest request(inStream, static_cast<std::size_t>(start - inStream.lowerBound()),
                            static_cast<std::size_t>(length), IconRequest(iconCx, iconCy, iconBitDepth));
        return spt_LoadPictureEx(request, SaveFormat);
    });
    if (!loaded) DestroyDIB();
    return loaded;
}

bool cPixSheet::LoadPicture_FromOrignalFormat(std::int32_t iconCx, std::int32_t iconCy,
                                              std::int32_t iconBitDepth) noexcept {
    const ByteArray source = std::move(m_ImageByteCache); // the load erases the cache, and keeps the same bytes anew
    return LoadPicture_Stream(source, iconCx, iconCy, 0, 0, true, iconBitDepth);
}

std::int32_t cPixSheet::SourceIconSizes(std::vector<IconSourceSize>& sizeArray) const noexcept {
    return guarded("SourceIconSizes", std::int32_t{0}, [&] {
        constexpr eImageFormat ofIcons[] = {imgIcon, imgCursor, imgIconARGB, imgPNGicon, imgCursorARGB};
        cICOparser parser;
        if (m_Handle == 0 || std::ranges::count(ofIcons, m_Format) == 0) return 0;
        if (!parser.LoadDirectory(m_ImageByteCache.bytes())) return 0;
        std::vector<IconSourceSize> sizes;
        sizes.reserve(static_cast<std::size_t>(parser.IconCount()));
        for (std::int32_t i = 0; i < parser.IconCount(); ++i)
            sizes.push_back({parser.Width(i), parser.Height(i), parser.bitDepth(i), parser.isPNG(i) ? 1 : 0});
        sizeArray = std::move(sizes);
        return parser.IconCount();
    });
}

bool cPixSheet::GetOrginalFormat(ByteArray& outStream) const noexcept {
    return guarded("GetOrginalFormat", false, [&] {
        outStream = m_ImageByteCache;
        return outStream.isAllocated();
    });
}

} // namespace pixkit
