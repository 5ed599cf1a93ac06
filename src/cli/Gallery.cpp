// `pixkit gallery`: thumbnails of pictures, and a page that shows them.
#include "cli/Batch.h"
#include "cli/GalleryPage.h"
#include "cli/Inputs.h"
#include "cli/Saving.h"
#include "cli/Targets.h"
#include "cli/Text.h"
#include "cli/Thumbnails.h"
#include "platform/Lock.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <mutex>
#include <ostream>
#include <set>
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

// The page, written whole again now and then while pictures come in, in any order: what interrupts the work leaves a
// page of those that are done, or the one that was there before.
class GrowingPage {
  public:
    GrowingPage(std::string file, GalleryHead head, std::size_t count)
        : m_file(std::move(file)), m_head(std::move(head)), m_wasThere(isFile(m_file)), m_entries(count) {}

    void put(std::size_t index, GalleryEntry entry) {
        const std::scoped_lock lock(m_lock);
        m_entries[index] = std::move(entry);
        const auto now = Clock::now();
        if (m_wasThere || now < m_next) return;
        try {
            write();
        } catch (const Failed&) { // the last time says so
        }
        // A page of very many pictures takes a twentieth of the time at most.
        m_next = Clock::now() + std::max<Clock::duration>(std::chrono::seconds(1), 20 * (Clock::now() - now));
    }

    // Throws Failed.
    void write() const {
        writeWhole(m_file, [&](std::ostream& html) { writeGalleryPage(html, m_head, m_entries); });
    }

    bool isEmpty() const {
        return std::ranges::none_of(m_entries, [](const auto& entry) { return entry.has_value(); });
    }

  private:
    using Clock = std::chrono::steady_clock;
    const std::string m_file;
    const GalleryHead m_head;
    const bool m_wasThere;
    platform::Lock m_lock; // of all below
    std::vector<std::optional<GalleryEntry>> m_entries;
    Clock::time_point m_next; // the page is written again; at once at first
};

class GalleryWork {
  public:
    GalleryWork(const GalleryRequest& request, const std::vector<Input>& inputs, GrowingPage& page)
        : m_request(request), m_inputs(inputs), m_page(page) {}

    void add(Piece& piece) {
        const Input& input = m_inputs[piece.index()];
        Result result{input.name, {}};
        if (!succeeds(result, [&] { addOne(input, piece, result); })) m_hasFailed = true;
        report(result, m_request.reporting, "gallery", piece.index(), piece.console());
    }

    bool hasFailed() const noexcept { return m_hasFailed; }

  private:
    void addOne(const Input& input, Piece& piece, Result& result) {
        if (!input.problem.empty()) throw Failed(input.name, input.problem);
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
        if (!before.empty()) {
            const PictureSource earlier(toUtf8(before));
            GalleryPicture earlierPicture(earlier, m_request);
            earlierPicture.convert(piece.console());
            entry.before = earlierPicture.link();
        }
        result.output = toUtf8(toPath(m_request.folder) / toPath(thumbnail.file));
        result.after = thumbnail.size;
        result.bytes = thumbnail.bytes;
        result.status = m_request.isDryRun ? Result::Status::planned : Result::Status::done;
        if (thumbnail.isOld) result.status = Result::Status::skipped;
        if (thumbnail.isOld) result.reason = "it is as new as its picture";
        if (!m_request.isDryRun) m_page.put(piece.index(), std::move(entry));
    }

    const GalleryRequest& m_request;
    const std::vector<Input>& m_inputs;
    GrowingPage& m_page;
    std::atomic<bool> m_hasFailed = false;
};

std::string normalName(const std::string& file) {
    try {
        return toUtf8(toPath(file).lexically_normal());
    } catch (const std::exception&) { // the name is no text; a load says so
        return file;
    }
}

// A file that is named twice stands in the page once.
std::vector<Input> differentInputs(const GalleryRequest& request) {
    std::vector<Input> inputs = findInputs(request.pictures, request.recursive, toPath(request.folder));
    std::set<std::string> names;
    std::erase_if(inputs, [&](const Input& input) { return !names.insert(normalName(input.name)).second; });
    return inputs;
}

// A page that something else has made is nobody's to replace without a question.
void refuseForeignPage(const std::string& page, const GalleryRequest& request, Console& console) {
    if (request.replacing != Replacing::ask || !isForeignPage(page, galleryMark)) return;
    if (confirm(console, shown(page) + ": Overwrite existing file?")) return;
    throw Failed(page, "something else than this command has made it, and it was kept; --overwrite replaces it");
}

} // namespace

int gallery(const GalleryRequest& request, Console& console) {
    const std::string file = toUtf8(toPath(request.folder) / "index.html");
    const std::vector<Input> inputs = differentInputs(request);
    GrowingPage page(file, {request.title, cPixSheet().Version(), request.loading.orients}, inputs.size());
    bool hasFailed = false;
    try {
        refuseForeignPage(file, request, console);
        if (!request.isDryRun) prepareThumbnails(request.folder);
        GalleryWork work(request, inputs, page);
        runBatch(inputs.size(), request.jobs, console, [&](Piece& piece) { work.add(piece); });
        endReports(request.reporting, inputs.size(), console);
        hasFailed = work.hasFailed();
        if (request.isDryRun || page.isEmpty()) return hasFailed ? exitSomeFailed : exitOk;
        page.write();
    } catch (const Failed& failure) {
        console.err << "pixkit gallery: " << failure.what() << '\n';
        return exitSomeFailed;
    }
    if (!request.reporting.isQuiet && !request.reporting.isJson)
        console.out << "Look at " << shown(toUtf8(fs::absolute(toPath(file)))) << '\n';
    return hasFailed ? exitSomeFailed : exitOk;
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
