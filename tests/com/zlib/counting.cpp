// A zlib1.dll that notes that it was asked for its version, and can nothing.
namespace {
int calls = 0;
}

extern "C" {
__declspec(dllexport) const char* zlibVersion() {
    ++calls;
    return "1.2"; // the first that is trusted
}
__declspec(dllexport) unsigned long crc32(unsigned long, const unsigned char*, unsigned) {
    return 0;
}
__declspec(dllexport) int uncompress(unsigned char*, unsigned long*, const unsigned char*, unsigned long) {
    return -3; // Z_DATA_ERROR
}
__declspec(dllexport) int zlibCalls() {
    return calls;
}
}
// SPDX-License-Identifier: MIT
