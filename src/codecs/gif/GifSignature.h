#pragma once
#include <algorithm>
#include <cstdint>
#include <span>
#include <string_view>

namespace pixkit {

// Whether data begins as a GIF does, in capitals or not.
inline bool hasGifSignature(std::span<const std::uint8_t> data) noexcept {
    using namespace std::string_view_literals;
    const auto lower = [](std::uint8_t byte) {
        return static_cast<char>(byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte);
    };
    return data.size() >= 6 && (std::ranges::equal(data.first(6), "gif89a"sv, {}, lower) ||
                                std::ranges::equal(data.first(6), "gif87a"sv, {}, lower));
}

} // namespace pixkit
