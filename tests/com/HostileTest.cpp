// Callers that mean harm, or do not care. Members and their parameters are found in the type library, so that a new one
// is among them at once.
#include "LateObject.h"
#include "Pictures.h"
#include "Server.h"
#include "platform/faults.h"
#include "support/SourceFolder.h"
#include <cmath>
#include <set>

namespace pixkit::test {

// A value that a caller might pass, in one of the forms in which they pass it.
class Odd {
  public:
    static constexpr std::size_t types = 25, typesOfArrays = 8, arrays = 12, forms = 4;
    static std::size_t count(const std::vector<VARIANT>& contents) {
        return (types + typesOfArrays + arrays + contents.size()) * forms;
    }

    Odd(std::size_t which, std::vector<VARIANT>& contents) : m_form(which % forms) {
        std::size_t kind = which / forms;
        if (kind < types) { // nothing but a type, and zero
            m_held.vt = kind == types - 1 ? VARTYPE{VT_RECORD} : static_cast<VARTYPE>(kind);
        } else if (kind -= types; kind < typesOfArrays) {
            m_held.vt = static_cast<VARTYPE>(VT_ARRAY | (3 * kind));
        } else if (kind -= typesOfArrays; kind < arrays) {
            makeArray(kind);
        } else {
            ::VariantCopy(&m_held, &contents[kind - arrays]);
        }
    }
    ~Odd() {
        if (m_lock != nullptr) ::SafeArrayUnlock(m_lock);
        if (m_fixed != nullptr) m_fixed->fFeatures &= static_cast<USHORT>(~FADF_FIXEDSIZE);
        ::VariantClear(&m_held);
    }
    VARIANT get() {
        const bool isWhole = m_held.vt == VT_VARIANT || m_held.vt == VT_DECIMAL; // nothing stands behind its type
        return m_form == 0   ? m_held
               : m_form == 1 ? typed(m_held.vt, isWhole ? static_cast<void*>(&m_held) : &m_held.byref)
               : m_form == 2 ? typed(m_held.vt, nullptr)
                             : variable(m_held);
    }
    // As the result of a call, which whoever called frees.
    VARIANT handOver() {
        if (m_form != 0 || m_lock != nullptr) return get();
        m_fixed = nullptr;
        return std::exchange(m_held, VARIANT{});
    }

  private:
    void makeArray(std::size_t kind) {
        const VARTYPE element = std::array<VARTYPE, 4>{VT_UI1, VT_VARIANT, VT_I4, VT_BSTR}[kind % 4];
        SAFEARRAYBOUND bounds[3] = {{4, -2}, {kind < 4 ? 3U : 0U, LONG_MAX - 2}, {2, LONG_MIN}};
        SAFEARRAY* const array = ::SafeArrayCreate(element, kind < 4 ? 3 : kind < 8 ? 2 : 1, bounds);
        m_held = arrayValue(element, array);
        auto* const variants = static_cast<VARIANT*>(array->pvData);
        if (kind == 1) variants[1] = typed(VT_I4, nullptr);
        if (kind == 9) // each of which is all of them
            std::fill_n(variants, 4, typed(VT_ARRAY | VT_VARIANT, &m_held.parray));
        if (kind == 8 || kind == 10) ::SafeArrayLock(m_lock = array);
        if (kind == 11) (m_fixed = array)->fFeatures |= FADF_FIXEDSIZE;
    }

