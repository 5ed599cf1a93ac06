// The pictures that benchmarks run on: a folder named by PIXKIT_CORPUS, which scripts/corpus.sh fills.
#pragma once
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace bench {

using Bytes = std::vector<std::uint8_t>;

inline std::filesystem::path corpusFolder() {
    const char* folder = std::getenv("PIXKIT_CORPUS");
    return folder != nullptr ? folder : "corpus/pictures";
}

inline Bytes readFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A group of pictures that is timed as one: a single file, or all files of a folder.
struct Group {
    std::string name;
    std::vector<Bytes> files;
};

inline std::vector<Group> pngGroups() {
    std::vector<Group> groups;
    for (const char* name : {"photo_rgb", "wall_rgb", "draw_rgba", "clip_rgba", "pal_photo", "pal_draw", "grey",
                             "ilace_rgb", "ilace_rgba"}) {
        const auto path = corpusFolder() / (std::string(name) + ".png");
        if (std::filesystem::exists(path)) groups.push_back({name, {readFile(path)}});
    }
    Group icons{"icons_200", {}};
    if (std::filesystem::exists(corpusFolder() / "icons")) {
        for (const auto& entry : std::filesystem::directory_iterator(corpusFolder() / "icons")) {
            icons.files.push_back(readFile(entry.path()));
        }
        groups.push_back(std::move(icons));
    }
    return groups;
}

} // namespace bench
// SPDX-License-Identifier: MIT
