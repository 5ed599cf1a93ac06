#include "transcripts/Transcript.h"
#include "platform/clipboard.h"
#include "platform/gdi.h"
#include "platform/icons.h"
#include "platform/interaction.h"
#include "platform/regions.h"
#include "support/Ledger.h"
#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <sstream>

namespace pixkit::test {

namespace {

using Tokens = std::vector<std::string>;

// Words between spaces; strings and what stands in brackets stay whole. A comment ends the line.
Tokens tokensOf(const std::string& line) {
    static const std::regex word(R"(#.*|(?:"[^"]*"|\{[^}]*\}|\([^)]*\)|[^\s"{(#])+)");
    Tokens tokens;
    for (std::sregex_iterator match(line.begin(), line.end(), word), end; match != end; ++match)
        if (match->str().front() != '#') tokens.push_back(match->str());
    return tokens;
}

std::string hex(std::uint64_t value, int digits) {
    std::ostringstream text;
    text << std::hex << std::setfill('0') << std::setw(digits) << value;
    return text.str();
}

Array arrayOf(const std::string& token) {
    Array array;
    for (const std::string& word : tokensOf(token.substr(1, token.size() - 2))) {
        if (word == "|") {
            array.rows += array.rows == 0 ? 2 : 1;
        } else if (word.back() == ':') {
            array.lower = std::stoi(word);
        } else {
            array.elements.push_back(std::stoi(word, nullptr, 16));
        }
    }
    return array;
}

std::string textOf(const Array& array) {
    const std::size_t width = array.rowSize();
    std::string text = array.lower != 0 ? std::to_string(array.lower) + ": " : "";
    if (array.elements.size() > 32)
        return "bytes " + text + std::to_string(width) + (array.rows != 0 ? 'x' + std::to_string(array.rows) : "") +
               ' ' + checksum(Bytes(array.elements.begin(), array.elements.end()));
    for (std::size_t i = 0; i < array.elements.size(); ++i) {
        text += i == 0 ? "" : i % width == 0 ? " | " : " ";
        text += array.hasLongs ? std::to_string(array.elements[i]) : hex(std::uint8_t(array.elements[i]), 2);
    }
    return '{' + text + (array.rows == 1 ? " |}" : "}");
}

// Those of the public interface, from the header itself.
std::map<std::string, std::int64_t> enumerators() {
    std::map<std::string, std::int64_t> found;
    const auto header = readFile(sourceFolder() / "src" / "shared" / "enumerations.h");
    const std::string text(header.begin(), header.end());
    static const std::regex entry(R"((\w+) = (-?\d+),)");
    for (std::sregex_iterator match(text.begin(), text.end(), entry), end; match != end; ++match)
        found[(*match)[1]] = std::stoll((*match)[2]);
    return found;
}

template <class Number, class... Base>
std::optional<Value> numberOf(std::string_view text, Base... base) {
    Number number{};
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number, base...);
    if (read.ec != std::errc() || read.ptr != text.data() + text.size()) return {};
    if constexpr (std::is_unsigned_v<Number>) return std::int64_t{static_cast<std::int32_t>(number)};
    return number;
}

// What a word means by itself; nothing for the name of an object or variable.
std::optional<Value> constantOf(const std::string& token) {
    static const auto named = enumerators();
    if (token == "True" || token == "False") return token == "True";
    if (token == "Nothing") return Object();
    if (token == "Empty") return Value();
    if (token == "-") return Missing();
    if (token.front() == '"') return token.substr(1, token.size() - 2);
    if (token.front() == '{') return arrayOf(token);
    if (token.starts_with("date:")) return Date{std::stod(token.substr(5))};
    if (token.starts_with("0x")) return numberOf<std::uint32_t>(std::string_view(token).substr(2), 16);
    if (const auto found = named.find(token); found != named.end()) return found->second;
    const auto whole = numberOf<std::int64_t>(token);
    return whole ? whole : numberOf<double>(token);
}

// One engine going through one section.
class Run {
  public:
    explicit Run(Engine& engine) : m_engine(engine) {}
    ~Run() { platform::setMessageBoxHandler({}); }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    // What a line gives: the result, then each variable that has changed.
    std::string outcome(Tokens tokens);

  private:
    Value evaluate(const std::string& token);
    Argument argument(const std::string& token);
    Object& objectNamed(const std::string& name);
    std::string pathOf(const std::string& token) const;
    std::string textOf(const Value& value) const;
    std::string resultText(const std::string& member, const Object& object, const Value& value);
    Value callMember(const Object& object, const std::string& member, std::vector<Argument>& arguments, bool isPut);
    Value command(const std::string& name, const std::vector<Argument>& arguments);
    std::int64_t property(const Object& object, const char* name);
    std::uint8_t* bitsOf(const Object& object) {
        return reinterpret_cast<std::uint8_t*>(static_cast<std::intptr_t>(property(object, "BitsPointer")));
    }
    std::string pixelsOf(const Object& object);
    void paint(const Object& object, const Tokens& pixels);

