// A file of which headers are read.
#pragma once
#include "cli/Files.h"
#include "cli/Streams.h"
#include "cli/Text.h"
#include "codecs/PictureFacts.h"
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <vector>

namespace pixkit::cli {

class FileHeaders final : public HeaderSource {
  public:
    explicit FileHeaders(const std::filesystem::path& path) : m_file(path, std::ios::binary) {
        std::error_code error;
        const std::uintmax_t size = std::filesystem::file_size(path, error);
        m_size = error || !m_file ? 0 : size;
    }
    std::uint64_t size() const override { return m_size; }
    std::vector<std::uint8_t> read(std::uint64_t position, std::size_t count) override {
        if (position >= m_size) return {};
        count = static_cast<std::size_t>(std::min<std::uint64_t>(count, m_size - position));
        if (count > pieceBytes) return fromFile(position, count);
        if (position < m_start || position + count > m_start + m_piece.size()) {
            m_piece = fromFile(position, static_cast<std::size_t>(std::min(pieceBytes, m_size - position)));
            m_start = position;
        }
        const auto begin = m_piece.begin() + static_cast<std::ptrdiff_t>(position - m_start);
        return {begin, begin + static_cast<std::ptrdiff_t>(count)};
    }

  private:
    // Little is taken from a piece that was read at once, or files of many tiny parts would be read and sought in twice
    // for each of them.
    static constexpr std::uint64_t pieceBytes = 8192;

    std::vector<std::uint8_t> fromFile(std::uint64_t position, std::size_t count) {
        std::vector<std::uint8_t> bytes(count);
        m_file.clear();
        m_file.seekg(static_cast<std::streamoff>(position));
        m_file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        if (!m_file) throw std::runtime_error("the file cannot be read");
        return bytes;
    }

    std::ifstream m_file;
    std::uint64_t m_size = 0;
    std::vector<std::uint8_t> m_piece;
    std::uint64_t m_start = 0; // of the piece
};

// All of what came through a pipe.
class StreamHeaders final : public HeaderSource {
  public:
    explicit StreamHeaders(std::span<const std::uint8_t> bytes) : m_bytes(bytes) {}
    std::uint64_t size() const override { return m_bytes.size(); }
    std::vector<std::uint8_t> read(std::uint64_t position, std::size_t count) override {
        if (position >= m_bytes.size()) return {};
        const auto rest = m_bytes.subspan(static_cast<std::size_t>(position));
        const auto part = rest.first(std::min(count, rest.size()));
        return {part.begin(), part.end()};
    }

  private:
    std::span<const std::uint8_t> m_bytes;
};

// Null for what is no file, but a device, say; the load says so. The source has to outlive it.
inline std::unique_ptr<HeaderSource> headersOf(const PictureSource& source) {
    if (source.bytes) return std::make_unique<StreamHeaders>(source.bytes->bytes());
    if (!isFile(source.name)) return nullptr;
    return std::make_unique<FileHeaders>(toPath(source.name));
}

// What they tell; nothing where they tell nothing or cannot be read, of which a load says why.
inline std::optional<PictureFacts> factsOf(const PictureSource& source) {
    try {
        const auto headers = headersOf(source);
        return headers ? readPictureFacts(*headers) : std::nullopt;
    } catch (const std::exception&) {
        return {};
    }
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
