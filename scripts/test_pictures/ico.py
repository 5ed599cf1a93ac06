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
    yield "height-odd", icon_file(bmp_file(24, 9, 7)[14:])
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
