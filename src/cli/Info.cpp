// `pixkit info`: what a picture is, by its headers wherever they tell it.
#include "cli/Commands.h"
#include "cli/FileHeaders.h"
#include "cli/Files.h"
#include "cli/Inputs.h"
#include "cli/Names.h"
#include "cli/Results.h"
#include "cli/Saving.h"
#include "cli/Streams.h"
#include "cli/Text.h"
#include "platform/regions.h"
#include "shared/limits.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <iomanip>
#include <new>
#include <optional>
#include <sstream>
#include <vector>

namespace pixkit::cli {

namespace {

struct Facts {
    std::string file;
    std::int32_t width, height;
    std::optional<AlphaTypeEnum> alpha; // nothing of pictures that are too large to be looked at
    eImageFormat type;
    std::uintmax_t bytes;
    std::vector<IconSourceSize> images = {};    // of an icon file
    std::optional<std::size_t> rectangles = {}; // where they were asked for
    std::optional<PictureFacts> said = {};      // by the headers, where they tell all that is wanted
};

std::string withNumber(const char* word, int number) {
    return std::string(word) + " (" + std::to_string(number) + ")";
}

// Without rectangles their column is left out.
void printRow(std::ostream& out, const std::string& size, const std::string& alpha, const std::string& type,
              const std::string& bytes, const std::optional<std::string>& rectangles, const std::string& file) {
    out << std::setw(13) << size << "  " << std::left << std::setw(13) << alpha << "  " << std::setw(17) << type
        << std::right << std::setw(11) << bytes;
    if (rectangles) out << std::setw(12) << *rectangles;
    out << "  " << file << '\n';
}

void printImages(std::ostream& out, const std::vector<IconSourceSize>& images) {
    const char* separator = "               in the file: ";
    for (const IconSourceSize& image : images) {
        out << separator << image.Width << " x " << image.Height << " at " << image.bitDepth
            << (image.isPNG != 0 ? " bits (PNG)" : " bits");
        separator = ", ";
    }
    if (!images.empty()) out << '\n';
}

// What is said in words, one part behind the other.
class Words {
  public:
    template <class... Parts>
    void add(const Parts&... parts) {
        if (!m_text.view().empty()) m_text << ", ";
        (m_text << ... << parts);
    }
    std::string text() const { return m_text.str(); }

