// Pictures that other programs, or other instances, put on the clipboard.
#include "codecs/Formats.h"
#include "codecs/clipboard/ClipboardProblem.h"
#include "codecs/clipboard/PackedDib.h"
#include "codecs/clipboard/StoredPixels.h"
#include "loading/LoadRequest.h"
#include "loading/loadMember.h"
#include "platform/clipboard.h"
#include <algorithm>
#include <optional>
#include <utility>

namespace pixkit {

namespace {

enum class Content : std::uint8_t { storedPixels, file, packedDib };

struct ClipboardFormat {
    std::string_view name;
    Content content;
    // Of those that are offered, the one of the lowest rank is taken, and of equals the first: programs put what tells
    // most in front, but many put alpha into nothing but a PNG.
    int rank;
};

constexpr ClipboardFormat knownFormats[] = {
    {storedPixelsFormat, Content::storedPixels, 0},
    {"PNG", Content::file, 1},
    {"image/png", Content::file, 1},
    {"CF_DIBV5", Content::packedDib, 2},
    {"CF_DIB", Content::packedDib, 2},
    {"CF_BITMAP", Content::packedDib, 2},
    {"CF_ENHMETAFILE", Content::file, 2},
    {"CF_TIFF", Content::file, 2},
    {"GIF", Content::file, 2},
    {"image/gif", Content::file, 2},
    {"JFIF", Content::file, 2},
    {"image/jpeg", Content::file, 2},
    {"image/bmp", Content::file, 2},
};

const ClipboardFormat* knownFormat(std::string_view name) noexcept {
    const auto* const found = std::ranges::find_if(
        knownFormats, [&](const ClipboardFormat& known) { return platform::isSameFormat(known.name, name); });
    return found != std::end(knownFormats) ? found : nullptr;
}

// The pictures on the clipboard, one after the other.
class ClipboardPictures {
  public:
    struct Picture {
        const ClipboardFormat* format;
        std::vector<std::uint8_t> bytes;
        std::vector<std::uint8_t> file; // beside stored pixels, which are none; where there is one and it is wanted
    };

    // The best of those that were not given yet; nothing, and why, when there is none. The clipboard is closed again
    // before the picture is read: reading takes long and may ask a person.
    std::optional<Picture> next(bool wantsFile) {
        const platform::OpenClipboard clipboard;
        if (!clipboard.isOpen()) {
            m_why = clipboardProblem(clipboard);
            return {};
        }
        const ClipboardFormat* best = nullptr;
        std::string bestName; // as it is offered
        for (std::string& name : clipboard.formats()) {
            const ClipboardFormat* const known = knownFormat(name);
            if (known == nullptr || isGiven(*known) || (best != nullptr && known->rank >= best->rank)) continue;
            best = known;
            bestName = std::move(name);
        }
        if (best == nullptr) {
            m_why = "the clipboard holds no picture";
            return {};
        }
        m_given.push_back(best);
        Picture picture{best, clipboard.get(bestName), {}};
        if (best->content == Content::packedDib && !picture.bytes.empty()) m_hadDib = true;
        if (best->content == Content::storedPixels && wantsFile) picture.file = clipboard.get("PNG");
        return picture;
    }
    Reason why() const noexcept { return m_why; }

  private:
    // The system makes all kinds of bitmaps of the one that it was given: if that is broken, so are they.
    bool isGiven(const ClipboardFormat& format) const noexcept {
        return std::ranges::count(m_given, &format) != 0 || (m_hadDib && format.content == Content::packedDib);
    }

    std::vector<const ClipboardFormat*> m_given;
    bool m_hadDib = false;
    Reason m_why;
};

// The PNG file of a picture.
std::vector<std::uint8_t> pngOf(const cPixSheet& sheet) {
    const SourcePicture picture(sheet);
    const PngProperties properties;
    return std::move(write({&picture, 1}, &properties).parts()).join();
}

} // namespace

bool cPixSheet::LoadPicture_ClipBoard(bool SaveFormat) noexcept {
    return loadMember(Call(*this, "LoadPicture_ClipBoard", "SaveFormat", SaveFormat), *this, [&] {
        // Bytes are copied before the load empties this instance: the bitmap that is offered may be its own.
        const auto load = [&](ClipboardPictures::Picture& picture) {
            if (picture.bytes.empty()) return refused("the clipboard does not give the picture that it offers");
            if (picture.format->content == Content::storedPixels) {
                const ReadResult result = readStoredPixels(picture.bytes, *this);
                if (result && SaveFormat)
                    state().m_ImageByteCache = ByteArray(picture.file.empty() ? pngOf(*this) : std::move(picture.file));
                return result.why;
            }
            const bool isDib = picture.format->content == Content::packedDib;
            const ByteArray file(isDib ? bmpFileOf(std::move(picture.bytes)) : std::move(picture.bytes));
            if (file.size() == 0) return refused("the headers of the bitmap describe no picture that can be read");
            LoadRequest request(file, 0, file.size(), IconRequest(0, 0, 32));
            return spt_LoadPictureEx(*this, request, SaveFormat);
        };
        ClipboardPictures pictures;
        Outcome refusal; // of several the first
        while (auto picture = pictures.next(SaveFormat)) {
            Outcome outcome = load(*picture);
            if (outcome) return outcome;
            if (refusal) refusal = std::move(outcome);
        }
        return refusal ? refused(pictures.why()) : refusal;
    });
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
