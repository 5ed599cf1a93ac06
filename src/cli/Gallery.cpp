// `pixkit gallery`: thumbnails of pictures, and a page that shows them.
#include "cli/GalleryPage.h"
#include "cli/GrowingPage.h"
#include "cli/Text.h"
#include "cli/Thumbnails.h"
#include "surface/cPixSheet.h"
#include <filesystem>
#include <optional>
#include <ostream>
#include <utility>
#include <vector>

namespace pixkit::cli {

namespace fs = std::filesystem;

namespace {

std::string nameOf(const std::string& file) {
    return isStream(file) ? file : toUtf8(toPath(file).filename());
}

// The picture of that name in the folder of those before, or one of that name with another extension.
fs::path pictureBefore(const std::string& before, const Input& input) {
    if (before.empty() || isStream(input.name)) return {};
    fs::path same = toPath(before) / input.folder / toPath(input.name).filename();
    std::error_code error;
    if (fs::is_regular_file(same, error)) return same;
    for (const Format& format : formats()) {
        for (const std::string_view extension : {format.extension, format.otherExtension}) {
            fs::path other = fs::path(same).replace_extension(toPath(extension));
            if (!extension.empty() && fs::is_regular_file(other, error)) return other;
        }
    }
    return {};
}

class Gallery : public GrowingPage {
  public:
    Gallery(const GalleryRequest& request, std::size_t count)
        : GrowingPage("gallery", request.folder, galleryMark, request),
          m_request(request), m_head{request.title, cPixSheet().Version(), request.loading.orients}, m_entries(count) {}

    // Of the folders that this run has made, those that got nothing. (Others are not removed.)
    void removeEmptyFolders() const {
        std::error_code error;
        for (auto folder = m_made.rbegin(); folder != m_made.rend(); ++folder)
            fs::remove(*folder, error);
    }

  private:
    void prepare() override { m_made = prepareThumbnails(m_request.folder); }

    void add(const Input& input, Piece& piece, Result& result) override {
        const PictureSource source = openSource(input.name, piece.console().in);
        GalleryPicture picture(source, m_request);
        const GalleryPicture::Thumbnail thumbnail = picture.makeThumbnail(piece.console());
        GalleryEntry entry{.name = nameOf(input.name),
                           .folder = toUtf8(input.folder),
                           .facts = picture.facts(),
                           .picture = picture.link(),
                           .thumbnail = thumbnail.file,
                           .thumbnailSize = thumbnail.size};
        const fs::path before = pictureBefore(m_request.before, input);
        std::optional<Failed> problem; // of the picture before, without which this one is shown all the same
        try {
            if (!before.empty()) entry.before = linkBefore(toUtf8(before), piece.console());
        } catch (const Failed& failure) {
            problem = failure;
        }
        result.output = toUtf8(toPath(m_request.folder) / toPath(thumbnail.file));
        result.after = thumbnail.size;
        result.bytes = thumbnail.bytes;
        result.status = m_request.isDryRun ? Result::Status::planned : Result::Status::done;
        if (thumbnail.isOld) result.status = Result::Status::skipped;
        if (thumbnail.isOld) result.reason = "it is as new as its picture";
        if (!m_request.isDryRun) put([&] { m_entries[piece.index()] = std::move(entry); });
        if (problem) throw *problem;
    }

    std::string linkBefore(const std::string& file, Console& console) const {
        std::string link;
        forFile(file, [&] {
            const PictureSource source(file);
            GalleryPicture picture(source, m_request);
            picture.convert(console);
            link = picture.link();
        });
        return link;
    }

    void write(std::ostream& html) const override { writeGalleryPage(html, m_head, m_entries); }

    const GalleryRequest& m_request;
    const GalleryHead m_head;
    std::vector<std::optional<GalleryEntry>> m_entries;
    std::vector<fs::path> m_made; // each behind the one that it lies in
};

} // namespace

int gallery(const GalleryRequest& request, Console& console) {
    const std::vector<Input> inputs = findDifferentInputs(request.pictures, request.recursive, toPath(request.folder));
    Gallery page(request, inputs.size());
    const int exitCode = page.make(inputs, request.jobs, console);
    page.removeEmptyFolders();
    return exitCode;
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
