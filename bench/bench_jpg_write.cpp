// Writing whole JPEG files to memory: the component and its peers at the same quality, with what comes out: bytes, and
// how near the picture is (PSNR in decibels over B, G and R, as libjpeg decodes it).
#include "oracle/libjpegVerdict.h"
#include "peers/jpg_encoders.h"
#include "writing.h"
#include <stdexcept>

namespace {

using bench::Bytes;

struct Picture : bench::SourcePicture {
    Bytes rgb; // top row first, for peers that want it so
};

void writeWithPixkit(const Picture& picture, int quality, Bytes& out) {
    pixkit::ByteArray stream;
    if (!picture.sheet.SaveToStream_JPG(stream, quality)) throw std::runtime_error("not saved");
    out.assign(stream.data(), stream.data() + stream.size());
}

void writeWithLibjpeg(const Picture& picture, int quality, Bytes& out) {
    out = pixkit::test::encodeJpeg(picture.sheet.BitsPointer(), static_cast<std::uint32_t>(picture.sheet.Width()),
                                   static_cast<std::uint32_t>(picture.sheet.Height()), quality);
}

void writeWithStb(const Picture& picture, int quality, Bytes& out) {
    bench::encodeJpegStb(picture.rgb.data(), picture.sheet.Width(), picture.sheet.Height(), quality, out);
}

} // namespace

int main(int argc, char** argv) {
    static const auto pictures = bench::sourcePictures<Picture>({"photo_rgb", "wall_rgb", "ilace_rgb"});
    if (pictures.empty()) return bench::noPictures();
    for (const auto& picture : pictures) {
        for (std::size_t i = 0; i < picture->pixels(); ++i) {
            const std::uint8_t* const pixel = picture->pixelFromTop(i);
            picture->rgb.insert(picture->rgb.end(), {pixel[2], pixel[1], pixel[0]});
        }
        for (const int quality : {70, 90, 95}) {
            const auto add = [&](const char* who, auto write) {
                addWriting(
                    "jpg-write/" + picture->name + "-" + std::to_string(quality) + "/" + who, *picture,
                    [=](const Picture& source, Bytes& out) { write(source, quality, out); }, pixkit::test::decodeJpeg);
            };
            add("pixkit", writeWithPixkit);
            add("libjpeg-turbo", writeWithLibjpeg);
            add("stb_image_write", writeWithStb);
        }
    }
    return bench::run(argc, argv);
}
// SPDX-License-Identifier: MIT
