// SAFEARRAYs of callers as the byte arrays of the native class, and back.
#pragma once
#include "com/Automation.h"
#include "shared/ByteArray.h"
#include <cstring>
#include <string>
#include <vector>

namespace pixkit::com {

// Bytes of an element of this type; 0 for those that nobody asks for.
ULONG elementSize(VARTYPE type) noexcept;

// Whether its elements are of this type. An array that does not know its type counts by the size of its elements.
bool hasElements(SAFEARRAY* array, VARTYPE type) noexcept;

// Whether another array may take its place: it is neither locked nor fixed (nor on a stack, nor part of something).
bool isReplaceable(const SAFEARRAY* array) noexcept;

// A caller's array of bytes while a member works on it: borrowed and locked to be read, or to be replaced by what the
// member makes of it. What the caller has stays as it is until store() succeeds, except that with `refill` pixels asked
// for again in the same shape are written where they were the last time.
class CallersBytes final : private ByteArray::Memory {
  public:
    enum class Access { read, replace, refill };

    CallersBytes(SAFEARRAY** target, Access access) noexcept;
    ~CallersBytes();
    CallersBytes(const CallersBytes&) = delete;
    CallersBytes& operator=(const CallersBytes&) = delete;

    // False for elements other than bytes; to be read, for more than two dimensions and an array that cannot be locked;
    // to be replaced, for locked and fixed arrays.
    bool isUsable() const noexcept { return m_usable; }
    // The caller's own bytes, unallocated for no array, one without data, and one that is not usable. What redim makes
    // lies in an array for the caller.
    const ByteArray& bytes() const noexcept { return m_bytes; }
    ByteArray& bytes() noexcept { return m_bytes; }
    // Gives the caller what the member made of the bytes. False without memory for it.
    bool store() noexcept;

  private:
    std::uint8_t* redim(int dimensions, ByteArray::Bound first, ByteArray::Bound second) override;
    SAFEARRAY* takeFilled() noexcept;

    SAFEARRAY** m_target;
    Access m_access;
    SAFEARRAY* m_locked = nullptr;
    SAFEARRAY* m_made = nullptr; // by redim, until store()
    const std::uint8_t* m_before = nullptr;
    bool m_wasAllocated = false;
    bool m_usable = false;
    ByteArray m_bytes;
};

// Replaces a caller's array by one of 32-bit numbers with two dimensions from 0, `fast` numbers in each of `slow` rows;
// `values` holds them row by row. False, and the array as it was, for other elements and a locked or fixed array. May
// throw std::bad_alloc, which leaves the array as it was too.
bool replaceByLongs(SAFEARRAY** target, const std::int32_t* values, std::uint32_t fast, std::uint32_t slow);

// Replaces a caller's array by one of strings, from 0, likewise.
bool replaceByStrings(SAFEARRAY** target, const std::vector<std::string>& texts);

// The same array with elements of another type: what scripts can index are arrays of VARIANT. The caller owns the
// result; null in gives null.
HRESULT arrayFromVariants(SAFEARRAY* variants, VARTYPE type, LCID locale, SAFEARRAY** result) noexcept;
HRESULT variantsFromArray(SAFEARRAY* array, VARTYPE type, SAFEARRAY** result) noexcept;

// The same in place of an array of bytes. False, and the array is gone, without memory.
bool becomeVariants(SAFEARRAY*& bytes) noexcept;

std::size_t elementCount(const SAFEARRAY* array) noexcept;
// The elements of an array of plain numbers as bytes.
std::vector<std::uint8_t> bytesOf(const SAFEARRAY* array);

// Keeps the elements of an array where they are for a scope: locked for good, its owner could never free it.
class ArrayLock {
  public:
    explicit ArrayLock(SAFEARRAY* array) noexcept : m_array(array), m_status(::SafeArrayLock(array)) {}
    ~ArrayLock() {
        if (SUCCEEDED(m_status)) ::SafeArrayUnlock(m_array);
    }
    ArrayLock(const ArrayLock&) = delete;
    ArrayLock& operator=(const ArrayLock&) = delete;
    HRESULT status() const noexcept { return m_status; }

  private:
    SAFEARRAY* m_array;
    HRESULT m_status;
};

// Calls `use`, which may throw, with each element as a value that owns nothing, and its number, until one fails.
// DISP_E_TYPEMISMATCH for elements that are no numbers, strings or objects, or not as large as those of their type are.
// An array that is not there has none.
template <class Use>
HRESULT forElements(SAFEARRAY* array, Use&& use) {
    if (array == nullptr) return S_OK;
    const bool areVariants = hasElements(array, VT_VARIANT);
    VARTYPE type = VT_VARIANT;
    HRESULT status = areVariants ? S_OK : ::SafeArrayGetVartype(array, &type);
    if (SUCCEEDED(status) && (elementSize(type) == 0 || array->cbElements != elementSize(type)))
        status = DISP_E_TYPEMISMATCH;
    if (FAILED(status)) return status;
    const ArrayLock lock(array);
    status = lock.status();
    const auto* in = static_cast<const std::uint8_t*>(array->pvData);
    const std::size_t count = elementCount(array);
    for (std::size_t i = 0; i < count && SUCCEEDED(status); ++i, in += array->cbElements) {
        VARIANT element = {};
        element.vt = type;
        std::memcpy(areVariants ? static_cast<void*>(&element) : &element.byref, in, array->cbElements);
        status = use(element, i);
    }
    return status;
}

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
