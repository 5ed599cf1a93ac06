// Uses the component from C++ with pixkit_client.h, the smart pointer with default arguments and plain results that is
// made of the interface: a picture on a card, with its shadow and a frame of squares, as a JPEG file.
//
//   card.exe PICTURE RESULT.jpg
#define INITGUID // one file of a program defines the identifiers that the header declares
#include "pixkit_client.h"
#include <cstdio>
#include <fstream>

namespace {

using pixkit_client::Sheet;

// The component's own reason becomes the program's.
void require(bool isDone, const Sheet& sheet) {
    if (isDone) return;
    const std::wstring reason = sheet.LastErrorText();
    throw std::runtime_error(std::string(reason.begin(), reason.end()));
}

void makeCard(const std::wstring& picture, const wchar_t* result) {
    constexpr long side = 240, margin = 20;
    Sheet sheet, card;
    require(sheet.LoadPicture_File(picture), sheet);
    long width = 0, height = 0;
    sheet.ScaleImage(side - 2 * margin, side - 2 * margin, width, height, ScaleToSize);
    require(sheet.Resample(width, height), sheet);

    require(card.InitializeDIB(side, side) && card.CreateCheckerBoard(10, 0xFFFFFF, 0xE0E0E0), card);
    const long left = (side - width) / 2, top = (side - height) / 2;
    require(sheet.RenderDropShadow_JIT(0, left + 4, top + 4, 6, 0x000000, 60, 0, &card), sheet);
    require(sheet.Render(0, left, top, 0, 0, 0, 0, 0, 0, 100, true, true, &card), sheet);

    // The file as bytes, which a program might send to somebody instead.
    const pixkit_client::Value file = card.StreamOf(streamJPG, {85});
    require(!file.isEmpty(), card);
    std::ofstream(result, std::ios::binary)
        .write(static_cast<const char*>(file.parray->pvData), file.parray->rgsabound[0].cElements);

    long alpha = 0;
    const long color = sheet.GetPixel(width / 2, height / 2, &alpha);
    std::printf("pixkit %ls: %ld x %ld, middle %06lx with alpha %ld\n", card.Version().c_str(), width, height, color,
                alpha);
}

} // namespace

int wmain(int count, wchar_t** arguments) {
    if (count != 3) {
        std::puts("card.exe PICTURE RESULT.jpg");
        return 2;
    }
    CoInitialize(nullptr);
    int code = 0;
    try {
        makeCard(arguments[1], arguments[2]);
        std::puts("saved");
    } catch (const std::exception& problem) {
        std::printf("failed: %s\n", problem.what());
        code = 1;
    }
    CoUninitialize();
    return code;
}
// SPDX-License-Identifier: MIT
