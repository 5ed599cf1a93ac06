// Drawing with any arguments, onto images and device contexts of any size. The source stays as it was; nothing is
// touched outside (the sanitizers see that).
#include "platform/faults.h"
#include "platform/gdi.h"
#include "render/Canvas.h"
#include "targets.h"
#include <bit>

namespace {

// Mostly near the pictures' sizes, else anything.
std::int32_t argument(Input& input) {
    const std::uint8_t kind = input.byte();
    if (kind < 96) return 0;
    if (kind < 224) return static_cast<std::int8_t>(input.byte());
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i)
        value = value << 8 | input.byte();
    if (kind < 240) value = 0x80000000U + (value & 0x7FF) - 0x400; // about the greatest and the least
    return static_cast<std::int32_t>(value);
}

float number(Input& input) {
    const std::int32_t value = argument(input);
    return std::abs(std::int64_t{value}) < 256 ? static_cast<float>(value) : std::bit_cast<float>(value);
}

std::vector<std::uint8_t> bitsOf(const cPixSheet& sheet) {
    return {sheet.BitsPointer(), sheet.BitsPointer() + pixelCount(sheet) * 4};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const platform::PretendedVersion windows2000({.dwPlatformId = 2, .dwMajorVersion = 5});
    cPixSheet sheet, host;
    input.fill(sheet, 48);
    input.fill(host, 48);
    const std::uint8_t choice = input.byte(), how = input.byte();
    sheet.HighQualityInterpolation((choice & 1) != 0);
    sheet.isAlphaBlendFriendly((choice & 2) != 0);
    const test::Canvas canvas(1 + input.byte() % 48, 1 + input.byte() % 48, (choice & 4) != 0 ? 24 : 32);
    cPixSheet* const target = (choice & 8) != 0 ? nullptr : (choice & 0x70) == 0 ? &sheet : &host;
    const std::intptr_t dc = (choice & 0x80) != 0 ? argument(input) : canvas.dc;
    std::int32_t a[8]; // destination and source: left, top, width, height
    for (std::int32_t& value : a)
        value = argument(input);
    const std::int32_t opacity = (how & 1) != 0 ? argument(input) : 100;
    const std::int32_t gray = (how & 2) != 0 ? argument(input) : gsclNone;
    const float light = (how & 4) != 0 ? number(input) : 0, angle = (how & 8) != 0 ? number(input) : 0;
    const auto before = bitsOf(sheet);
    sheet.Render(dc, a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], opacity, true, (how & 16) != 0, target, gray,
                 light, angle, (how & 32) != 0);
    require(target == &sheet || bitsOf(sheet) == before);
    if ((how & 64) != 0) sheet.RenderDropShadow_JIT(dc, a[0], a[1], a[4], a[5], opacity, light, target);
    if ((how & 128) != 0) {
        cPixSheet copy;
        sheet.CopyImageTo(copy, a[2] % 64, a[3] % 64);
    }
    return 0;
}
