// The sizes that programs of 64-bit Linux were compiled with: another one needs another major (docs/versioning.md).
#include <pixkit/pixkit.h>

namespace pixkit {
static_assert(sizeof(cPixSheet) == 768 && alignof(cPixSheet) == 8);
static_assert(sizeof(ByteArray) == 64);
static_assert(sizeof(PngValue) == 40 && sizeof(ResourceId) == 40);
static_assert(sizeof(IconSourceSize) == 16 && sizeof(IconEntrySize) == 12 && sizeof(TrimRectangle) == 16);
static_assert(sizeof(DroppedFile) == 64 && sizeof(ResourceProvider) == 64 && sizeof(ErrorReport) == 216);

namespace platform {
static_assert(sizeof(ClipboardProvider) == 192 && sizeof(ClipboardBlock) == 56 && sizeof(GdiplusApi) == 736);
static_assert(sizeof(FontRecord) == 48 && sizeof(StdFont) == 48 && sizeof(StdPicture) == 8 && sizeof(LeastSize) == 8);
static_assert(sizeof(IconInfo) == 32 && sizeof(BitmapRecord) == 12 && sizeof(BlendFunction) == 4 && sizeof(Rect) == 16);
} // namespace platform
} // namespace pixkit
// SPDX-License-Identifier: MIT
