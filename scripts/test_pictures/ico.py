# SPDX-License-Identifier: MIT
"""Icons and cursors; see draw_test_pictures.py."""
import struct

from test_pictures.bmp import BGRX, RGB565, bmp_file
from test_pictures.parts import ALPHAS, bgra, changed, noise
from test_pictures.png import png_file


def icon_bitmap(depth, width, height, mask=None, pixels=None, **options):
    """A bitmap without the file header, of twice the height; the mask is noise unless given."""
    if mask is None:
        mask = noise(depth + 7, (width + 31) // 32 * 4 * abs(height))
    if pixels is None:
        pixels = noise(depth, (depth * width + 31) // 32 * 4 * abs(height))
    return bmp_file(depth, width, height * 2, pixels=pixels, **options)[14:] + mask


def icon_file(*images, kind=1, count=None):
    """Each image is its bytes, or those and what the directory says of them: width, height, two words, size, offset."""
    directory, payloads = b"", b""
    for image in images:
        data, stated = image if isinstance(image, tuple) else (image, {})
        width, height, first, second, size, offset = (
            stated.get(name, usual) for name, usual in
            (("width", 9), ("height", 7), ("first", 1), ("second", 32), ("size", len(data)),
             ("offset", 6 + 16 * len(images) + len(payloads))))
        directory += struct.pack("<BBBBHHII", width, height, 0, 0, first, second, size, offset)
        payloads += data
    return struct.pack("<HHH", 0, kind, len(images) if count is None else count) + directory + payloads


def ico():
    for depth in (1, 2, 4, 8, 16, 24):
        yield f"mask-{depth}", icon_file(icon_bitmap(depth, 9, 7))
        yield f"cursor-{depth}", icon_file((icon_bitmap(depth, 33, 5), {"first": 3, "second": 4}), kind=2)
    for name, alpha in ALPHAS.items():
        for premultiplied in (False, True):
            word = "premultiplied" if premultiplied else "straight"
            image = icon_bitmap(32, 37, 5, pixels=bgra(37, 5, alpha, premultiplied))
            yield f"alpha-{name}-{word}", icon_file(image)
    yield "cursor-32", icon_file(icon_bitmap(32, 9, 7), kind=2)
    yield "bitfields-565", icon_file(icon_bitmap(16, 9, 7, compression=3, masks=RGB565))
    yield "bitfields-bgrx", icon_file(icon_bitmap(32, 9, 7, compression=3, masks=BGRX))
    yield "core-4", icon_file(icon_bitmap(4, 9, 7, header=12))
    yield "v5-24", icon_file(icon_bitmap(24, 9, 7, header=124))
    yield "short-palette", icon_file(icon_bitmap(8, 9, 7, entries=40, used=40))
    yield "top-down", icon_file(icon_bitmap(8, 9, -7))
    yield "no-mask", icon_file(icon_bitmap(24, 9, 7, mask=b""))
    yield "short-mask", icon_file(icon_bitmap(24, 9, 7, mask=b"\xAA" * 13))
    yield "text-cursor", icon_file(icon_bitmap(1, 9, 7, mask=b"\xFF" * 28), kind=2)
    single = bmp_file(24, 9, 8)[14:]
    yield "height-not-doubled", icon_file((single, {"height": 8}))
    yield "height-not-doubled-width-256", icon_file((bmp_file(4, 256, 8)[14:], {"width": 0, "height": 8}))
    yield "height-odd", icon_file(bmp_file(24, 9, 7)[14:])
    yield "height-odd-unknown-to-directory", icon_file((bmp_file(24, 9, 7)[14:], {"height": 3}))
    good = icon_bitmap(24, 9, 7)
    picture = png_file(6, 8, 20, 18)
    yield "png", icon_file(picture)
    yield "png-cursor", icon_file(picture, kind=2)
    yield "png-palette-1", icon_file(png_file(3, 1, 16, 16))
    yield "several", icon_file(icon_bitmap(4, 16, 16), icon_bitmap(8, 32, 32), good, picture, icon_bitmap(24, 32, 32))
    yield "tiny-beside-damaged-png", icon_file(changed(png_file(6, 8, 32, 32), 60, b"xx"), good)
    yield "lies-size", icon_file((good, {"width": 200, "height": 0, "first": 0, "second": 1}))
    yield "lies-bytes", icon_file((good, {"size": 0}), (picture, {"size": 30}))
    yield "same-image-twice", icon_file((good, {"offset": 38}), (b"", {"offset": 38, "size": len(good)}))
    yield "palette-beside-24", icon_file(icon_bitmap(24, 9, 7, entries=16, used=16))
    yield "core-1", icon_file(icon_bitmap(1, 9, 7, header=12))
    yield "png-256", icon_file((png_file(0, 1, 256, 256), {"width": 0, "height": 0}))
    yield "inverting-among-others", icon_file(icon_bitmap(4, 9, 7, mask=b"\xF0\xFF\xFF\xFF" * 7))
    yield "mask-everywhere", icon_file(icon_bitmap(24, 9, 7, mask=b"\xFF" * 28, pixels=bytes(28 * 7)))
    yield "lies-bytes-bitmap", icon_file((good, {"size": 50}), (good, {"size": 41}))
    yield "others-beyond-the-end", icon_file((good, {"size": 9999}), good, (good, {"offset": 2**31}))
    damaged = [changed(png_file(6, 8, 32 + i, 32), 60, b"xx") for i in range(4)]
    for count in (2, 3, 4):
        yield f"damaged-png-{count}-times", icon_file(*damaged[:count], good)
    # Dark, and of nothing but translucent pixels: straight only because the other one is.
    dark = icon_bitmap(32, 32, 32, pixels=b"\x20\x30\x10\x80" * 1024)
    proof = icon_bitmap(32, 8, 8, pixels=b"\xC0\x30\x10\x80" * 64)
    yield "dark-alone", icon_file(dark, icon_bitmap(32, 8, 8, pixels=b"\x20\x30\x10\x80" * 64))
    yield "dark-beside-proof", icon_file(dark, proof)
    yield "dark-beside-proof-and-itself", icon_file(dark, *[(b"", {"offset": 6 + 16 * 10, "size": len(dark)})] * 8, proof)
    yield "depths-of-one-size", icon_file(*(icon_bitmap(depth, 9, 7) for depth in (4, 24, 8)))
    yield "bad-png-without-header", icon_file(changed(picture, 12, b"IHDX"))
    yield "bad-png-cut", icon_file(picture[:200])
    yield "bad-beyond-the-end", icon_file((good, {"size": len(good) + 1}))
    yield "bad-wraps", icon_file((good, {"offset": 2**32 - 16, "size": len(good) + 38}))
    yield "bad-empty-directory", icon_file(count=0) + bytes(40)
    yield "bad-directory-cut", icon_file(good, count=200)
    yield "bad-kind", icon_file(good, kind=3)
    yield "bad-colours-missing", icon_file(good[:60])
    yield "bad-run-length", icon_file(icon_bitmap(8, 9, 7, compression=1))
    yield "bad-sizes", icon_file(bmp_file(24, 0, 14)[14:] + bytes(90), bmp_file(24, 2**30, 2**30, pixels=b"")[14:])
    yield from ico_rules()


BLACK_WHITE = bytes(4) + b"\xFF\xFF\xFF\0"


def of_two(depth, pixels, mask, palette=b""):
    """Two pixels; in the mask they are the first byte's upper bits."""
    bits = struct.pack("<IiiHHIIiiII", 40, 2, 2, 1, depth, 0, 0, 0, 0, 0, 0)
    return bits + palette + bytes(pixels) + (b"" if mask is None else bytes((mask, 0, 0, 0)))


def solid(width, height, depth, value):
    """An image that tells which one it is: one opaque gray."""
    entries = bytes((value, value, value, 0)) * (1 << depth) if depth <= 8 else b""
    pixels = bytes([value]) * ((depth * width + 31) // 32 * 4 * height)
    mask = bytes((width + 31) // 32 * 4 * height)
    return struct.pack("<IiiHHIIiiII", 40, width, height * 2, 1, depth, 0, 0, 0, 0, 0, 0) + entries + pixels + mask


def ico_rules():
    # What mask and alpha make of two pixels, as an icon and as a cursor.
    for name, image in {
            "1-bit": of_two(1, (0x40, 0, 0, 0), 0, BLACK_WHITE),
            "1-bit-masked": of_two(1, (0x40, 0, 0, 0), 0x80, BLACK_WHITE),
            "16-masked": of_two(16, (0x1F, 0, 0xFF, 0x7F), 0x80), "24": of_two(24, (255, 0, 0, 1, 2, 3, 0, 0), 0),
            "inverting-one": of_two(24, (9, 9, 9, 1, 2, 3, 0, 0), 0x80),
            "inverting-text": of_two(1, (0x40, 0, 0, 0), 0xC0, BLACK_WHITE),
            "inverting-all": of_two(24, (255, 255, 255, 0, 0, 254, 0, 0), 0xC0),
            "32-no-alpha-masked": of_two(32, (255, 0, 0, 0, 9, 9, 9, 0), 0x80),
            "32-no-alpha-no-mask": of_two(32, (255, 0, 0, 0, 9, 9, 9, 0), None),
            "32-straight-masked": of_two(32, (200, 100, 50, 128, 9, 9, 9, 0), 0x80),
            "32-premultiplied": of_two(32, (100, 50, 25, 128, 0, 0, 0, 255), 0),
            "32-on-or-off": of_two(32, (9, 9, 9, 0, 255, 0, 0, 255), 0),
            "32-opaque-masked": of_two(32, (255, 0, 0, 255, 0, 0, 0, 255), 0xC0)}.items():
        for kind, word in ((1, "icon"), (2, "cursor")):
            yield f"two-{name}-{word}", icon_file((image, {"width": 2, "height": 1}), kind=kind)
    # Rows of colours and mask, upside down, short or missing; heights that do not count the mask's rows.
    mask = b"\x80" + bytes(3) + bytes(24)
    for name, options in {"bottom-up": {}, "core": {"header": 12}, "v5": {"header": 124},
                          "palette": {"entries": 2, "used": 2}}.items():
        yield f"mask-rows-{name}", icon_file(icon_bitmap(24, 9, 7, mask=mask, **options))
    yield "mask-rows-top-down", icon_file(icon_bitmap(24, 9, -7, mask=mask))
    yield "mask-rows-cut", icon_file(icon_bitmap(24, 9, 7, mask=b"\x80" + bytes(3) + b"\x80" + bytes(2)))
    single = struct.pack("<IiiHHIIiiII", 40, 9, 4, 1, 24, 0, 0, 0, 0, 0, 0) + noise(1, 28 * 4) + bytes(16)
    for height in (2, 4, 9):
        yield f"height-agreed-{height}", icon_file((single, {"height": height}))
    # With 1 bit a pixel rows of colours and of the mask look the same, so the header's word stands.
    bits = struct.pack("<IiiHHIIiiII", 40, 9, 4, 1, 1, 0, 0, 0, 0, 0, 0) + BLACK_WHITE + noise(2, 4 * 4)
    yield "height-agreed-1-bit", icon_file((bits, {"height": 4}))
    # What the directory says.
    image = of_two(24, (255, 0, 0, 1, 2, 3, 0, 0), 0x80)
    whole = icon_file((image, {"width": 2, "height": 1}))
    for name, options in {"size-of-depth": {"first": 77, "second": 1}, "size-without-mask": {"size": len(image) - 4},
                          "size-without-colours": {"size": len(image) - 5}}.items():
        yield f"lies-{name}", icon_file((image, options))
    for name, options in {"size-wraps": {"size": 2**32 - 1}, "offset-beyond-the-end": {"offset": 9999},
                          "offset-in-directory": {"offset": 6, "size": 20}}.items():
        yield f"bad-{name}", icon_file((image, options))
    for name, at, value in (("reserved-of-entry", 9, 255), ("planes", 34, 0), ("count-of-2", 4, 2)):
        yield f"lies-{name}", changed(whole, at, bytes([value]))
    for name, at, value in (("reserved", 0, 1), ("reserved-high", 1, 1), ("kind-0", 2, 0), ("kind-257", 3, 1),
                            ("count-of-0", 4, 0), ("count-of-9", 4, 9), ("depth-23", 36, 23), ("width-0", 26, 0),
                            ("height-0", 30, 0), ("header-of-8", 22, 8)):
        yield f"bad-{name}", changed(whole, at, bytes([value]))
    yield "good-behind-bad", icon_file(bytes(40), (image, {}))
    yield "next-image-is-no-mask", icon_file((of_two(24, noise(1, 8), None), {"size": 0}), solid(1, 9, 24, 7))
    yield "256-in-a-byte", icon_file((solid(256, 256, 1, 7), {"width": 0, "height": 0}))
    # Which of many is taken: the entries number themselves from 1. Requests other than 32 x 32 are made by the tests.
    for name, images in {
            "": ((16, 16, 4), (48, 48, 24), (32, 32, 8), (16, 16, 24), (32, 32, 24), (16, 16, 8)),
            "-depth": ((8, 8, 8), (8, 8, 24)), "-equal": ((8, 8, 24), (8, 8, 24)), "-larger": ((40, 40, 24), (34, 35, 24)),
            "-area": ((8, 40, 24), (20, 20, 24))}.items():
        yield f"choice{name}", icon_file(*(solid(*size, number + 1) for number, size in enumerate(images)))
    yield "choice-png", icon_file(solid(16, 16, 24, 1), png_file(6, 8, 30, 20), png_file(3, 1, 16, 16))
    yield "choice-hotspot", icon_file((solid(16, 16, 24, 1), {"first": 3, "second": 5}),
                                      (solid(32, 32, 24, 2), {"first": 65535, "second": 7}), kind=2)
    yield "png-cut-by-its-size", icon_file((png_file(6, 8, 3, 3), {"size": 60}))
