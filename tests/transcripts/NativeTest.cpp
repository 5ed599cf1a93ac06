// Transcripts of the native class.
#include "surface/cPixSheet.h"
#include "transcripts/Transcript.h"
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <span>

namespace pixkit::test {

namespace {

// An argument as whatever the parameter asks for, and what the member stored in it.
class In {
  public:
    explicit In(Argument& argument) : m_argument(argument) {}
    In(const In&) = delete;
    In& operator=(const In&) = delete;
    ~In() {
        if (!m_argument.isVariable) return;
        if (m_isNumber) m_argument.value = std::int64_t{m_number};
        if (m_isArray) m_argument.value = stored();
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
            const auto bound = [&](std::size_t i) { return ByteArray::Bound{array->lower[i], array->count[i]}; };
            m_array = array->dimensions == 1 ? ByteArray::borrow(m_bytes.data(), bound(0))
                                             : ByteArray::borrow(m_bytes.data(), bound(0), bound(1));
        }
        return m_array;
    }
    operator cPixSheet*() {
        const auto* const object = std::get_if<Object>(&value());
        return object != nullptr ? static_cast<cPixSheet*>(object->get()) : nullptr;
    }

    void store(Value result) { m_argument.value = std::move(result); }

  private:
    std::int64_t number() const {
        if (const auto* truth = std::get_if<bool>(&value())) return *truth;
        return std::holds_alternative<std::monostate>(value()) ? 0 : std::get<std::int64_t>(value());
    }
    Value stored() const {
        if (!m_array.isAllocated()) return {};
        const auto first = m_array.bound(1), second = m_array.bound(2);
        return Array{{m_array.data(), m_array.data() + m_array.size()},
                     m_array.dimensions(),
                     {first.lower, second.lower},
                     {first.count, m_array.dimensions() == 2 ? second.count : 1}};
    }

