#include "com/Arrays.h"
#include "com/Automation.h"
#include "com/Values.h"
#include <cstring>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace pixkit::com {

namespace {

constexpr unsigned typeKnown =
    FADF_HAVEVARTYPE | FADF_RECORD | FADF_HAVEIID | FADF_BSTR | FADF_UNKNOWN | FADF_DISPATCH | FADF_VARIANT;

// SAFEARRAYs keep their bounds last dimension first.
const SAFEARRAYBOUND& boundOf(const SAFEARRAY* array, unsigned dimension) noexcept {
    return array->rgsabound[array->cDims - dimension];
}

ByteArray::Bound byteBound(const SAFEARRAY* array, unsigned dimension) noexcept {
    const SAFEARRAYBOUND& bound = boundOf(array, dimension);
    return {static_cast<std::int32_t>(bound.lLbound), static_cast<std::uint32_t>(bound.cElements)};
}

ByteArray borrowed(SAFEARRAY* array) {
    if (array == nullptr || array->pvData == nullptr) return {};
    auto* const data = static_cast<std::uint8_t*>(array->pvData);
    return array->cDims == 1 ? ByteArray::borrow(data, byteBound(array, 1))
                             : ByteArray::borrow(data, byteBound(array, 1), byteBound(array, 2));
}

// Unlike in the array itself, bounds are given first dimension first.
SAFEARRAY* created(VARTYPE type, int dimensions, ByteArray::Bound first, ByteArray::Bound second) noexcept {
    SAFEARRAYBOUND bounds[2];
    bounds[0].cElements = first.count;
    bounds[0].lLbound = first.lower;
    bounds[1].cElements = second.count;
    bounds[1].lLbound = second.lower;
    return ::SafeArrayCreate(type, static_cast<UINT>(dimensions), bounds);
}

struct Destroyer {
    void operator()(SAFEARRAY* array) const noexcept { ::SafeArrayDestroy(array); }
};
// An array that the caller has not got yet.
using OwnArray = std::unique_ptr<SAFEARRAY, Destroyer>;

// An array of the same bounds with elements of another type.
OwnArray createdLike(const SAFEARRAY* array, VARTYPE type) {
    std::vector<SAFEARRAYBOUND> bounds(array->rgsabound, array->rgsabound + array->cDims);
    return OwnArray(
        ::SafeArrayCreate(type, array->cDims, std::vector<SAFEARRAYBOUND>(bounds.rbegin(), bounds.rend()).data()));
}

// A string becomes one of the array's own.
HRESULT convertElement(VARIANT& element, VARTYPE type, LCID locale, std::uint8_t* out, std::size_t size) noexcept {
    if (element.vt == type && type != VT_BSTR) {
        std::memcpy(out, &element.byref, size);
        return S_OK;
    }
    Variant value;
    const HRESULT result = changeType(element, type, value, locale);
    if (FAILED(result)) return result;
    std::memcpy(out, &value.byref, size);
    value.detach();
    return result;
}

// Gives the caller `filled`, which may be null, for what it has. A caller may have locked its array meanwhile, from a
// window procedure that ran during the call: then it keeps it.
bool replace(SAFEARRAY** target, SAFEARRAY* filled) noexcept {
    if (*target != nullptr && FAILED(::SafeArrayDestroy(*target))) {
        if (filled != nullptr) ::SafeArrayDestroy(filled);
        return false;
    }
    *target = filled;
    return true;
}

} // namespace

ULONG elementSize(VARTYPE type) noexcept {
    switch (type) {
    case VT_I1:
    case VT_UI1:
        return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
        return 2;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_R4:
    case VT_ERROR:
        return 4;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_DATE:
    case VT_CY:
        return 8;
    case VT_BSTR:
    case VT_DISPATCH:
    case VT_UNKNOWN:
        return sizeof(void*);
    case VT_VARIANT:
        return sizeof(VARIANT);
    default:
        return 0;
    }
}

bool hasElements(SAFEARRAY* array, VARTYPE type) noexcept {
    if (array->cDims == 0) return false;
    if ((array->fFeatures & typeKnown) == 0) {
        return (type == VT_UI1 || type == VT_I4 || type == VT_VARIANT) && array->cbElements == elementSize(type);
    }
    VARTYPE found = VT_EMPTY;
    return SUCCEEDED(::SafeArrayGetVartype(array, &found)) && found == type;
}

std::size_t elementCount(const SAFEARRAY* array) noexcept {
    std::size_t count = array->pvData == nullptr ? 0 : 1;
    for (unsigned i = 0; i < array->cDims; ++i)
        count *= array->rgsabound[i].cElements;
    return count;
}

std::vector<std::uint8_t> bytesOf(const SAFEARRAY* array) {
    const auto* const data = static_cast<const std::uint8_t*>(array->pvData);
    return {data, data + elementCount(array) * array->cbElements};
}

bool isReplaceable(const SAFEARRAY* array) noexcept {
    return array->cLocks == 0 && (array->fFeatures & (FADF_AUTO | FADF_STATIC | FADF_EMBEDDED | FADF_FIXEDSIZE)) == 0;
}

