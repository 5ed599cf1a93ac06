// Transcripts are calls of cPixSheet as text, each with the result it must have. The files in tests/data/transcripts
// run through every engine: the native class here, late-bound and early-bound COM in tests/com. Their README explains
// how they are written.
#pragma once
#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace pixkit::test {

using Object = std::shared_ptr<void>; // of the kind that the engine makes; null is Nothing

struct Missing {}; // an optional argument that is left out
struct Date {
    double days;
}; // since 30 December 1899
struct Word {
    std::string text;
};             // an outcome that is no value, such as the name of an error
struct Array { // of bytes or 32-bit numbers, the first index runs fastest
    std::vector<std::int32_t> elements;
    int dimensions = 1;
    std::array<std::int32_t, 2> lower{};
    std::array<std::uint32_t, 2> count{0, 1};
    bool hasLongs = false;
};
struct Value : std::variant<std::monostate, bool, std::int64_t, double, std::string, Array, Object, std::vector<Value>,
                            Date, Missing, Word> {
    using variant::variant;
};

struct Argument {
    Value value;
    std::string name;        // of a named argument
    bool isVariable = false; // the member may store another value
};

// One way of calling the class.
class Engine {
  public:
    virtual ~Engine() = default;
    // What a section that is not for all engines calls it.
    virtual std::vector<std::string> names() const = 0;
    virtual Object create() = 0;
    // Calls a member, or gives a property its one argument. std::monostate where nothing comes back; a Word for a
    // refused call. Raises what makes the call impossible, such as an argument of another kind.
    virtual Value call(const Object& object, const std::string& member, std::vector<Argument>& arguments,
                       bool isPut) = 0;
};

std::vector<std::filesystem::path> transcripts();
// As a name for a test: that of the file without its folder and extension.
std::string transcriptName(const std::filesystem::path& file);

// Runs the sections that are for this engine. With PIXKIT_WRITE_TRANSCRIPTS set, results that differ are written into
// the file instead of failing.
void runTranscript(const std::filesystem::path& file, Engine& engine);

} // namespace pixkit::test