    Engine& m_engine;
    std::map<std::string, Object> m_objects;
    std::map<std::string, Value> m_variables;
    TemporaryFolder m_scratch;
};

Object& Run::objectNamed(const std::string& name) {
    if (name.front() == '$') return std::get<Object>(m_variables[name]);
    Object& object = m_objects[name];
    if (!object) object = m_engine.create();
    return object;
}

std::string Run::pathOf(const std::string& token) const {
    const std::string rest = token.substr(token.find('/') + 1);
    const std::u8string name(rest.begin(), rest.end());
    auto path = token.starts_with("scratch/")
                    ? m_scratch.path(name)
                    : sourceFolder() / (token.starts_with("data/") ? "tests/data" : "samples") / name;
    const auto native = path.make_preferred().u8string();
    return {native.begin(), native.end()};
}

Value Run::evaluate(const std::string& token) {
    if (const auto constant = constantOf(token)) return *constant;
    if (token.front() == '$') return m_variables[token];
    if (token.front() == '(') {
        std::vector<Value> list;
        for (const std::string& element : tokensOf(token.substr(1, token.size() - 2)))
            list.push_back(evaluate(element));
        return list;
    }
    if (token.find('/') != std::string::npos) return pathOf(token);
    return objectNamed(token);
}

Argument Run::argument(const std::string& token) {
    static const std::regex named(R"((\w+):=(.*))");
    std::smatch match;
    if (!std::regex_match(token, match, named)) return {evaluate(token), {}, token.front() == '$'};
    Argument found = argument(match[2]);
    found.name = match[1];
    return found;
}

std::string Run::textOf(const Value& value) const {
    if (const auto* truth = std::get_if<bool>(&value)) return *truth ? "True" : "False";
    if (const auto* number = std::get_if<std::int64_t>(&value)) return std::to_string(*number);
    if (const auto* text = std::get_if<std::string>(&value)) return '"' + *text + '"';
    if (const auto* array = std::get_if<Array>(&value)) return test::textOf(*array);
    if (const auto* date = std::get_if<Date>(&value)) return "date:" + textOf(date->days);
    if (const auto* word = std::get_if<Word>(&value)) return word->text;
    if (const auto* real = std::get_if<double>(&value)) {
        char text[40];
        return {text, std::to_chars(text, text + sizeof text, *real).ptr};
    }
    if (const auto* object = std::get_if<Object>(&value)) {
        for (const auto& [name, held] : m_objects)
            if (held == *object && held) return name;
        return *object ? "object" : "Nothing";
    }
    if (std::holds_alternative<std::monostate>(value)) return "Empty";
    std::string text;
    for (const Value& element : std::get<std::vector<Value>>(value))
        text.append(text.empty() ? "(" : " ").append(textOf(element));
    return text + ')';
}

std::int64_t Run::property(const Object& object, const char* name) {
    std::vector<Argument> none;
    return std::get<std::int64_t>(m_engine.call(object, name, none, false));
}

// A line as in ledger.txt; of few pixels these themselves instead of a checksum.
std::string Run::pixelsOf(const Object& object) {
    const auto width = property(object, "Width"), height = property(object, "Height");
    if (width == 0) return "none";
    constexpr const char* alphas[] = {"AlphaNone", "AlphaSimple", "AlphaComplex"};
    std::string text = std::to_string(width) + 'x' + std::to_string(height) + ' ' + alphas[property(object, "Alpha")] +
                       " type " + std::to_string(property(object, "ImageType"));
    const auto* const bits = bitsOf(object);
    if (width * height > 12) return text + ' ' + checksum({bits, std::size_t(width * height * 4)});
    for (std::int64_t y = height - 1; y >= 0; --y) {
        for (std::int64_t i = y * width * 4; i < (y + 1) * width * 4; ++i)
            text += (i % 4 == 0 ? " " : "") + hex(bits[i], 2);
        text += y != 0 ? " /" : "";
    }
    return text;
}

// The inverse: makes an image of these pixels, whatever they are.
void Run::paint(const Object& object, const Tokens& pixels) {
    const auto rows = std::ranges::count(pixels, "/") + 1;
    const auto width = (std::ssize(pixels) - rows + 1) / rows;
    std::vector<Argument> size = {{std::int64_t{width}, {}}, {std::int64_t{rows}, {}}};
    m_engine.call(object, "InitializeDIB", size, false);
    std::uint8_t* row = bitsOf(object) + (rows - 1) * width * 4;
    auto* out = row;
    for (const std::string& pixel : pixels) {
        if (pixel == "/") out = row -= width * 4;
        for (std::size_t i = 0; i + 1 < pixel.size(); i += 2)
            *out++ = static_cast<std::uint8_t>(std::stoi(pixel.substr(i, 2), nullptr, 16));
    }
}

Value Run::callMember(const Object& object, const std::string& member, std::vector<Argument>& arguments, bool isPut) {
    if (member == "pixels") return Word{pixelsOf(object)};
    if (member != "numbered") return m_engine.call(object, member, arguments, isPut);
    m_engine.call(object, "InitializeDIB", arguments, false);
    const std::span bits(bitsOf(object), std::size_t(property(object, "scanWidth") * property(object, "Height")));
    std::iota(bits.begin(), bits.end(), std::uint8_t{1});
    return {};
}

// As another program sees it and fills it.
Value clipboard(const std::string& format, const std::vector<Argument>& arguments) {
    const platform::OpenClipboard clipboard;
    if (arguments.size() == 1) {
        const auto bytes = clipboard.get(format);
        return bytes.empty() ? Value() : Array{{bytes.begin(), bytes.end()}};
    }
    std::vector<platform::ClipboardBlock> blocks;
    for (std::size_t i = 1; i < arguments.size(); i += 2) {
        const auto& elements = std::get<Array>(arguments[i].value).elements;
        blocks.push_back({std::get<std::string>(arguments[i - 1].value), {elements.begin(), elements.end()}});
    }
    return clipboard.isOpen() && clipboard.set(std::move(blocks));
}

// Of a handle of the system's: bits a pixel of bitmaps, the hotspot of cursors.
std::string kindOf(platform::Handle handle) {
    const auto type = platform::GetObjectType(handle);
    platform::BitmapRecord bitmap;
    platform::IconInfo icon;
    if (platform::GetObjectA(handle, bitmap)) return "bitmap " + std::to_string(bitmap.bmBitsPixel);
    if (type == platform::ObjectType::region) return "region";
    if (type != platform::ObjectType::none) return "context";
    if (!platform::GetIconInfo(handle, icon)) return "none";
    platform::DeleteObject(icon.hbmMask);
    platform::DeleteObject(icon.hbmColor);
    return icon.fIcon ? "icon" : "cursor " + std::to_string(icon.xHotspot) + ' ' + std::to_string(icon.yHotspot);
}

Value Run::command(const std::string& name, const std::vector<Argument>& arguments) {
    const Value& first = arguments.at(0).value;
    if (name == "value") return first;
    if (name == "kind") return Word{kindOf(platform::Handle(std::get<std::int64_t>(first)))};
    if (name == "free") {
        const auto handle = platform::Handle(std::get<std::int64_t>(first));
        const bool isObject = platform::GetObjectType(handle) != platform::ObjectType::none;
        return isObject ? platform::DeleteObject(handle) : platform::DestroyIcon(handle);
    }
    if (name == "rectangles") { // of a region, which is deleted
        const platform::UniqueRegion region(platform::Handle(std::get<std::int64_t>(first)));
        std::vector<platform::Rect> found(platform::GetRegionData(region.get()));
        platform::GetRegionData(region.get(), found);
        Array rows{{}, 0, std::uint32_t(found.size()), true};
        for (const platform::Rect& row : found)
            rows.elements.insert(rows.elements.end(), {row.left, row.top, row.right, row.bottom});
        return found.empty() ? Value(Word{"none"}) : rows;
    }
    const auto& text = std::get<std::string>(first);
    if (name == "answer") { // to every question from now on
        platform::setMessageBoxHandler([this, text](const std::string& asked, const std::string&, std::uint32_t) {
            m_variables["$asked"] = asked;
            return text == "Yes" ? platform::answerYes : text == "No" ? platform::answerNo : 2;
        });
        return {};
    }
    if (name == "clipboard") return clipboard(text, arguments);
    const std::filesystem::path path(std::u8string(text.begin(), text.end()));
    if (name == "write") {
        const auto& elements = std::get<Array>(arguments.at(1).value).elements;
        writeFile(path, {elements.begin(), elements.end()});
        return {};
    }
    if (name != "file") throw std::invalid_argument("no command " + name);
    if (!std::filesystem::exists(path)) return Word{"none"};
    const auto bytes = readFile(path);
    return Array{{bytes.begin(), bytes.end()}};
}

// Handles and addresses differ from run to run: one goes by the name of the variable that holds it.
std::string Run::resultText(const std::string& member, const Object& object, const Value& value) {
    const auto* const number = std::get_if<std::int64_t>(&value);
    if (number == nullptr || *number == 0) return std::holds_alternative<std::monostate>(value) ? "" : textOf(value);
    if (member == "GetPixel" && *number > 0) return "0x" + hex(std::uint64_t(*number), 6);
    if (member == "SetPixel") return "bits+" + std::to_string(*number - property(object, "BitsPointer"));
    static const std::set<std::string> handles = {"BitsPointer", "Handle",       "LoadDIBinDC", "CreateBitmap",
                                                  "CreateIcon",  "CreateCursor", "CreateRegion"};
    if (handles.count(member) == 0) return textOf(value);
    for (const auto& [name, held] : m_variables)
        if (textOf(held) == textOf(value)) return name;
    return "something";
}

std::string Run::outcome(Tokens tokens) {
    std::string target;
    if (tokens.size() > 2 && tokens[1] == "<-") {
        target = tokens[0];
        tokens.erase(tokens.begin(), tokens.begin() + 2);
    }
    const bool isPut = tokens.size() == 3 && tokens[1] == ":=";
    const auto point = tokens[0].find('.');
    const std::string member = point != std::string::npos ? tokens[0].substr(point + 1) : "";
    const Object object = member.empty() ? Object() : objectNamed(tokens[0].substr(0, point));
    tokens.erase(tokens.begin() + 1, tokens.begin() + (isPut ? 2 : 1));
    const Tokens words(tokens.begin() + 1, tokens.end());
    if (isPut && member.empty()) return m_variables[tokens[0]] = evaluate(words[0]), "";
    if (member == "paint") return paint(object, words), "";

    std::vector<Argument> arguments;
    for (const std::string& word : words)
        arguments.push_back(argument(word));
    const Value result = member.empty() ? command(tokens[0], arguments) : callMember(object, member, arguments, isPut);
    std::string text = resultText(member, object, result);
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (!arguments[i].isVariable) continue;
        const std::string variable = words[i].substr(words[i].find('$'));
        const std::string before = textOf(std::exchange(m_variables[variable], arguments[i].value));
        const std::string after = textOf(arguments[i].value);
        if (after != before) text.append(text.empty() ? "" : "  ").append(variable).append("=").append(after);
    }
    if (target.starts_with('$'))
        m_variables[target] = result;
    else if (!target.empty())
        m_objects[target] = std::get<Object>(result);
    return text;
}