  private:
    std::ostringstream m_text;
};

std::string plain(const PictureFacts& said) {
    constexpr const char* units[] = {" in proportion", " pixels an inch", " pixels a centimetre", " pixels a metre"};
    Words words;
    words.add(containerName(said.container));
    if (*said.color != 0) words.add(said.color);
    words.add(said.depth, said.depth == 1 ? " bit" : " bits",
              std::string_view(said.color) == "palette" ? "" : " a channel");
    if (*said.coding != 0) words.add(said.coding);
    if (!said.sampling.empty()) words.add(said.sampling);
    if (said.quality) words.add("quality ", *said.quality);
    if (said.frames > 1) {
        words.add(said.frames, " frames");
        std::uint64_t duration = 0;
        for (const std::uint32_t delay : said.delays)
            duration += delay;
        if (duration != 0) words.add(duration, " ms");
    }
    if (said.density)
        words.add(said.density->x, " x ", said.density->y, units[static_cast<std::size_t>(said.density->unit)]);
    if (said.gamma) words.add("gamma ", *said.gamma);
    if (!said.profile.empty()) words.add("colour profile '", shown(said.profile), "'");
    if (said.notes.hasExif) words.add("EXIF data, orientation ", unsigned{said.notes.orientation});
    if (said.notes.endsEarly) words.add("ends early");
    return words.text();
}

void printSaid(std::ostream& out, const PictureFacts& said) {
    constexpr std::size_t mostShown = 80; // bytes of a text; --json has all of it
    constexpr const char* indent = "               ";
    out << indent << plain(said) << '\n';
    if (!said.properties) return;
    for (const PngProperties::Text* text : said.properties->texts()) {
        std::size_t length = std::min(text->value.size(), mostShown);
        while (length < text->value.size() && (static_cast<unsigned char>(text->value[length]) & 0xC0U) == 0x80)
            --length; // no half characters
        out << indent << shown(text->keyword) << ": " << shown(text->value.substr(0, length))
            << (length < text->value.size() ? "...\n" : "\n");
    }
}

void printLine(std::ostream& out, const Facts& facts) {
    std::optional<std::string> rectangles;
    if (facts.rectangles) rectangles = std::to_string(*facts.rectangles);
    const bool isJpeg = facts.said && facts.said->container == FileFormat::jpg;
    printRow(out, std::to_string(facts.width) + " x " + std::to_string(facts.height),
             facts.alpha ? withNumber(alphaName(*facts.alpha).word, *facts.alpha) : "by its pixels",
             withNumber(typeWord(facts.type, isJpeg), facts.type), bytesText(facts.bytes), rectangles,
             shown(facts.file));
    printImages(out, facts.images);
    if (facts.said) printSaid(out, *facts.said);
}

template <class List, class Print>
void printArray(std::ostream& out, const char* name, const List& list, Print&& print) {
    const char* separator = "";
    out << ", \"" << name << "\": [";
    for (const auto& element : list) {
        out << separator;
        print(element);
        separator = ", ";
    }
    out << ']';
}

void printSaidJson(std::ostream& out, const PictureFacts& said) {
    constexpr const char* units[] = {"none", "inch", "centimetre", "metre"};
    out << ", \"container\": \"" << containerName(said.container) << "\", \"depth\": " << said.depth
        << ", \"color\": " << jsonString(said.color) << ", \"coding\": " << jsonString(said.coding)
        << ", \"frames\": " << said.frames << ", \"orientation\": " << unsigned{said.notes.orientation};
    if (!said.delays.empty()) printArray(out, "delays", said.delays, [&](std::uint32_t delay) { out << delay; });
    if (said.density) {
        out << ", \"density\": {\"x\": " << said.density->x << ", \"y\": " << said.density->y << ", \"unit\": \""
            << units[static_cast<std::size_t>(said.density->unit)] << "\"}";
    }
    if (said.gamma) out << ", \"gamma\": " << *said.gamma;
    if (!said.profile.empty()) out << ", \"profile\": " << jsonString(said.profile);
    if (said.quality) out << ", \"quality\": " << *said.quality;
    if (!said.sampling.empty()) out << ", \"sampling\": \"" << said.sampling << '"';
    if (said.properties) {
        printArray(out, "texts", said.properties->texts(), [&](const PngProperties::Text* text) {
            out << "{\"keyword\": " << jsonString(text->keyword) << ", \"text\": " << jsonString(text->value) << '}';
        });
    }
    if (said.notes.endsEarly) out << ", \"endsEarly\": true";
}

void printJson(std::ostream& out, const Facts& facts) {
    out << "{\"file\": " << jsonString(facts.file) << ", \"width\": " << facts.width << ", \"height\": " << facts.height
        << ", \"alpha\": ";
    if (facts.alpha) {
        out << "{\"value\": " << *facts.alpha << ", \"name\": \"" << alphaName(*facts.alpha).constant << "\"}";
    } else {
        out << "null";
    }
    out << ", \"type\": {\"value\": " << facts.type << ", \"name\": \"" << imageTypeName(facts.type).constant
        << "\"}, \"bytes\": " << facts.bytes;
    if (facts.rectangles) out << ", \"rectangles\": " << *facts.rectangles;
    if (!facts.images.empty()) {
        printArray(out, "images", facts.images, [&](const IconSourceSize& image) {
            out << "{\"width\": " << image.Width << ", \"height\": " << image.Height
                << ", \"depth\": " << image.bitDepth << ", \"png\": " << (image.isPNG != 0 ? "true" : "false") << "}";
        });
    }
    if (facts.said) printSaidJson(out, *facts.said);
    out << '}';
}

// The file is only kept for those that hold several images.
std::vector<IconSourceSize> imagesOf(cPixSheet& sheet, const PictureSource& file, const LoadingOptions& loading) {
    std::vector<IconSourceSize> images;
    const eImageFormat type = sheet.ImageType();
    const bool isIcon =
        type == imgIcon || type == imgIconARGB || type == imgPNGicon || type == imgCursor || type == imgCursorARGB;
    if (isIcon && load(sheet, file, loading, true)) sheet.SourceIconSizes(images);
    return images;
}

// Of the picture's shape; nothing where no region can be made of it.
std::optional<std::size_t> rectanglesOf(const cPixSheet& sheet) {
    const platform::UniqueRegion region(sheet.CreateRegion());
    return region ? std::optional(platform::GetRegionData(region.get())) : std::nullopt;
}

bool isBeyond(const PictureFacts& said, const LoadingOptions& loading) {
    return loading.mostPixels != 0 && static_cast<double>(said.width) * said.height > loading.mostPixels;
}

// Nothing where only a load can tell, or knows what is wrong.
std::optional<Facts> factsByHeaders(const PictureSource& source, const LoadingOptions& loading) {
    const auto headers = headersOf(source);
    if (!headers || headers->size() <= largestRefusedFile) return {};
    auto said = readPictureFacts(*headers);
    if (!said) return {};
    if (loading.isLimited && isBeyond(*said, loading)) return {};
    Facts facts{.file = source.name,
                .width = said->width,
                .height = said->height,
                .alpha = said->isCertain ? std::optional(said->alpha) : std::nullopt,
                .type = said->type,
                .bytes = headers->size()};
    facts.said = std::move(said);
    return facts;
}

// Nothing where the picture cannot be loaded, or no region made of it; `problem` then says why.
std::optional<Facts> factsByLoading(const PictureSource& source, const InfoRequest& request, std::string& problem) {
    cPixSheet sheet;
    LoadingOptions loading = request.loading;
    loading.orients = false;
    const bool isLoaded = load(sheet, source, loading);
    const auto rectangles = isLoaded && request.region ? rectanglesOf(sheet) : std::nullopt;
    if (!isLoaded || rectangles.has_value() != request.region) {
        problem = problemOf(sheet);
        return {};
    }
    std::error_code gone; // the file may be deleted under our hands
    // Only now, because there is no path of a name that is not UTF-8 on Windows, where such a file is not loaded
    // either.
    const std::uintmax_t bytes =
        source.bytes ? source.bytes->size() : std::filesystem::file_size(toPath(source.name), gone);
    Facts facts{source.name, sheet.Width(), sheet.Height(), sheet.Alpha(), sheet.ImageType(), gone ? 0 : bytes};
    facts.images = imagesOf(sheet, source, loading);
    facts.rectangles = rectangles;
    return facts;
}

// Headers are asked alone where they tell all that is wanted, and for what they add to a load.
std::optional<Facts> factsOf(const PictureSource& file, const InfoRequest& request, std::string& problem) {
    std::optional<Facts> byHeaders;
    try {
        byHeaders = factsByHeaders(file, request.loading);
    } catch (const std::exception&) { // a load says what is wrong with the file, or with its name
    }
    const bool isTold = byHeaders && byHeaders->said->container != FileFormat::tga &&
                        (byHeaders->said->isCertain || isBeyond(*byHeaders->said, request.loading));
    if (isTold && !request.region) return byHeaders;
    auto facts = factsByLoading(file, request, problem);
    const bool isSame = facts && byHeaders && (byHeaders->said->container != FileFormat::tga || facts->type == imgTGA);
    if (isSame) facts->said = std::move(byHeaders->said);
    return facts;
}

void print(std::ostream& out, const Facts& facts, const InfoRequest& request, bool isFirst) {
    if (request.json) {
        out << (isFirst ? "\n  " : ",\n  ");
        printJson(out, facts);
        return;
    }
    std::optional<std::string> heading;
    if (request.region) heading = "rectangles";
    if (isFirst) printRow(out, "size", "alpha", "type", "bytes", heading, "file");
    printLine(out, facts);
}

} // namespace

int info(const InfoRequest& request, Console& console) {
    int exitCode = exitOk;
    const auto fail = [&](const std::string& file, const std::string& problem) {
        console.err << "pixkit info: " << shownName(file) << ": " << problem << '\n';
        exitCode = exitSomeFailed;
    };
    const std::vector<Input> inputs = findInputs(request.files, request.recursive);
    ReportArray reports(request.json, false, console);
    for (const Input& input : inputs) {
        std::string problem = input.problem;
        std::ostringstream text;
        try {
            forFile(input.name, [&] {
                const auto facts =
                    problem.empty() ? factsOf(openSource(input.name, console.in), request, problem) : std::nullopt;
                if (facts) print(text, *facts, request, !reports.hasResults());
                if (!text) throw std::bad_alloc(); // streams take exceptions for themselves
            });
        } catch (const Failed& failure) {
            problem = failure.reason();
        }
        if (problem.empty() && !text.view().empty()) {
            console.out << text.view();
            reports.noteResult();
        } else {
            fail(input.name, problem);
        }
    }
    return exitCode;
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
