// A person's hands, for the test of the viewer: does what lines of its input say, and answers each with one line.
//
//   run PROGRAM FILE       starts a program
//   wait CLASS             until a window of the class is in sight; then its title, and where the inside of it lies
//   gone CLASS             until there is none
//   key ctrl+shift+R       presses keys
//   type TEXT              types characters, and Enter
//   wheel X Y STEPS        turns the wheel over a point of the screen
//   drag X Y X2 Y2         moves the mouse with its left button down
//   drop CLASS FILE        drops a file onto a window
//   files FILE             puts a file on the clipboard
//   close CLASS            closes a window
//   layer X Y OPACITY FILE shows a picture as a layered window of this program at a point of the screen
//   unlayer                takes it away
//
// What stands behind the first words of a line may hold blanks. Names of classes have none: "_" stands for one.
#define INITGUID // for the identifiers that pixkit_com.h declares
#include <windows.h>
// After windows.h, which it needs.
#include "pixkit_com.h"
#include <algorithm>
#include <cguid.h>
#include <cstddef>
#include <iostream>
#include <shlobj.h>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr int patience = 600; // tenths of a second that something may take

HWND find(std::string name) {
    std::replace(name.begin(), name.end(), '_', ' ');
    const HWND window = FindWindowA(name.c_str(), nullptr);
    return IsWindowVisible(window) ? window : nullptr;
}

template <class Condition>
bool becomes(Condition isSo) {
    for (int i = 0; i < patience; ++i) {
        if (isSo()) return true;
        Sleep(100);
    }
    return false;
}

std::string run(const std::string& commandLine) {
    STARTUPINFOA start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION process{};
    std::string line = commandLine;
    return CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &process)
               ? "started"
               : "not started";
}

std::string describe(const std::string& name) {
    HWND window = nullptr;
    if (!becomes([&] { return (window = find(name)) != nullptr; })) return "no window";
    SetForegroundWindow(window);
    RECT client;
    GetClientRect(window, &client);
    MapWindowPoints(window, nullptr, reinterpret_cast<POINT*>(&client), 2);
    char title[300] = "";
    GetWindowTextA(window, title, sizeof title);
    std::ostringstream answer;
    answer << client.left << ' ' << client.top << ' ' << client.right << ' ' << client.bottom << ' ' << title;
    return answer.str();
}

void send(WORD key, DWORD flags) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.wScan = static_cast<WORD>(MapVirtualKeyA(key, 0));
    input.ki.dwFlags = flags;
    SendInput(1, &input, sizeof input);
}

void sendMouse(DWORD flags, int x, int y, int wheel = 0) {
    INPUT input{};
    input.type = INPUT_MOUSE;
    SetCursorPos(x, y);
    input.mi.dwFlags = flags;
    input.mi.mouseData = static_cast<DWORD>(wheel);
    SendInput(1, &input, sizeof input);
}

void press(const std::string& keys) {
    std::vector<WORD> down;
    std::istringstream parts(keys);
    for (std::string part; std::getline(parts, part, '+');) {
        const SHORT key = VkKeyScanA(part == "plus" ? '+' : part[0]);
        if (part == "ctrl")
            down.push_back(VK_CONTROL);
        else if (part == "shift")
            down.push_back(VK_SHIFT);
        else if (part == "next")
            down.push_back(VK_NEXT);
        else {
            // Letters name keys; other characters are those that the keyboard gives for them, with shift where need be.
            if ((key & 0x100) != 0 && std::isupper(static_cast<unsigned char>(part[0])) == 0) down.push_back(VK_SHIFT);
            down.push_back(static_cast<WORD>(key & 0xFF));
        }
    }
    for (const WORD key : down)
        send(key, 0);
    for (auto key = down.rbegin(); key != down.rend(); ++key)
        send(*key, KEYEVENTF_KEYUP);
}

void type(const std::string& text) {
    for (const char character : text) {
        INPUT input{};
        input.type = INPUT_KEYBOARD;
        input.ki.wScan = static_cast<unsigned char>(character);
        for (const DWORD flags : {KEYEVENTF_UNICODE, KEYEVENTF_UNICODE | KEYEVENTF_KEYUP}) {
            input.ki.dwFlags = flags;
            SendInput(1, &input, sizeof input);
        }
    }
    send(VK_RETURN, 0);
    send(VK_RETURN, KEYEVENTF_KEYUP);
}

// What a handle of dropped files holds: a header, and names that end in one null more.
std::string dropBlock(const std::string& file) {
    DROPFILES header{};
    header.pFiles = sizeof header;
    std::string block(reinterpret_cast<const char*>(&header), sizeof header);
    return block + file + std::string(2, '\0');
}