    std::size_t m_form;
    VARIANT m_held{};
    SAFEARRAY *m_lock = nullptr, *m_fixed = nullptr;
};

class Hostile : public ComTest {
  protected:
    Hostile() {
        for (const double value : {double{NAN}, HUGE_VAL, 2147483648.5}) {
            odds.push_back(number(0, VT_R8));
            odds.back().dblVal = value;
        }
        for (const LONG value : {-1L, LONG_MIN, LONG_MAX, 65536L, 300L})
            odds.push_back(number(value));
        for (const std::wstring& value : {std::wstring(L"12"), std::wstring(L"\xD800"), std::wstring(70000, L'x')})
            odds.push_back(text(value.c_str()));
        for (IUnknown* const value : std::initializer_list<IUnknown*>{&host, &liar, sheet.get()})
            odds.insert(odds.end(), {object(value), object(value, VT_UNKNOWN)});
        host.answer = [this](const DISPPARAMS&, VARIANT& result) {
            m_answer = std::make_unique<Odd>(m_turn++ * 7 % Odd::count(odds), odds);
            result = m_answer->handOver();
            return S_OK;
        };
        liar.isLiar = true;
        *canvas.put() = server.create();
        EXPECT_TRUE(isTrue(canvas.get(), L"InitializeDIB", {number(9), number(7)}));
        std::filesystem::current_path(m_folder.path(u8"")); // numbers are names of files too
        expectUsable(L"nothing");
    }
    ~Hostile() override {
        m_answer.reset();
        sheet->put_Tag(VARIANT{});
        std::filesystem::current_path(programFolder());
        EXPECT_EQ(host.references + liar.references, 2U);
    }
    // That a picture is loaded and saved as at the beginning.
    void expectUsable(const std::wstring& after) {
        const OwnArray bytes(VT_UI1, m_file);
        Variant saved;
        saved.vt = VT_ARRAY | VT_UI1;
        sheet->put_Tag(VARIANT{});
        sheet->put_isGDIplusEnabled(VARIANT_FALSE);
        sheet->put_MaxPixels(0);
        sheet->put_MaxMemory(0);
        EXPECT_TRUE(isTrue(sheet.get(), L"LoadPicture_Stream", {arrayValue(VT_UI1, bytes.array)}));
        EXPECT_TRUE(isTrue(sheet.get(), L"SaveToStream_Bitmap", {variable(saved)}));
        const auto* const data = static_cast<const char*>(saved.parray->pvData);
        const std::string file(data, data + saved.parray->rgsabound[0].cElements);
        if (m_before.empty()) m_before = file;
        EXPECT_EQ(file == m_before, true) << std::filesystem::path(after);
    }

    // What is wanted there, as far as a name tells it.
    LONG_PTR handleFor(const std::wstring& name) {
        LONG_PTR handle = 1;
        if (name == L"destinationDC" || name == L"hDC") canvas->LoadDIBinDC(VARIANT_TRUE, &handle);
        return name == L"hFont" ? reinterpret_cast<LONG_PTR>(::GetStockObject(SYSTEM_FONT)) : handle;
    }
    void freeResult(MEMBERID id, LONG_PTR handle) {
        ComTest::freeResult(id, handle);
        sheet->put_Unattended(VARIANT_TRUE);
    }

    LateObject host{{}}, liar{{}};
    std::vector<VARIANT> odds;
    ComPtr<_cPixSheet> canvas;
    const std::vector<std::uint8_t> m_file = readFile(sourceFolder() / "samples/pictures/sprite-4-bit.png");

