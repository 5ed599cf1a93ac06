#include "cli/Thumbnails.h"
#include "cli/EffectParsing.h"
#include "cli/FileHeaders.h"
#include "cli/Names.h"
#include "cli/Saving.h"
#include "cli/Text.h"
#include "surface/cPixSheet.h"
#include <filesystem>
#include <ostream>
#include <utility>
#include <vector>

namespace pixkit::cli {

namespace fs = std::filesystem;

namespace {

constexpr const char *thumbnailFolder = "thumbnails/", *pictureFolder = "pictures/";
constexpr std::size_t mostBytes = 30000;
constexpr std::int32_t largestSide = 320;

// From one file to another as a link in the first's page. Folders are looked up, so that `..` leads where it is meant
// to; the file itself may be a link.
std::string linkTo(const fs::path& file, const fs::path& folder) {
    const fs::path absolute = fs::weakly_canonical(fs::absolute(file).parent_path()) / file.filename();
    const fs::path relative = absolute.lexically_relative(fs::weakly_canonical(fs::absolute(folder)));
    if (!relative.empty()) return urlPath(toUtf8(relative));
    const std::string drive = toUtf8(absolute.root_name()); // another one than the page's, or another machine
    return (drive.starts_with("//") ? "file:" : "file:///") + drive + urlPath(toUtf8(absolute).substr(drive.size()));
}

// FNV-1a, in hexadecimal digits.
std::string checksumOf(const std::string& text) {
    std::uint64_t sum = 0xCBF29CE484222325U;
    for (const char c : text)
        sum = (sum ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    std::string digits;
    for (int shift = 60; shift >= 0; shift -= 4)
        digits += "0123456789abcdef"[sum >> shift & 15];
    return digits;
}

bool isForBrowsers(FileFormat format) {
    return format == FileFormat::png || format == FileFormat::jpg || format == FileFormat::gif;
}

bool resizeDown(cPixSheet& sheet, std::int32_t side) {
    const std::string size = std::to_string(side);
    std::vector<EffectStep> steps = {makeStep("--resize", size + "x" + size + ":down")};
    settleFilters(steps);
    return steps.front().apply(sheet);
}

// The picture's bytes, few enough, and their extension: JPEG for what is opaque, and PNG for what is not, or is small
// and has the fewer bytes that way. The picture itself becomes as small as that takes.
std::pair<ByteArray, const char*> encodeSmall(cPixSheet& sheet, bool isWhole) {
    ByteArray bytes;
    const bool isOpaque = sheet.Alpha() == AlphaNone;
    for (const std::int32_t side : {largestSide, 256, 200, 160, 128, 104, 80}) {
        if (!resizeDown(sheet, side)) throw Failed("the thumbnail", problemOf(sheet));
        if ((isWhole || !isOpaque) && sheet.SaveToStream_PNG(bytes) && bytes.size() <= mostBytes)
            return {std::move(bytes), ".png"};
        isWhole = false; // and seen from near no longer
        for (const std::int32_t quality : {82, 65, 45})
            if (isOpaque && sheet.SaveToStream_JPG(bytes, quality) && bytes.size() <= mostBytes)
                return {std::move(bytes), ".jpg"};
    }
    throw Failed("the thumbnail", problemOf(sheet));
}

} // namespace

std::vector<fs::path> prepareThumbnails(const std::string& gallery) {
    std::vector<fs::path> made;
    for (const char* folder : {"", thumbnailFolder, pictureFolder}) {
        std::error_code error;
        const fs::path path = toPath(gallery) / folder;
        const bool isThere = fs::is_directory(path, error);
        fs::create_directories(path, error);
        if (error) throw Failed(gallery, "cannot be made: " + error.message());
        if (!isThere) made.push_back(path);
    }
    return made;
}

GalleryPicture::GalleryPicture(const PictureSource& source, const GalleryRequest& request)
    : m_source(source), m_request(request) {
    const IconChoice& icon = request.loading.icon;
    if (!source.bytes) m_link = linkTo(toPath(source.name), toPath(request.folder));
    std::string made = m_link.empty() ? source.name : m_link;
    for (const std::int32_t option : {icon.width, icon.height, icon.depth, std::int32_t{request.loading.orients}})
        made += ' ' + std::to_string(option);
    m_key = checksumOf(made);
    const auto facts = factsOf(source);
    std::error_code gone;
    m_bytes = source.bytes ? source.bytes->size() : fs::file_size(toPath(source.name), gone);
    if (gone) m_bytes = 0;
    const auto format = facts ? std::optional(facts->container) : formatOf(toPath(source.name));
    m_format = format ? containerName(*format) : "picture";
    if (facts && isForBrowsers(facts->container) && !source.bytes) {
        constexpr std::uint8_t firstOnItsSide = 5; // of EXIF's orientations
        m_whole = {facts->width, facts->height};
        if (request.loading.orients && facts->notes.orientation >= firstOnItsSide)
            std::swap(m_whole.width, m_whole.height);
    } else {
        m_converted = pictureFolder + m_key + ".png";
        m_link = m_converted;
    }
}

std::string GalleryPicture::inGallery(const std::string& file) const {
    return toUtf8(toPath(m_request.folder) / toPath(file));
}

bool GalleryPicture::isKept(const std::string& file) const {
    std::error_code error;
    const auto made = fs::last_write_time(toPath(inGallery(file)), error);
    return m_request.replacing != Replacing::always && !m_source.bytes && !error &&
           made == fs::last_write_time(toPath(m_source.name), error) && !error;
}

// Pictures may get each other's names: what was made of one has its time, so that it is not taken for another's.
void GalleryPicture::takeTimeOfPicture(const std::string& file) const {
    std::error_code error;
    const auto time = fs::last_write_time(toPath(m_source.name), error);
    if (!m_source.bytes && !error) fs::last_write_time(toPath(inGallery(file)), time, error);
}

GalleryPicture::Thumbnail GalleryPicture::keptThumbnail() {
    if (!m_converted.empty()) {
        const auto facts = isKept(m_converted) ? factsOf(inGallery(m_converted)) : std::nullopt;
        if (!facts) return {};
        m_whole = {facts->width, facts->height};
    }
    for (const char* extension : {".jpg", ".png"}) {
        const std::string file = thumbnailFolder + m_key + extension;
        const auto facts = isKept(file) ? factsOf(inGallery(file)) : std::nullopt;
        std::error_code gone;
        if (facts) return {file, {facts->width, facts->height}, fs::file_size(toPath(inGallery(file)), gone), true};
    }
    return {};
}

void GalleryPicture::loadWhole(cPixSheet& sheet, Console& console) {
    if (!load(sheet, m_source, m_request.loading)) throw Failed(m_source.name, problemOf(sheet));
    warn(console.err, m_source.name, sheet, m_request.loading);
    m_whole = {sheet.Width(), sheet.Height()};
    const std::string file = inGallery(m_converted);
    if (m_request.isDryRun) return;
    if (!sheet.SaveToFile_PNG(file, false)) throw Failed(file, problemOf(sheet));
    takeTimeOfPicture(m_converted);
}

void GalleryPicture::convert(Console& console) {
    if (m_converted.empty() || isKept(m_converted)) return;
    cPixSheet sheet;
    loadWhole(sheet, console);
}

GalleryPicture::Thumbnail GalleryPicture::makeThumbnail(Console& console) {
    if (Thumbnail kept = keptThumbnail(); kept.isOld) return kept;
    cPixSheet sheet;
    if (m_converted.empty()) {
        const std::string side = std::to_string(largestSide);
        std::vector<EffectStep> steps = {makeStep("--resize", side + "x" + side + ":down")};
        settleFilters(steps);
        std::span<const EffectStep> rest = steps; // the rest is done by encodeSmall
        PictureSize whole{};
        if (!load(sheet, m_source, m_request.loading, rest, whole)) throw Failed(m_source.name, problemOf(sheet));
        warn(console.err, m_source.name, sheet, m_request.loading);
    } else {
        loadWhole(sheet, console);
    }
    const bool isWhole = sheet.Width() == m_whole.width && sheet.Height() == m_whole.height &&
                         std::max(m_whole.width, m_whole.height) <= largestSide;
    makeStep("--strip", "").apply(sheet);
    auto [bytes, extension] = encodeSmall(sheet, isWhole);
    Thumbnail made{thumbnailFolder + m_key + extension, {sheet.Width(), sheet.Height()}, bytes.size()};
    const auto all = bytes.bytes();
    if (!m_request.isDryRun) {
        writeWhole(inGallery(made.file), [&](std::ostream& out) {
            out.write(reinterpret_cast<const char*>(all.data()), static_cast<std::streamsize>(all.size()));
        });
        takeTimeOfPicture(made.file);
    }
    return made;
}

std::string GalleryPicture::facts() const {
    constexpr const char* noBreak = "\u00A0";
    return std::to_string(m_whole.width) + noBreak + "×" + noBreak + std::to_string(m_whole.height) + " · " + m_format +
           " · " + bytesWithUnit(m_bytes);
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
