// The clipboard: blocks of bytes under the names of their formats. On Windows it is the system's; elsewhere there is
// only what the program itself provides.
#pragma once
#include "platform/api.h"
#include "platform/drops.h"
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace pixkit::platform {

// A format is named as it was registered, such as "PNG"; those that the system numbers have the names of its
// documentation, such as "CF_DIB". Capitals and small letters count as the same. What is no block of memory on Windows
// is made one: a CF_BITMAP is a packed DIB of 32 bits, a CF_ENHMETAFILE the bytes of its file.
struct ClipboardBlock {
    std::string format;
    std::vector<std::uint8_t> bytes;
};

// Whether two names are those of one format.
bool isSameFormat(std::string_view a, std::string_view b) noexcept;

// A clipboard. `formats`, `get` and `set` are only called between `open` and `close`, `contents` only outside. All but
// `close` may throw, which counts as their failure.
struct ClipboardProvider {
    // False while somebody else has it open: it is asked again.
    std::function<bool()> open;
    std::function<void()> close;
    // What is offered, in the order of whoever offers it.
    std::function<std::vector<std::string>()> formats;
    // The bytes of a format; none when it is not there. Blocks may be longer than what they hold.
    std::function<std::vector<std::uint8_t>(const std::string& format)> get;
    // Replaces everything that is offered. What was there stays when there is no memory; other failures leave nothing.
    std::function<bool(std::vector<ClipboardBlock>&& blocks)> set;
    // The files without names, which are contents only: FileGroupDescriptorW or FileGroupDescriptor among the formats
    // says that there are some. Left out by a provider that never has any.
    std::function<std::vector<DroppedFile>()> contents = {};

    explicit operator bool() const noexcept { return open && close && formats && get && set; }
};

// Whose clipboard is used, for the whole process; an empty provider (the initial state) stands for the system's, which
// is none on the portable side.
PIXKIT_API void setClipboardProvider(ClipboardProvider provider);

// The files without names on the clipboard, which nobody in this process may have open. May throw what the provider
// throws.
std::vector<DroppedFile> contentsOnClipboard();

// The clipboard, open as long as this lives. While somebody else has it open, the constructor tries again for half a
// second: programs look into a clipboard that has changed, and are soon done.
class OpenClipboard {
  public:
    OpenClipboard();
    ~OpenClipboard();
    OpenClipboard(const OpenClipboard&) = delete;
    OpenClipboard& operator=(const OpenClipboard&) = delete;

    // Whether there is a clipboard at all, and whether it could be opened; nothing else may be asked when not.
    bool exists() const noexcept { return m_provider != nullptr; }
    bool isOpen() const noexcept { return m_isOpen; }

    // As those of the provider.
    std::vector<std::string> formats() const { return m_provider->formats(); }
    std::vector<std::uint8_t> get(const std::string& format) const;
    bool set(std::vector<ClipboardBlock>&& blocks) const { return m_provider->set(std::move(blocks)); }

  private:
    std::shared_ptr<const ClipboardProvider> m_provider;
    bool m_isOpen = false;
};

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
