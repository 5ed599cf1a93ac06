#include "transcripts/Transcript.h"
#include "platform/gdi.h"
#include "support/Pictures.h"
#include "support/SourceFolder.h"
#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <map>
#include <optional>
#include <regex>
#include <sstream>

namespace pixkit::test {

namespace {

using Tokens = std::vector<std::string>;

template <class... Cases>
struct Overload : Cases... {
    using Cases::operator()...;
};

// Those of the public interface, from the header itself.
const std::map<std::string, std::int64_t>& enumerators() {
    static const auto all = [] {
        std::map<std::string, std::int64_t> found;
        std::ifstream header(sourceFolder() / "src" / "shared" / "enumerations.h");
        const std::regex entry(R"(^ +(\w+) = (-?\w+))");
        std::smatch match;
        for (std::string line; std::getline(header, line);)
            if (std::regex_search(line, match, entry))
                found[match[1]] = static_cast<std::int32_t>(std::stoll(match[2], nullptr, 0));
        return found;
    }();
    return all;
}

// Words between spaces; strings and what stands in brackets stay whole. A comment ends the line.
Tokens tokensOf(const std::string& line) {
    Tokens tokens;
    for (std::size_t i = 0; (i = line.find_first_not_of(" \t\r", i)) != std::string::npos && line[i] != '#';) {
        const std::size_t begin = i;
        bool isQuoted = false;
        int depth = 0;
        for (; i < line.size() && (isQuoted || depth != 0 || line[i] > ' '); ++i) {
            if (line[i] == '"') isQuoted = !isQuoted;
            if (!isQuoted) depth += (line[i] == '{' || line[i] == '(') - (line[i] == '}' || line[i] == ')');
        }
        tokens.push_back(line.substr(begin, i - begin));
    }
    return tokens;
}

std::string hex(std::uint64_t value, int digits) {
    std::ostringstream text;
    text << std::hex << std::setfill('0') << std::setw(digits) << value;
    return text.str();
}

// FNV-1a, 64 bits.
template <class Range>
std::string checksumOf(const Range& bytes) {
    std::uint64_t checksum = 0xCBF29CE484222325U;
    for (const auto byte : bytes)
        checksum = (checksum ^ static_cast<std::uint8_t>(byte)) * 0x100000001B3U;
    return hex(checksum, 16);
}

// {01 02}, with lower bounds {5: 01 02}, with two dimensions {01 02 | 03 04}.
Array arrayOf(const std::string& token) {
    Array array;
    std::istringstream words(token.substr(1, token.size() - 2));
    for (std::string word; words >> word;) {
        if (word == "|") {
            array.dimensions = 2, ++array.count[1];
        } else if (word.back() == ':') {
            array.lower[0] = std::stoi(word);
        } else {
            array.elements.push_back(std::stoi(word, nullptr, 16));
        }
    }
    array.count[0] = static_cast<std::uint32_t>(array.elements.size()) / array.count[1];
    return array;
}

std::string textOf(const Array& array) {
    std::ostringstream text;
    const bool isShort = array.elements.size() <= 32;
    if (!isShort) text << "bytes ";
    if (isShort) text << (array.hasLongs ? "(" : "{");
    if (array.lower[0] != 0) text << array.lower[0] << ": ";
    if (!isShort) {
        text << array.count[0] << (array.dimensions == 2 ? "x" + std::to_string(array.count[1]) : "") << ' '
             << checksumOf(array.elements);
        return text.str();
    }
    for (std::size_t i = 0; i < array.elements.size(); ++i) {
        if (i != 0) text << (i % array.count[0] == 0 ? " | " : " ");
        text << (array.hasLongs ? std::to_string(array.elements[i]) : hex(static_cast<unsigned>(array.elements[i]), 2));
    }
    if (array.dimensions == 2 && array.count[1] == 1) text << " |";
    text << (array.hasLongs ? ")" : "}");
    return text.str();
}

template <class Number>
std::optional<Number> numberOf(std::string_view text, int base = 10) {
    Number number{};
    std::from_chars_result read;
    if constexpr (std::is_floating_point_v<Number>)
        read = std::from_chars(text.data(), text.data() + text.size(), number);
    else
        read = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (read.ec != std::errc() || read.ptr != text.data() + text.size()) return {};
    return number;
}

// What a word means by itself; nothing for the name of an object or variable.
std::optional<Value> constantOf(const std::string& token) {
    if (token == "True" || token == "False") return token == "True";
    if (token == "Nothing") return Object();
    if (token == "Empty") return Value();
    if (token == "-") return Missing();
    if (token.front() == '"') return token.substr(1, token.size() - 2);
    if (token.front() == '{') return arrayOf(token);
    if (token.starts_with("date:")) return Date{std::stod(token.substr(5))};
    if (const auto found = enumerators().find(token); found != enumerators().end()) return found->second;
    if (token.starts_with("0x")) {
        const auto bits = numberOf<std::uint32_t>(std::string_view(token).substr(2), 16);
        return bits ? std::optional<Value>(std::int64_t{static_cast<std::int32_t>(*bits)}) : std::nullopt;
    }
    if (const auto whole = numberOf<std::int64_t>(token)) return *whole;
    if (const auto real = numberOf<double>(token)) return *real;
    return {};
}

// One engine going through one file.
class Run {
  public:
    Run(Engine& engine) : m_engine(engine) {}

