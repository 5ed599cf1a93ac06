// The container of a PNG file that is written: chunks in the order that the PNG standard asks for (5.6).
#include "codecs/png/cPNGwriter.h"
#include "codecs/png/PngChunks.h"
#include "codecs/png/PngForm.h"
#include "codecs/png/PngRows.h"
#include "coding/deflate/Deflate.h"
#include "shared/modParsers.h"
#include "surface/Capabilities.h"
#include "surface/HostAccess.h"

namespace pixkit {

namespace {

using Bytes = std::vector<std::uint8_t>;

void writeHeader(PngChunkWriter& out, ConstPixelView image, const PngForm& form, bool isInterlaced) {
    out.begin("IHDR");
    out.put32(static_cast<std::uint32_t>(image.width));
    out.put32(static_cast<std::uint32_t>(image.height));
    out.put8(form.bitDepth);
    out.put8(static_cast<std::uint32_t>(form.colorType));
    out.put8(0); // compression method
    out.put8(0); // filter method
    out.put8(isInterlaced ? 1 : 0);
    out.end();
}

Bytes makeFile(ConstPixelView image, bool hasAlpha, const PngForm& form, const PngProperties& props) {
    PngChunkWriter out;
    writeHeader(out, image, form, props.isInterlaced());
    pngWriteDensity(out, props);
    pngWritePalette(out, form);
    pngWriteTransparency(out, form);
    pngWriteBackground(out, form, props);
    pngWriteTime(out, props);
    pngWriteTexts(out, props);
    out.begin("IDAT");
    deflate::compressZlib(pngFilteredRows(image, hasAlpha, form, props.filter(), props.isInterlaced()),
                          props.compressionLevel(), out.bytes());
    out.end();
    out.begin("IEND");
    out.end();
    return std::move(out.bytes());
}

Bytes smallestFile(ConstPixelView image, bool hasAlpha, const PngProperties& props) {
    std::optional<std::array<std::uint8_t, 3>> background;
    if (const auto color = props.backgroundColor()) {
        const ColorChannels channels = iparseColorChannels(*color);
        background = {channels.r, channels.g, channels.b};
    }
    const std::vector<PngForm> forms = pngFormsOf(image, hasAlpha, background);
    // For small pictures the palette's own bytes count, and trying costs little.
    constexpr std::size_t smallPicture = 65536;
    Bytes best = makeFile(image, hasAlpha, forms.front(), props);
    if (image.width * image.height > smallPicture) return best;
    for (std::size_t i = 1; i < forms.size(); ++i) {
        Bytes other = makeFile(image, hasAlpha, forms[i], props);
        if (other.size() < best.size()) best = std::move(other);
    }
    return best;
}

} // namespace

std::vector<std::uint8_t> cPNGwriter::TrueColorAlpha(ConstPixelView image) {
    return makeFile(image, true, {PngColorType::rgba, 8, {}, {}, {}}, PngProperties());
}

bool cPNGwriter::SavePNGex(const cPixSheet& cHost, const std::string& FileName, ByteArray& outStream,
                           const PngProperties& props) {
    const ConstPixelView image = HostAccess::pixels(cHost);
    if (!image) return false;
    Bytes file = smallestFile(image, cHost.Alpha() != AlphaNone, props);
    return iparseDeliver(std::move(file), FileName, (HostAccess::osCAP(cHost) & capNtFamily) != 0, outStream);
}

} // namespace pixkit
