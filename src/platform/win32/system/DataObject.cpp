#include "platform/win32/system/DataObject.h"
#include "platform/DropBlocks.h"
#include "platform/SystemClipboard.h"
#include "platform/faults.h"
#include "platform/win32/system/GlobalBlock.h"
#include <algorithm>
#include <limits>
#include <memory>
#include <ole2.h>
#include <shlobj.h>

namespace pixkit::platform {

namespace {

// No contents are longer: a stream may have no end.
constexpr std::uint64_t mostBytes = 512U << 20;
constexpr ULONG bytesAtOnce = 1U << 16;

// What an object handed over; given back at the end.
class Medium {
  public:
    // `index` is that of a file, or -1 for what is there once.
    Medium(IDataObject& object, UINT format, LONG index, DWORD kinds) noexcept {
        FORMATETC asked{static_cast<CLIPFORMAT>(format), nullptr, DVASPECT_CONTENT, index, kinds};
        // Whoever fails has handed nothing over, whatever it left there. Only the clipboard's object is ever busy.
        untilNotBusy([&] {
            const HRESULT status = object.GetData(&asked, &m_medium);
            if (status != S_OK) m_medium = {};
            return status != CLIPBRD_E_CANT_OPEN;
        });
    }
    ~Medium() {
        if (m_medium.tymed != TYMED_NULL) ::ReleaseStgMedium(&m_medium);
    }
    Medium(const Medium&) = delete;
    Medium& operator=(const Medium&) = delete;

    HGLOBAL memory() const noexcept { return m_medium.tymed == TYMED_HGLOBAL ? m_medium.hGlobal : nullptr; }
    IStream* stream() const noexcept { return m_medium.tymed == TYMED_ISTREAM ? m_medium.pstm : nullptr; }

  private:
    STGMEDIUM m_medium{};
};

// Up to `most` bytes; none when the stream fails on the way.
std::vector<std::uint8_t> bytesOf(IStream& stream, std::uint64_t most) {
    std::vector<std::uint8_t> bytes;
    const LARGE_INTEGER start{};
    stream.Seek(start, STREAM_SEEK_SET, nullptr); // one that cannot has not been read yet
    while (bytes.size() < most) {
        const std::size_t done = bytes.size();
        const auto wanted = static_cast<ULONG>(std::min<std::uint64_t>(most - done, bytesAtOnce));
        ULONG count = 0;
        if (bytes.capacity() < done + wanted) // never more than twice `most` while it grows
            bytes.reserve(static_cast<std::size_t>(std::min<std::uint64_t>(most, 2 * done + wanted)));
        bytes.resize(done + wanted);
        if (FAILED(stream.Read(bytes.data() + done, wanted, &count)) || count > wanted) return {};
        bytes.resize(done + count);
        if (count == 0) break;
    }
    return bytes;
}

std::vector<std::uint8_t> contentsOf(IDataObject& object, const VirtualFile& file, std::uint64_t wanted) {
    const UINT format = ::RegisterClipboardFormatW(CFSTR_FILECONTENTS);
    const Medium medium(object, format, static_cast<LONG>(file.index), TYMED_HGLOBAL | TYMED_ISTREAM);
    const std::uint64_t most = std::min({file.size.value_or(mostBytes), mostBytes, wanted});
    if (medium.stream() != nullptr) return bytesOf(*medium.stream(), most);
    const GlobalBlock block(medium.memory());
    const auto bytes = block.bytes().first(std::min<std::size_t>(block.bytes().size(), static_cast<std::size_t>(most)));
    return {bytes.begin(), bytes.end()};
}

} // namespace

std::vector<DroppedFile> filesOf(IDataObject* object) {
    {
        const Medium drop(*object, CF_HDROP, -1, TYMED_HGLOBAL);
        auto files = filesOfDrop(reinterpret_cast<Handle>(drop.memory()));
        if (!files.empty()) return files;
    }
    std::vector<DroppedFile> files;
    object->AddRef();
    const std::shared_ptr<IDataObject> held(object, [](IDataObject* it) { it->Release(); });
    for (const bool isWide : {true, false}) {
        const UINT format = ::RegisterClipboardFormatW(isWide ? CFSTR_FILEDESCRIPTORW : CFSTR_FILEDESCRIPTORA);
        const Medium medium(*object, format, -1, TYMED_HGLOBAL);
        const GlobalBlock block(medium.memory());
        for (const VirtualFile& file : virtualFilesOf(block.bytes(), isWide ? wideDescription : narrowDescription))
            files.push_back({{}, [held, file](std::uint64_t most) { return contentsOf(*held, file, most); }});
        if (!files.empty()) break;
    }
    return files;
}

std::vector<DroppedFile> filesOfSystemClipboard() {
    IDataObject* object = nullptr;
    HRESULT status = E_FAIL;
    if (!faultDue(SeamCall::oleGetClipboard)) {
        untilNotBusy([&] {
            status = ::OleGetClipboard(&object);
            return status != CLIPBRD_E_CANT_OPEN;
        });
    }
    if (FAILED(status) || object == nullptr) return {};
    const std::unique_ptr<IDataObject, void (*)(IDataObject*)> held(object, [](IDataObject* it) { it->Release(); });
    return filesOf(object);
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
