#include "dialogs.h"
#include "Sheet.h"
#include <algorithm>
#include <commdlg.h>
#include <iterator>

namespace viewer {

namespace {

struct Kind {
    const wchar_t* description;
    const wchar_t* extension;
};
constexpr Kind kinds[] = {{L"PNG", L".png"},  {L"Bitmap", L".bmp"}, {L"GIF", L".gif"},
                          {L"JPEG", L".jpg"}, {L"TGA", L".tga"},    {L"Icon", L".ico"}};

// The dialog's list of kinds: pairs of texts that end in a null each.
void addKind(std::wstring& list, const std::wstring& description, const std::wstring& patterns) {
    list += description + L" (" + patterns + L')';
    list += L'\0';
    list += patterns;
    list += L'\0';
}

OPENFILENAMEW question(HWND owner, const std::wstring& kindList, std::wstring& file) {
    OPENFILENAMEW asked{};
    asked.lStructSize = sizeof asked;
    asked.hwndOwner = owner;
    asked.lpstrFilter = kindList.c_str();
    file.resize(32'768); // longer names do not exist
    asked.lpstrFile = file.data();
    asked.nMaxFile = static_cast<DWORD>(file.size());
    return asked;
}

} // namespace

std::wstring askForFileToOpen(HWND owner) {
    std::wstring patterns, list, file;
    for (const std::wstring& extension : extensions())
        patterns += (patterns.empty() ? L"*" : L";*") + extension;
    addKind(list, L"Pictures", patterns);
    addKind(list, L"All files", L"*.*");
    OPENFILENAMEW asked = question(owner, list, file);
    asked.Flags = OFN_FILEMUSTEXIST | OFN_HIDEREADONLY;
    return GetOpenFileNameW(&asked) ? file.c_str() : L"";
}

std::wstring askForFileToSave(HWND owner, const std::wstring& openName) {
    std::wstring list, file = openName;
    for (const Kind& kind : kinds)
        addKind(list, kind.description, L"*" + std::wstring(kind.extension));
    OPENFILENAMEW asked = question(owner, list, file);
    const std::wstring open = extensionOf(openName);
    const auto* same =
        std::find_if(std::begin(kinds), std::end(kinds), [&](const Kind& kind) { return open == kind.extension; });
    asked.nFilterIndex = same == std::end(kinds) ? 1 : static_cast<DWORD>(same - kinds) + 1;
    asked.Flags = OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY;
    asked.lpstrDefExt = L"png"; // the chosen kind's stands in for it
    if (!GetSaveFileNameW(&asked)) return L"";
    file.resize(std::wcslen(file.c_str()));
    return file;
}

} // namespace viewer
// SPDX-License-Identifier: MIT
