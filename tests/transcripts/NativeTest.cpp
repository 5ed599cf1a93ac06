// Transcripts of the native class.
#include "MemoryClipboard.h"
#include "platform/drops.h"
#include "platform/pictures.h"
#include "surface/cPixSheet.h"
#include "transcripts/Transcript.h"
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <span>

namespace pixkit::test {

namespace {

Value valueOf(const ByteArray& bytes) {
    if (!bytes.isAllocated()) return {};
    return Array{{bytes.data(), bytes.data() + bytes.size()}, bytes.lowerBound(), bytes.bound(2).count};
}

// An argument as whatever the parameter asks for, and what the member stored in it.
class In {
  public:
    explicit In(Argument& argument) : m_argument(argument) {}
    In(const In&) = delete;
    In& operator=(const In&) = delete;
    ~In() {
        if (!m_argument.isVariable) return;
        if (m_isNumber) m_argument.value = std::int64_t{m_number};
        if (m_isArray) m_argument.value = valueOf(m_array);
        if (!m_names.empty()) m_argument.value = std::vector<Value>(m_names.begin(), m_names.end());
        Array sizes{{}, 0, static_cast<std::uint32_t>(m_iconSizes.size()), true};
        for (const auto& [width, height, depth, isPng] : m_iconSizes)
            sizes.elements.insert(sizes.elements.end(), {width, height, depth, isPng});
        if (sizes.rows != 0) m_argument.value = sizes;
    }

    const Value& value() const { return m_argument.value; }
    // Numbers, and where the member stores one.
    operator std::int32_t&() {
        m_isNumber = true;
        return m_number = static_cast<std::int32_t>(number());
    }
    operator std::int32_t*() { return &static_cast<std::int32_t&>(*this); }
    template <class Number>
    requires((std::is_arithmetic_v<Number> || std::is_enum_v<Number>)&&!std::is_same_v<Number, std::int32_t>)
    operator Number() {
        if constexpr (std::is_floating_point_v<Number>)
            if (const auto* real = std::get_if<double>(&value())) return static_cast<Number>(*real);
        return static_cast<Number>(number());
    }
    operator const std::string&() { return std::get<std::string>(value()); }
    operator PngValue() {
        if (const auto* text = std::get_if<std::string>(&value())) return *text;
        if (const auto* date = std::get_if<Date>(&value())) return date->days;
        return std::holds_alternative<std::monostate>(value()) ? PngValue()
                                                               : PngValue(static_cast<std::int32_t>(number()));
    }
    operator ByteArray&() {
        m_isArray = true;
        if (const auto* array = std::get_if<Array>(&value())) {
            m_bytes.assign(array->elements.begin(), array->elements.end());
            const ByteArray::Bound first{array->lower, array->rowSize()};
            m_array = array->rows == 0 ? ByteArray::borrow(m_bytes.data(), first)
                                       : ByteArray::borrow(m_bytes.data(), first, {0, array->rows});
        }
        return m_array;
    }
    operator std::vector<IconSourceSize>&() { return m_iconSizes; }
    operator std::vector<std::string>&() { return m_names; }
    operator const std::vector<std::int32_t>&() {
        for (const Value& one : list())
            m_numbers.push_back(std::holds_alternative<bool>(one) ? std::get<bool>(one) : numberOf(one));
        return m_numbers;
    }
    operator std::span<const DroppedFile>() {
        for (const Value& file : list())
            if (const auto* name = std::get_if<std::string>(&file)) m_files.push_back({*name});
        return m_files;
    }
    operator std::span<const cPixSheet* const>() {
        for (const Value& source : list())
            if (const auto* object = std::get_if<Object>(&source); object != nullptr && *object)
                m_sheets.push_back(static_cast<const cPixSheet*>(object->get()));
        return m_sheets;
    }
    operator std::span<const IconEntrySize>() {
        const auto numbers = list();
        for (std::size_t i = 0; i + 2 < numbers.size(); i += 3)
            m_entrySizes.push_back({numberOf(numbers[i]), numberOf(numbers[i + 1]), numberOf(numbers[i + 2])});
        return m_entrySizes;
    }
    operator cPixSheet*() { return static_cast<cPixSheet*>(object()); }
    operator const platform::StdPicture*() { return static_cast<platform::StdPicture*>(object()); }

    void store(Value result) { m_argument.value = std::move(result); }

