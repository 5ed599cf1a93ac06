// Every load goes through spt_LoadPictureEx, which offers the source to the readers in a fixed order.
#include "codecs/Formats.h"
#include "codecs/ico/cICOparser.h"
#include "diagnostics/guard.h"
#include "loading/ForeignPictures.h"
#include "loading/LoadRequest.h"
#include "loading/loadMember.h"
#include "platform/files.h"
#include "platform/interaction.h"
#include "shared/Files.h"
#include "shared/limits.h"
#include "surface/Capabilities.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <utility>

namespace pixkit {

namespace {

// Below this size of an array no reader is asked. The minimum of files is another one; callers know both.
constexpr std::int64_t smallestStream = 20;

// One reader's turn. Only an error that nobody expected is told; data of another format, or damaged, goes on to the
// next reader in silence.
bool take(cPixSheet& host, ReadResult&& result) {
    if (result) return true;
    host.DestroyDIB(); // whatever the reader began
    if (result.outcome == ReadOutcome::failed) platform::MessageBoxW(result.error, "pixkit", platform::messageBoxOk);
    return false;
}

// First the formats whose signature the data bears. Only where it bears none the system's loader is asked: what was
// refused as damaged some systems' loaders might show something of, others of the same name not, and some fall over a
// GIF without colours or an icon that lies outside the file. Formats without a signature come last.
bool readPicture(LoadRequest& request, cPixSheet& host) {
    const auto start = request.start(sniffedBytes);
    bool isRecognised = false;
    for (const Format& format : formats()) {
        if (format.read == nullptr || format.sniff == nullptr || !format.sniff(start)) continue;
        isRecognised = true;
        if (take(host, format.read(request, host))) return true;
    }
    if (!isRecognised && take(host, LoadSystemPicture(request.bytes(), host))) return true;
    return std::ranges::any_of(formats(), [&](const Format& format) {
        return format.sniff == nullptr && take(host, format.read(request, host));
    });
}

} // namespace

bool cPixSheet::spt_LoadPictureEx(LoadRequest& request, bool SaveFormat) {
    DestroyDIB();
    if (!readPicture(request, *this)) return false;
    if (SaveFormat) m_ImageByteCache = ByteArray(request.takeSource());
    return true;
}

bool cPixSheet::LoadPicture_File(const std::string& FileName, std::int32_t iconCx, std::int32_t iconCy, bool SaveFormat,
                                 std::int32_t iconBitDepth) noexcept {
    const Call call(*this, "LoadPicture_File", "FileName, iconCx, iconCy, SaveFormat, iconBitDepth", FileName, iconCx,
                    iconCy, SaveFormat, iconBitDepth);
    return loadMember(call, *this, [&] {
        const bool useUnicode = (m_osCAP & capNtFamily) != 0;
        const platform::UniqueFile file(iparseGetFileHandle(FileName, true, useUnicode));
        if (!file || platform::GetFileSize(file.get()) <= largestRefusedFile) return false;
        LoadRequest request(file.get(), IconRequest(iconCx, iconCy, iconBitDepth));
        return spt_LoadPictureEx(request, SaveFormat);
    });
}

bool cPixSheet::LoadPicture_Stream(const ByteArray& inStream, std::int32_t iconCx, std::int32_t iconCy,
                                   std::int32_t streamStart, std::int32_t streamLength, bool SaveFormat,
                                   std::int32_t iconBitDepth) noexcept {
    const Call call(*this, "LoadPicture_Stream",
                    "inStream, iconCx, iconCy, streamStart, streamLength, SaveFormat, iconBitDepth", inStream, iconCx,
                    iconCy, streamStart, streamLength, SaveFormat, iconBitDepth);
    return loadMember(call, *this, [&] {
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
}

bool cPixSheet::LoadPicture_FromOrignalFormat(std::int32_t iconCx, std::int32_t iconCy,
                                              std::int32_t iconBitDepth) noexcept {
    if (!m_ImageByteCache.isAllocated()) return false; // nothing to load, so nothing that would take the image's place
    const ByteArray source = std::move(m_ImageByteCache); // the load erases the cache, and keeps the same bytes anew
    return LoadPicture_Stream(source, iconCx, iconCy, 0, 0, true, iconBitDepth);
}

std::int32_t cPixSheet::SourceIconSizes(std::vector<IconSourceSize>& sizeArray) const noexcept {
    return guarded(Call(*this, "SourceIconSizes", "sizeArray", sizeArray), std::int32_t{0}, [&] {
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
    return guarded(Call(*this, "GetOrginalFormat", "outStream", outStream), false, [&] {
        outStream = m_ImageByteCache;
        return outStream.isAllocated();
    });
}

} // namespace pixkit
