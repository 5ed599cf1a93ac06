// The container of a PNG file that is written: chunks in the order that the PNG standard asks for (5.6).
#include "codecs/png/cPNGwriter.h"
#include "codecs/png/PngChoice.h"
#include "codecs/png/PngChunks.h"
#include "codecs/png/PngForm.h"
#include "codecs/png/PngRows.h"
#include "coding/deflate/Deflate.h"
#include "shared/Colors.h"

namespace pixkit {

namespace {

using Bytes = std::vector<std::uint8_t>;

void writeHeader(PngChunkWriter& out, ConstPixelView image, const PngForm& form, bool isInterlaced) {
    out.begin("IHDR");
    out.bigEndian32(image.width);
    out.bigEndian32(image.height);
    out.byte(form.bitDepth);
    out.byte(static_cast<std::uint8_t>(form.colorType));
    out.byte(0); // compression method
    out.byte(0); // filter method
    out.byte(isInterlaced ? 1 : 0);
    out.end();
}

Bytes makeFile(ConstPixelView image, bool hasAlpha, const PngForm& form, eFilterMethods filter,
               const PngProperties& props) {
    Bytes file;
    PngChunkWriter out(file);
    writeHeader(out, image, form, props.isInterlaced());
    pngWriteDensity(out, props);
    pngWritePalette(out, form);
    pngWriteTransparency(out, form);
    pngWriteBackground(out, form, props);
    pngWriteTime(out, props);
    pngWriteTexts(out, props);
    out.begin("IDAT");
    deflate::compressZlib(pngFilteredRows(image, hasAlpha, form, filter, props.isInterlaced()),
                          props.compressionLevel(), file);
    out.end();
    out.begin("IEND");
    out.end();
    return file;
}

Bytes smallestFile(ConstPixelView image, bool hasAlpha, const std::vector<PngForm>& forms, const PngProperties& props) {
    Bytes best;
    for (const PngChoice& choice : pngChoices(image, hasAlpha, forms, props)) {
        Bytes file = makeFile(image, hasAlpha, forms[choice.form], choice.filter, props);
        if (best.empty() || file.size() < best.size()) best = std::move(file);
    }
    return best;
}

std::vector<PngForm> formsOf(ConstPixelView image, bool hasAlpha, const PngProperties& props) {
    std::optional<std::array<std::uint8_t, 3>> background;
    if (const auto color = props.backgroundColor()) {
        const ColorChannels channels = iparseColorChannels(*color);
        background = {channels.r, channels.g, channels.b};
    }
    return pngFormsOf(image, hasAlpha, background);
}

} // namespace

std::vector<std::uint8_t> cPNGwriter::TrueColorAlpha(ConstPixelView image) {
    return smallestFile(image, true, {{PngColorType::rgba, 8, {}, {}, {}}}, PngProperties());
}

WrittenFile cPNGwriter::SavePNGex(const SourcePicture& Picture, const PngProperties& props) {
    if (!Picture.pixels) return refused(noImage);
    const bool hasAlpha = Picture.alpha != AlphaNone;
    return FileParts(smallestFile(Picture.pixels, hasAlpha, formsOf(Picture.pixels, hasAlpha, props), props));
}

} // namespace pixkit
