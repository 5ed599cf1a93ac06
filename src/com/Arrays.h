// SAFEARRAYs of callers as the byte arrays of the native class, and back.
#pragma once
#include "com/Automation.h"
#include "shared/ByteArray.h"
#include <vector>

namespace pixkit::com {

// Whether its elements are of this type. An array that does not know its type counts by the size of its elements.
bool hasElements(SAFEARRAY* array, VARTYPE type) noexcept;

// Whether another array may take its place: it is neither locked nor fixed (nor on a stack, nor part of something).
bool isReplaceable(const SAFEARRAY* array) noexcept;

// A caller's bytes, borrowed and locked for as long as this lives. Of no array, or one without data, the bytes are
// unallocated.
class InputArray {
  public:
    explicit InputArray(SAFEARRAY* array) noexcept;
    ~InputArray();
    InputArray(const InputArray&) = delete;
    InputArray& operator=(const InputArray&) = delete;

    // False for elements other than bytes, more than two dimensions, or an array that cannot be locked.
    bool isUsable() const noexcept { return m_usable; }
    const ByteArray& bytes() const noexcept { return m_bytes; }

  private:
    SAFEARRAY* m_locked = nullptr;
    bool m_usable = false;
    ByteArray m_bytes;
};

// A caller's array that a member fills. What the caller has stays as it is until store() succeeds, except that pixels
// asked for again in the same shape are written where they were the last time.
class OutputArray final : private ByteArray::Memory {
  public:
    enum class Reuse : bool { no, sameShape };

    OutputArray(SAFEARRAY** target, Reuse reuse) noexcept;
    ~OutputArray();
    OutputArray(const OutputArray&) = delete;
    OutputArray& operator=(const OutputArray&) = delete;

    // False for elements other than bytes, and for locked and fixed arrays.
    bool isUsable() const noexcept { return m_usable; }
    // What a member is given to fill: at first the caller's own bytes. What redim makes lies in an array for the
    // caller.
    ByteArray& bytes() noexcept { return m_bytes; }
    // Gives the caller what the member made of the bytes. False without memory for it.
    bool store() noexcept;

  private:
    std::uint8_t* redim(int dimensions, ByteArray::Bound first, ByteArray::Bound second) override;
    SAFEARRAY* takeFilled() noexcept;

    SAFEARRAY** m_target;
    Reuse m_reuse;
    SAFEARRAY* m_made = nullptr; // by redim, until store()
    const std::uint8_t* m_before = nullptr;
    bool m_wasAllocated = false;
    bool m_usable = false;
    ByteArray m_bytes;
};

// Replaces a caller's array by one of 32-bit numbers with two dimensions from 0, `fast` numbers in each of `slow` rows;
// `values` holds them row by row. False, and the array as it was, for other elements, a locked or fixed array, or
// without memory.
bool replaceByLongs(SAFEARRAY** target, const std::int32_t* values, std::uint32_t fast, std::uint32_t slow) noexcept;

// The same array with elements of another type: what scripts can index are arrays of VARIANT. The caller owns the
// result; null in gives null.
HRESULT arrayFromVariants(SAFEARRAY* variants, VARTYPE type, LCID locale, SAFEARRAY** result) noexcept;
HRESULT variantsFromArray(SAFEARRAY* array, VARTYPE type, SAFEARRAY** result) noexcept;

// The elements of an array of plain numbers as bytes.
std::vector<std::uint8_t> bytesOf(const SAFEARRAY* array);

} // namespace pixkit::com