    // What a line gives: the result, then each variable that has changed.
    std::string outcome(Tokens tokens);
    bool isSame(const std::string& expected, const std::string& found);

  private:
    Value evaluate(const std::string& token);
    Argument argument(const std::string& token);
    Object& objectNamed(const std::string& name);
    std::string pathOf(const std::string& token) const;
    std::string textOf(const Value& value) const;
    Value callMember(const std::string& object, const std::string& member, std::vector<Argument>& arguments,
                     bool isPut);
    Value command(const std::string& name, const std::vector<Argument>& arguments);
    std::int64_t property(const Object& object, const char* name);
    Value pixelsOf(const Object& object);
    void paint(const Object& object, const Tokens& pixels);

    Engine& m_engine;
    std::map<std::string, Object> m_objects;
    std::map<std::string, Value> m_variables;
    TemporaryFolder m_scratch;
};

Object& Run::objectNamed(const std::string& name) {
    if (name.front() == '$') {
        auto* const held = std::get_if<Object>(&m_variables[name]);
        if (held == nullptr) throw std::invalid_argument(name + " holds no object");
        return *held;
    }
    Object& object = m_objects[name];
    if (!object) object = m_engine.create();
    return object;
}

std::string Run::pathOf(const std::string& token) const {
    const auto rest = std::filesystem::path(
        std::u8string(token.begin() + static_cast<std::ptrdiff_t>(token.find('/')) + 1, token.end()));
    auto path = token.starts_with("data/")      ? sourceFolder() / "tests" / "data" / rest
                : token.starts_with("samples/") ? sourceFolder() / "samples" / rest
                                                : m_scratch.path(rest.u8string());
    const auto name = path.make_preferred().u8string();
    return {name.begin(), name.end()};
}

Value Run::evaluate(const std::string& token) {
    if (const auto constant = constantOf(token)) return *constant;
    if (token.front() == '(') {
        std::vector<Value> list;
        for (const std::string& element : tokensOf(token.substr(1, token.size() - 2)))
            list.push_back(evaluate(element));
        return list;
    }
    if (token.front() == '$') return m_variables[token];
    if (token.find('/') != std::string::npos) return pathOf(token);
    return objectNamed(token);
}

Argument Run::argument(const std::string& token) {
    const auto named = token.front() == '"' ? std::string::npos : token.find(":=");
    if (named == std::string::npos) return {evaluate(token), {}, token.front() == '$'};
    Argument found = argument(token.substr(named + 2));
    found.name = token.substr(0, named);
    return found;
}

std::string Run::textOf(const Value& value) const {
    return std::visit(Overload{[](std::monostate) -> std::string { return "Empty"; },
                               [](bool truth) -> std::string { return truth ? "True" : "False"; },
                               [](std::int64_t number) { return std::to_string(number); },
                               [](double real) {
                                   char text[40];
                                   return std::string(text, std::to_chars(text, text + sizeof text, real).ptr);
                               },
                               [](const std::string& text) { return '"' + text + '"'; },
                               [](const Array& array) { return test::textOf(array); },
                               [this](const Object& object) -> std::string {
                                   for (const auto& [name, held] : m_objects)
                                       if (held == object && object) return name;
                                   return object ? "object" : "Nothing";
                               },
                               [](const std::vector<Value>&) -> std::string { return "list"; },
                               [](Date date) { return "date:" + std::to_string(date.days); },
                               [](Missing) -> std::string { return "-"; }, [](const Word& word) { return word.text; }},
                      static_cast<const Value::variant&>(value));
}

std::int64_t Run::property(const Object& object, const char* name) {
    std::vector<Argument> none;
    return std::get<std::int64_t>(m_engine.call(object, name, none, false));
}

// A line as in the ledger; of few pixels these themselves instead of a checksum, from the top left: B G R A as stored.
Value Run::pixelsOf(const Object& object) {
    const auto width = property(object, "Width"), height = property(object, "Height");
    if (width == 0) return Word{"none"};
    constexpr const char* alphas[] = {"AlphaNone", "AlphaSimple", "AlphaComplex"};
    std::string text = std::to_string(width) + 'x' + std::to_string(height) + ' ' + alphas[property(object, "Alpha")] +
                       " type " + std::to_string(property(object, "ImageType"));
    const auto* const bits = reinterpret_cast<const std::uint8_t*>(property(object, "BitsPointer"));
    if (width * height > 12) return Word{text + ' ' + checksumOf(std::span(bits, std::size_t(width * height * 4)))};
    for (std::int64_t y = height - 1; y >= 0; --y) {
        for (const std::uint8_t* pixel = bits + y * width * 4; pixel != bits + (y + 1) * width * 4; pixel += 4)
            text += ' ' + hex(pixel[0] << 24U | pixel[1] << 16U | pixel[2] << 8U | pixel[3], 8);
        if (y != 0) text += " /";
    }
    return Word{text};
}

// The inverse: makes an image of these pixels, whatever they are.
void Run::paint(const Object& object, const Tokens& pixels) {
    const auto rows = std::count(pixels.begin(), pixels.end(), "/") + 1;
    const auto width = (static_cast<std::int64_t>(pixels.size()) - rows + 1) / rows;
    std::vector<Argument> size = {{width, {}}, {std::int64_t{rows}, {}}};
    m_engine.call(object, "InitializeDIB", size, false);
    auto* row = reinterpret_cast<std::uint8_t*>(property(object, "BitsPointer")) + (rows - 1) * width * 4;
    auto* out = row;
    for (const std::string& pixel : pixels) {
        if (pixel == "/") out = row -= width * 4;
        for (std::size_t i = 0; pixel != "/" && i < 8; i += 2)
            *out++ = static_cast<std::uint8_t>(std::stoi(pixel.substr(i, 2), nullptr, 16));
    }
}

Value Run::callMember(const std::string& name, const std::string& member, std::vector<Argument>& arguments,
                      bool isPut) {
    const Object object = objectNamed(name);
    if (member == "pixels") return pixelsOf(object);
    if (member == "numbered") { // bytes that count up, from the bottom left
        m_engine.call(object, "InitializeDIB", arguments, false);
        auto* const bits = reinterpret_cast<std::uint8_t*>(property(object, "BitsPointer"));
        for (std::int64_t i = 0; i < property(object, "scanWidth") * property(object, "Height"); ++i)
            bits[i] = static_cast<std::uint8_t>(i + 1);
        return {};
    }
    Value result = m_engine.call(object, member, arguments, isPut);
    auto* const number = std::get_if<std::int64_t>(&result);
    if (number != nullptr && member == "GetPixel" && *number >= 0) return Word{"0x" + hex(std::uint64_t(*number), 6)};
    if (number != nullptr && member == "SetPixel" && *number != 0)
        return Word{"bits+" + std::to_string(*number - property(object, "BitsPointer"))};
    return result;
}

Value Run::command(const std::string& name, const std::vector<Argument>& arguments) {
    const auto text = [&](std::size_t i) { return std::get<std::string>(arguments.at(i).value); };
    const auto path = [&] { return std::filesystem::path(std::u8string(text(0).begin(), text(0).end())); };
    if (name == "value") return arguments.at(0).value;
    if (name == "file") {
        if (!std::filesystem::exists(path())) return Word{"none"};
        const auto bytes = readFile(path());
        return Array{{bytes.begin(), bytes.end()}, 1, {}, {static_cast<std::uint32_t>(bytes.size()), 1}};
    }
    if (name == "write") {
        const auto& elements = std::get<Array>(arguments.at(1).value).elements;
        writeFile(path(), {elements.begin(), elements.end()});
        return {};
    }
    if (name == "kind") { // of a handle of the system's
        const auto type = platform::GetObjectType(platform::Handle(std::get<std::int64_t>(arguments.at(0).value)));
        return Word{type == platform::ObjectType::none     ? "none"
                    : type == platform::ObjectType::bitmap ? "bitmap"
                                                           : "context"};
    }
    throw std::invalid_argument("no command " + name);
}

std::string Run::outcome(Tokens tokens) {
    std::string target;
    if (tokens.size() > 2 && tokens[1] == "<-") {
        target = tokens[0];
        tokens.erase(tokens.begin(), tokens.begin() + 2);
    }
    const std::string what = tokens[0];
    const bool isPut = tokens.size() == 3 && tokens[1] == ":=";
    if (isPut && what.find('.') == std::string::npos) {
        m_variables[what] = evaluate(tokens[2]);
        return {};
    }
    const auto point = what.find('.');
    if (point != std::string::npos && what.substr(point + 1) == "paint") {
        paint(objectNamed(what.substr(0, point)), {tokens.begin() + 1, tokens.end()});
        return {};
    }
    std::vector<Argument> arguments;
    for (std::size_t i = isPut ? 2 : 1; i < tokens.size(); ++i)
        arguments.push_back(argument(tokens[i]));
    Value result = point == std::string::npos
                       ? command(what, arguments)
                       : callMember(what.substr(0, point), what.substr(point + 1), arguments, isPut);
    // Handles and addresses differ from run to run: that of a variable goes by its name.
    std::string text = std::holds_alternative<std::monostate>(result) ? "" : textOf(result);
    for (const char* const member : {"BitsPointer", "Handle", "LoadDIBinDC"}) {
        if (point == std::string::npos || what.substr(point + 1) != member || text == "0") continue;
        const auto held = std::ranges::find_if(m_variables, [&](const auto& v) { return textOf(v.second) == text; });
        text = held != m_variables.end() ? held->first : "something";
    }
    for (std::size_t i = isPut ? 2 : 1, n = 0; i < tokens.size(); ++i, ++n) {
        if (!arguments[n].isVariable) continue;
        const std::string variable = tokens[i].substr(tokens[i].find('$'));
        const std::string before = textOf(m_variables[variable]);
        m_variables[variable] = arguments[n].value;
        const std::string after = textOf(arguments[n].value);
        if (after != before) text += (text.empty() ? "" : "  ") + variable + '=' + after;
    }
    if (target.starts_with('$'))
        m_variables[target] = result;
    else if (!target.empty())
        m_objects[target] = std::get<Object>(result);
    return text;
}

bool Run::isSame(const std::string& expected, const std::string& found) {
    const Tokens e = tokensOf(expected), f = tokensOf(found);
    return std::ranges::equal(e, f, [&](std::string a, std::string b) {
        if (const auto equals = a.find('=');
            a.front() == '$' && equals != std::string::npos && b.starts_with(a.substr(0, equals + 1))) {
            a = a.substr(equals + 1);
            b = b.substr(equals + 1);
        }
        if (a == b) return true;
        const auto left = constantOf(a), right = constantOf(b);
        return left && right && textOf(*left) == textOf(*right);
    });
}

} // namespace

std::vector<std::filesystem::path> transcripts() {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(sourceFolder() / "tests" / "data" / "transcripts"))
        if (entry.path().extension() == ".txt") files.push_back(entry.path());
    std::ranges::sort(files);
    return files;
}