std::string drop(const std::string& name, const std::string& file) {
    const HWND window = find(name);
    const HMODULE library = LoadLibraryA("drop-hook.dll");
    const auto procedure = reinterpret_cast<HOOKPROC>(reinterpret_cast<void*>(GetProcAddress(library, "DropHook")));
    const HHOOK hook = SetWindowsHookExA(WH_CALLWNDPROC, procedure, library, GetWindowThreadProcessId(window, nullptr));
    if (hook == nullptr) return "no hook";
    const std::string block = dropBlock(file);
    const HANDLE shared = CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4096, "pixkit drop");
    void* bytes = MapViewOfFile(shared, FILE_MAP_WRITE, 0, 0, 0);
    std::copy(block.begin(), block.end(), static_cast<char*>(bytes));
    SendMessageA(window, WM_NULL, block.size(), 0);
    UnmapViewOfFile(bytes);
    CloseHandle(shared);
    UnhookWindowsHookEx(hook);
    return "dropped";
}

std::string putFiles(const std::string& file) {
    const std::string block = dropBlock(file);
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, block.size());
    std::copy(block.begin(), block.end(), static_cast<char*>(GlobalLock(memory)));
    GlobalUnlock(memory);
    const HWND owner = CreateWindowA("STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    if (!becomes([&] { return OpenClipboard(owner) != 0; })) return "clipboard busy";
    EmptyClipboard();
    const bool put = SetClipboardData(CF_HDROP, memory) != nullptr;
    CloseClipboard();
    return put ? "put" : "not put";
}

// An object of the DLL beside this program, which need not be registered; null without one.
_cPixSheet* createSheet() {
    using GetClassObject = HRESULT WINAPI(REFCLSID, REFIID, void**);
    CoInitialize(nullptr);
    const HMODULE library = LoadLibraryA("pixkit.dll");
    const auto get = reinterpret_cast<GetClassObject*>(
        reinterpret_cast<void*>(library != nullptr ? GetProcAddress(library, "DllGetClassObject") : nullptr));
    IClassFactory* factory = nullptr;
    _cPixSheet* sheet = nullptr;
    if (get == nullptr || FAILED(get(CLSID_cPixSheet, IID_IClassFactory, reinterpret_cast<void**>(&factory))))
        return nullptr;
    factory->CreateInstance(nullptr, IID__cPixSheet, reinterpret_cast<void**>(&sheet));
    factory->Release();
    return sheet;
}

HWND layered = nullptr;

// A program that asks for no messages is not shown either.
void answerMessages() {
    MSG message;
    for (int i = 0; i < 5; ++i) {
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageA(&message);
        Sleep(20);
    }
}

std::string layer(LONG x, LONG y, LONG opacity, const std::string& file) {
    constexpr DWORD style = WS_EX_TOPMOST | WS_EX_NOACTIVATE | WS_EX_TOOLWINDOW; // the component adds what is missing
    _cPixSheet* const sheet = createSheet();
    if (sheet == nullptr) return "no component";
    const std::wstring wide(file.begin(), file.end());
    const BSTR name = SysAllocString(wide.c_str());
    VARIANT_BOOL isShown = VARIANT_FALSE;
    sheet->LoadPicture_File(name, 32, 32, VARIANT_FALSE, 32, &isShown);
    SysFreeString(name);
    if (layered == nullptr)
        layered = CreateWindowExA(style, "STATIC", "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    ShowWindow(layered, SW_SHOWNOACTIVATE);
    if (isShown == VARIANT_TRUE)
        sheet->UpdateLayeredWindow(reinterpret_cast<LONG_PTR>(layered), x, y, opacity, &isShown);
    sheet->Release();
    answerMessages();
    return isShown == VARIANT_TRUE ? "shown" : "not shown";
}

std::string unlayer() {
    DestroyWindow(std::exchange(layered, nullptr));
    answerMessages();
    return "gone";
}

std::string answer(const std::string& line) {
    std::istringstream words(line);
    std::string verb, name, rest;
    words >> verb >> std::ws;
    if (verb == "wheel" || verb == "drag") {
        int x = 0, y = 0, third = 0, fourth = 0;
        words >> x >> y >> third >> fourth;
        if (verb == "wheel") {
            sendMouse(MOUSEEVENTF_WHEEL, x, y, third * WHEEL_DELTA);
        } else {
            sendMouse(MOUSEEVENTF_LEFTDOWN, x, y);
            sendMouse(MOUSEEVENTF_MOVE, third, fourth);
            sendMouse(MOUSEEVENTF_LEFTUP, third, fourth);
        }
        return "done";
    }
    if (verb == "layer") {
        LONG x = 0, y = 0, opacity = 0;
        words >> x >> y >> opacity >> std::ws;
        std::getline(words, rest);
        return layer(x, y, opacity, rest);
    }
    if (verb == "unlayer") return unlayer();
    if (verb == "drop") words >> name >> std::ws;
    std::getline(words, rest);
    if (verb == "run") return run(rest);
    if (verb == "wait") return describe(rest);
    if (verb == "gone") return becomes([&] { return find(rest) == nullptr; }) ? "gone" : "still there";
    if (verb == "drop") return drop(name, rest);
    if (verb == "files") return putFiles(rest);
    if (verb == "key") press(rest);
    if (verb == "type") type(rest);
    if (verb == "close") PostMessageA(find(rest), WM_CLOSE, 0, 0);
    return "done";
}

} // namespace

int main() {
    for (std::string line; std::getline(std::cin, line);)
        std::cout << answer(line) << std::endl;
}
// SPDX-License-Identifier: MIT
