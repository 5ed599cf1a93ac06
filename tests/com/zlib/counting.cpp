// A zlib1.dll that notes that it was asked. It inflates nothing.
namespace {
int calls = 0;
}

extern "C" {
__declspec(dllexport) const char* zlibVersion() {
    return "1.2"; // the first that is trusted
}
__declspec(dllexport) unsigned long crc32(unsigned long crc, const unsigned char* bytes, unsigned size) {
    ++calls;
    crc = ~crc;
    for (unsigned bit = 0; bit < size * 8; ++bit) {
        if (bit % 8 == 0) crc ^= bytes[bit / 8];
        crc = (crc >> 1) ^ ((crc & 1) * 0xEDB88320);
    }
    return ~crc;
}
__declspec(dllexport) int uncompress(unsigned char* /*out*/, unsigned long* /*outSize*/, const unsigned char* /*in*/,
                                     unsigned long /*inSize*/) {
    ++calls;
    return -3; // Z_DATA_ERROR
}
__declspec(dllexport) int zlibCalls() {
    return calls;
}
}