std::string transcriptName(const std::filesystem::path& file) {
    std::string name = file.stem().string();
    std::ranges::replace(name, '-', '_');
    return name;
}

void runTranscript(const std::filesystem::path& file, Engine& engine) {
    std::ifstream in(file, std::ios::binary);
    std::string written, title;
    auto names = engine.names();
    names.insert(names.begin(), std::filesystem::path::preferred_separator == '/' ? "portable" : "windows");
    std::optional<Run> run;
    int number = 0;
    for (std::string line; std::getline(in, line); written += line + '\n') {
        ++number;
        const Tokens tokens = tokensOf(line);
        if (tokens.empty()) continue;
        if (line.front() == '[') {
            title = line.substr(0, line.find(']') + 1);
            const Tokens only = tokensOf(line.substr(title.size()));
            run.reset();
            if (only.empty() || std::ranges::find_first_of(only, names) != only.end()) run.emplace(engine);
            continue;
        }
        if (!run) continue;
        const auto equals = line.find(" = ");
        const std::string head = line.substr(0, equals);
        const std::string expected = equals == std::string::npos ? "" : line.substr(equals + 3);
        std::string found;
        try {
            found = run->outcome(tokensOf(head));
        } catch (const std::exception& error) {
            found = std::string("error: ") + error.what();
        }
        if (run->isSame(expected, found)) continue;
        if (std::getenv("PIXKIT_WRITE_TRANSCRIPTS") == nullptr) {
            ADD_FAILURE_AT(file.string().c_str(), number)
                << title << '\n'
                << line << "\n  gives " << (found.empty() ? "nothing" : found) << " (" << names.back() << ')';
        } else {
            line =
                found.empty() ? head : head + std::string(head.size() < 40 ? 40 - head.size() : 0, ' ') + " = " + found;
        }
    }
    if (std::getenv("PIXKIT_WRITE_TRANSCRIPTS") != nullptr) std::ofstream(file, std::ios::binary) << written;
}

} // namespace pixkit::test
