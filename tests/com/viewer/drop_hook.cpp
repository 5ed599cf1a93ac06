// Lets another program drop files onto a window: a handle of dropped files is only good in the process that owns the
// window. So this library, hooked into that process, makes one there, of the bytes in memory that both share, when it
// sees WM_NULL with their number.
#include <cstring>
#include <windows.h>

extern "C" __declspec(dllexport) LRESULT CALLBACK DropHook(int code, WPARAM wide, LPARAM longer) {
    const auto& sent = *reinterpret_cast<const CWPSTRUCT*>(longer);
    if (code == HC_ACTION && sent.message == WM_NULL && sent.wParam != 0) {
        const HANDLE shared = OpenFileMappingA(FILE_MAP_READ, FALSE, "pixkit drop");
        const void* bytes = MapViewOfFile(shared, FILE_MAP_READ, 0, 0, 0);
        const HGLOBAL drop = GlobalAlloc(GMEM_MOVEABLE, sent.wParam);
        std::memcpy(GlobalLock(drop), bytes, sent.wParam);
        GlobalUnlock(drop);
        UnmapViewOfFile(bytes);
        CloseHandle(shared);
        PostMessageW(sent.hwnd, WM_DROPFILES, reinterpret_cast<WPARAM>(drop), 0);
    }
    return CallNextHookEx(nullptr, code, wide, longer);
}
// SPDX-License-Identifier: MIT
