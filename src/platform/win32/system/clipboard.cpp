#include "platform/SystemClipboard.h"
#include "platform/faults.h"
#include "platform/gdi.h"
#include "platform/win32/system/DataObject.h"
#include "platform/win32/system/GlobalBlock.h"
#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>
#include <windows.h>

namespace pixkit::platform {

namespace {

using Bytes = std::vector<std::uint8_t>;

// Of what the system numbers, all that the component reads or writes.
struct NumberedFormat {
    UINT number;
    const char* name;
};
constexpr NumberedFormat numberedFormats[] = {
    {CF_BITMAP, "CF_BITMAP"},
    {CF_TIFF, "CF_TIFF"},
    {CF_DIB, "CF_DIB"},
    {CF_DIBV5, "CF_DIBV5"},
    {CF_ENHMETAFILE, "CF_ENHMETAFILE"},
    {CF_HDROP, "CF_HDROP"},
    {CF_UNICODETEXT, "CF_UNICODETEXT"},
};

// 0 on failure.
UINT numberOf(const std::string& format) noexcept {
    const auto* const found = std::ranges::find_if(numberedFormats, [&](const NumberedFormat& numbered) {
        return ::lstrcmpiA(numbered.name, format.c_str()) == 0;
    });
    if (found != std::end(numberedFormats)) return found->number;
    return faultDue(SeamCall::registerClipboardFormat) ? 0 : ::RegisterClipboardFormatA(format.c_str());
}

// Empty for one that nobody asks for.
std::string nameOf(UINT format) {
    const auto* const found = std::ranges::find(numberedFormats, format, &NumberedFormat::number);
    if (found != std::end(numberedFormats)) return found->name;
    char name[256];
    const int length = ::GetClipboardFormatNameA(format, name, sizeof name);
    return {name, static_cast<std::size_t>(std::max(length, 0))};
}

// --- out of the clipboard, whose handles stay its own

Bytes bytesOfMemory(HGLOBAL memory) {
    const GlobalBlock block(memory);
    return {block.bytes().begin(), block.bytes().end()};
}

Bytes bytesOfBitmap(Handle bitmap) {
    BitmapRecord record;
    if (!GetObjectA(bitmap, record) || record.bmWidth <= 0 || record.bmHeight <= 0) return {};
    BitmapInfoHeader header{.biWidth = record.bmWidth, .biHeight = record.bmHeight};
    const std::uint64_t size =
        std::uint64_t{4} * static_cast<std::uint32_t>(record.bmWidth) * static_cast<std::uint32_t>(record.bmHeight);
    if (size > static_cast<std::uint64_t>(std::numeric_limits<LONG>::max())) return {};
    Bytes dib(sizeof header + static_cast<std::size_t>(size));
    std::memcpy(dib.data(), &header, sizeof header);
    const ScreenDC screen;
    const int rows = GetDIBits(screen.get(), bitmap, 0, static_cast<std::uint32_t>(record.bmHeight),
                               dib.data() + sizeof header, header);
    return rows == record.bmHeight ? dib : Bytes();
}

Bytes bytesOfMetafile(HENHMETAFILE metafile) {
    Bytes bytes(::GetEnhMetaFileBits(metafile, 0, nullptr));
    const auto size = static_cast<UINT>(bytes.size());
    if (faultDue(SeamCall::getEnhMetaFileBits) || ::GetEnhMetaFileBits(metafile, size, bytes.data()) != size) return {};
    return bytes;
}

Bytes bytesOf(const std::string& format) {
    const UINT number = numberOf(format);
    const HANDLE handle = number != 0 ? ::GetClipboardData(number) : nullptr;
    if (handle == nullptr) return {};
    switch (number) {
    case CF_BITMAP:
        return bytesOfBitmap(reinterpret_cast<Handle>(handle));
    case CF_ENHMETAFILE:
        return bytesOfMetafile(static_cast<HENHMETAFILE>(handle));
    default:
        return bytesOfMemory(handle);
    }
}

std::vector<std::string> formatNames() {
    std::vector<std::string> names;
    for (UINT format = 0; (format = ::EnumClipboardFormats(format)) != 0;)
        if (auto name = nameOf(format); !name.empty()) names.push_back(std::move(name));
    return names;
}

// --- into the clipboard

// A block in memory of the kind that the clipboard takes over.
class NewBlock {
  public:
    explicit NewBlock(const ClipboardBlock& block) noexcept : m_format(numberOf(block.format)) {
        if (m_format == 0 || faultDue(SeamCall::globalAlloc)) return;
        // Shared memory is a thing of the old consumer systems; others ignore the flag.
        m_memory = ::GlobalAlloc(GMEM_MOVEABLE | GMEM_DDESHARE, block.bytes.size());
        if (m_memory == nullptr) return;
        void* const data = faultDue(SeamCall::globalLock) ? nullptr : ::GlobalLock(m_memory);
        if (data == nullptr) return;
        std::memcpy(data, block.bytes.data(), block.bytes.size());
        ::GlobalUnlock(m_memory);
        m_isFilled = true;
    }
    NewBlock(NewBlock&& other) noexcept
        : m_format(other.m_format), m_isFilled(other.m_isFilled), m_memory(std::exchange(other.m_memory, nullptr)) {}
    NewBlock& operator=(NewBlock&&) = delete;
    NewBlock(const NewBlock&) = delete;
    NewBlock& operator=(const NewBlock&) = delete;
    ~NewBlock() {
        if (m_memory != nullptr) ::GlobalFree(m_memory);
    }

