#include "cli/Saving.h"
#include "cli/EffectParsing.h"
#include "cli/Files.h"
#include "cli/Streams.h"
#include "cli/Text.h"
#include "cli/UsageError.h"
#include "codecs/Writing.h"
#include "shared/AlphaChannel.h"
#include "shared/Colors.h"
#include "shared/limits.h"
#include "surface/HostAccess.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <new>
#include <sstream>
#include <system_error>
#include <utility>

namespace pixkit::cli {

namespace {

// False when PNG does not allow one of the texts.
bool setPngProperties(cPixSheet& sheet, const SavingOptions& options) {
    for (const auto& [property, value] : options.pngProperties)
        sheet.PngPropertySet(property, value);
    return std::ranges::all_of(
        options.pngTexts, [&](const auto& text) { return sheet.PngPropertySet(pngText, text.second, text.first); });
}

// A picture that could be an icon becomes one as it is; from others come the sizes that systems ask for.
std::vector<IconEntrySize> entriesFor(const cPixSheet& sheet, const SavingOptions& options) {
    constexpr std::int32_t largestOfItself = 256;
    if (!options.iconEntries.empty()) return options.iconEntries;
    if (sheet.Width() <= largestOfItself && sheet.Height() <= largestOfItself) return {};
    return {{16, 16}, {32, 32}, {48, 48}, {256, 256}};
}

// A clear picture is the background, too; but to BMP files, alpha that is 0 everywhere says nothing.
bool flattenIfClear(cPixSheet& sheet, std::int32_t background) {
    const SourcePicture picture(sheet);
    return !picture.isToBeFlattened() || iparseHasAlpha(picture.pixels) || flatten(sheet, background);
}

bool savedToFile(cPixSheet& sheet, const Target& target, const SavingOptions& options) {
    const std::int32_t background = options.background.value_or(0);
    switch (target.format) {
    case FileFormat::tga:
        return sheet.SaveToFile_TGA(target.name, options.tgaRle, options.tgaPalette, false, false);
    case FileFormat::png:
        return sheet.SaveToFile_PNG(target.name, false);
    case FileFormat::gif:
        return sheet.SaveToFile_GIF(target.name, !options.gifWebSafe, options.gifTolerance.value_or(128), false);
    case FileFormat::jpg:
        return sheet.SaveToFile_JPG(target.name, options.quality.value_or(70), background, false);
    case FileFormat::ico:
        return sheet.SaveToFile_ICO(target.name, {}, false, entriesFor(sheet, options)) != 0;
    case FileFormat::bmp:
        break;
    }
    return sheet.SaveToFile_Bitmap(target.name, options.keepAlpha, background, false);
}

bool savedToBytes(cPixSheet& sheet, ByteArray& bytes, FileFormat format, const SavingOptions& options) {
    const std::int32_t background = options.background.value_or(0);
    switch (format) {
    case FileFormat::tga:
        return sheet.SaveToStream_TGA(bytes, options.tgaRle, options.tgaPalette);
    case FileFormat::png:
        return sheet.SaveToStream_PNG(bytes);
    case FileFormat::gif:
        return sheet.SaveToStream_GIF(bytes, !options.gifWebSafe, options.gifTolerance.value_or(128));
    case FileFormat::jpg:
        // The writer would put it on black.
        if (SourcePicture(sheet).isToBeFlattened() && !flatten(sheet, background)) return false;
        return sheet.SaveToStream_JPG(bytes, options.quality.value_or(70));
    case FileFormat::ico:
        return sheet.SaveToStream_ICO(bytes, {}, entriesFor(sheet, options)) != 0;
    case FileFormat::bmp:
        break;
    }
    return sheet.SaveToStream_Bitmap(bytes, options.keepAlpha, background);
}

std::filesystem::file_time_type timeOf(const std::string& file, std::error_code& error) {
    return std::filesystem::last_write_time(toPath(file), error);
}

} // namespace

// Folders are for what writes to refuse.
void askToReplace(const std::string& file, const SavingOptions& options, const Confirm& confirm) {
    std::error_code error;
    if (std::filesystem::is_other(toPath(file), error))
        throw Failed(file, "it is no file but a pipe or a device; '-' with --to, and a redirection, write to those");
    if (options.replacing != Replacing::ask || !std::filesystem::exists(toPath(file), error) ||
        std::filesystem::is_directory(toPath(file), error) || confirm(shown(file) + ": Overwrite existing file?"))
        return;
    throw Failed(file, "the file exists already and was kept; --overwrite replaces it");
}

bool isForeignPage(const std::string& page, std::string_view mark) {
    if (!isFile(page)) return false;
    std::ifstream file(toPath(page), std::ios::binary);
    std::string start(512, '\0');
    file.read(start.data(), static_cast<std::streamsize>(start.size()));
    return start.find(mark) == std::string::npos;
}

bool flatten(cPixSheet& sheet, std::int32_t background) {
    return redraw(sheet, {sheet.Width(), sheet.Height()}, [&](cPixSheet& flat) {
        const PixelView pixels = HostAccess::pixels(flat);
        iparseBlendImageToColor(SourcePicture(sheet).pixels, background, {pixels.bits, pixels.stride * pixels.height},
                                false);
        return true;
    });
}

const char* reasonOf(const std::exception& error) noexcept {
    // A length error: more elements than there are addresses, on 32 bits.
    const bool isMemory = dynamic_cast<const std::bad_alloc*>(&error) != nullptr ||
                          dynamic_cast<const std::length_error*>(&error) != nullptr;
    return isMemory ? "not enough memory" : error.what();
}

void forFile(const std::string& file, const std::function<void()>& work) {
    try {
        work();
    } catch (const Failed&) {
        throw;
    } catch (const std::exception& error) {
        throw Failed(file, reasonOf(error));
    }
}

bool succeeds(Result& result, const std::function<void()>& work) {
    try {
        forFile(result.input.empty() ? result.output : result.input, work);
        return true;
    } catch (const Failed& failure) {
        result.status = Result::Status::failed;
        result.failedAt = failure.file();
        result.reason = failure.reason();
        return false;
    }
}

std::string reasonToSkip(const Target& target, std::span<const std::string> inputs, const SavingOptions& options) {
    std::error_code error;
    const bool mayKeep = options.replacing == Replacing::never || options.replacing == Replacing::older;
    if (!mayKeep || target.isStream() || !std::filesystem::is_regular_file(target.path(), error)) return {};
    if (options.replacing == Replacing::never) return "it exists already";
    const auto made = timeOf(target.name, error);
    // What comes through a pipe has no age.
    const bool isNew = !error && std::ranges::all_of(inputs, [&](const std::string& input) {
        const auto changed = isStream(input) ? std::filesystem::file_time_type::max() : timeOf(input, error);
        return !error && changed <= made;
    });
    return isNew ? "it is as new as its picture" : "";
}

void checkSaving(const SavingOptions& options, const std::string& output, FileFormat format) {
    if (options.reporting.isJson && isStandard(output)) {
        throw UsageError("--json and the picture cannot both go to standard output");
    }
    if (options.background && format != FileFormat::bmp && format != FileFormat::jpg) {
        throw UsageError("--background is for .bmp and .jpg files; the others keep transparency");
    }
    if (format != FileFormat::tga && (options.tgaRle || options.tgaPalette)) {
        throw UsageError("--tga-rle and --tga-palette are for .tga files, and the result is none");
    }
    if (format != FileFormat::png && (!options.pngProperties.empty() || !options.pngTexts.empty())) {
        throw UsageError("--png-level, --png-filter, --png-interlace and --png-text are for .png files, and the result "
                         "is none");
    }
    cPixSheet trial;
    if (!setPngProperties(trial, options)) {
        throw UsageError(
            "--png-text takes KEYWORD=TEXT: a keyword of 1 to 79 Latin letters, without spaces at its ends "
            "or two together, and a text without control characters");
    }
    if (format != FileFormat::gif && (options.gifWebSafe || options.gifTolerance)) {
        throw UsageError("--gif-websafe and --gif-tolerance are for .gif files, and the result is none");
    }
    if (format != FileFormat::ico && !options.iconEntries.empty()) {
        throw UsageError("--icon is for .ico and .cur files, and the result is none");
    }
    if (format != FileFormat::jpg && options.quality) {
        throw UsageError("--quality is for .jpg files, and the result is none");
    }
}

namespace {

// Asks, and says by the result that it is planned. False for a dry run.
bool isToBeSaved(cPixSheet& sheet, const Target& target, const SavingOptions& options, const Confirm& confirm,
                 Result& result) {
    result.after = {sheet.Width(), sheet.Height()};
    result.status = Result::Status::planned;
    if (!target.isStream()) askToReplace(target.name, options, confirm);
    if (options.isDryRun) return false;
    const bool isReady = target.format == FileFormat::png ? setPngProperties(sheet, options)
                         : target.format == FileFormat::bmp
                             ? options.keepAlpha || flattenIfClear(sheet, options.background.value_or(0))
                             : true;
    if (!isReady) throw Failed(target.name, problemOf(sheet));
    return true;
}

// Of a file whose size is known, unless somebody took it away at once.
void noteSaved(const std::string& name, std::optional<std::uintmax_t> size, const Reporting& reporting,
               Console& console, Result& result) {
    result.bytes = size.value_or(0);
    result.status = Result::Status::done;
    if (size && *size <= largestRefusedFile && !reporting.isQuiet) {
        console.err << "pixkit: warning: " << shown(name) << ": saved, but pixkit does not read files of "
                    << largestRefusedFile << " bytes or less\n";
    }
}

ByteArray bytesOf(cPixSheet& sheet, const Target& target, const SavingOptions& options) {
    ByteArray bytes;
    if (!savedToBytes(sheet, bytes, target.format, options)) throw Failed(target.name, problemOf(sheet));
    return bytes;
}

} // namespace

void savePicture(cPixSheet& sheet, const Target& target, const SavingOptions& options, const Confirm& confirm,
                 Console& console, Result& result) {
    if (!isToBeSaved(sheet, target, options, confirm, result)) return;
    if (target.isStream()) {
        const ByteArray bytes = bytesOf(sheet, target, options);
        writeStream(target.name, bytes, console.out);
        result.bytes = bytes.size();
        result.status = Result::Status::done;
        return;
    }
    if (!savedToFile(sheet, target, options)) throw Failed(target.name, problemOf(sheet));
    std::error_code gone;
    const std::uintmax_t size = std::filesystem::file_size(target.path(), gone);
    noteSaved(target.name, gone ? std::nullopt : std::optional(size), options.reporting, console, result);
}

std::optional<ByteArray> preparePicture(cPixSheet& sheet, const Target& target, const SavingOptions& options,
                                        const Confirm& confirm, Console& console, Result& result) {
    // Of larger pictures encoding takes most of the time and the disk little, and their files (more than 16 MB as .bmp
    // with alpha) would be much to keep of several at a time.
    constexpr std::int64_t mostPixels = 4'000'000;
    // An icon's file tells by its name whether it is a cursor.
    if (target.isStream() || target.format == FileFormat::ico ||
        std::int64_t{sheet.Width()} * sheet.Height() > mostPixels) {
        savePicture(sheet, target, options, confirm, console, result);
        return {};
    }
    if (!isToBeSaved(sheet, target, options, confirm, result)) return {};
    return bytesOf(sheet, target, options);
}

void finishPicture(ByteArray&& bytes, const Reporting& reporting, Console& console, Result& result) {
    const std::size_t size = bytes.size();
    Draft(result.output, [&] { return std::move(bytes); }).takePlace();
    noteSaved(result.output, size, reporting, console, result);
}

Draft::Draft(const std::string& name, const std::function<ByteArray()>& make) : m_name(name), m_file(name, true) {
    std::error_code error;
    if (std::filesystem::is_directory(toPath(name), error)) throw Failed(name, "it is a folder");
    if (!m_file.outcome()) throw Failed(name, m_file.outcome().reason());
    m_bytes = make();
}

void Draft::takePlace() {
    const std::span<const std::uint8_t> piece = std::as_const(m_bytes).bytes();
    const Outcome outcome = m_file.save({&piece, 1});
    if (!outcome) throw Failed(m_name, outcome.reason());
}

std::unique_ptr<Draft> draftOf(const std::string& name, const std::function<void(std::ostream& out)>& write) {
    return std::make_unique<Draft>(name, [&] {
        std::ostringstream out;
        write(out);
        if (!out) throw std::bad_alloc(); // streams take exceptions for themselves, and this one fails by no other
        const std::string text = std::move(out).str();
        return ByteArray(std::vector<std::uint8_t>(text.begin(), text.end()));
    });
}

void writeWhole(const std::string& name, const std::function<void(std::ostream& out)>& write) {
    draftOf(name, write)->takePlace();
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
