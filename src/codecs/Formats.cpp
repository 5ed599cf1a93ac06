#include "codecs/Formats.h"
#include "codecs/bmp/cBMPparser.h"
#include "codecs/gif/cGIFparser.h"
#include "codecs/ico/cICOparser.h"
#include "codecs/jpg/cJPGWriter.h"
#include "codecs/png/cPNGparser.h"
#include "codecs/png/cPNGwriter.h"
#include "codecs/tga/cTGAparser.h"
#include <algorithm>

namespace pixkit {

namespace {

using Start = std::span<const std::uint8_t>;
using Pictures = std::span<const SourcePicture>;

// Whether data begins with a signature given in small letters; capitals count as the same.
template <std::size_t size>
bool begins(Start start, const std::uint8_t (&signature)[size]) noexcept {
    const auto lower = [](std::uint8_t byte) { return byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte; };
    return start.size() >= size && std::ranges::equal(start.first(size), signature, {}, lower);
}

constexpr Format rows[] = {
    {FileFormat::png, "a PNG file", ".png", "",
     [](Start start) noexcept {
         return begins(start, {0x89, 'p', 'n', 'g'});
     },
     [](PictureSource& source, cPixSheet& host) {
         return source.isFile() ? cPNGparser().LoadFile(source, host) : cPNGparser().LoadStream(source.bytes(), host);
     },
     [](Start /*file*/) noexcept { return true; },
     [](Pictures pictures, const WriteOptions& options) {
         return cPNGwriter::SavePNGex(pictures.front(), *std::get<const PngProperties*>(options));
     }},
    {FileFormat::gif, "a GIF file", ".gif", "",
     [](Start start) noexcept {
         return begins(start, {'g', 'i', 'f'});
     },
     [](PictureSource& source, cPixSheet& host) { return cGIFparser().LoadStream(source.bytes(), host); },
     cGIFparser::goesToSystem,
     [](Pictures pictures, const WriteOptions& options) {
         return cGIFparser::SaveAsGIF(pictures.front(), std::get<GifOptions>(options));
     }},
    {FileFormat::ico, "an icon file", ".ico", ".cur", isIconFile,
     [](PictureSource& source, cPixSheet& host) {
         const IconRequest& icon = source.icon();
         return cICOparser().LoadStream(source.bytes(), icon.cX, icon.cY, host, icon.bitDepth);
     },
     nullptr, // some loaders read where an icon says that it is, outside of the file
     [](Pictures pictures, const WriteOptions& options) {
         return cICOparser::SaveAsIcon(pictures, std::get<IcoOptions>(options));
     }},
    {FileFormat::bmp, "a BMP file", ".bmp", "",
     [](Start start) noexcept { return start.size() >= 2 && start[0] == 'B' && start[1] == 'M'; },
     [](PictureSource& source, cPixSheet& host) { return cBMPparser::LoadStream(source.bytes(), host); },
     nullptr, // the reader shows all that there is
     [](Pictures pictures, const WriteOptions& options) {
         return cBMPparser::SaveAsBMP(pictures.front(), std::get<BmpOptions>(options));
     }},
    {FileFormat::jpg, "a JPEG file", ".jpg", ".jpeg",
     [](Start start) noexcept {
         return begins(start, {0xFF, 0xD8, 0xFF});
     },
     nullptr, [](Start /*file*/) noexcept { return true; },
     [](Pictures pictures, const WriteOptions& options) {
         return cJPGWriter::SaveAsJPG(pictures.front(), std::get<JpgOptions>(options));
     }},
    {FileFormat::tga, "a TGA file", ".tga", "", nullptr,
     [](PictureSource& source, cPixSheet& host) {
         return source.isFile() ? cTGAparser().LoadFile(source, host)
                                : cTGAparser().LoadStream(source.bytes(), host, source.offset());
     },
     nullptr, // it has been asked before
     [](Pictures pictures, const WriteOptions& options) {
         return cTGAparser::SaveAsTGA(pictures.front(), std::get<TgaOptions>(options));
     }},
};

} // namespace

std::span<const Format> formats() noexcept {
    return rows;
}

WrittenFile write(std::span<const SourcePicture> pictures, const WriteOptions& options) {
    const auto row = std::ranges::find(rows, static_cast<FileFormat>(options.index()), &Format::id);
    return row->write(pictures, options);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