CallersBytes::CallersBytes(SAFEARRAY** target, Access access) noexcept
    : m_target(target), m_access(access), m_usable(*target == nullptr) {
    SAFEARRAY* const array = *target;
    if (access != Access::read) m_bytes.allocateFrom(*this);
    if (array == nullptr || !hasElements(array, VT_UI1)) return;
    if (access == Access::read) {
        if (array->cDims > 2 || FAILED(::SafeArrayLock(array))) return;
        m_locked = array;
        m_bytes = borrowed(array);
        m_usable = true;
        return;
    }
    m_usable = isReplaceable(array);
    // More dimensions than a ByteArray has do not matter: nothing reads what is about to be replaced.
    if (m_usable && array->cDims <= 2) m_bytes = borrowed(array);
    m_before = m_bytes.data();
    m_wasAllocated = m_bytes.isAllocated();
    m_bytes.allocateFrom(*this);
}

CallersBytes::~CallersBytes() {
    if (m_locked != nullptr) ::SafeArrayUnlock(m_locked);
    if (m_made != nullptr) ::SafeArrayDestroy(m_made);
}

std::uint8_t* CallersBytes::redim(int dimensions, ByteArray::Bound first, ByteArray::Bound second) {
    const bool sameShape = m_wasAllocated && (*m_target)->cDims == dimensions && byteBound(*m_target, 1) == first &&
                           (dimensions == 1 || byteBound(*m_target, 2) == second);
    if (m_access == Access::refill && sameShape) {
        auto* const data = static_cast<std::uint8_t*>((*m_target)->pvData);
        std::memset(data, 0, elementCount(*m_target));
        return data;
    }
    SAFEARRAY* const made = created(VT_UI1, dimensions, first, second);
    if (made == nullptr) throw std::bad_alloc();
    if (m_made != nullptr) ::SafeArrayDestroy(m_made);
    m_made = made;
    return static_cast<std::uint8_t*>(made->pvData);
}

// The bytes as an array of the caller's: the one that redim made, or a copy of bytes from elsewhere.
SAFEARRAY* CallersBytes::takeFilled() noexcept {
    if (m_made != nullptr && m_bytes.data() == m_made->pvData) return std::exchange(m_made, nullptr);
    SAFEARRAY* const filled = created(VT_UI1, m_bytes.dimensions(), m_bytes.bound(1), m_bytes.bound(2));
    if (filled != nullptr && m_bytes.size() != 0) std::memcpy(filled->pvData, m_bytes.data(), m_bytes.size());
    return filled;
}

bool CallersBytes::store() noexcept {
    if (m_bytes.data() == m_before && m_bytes.isAllocated() == m_wasAllocated) return true;
    SAFEARRAY* filled = nullptr;
    if (m_bytes.isAllocated()) {
        filled = takeFilled();
        if (filled == nullptr) return false;
    }
    return replace(m_target, filled);
}

bool replaceByLongs(SAFEARRAY** target, const std::int32_t* values, std::uint32_t fast, std::uint32_t slow) {
    if (*target != nullptr && (!isReplaceable(*target) || !hasElements(*target, VT_I4))) return false;
    SAFEARRAY* const filled = created(VT_I4, 2, {0, fast}, {0, slow});
    if (filled == nullptr) throw std::bad_alloc();
    std::memcpy(filled->pvData, values, std::size_t{fast} * slow * sizeof *values);
    return replace(target, filled);
}

bool replaceByStrings(SAFEARRAY** target, const std::vector<std::string>& texts) {
    if (*target != nullptr && (!isReplaceable(*target) || !hasElements(*target, VT_BSTR))) return false;
    OwnArray filled(::SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(texts.size())));
    if (!filled) throw std::bad_alloc();
    auto* element = static_cast<BSTR*>(filled->pvData);
    for (const std::string& text : texts) {
        *element = toBstr(text);
        if (*element++ == nullptr) return false; // to callers it would be an empty string
    }
    return replace(target, filled.release());
}

HRESULT arrayFromVariants(SAFEARRAY* variants, VARTYPE type, LCID locale, SAFEARRAY** result) noexcept try {
    *result = nullptr;
    if (variants == nullptr) return S_OK;
    // Whatever the variable says of it: other elements read as VARIANTs would be wild.
    if (!hasElements(variants, VT_VARIANT)) return DISP_E_TYPEMISMATCH;
    OwnArray array = createdLike(variants, type);
    if (!array) return E_OUTOFMEMORY;
    auto* const out = static_cast<std::uint8_t*>(array->pvData);
    const HRESULT status = forElements(variants, [&](VARIANT& element, std::size_t i) {
        return convertElement(element, type, locale, out + i * array->cbElements, array->cbElements);
    });
    if (FAILED(status)) return status;
    *result = array.release();
    return S_OK;
} catch (...) {
    return E_OUTOFMEMORY;
}

HRESULT variantsFromArray(SAFEARRAY* array, VARTYPE type, SAFEARRAY** result) noexcept try {
    *result = nullptr;
    if (array == nullptr) return S_OK;
    OwnArray variants = createdLike(array, VT_VARIANT);
    if (!variants) return E_OUTOFMEMORY;
    const auto* in = static_cast<const std::uint8_t*>(array->pvData);
    auto* const elements = static_cast<VARIANT*>(variants->pvData);
    const std::size_t count = elementCount(array);
    for (std::size_t i = 0; i < count; ++i, in += array->cbElements) {
        VARIANT element = {}; // not owned
        element.vt = type;
        std::memcpy(&element.byref, in, array->cbElements);
        if (const HRESULT status = ::VariantCopy(&elements[i], &element); FAILED(status)) return status;
    }
    *result = variants.release();
    return S_OK;
} catch (...) {
    return E_OUTOFMEMORY;
}

bool becomeVariants(SAFEARRAY*& bytes) noexcept {
    const OwnArray plain(bytes);
    return SUCCEEDED(variantsFromArray(plain.get(), VT_UI1, &bytes));
}

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
