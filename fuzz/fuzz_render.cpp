// Drawing with any arguments, onto images and device contexts of any size. The source stays as it was; nothing is
// touched outside (the sanitizers see that).
#include "platform/gdi.h"
#include "render/Canvas.h"
#include "surface/Capabilities.h"
#include "surface/HostAccess.h"
#include "surface/cPixSheet.h"
#include <cstdlib>
#include <cstring>
#include <vector>

using namespace pixkit;

namespace {

class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}
    std::uint8_t byte() {
        if (m_size == 0) return 0;
        --m_size;
        return *m_data++;
    }
    std::int32_t size() { return byte() % 48; }
    // Mostly near the pictures' sizes, else anything.
    std::int32_t argument() {
        const std::uint8_t kind = byte();
        if (kind < 96) return 0;
        if (kind < 224) return static_cast<std::int8_t>(byte());
        std::uint32_t value = 0;
        for (int i = 0; i < 4; ++i)
            value = value << 8 | byte();
        if (kind < 232) return static_cast<std::int32_t>(0x80000000U + (value & 0x3FF));
        if (kind < 240) return static_cast<std::int32_t>(0x7FFFFFFFU - (value & 0x3FF));
        return static_cast<std::int32_t>(value);
    }
    float number() {
        const std::uint8_t kind = byte();
        if (kind < 128) return 0;
        if (kind < 224) return static_cast<std::int8_t>(byte());
        float value = 0;
        std::uint8_t bytes[4];
        for (std::uint8_t& b : bytes)
            b = byte();
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }
    void fill(cPixSheet& sheet) {
        const auto bytes = static_cast<std::size_t>(sheet.scanWidth()) * static_cast<std::size_t>(sheet.Height());
        const std::uint8_t first = byte();
        const std::uint8_t step = byte();
        for (std::size_t i = 0; i < bytes; ++i)
            sheet.BitsPointer()[i] = static_cast<std::uint8_t>(first + (i / 7) * step);
        sheet.Alpha(static_cast<AlphaTypeEnum>(byte() % 3));
    }

  private:
    const std::uint8_t* m_data;
    std::size_t m_size;
};

std::vector<std::uint8_t> pixelsOf(const cPixSheet& sheet) {
    const auto bytes = static_cast<std::size_t>(sheet.scanWidth()) * static_cast<std::size_t>(sheet.Height());
    return {sheet.BitsPointer(), sheet.BitsPointer() + bytes};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    cPixSheet sheet;
    cPixSheet host;
    const std::int32_t width = input.size();
    const std::int32_t height = input.size();
    sheet.InitializeDIB(width, height);
    host.InitializeDIB(input.size(), input.size());
    input.fill(sheet);
    input.fill(host);
    const std::uint8_t choice = input.byte();
    sheet.HighQualityInterpolation((choice & 1) != 0);
    const bool friendly = (choice & 2) != 0;
    HostAccess::osCAP(sheet, capNtFamily | capAlphaBlendReliable | (friendly ? std::uint32_t{capUseAlphaBlend} : 0U));
    const test::Canvas canvas(1 + input.size(), 1 + input.size(), (choice & 4) != 0 ? 24 : 32);
    cPixSheet* const target = (choice & 8) != 0 ? nullptr : (choice & 0x70) == 0 ? &sheet : &host;
    const std::intptr_t dc = (choice & 0x80) != 0 ? input.argument() : canvas.dc;

    std::int32_t arguments[8];
    for (std::int32_t& argument : arguments)
        argument = input.argument();
    const auto& [destX, destY, destWidth, destHeight, SrcX, SrcY, srcWidth, srcHeight] = arguments;
    const std::uint8_t how = input.byte();
    const std::int32_t opacity = (how & 1) != 0 ? input.argument() : 100;
    const std::int32_t gray = (how & 2) != 0 ? input.argument() : gsclNone;
    const float light = (how & 4) != 0 ? input.number() : 0;
    const float angle = (how & 8) != 0 ? input.number() : 0;

    const std::vector<std::uint8_t> before = pixelsOf(sheet);
    const bool isDrawn = sheet.Render(dc, destX, destY, destWidth, destHeight, SrcX, SrcY, srcWidth, srcHeight, opacity,
                                      true, (how & 16) != 0, target, gray, light, angle, (how & 32) != 0);
    if (isDrawn && sheet.Handle() == 0) std::abort();
    if (target != &sheet && pixelsOf(sheet) != before) std::abort();
    if ((how & 64) != 0) sheet.RenderDropShadow_JIT(dc, destX, destY, SrcX, SrcY, opacity, light, target);
    if ((how & 128) != 0) {
        cPixSheet copy;
        sheet.CopyImageTo(copy, destWidth % 64, destHeight % 64);
    }
    return 0;
}
