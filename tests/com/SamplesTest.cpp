// The samples that nothing here can compile: what they call must be what the type library has.
#include "Pictures.h"
#include "Server.h"
#include "support/SourceFolder.h"
#include <limits>
#include <map>
#include <regex>

namespace pixkit::test {

struct Use {
    std::string member;
    std::vector<std::string> named;
    UINT positional = 0;
};

// The arguments that follow a member: in parentheses, or for Basic's statements up to the end of the line.
std::vector<std::string> argumentsOf(const std::string& line, std::size_t position) {
    std::vector<std::string> arguments;
    const bool parenthesised = position < line.size() && line[position] == '(';
    const bool statement =
        position < line.size() && line[position] == ' ' && line.find_first_of("=<>&-+;*", position) != position + 1 &&
        line.find(" = ", position) == std::string::npos && line.find(" Is ", position) == std::string::npos;
    if (!parenthesised && !statement) return arguments;
    int depth = 0;
    bool quoted = false;
    std::string current;
    for (std::size_t i = position + 1; i < line.size(); ++i) {
        const char c = line[i];
        if (c == '"' || c == '\'') quoted = !quoted;
        if (!quoted && c == ')' && --depth < 0) break;
        if (!quoted && c == '(') ++depth;
        if (!quoted && c == ',' && depth == 0) {
            arguments.push_back(std::exchange(current, {}));
        } else {
            current += c;
        }
    }
    if (current.find_first_not_of(" \r") != std::string::npos) arguments.push_back(current);
    return arguments;
}

std::vector<Use> usesIn(const std::filesystem::path& file) {
    std::vector<Use> uses;
    const std::regex access(R"(\b(?:sheet|copy|loaded)\.(\w+))"), name(R"(^\s*(\w+):=)");
    std::ifstream text(file);
    for (std::string line; std::getline(text, line);) {
        for (std::sregex_iterator match(line.begin(), line.end(), access), end; match != end; ++match) {
            Use use{(*match)[1], {}};
            for (const std::string& argument :
                 argumentsOf(line, static_cast<std::size_t>(match->position() + match->length()))) {
                std::smatch found;
                if (std::regex_search(argument, found, name)) {
                    use.named.push_back(found[1]);
                } else {
                    ++use.positional;
                }
            }
            uses.push_back(use);
        }
    }
    return uses;
}

std::wstring wide(const std::string& ascii) {
    return {ascii.begin(), ascii.end()};
}

class Samples : public ComTest {
  protected:
    Samples() {
        sheet->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.put());
        UINT index = 0;
        info->GetContainingTypeLib(library.put(), &index);
    }
    // What a use asks of the type library that it does not have; empty when all is well.
    std::string fault(const Use& use) {
        std::vector<std::wstring> names = {wide(use.member)};
        for (const std::string& argument : use.named)
            names.push_back(wide(argument));
        std::vector<wchar_t*> pointers;
        for (std::wstring& each : names)
            pointers.push_back(each.data());
        std::vector<MEMBERID> ids(names.size());
        if (FAILED(info->GetIDsOfNames(pointers.data(), static_cast<UINT>(pointers.size()), ids.data())))
            return "no such member or parameter";
        FUNCDESC* function = nullptr;
        SHORT most = -1;
        for (UINT i = 0; SUCCEEDED(info->GetFuncDesc(i, &function)); ++i) {
            if (function->memid == ids[0]) most = std::max(most, parameters(*function));
            info->ReleaseFuncDesc(function);
        }
        return use.positional + use.named.size() > static_cast<std::size_t>(most) ? "too many arguments" : "";
    }
    // Some systems count the result as a parameter. The last may stand for as many arguments as the caller likes.
    static SHORT parameters(const FUNCDESC& function) {
        if (function.cParamsOpt == -1) return std::numeric_limits<SHORT>::max();
        SHORT count = function.cParams;
        for (SHORT i = 0; i < function.cParams; ++i) {
            if ((function.lprgelemdescParam[i].paramdesc.wParamFlags & PARAMFLAG_FRETVAL) != 0) --count;
        }
        return count;
    }
    bool hasEnumerator(const std::string& name) {
        std::wstring buffer = wide(name);
        ComPtr<ITypeInfo> found;
        MEMBERID id = 0;
        USHORT count = 1;
        return SUCCEEDED(library->FindName(buffer.data(), 0, found.put(), &id, &count)) && count == 1;
    }

    ComPtr<ITypeInfo> info;
    ComPtr<ITypeLib> library;
};

TEST_F(Samples, CallOnlyWhatTheTypeLibraryHas) {
    const auto folder = (sourceFolder() / "samples").make_preferred();
    const std::regex enumerator(R"(\b(gscl\w+|img[A-Z]\w+|Alpha(?:None|Simple|Complex))\b)");
    std::map<std::string, int> checked;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        const std::string kind = entry.path().extension().string();
        if (kind != ".bas" && kind != ".frm" && kind != ".ps1" && kind != ".vbs" && kind != ".js") continue;
        for (const Use& use : usesIn(entry.path())) {
            EXPECT_EQ(fault(use), "") << entry.path().string() << ": " << use.member;
            ++checked[kind];
        }
        const auto bytes = readFile(entry.path());
        const std::string text(bytes.begin(), bytes.end());
        for (std::sregex_iterator match(text.begin(), text.end(), enumerator), end; match != end; ++match)
            EXPECT_TRUE(hasEnumerator(match->str())) << entry.path().string() << ": " << match->str();
    }
    for (const char* kind : {".bas", ".frm", ".ps1", ".vbs", ".js"})
        EXPECT_GE(checked[kind], 5) << kind;
}

TEST_F(Samples, TheCheckItselfFindsWhatIsWrong) {
    EXPECT_NE(fault({"LoadPicture_FromOriginalFormat", {}}), "");
    EXPECT_NE(fault({"BlendToColor", {"Opacity"}}), "");
    EXPECT_NE(fault({"MirrorImage", {}, 3}), "");
    EXPECT_EQ(fault({"BlendToColor", {"BlendOpacity"}, 1}), "");
    EXPECT_FALSE(hasEnumerator("gsclSepia"));
    EXPECT_EQ(argumentsOf("x = sheet.GetPixel(a(1, 2), \"b, c\") + 1", 18).size(), 2u);
}

} // namespace pixkit::test
