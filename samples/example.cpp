#include <iostream>
#include <pixkit/pixkit.h>

// Grey, tinted orange, flattened onto white. Colours are COLORREFs: 0xBBGGRR.
int main(int argc, char** argv) {
    pixkit::cPixSheet sheet;
    if (argc < 2 || !sheet.LoadPicture_File(argv[1])) sheet.InitializeDIB(320, 200);
    sheet.MakeGrayScale(pixkit::gsclNTSCPAL);
    sheet.BlendToColor(0x0080FF, 40);
    const bool saved = sheet.SaveToFile_Bitmap("example.bmp", false, 0xFFFFFF, false);
    std::cout << sheet.Width() << " x " << sheet.Height() << (saved ? " saved\n" : " not saved\n");
    return saved ? 0 : 1;
}
// SPDX-License-Identifier: MIT