  private:
    const TemporaryFolder m_folder;
    std::string m_before;
    std::unique_ptr<Odd> m_answer;
    std::size_t m_turn = 0;
};

TEST_F(Hostile, AnyValueForAnArgumentOfALateBoundCallIsTakenOrRefused) {
    std::set<HRESULT> statuses;
    handleFor(L"hDC");
    const std::size_t objects = platform::openHandles();
    eachMember([&](const FUNCDESC& function, const std::vector<std::wstring>& names) {
        std::vector<VARIANT> plain;
        std::vector<Variant> variables(static_cast<std::size_t>(function.cParams));
        for (std::size_t i = 0; i < variables.size(); ++i) {
            const ELEMDESC& parameter = function.lprgelemdescParam[i];
            if ((parameter.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) != 0) continue;
            const VARTYPE type = parameter.tdesc.vt == VT_PTR ? parameter.tdesc.lptdesc->vt : VARTYPE{VT_I4};
            plain.push_back((parameter.paramdesc.wParamFlags & PARAMFLAG_FOPT) != 0 ? missing()
                            : type == VT_SAFEARRAY                                  ? variable(variables[i])
                            : type == VT_PTR                                        ? object(nullptr)
                            : names[i + 1] == L"FileName"                           ? VARIANT{}
                                                          : number(static_cast<LONG>(handleFor(names[i + 1]))));
        }
        for (std::size_t argument = 0; argument < plain.size(); ++argument) {
            const bool isSlow = names[0].ends_with(L"ClipBoard") || names[0].find(L"Pasted") != std::wstring::npos;
            for (std::size_t which = 0; which < Odd::count(odds); which += isSlow ? 17 : 1) {
                Odd odd(which, odds);
                std::vector<VARIANT> values(plain.rbegin(), plain.rend());
                values[plain.size() - 1 - argument] = odd.get();
                DISPID put = DISPID_PROPERTYPUT;
                DISPPARAMS given{values.data(), &put, static_cast<UINT>(values.size()),
                                 function.invkind > INVOKE_PROPERTYGET ? 1U : 0U};
                Variant result;
                statuses.insert(sheet->Invoke(function.memid, GUID{}, LOCALE_USER_DEFAULT,
                                              static_cast<WORD>(function.invkind), &given, &result, nullptr, nullptr));
                freeResult(function.memid, static_cast<LONG_PTR>(result.llVal));
                for (Variant& held : variables)
                    ::VariantClear(&held);
            }
            expectUsable(names[0] + L' ' + names[argument + 1]);
        }
    });
    EXPECT_EQ(statuses, (std::set<HRESULT>{S_OK, DISP_E_TYPEMISMATCH, DISP_E_OVERFLOW, DISP_E_BADVARTYPE}));
    EXPECT_EQ(platform::openHandles(), objects);
}

// A null pointer is refused where something has to be given or taken, and any number is taken.
TEST_F(Hostile, AnyNumberAndNoPointerOfAnEarlyBoundCallIsTakenOrRefused) {
    constexpr LONG nan = 0x7FC00000, infinity = 0x7F800000; // as bits of floating-point numbers
    constexpr LONG numbers[] = {0, -1, 3, 65536, LONG_MIN, LONG_MAX, nan, infinity};
    eachMember([&](const FUNCDESC& function, const std::vector<std::wstring>& names) {
        const auto count = static_cast<std::size_t>(function.cParams);
        const auto typeOf = [&](std::size_t i) { return function.lprgelemdescParam[i].tdesc; };
        const auto call = [&](std::size_t odd, LONG value) {
            std::vector<Variant> places(count); // what is given there is freed by its type
            std::vector<VARIANT> values(count);
            std::vector<VARTYPE> types(count);
            std::vector<VARIANTARG*> given(count);
            for (std::size_t i = 0; i < count; ++i) {
                const VARTYPE type = typeOf(i).vt, inner = type == VT_PTR ? typeOf(i).lptdesc->vt : type;
                const bool isNumber = type != VT_BSTR && type != VT_VARIANT && type != VT_DISPATCH;
                given[i] = &values[i];
                types[i] = type == VT_PTR                                 ? VARTYPE{VT_BYREF | VT_I4}
                           : type == VT_USERDEFINED || type == VT_INT_PTR ? VARTYPE{VT_I4}
                                                                          : type;
                if (type != VT_PTR) {
                    if (isNumber) values[i].llVal = i == odd ? value : handleFor(names[i + 1]);
                } else if (i != odd) {
                    if (inner == VT_PTR) places[i].vt = VT_UNKNOWN;
                    if (inner == VT_SAFEARRAY) places[i].vt = VT_ARRAY | VT_UI1;
                    if (inner == VT_BSTR) places[i].vt = VT_BSTR;
                    values[i].byref = inner == VT_VARIANT ? static_cast<void*>(&places[i]) : &places[i].byref;
                }
            }
            VARIANT status{};
            ::DispCallFunc(sheet.get(), static_cast<ULONG_PTR>(function.oVft) & ~ULONG_PTR{1}, CC_STDCALL, VT_I4,
                           static_cast<UINT>(count), types.data(), given.data(), &status);
            if (count != 0) freeResult(function.memid, static_cast<LONG_PTR>(places.back().llVal));
            return status.lVal;
        };
        for (std::size_t i = 0; i < count; ++i) {
            const bool isOptional = (function.lprgelemdescParam[i].paramdesc.wParamFlags & PARAMFLAG_FOPT) != 0 ||
                                    names[i + 1] == L"Source" || names[i + 1] == L"Sizes" || names[i + 1] == L"Options";
            for (const LONG value : numbers)
                EXPECT_EQ(call(i, value), typeOf(i).vt != VT_PTR || isOptional ? S_OK : E_POINTER)
                    << std::filesystem::path(names[0]) << i << ' ' << value;
            expectUsable(names[0] + L' ' + names[i + 1]);
        }
    });
}

// Too few and too many arguments, under names of their own or none, of members that are called as what they are not.
TEST_F(Hostile, CallsThatFitNoMemberAreRefused) {
    const std::set<HRESULT> stated = {S_OK, DISP_E_MEMBERNOTFOUND, DISP_E_BADPARAMCOUNT, DISP_E_PARAMNOTFOUND,
                                      DISP_E_TYPEMISMATCH};
    std::vector<VARIANT> values(40, number(3));
    const auto tryAll = [&](DISPID id) {
        for (int which = 0; which < 8 * 4 * 5 * 3; ++which) {
            const WORD flags = std::array<WORD, 8>{0, 1, 2, 4, 8, 3, 12, 0xFFFF}[which % 8];
            const DISPID name = std::array<DISPID, 5>{-1, -3, 1, 99, LONG_MIN}[which / 32 % 5];
            DISPID names[] = {name, name};
            DISPPARAMS given{values.data(), names, std::array<UINT, 4>{0, 1, 2, 40}[which / 8 % 4], which / 160U};
            Variant result;
            const HRESULT status = sheet->Invoke(id, GUID{}, 0, flags, &given, &result, nullptr, nullptr);
            EXPECT_EQ(stated.count(status), 1U) << id << ' ' << which << ' ' << status;
            freeResult(id, static_cast<LONG_PTR>(result.llVal));
        }
        expectUsable(std::to_wstring(id));
    };
    eachMember([&](const FUNCDESC& function, const auto&) { tryAll(function.memid); });
    for (const DISPID id : std::initializer_list<DISPID>{-1, -4, -5, 0, 9999, LONG_MIN, 0x60020000})
        tryAll(id);
    LPOLESTR names[] = {const_cast<wchar_t*>(L"Render"), nullptr};
    DISPID ids[2];
    EXPECT_EQ(sheet->GetIDsOfNames(GUID{}, names, 2, 0, ids), E_POINTER);
}

// An object among the arguments changes the variables of the others while it is asked for its value.
TEST_F(Hostile, VariablesMayBecomeAnythingWhileACallIsMade) {
    VARIANT stream{}, name = text(L"sprite.png");
    writeFile("sprite.png", m_file);
    host.answer = [&](const DISPPARAMS&, VARIANT& result) {
        ::VariantClear(&stream);
        ::VariantClear(&name);
        stream = name = result = number(16);
        return S_OK;
    };
    EXPECT_TRUE(isTrue(sheet.get(), L"LoadPicture_File", {variable(name), object(&host), number(32)}));
    stream = arrayValue(VT_UI1, ::SafeArrayCreateVector(VT_UI1, 0, 99));
    const VARIANT side = object(&host);
    Variant count;
    EXPECT_EQ(call(sheet.get(), L"SaveToStream_ICO", {variable(stream), VARIANT{}, side, side, number(32)}, &count),
              S_OK);
    EXPECT_EQ(count.lVal, 1);
    EXPECT_EQ(stream.vt, VT_ARRAY | VT_UI1);
    ::VariantClear(&stream);
    // One that, asked for an interface, empties the only variable that holds it.
    for (const wchar_t* const member : {L"SwapDIBs", L"LoadPicture_StdPicture", L"SaveToStream_ICO"}) {
        LateObject fleeting({});
        VARIANT last = object(&fleeting);
        fleeting.asked = [&] {
            ::VariantClear(&last);
            EXPECT_NE(fleeting.references, 0U) << "gone while it is asked";
        };
        const std::vector<VARIANT> icon = {variable(stream), variable(last)}, other = {variable(last)};
        call(sheet.get(), member, std::wcscmp(member, L"SaveToStream_ICO") == 0 ? icon : other, &count);
        EXPECT_EQ(fleeting.references, 0U);
    }
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
