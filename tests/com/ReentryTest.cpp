// Code of a program's that runs within a call and calls whatever it likes of the same object.
#include "EveryMember.h"
#include <set>

namespace pixkit::test {

// An object in the place of each argument of each member, which is asked for its value, its files, its resources. It
// calls other members, with arguments that are made of it too, and gives something that may fit.
TEST_F(EveryMember, BreaksWhatAnotherIsDoing) {
    LateObject host({});
    const TemporaryFolder folder; // what it gives are names of files too
    std::filesystem::current_path(folder.path(u8""));
    const OwnArray file(VT_UI1, picture("png/interlaced-5x5.png"));
    std::set<HRESULT> statuses;
    std::size_t turn = 0, calls = 0, depth = 0;
    const auto make = [&](const Member& member, std::size_t position) {
        std::deque<Variant> variables;
        std::vector<VARIANT> values = arguments(member, variables);
        if (!values.empty()) values[position % values.size()] = object(&host);
        Variant result;
        statuses.insert(invoke(member, values, result));
        freeResult(member.id, static_cast<LONG_PTR>(result.llVal));
        ++calls;
    };
    host.answer = [&](const DISPPARAMS&, VARIANT& result) {
        const std::size_t now = turn++;
        if (depth < 2) {
            ++depth;
            make(members[now * 7 % members.size()], now / 3);
            --depth;
        }
        switch (now % 5) {
        case 0:
            result = number(2);
            break;
        case 1:
            result = text(L"12");
            break;
        case 2:
            result.vt = VT_ARRAY | VT_UI1;
            return ::SafeArrayCopy(file.array, &result.parray);
        case 3:
            result = object(sheet.get());
            sheet->AddRef();
            break;
        default:
            break;
        }
        return S_OK;
    };
    for (const Member& member : members) {
        for (std::size_t position = 0; position < member.parameters.size() * 6; ++position) {
            SCOPED_TRACE(testing::Message() << std::filesystem::path(member.name) << ' ' << position);
            prepare();
            make(member, position);
            if (HasFailure()) break;
        }
    }
    std::filesystem::current_path(programFolder());
    prepare();
    EXPECT_GT(calls, 2'500U);
    EXPECT_EQ(host.references, 1U);
    EXPECT_EQ(statuses, (std::set<HRESULT>{S_OK, DISP_E_TYPEMISMATCH}));
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
