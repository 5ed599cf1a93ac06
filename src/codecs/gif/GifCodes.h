// Whether a GIF's codes describe its whole image, found out without decoding it.
#pragma once
#include <cstddef>
#include <cstdint>
#include <span>

namespace pixkit {

// True when the LZW codes (GIF89a, appendix F) in a chain of sub-blocks, which begins at `chain` and must end within
// it, stand for at least `count` indexes; codes behind those are not looked at. `codeSize` is the number of bits of an
// index, 1 to 11. False when the codes end too early, by their end or by their end code, when one stands for no string
// yet, or when the code size is none.
bool codesFillImage(std::span<const std::uint8_t> chain, unsigned codeSize, std::uint64_t count) noexcept;

} // namespace pixkit
