// The samples that nothing here can compile: what they name must be in the type library.
#include "Pictures.h"
#include "Server.h"
#include "support/SourceFolder.h"
#include <map>
#include <regex>

namespace pixkit::test {

class SampleNames : public ComTest {
  protected:
    SampleNames() {
        ComPtr<ITypeInfo> info;
        UINT index = 0;
        sheet->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.put());
        info->GetContainingTypeLib(library.put(), &index);
    }
    // Of members, parameters and enumerators alike.
    bool isKnown(const std::string& name) {
        std::wstring wide(name.begin(), name.end());
        BOOL found = FALSE;
        return SUCCEEDED(library->IsName(wide.data(), 0, &found)) && found;
    }

    ComPtr<ITypeLib> library;
};

TEST_F(SampleNames, AreInTheTypeLibrary) {
    const std::regex name(R"(\b(?:sheet|copy|loaded)\.(\w+)|^ *(\w+):=|, (\w+):=|\b((?:gscl|img|Alpha)[A-Z]\w+)\b)");
    std::map<std::string, int> checked;
    for (const auto& entry :
         std::filesystem::recursive_directory_iterator((sourceFolder() / "samples").make_preferred())) {
        const std::string kind = entry.path().extension().string();
        if (kind != ".bas" && kind != ".frm" && kind != ".ps1" && kind != ".vbs" && kind != ".js") continue;
        const auto bytes = readFile(entry.path());
        const std::string text(bytes.begin(), bytes.end());
        for (std::sregex_iterator match(text.begin(), text.end(), name), end; match != end; ++match, ++checked[kind]) {
            const std::string found = (*match)[1].str() + (*match)[2].str() + (*match)[3].str() + (*match)[4].str();
            EXPECT_TRUE(isKnown(found)) << entry.path().string() << ": " << found;
        }
    }
    for (const char* kind : {".bas", ".frm", ".ps1", ".vbs", ".js"})
        EXPECT_GE(checked[kind], 5) << kind;
    EXPECT_FALSE(isKnown("LoadPicture_FromOriginalFormat"));
    EXPECT_FALSE(isKnown("gsclSepia"));
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
