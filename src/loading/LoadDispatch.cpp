// Every load goes through spt_LoadPictureEx, which offers the source to the readers in a fixed order.
#include "codecs/Formats.h"
#include "codecs/GdiplusPictures.h"
#include "codecs/StatedSize.h"
#include "codecs/bmp/BmpInfo.h"
#include "codecs/ico/cICOparser.h"
#include "codecs/png/cPNGwriter.h"
#include "diagnostics/fileReason.h"
#include "loading/ForeignPictures.h"
#include "loading/ForeignSignatures.h"
#include "loading/LoadRequest.h"
#include "loading/loadMember.h"
#include "platform/files.h"
#include "platform/interaction.h"
#include "platform/pictures.h"
#include "shared/Files.h"
#include "shared/limits.h"
#include "surface/Capabilities.h"
#include "surface/HostAccess.h"
#include "surface/attended.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <utility>

namespace pixkit {

namespace {

// Below this size of an array no reader is asked. The minimum of files is another one; callers know both.
constexpr std::int64_t smallestStream = 20;

constexpr Reason nothingKept = "no load kept the bytes of its file";

// One reader's turn. Only an error that nobody expected is told; data of another format, or damaged, goes on to the
// next reader in silence.
ReadResult take(cPixSheet& host, ReadResult&& result) {
    if (result) return std::move(result);
    host.DestroyDIB(); // whatever the reader began
    if (result.outcome == ReadOutcome::failed && isAttended(host))
        platform::MessageBoxW(result.error, "pixkit", platform::messageBoxOk);
    return std::move(result);
}

// What GDI+ reads is kept as a PNG, which is read also where GDI+ is not.
std::vector<std::uint8_t> asPNG(const cPixSheet& host) {
    const SourcePicture picture(host);
    if (const auto cGDIp = HostAccess::GDIPlus(host)) {
        if (WrittenFile file = SaveToPNGByGDIplus(*cGDIp, picture); file.outcome())
            return std::move(file.parts()).join();
    }
    return std::move(cPNGwriter::SavePNGex(picture, PngProperties()).parts()).join();
}

// Why a file is not even read: its beginning states a size that the host may not hold.
Reason limitOfStart(const LoadRequest& request, const cPixSheet& host) {
    const Limits& limits = HostAccess::limits(host);
    if (!request.isFile() || !limits.areSet()) return {};
    const StatedSize size = statedSize(request.start(bytesOfStatedSize));
    return limits.problem(size.width, size.height);
}

Outcome readPicture(LoadRequest& request, cPixSheet& host);

// A BMP file that holds a JPEG or PNG file is that picture, which holds no other in its turn.
Outcome readEmbedded(LoadRequest& request, std::span<const std::uint8_t> bytes, cPixSheet& host) {
    LoadRequest embedded(bytes, request.icon());
    Outcome outcome = readPicture(embedded, host);
    if (outcome) HostAccess::ImageType(host, host.Alpha() == AlphaNone ? imgBitmap : imgBmpARGB);
    request.isReadByGDIplus = embedded.isReadByGDIplus;
    return outcome;
}

// First the formats whose signature the data bears. What they refuse as damaged goes on to the system's loader, which
// may show something of it, unless it is of a kind that not every such loader survives; what lacked memory does not,
// lest a picture come out as another. Data without a signature goes there at once, and what it does not know to GDI+.
// Formats without a signature come last. Of several refusals the first counts whose reader knew the data for its own,
// but for limits: what exceeds them nobody else is asked for.
Outcome readPicture(LoadRequest& request, cPixSheet& host) {
    if (const Reason limit = limitOfStart(request, host)) return refused(limit);
    const auto start = request.start(sniffedBytes);
    if (mayEmbedPicture(start)) {
        if (const auto bytes = embeddedPicture(request.bytes()); !bytes.empty())
            return readEmbedded(request, bytes, host);
    }
    Outcome refusal, verdict;
    ReadOutcome outcome{}; // of the reader asked last
    // True when no other reader is to be asked: then there is a verdict.
    const auto ask = [&](ReadResult&& answer, bool isKnown) {
        const ReadResult result = take(host, std::move(answer));
        if (!result && refusal && (isKnown || result.outcome != ReadOutcome::otherFormat)) refusal = result.why;
        outcome = result.outcome;
        verdict = result.why;
        return outcome == ReadOutcome::loaded || outcome == ReadOutcome::forbidden;
    };
    bool isKnown = false, isJpeg = false;
    bool goesToSystem = true;
    bool isRefused = false; // by a reader of this component
    for (const Format& format : formats()) {
        if (format.sniff == nullptr || !format.sniff(start)) continue;
        isKnown = true;
        isJpeg = isJpeg || format.id == FileFormat::jpg;
        if (format.read == nullptr) continue;
        if (ask(format.read(request, host), true)) return verdict;
        isRefused = true;
        goesToSystem = goesToSystem && (outcome == ReadOutcome::damaged || outcome == ReadOutcome::otherFormat) &&
                       format.goesToSystem != nullptr && format.goesToSystem(request.bytes());
    }
    // What bears no signature of those that the system's loader knows is not read for its sake.
    goesToSystem = goesToSystem && (isKnown || !request.isFile() || platform::mayBePicture(start));
    if (goesToSystem && ask(LoadSystemPicture(request.bytes(), host), isKnown)) return verdict;
    if (isJpeg && !platform::canLoadJpeg()) refusal = refused("JPEG: libturbojpeg.so.0 cannot be loaded");
    // Some imitations of GDI+ show more of damaged files than there is, or read them for ever.
    if (!isRefused && host.isGDIplusEnabled() && ask(LoadByGDIplus(request.bytes(), host), false)) {
        request.isReadByGDIplus = true;
        return verdict;
    }
    for (const Format& format : formats()) {
        if (format.sniff == nullptr && ask(format.read(request, host), false)) return verdict;
    }
    return refusal ? refused(reasonOfUnknown(start)) : refusal;
}

// Why a file that cannot be opened cannot.
Reason openingProblem(const std::string& FileName, bool useUnicode) {
    const Reason reason = fileReason("the file cannot be opened");
    if (FileName.empty()) return "the name of the file is empty";
    return iparseIsDirectory(FileName, useUnicode) ? Reason("it is a folder") : reason;
}

} // namespace

Outcome spt_LoadPictureEx(cPixSheet& host, LoadRequest& request, bool SaveFormat) {
    host.DestroyDIB();
    Limits& limits = HostAccess::state(host).m_limits;
    const Limits::Holding holding(limits, limits.memory == 0 ? 0 : request.bytesHeld(SaveFormat));
    if (const Reason limit = limits.problem(0, 0)) return refused(limit);
    Outcome outcome = readPicture(request, host);
    if (outcome && SaveFormat)
        HostAccess::SetOriginalFormat(host, ByteArray(request.isReadByGDIplus ? asPNG(host) : request.takeSource()));
    return outcome;
}

bool cPixSheet::LoadPicture_File(const std::string& FileName, std::int32_t iconCx, std::int32_t iconCy, bool SaveFormat,
                                 std::int32_t iconBitDepth) noexcept {
    const Call call(*this, "LoadPicture_File", "FileName, iconCx, iconCy, SaveFormat, iconBitDepth", FileName, iconCx,
                    iconCy, SaveFormat, iconBitDepth);
    return loadMember(call, *this, [&] {
        const bool useUnicode = (state().m_osCAP & capNtFamily) != 0;
        const platform::UniqueFile file(iparseGetFileHandle(FileName, true, useUnicode));
        if (!file) return refused(openingProblem(FileName, useUnicode));
        const std::int64_t size = platform::GetFileSize(file.get());
        if (size < 0) return refused(fileReason("the file cannot be read"));
        if (size <= largestRefusedFile) return refused("files of 56 bytes or less are not read");
        LoadRequest request(file.get(), IconRequest(iconCx, iconCy, iconBitDepth));
        return spt_LoadPictureEx(*this, request, SaveFormat);
    });
}

bool cPixSheet::LoadPicture_Stream(const ByteArray& inStream, std::int32_t iconCx, std::int32_t iconCy,
                                   std::int32_t streamStart, std::int32_t streamLength, bool SaveFormat,
                                   std::int32_t iconBitDepth) noexcept {
    const Call call(*this, "LoadPicture_Stream",
                    "inStream, iconCx, iconCy, streamStart, streamLength, SaveFormat, iconBitDepth", inStream, iconCx,
                    iconCy, streamStart, streamLength, SaveFormat, iconBitDepth);
    return loadMember(call, *this, [&] {
        if (!inStream.isAllocated()) return refused("there are no bytes");
        if (inStream.dimensions() != 1) return refused("the array has more than one dimension");
        if (state().pvOverlapsStore(inStream)) { // the load frees the store before it reads
            LoadPicture_Stream(ByteArray(inStream), iconCx, iconCy, streamStart, streamLength, SaveFormat,
                               iconBitDepth);
            return state().m_outcome;
        }
        const std::int64_t start = std::max(streamStart, inStream.lowerBound());
        const std::int64_t available = inStream.upperBound() - start + 1;
        const std::int64_t length = streamLength == 0 ? available : streamLength;
        if (length > available) return refused("the array ends before as many bytes");
        if (length < smallestStream) return refused("less than 20 bytes are not read");
        LoadRequest request(inStream, static_cast<std::size_t>(start - inStream.lowerBound()),
                            static_cast<std::size_t>(length), IconRequest(iconCx, iconCy, iconBitDepth));
        return spt_LoadPictureEx(*this, request, SaveFormat);
    });
}

bool cPixSheet::LoadPicture_Stream(std::span<const std::uint8_t> inStream, std::int32_t iconCx, std::int32_t iconCy,
                                   std::int32_t streamStart, std::int32_t streamLength, bool SaveFormat,
                                   std::int32_t iconBitDepth) noexcept {
    if (!std::in_range<std::uint32_t>(inStream.size()))
        return loadMember(Call(*this, "LoadPicture_Stream"), *this,
                          [] { return refused("more bytes than an array can have"); });
    // Nothing is written there: arrays do not tell bytes that may be written from others.
    auto* const bytes = const_cast<std::uint8_t*>(inStream.data());
    return LoadPicture_Stream(ByteArray::borrow(bytes, {0, static_cast<std::uint32_t>(inStream.size())}), iconCx,
                              iconCy, streamStart, streamLength, SaveFormat, iconBitDepth);
}

bool cPixSheet::LoadPicture_FromOrignalFormat(std::int32_t iconCx, std::int32_t iconCy,
                                              std::int32_t iconBitDepth) noexcept {
    if (!state().m_ImageByteCache.isAllocated()) { // nothing to load, so nothing that would take the image's place
        state().m_outcome.refuse(nothingKept);
        return false;
    }
    const ByteArray source =
        std::move(state().m_ImageByteCache); // the load erases the cache, and keeps the same bytes anew
    const Limits::Holding holding(state().m_limits,
                                  static_cast<double>(source.size())); // those, and the same bytes anew
    return LoadPicture_Stream(source, iconCx, iconCy, 0, 0, true, iconBitDepth);
}

std::int32_t cPixSheet::SourceIconSizes(std::vector<IconSourceSize>& sizeArray) const noexcept {
    std::int32_t count = 0;
    attempt(Call(*this, "SourceIconSizes", "sizeArray", sizeArray), [&] {
        constexpr eImageFormat ofIcons[] = {imgIcon, imgCursor, imgIconARGB, imgPNGicon, imgCursorARGB};
        cICOparser parser;
        if (state().m_Handle == 0) return refused(noImage);
        if (std::ranges::count(ofIcons, state().m_Format) == 0) return refused("the image came from no icon file");
        if (!state().m_ImageByteCache.isAllocated()) return refused(nothingKept);
        if (Outcome loaded = parser.LoadDirectory(state().m_ImageByteCache.bytes()); !loaded) return loaded;
        std::vector<IconSourceSize> sizes;
        sizes.reserve(static_cast<std::size_t>(parser.IconCount()));
        for (std::int32_t i = 0; i < parser.IconCount(); ++i)
            sizes.push_back({parser.Width(i), parser.Height(i), parser.bitDepth(i), parser.isPNG(i) ? 1 : 0});
        sizeArray = std::move(sizes);
        count = parser.IconCount();
        return done();
    });
    return count;
}

bool cPixSheet::GetOrginalFormat(ByteArray& outStream) const noexcept {
    return attempt(Call(*this, "GetOrginalFormat", "outStream", outStream), [&] {
        outStream = state().m_ImageByteCache;
        return doneIf(outStream.isAllocated(), nothingKept);
    });
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
