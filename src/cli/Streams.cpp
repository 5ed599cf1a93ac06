#include "cli/Streams.h"
#include "cli/Saving.h"
#include "cli/Text.h"
#include "cli/UsageError.h"
#include "platform/console.h"
#include <fstream>
#include <istream>
#include <ostream>
#include <set>
#include <utility>
#include <vector>

namespace pixkit::cli {

namespace {

// The N of /dev/fd/N, or nothing.
std::string_view descriptorOf(std::string_view name) {
    for (const std::string_view folder : {"/dev/fd/", "/proc/self/fd/"}) {
        if (!name.starts_with(folder)) continue;
        name.remove_prefix(folder.size());
        return name.find_first_not_of("0123456789") == std::string_view::npos ? name : "";
    }
    return "";
}

std::vector<std::uint8_t> readAll(std::istream& in, const std::string& name) {
    constexpr std::size_t atOnce = std::size_t{1} << 16, most = 0x7FFFFFFF;
    std::vector<std::uint8_t> bytes;
    while (in) {
        const std::size_t before = bytes.size();
        bytes.resize(before + atOnce);
        in.read(reinterpret_cast<char*>(bytes.data() + before), atOnce);
        bytes.resize(before + static_cast<std::size_t>(in.gcount()));
        if (bytes.size() > most) throw Failed(name, "more than 2 GiB came through the pipe");
    }
    if (in.bad()) throw Failed(name, "the pipe cannot be read");
    return bytes;
}

} // namespace

bool isStandard(std::string_view name) {
    const std::string_view descriptor = descriptorOf(name);
    return name == "-" || name == "/dev/stdin" || name == "/dev/stdout" || descriptor == "0" || descriptor == "1";
}

bool isStream(std::string_view name) {
    return isStandard(name) || !descriptorOf(name).empty();
}

void refuseTwice(const std::vector<std::string>& names) {
    std::set<std::string_view> streams; // by their descriptors
    for (const std::string_view name : names)
        if (isStream(name) && !streams.insert(isStandard(name) ? "-" : descriptorOf(name)).second)
            throw UsageError("what comes through a pipe can be read once");
}

PictureSource openSource(const std::string& name, std::istream& standardInput) {
    PictureSource source(name);
    if (!isStream(name)) return source;
    std::vector<std::uint8_t> bytes;
    if (isStandard(name)) {
        platform::useBytes(platform::StandardStream::input);
        bytes = readAll(standardInput, name);
    } else {
        std::ifstream pipe(toPath(name), std::ios::binary);
        if (!pipe) throw Failed(name, "the pipe cannot be opened");
        bytes = readAll(pipe, name);
    }
    if (bytes.empty()) throw Failed(name, "nothing came through the pipe");
    source.bytes.emplace(std::move(bytes));
    return source;
}

void writeStream(const std::string& name, const ByteArray& bytes, std::ostream& standardOutput) {
    std::ofstream pipe;
    if (isStandard(name)) {
        platform::useBytes(platform::StandardStream::output);
    } else {
        // A descriptor may be a file that the shell has opened to be continued.
        pipe.open(toPath(name), std::ios::binary | std::ios::app);
    }
    std::ostream& out = isStandard(name) ? standardOutput : pipe;
    const auto all = bytes.bytes();
    out.write(reinterpret_cast<const char*>(all.data()), static_cast<std::streamsize>(all.size()));
    if (!out.flush()) throw Failed(name, "it cannot be written to");
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