    bool isFilled() const noexcept { return m_isFilled; }
    // The clipboard owns the memory from then on, unless it refuses.
    bool give() noexcept {
        if (faultDue(SeamCall::setClipboardData) || ::SetClipboardData(m_format, m_memory) == nullptr) return false;
        m_memory = nullptr;
        return true;
    }

  private:
    UINT m_format;
    bool m_isFilled = false;
    HGLOBAL m_memory = nullptr;
};

bool replaceContents(std::vector<ClipboardBlock>&& blocks) {
    std::vector<NewBlock> memory;
    memory.reserve(blocks.size());
    for (ClipboardBlock& block : blocks) {
        memory.emplace_back(block);
        if (!memory.back().isFilled()) return false;
        block.bytes = {}; // pictures are large: never all of them twice
    }
    if (faultDue(SeamCall::emptyClipboard) || ::EmptyClipboard() == FALSE) return false;
    for (NewBlock& block : memory) {
        if (block.give()) continue;
        ::EmptyClipboard(); // half of it would be taken for all of it
        return false;
    }
    return true;
}

// The window that owns what is put on the clipboard: the system refuses data of nobody. It is made for the time that
// the clipboard is open, because data that is all there outlives its owner.
class Owner {
  public:
    Owner() noexcept = default;
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;
    ~Owner() { close(); }

    bool open() noexcept {
        if (m_window == nullptr && !faultDue(SeamCall::clipboardWindow)) {
            m_window = make(HWND_MESSAGE);
            // Before Windows 2000 there are no windows for messages alone; this one is never shown.
            if (m_window == nullptr) m_window = make(nullptr);
        }
        m_isOpen = ::OpenClipboard(m_window) != FALSE; // to read it nobody need own anything
        return m_isOpen;
    }
    void close() noexcept {
        if (std::exchange(m_isOpen, false)) ::CloseClipboard();
        if (m_window != nullptr) ::DestroyWindow(std::exchange(m_window, nullptr));
    }
    bool exists() const noexcept { return m_window != nullptr; }

  private:
    static HWND make(HWND parent) noexcept {
        return ::CreateWindowExA(0, "STATIC", "pixkit clipboard owner", 0, 0, 0, 0, 0, parent, nullptr, nullptr,
                                 nullptr);
    }

    HWND m_window = nullptr;
    bool m_isOpen = false;
};

} // namespace

ClipboardProvider systemClipboard() {
    const auto owner = std::make_shared<Owner>();
    return {
        [owner] { return owner->open(); },
        [owner] { owner->close(); },
        formatNames,
        bytesOf,
        [owner](std::vector<ClipboardBlock>&& blocks) { return owner->exists() && replaceContents(std::move(blocks)); },
        filesOfSystemClipboard};
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
