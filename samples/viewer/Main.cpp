// A viewer for pictures: shows how an application holds, draws and exchanges a cPixSheet. README.md says what it does.
//
//   viewer.exe [PICTURE]
#include "ViewerWindow.h"
#include "commands.h"
#include <shellapi.h>

int WINAPI wWinMain(HINSTANCE program, HINSTANCE, LPWSTR, int show) {
    const viewer::Component component;
    if (!viewer::Sheet().isThere()) {
        MessageBoxW(nullptr,
                    L"The component is neither registered (regsvr32 pixkit.dll) nor do pixkit.dll and pixkit.manifest "
                    L"lie beside this program.",
                    L"pixkit viewer", MB_ICONERROR);
        return 1;
    }
    viewer::ViewerWindow window(program);
    if (window.handle() == nullptr) return 1;
    int count = 0;
    wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    if (count > 1) window.open(arguments[1]);
    LocalFree(arguments);
    ShowWindow(window.handle(), show);

    const HACCEL keys = LoadAcceleratorsW(program, MAKEINTRESOURCEW(VIEWER_RESOURCES));
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        // The keys of another window, such as the shape, are its own.
        if (message.hwnd == window.handle() && TranslateAcceleratorW(window.handle(), keys, &message)) continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return 0;
}
// SPDX-License-Identifier: MIT
