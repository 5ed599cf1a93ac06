#include "com/IconArguments.h"
#include "com/Arrays.h"
#include "com/Values.h"
#include <cstring>

namespace pixkit::com {

namespace {

constexpr std::size_t mostImages = 0xFFFF; // that an icon file can list
constexpr std::size_t mostNumbers = 3 * mostImages;

bool isNone(VARTYPE type) noexcept {
    return type == VT_EMPTY || type == VT_NULL || type == VT_ERROR;
}

// A copy of a value that owns nothing, references followed. Empty for what cannot be followed.
VARIANT plainValue(const VARIANT& value) noexcept {
    const VARIANT* const found = unwrapped(const_cast<VARIANT*>(&value));
    if (found == nullptr) return {};
    VARIANT plain = *found;
    if ((plain.vt & VT_BYREF) == 0) return plain;
    const auto type = static_cast<VARTYPE>(plain.vt & ~VT_BYREF);
    if (plain.byref == nullptr || type == VT_VARIANT) return {};
    VARIANT read = {};
    read.vt = type;
    if (type == VT_DISPATCH || type == VT_UNKNOWN || (type & VT_ARRAY) != 0) {
        std::memcpy(&read.byref, plain.byref, sizeof(void*));
        return read;
    }
    // Numbers, which own nothing; a string behind a reference becomes none.
    if (type == VT_BSTR || FAILED(::VariantCopyInd(&read, &plain))) return {};
    return read;
}

bool addSheets(const VARIANT& source, std::vector<ComPtr<_cPixSheet>>& sheets, int depth) {
    const VARIANT value = plainValue(source);
    if ((value.vt & VT_ARRAY) != 0) {
        return depth < deepestArrays && SUCCEEDED(forElements(value.parray, [&](const VARIANT& element, std::size_t) {
                   return addSheets(element, sheets, depth + 1) ? S_OK : DISP_E_TYPEMISMATCH;
               }));
    }
    if (isNone(value.vt)) return true;
    if (value.vt != VT_DISPATCH && value.vt != VT_UNKNOWN) return false;
    if (value.punkVal == nullptr) return true;
    auto sheet = interfaceOf<_cPixSheet>(value.punkVal, IID__cPixSheet);
    if (!sheet || sheets.size() == mostImages) return false;
    sheets.push_back(std::move(sheet));
    return true;
}

bool addNumbers(const VARIANT& source, std::vector<std::int32_t>& numbers, int depth) {
    const VARIANT value = plainValue(source);
    if ((value.vt & VT_ARRAY) != 0) {
        const bool hasFourth =
            value.parray != nullptr && value.parray->cDims == 2 && value.parray->rgsabound[1].cElements == 4;
        return depth < deepestArrays && SUCCEEDED(forElements(value.parray, [&](const VARIANT& element, std::size_t i) {
                   const bool isPassedOver = hasFourth && i % 4 == 3;
                   return isPassedOver || addNumbers(element, numbers, depth + 1) ? S_OK : DISP_E_TYPEMISMATCH;
               }));
    }
    if (isNone(value.vt)) return true;
    Variant number;
    if (FAILED(changeType(value, VT_I4, number)) || numbers.size() == mostNumbers) return false;
    numbers.push_back(number.lVal);
    return true;
}

} // namespace

bool collectSheets(const VARIANT& source, std::vector<ComPtr<_cPixSheet>>& sheets) {
    return isSound(source) && addSheets(source, sheets, 0);
}

bool collectIconSizes(SAFEARRAY* sizes, std::vector<IconEntrySize>& entries) {
    std::vector<std::int32_t> numbers;
    VARIANT value = {};
    value.vt = VT_ARRAY | VT_VARIANT;
    value.parray = sizes;
    if (!isSound(value) || !addNumbers(value, numbers, 0) || numbers.size() % 3 != 0) return false;
    for (std::size_t i = 0; i < numbers.size(); i += 3)
        entries.push_back({numbers[i], numbers[i + 1], numbers[i + 2]});
    return true;
}

bool collectOptions(SAFEARRAY** options, std::vector<std::int32_t>& numbers) {
    if (options == nullptr || *options == nullptr) return true;
    VARIANT whole = {};
    whole.vt = VT_ARRAY | VT_VARIANT;
    whole.parray = *options;
    if (!isSound(whole)) return false;
    bool isEnd = false;
    return SUCCEEDED(forElements(*options, [&](const VARIANT& element, std::size_t) {
        if (isNone(plainValue(element).vt)) return isEnd = true, S_OK;
        return !isEnd && addNumbers(element, numbers, 1) ? S_OK : DISP_E_TYPEMISMATCH;
    }));
}

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
