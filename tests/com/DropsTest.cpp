// What hosts hand over as dropped, beside names: handles, data objects, objects of their own, and those that misbehave.
#include "LateObject.h"
#include "Pictures.h"
#include "Server.h"
#include "platform/faults.h"
#include "support/SourceFolder.h"
#include "surface/cPixSheet.h"
#include <cstring>
#include <shlobj.h>

namespace pixkit::test {

namespace {

using platform::SeamCall;

std::wstring sprite() {
    return std::filesystem::absolute(sourceFolder() / "samples/pictures/sprite-4-bit.png").make_preferred().wstring();
}

HGLOBAL memoryOf(const void* bytes, std::size_t count, UINT kind = GMEM_MOVEABLE) {
    const HGLOBAL memory = ::GlobalAlloc(kind, count);
    std::memcpy(::GlobalLock(memory), bytes, count);
    ::GlobalUnlock(memory);
    return memory;
}

// A DROPFILES block; its first name is said to be elsewhere by so much.
template <class Char>
HGLOBAL dropOf(const std::basic_string<Char>& names, int lie = 0, UINT kind = GMEM_MOVEABLE) {
    DROPFILES header{static_cast<DWORD>(sizeof header) + static_cast<DWORD>(lie), {}, 0, sizeof(Char) == 2};
    std::string block(reinterpret_cast<const char*>(&header), sizeof header);
    block.append(reinterpret_cast<const char*>(names.data()), names.size() * sizeof(Char));
    return memoryOf(block.data(), block.size(), kind);
}

// Nothing for null.
void copyToClipboard(HGLOBAL drop) {
    const HWND owner = ::CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    EXPECT_TRUE(::OpenClipboard(owner) && ::EmptyClipboard());
    EXPECT_TRUE(drop == nullptr || ::SetClipboardData(CF_HDROP, drop) != nullptr);
    ::CloseClipboard();
    ::DestroyWindow(owner);
}

VARIANT handle(const void* memory) {
    VARIANT value = number(0, sizeof(void*) == 8 ? VT_I8 : VT_I4);
    value.llVal = reinterpret_cast<LONG_PTR>(memory);
    return value;
}

class Drops : public ComTest {
  protected:
    // The names of a drop, each behind its number's digits.
    std::wstring names(const VARIANT& drop) {
        VARIANT copy = drop;
        Variant list, count;
        EXPECT_EQ(call(sheet.get(), L"GetDroppedFileNames", {variable(copy), variable(list)}, &count), S_OK);
        std::wstring all;
        if (list.vt == (VT_ARRAY | VT_VARIANT))
            for (ULONG i = 0; i < list.parray->rgsabound[0].cElements && i < 5; ++i)
                all += std::wstring(static_cast<VARIANT*>(list.parray->pvData)[i].bstrVal) + L'|';
        return std::to_wstring(count.lVal) + L':' + all;
    }
    bool loads(const VARIANT& drop, LONG index = 0) {
        VARIANT copy = drop;
        return isTrue(sheet.get(), L"LoadPicture_DropedFiles", {variable(copy), number(index)});
    }
};

// A collection whose items are of these numbers; `item` is what stands in it.
std::map<std::wstring, LateObject::Member> collection(LONG count, LONG first, VARIANT item) {
    return {{L"Count", [=](const DISPPARAMS&, VARIANT& result) { return result = number(count), S_OK; }},
            {L"Item", [=](const DISPPARAMS& arguments, VARIANT& result) mutable {
                 const LONG index = arguments.rgvarg[0].lVal;
                 if (index < first || index - first >= count) return DISP_E_BADINDEX;
                 return ::VariantCopy(&result, &item);
             }}};
}

std::map<std::wstring, LateObject::Member> withFiles(VARIANT files, HRESULT status = S_OK) {
    return {{L"Files", [=](const DISPPARAMS&, VARIANT& result) mutable {
                 return FAILED(status) ? status : ::VariantCopy(&result, &files);
             }}};
}

} // namespace

TEST_F(Drops, HandlesThatAreNoDropsAreFollowed) {
    const std::wstring two = sprite() + L'\0' + L"\u65e5.png" + L'\0' + L'\0';
    const HGLOBAL fixed = dropOf(two, 0, GMEM_FIXED), freed = dropOf(two);
    int local[8] = {20, 0, 0, 0, 1, 'a', 0, 0};
    const struct {
        const void* memory;
        std::wstring names;
    } rows[] = {
        {dropOf(two), L"2:" + sprite() + L"|\u65e5.png|"},
        {fixed, L"2:" + sprite() + L"|\u65e5.png|"},
        {dropOf(std::string("C:\\\xE4.bmp\0", 9)), ::GetACP() == 1252 ? L"1:C:\\\u00E4.bmp|" : L"1:C:\\?.bmp|"},
        {dropOf(two, 1 << 20), L"0:"},
        {dropOf(two, -8), L"0:"},
        {memoryOf(two.data(), 8), L"0:"},
        {static_cast<char*>(fixed) + 16, L"0:"},
        {freed, L"0:"},
        {local, L"0:"},
        {reinterpret_cast<const void*>(&::GlobalAlloc), L"0:"},
        {reinterpret_cast<const void*>(~ULONG_PTR{7}), L"0:"},
    };
    ::GlobalFree(freed);
    for (const auto& row : rows) {
        EXPECT_EQ(names(handle(row.memory)), row.names) << &row - rows;
        EXPECT_EQ(loads(handle(row.memory)), row.names[0] == L'2') << &row - rows;
    }
    EXPECT_EQ(::GlobalFlags(const_cast<void*>(rows[0].memory)) & GMEM_LOCKCOUNT, 0U);
    VARIANT asDouble = number(0, VT_R8);
    asDouble.dblVal = static_cast<double>(reinterpret_cast<ULONG_PTR>(rows[0].memory));
    EXPECT_TRUE(loads(asDouble)) << "as scripts keep large numbers";
    asDouble.dblVal += 4294967296.0;
    EXPECT_FALSE(loads(asDouble)) << "the handle of somebody else, cut off";
    for (const int index : {0, 1, 2, 3, 4, 5})
        ::GlobalFree(const_cast<void*>(rows[index].memory));
}

TEST_F(Drops, ObjectsOfHostsAreAskedInEveryForm) {
    const VARIANT name = text(sprite().c_str()), wrong = number(7), none = object(nullptr);
    const std::wstring three = L"3:" + sprite() + L'|' + sprite() + L'|' + sprite() + L'|';
    for (const bool isScript : {false, true}) {
        LateObject fromOne(collection(3, 1, name), isScript), fromZero(collection(3, 0, name), isScript),
            strange(collection(3, 1, wrong), isScript), boundless(collection(0x7FFFFFFF, 1, name), isScript),
            negative(collection(-1, 1, name), isScript), failing(collection(0x7FFFFFFF, 0x7FFFFFFF, name), isScript);
        LateObject host(withFiles(object(&fromOne)), isScript), empty(withFiles(none), isScript),
            raising(withFiles(none, DISP_E_EXCEPTION), isScript), gone(withFiles(none, RPC_E_DISCONNECTED), isScript),
            nested(withFiles(object(&host)), isScript), single(withFiles(name), isScript);
        const std::pair<LateObject*, std::wstring> rows[] = {
            {&host, three},
            {&fromOne, three},
            {&fromZero, three},
            {&empty, L"0:"},
            {&raising, L"0:"},
            {&gone, L"0:"},
            {&nested, L"0:"},
            {&strange, L"0:"},
            {&negative, L"0:"},
            {&failing, L"0:"},
            {&single, L"1:" + sprite() + L'|'},
        };
        for (const auto& [drop, expected] : rows) {
            EXPECT_EQ(names(object(drop)), expected) << isScript;
            EXPECT_EQ(loads(object(drop, VT_UNKNOWN)), expected[0] != L'0') << isScript;
            EXPECT_EQ(drop->references, 1U);
        }
        EXPECT_EQ(names(object(&boundless)).substr(0, 6), L"65536:");
        EXPECT_EQ(fromOne.references + host.references, 2U);
    }
    auto nothing = collection(0, 1, name);
    int asked = 0;
    nothing[L"Item"] = [&](const DISPPARAMS&, VARIANT&) { return ++asked, S_OK; }; // adds what is asked for
    LateObject dictionary(std::move(nothing));
    EXPECT_EQ(names(object(&dictionary)), L"0:");
    EXPECT_EQ(asked, 0);
    // One that stops in the middle, and lets go of itself where the caller keeps it.
    VARIANT variant = number(0);
    int left = 2;
    auto members = collection(9, 1, name);
    members[L"Item"] = [&](const DISPPARAMS&, VARIANT& result) {
        variant = number(0);
        return --left < 0 ? E_FAIL : ::VariantCopy(&result, const_cast<VARIANT*>(&name));
    };
    LateObject fading(std::move(members));
    variant = object(&fading);
    Variant list, count;
    EXPECT_EQ(call(sheet.get(), L"GetDroppedFileNames", {variable(variant), variable(list)}, &count), S_OK);
    EXPECT_EQ(count.lVal, 1);
    EXPECT_EQ(fading.references, 1U);
}

namespace {

// Contents without names: a picture in memory, in a stream, one that only fails, and a long stream of unknown length.
class Mail final : public IDataObject {
  public:
    STDMETHODIMP QueryInterface(REFIID id, void** result) override {
        *result = id == IID_IUnknown || id == IID_IDataObject ? this : nullptr;
        return *result != nullptr ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override { return --references; }
    STDMETHODIMP GetData(FORMATETC* asked, STGMEDIUM* medium) override {
        if (asked->lindex >= 0 && whenAsked && !std::exchange(m_isBusy, true)) {
            whenAsked();
            m_isBusy = false;
        }
        auto bytes = readFile(sprite());
        medium->tymed = TYMED_HGLOBAL;
        if (asked->cfFormat == ::RegisterClipboardFormatW(CFSTR_FILEDESCRIPTORW)) {
            std::vector<std::uint8_t> block(4 + 5 * sizeof(FILEDESCRIPTORW));
            block[0] = 0xFF; // more than there are
            auto* const first = reinterpret_cast<FILEDESCRIPTORW*>(block.data() + 4);
            first[0].dwFlags = FD_ATTRIBUTES;
            first[0].dwFileAttributes = FILE_ATTRIBUTE_DIRECTORY;
            first[2].dwFlags = FD_FILESIZE;
            first[2].nFileSizeLow = static_cast<DWORD>(bytes.size());
            medium->hGlobal = memoryOf(block.data(), block.size());
            return S_OK;
        }
        if (asked->cfFormat != ::RegisterClipboardFormatW(CFSTR_FILECONTENTS) || asked->lindex == 3)
            return DV_E_FORMATETC;
        if (asked->lindex == 4) bytes.resize(1 << 20);
        medium->hGlobal = memoryOf(bytes.data(), bytes.size());
        if (asked->lindex % 2 != 0 || (asked->tymed & TYMED_ISTREAM) == 0) return S_OK;
        medium->tymed = TYMED_ISTREAM;
        ::CreateStreamOnHGlobal(medium->hGlobal, TRUE, &medium->pstm);
        stream.hold(medium->pstm);
        return medium->pstm->Seek({}, STREAM_SEEK_END, nullptr); // where whoever wrote it left it
    }
    STDMETHODIMP GetDataHere(FORMATETC*, STGMEDIUM*) override { return E_NOTIMPL; }
    STDMETHODIMP QueryGetData(FORMATETC*) override { return E_NOTIMPL; }
    STDMETHODIMP GetCanonicalFormatEtc(FORMATETC*, FORMATETC*) override { return E_NOTIMPL; }
    STDMETHODIMP SetData(FORMATETC*, STGMEDIUM*, BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP EnumFormatEtc(DWORD, IEnumFORMATETC** formats) override {
        FORMATETC offered{static_cast<CLIPFORMAT>(::RegisterClipboardFormatW(CFSTR_FILEDESCRIPTORW)), nullptr,
                          DVASPECT_CONTENT, -1, TYMED_HGLOBAL};
        return ::SHCreateStdEnumFmtEtc(1, &offered, formats);
    }
    STDMETHODIMP DAdvise(FORMATETC*, DWORD, IAdviseSink*, DWORD*) override { return E_NOTIMPL; }
    STDMETHODIMP DUnadvise(DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP EnumDAdvise(IEnumSTATDATA**) override { return E_NOTIMPL; }
    ULONG references = 1;
    ComPtr<IStream> stream;          // the last
    std::function<void()> whenAsked; // for contents, and not by this very function

  private:
    bool m_isBusy = false;
};

} // namespace

TEST_F(Drops, DataObjectsGiveNamesOrContents) {
    Mail mail;
    const VARIANT drop = object(&mail, VT_UNKNOWN);
    EXPECT_EQ(names(drop), L"0:");
    const bool expected[] = {true, true, true, false, true, false};
    for (LONG index = 0; index < 6; ++index) {
        EXPECT_EQ(loads(drop, index), expected[index]) << index;
        EXPECT_EQ(width(), expected[index] ? 24 : 0) << index;
    }
    constexpr ULONG limit = 100'000;
    sheet->put_MaxMemory(limit);
    EXPECT_FALSE(loads(drop, 4));
    ULARGE_INTEGER read{};
    EXPECT_EQ(mail.stream->Seek({}, STREAM_SEEK_CUR, &read), S_OK);
    EXPECT_EQ(read.QuadPart, limit + 1) << "more than tells that it is too much";
    EXPECT_TRUE(loads(drop, 2));
    sheet->put_MaxMemory(0);
    EXPECT_EQ(mail.references, 1U);

    ComPtr<IShellFolder> folder;
    ComPtr<IDataObject> shell;
    LPITEMIDLIST path = nullptr;
    LPCITEMIDLIST last = nullptr;
    ASSERT_EQ(::SHParseDisplayName(sprite().c_str(), nullptr, &path, 0, nullptr), S_OK);
    ASSERT_EQ(::SHBindToParent(path, IID_IShellFolder, folder.putVoid(), &last), S_OK);
    ASSERT_EQ(folder->GetUIObjectOf(nullptr, 1, &last, IID_IDataObject, nullptr, shell.putVoid()), S_OK);
    EXPECT_EQ(names(object(shell.get(), VT_UNKNOWN)), L"1:" + sprite() + L'|');
    EXPECT_TRUE(loads(object(shell.get(), VT_UNKNOWN)));
    ::CoTaskMemFree(path);
}

// Whose code runs in the middle of the load.
TEST_F(Drops, ADataObjectSpoilsTheLoadThatAsksIt) {
    Mail mail;
    const VARIANT drop = object(&mail, VT_UNKNOWN);
    ComPtr<_cPixSheet> other;
    _cPixSheet* last = *other.put() = server.create();
    const std::function<void()> acts[] = {
        [&] { sheet->DestroyDIB(); },      [&] { EXPECT_TRUE(makeImage(300, 200)); }, [&] { sheet->SwapDIBs(&last); },
        [&] { EXPECT_TRUE(loads(drop)); }, [&] { EXPECT_FALSE(loads(drop, 3)); },
    };
    for (const auto& act : acts) {
        mail.whenAsked = act;
        ASSERT_TRUE(makeImage(1, 1));
        EXPECT_TRUE(loads(drop, 2)) << &act - acts;
        EXPECT_EQ(width(), 24) << &act - acts;
    }
    VARIANT given = drop;
    VARIANT_BOOL isLoaded = VARIANT_FALSE;
    other.detach();
    mail.whenAsked = [&] { EXPECT_GT(last->Release(), 0U) << "destroyed under its member"; };
    last->LoadPicture_DropedFiles(&given, 2, 32, 32, VARIANT_FALSE, 32, &isLoaded);
    EXPECT_EQ(isLoaded, VARIANT_TRUE);
    EXPECT_EQ(mail.references, 1U);
}

TEST_F(Drops, AnArrayThatCannotTakeTheNamesIsNoReason) {
    VARIANT name = text(sprite().c_str());
    SAFEARRAY* numbers = ::SafeArrayCreateVector(VT_I4, 0, 1);
    LONG count = 1;
    Variant why;
    EXPECT_EQ(sheet->GetDroppedFileNames(&name, &numbers, &count), S_OK);
    EXPECT_EQ(count, 0);
    why.vt = VT_BSTR;
    EXPECT_EQ(sheet->get_LastErrorText(&why.bstrVal), S_OK);
    EXPECT_NE(::SysStringLen(why.bstrVal), 0U);
    ::SafeArrayDestroy(numbers);
}

TEST_F(Drops, FilesOnTheClipboardArePasted) {
    const auto pasted = [&] {
        Variant list, count;
        EXPECT_EQ(call(sheet.get(), L"GetPastedFileNames", {variable(list)}, &count), S_OK);
        return count.lVal;
    };
    copyToClipboard(nullptr);
    EXPECT_TRUE(pasted() == 0 && !isTrue(sheet.get(), L"LoadPicture_PastedFiles"));
    copyToClipboard(dropOf(L"none.png" + (L'\0' + sprite()) + L'\0' + L'\0'));
    EXPECT_EQ(pasted(), 2);
    EXPECT_TRUE(isTrue(sheet.get(), L"LoadPicture_PastedFiles"));
    EXPECT_FALSE(isTrue(sheet.get(), L"LoadPicture_PastedFiles", {number(1)}));
    Mail mail;
    ASSERT_EQ(::OleInitialize(nullptr) | ::OleSetClipboard(&mail), S_OK);
    EXPECT_TRUE(pasted() == 0 && isTrue(sheet.get(), L"LoadPicture_PastedFiles", {number(2)}));
    ::OleSetClipboard(nullptr);
    ::OleUninitialize();
    EXPECT_EQ(mail.references, 1U);
}

// Every call on the way that can fail, once for names and once for contents.
TEST_F(Drops, AFailingCallKeepsTheClipboardOrAReference) {
    cPixSheet native;
    std::vector<std::string> names;
    const auto isClosed = [] { return ::OpenClipboard(nullptr) != FALSE && ::CloseClipboard() != FALSE; };
    copyToClipboard(dropOf(sprite() + L'\0' + L'\0'));
    for (const SeamCall failing : {SeamCall::openClipboard, SeamCall::getClipboardData, SeamCall::globalLock}) {
        const platform::ScopedFault fault(failing);
        EXPECT_EQ(native.GetPastedFileNames(names), 0);
        EXPECT_FALSE(native.LoadPicture_PastedFiles());
        EXPECT_FALSE(native.LastErrorText().empty());
        EXPECT_TRUE(isClosed());
    }
    EXPECT_EQ(native.GetPastedFileNames(names), 1);
    Mail mail;
    ASSERT_EQ(::OleInitialize(nullptr) | ::OleSetClipboard(&mail), S_OK);
    for (const SeamCall failing : {SeamCall::oleGetClipboard, SeamCall::globalLock}) {
        const platform::ScopedFault fault(failing);
        EXPECT_FALSE(native.LoadPicture_PastedFiles(2));
        EXPECT_TRUE(isClosed());
    }
    EXPECT_TRUE(native.LoadPicture_PastedFiles(2));
    ::OleSetClipboard(nullptr);
    ::OleUninitialize();
    EXPECT_EQ(mail.references, 1U);
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
