// Decoding run-length coded TGA files, made from the pictures of the corpus by our own writer, against stb_image: once
// for four channels as it gives them, and once followed by what brings them into our form (premultiplied B, G, R, A,
// rows bottom-up).
#include "peers/png_decoders.h"
#include "reading.h"

namespace {

// 24 or 32 bits as the picture has alpha or not, and a palette where it has few colours.
bench::Bytes tgaOf(const pixkit::cPixSheet& sheet, const std::string& name) {
    pixkit::ByteArray stream;
    if (!sheet.SaveToStream_TGA(stream, true)) throw std::runtime_error(name + " cannot be coded");
    return {stream.data(), stream.data() + stream.size()};
}

void decodeStbIntoForm(const bench::Bytes& file) {
    benchmark::DoNotOptimize(bench::decodeStb(file).pixels.get());
}

} // namespace

int main(int argc, char** argv) {
    static const auto pictures = bench::codedPictures(tgaOf);
    if (pictures.empty()) return bench::noPictures();
    for (const bench::CodedPicture& picture : pictures) {
        const std::string name = "tga-rle/" + picture.name + "-" + std::to_string(picture.file[16]) + "/";
        addReading(name + "pixkit", picture, bench::decodeOurs);
        addReading(name + "stb_image", picture, bench::decodeStbAlone);
        addReading(name + "stb_image+form", picture, decodeStbIntoForm);
    }
    return bench::run(argc, argv);
}
// SPDX-License-Identifier: MIT
