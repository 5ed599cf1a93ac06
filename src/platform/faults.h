// Failures on purpose, for tests: every call of the seam whose failure somebody above handles asks here first, on both
// sides. With nothing armed the question costs one relaxed load.
#pragma once
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
    oleLoadPicture,
    oleCreatePictureIndirect,
    renderPicture,
    getClipBox,
    bitBlt,
    setDIBitsToDevice,
    alphaBlend,
    createFile,
    readFile,
    writeFile, // the failing write reports success with half the bytes done: a full disk
    setFilePointer,
    getFileSize,
    getFileAttributes,
    setFileAttributes,
    deleteFile,
    moveFile,
    loadLibrary,
    getProcAddress,
    desktopWindowUnicode, // "fails" = the desktop answers that it is not Unicode
    count
};

// Lets `call` succeed `after` more times in the whole process and then fail `times` times (negative: until disarmed).
void armFault(SeamCall call, int after = 0, int times = -1) noexcept;
void disarmFaults() noexcept;

// For the platform's own code: whether this call is to fail now.
bool faultDue(SeamCall call) noexcept;

// Arms one fault for a scope; every fault is disarmed at its end.
class ScopedFault {
  public:
    explicit ScopedFault(SeamCall call, int after = 0, int times = -1) noexcept { armFault(call, after, times); }
    ~ScopedFault() { disarmFaults(); }
    ScopedFault(const ScopedFault&) = delete;
    ScopedFault& operator=(const ScopedFault&) = delete;
};

} // namespace pixkit::platform
