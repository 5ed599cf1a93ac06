// A zlib1.dll whose functions take their arguments off the stack themselves, under the names of those that do not. It
// is as old, and as outspoken, as a test wants.
namespace {
int calls = 0;
const char* version = nullptr;
unsigned long flags = 0;
} // namespace

#ifdef __i386__
#define STDCALL __attribute__((stdcall))
#else
#define STDCALL // there is one convention only
#endif

extern "C" {
__declspec(dllexport) const char* STDCALL zlibVersion() {
    return version;
}
__declspec(dllexport) unsigned long STDCALL zlibCompileFlags() {
    return flags;
}
__declspec(dllexport) unsigned long STDCALL
    crc32(unsigned long /*crc*/, const unsigned char* /*bytes*/, unsigned /*size*/) {
    ++calls;
    return 0;
}
__declspec(dllexport) int STDCALL uncompress(unsigned char* /*out*/, unsigned long* /*outSize*/,
                                             const unsigned char* /*in*/, unsigned long /*inSize*/) {
    ++calls;
    return 0;
}
// The number of calls so far, and what is said from now on.
__declspec(dllexport) int zlibPretends(const char* newVersion, unsigned long newFlags) {
    version = newVersion;
    flags = newFlags;
    return calls;
}
}
// SPDX-License-Identifier: MIT
