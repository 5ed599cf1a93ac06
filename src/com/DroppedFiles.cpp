#include "com/DroppedFiles.h"
#include "com/Arrays.h"
#include "com/LateBound.h"
#include "com/Values.h"
#include "platform/win32/system/DataObject.h"
#include <algorithm>
#include <cmath>
#include <optional>
#include <span>
#include <string>

namespace pixkit::com {

namespace {

using Files = std::vector<DroppedFile>;

// Values are copied: what belongs to the caller may go while its objects are called.
bool addName(const VARIANT& value, Files& files) {
    Variant name;
    if (FAILED(copyOf(value, name)) || name.vt != VT_BSTR || ::SysStringLen(name.bstrVal) == 0) return false;
    files.push_back({nameToUtf8(name.bstrVal)});
    return true;
}

void addArray(SAFEARRAY* names, Files& files) {
    forElements(names, [&](const VARIANT& element, std::size_t) {
        addName(element, files);
        return files.size() < mostDroppedFiles ? S_OK : E_ABORT;
    });
}

// How many elements there are by the property of this name.
std::optional<LONG> countOf(IDispatch* collection, const wchar_t* property) {
    Variant found, count;
    if (FAILED(callByName(collection, property, {}, found)) || FAILED(changeType(found, VT_I4, count))) return {};
    return std::clamp(count.lVal, LONG{0}, static_cast<LONG>(mostDroppedFiles));
}

HRESULT item(IDispatch* collection, LONG index, Variant& found) {
    VARIANT number{};
    number.vt = VT_I4;
    number.lVal = index;
    return callByName(collection, L"Item", std::span<const VARIANT>(&number, 1), found);
}

// Counted from 1, as Basic does, if there is an element of the last number, else from 0.
void addCollection(IDispatch* collection, LONG count, Files& files) {
    if (count == 0) return; // some collections get an element by being asked for it
    Variant last;
    Files names;
    const bool fromOne = SUCCEEDED(item(collection, count, last)) && addName(last, names);
    const LONG first = fromOne ? 1 : 0;
    for (LONG i = first; i < first + count; ++i) {
        Variant name;
        if (FAILED(item(collection, i, name))) return;
        addName(name, files);
    }
}

void addScriptArray(IDispatch* array, LONG count, Files& files) {
    for (LONG i = 0; i < count; ++i) {
        Variant name;
        if (FAILED(callByName(array, std::to_wstring(i).c_str(), {}, name))) return;
        addName(name, files);
    }
}

void addElements(IDispatch* object, Files& files) {
    if (const auto count = countOf(object, L"Count")) return addCollection(object, *count, files);
    if (const auto count = countOf(object, L"length")) addScriptArray(object, *count, files);
}

// What stands in the property Files, or for the whole drop.
void addList(const VARIANT& list, Files& files) {
    if ((list.vt & VT_ARRAY) != 0) return addArray(list.parray, files);
    if (list.vt != VT_DISPATCH && list.vt != VT_UNKNOWN) return void(addName(list, files));
    if (const auto object = interfaceOf<IDispatch>(list.punkVal)) addElements(object.get(), files);
}

void addObject(IUnknown* unknown, Files& files) {
    if (const auto data = interfaceOf<IDataObject>(unknown)) {
        files = platform::filesOf(data.get());
        if (!files.empty()) return;
    }
    const auto object = interfaceOf<IDispatch>(unknown);
    Variant list;
    if (!object) return;
    if (FAILED(callByName(object.get(), L"Files", {}, list))) return addElements(object.get(), files);
    addList(list, files);
}

// None for a number that is wider than handles: the rest of it may be a handle of somebody else.
std::optional<platform::Handle> handleOf(LONGLONG number) {
    const auto handle = static_cast<platform::Handle>(number);
    const bool isWhole = handle == number || static_cast<LONGLONG>(static_cast<std::uintptr_t>(handle)) == number;
    return isWhole ? std::optional(handle) : std::nullopt;
}

// The handle that a number of any type is: scripts keep large ones as floating-point numbers.
std::optional<platform::Handle> handleOf(const VARIANT& value) {
    if (value.vt == VT_I8 || value.vt == VT_UI8) return handleOf(value.llVal);
    constexpr VARTYPE numbers[] = {VT_I2, VT_I4, VT_R4, VT_R8, VT_I1, VT_UI1, VT_UI2, VT_UI4, VT_INT, VT_UINT};
    Variant number;
    if (std::ranges::count(numbers, value.vt) == 0 || FAILED(changeType(value, VT_R8, number)) ||
        !(std::abs(number.dblVal) < 9e15)) // beyond, not every whole number is one
        return {};
    return handleOf(static_cast<LONGLONG>(number.dblVal));
}

} // namespace

std::vector<DroppedFile> droppedFiles(const VARIANT& data) {
    Files files;
    Variant drop;
    if (FAILED(copyOf(data, drop))) return files;
    if (const auto handle = handleOf(drop)) return platform::filesOfDrop(*handle);
    const bool isObject = drop.vt == VT_DISPATCH || drop.vt == VT_UNKNOWN;
    if (!isObject)
        addList(drop, files);
    else if (drop.punkVal != nullptr)
        addObject(drop.punkVal, files);
    return files;
}

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
