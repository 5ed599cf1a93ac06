#include "codecs/GdiplusPictures.h"
#include "codecs/SystemLimits.h"
#include "codecs/jpg/cJPGWriter.h"
#include "gdiplus/cGDIPlus.h"
#include "kernels/kernels.h"
#include "shared/AlphaChannel.h"
#include "shared/Colors.h"
#include "shared/checked.h"
#include "surface/HostAccess.h"

namespace pixkit {

namespace {

// The largest picture of the PNG reader's: its bits can be counted in 31 bits.
bool isWithinLimits(std::int32_t width, std::int32_t height) noexcept {
    const auto rowBits = checkedMultiply(width, 32);
    return rowBits && checkedMultiply(*rowBits, height);
}

WrittenFile whole(std::vector<std::uint8_t>&& bytes) {
    if (bytes.empty()) return refused("GDI+ does not write it");
    return FileParts(std::move(bytes));
}

} // namespace

ReadResult DecodeByGDIplus(std::span<const std::uint8_t> Stream, cPixSheet& Host, bool mayBeUnused) {
    const auto cGDIp = HostAccess::GDIPlus(Host);
    Reason limit;
    const bool isDecoded = cGDIp && cGDIp->GDIplusLoadPNG(Stream, [&](std::int32_t width, std::int32_t height) {
        limit = systemLimit(Host, width, height);
        const bool isMade = !limit && isWithinLimits(width, height) && Host.InitializeDIB(width, height);
        return isMade ? HostAccess::pixels(Host) : PixelView();
    });
    if (!isDecoded) {
        Host.DestroyDIB();
        return limit ? ReadResult::forbidden(limit) : ReadResult::otherFormat("GDI+ does not read it");
    }
    Host.Alpha(premultiplyStraight(HostAccess::pixels(Host), mayBeUnused));
    HostAccess::ImageType(Host, imgPNG);
    return ReadResult::loaded();
}

ReadResult LoadByGDIplus(std::span<const std::uint8_t> Stream, cPixSheet& Host) {
    return DecodeByGDIplus(Stream, Host, true);
}

WrittenFile SaveToJPGByGDIplus(cGDIPlus& cGDIp, const SourcePicture& Picture, const JpgOptions& Options) {
    const ConstPixelView image = Picture.pixels;
    if (!image) return refused(noImage);
    if (!cGDIp.canSaveJPG() || !cJPGWriter::fits(image)) return whole({});
    // GDI+ would not flatten but divide colours by their alpha.
    std::vector<std::uint8_t> flattened(image.width * image.height * 4);
    if (Picture.isToBeFlattened()) {
        iparseBlendImageToColor(image, Options.TransparentFillColor, flattened, false);
    } else {
        std::copy_n(image.bits, flattened.size(), flattened.begin());
        kernels::table().setOpaque(flattened.data(), image.width * image.height);
    }
    return whole(cGDIp.SaveToJPG({flattened.data(), image.width, image.height, image.width * 4}, Options.Quality));
}

WrittenFile SaveToPNGByGDIplus(cGDIPlus& cGDIp, const SourcePicture& Picture) {
    return whole(cGDIp.SaveToPNG(Picture.pixels));
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
