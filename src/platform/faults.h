// Failures on purpose, for tests: every call of the seam whose failure somebody above handles asks here first, on both
// sides.
//
// Only programs that link pixkit-test-doors (tests, benchmarks, fuzz targets) can make anything fail or look behind the
// seam: the linker meets that target's objects before the library, and takes the two questions from there. In
// everything else they are answered by closed.cpp, with no, and nothing of the rest exists. So the library is compiled
// only once.
#pragma once
#include "platform/system.h"
#include <cstddef>
#include <cstdint>

namespace pixkit::platform {

enum class SeamCall : std::uint8_t {
    getDC,
    createCompatibleDC,
    selectObject,
    createDIBSection,
    getDIBits,
    getObject,
    getIconInfo,
    createIconIndirect,
    createMonochromeBitmap,
    oleLoadPicture,
    oleCreatePictureIndirect,
    renderPicture,
    getClipBox,
    bitBlt,
    setDIBitsToDevice,
    alphaBlend,
    extCreateRegion,
    getRegionData,
    combineRgn,          // on Windows alone
    updateLayeredWindow, // the same
    gdiFlush,            // cannot fail: a plan that is gone tells that it was called
    createFile,
    readFile,
    writeFile, // the failing write reports success with half the bytes done: a full disk
    setFilePointer,
    getFileSize,
    getFileAttributes,
    setFileAttributes,
    deleteFile,
    getFinalPathName,
    createDraft,
    vanishingDraft, // "fails" = the file system has no files that go with the process
    keepDraft,
    flushFile,
    setEndOfFile,
    closeFile, // the failing one closes, and tells that bytes were lost
    replaceFile,
    genRandom, // RtlGenRandom
    loadLibrary,
    getProcAddress,
    windowStationVisible, // "fails" = nobody sees it
    openClipboard,        // while it fails somebody else has it open
    clipboardWindow,
    registerClipboardFormat,
    getClipboardData,
    getEnhMetaFileBits,
    emptyClipboard,
    setClipboardData,
    globalAlloc,
    globalLock,
    createStream,
    oleGetClipboard,
    createFont,
    openFont,
    layOutText,
    drawText,
    gdiplus,              // any call of GDI+ but those that give something back
    desktopWindowUnicode, // "fails" = the desktop answers that it is not Unicode
    count
};

// --- what the platform's own code asks

// Whether this call is to fail now.
bool faultDue(SeamCall call) noexcept;

// The system that this one is to be taken for; null for none but itself.
const OsVersion* pretendedVersion() noexcept;

// --- what tests say

// Lets `call` succeed `after` more times in the whole process and then fail `times` times (negative: until disarmed).
void armFault(SeamCall call, int after = 0, int times = -1) noexcept;
void disarmFaults() noexcept;

// How often anybody has made `call` since the process began.
long callsMade(SeamCall call) noexcept;

// Arms one fault for a scope; every fault is disarmed at its end.
class ScopedFault {
  public:
    explicit ScopedFault(SeamCall call, int after = 0, int times = -1) noexcept { armFault(call, after, times); }
    ~ScopedFault() { disarmFaults(); }
    ScopedFault(const ScopedFault&) = delete;
    ScopedFault& operator=(const ScopedFault&) = delete;
};

// The system is of another version for a scope: what is made then goes by it.
class PretendedVersion {
  public:
    explicit PretendedVersion(OsVersion version) noexcept;
    ~PretendedVersion();
    PretendedVersion(const PretendedVersion&) = delete;
    PretendedVersion& operator=(const PretendedVersion&) = delete;
};

// How many handles are open, for tests that look for leaks: of the portable side those of every kind, on Windows GDI
// objects, icons and those of the kernel.
std::size_t openHandles() noexcept;

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
