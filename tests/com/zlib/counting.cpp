// A zlib1.dll that only notes that it was asked: its checksum is wrong and it inflates nothing.
namespace {
int calls = 0;
}

extern "C" {
__declspec(dllexport) unsigned long crc32(unsigned long /*crc*/, const unsigned char* /*bytes*/, unsigned /*size*/) {
    ++calls;
    return 0;
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
