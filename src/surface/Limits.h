// What an instance refuses for its size, from the headers, before memory or time is spent on it.
#pragma once
#include "diagnostics/Outcome.h"
#include <cstdint>

namespace pixkit {

inline constexpr Reason beyondAnyImage = "more pixels than an image can hold";
inline constexpr Reason beyondMaxPixels = "more pixels than MaxPixels allows";
inline constexpr Reason beyondMaxMemory = "more memory than MaxMemory allows";

// Whether limits are why something was refused.
inline bool isBeyondLimits(const Outcome& outcome) noexcept {
    return outcome.reason() == beyondMaxPixels.text() || outcome.reason() == beyondMaxMemory.text();
}

// cPixSheet::MaxPixels and MaxMemory; 0 is none. All numbers here are doubles, as those of callers are: what headers
// state may be multiplied and added without wrapping round.
struct Limits {
    double pixels = 0, memory = 0;
    double held = 0; // bytes that a load holds from its beginning to its end: Holding, below

    Limits() = default;
    ~Limits() = default;
    // Another instance takes the limits over, not what is held.
    Limits(const Limits& other) noexcept : pixels(other.pixels), memory(other.memory) {}
    Limits& operator=(const Limits& other) noexcept {
        pixels = other.pixels;
        memory = other.memory;
        return *this;
    }

    bool areSet() const noexcept { return pixels != 0 || memory != 0; }
    // Why a picture of this size is refused, for which bytes are taken besides 4 for each pixel; none if it is not.
    Reason problem(double width, double height, double besides = 0) const noexcept {
        const double count = width * height;
        if (pixels != 0 && count > pixels) return beyondMaxPixels;
        if (memory != 0 && held + 4 * count + besides > memory) return beyondMaxMemory;
        return {};
    }
    // For how many bytes something is asked that may have any number of them: one too many tells that there are more.
    std::uint64_t bytesToAskFor() const noexcept {
        constexpr double most = 1ULL << 62;
        return memory == 0 || memory >= most ? UINT64_MAX : static_cast<std::uint64_t>(memory) + 1;
    }
    // Numbers below 0, and what is none, say nothing that a limit could be.
    static void set(double& limit, double value) noexcept {
        if (value >= 0) limit = value;
    }

    // Counts bytes as held for the length of its life, besides those that an outer one counts.
    class Holding {
      public:
        Holding(Limits& limits, double bytes) noexcept : m_limits(limits), m_before(limits.held) {
            m_limits.held += bytes;
        }
        ~Holding() { m_limits.held = m_before; }
        Holding(const Holding&) = delete;
        Holding& operator=(const Holding&) = delete;

      private:
        Limits& m_limits;
        double m_before;
    };
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
