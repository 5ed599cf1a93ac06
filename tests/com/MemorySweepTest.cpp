// Memory that ends while a client calls: every block of malloc and every SafeArrayCreate of the DLL is refused once,
// and once with all that follow. New blocks hold other bytes at every call, which shows in nothing that a client gets.
#include "ImageFile.h"
#include "Pictures.h"
#include "Server.h"
#include <string_view>

namespace pixkit::test {

long asked = 0, refusedFrom = LONG_MAX, live = 0;
bool isForGood = false;
int filler = 0x55;

bool isRefused() {
    const long turn = asked++;
    return turn == refusedFrom || (isForGood && turn > refusedFrom);
}
void* allocate(std::size_t bytes) {
    return isRefused() ? nullptr : (++live, std::memset(std::malloc(bytes), filler, bytes));
}
void release(void* block) {
    live -= block != nullptr;
    std::free(block);
}
SAFEARRAY* WINAPI newArray(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds) {
    return isRefused() ? nullptr : ::SafeArrayCreate(type, dimensions, bounds);
}

// Nothing of False, 0 and no object.
std::wstring contentOf(const VARIANT& value) {
    if (value.vt == VT_BSTR) return value.bstrVal != nullptr ? value.bstrVal : L"";
    if (value.vt != (VT_ARRAY | VT_UI1)) return value.llVal == 0 ? L"" : L"something";
    const auto* const data = static_cast<const std::uint8_t*>(value.parray->pvData);
    const auto* const bounds = value.parray->rgsabound;
    return {data, data + bounds[0].cElements * (value.parray->cDims == 2 ? bounds[1].cElements : 1)};
}

TEST_F(ComTest, AMemberWithoutMemoryLosesSomethingOrGivesHalfOfIt) {
    const ImageFile image(server.module());
    ASSERT_EQ(image.replaceImport("malloc", reinterpret_cast<void*>(&allocate)), 1);
    ASSERT_EQ(image.replaceImport("free", reinterpret_cast<void*>(&release)), 1);
    ASSERT_EQ(image.replaceImport("SafeArrayCreate", reinterpret_cast<void*>(&newArray)), 1);
    sheet->put_Unattended(VARIANT_TRUE);
    sheet->put_isGDIplusEnabled(VARIANT_FALSE);
    const OwnArray icon(VT_UI1, picture("ico/two-1-bit-icon.ico"));
    const VARIANT file = arrayValue(VT_UI1, icon.array);
    for (const wchar_t* const member :
         {L"LoadPicture_Stream", L"Version", L"CreateDropShadow", L"CreateStdPicture", L"GetDIBbits", L"GetAlphaMask",
          L"DIBbits", L"StreamOf", L"SaveToStream_TGA", L"SaveToStream_PNG", L"SaveToStream_JPG", L"SaveToStream_GIF",
          L"SaveToStream_ICO"}) {
        const auto act = [&](long from) {
            EXPECT_TRUE(isTrue(sheet.get(), L"LoadPicture_Stream", {file})) << "not usable";
            Variant answer, out;
            out.vt = VT_ARRAY | VT_UI1;
            out.parray = ::SafeArrayCreateVector(VT_UI1, 0, 3);
            const std::wstring_view name = member;
            std::vector<VARIANT> given;
            if (name.starts_with(L"LoadPicture")) given = {file};
            if (name.starts_with(L"Get") || name.starts_with(L"SaveTo")) given = {variable(out)};
            if (name == L"StreamOf") given = {number(streamPNG)};
            filler = ~filler;
            asked = 0;
            refusedFrom = from;
            const HRESULT status = call(sheet.get(), member, given, &answer);
            refusedFrom = LONG_MAX;
            EXPECT_TRUE(status == S_OK || (status == E_OUTOFMEMORY && from != LONG_MAX)) << std::hex << status;
            return contentOf(answer) + L" " + contentOf(out);
        };
        const std::wstring good = act(LONG_MAX), failed = L" " + std::wstring(3, L'\0');
        for (long i = 0, most = asked; i < 2 * most && !HasFailure(); ++i) {
            SCOPED_TRACE(testing::Message() << std::filesystem::path(member) << i % most << " of " << most);
            isForGood = i >= most;
            act(i % most); // something may be kept once, by the C++ runtime too
            const long before = live;
            const std::wstring result = act(i % most);
            EXPECT_TRUE(result == good || result == failed) << "half done";
            EXPECT_TRUE(act(LONG_MAX) == good) << "it depends on what new memory holds, or what failed before";
            EXPECT_EQ(live, before) << "lost";
        }
    }
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
