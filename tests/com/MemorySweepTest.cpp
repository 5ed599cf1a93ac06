// Memory that ends while a client calls: every block, string, array and copy of a value that the DLL asks for is
// refused once, and once with all that follow. New blocks hold other bytes at every call, which shows in nothing that a
// client gets.
#include "EveryMember.h"
#include "ImageFile.h"
#include "platform/faults.h"

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
BSTR WINAPI newString(const OLECHAR* from) {
    return isRefused() ? nullptr : ::SysAllocString(from);
}
BSTR WINAPI newStringOf(const OLECHAR* from, UINT length) {
    return isRefused() ? nullptr : ::SysAllocStringLen(from, length);
}
SAFEARRAY* WINAPI newArray(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds) {
    return isRefused() ? nullptr : ::SafeArrayCreate(type, dimensions, bounds);
}
SAFEARRAY* WINAPI newVector(VARTYPE type, LONG lower, ULONG count) {
    return isRefused() ? nullptr : ::SafeArrayCreateVector(type, lower, count);
}
HRESULT WINAPI copyValue(VARIANTARG* to, VARIANTARG* from) {
    return isRefused() ? E_OUTOFMEMORY : ::VariantCopy(to, from);
}
HRESULT WINAPI copyValueBehind(VARIANT* to, VARIANTARG* from) {
    return isRefused() ? E_OUTOFMEMORY : ::VariantCopyInd(to, from);
}
HRESULT WINAPI convertValue(VARIANTARG* to, VARIANTARG* from, LCID locale, USHORT flags, VARTYPE type) {
    return isRefused() ? E_OUTOFMEMORY : ::VariantChangeTypeEx(to, from, locale, flags, type);
}

// Counts what the system takes for strings, arrays and values.
class Spy final : public IMallocSpy {
  public:
    STDMETHODIMP QueryInterface(REFIID, void** result) override { return *result = this, S_OK; }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP_(SIZE_T) PreAlloc(SIZE_T bytes) override { return bytes; }
    STDMETHODIMP_(void*) PostAlloc(void* block) override { return live += block != nullptr, block; }
    STDMETHODIMP_(void*) PreFree(void* block, BOOL isSpied) override {
        live -= isSpied != FALSE && block != nullptr;
        return block;
    }
    STDMETHODIMP_(void) PostFree(BOOL) override {}
    STDMETHODIMP_(SIZE_T) PreRealloc(void* block, SIZE_T bytes, void** place, BOOL) override {
        return *place = block, bytes;
    }
    STDMETHODIMP_(void*) PostRealloc(void* block, BOOL) override { return block; }
    STDMETHODIMP_(void*) PreGetSize(void* block, BOOL) override { return block; }
    STDMETHODIMP_(SIZE_T) PostGetSize(SIZE_T bytes, BOOL) override { return bytes; }
    STDMETHODIMP_(void*) PreDidAlloc(void* block, BOOL) override { return block; }
    STDMETHODIMP_(int) PostDidAlloc(void*, BOOL, int answer) override { return answer; }
    STDMETHODIMP_(void) PreHeapMinimize() override {}
    STDMETHODIMP_(void) PostHeapMinimize() override {}
} spy;

// Nothing of False, 0 and no object.
std::wstring contentOf(const VARIANT& value) {
    if (value.vt == VT_BSTR) return value.bstrVal != nullptr ? value.bstrVal : L"";
    if (value.vt == VT_I4 || value.vt == VT_BOOL) // with anything beside it
        return (value.vt == VT_I4 ? value.lVal : value.boolVal) == 0 ? L"" : L"something";
    if (value.vt != (VT_ARRAY | VT_UI1)) return value.llVal == 0 ? L"" : L"something";
    const auto* const data = static_cast<const std::uint8_t*>(value.parray->pvData);
    const auto* const bounds = value.parray->rgsabound;
    return {data, data + bounds[0].cElements * (value.parray->cDims == 2 ? bounds[1].cElements : 1)};
}

class MemorySweep : public EveryMember {
  protected:
    MemorySweep() {
        const ImageFile image(server.module());
        const auto replace = [&](const char* name, auto* function) {
            EXPECT_EQ(image.replaceImport(name, reinterpret_cast<void*>(function)), 1) << name;
        };
        replace("malloc", &allocate);
        replace("free", &release);
        replace("SysAllocString", &newString);
        replace("SysAllocStringLen", &newStringOf);
        replace("SafeArrayCreate", &newArray);
        replace("SafeArrayCreateVector", &newVector);
        replace("VariantCopy", &copyValue);
        replace("VariantCopyInd", &copyValueBehind);
        replace("VariantChangeTypeEx", &convertValue);
        // Strings are kept for the next one otherwise.
        if (const auto keepNone = ::GetProcAddress(::GetModuleHandleW(L"oleaut32"), "SetOaNoCache")) keepNone();
        EXPECT_EQ(::CoRegisterMallocSpy(&spy), S_OK);
    }
    ~MemorySweep() override { ::CoRevokeMallocSpy(); }