  private:
    static std::int32_t numberOf(const Value& value) {
        return static_cast<std::int32_t>(std::get<std::int64_t>(value));
    }
    void* object() const {
        const auto* const found = std::get_if<Object>(&value());
        return found != nullptr ? found->get() : nullptr;
    }
    std::int64_t number() const {
        if (const auto* truth = std::get_if<bool>(&value())) return *truth;
        return std::holds_alternative<std::monostate>(value()) ? 0 : std::get<std::int64_t>(value());
    }
    std::vector<Value> list() const { // one value is a list of one
        const auto* const found = std::get_if<std::vector<Value>>(&value());
        return found != nullptr ? *found : std::vector<Value>{value()};
    }

    Argument& m_argument;
    bool m_isNumber = false, m_isArray = false;
    std::int32_t m_number = 0;
    std::vector<std::uint8_t> m_bytes;
    ByteArray m_array;
    std::vector<IconSourceSize> m_iconSizes;
    std::vector<std::string> m_names;
    std::vector<std::int32_t> m_numbers;
    std::vector<DroppedFile> m_files;
    std::vector<const cPixSheet*> m_sheets;
    std::vector<IconEntrySize> m_entrySizes;
};

Value valueOf(bool value) {
    return value;
}
template <class Text>
requires std::is_convertible_v<const Text&, std::string_view> Value valueOf(const Text& text) {
    return std::string(text);
}
Value valueOf(const std::uint8_t* address) {
    return reinterpret_cast<std::int64_t>(address);
}
Value valueOf(std::unique_ptr<platform::StdPicture> made) {
    return Object(std::move(made));
}
Value valueOf(std::unique_ptr<cPixSheet> made) {
    return Object(std::move(made));
}
template <class Number>
requires std::is_integral_v<Number> || std::is_enum_v<Number> Value valueOf(Number number) {
    return static_cast<std::int64_t>(number);
}
Value valueOf(double number) {
    return number;
}
Value valueOf(const PngValue& value) {
    if (const auto* number = std::get_if<std::int32_t>(&value)) return std::int64_t{*number};
    if (const auto* date = std::get_if<double>(&value)) return Date{*date};
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    return {};
}

using Member = std::function<Value(cPixSheet&, std::span<std::unique_ptr<In>>)>;

// Calls a member with as many arguments as there are, where it can be called so.
template <class Call, std::size_t... I>
bool tryCall(Call call, cPixSheet& sheet, std::span<std::unique_ptr<In>> in, Value& result, std::index_sequence<I...>) {
    if constexpr (std::is_invocable_v<Call, cPixSheet&, decltype(*in[I])...>) {
        if (in.size() != sizeof...(I)) return false;
        if constexpr (std::is_void_v<std::invoke_result_t<Call, cPixSheet&, decltype(*in[I])...>>)
            call(sheet, *in[I]...);
        else
            result = valueOf(call(sheet, *in[I]...));
        return true;
    }
    return false;
}

template <class Call>
Member member(Call call) {
    return [call](cPixSheet& sheet, std::span<std::unique_ptr<In>> in) {
        Value result;
        const auto any = [&]<std::size_t... Count>(std::index_sequence<Count...>) {
            return (tryCall(call, sheet, in, result, std::make_index_sequence<Count>()) || ...);
        };
        if (!any(std::make_index_sequence<18>())) throw std::invalid_argument("another number of arguments");
        return result;
    };
}

// All that is called in C++ as in COM, by subject.
// clang-format off
#define PIXKIT_MEMBERS(X) \
    X(Alpha) X(BitsPointer) X(Handle) X(Width) X(Height) X(scanWidth) X(ImageType) X(HighQualityInterpolation) \
    X(ManageOwnDC) X(isAlphaBlendFriendly) X(isGDIplusEnabled) X(isZlibEnabled) X(gdiToken) X(KeepGDIplusActive) \
    X(Version) X(LastErrorText) X(Unattended) X(InitializeDIB) X(DestroyDIB) X(EraseDIB) X(LoadDIBinDC) X(SwapDIBs) \
    X(GetPixel) X(SetPixel) X(GetAlphaMask) X(GetDIBbits) X(SetDIBbits) X(PixelAlpha) X(AlphaMask) X(DIBbits) X(StreamOf) \
    X(LoadPicture_File) X(LoadPicture_Stream) X(LoadPicture_ByHandle) X(LoadPicture_FromOrignalFormat) \
    X(GetOrginalFormat) X(SourceIconSizes) X(LoadPicture_ClipBoard) X(LoadPicture_DropedFiles) X(GetDroppedFileNames) \
    X(SaveToFile_Bitmap) X(SaveToStream_Bitmap) X(SaveToFile_TGA) X(SaveToStream_TGA) X(SaveToFile_JPG) \
    X(SaveToStream_JPG) X(SaveToFile_PNG) X(SaveToStream_PNG) X(SaveToFile_GIF) X(SaveToStream_GIF) \
    X(LoadPicture_StdPicture) X(CreateBitmap) X(CreateIcon) X(CreateCursor) X(CreateStdPicture) X(UpdateLayeredWindow) \
    X(SaveToFile_ICO) X(SaveToStream_ICO) X(CopyToClipBoard) X(PngPropertyGet) X(PngPropertySet) \
    X(MakeGrayScale) X(MakeImageInverse) X(MakeLighterDarker) X(MakeTransparent) X(BlendToColor) X(MirrorImage) \
    X(Render) X(RenderDropShadow_JIT) X(CreateGDIplusToken) X(DestroyGDIplusToken) X(Resize) X(Resample) X(ScaleImage) \
    X(CreateDropShadow) X(CreateCheckerBoard) X(TileImage) X(DrawText_hFont) X(MeasureText_hFont) \
    X(CreateRegion) X(MaxPixels) X(MaxMemory) X(LoadNotes) X(Orientation)
// clang-format on
#define PIXKIT_MEMBER(name)                                                                                            \
    {#name, member([](cPixSheet& sheet, auto&... in) -> decltype(sheet.name(in...)) { return sheet.name(in...); })},
const std::map<std::string, Member> members = {
    PIXKIT_MEMBERS(PIXKIT_MEMBER)
    // Members whose form in C++ is another than in COM.
    {"Tag",
     [](cPixSheet& sheet, std::span<std::unique_ptr<In>> in) {
         if (in.empty()) return sheet.Tag().has_value() ? std::any_cast<Value>(sheet.Tag()) : Value();
         sheet.Tag(in[0]->value());
         return Value();
     }},
    {"CopyImageTo", member([](cPixSheet& sheet, In& target,
                              auto&... in) -> decltype(sheet.CopyImageTo(std::declval<cPixSheet&>(), in...)) {
         if (cPixSheet* const given = target) return sheet.CopyImageTo(*given, in...);
         std::unique_ptr<cPixSheet> made;
         sheet.CopyImageTo(made, in...);
         target.store(Object(std::move(made)));
     })},
    {"TrimImage", [](cPixSheet& sheet, std::span<std::unique_ptr<In>> in) {
         TrimRectangle kept;
         const bool isReport = in.size() > 1 && static_cast<bool>(*in[1]);
         if (!sheet.TrimImage(in.empty() ? trimAll : static_cast<std::int32_t>(*in[0]), isReport, &kept))
             return Value(false);
         const std::int32_t stored[] = {kept.x, kept.y, kept.Width, kept.Height};
         for (std::size_t i = 2; i < in.size(); ++i)
             in[i]->store(std::int64_t{stored[i - 2]});
         return Value(true);
     }}};

class NativeEngine final : public Engine {
  public:
    std::vector<std::string> names() const override {
        std::vector<std::string> names;
        if (cPixSheet().isZlibEnabled()) names.emplace_back("zlib");
        if (platform::canLoadJpeg()) {
            names.emplace_back("jpeg");
            names.emplace_back(std::filesystem::path::preferred_separator == '/' ? "turbojpeg" : "OLE");
        }
        names.emplace_back("native");
        return names;
    }
    Object create() override { return std::make_shared<cPixSheet>(); }
    Value call(const Object& object, const std::string& name, std::vector<Argument>& arguments, bool) override {
        std::vector<std::unique_ptr<In>> in;
        for (Argument& argument : arguments) {
            if (!argument.name.empty() || std::holds_alternative<Missing>(argument.value))
                throw std::invalid_argument("C++ has no such arguments");
            in.push_back(std::make_unique<In>(argument));
        }
        return members.at(name)(*static_cast<cPixSheet*>(object.get()), in);
    }

  private:
    MemoryClipboard m_clipboard;
};

PIXKIT_RUN_TRANSCRIPTS(NativeTranscripts, NativeEngine());

} // namespace

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
