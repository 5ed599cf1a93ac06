// What the readers of all formats are given, and what they answer.
#pragma once
#include "diagnostics/Outcome.h"
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace pixkit {

class cPixSheet;

// Which image of an icon file to take: the nearest to a size (0 = any) and a depth in bits.
struct IconRequest {
    // Sizes below 0 mean any; a depth outside 0 .. 32 means 32.
    IconRequest(std::int32_t cx, std::int32_t cy, std::int32_t depth) noexcept
        : cX(cx < 0 ? 0 : cx), cY(cy < 0 ? 0 : cy), bitDepth(depth < 0 || depth > 32 ? 32 : depth) {}

    std::int32_t cX, cY, bitDepth;
};

// Bytes that their holder may change.
struct OwnBytes {
    std::unique_ptr<std::uint8_t[]> data;
    std::size_t size = 0;
    std::span<std::uint8_t> bytes() const noexcept { return {data.get(), size}; }
};

// Where a picture is read from: a file, or a part of an array.
class PictureSource {
  public:
    virtual ~PictureSource() = default;
    // All the bytes. Throws std::runtime_error when the file cannot be read.
    virtual std::span<const std::uint8_t> bytes() = 0;
    // Whether it is a file, of which ownBytes() reads a copy. Throws like bytes().
    virtual bool isFile() const noexcept = 0;
    virtual OwnBytes ownBytes() const = 0;
    // The first and the last bytes, at most `count`, without the rest of a file. Throw like bytes().
    virtual std::vector<std::uint8_t> start(std::size_t count) const = 0;
    virtual std::vector<std::uint8_t> end(std::size_t count) const = 0;
    // Where in the array the bytes begin, counted from 0; 0 in a file.
    virtual std::size_t offset() const noexcept = 0;
    virtual const IconRequest& icon() const noexcept = 0;
};

enum class ReadOutcome : std::uint8_t {
    loaded,      // the host holds the picture
    otherFormat, // the data is none of this format
    damaged,     // or of a kind that is not read, or too large
    forbidden,   // by the host's limits (surface/Limits.h), or too much for any decoder: nobody else is asked
    unable,      // not the data's fault: no memory, or the system failed
    failed,      // a run-time error that nobody expected
};

// Without a picture, what the host holds is no matter: whoever asked the reader empties it.
struct ReadResult {
    ReadOutcome outcome = ReadOutcome::damaged;
    Outcome why;            // there is no picture, for people
    std::string error = {}; // what a run-time error said

    explicit operator bool() const noexcept { return outcome == ReadOutcome::loaded; }
    static ReadResult loaded() { return {ReadOutcome::loaded, done()}; }
    static ReadResult damaged(Reason reason) { return {ReadOutcome::damaged, refused(reason)}; }
    static ReadResult forbidden(Reason reason) { return {ReadOutcome::forbidden, refused(reason)}; }
    static ReadResult unable(Reason reason) { return {ReadOutcome::unable, refused(reason)}; }
    static ReadResult otherFormat(Reason reason) { return {ReadOutcome::otherFormat, refused(reason)}; }
    // `outcome`: unable where nobody is told.
    static ReadResult failed(const std::exception& error, ReadOutcome outcome = ReadOutcome::failed) {
        return {outcome, Outcome(error), error.what()};
    }
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