    struct Got {
        std::wstring answer, given; // the result, and what came back in arguments
        std::wstring before;        // of those
        HRESULT status;
        bool operator==(const Got& other) const { return answer == other.answer && given == other.given; }
    };
    // Runs something with memory up to a request.
    template <class Act>
    static auto upTo(long from, Act&& act) {
        filler = ~filler;
        asked = 0;
        refusedFrom = from;
        const auto result = act();
        refusedFrom = LONG_MAX;
        return result;
    }
    Got get(const Member& member, long from) {
        prepare();
        std::deque<Variant> variables;
        Variant answer;
        const auto values = arguments(member, variables);
        const auto given = [&] {
            std::wstring all;
            for (const Variant& variable : variables)
                all += contentOf(variable) + L'|';
            return all;
        };
        Got got;
        got.before = given();
        got.status = upTo(from, [&] { return invoke(member, values, answer); });
        got.given = given();
        got.answer = contentOf(answer);
        freeResult(member.id, static_cast<LONG_PTR>(answer.llVal));
        return got;
    }
    bool isReasonGiven() {
        Variant why;
        why.vt = VT_BSTR;
        return sheet->get_LastErrorText(&why.bstrVal) == S_OK && ::SysStringLen(why.bstrVal) != 0;
    }
    // `act` gets the request to refuse, and is checked by `check`.
    template <class Act, class Check>
    void sweep(const std::wstring& name, Act&& act, Check&& check) {
        const auto good = act(LONG_MAX);
        act(LONG_MAX);                                 // what is made for good is there now
        const long most = asked, step = 1 + most / 60; // many are alike
        for (long i = 0; i < 2 * most && !HasFailure(); i += step) {
            SCOPED_TRACE(testing::Message() << std::filesystem::path(name) << ' ' << i % most << " of " << most);
            isForGood = i >= most;
            act(i % most); // something may be kept once, by the C++ runtime too
            const long before = live;
            check(act(i % most), good);
            EXPECT_EQ(live, before) << "lost";
            EXPECT_TRUE(act(LONG_MAX) == good) << "it depends on what new memory holds, or what failed before";
        }
    }
};

TEST_F(MemorySweep, AMemberWithoutMemoryLosesSomethingOrGivesHalfOfIt) {
    std::set<std::wstring> vain;
    for (const Member& member : members) {
        const Got got = get(member, LONG_MAX);
        EXPECT_EQ(got.status, S_OK) << std::filesystem::path(member.name);
        if (got.answer.empty() && got.given == got.before && member.kind <= INVOKE_PROPERTYGET)
            vain.insert(member.name);
    }
    // Those that have nothing to give, or are False.
    EXPECT_EQ(vain, (std::set<std::wstring>{L"Alpha", L"DestroyDIB", L"DestroyGDIplusToken", L"EraseDIB",
                                            L"KeepGDIplusActive", L"LastErrorText", L"LoadNotes", L"ManageOwnDC",
                                            L"MaxMemory", L"MaxPixels", L"SwapDIBs", L"UpdateLayeredWindow",
                                            L"gdiToken", L"isGDIplusEnabled"}));
    const std::size_t handles = platform::openHandles();
    for (const Member& member : members) {
        // These differ in what they write, which others do into arrays.
        if (member.name.starts_with(L"SaveToFile") && member.name != L"SaveToFile_PNG") continue;
        sweep(
            member.name, [&](long from) { return get(member, from); },
            [&](const Got& got, const Got& good) {
                EXPECT_TRUE(got.status == S_OK || got.status == E_OUTOFMEMORY) << std::hex << got.status;
                if (got.status != S_OK) {
                    EXPECT_EQ(got.given, got.before);
                } else if (!(got == good)) {
                    EXPECT_EQ(got.answer + got.given, got.before) << "half done";
                    EXPECT_TRUE(isReasonGiven() || member.name == L"isZlibEnabled");
                }
            });
    }
    EXPECT_EQ(platform::openHandles(), handles);
}

// With the descriptions that late-bound calls follow, which are read for the first one.
TEST_F(MemorySweep, AFirstObjectThatCannotBeMadeLosesSomething) {
    sheet.reset();
    canvas.reset();
    sweep(
        L"object",
        [&](long from) {
            Variant width;
            upTo(from, [&] {
                ComPtr<_cPixSheet> made;
                *made.put() = server.create();
                return made ? call(made.get(), L"Width", {}, &width) : E_OUTOFMEMORY;
            });
            EXPECT_TRUE(server.canUnload());
            return width.vt == VT_I4;
        },
        [](bool, bool isGood) { EXPECT_TRUE(isGood); });
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