    Argument& m_argument;
    bool m_isNumber = false, m_isArray = false;
    std::int32_t m_number = 0;
    std::vector<std::uint8_t> m_bytes;
    ByteArray m_array;
};

Value valueOf(bool value) {
    return value;
}
Value valueOf(const std::string& text) {
    return text;
}
Value valueOf(const std::uint8_t* address) {
    return reinterpret_cast<std::int64_t>(address);
}
Value valueOf(std::unique_ptr<cPixSheet> made) {
    return Object(std::move(made));
}
template <class Number>
requires std::is_integral_v<Number> || std::is_enum_v<Number> Value valueOf(Number number) {
    return static_cast<std::int64_t>(number);
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

template <bool toFile>
Value saveIcon(cPixSheet& sheet, std::span<std::unique_ptr<In>> in) {
    std::vector<const cPixSheet*> sources;
    std::vector<IconEntrySize> sizes;
    const std::size_t fixed = toFile ? 3 : 2;
    if (in.size() > 1) {
        if (const auto* list = std::get_if<std::vector<Value>>(&in[1]->value()))
            for (const Value& source : *list)
                sources.push_back(static_cast<const cPixSheet*>(std::get<Object>(source).get()));
        else if (const cPixSheet* const source = static_cast<cPixSheet*>(*in[1]))
            sources.push_back(source);
    }
    for (std::size_t i = fixed; i + 2 < in.size(); i += 3)
        sizes.push_back({*in[i], *in[i + 1], *in[i + 2]});
    if constexpr (toFile)
        return valueOf(sheet.SaveToFile_ICO(*in[0], sources, *in[2], sizes));
    else
        return valueOf(sheet.SaveToStream_ICO(*in[0], sources, sizes));
}

#define MEMBER(name)                                                                                                   \
    {                                                                                                                  \
#name, member([](cPixSheet& sheet, auto&... in) -> decltype(sheet.name(in...)) { return sheet.name(in...); })  \
    }
const std::map<std::string, Member> members = {
    MEMBER(Alpha), MEMBER(BitsPointer), MEMBER(Handle), MEMBER(Width), MEMBER(Height), MEMBER(scanWidth),
    MEMBER(ImageType), MEMBER(HighQualityInterpolation), MEMBER(ManageOwnDC), MEMBER(isAlphaBlendFriendly),
    MEMBER(isGDIplusEnabled), MEMBER(isZlibEnabled), MEMBER(gdiToken), MEMBER(KeepGDIplusActive), MEMBER(Version),
    MEMBER(InitializeDIB), MEMBER(DestroyDIB), MEMBER(EraseDIB), MEMBER(LoadDIBinDC), MEMBER(SwapDIBs),
    MEMBER(GetPixel), MEMBER(SetPixel), MEMBER(GetAlphaMask), MEMBER(GetDIBbits), MEMBER(SetDIBbits),
    MEMBER(LoadPicture_File), MEMBER(LoadPicture_Stream), MEMBER(LoadPicture_ByHandle),
    MEMBER(LoadPicture_FromOrignalFormat), MEMBER(GetOrginalFormat),
    MEMBER(SaveToFile_Bitmap), MEMBER(SaveToStream_Bitmap), MEMBER(SaveToFile_TGA), MEMBER(SaveToStream_TGA),
    MEMBER(SaveToFile_JPG), MEMBER(SaveToStream_JPG), MEMBER(SaveToFile_PNG), MEMBER(SaveToStream_PNG),
    MEMBER(SaveToFile_GIF), MEMBER(SaveToStream_GIF), MEMBER(PngPropertyGet), MEMBER(PngPropertySet),
    MEMBER(MakeGrayScale), MEMBER(MakeImageInverse), MEMBER(MakeLighterDarker), MEMBER(MakeTransparent),
    MEMBER(BlendToColor), MEMBER(MirrorImage), MEMBER(Render), MEMBER(RenderDropShadow_JIT),
    MEMBER(CreateGDIplusToken), MEMBER(DestroyGDIplusToken), MEMBER(Resize), MEMBER(ScaleImage),
    MEMBER(CreateDropShadow), MEMBER(CreateCheckerBoard), MEMBER(TileImage),
    // Members whose form in C++ is another than in COM.
    {"Tag", [](cPixSheet& sheet, std::span<std::unique_ptr<In>> in) {
         if (in.empty()) return sheet.Tag().has_value() ? std::any_cast<Value>(sheet.Tag()) : Value();
         sheet.Tag(in[0]->value());
         return Value();
     }},
    {"CopyImageTo", member([](cPixSheet& sheet, In& target, auto&... in)
                               -> decltype(sheet.CopyImageTo(std::declval<cPixSheet&>(), in...)) {
         if (cPixSheet* const given = target) return sheet.CopyImageTo(*given, in...);
         std::unique_ptr<cPixSheet> made;
         sheet.CopyImageTo(made, in...);
         target.store(Object(std::move(made)));
     })},
    {"TrimImage", [](cPixSheet& sheet, std::span<std::unique_ptr<In>> in) {
         TrimRectangle kept;
         const bool isReport = in.size() > 1 && static_cast<bool>(*in[1]);
         if (!sheet.TrimImage(in.empty() ? trimAll : static_cast<std::int32_t>(*in[0]), isReport, &kept)) return Value(false);
         const std::int32_t stored[] = {kept.x, kept.y, kept.Width, kept.Height};
         for (std::size_t i = 2; i < in.size(); ++i)
             in[i]->store(std::int64_t{stored[i - 2]});
         return Value(true);
     }},
    {"SourceIconSizes", [](cPixSheet& sheet, std::span<std::unique_ptr<In>> in) {
         std::vector<IconSourceSize> sizes;
         const auto count = static_cast<std::uint32_t>(sheet.SourceIconSizes(sizes));
         Array array{{}, 2, {}, {4, count}, true};
         for (const auto& size : sizes)
             array.elements.insert(array.elements.end(), {size.Width, size.Height, size.bitDepth, size.isPNG});
         if (count != 0) in[0]->store(array);
         return Value(std::int64_t{count});
     }},
    {"SaveToFile_ICO", saveIcon<true>}, {"SaveToStream_ICO", saveIcon<false>}};
#undef MEMBER

class NativeEngine final : public Engine {
  public:
    std::vector<std::string> names() const override { return {"native"}; }
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
};

class NativeTranscripts : public testing::TestWithParam<std::filesystem::path> {};

TEST_P(NativeTranscripts, GiveWhatIsWritten) {
    NativeEngine engine;
    runTranscript(GetParam(), engine);
}

INSTANTIATE_TEST_SUITE_P(All, NativeTranscripts, testing::ValuesIn(transcripts()),
                         [](const auto& file) { return transcriptName(file.param); });

} // namespace

} // namespace pixkit::test
