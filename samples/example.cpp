#include <iostream>
#include <pixkit/pixkit.h>

int main(int argc, char** argv) {
    pixkit::cPixSheet sheet;
    if (argc < 2 || !sheet.LoadPicture_File(argv[1])) sheet.InitializeDIB(320, 200); // fully transparent
    sheet.MakeGrayScale(pixkit::gsclNTSCPAL);
    sheet.MirrorImage(true, false);                                                    // left to right
    const bool saved = sheet.SaveToFile_Bitmap("example.bmp", false, 0xFFFFFF, false); // onto white
    std::cout << sheet.Width() << " x " << sheet.Height() << (saved ? " saved\n" : " not saved\n");
    return saved ? 0 : 1;
}
