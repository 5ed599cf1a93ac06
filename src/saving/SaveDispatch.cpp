// The members that save: each names a format by its options, and goes one of two ways.
#include "codecs/Formats.h"
#include "codecs/GdiplusPictures.h"
#include "codecs/ico/cICOparser.h"
#include "saving/Delivery.h"
#include "surface/Capabilities.h"
#include "surface/attempt.h"
#include "surface/attended.h"
#include <algorithm>
#include <new>
#include <string_view>

namespace pixkit {

namespace {

FileTarget targetOf(const cPixSheet& sheet, const std::string& FileName, bool PromptOverWrite) noexcept {
    return {FileName, PromptOverWrite, isAttended(sheet), (HostAccess::osCAP(sheet) & capNtFamily) != 0};
}

// Of JPEG files GDI+ is the first writer; of PNG files the second, when the component's own fails.
WrittenFile writeSheet(const cPixSheet& sheet, const SourcePicture& picture, const WriteOptions& options) {
    const auto tried = [](auto&& make) -> WrittenFile {
        try {
            return make();
        } catch (const std::bad_alloc&) {
            return refused(noMemory); // the other writer may need less, or have some
        }
    };
    const auto cGDIp = HostAccess::GDIPlus(sheet);
    if (!cGDIp) return write({&picture, 1}, options);
    if (const auto* const jpg = std::get_if<JpgOptions>(&options)) {
        if (WrittenFile file = tried([&] { return SaveToJPGByGDIplus(*cGDIp, picture, *jpg); }); file.outcome())
            return file;
    }
    if (!std::holds_alternative<const PngProperties*>(options)) return write({&picture, 1}, options);
    WrittenFile own = tried([&] { return write({&picture, 1}, options); });
    if (own.outcome() || !picture.pixels) return own;
    WrittenFile other = SaveToPNGByGDIplus(*cGDIp, picture);
    return other.outcome() ? std::move(other) : std::move(own); // with the reason of the first
}

// Nobody is asked about a file that will not be written for want of an image. The picture is looked at after the
// question, because a program's own code may run while it is open.
template <class... Parts>
bool toFile(const Call<Parts...>& call, const cPixSheet& sheet, const std::string& FileName, bool PromptOverWrite,
            const WriteOptions& options) noexcept {
    return attempt(call, [&] {
        if (sheet.Handle() == 0) return refused(noImage);
        SourcePicture picture; // outlives what is made of it
        return deliverToFile(targetOf(sheet, FileName, PromptOverWrite), [&] {
            picture = SourcePicture(sheet);
            return writeSheet(sheet, picture, options);
        });
    });
}

template <class... Parts>
bool toStream(const Call<Parts...>& call, const cPixSheet& sheet, ByteArray& outStream,
              const WriteOptions& options) noexcept {
    return attempt(call, [&] {
        const SourcePicture picture(sheet);
        return deliverToStream(outStream, writeSheet(sheet, picture, options));
    });
}

// Icon files are made of several pictures; without any, of the one that is asked, which saves nothing while it is
// empty. `deliver` is given what makes the file. Returns the number of images.
template <class... Parts, class Deliver>
std::int32_t saveIcon(const Call<Parts...>& call, const cPixSheet* self, std::span<const cPixSheet* const> Source,
                      std::span<const IconEntrySize> Sizes, IconFile kind, Deliver&& deliver) noexcept {
    std::vector<IconEntrySize> images;
    const bool isSaved = attempt(call, [&] {
        if (self->Handle() == 0) return refused(noImage);
        std::vector<SourcePicture> pictures;
        return deliver([&]() -> WrittenFile {
            for (const cPixSheet* sheet : Source.empty() ? std::span(&self, 1) : Source)
                pictures.push_back(sheet != nullptr ? SourcePicture(*sheet) : SourcePicture());
            if (Outcome checked = cICOparser::EntrySizes(pictures, Sizes, images, HostAccess::limits(*self)); !checked)
                return checked;
            return write(pictures, IcoOptions{Sizes, kind});
        });
    });
    return isSaved ? static_cast<std::int32_t>(images.size()) : 0;
}

// `extension` in lower case, the name in any.
bool endsWith(std::string_view name, std::string_view extension) {
    if (name.size() < extension.size()) return false;
    return std::ranges::equal(name.substr(name.size() - extension.size()), extension, [](char found, char wanted) {
        return found == wanted || (found >= 'A' && found <= 'Z' && found - 'A' + 'a' == wanted);
    });
}

IconFile iconFileOf(std::string_view name) {
    return endsWith(name, ".cur")   ? IconFile::cursor
           : endsWith(name, ".ico") ? IconFile::icon
                                    : IconFile::asFirstSource;
}

struct StreamForm {
    eStreamFormats format;
    std::size_t mostOptions;
};
constexpr StreamForm streamForms[] = {{streamBitmap, 2}, {streamIcon, 3 * std::size_t{0xFFFF}},
                                      {streamGIF, 2},    {streamPNG, 0},
                                      {streamTGA, 3},    {streamJPG, 1}};

std::vector<IconEntrySize> iconSizes(const std::vector<std::int32_t>& numbers) {
    std::vector<IconEntrySize> sizes;
    for (std::size_t i = 0; i + 2 < numbers.size(); i += 3)
        sizes.push_back({numbers[i], numbers[i + 1], numbers[i + 2]});
    return sizes;
}

} // namespace

bool cPixSheet::SaveToFile_Bitmap(const std::string& FileName, bool KeepPreMultipliedPixels,
                                  std::int32_t TransparentFillColor, bool PromptOverWrite) const noexcept {
    return toFile(Call(*this, "SaveToFile_Bitmap",
                       "FileName, KeepPreMultipliedPixels, TransparentFillColor, PromptOverWrite", FileName,
                       KeepPreMultipliedPixels, TransparentFillColor, PromptOverWrite),
                  *this, FileName, PromptOverWrite, BmpOptions{KeepPreMultipliedPixels, TransparentFillColor});
}

bool cPixSheet::SaveToStream_Bitmap(ByteArray& outStream, bool KeepPreMultipliedPixels,
                                    std::int32_t TransparentFillColor) const noexcept {
    return toStream(Call(*this, "SaveToStream_Bitmap", "outStream, KeepPreMultipliedPixels, TransparentFillColor",
                         outStream, KeepPreMultipliedPixels, TransparentFillColor),
                    *this, outStream, BmpOptions{KeepPreMultipliedPixels, TransparentFillColor});
}

bool cPixSheet::SaveToFile_TGA(const std::string& FileName, bool Compress, bool ReduceBitDepth,
                               bool AllowPreMultipliedPixels, bool PromptOverWrite) const noexcept {
    return toFile(Call(*this, "SaveToFile_TGA",
                       "FileName, Compress, ReduceBitDepth, AllowPreMultipliedPixels, PromptOverWrite", FileName,
                       Compress, ReduceBitDepth, AllowPreMultipliedPixels, PromptOverWrite),
                  *this, FileName, PromptOverWrite, TgaOptions{AllowPreMultipliedPixels, Compress, ReduceBitDepth});
}

bool cPixSheet::SaveToStream_TGA(ByteArray& outStream, bool Compress, bool ReduceBitDepth,
                                 bool AllowPreMultipliedPixels) const noexcept {
    return toStream(Call(*this, "SaveToStream_TGA", "outStream, Compress, ReduceBitDepth, AllowPreMultipliedPixels",
                         outStream, Compress, ReduceBitDepth, AllowPreMultipliedPixels),
                    *this, outStream, TgaOptions{AllowPreMultipliedPixels, Compress, ReduceBitDepth});
}

bool cPixSheet::SaveToFile_PNG(const std::string& FileName, bool PromptOverWrite) const noexcept {
    return toFile(Call(*this, "SaveToFile_PNG", "FileName, PromptOverWrite", FileName, PromptOverWrite), *this,
                  FileName, PromptOverWrite, &state().m_PNGprops);
}

bool cPixSheet::SaveToStream_PNG(ByteArray& outStream) const noexcept {
    return toStream(Call(*this, "SaveToStream_PNG", "outStream", outStream), *this, outStream, &state().m_PNGprops);
}

bool cPixSheet::PngPropertySet(ePngProperties Property, const PngValue& Value, const std::string& Keyword) noexcept {
    return attempt(Call(*this, "PngPropertySet", "Property, Value, Keyword", Property, Value, Keyword),
                   [&] { return state().m_PNGprops.set(Property, Value, Keyword); });
}

PngValue cPixSheet::PngPropertyGet(ePngProperties Property, const std::string& Keyword) const noexcept {
    PngValue value;
    attempt(Call(*this, "PngPropertyGet", "Property, Keyword", Property, Keyword), [&] {
        value = state().m_PNGprops.get(Property, Keyword);
        return done();
    });
    return value;
}

bool cPixSheet::SaveToFile_JPG(const std::string& FileName, std::int32_t Quality, std::int32_t TransparentFillColor,
                               bool PromptOverWrite) const noexcept {
    return toFile(Call(*this, "SaveToFile_JPG", "FileName, Quality, TransparentFillColor, PromptOverWrite", FileName,
                       Quality, TransparentFillColor, PromptOverWrite),
                  *this, FileName, PromptOverWrite, JpgOptions{Quality, TransparentFillColor});
}

bool cPixSheet::SaveToStream_JPG(ByteArray& outStream, std::int32_t Quality) const noexcept {
    constexpr std::int32_t black = 0;
    return toStream(Call(*this, "SaveToStream_JPG", "outStream, Quality", outStream, Quality), *this, outStream,
                    JpgOptions{Quality, black});
}

bool cPixSheet::SaveToFile_GIF(const std::string& FileName, bool UseAdaptivePalette, std::uint8_t OpaquenessTolerance,
                               bool PromptOverWrite) const noexcept {
    return toFile(Call(*this, "SaveToFile_GIF", "FileName, UseAdaptivePalette, OpaquenessTolerance, PromptOverWrite",
                       FileName, UseAdaptivePalette, OpaquenessTolerance, PromptOverWrite),
                  *this, FileName, PromptOverWrite, GifOptions{UseAdaptivePalette, OpaquenessTolerance});
}

// PromptOverWrite is part of the interface only: an array is no file that could be lost.
bool cPixSheet::SaveToStream_GIF(ByteArray& outStream, bool UseAdaptivePalette, std::uint8_t OpaquenessTolerance,
                                 bool PromptOverWrite) const noexcept {
    return toStream(Call(*this, "SaveToStream_GIF",
                         "outStream, UseAdaptivePalette, OpaquenessTolerance, PromptOverWrite", outStream,
                         UseAdaptivePalette, OpaquenessTolerance, PromptOverWrite),
                    *this, outStream, GifOptions{UseAdaptivePalette, OpaquenessTolerance});
}

std::int32_t cPixSheet::SaveToFile_ICO(const std::string& FileName, std::span<const cPixSheet* const> Source,
                                       bool PromptOverWrite, std::span<const IconEntrySize> Sizes) const noexcept {
    const Call call(*this, "SaveToFile_ICO", "FileName, Source, PromptOverWrite, Sizes", FileName, Source,
                    PromptOverWrite, Sizes);
    return saveIcon(call, this, Source, Sizes, iconFileOf(FileName),
                    [&](const auto& file) { return deliverToFile(targetOf(*this, FileName, PromptOverWrite), file); });
}

std::int32_t cPixSheet::SaveToStream_ICO(ByteArray& outStream, std::span<const cPixSheet* const> Source,
                                         std::span<const IconEntrySize> Sizes) const noexcept {
    const Call call(*this, "SaveToStream_ICO", "outStream, Source, Sizes", outStream, Source, Sizes);
    return saveIcon(call, this, Source, Sizes, IconFile::asFirstSource,
                    [&](const auto& file) { return deliverToStream(outStream, file()); });
}

// Numbers stand for all kinds of options, true for any but 0, so that callers of every kind can list them.
ByteArray cPixSheet::StreamOf(std::int32_t Format, const std::vector<std::int32_t>& Options) const noexcept {
    ByteArray stream;
    const auto option = [&](std::size_t place, std::int32_t otherwise) {
        return place < Options.size() ? Options[place] : otherwise;
    };
    attempt(Call(*this, "StreamOf", "Format, count of Options", Format, Options.size()), [&] {
        const auto* const form = std::ranges::find(streamForms, Format, &StreamForm::format);
        if (form == std::end(streamForms)) return refused("no format that StreamOf makes");
        if (Options.size() > form->mostOptions) return refused("more options than the format has");
        switch (form->format) {
        case streamBitmap:
            SaveToStream_Bitmap(stream, option(0, 0) != 0, option(1, 0));
            break;
        case streamIcon:
            if (Options.size() % 3 != 0) return refused("sizes of an icon are width, height and bit depth each");
            SaveToStream_ICO(stream, {}, iconSizes(Options));
            break;
        case streamGIF:
            SaveToStream_GIF(stream, option(0, 1) != 0, static_cast<std::uint8_t>(std::clamp(option(1, 128), 0, 255)));
            break;
        case streamPNG:
            SaveToStream_PNG(stream);
            break;
        case streamTGA:
            SaveToStream_TGA(stream, option(0, 0) != 0, option(1, 0) != 0, option(2, 0) != 0);
            break;
        case streamJPG:
            SaveToStream_JPG(stream, option(0, 70));
            break;
        }
        return state().m_outcome;
    });
    return stream;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
