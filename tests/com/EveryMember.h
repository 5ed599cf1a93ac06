// Every member that the type library lists, with arguments of which it makes something.
#pragma once
#include "Fonts.h"
#include "LateObject.h"
#include "Pictures.h"
#include "Server.h"
#include <deque>
#include <map>
#include <olectl.h>
#include <set>

namespace pixkit::test {

class EveryMember : public ComTest {
  protected:
    struct Member {
        std::wstring name;
        DISPID id;
        WORD kind;
        struct Parameter {
            std::wstring name;
            bool isOptional, isReference;
        };
        std::vector<Parameter> parameters;
    };

    EveryMember() {
        *canvas.put() = server.create();
        writeFile(m_folder.path(u8"picture.png"), picture("png/interlaced-5x5.png"));
        makeFont(9, IID_IFontDisp, font.putVoid());
        prepare();
        sheet->CreateStdPicture(::pictIcon, 0, systemPicture.put());
        sheet->CreateIcon(0, 0, &m_icon);
        eachMember([&](const FUNCDESC& function, const std::vector<std::wstring>& names) {
            // Other programs use the clipboard, and somebody else may be asked questions.
            const bool isOthers = names[0].find(L"ClipBoard") != std::wstring::npos ||
                                  names[0].find(L"Pasted") != std::wstring::npos || names[0] == L"Unattended";
            if (isOthers) return;
            Member& member =
                members.emplace_back(Member{names[0], function.memid, static_cast<WORD>(function.invkind), {}});
            for (SHORT i = 0; i < function.cParams; ++i) {
                const ELEMDESC& parameter = function.lprgelemdescParam[i];
                const USHORT flags = parameter.paramdesc.wParamFlags;
                if ((flags & PARAMFLAG_FRETVAL) == 0)
                    member.parameters.push_back({names[static_cast<std::size_t>(i) + 1], (flags & PARAMFLAG_FOPT) != 0,
                                                 parameter.tdesc.vt == VT_PTR});
            }
        });
    }
    ~EveryMember() override { freeResult(416, m_icon); }

    // As before each call: an icon whose file was kept, and another image to draw on.
    void prepare() {
        VARIANT_BOOL done = VARIANT_FALSE;
        sheet->put_Unattended(VARIANT_TRUE);
        sheet->put_Tag(m_words);
        sheet->PngPropertySet(::pngDescription, m_words, nullptr, &done);
        sheet->put_isGDIplusEnabled(VARIANT_FALSE);
        sheet->put_MaxPixels(0);
        sheet->put_MaxMemory(0);
        canvas->InitializeDIB(9, 7, &done);
        sheet->LoadPicture_Stream(&m_file.array, 32, 32, 0, 0, VARIANT_TRUE, 32, &done);
        EXPECT_EQ(done, VARIANT_TRUE) << "not usable";
    }
    // One that owns nothing; what comes by reference stands in one of the variables.
    VARIANT argument(const Member& member, const Member::Parameter& parameter, std::deque<Variant>& variables) {
        const auto plain = m_plain.find(parameter.name);
        if (parameter.name == L"inStream") return arrayValue(VT_UI1, member.id == 204 ? m_bits.array : m_file.array);
        if (parameter.name == L"value") return member.name == L"Tag" ? m_words : number(0);
        if (plain != m_plain.end()) return plain->second();
        if (!parameter.isReference) {
            const bool isPlace = parameter.name == L"x" || parameter.name == L"y";
            return parameter.isOptional ? missing() : number(isPlace ? 0 : 3);
        }
        Variant& given = variables.emplace_back();
        if (parameter.name == L"outStream") {
            given.vt = VT_ARRAY | VT_UI1;
            given.parray = ::SafeArrayCreateVector(VT_UI1, 0, 3);
        }
        return variable(given);
    }
    std::vector<VARIANT> arguments(const Member& member, std::deque<Variant>& variables) {
        std::vector<VARIANT> values;
        for (const auto& parameter : member.parameters)
            values.push_back(argument(member, parameter, variables));
        return values;
    }
    HRESULT invoke(const Member& member, std::vector<VARIANT> values, VARIANT& result) {
        std::reverse(values.begin(), values.end());
        DISPID put = DISPID_PROPERTYPUT;
        DISPPARAMS given{values.data(), &put, static_cast<UINT>(values.size()),
                         member.kind > INVOKE_PROPERTYGET ? 1U : 0U};
        return sheet->Invoke(member.id, GUID{}, LOCALE_USER_DEFAULT, member.kind, &given, &result, nullptr, nullptr);
    }

    std::vector<Member> members;
    ComPtr<_cPixSheet> canvas;
    ComPtr<IFontDisp> font;
    ComPtr<IPictureDisp> systemPicture;
    // Two dropped names, of an object that knows them.
    LateObject drop{{{L"Files", [this](const DISPPARAMS&, VARIANT& result) {
                          result = arrayValue(VT_BSTR, ::SafeArrayCreateVector(VT_BSTR, 0, 2));
                          for (const int i : {0, 1})
                              static_cast<BSTR*>(result.parray->pvData)[i] = ::SysAllocString(m_name.bstrVal);
                          return S_OK;
                      }}}};

  private:
    const TemporaryFolder m_folder;
    OwnArray m_file{VT_UI1, picture("ico/two-1-bit-icon.ico")}, m_bits{VT_UI1, Bytes(1 << 14, 9)};
    LONG_PTR m_icon = 0;
    const VARIANT m_name = text(m_folder.path(u8"picture.png").wstring().c_str()), m_words = text(L"some words");
    const std::map<std::wstring, std::function<VARIANT()>> m_plain = {
        {L"FileName", [this] { return m_name; }},
        {L"Text", [this] { return m_words; }},
        {L"Value", [this] { return m_words; }},
        {L"ResIndex", [] { return number(7); }},
        {L"ResSection", [] { return number(0); }},
        {L"PromptOverWrite", [] { return number(0); }},
        {L"destinationDC", [] { return number(0); }},
        {L"hDC", [] { return number(0); }},
        {L"hFont", [] { return number(static_cast<LONG>(reinterpret_cast<LONG_PTR>(::GetStockObject(SYSTEM_FONT)))); }},
        {L"Handle", [this] { return number(static_cast<LONG>(m_icon)); }},
        {L"Format", [] { return number(streamPNG); }},
        {L"Formula", [] { return number(gsclCCIR709); }},
        {L"Source", [] { return missing(); }},
        {L"Sizes", [] { return missing(); }},
        {L"Options", [] { return missing(); }},
        {L"Data", [this] { return object(&drop); }},
        {L"Font", [this] { return object(font.get()); }},
        {L"Picture", [this] { return object(systemPicture.get()); }},
        {L"destHostDIB", [this] { return object(canvas.get()); }},
        {L"SwapFromDIB", [this] { return object(canvas.get()); }},
    };
};

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
