#include "Picture.h"
#include <algorithm>
#include <cmath>
#include <numbers>
#include <shlwapi.h>

namespace viewer {

namespace {

constexpr LONG largest_icon = 256; // of the images in an icon file the largest is wanted

bool load(const Sheet& sheet, const std::wstring& file) {
    return sheet.ask(&_cPixSheet::LoadPicture_File, Text(file), largest_icon, largest_icon, VARIANT_FALSE, 32);
}

std::wstring fullPath(const std::wstring& file) {
    std::wstring path(GetFullPathNameW(file.c_str(), 0, nullptr, nullptr), L'\0');
    path.resize(GetFullPathNameW(file.c_str(), static_cast<DWORD>(path.size()), path.data(), nullptr));
    return path.empty() ? file : path;
}

std::size_t nameStart(const std::wstring& file) {
    return file.find_last_of(L"\\/") + 1;
}

bool comesBefore(const std::wstring& left, const std::wstring& right) {
    return StrCmpLogicalW(left.c_str(), right.c_str()) < 0;
}

// The names of the pictures in the folder of a file, sorted.
std::vector<std::wstring> picturesBeside(const std::wstring& file) {
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW((file.substr(0, nameStart(file)) + L"*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return names;
    do {
        const std::wstring kind = extensionOf(found.cFileName);
        const bool isPicture = std::find(extensions().begin(), extensions().end(), kind) != extensions().end();
        if (isPicture && (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) names.emplace_back(found.cFileName);
    } while (FindNextFileW(search, &found));
    FindClose(search);
    std::sort(names.begin(), names.end(), comesBefore);
    return names;
}

} // namespace

bool Picture::fail(const std::wstring& what) {
    m_error = what;
    return false;
}

std::wstring Picture::name() const {
    return m_file.substr(nameStart(m_file));
}

void Picture::show(Sheet&& sheet, const std::wstring& file) {
    m_loaded = std::move(sheet);
    m_file = file;
    m_error.clear();
    m_angle = 0;
    m_isMirrored = m_isGray = false;
}

bool Picture::open(const std::wstring& file) {
    const std::wstring path = fullPath(file);
    Sheet sheet;
    const bool loaded = load(sheet, path);
    const std::wstring reason = sheet.lastError();
    show(std::move(sheet), path);
    return loaded || fail(L"cannot open " + name() + L": " + reason);
}

bool Picture::openNeighbour(int places) {
    if (m_file.empty()) return fail(L"no file is open");
    const std::vector<std::wstring> names = picturesBeside(m_file);
    const auto found = std::lower_bound(names.begin(), names.end(), name(), comesBefore);
    // The open file itself may be of another kind, or gone: then it counts as standing between two others.
    const bool isIn = found != names.end() && !comesBefore(name(), *found);
    const auto count = static_cast<std::ptrdiff_t>(names.size());
    if (count == 0) return fail(L"no picture in the folder");
    std::ptrdiff_t index = found - names.begin() + places;
    if (!isIn && places > 0) --index;
    index = (index % count + count) % count;
    return open(m_file.substr(0, nameStart(m_file)) + names[static_cast<std::size_t>(index)]);
}

bool Picture::drop(HDROP files) {
    Sheet sheet;
    VARIANT data = handleValue(files);
    SAFEARRAY* array = nullptr;
    LONG count = 0;
    sheet->GetDroppedFileNames(&data, &array, &count);
    const std::vector<std::wstring> names = takeTexts(array);
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (!sheet.ask(&_cPixSheet::LoadPicture_DropedFiles, &data, static_cast<LONG>(i + 1), largest_icon,
                       largest_icon, VARIANT_FALSE, 32))
            continue;
        show(std::move(sheet), names[i]);
        return true;
    }
    return fail(L"cannot open what was dropped: " + sheet.lastError());
}

bool Picture::paste() {
    Sheet sheet;
    if (sheet.ask(&_cPixSheet::LoadPicture_ClipBoard, VARIANT_FALSE)) {
        show(std::move(sheet), L"");
        return true;
    }
    const std::wstring reason = sheet.lastError();
    SAFEARRAY* array = nullptr;
    LONG count = 0;
    sheet->GetPastedFileNames(&array, &count);
    const std::vector<std::wstring> names = takeTexts(array);
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (!sheet.ask(&_cPixSheet::LoadPicture_PastedFiles, static_cast<LONG>(i + 1), largest_icon, largest_icon,
                       VARIANT_FALSE, 32))
            continue;
        show(std::move(sheet), names[i]);
        return true;
    }
    return fail(L"cannot paste: " + (names.empty() ? reason : sheet.lastError()));
}

bool Picture::copy() {
    const bool copied = shown().ask(&_cPixSheet::CopyToClipBoard);
    m_error = copied ? L"" : L"cannot copy: " + shown().lastError();
    return copied;
}

bool Picture::save(const std::wstring& file) {
    const std::wstring reason = shown().save(file);
    m_error = reason.empty() ? L"" : L"cannot save " + file.substr(nameStart(file)) + L": " + reason;
    return reason.empty();
}

void Picture::turn(int degrees) {
    m_angle = ((m_angle + degrees) % 360 + 360) % 360;
    change();
}

void Picture::mirror(bool leftAndRight) {
    // What is seen is mirrored, not what was loaded: mirroring first and turning then gives the same with the opposite
    // angle.
    m_isMirrored = !m_isMirrored;
    m_angle = (leftAndRight ? 360 - m_angle : 540 - m_angle) % 360;
    change();
}

void Picture::toggleGrayscale() {
    m_isGray = !m_isGray;
    change();
}

// Mirrors, turns and colours all at once, in one drawing onto an image as large as the turned picture is.
void Picture::change() {
    m_error.clear();
    if (isEmpty() || !isChanged()) return;
    const double turned = m_angle * std::numbers::pi / 180;
    // Less than a thousandth of a pixel is an error of the arithmetic, not a column that the picture reaches into.
    const auto extent = [&](double along, double across) {
        return static_cast<LONG>(
            std::ceil(std::abs(along * std::cos(turned)) + std::abs(across * std::sin(turned)) - 0.001));
    };
    const LONG width = m_loaded.width(), height = m_loaded.height();
    const LONG newWidth = extent(width, height), newHeight = extent(height, width);
    _cPixSheet* target = m_changed.operator->();
    m_loaded->put_HighQualityInterpolation(VARIANT_TRUE);
    const bool changed =
        m_changed.ask(&_cPixSheet::InitializeDIB, newWidth, newHeight) &&
        m_loaded.ask(&_cPixSheet::Render, LONG_PTR{0}, (newWidth - width) / 2, (newHeight - height) / 2,
                     m_isMirrored ? -width : width, height, 0, 0, 0, 0, 100, VARIANT_TRUE, VARIANT_TRUE, &target,
                     m_isGray ? gsclNTSCPAL : gsclNone, 0.0F, static_cast<float>(m_angle), VARIANT_FALSE);
    if (!changed) {
        fail(L"cannot turn: " + (target != nullptr && m_changed.isEmpty() ? m_changed : m_loaded).lastError());
        m_angle = 0;
        m_isMirrored = m_isGray = false;
        return;
    }
    // Drawing leaves the host's Alpha alone; turned pictures have clear corners in any case.
    const AlphaTypeEnum alpha = m_loaded.get(&_cPixSheet::get_Alpha);
    m_changed->put_Alpha(m_angle % 90 != 0 ? AlphaComplex : alpha);
}

} // namespace viewer
// SPDX-License-Identifier: MIT