// Word by word; numbers count by their value, in whatever form they are written.
bool isSame(const std::string& expected, const std::string& found) {
    return std::ranges::equal(
        tokensOf(expected), tokensOf(found), [](const std::string& left, const std::string& right) {
            if (left == right) return true;
            const auto valueOf = [](const std::string& word) { return constantOf(word.substr(word.find('=') + 1)); };
            const auto a = valueOf(left), b = valueOf(right);
            const auto* const x = a ? std::get_if<std::int64_t>(&*a) : nullptr;
            const auto* const y = b ? std::get_if<std::int64_t>(&*b) : nullptr;
            return x != nullptr && y != nullptr && *x == *y &&
                   left.substr(0, left.find('=') + 1) == right.substr(0, right.find('=') + 1);
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

void runTranscript(const std::filesystem::path& file, Engine& engine) {
    const bool isWriting = std::getenv("PIXKIT_WRITE_TRANSCRIPTS") != nullptr;
    auto names = engine.names();
    names.insert(names.begin(), std::filesystem::path::preferred_separator == '/' ? "portable" : "windows");
    std::ifstream in(file, std::ios::binary);
    std::string written, title;
    std::optional<Run> run; // none in a section for other engines
    int number = 1;
    for (std::string line; std::getline(in, line); written += line + '\n', ++number) {
        if (line.starts_with('[')) {
            title = line.substr(0, line.find(']') + 1);
            const Tokens only = tokensOf(line.substr(title.size()));
            run.reset();
            if (only.empty() || std::ranges::find_first_of(only, names) != only.end()) run.emplace(engine);
            continue;
        }
        if (!run || tokensOf(line).empty()) continue;
        const auto equals = line.find(" = ");
        std::string head = line.substr(0, equals);
        std::string found;
        try {
            found = run->outcome(tokensOf(head));
        } catch (const std::exception& error) {
            found = std::string("error: ") + error.what();
        }
        if (isSame(equals == std::string::npos ? "" : line.substr(equals + 3), found)) continue;
        if (isWriting) {
            const auto comment = line.find(" # ");
            const std::string rest = comment != std::string::npos ? line.substr(comment) : "";
            if (comment < head.size()) head.resize(comment);
            line = head;
            if (!found.empty()) line.append(std::max<std::size_t>(head.size(), 40) - head.size(), ' ').append(" = ");
            line.append(found).append(rest);
        } else {
            ADD_FAILURE_AT(file.string().c_str(), number)
                << title << '\n'
                << line << "\ngives " << (found.empty() ? "nothing" : found) << " (" << names.back() << ')';
        }
    }
    if (isWriting) std::ofstream(file, std::ios::binary) << written;
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
