// Transcripts are calls of cPixSheet as text, each with what it must give. The files in tests/data/transcripts, whose
// README explains how they are written, run through every way of calling the class.
#pragma once
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
    double days = 0; // since 30 December 1899
};
struct Word { // a result that is no value, such as the name of an error
    std::string text;
};
struct Array { // bytes or 32-bit numbers, in two dimensions the first index runs fastest
    std::vector<std::int32_t> elements;
    std::int32_t lower = 0; // first index of the first dimension
    std::uint32_t rows = 0; // of the second dimension; 0: there is one only
    bool hasLongs = false;
    std::uint32_t rowSize() const { return static_cast<std::uint32_t>(elements.size()) / (rows == 0 ? 1 : rows); }
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
    // What sections that are not for all engines call it.
    virtual std::vector<std::string> names() const = 0;
    virtual Object create() = 0;
    // Calls a member, or gives a property its one argument. Nothing comes back as std::monostate. Throws where the call
    // cannot be made, such as for an argument of another kind.
    virtual Value call(const Object& object, const std::string& member, std::vector<Argument>& arguments,
                       bool isPut) = 0;
};

std::vector<std::filesystem::path> transcripts();

// Runs the sections that are for this engine. With PIXKIT_WRITE_TRANSCRIPTS in the environment, results that differ are
// written into the file instead of failing.
void runTranscript(const std::filesystem::path& file, Engine& engine);

} // namespace pixkit::test

// A test for each transcript; `make` gives the engine.
#define PIXKIT_RUN_TRANSCRIPTS(suite, make)                                                                            \
    /* NOLINTNEXTLINE(bugprone-macro-parentheses): a name */                                                           \
    class suite : public testing::TestWithParam<std::filesystem::path> {};                                             \
    TEST_P(suite, GiveSomethingElse) {                                                                                 \
        auto engine = make;                                                                                            \
        runTranscript(GetParam(), engine);                                                                             \
    }                                                                                                                  \
    INSTANTIATE_TEST_SUITE_P(All, suite, testing::ValuesIn(transcripts()),                                             \
                             [](const auto& file) { return file.param.stem().string(); })
// SPDX-License-Identifier: MIT
