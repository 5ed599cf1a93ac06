# SPDX-License-Identifier: MIT
"""BMP files; see draw_test_pictures.py."""
import struct

from test_pictures.parts import ALPHAS, bgra, changed, noise
from test_pictures.png import png_file

RGB565, BGRX = (0xF800, 0x7E0, 0x1F), (0xFF0000, 0xFF00, 0xFF)


def bmp_file(depth, width, height, header=40, compression=0, masks=(), entries=None, pixels=None, used=0, offset=None,
             seed=0):
    """`header` is the size of the picture's header, which is its version."""
    if entries is None:
        entries = 1 << depth if depth <= 8 else 0
    palette = noise(seed + 1, entries * (3 if header == 12 else 4))
    if pixels is None:
        pixels = noise(seed, (depth * width + 31) // 32 * 4 * abs(height))
    if header == 12:
        fields = struct.pack("<IHHHH", 12, width, height, 1, depth)
    else:
        fields = struct.pack("<IiiHHIIiiII", header, width, height, 1, depth, compression, 0, 2835, 2835, used, 0)[:header]
    packed = struct.pack(f"<{len(masks)}I", *masks)
    body = (fields + packed).ljust(header, b"\0") if header >= 52 else fields + packed
    start = 14 + len(body) + len(palette) if offset is None else offset
    size = 14 + len(body) + len(palette) + len(pixels)
    return b"BM" + struct.pack("<IHHI", size, 0, 0, start) + body + palette + pixels


def bmp():
    for header in (12, 16, 40, 52, 56, 64, 108, 124):
        for depth in (1, 4, 8, 24) if header == 12 else (1, 2, 4, 8, 16, 24):
            yield f"header-{header}-{depth}", bmp_file(depth, 35, 6, header, seed=depth)
    for depth in (1, 4, 8, 16, 24, 32):
        yield f"top-down-{depth}", bmp_file(depth, 13, -6)
    for width in (1, 3, 8, 9):
        for depth in (1, 2, 4, 8, 16, 24):
            if width < 8 or depth < 8:
                yield f"width-{width}-{depth}", bmp_file(depth, width, 3, seed=width)
    fields = {"565": (16, RGB565), "555": (16, (0x7C00, 0x3E0, 0x1F)), "444": (16, (0xF00, 0xF0, 0xF)),
              "4444": (16, (0xF00, 0xF0, 0xF, 0xF000)), "1555": (16, (0x7C00, 0x3E0, 0x1F, 0x8000)),
              "123": (16, (1, 6, 0x38)), "bgrx": (32, BGRX), "rgbx": (32, (0xFF, 0xFF00, 0xFF0000)),
              "bgra": (32, BGRX + (0xFF000000,)), "rgba": (32, (0xFF, 0xFF00, 0xFF0000, 0xFF000000)),
              "abgr": (32, (0xFF000000, 0xFF0000, 0xFF00, 0xFF)), "1010102": (32, (0x3FF00000, 0xFFC00, 0x3FF, 0xC0000000)),
              "11-11-10": (32, (0xFFE00000, 0x1FFC00, 0x3FF)), "one-of-32": (32, (0xFFFFFFFF, 0, 0)),
              "holes": (32, (0xF0F, 0xF000F000, 0x0F0F0000)), "overlapping": (32, (0xFFFF, 0xFFFF00, 0xFF0000)),
              "one-left-out": (16, (0, 0xFF00, 0xFF)), "alpha-of-7": (32, BGRX + (0x7F000000,)),
              "alpha-of-1": (32, BGRX + (0x80000000,)), "alpha-within-blue": (32, BGRX + (0xF0,)),
              "none": (16, (0, 0, 0)), "only-alpha": (32, (0, 0, 0, 0xFF000000))}
    for name, (depth, masks) in fields.items():
        behind = 3 if len(masks) == 3 else 6
        yield f"fields-{name}", bmp_file(depth, 19, 5, 40, behind, masks, seed=depth)
        if depth == 32:
            yield f"fields-{name}-v3", bmp_file(depth, 19, 5, 56, 3, masks, seed=depth)
        yield f"fields-{name}-v5", bmp_file(depth, 19, 5, 124, 3, masks, seed=depth)
    for name, alpha in ALPHAS.items():
        for premultiplied in (False, True):
            kind = "premultiplied" if premultiplied else "straight"
            yield f"alpha-{name}-{kind}", bmp_file(32, 37, 5, pixels=bgra(37, 5, alpha, premultiplied))
            yield f"alpha-{name}-{kind}-top-down", bmp_file(32, 37, -5, pixels=bgra(37, 5, alpha, premultiplied))
    edged = bytes(37 * 4 * 2) + bgra(37, 3, ALPHAS["zero"], False)
    yield "alpha-zero-below-an-edge", bmp_file(32, 37, 5, pixels=edged)
    yield "alpha-zero-below-an-edge-but-one", bmp_file(32, 37, 5, pixels=changed(edged, -4, b"\1\2\3\xFF"))
    # What proves that colours are straight, at the end of the first row, and at the beginning of the last.
    clear = bgra(37, 5, ALPHAS["none"], True)
    for name, at in (("first", 36 * 4), ("last", 37 * 4 * 4)):
        yield f"alpha-straight-in-the-{name}-row", bmp_file(32, 37, 5, pixels=changed(clear, at, b"\x80\x81\x80\x80"))
        yield f"alpha-clear-colour-in-the-{name}-row", bmp_file(32, 37, 5, pixels=changed(clear, at, b"\1\2\3\0"))

    runs8 = bytes((5, 1, 3, 2, 0, 5, 9, 8, 7, 6, 5, 0, 0, 0, 40, 3, 0, 0, 0, 2, 4, 1, 6, 9, 0, 0, 0, 3, 1, 2, 3, 0, 0, 1))
    runs4 = bytes((5, 0x12, 3, 0x34, 0, 5, 0x98, 0x76, 0x50, 0, 0, 0, 40, 0x56, 0, 0, 0, 2, 4, 1, 6, 0x9A, 0, 0, 0, 3, 0x12,
                   0x30, 0, 1))
    for name, depth, codes in (("rle8", 8, runs8), ("rle4", 4, runs4)):
        method = 1 if depth == 8 else 2
        filler = b"\0\0" * 8  # so that the codes may describe all pixels

        def coded(pixels, height=6, **options):
            return bmp_file(depth, 17, height, compression=method, pixels=pixels, **options)
        yield name, coded(codes)
        yield f"{name}-v5", coded(codes, header=124)
        yield f"{name}-top-down", coded(codes, -6)
        yield f"odd-{name}-no-end", coded(codes[:-2])
        yield f"odd-{name}-literals-cut", coded(codes[:-5])
        yield f"odd-{name}-end-at-once", coded(b"\0\1" + filler)
        yield f"odd-{name}-delta-out", coded(b"\0\2\xFF\xFF\5\1" + filler)
        yield f"odd-{name}-delta-cut", coded(filler + b"\0\2\1")
        yield f"odd-{name}-rows-too-many", coded(b"\5\1\0\0" * 20)
        yield f"odd-{name}-noise", coded(noise(depth, 200))
        yield f"bad-{name}-too-little", coded(codes, 600)
        yield f"odd-{name}-offset-at-the-end", coded(codes, offset=14 + 40 + (4 << depth) + len(codes))
        yield f"bad-{name}-depth", bmp_file(12 - depth, 17, 6, compression=method, pixels=codes)
    yield "odd-palette-short", bmp_file(8, 9, 5, entries=7, used=7)
    yield "odd-palette-long", bmp_file(4, 9, 5, entries=40, used=40)
    yield "odd-palette-300", bmp_file(8, 9, 5, entries=300, used=300)
    yield "odd-palette-none", bmp_file(4, 9, 5, entries=0)
    yield "odd-palette-count-huge", bmp_file(4, 9, 5, used=0xFFFFFFFF)
    yield "odd-palette-count-too-large-offset-0", bmp_file(4, 9, 5, used=100, offset=0)
    yield "odd-palette-of-24", bmp_file(24, 9, 5, entries=6, used=6)
    for name, offset in (("0", 0), ("in-header", 30), ("out-of-file", 0x40000000), ("in-palette", 70),
                         ("at-palette", 54), ("too-far", 14 + 40 + 1024 + 5)):
        yield f"odd-offset-{name}", bmp_file(8, 9, 5, offset=offset)
    yield "odd-offset-at-palette-rle8", bmp_file(8, 9, 5, offset=54, compression=1, pixels=b"\x09\x07\0\0" * 5)
    yield "odd-header-200", bmp_file(24, 9, 5, 200)
    # 13 bits behind the point: below 0 and above 1 too.
    samples = [value % 10000 - 500 for value in range(0, 700 * 37 * 5 * 4, 700)]
    for name, alphas in (("opaque", (8192,)), ("translucent", (8192, 4096, 0, 77)), ("without-alpha", (0,))):
        for i in range(3, len(samples), 4):
            samples[i] = alphas[i // 4 % len(alphas)]
        yield f"64-bits-{name}", bmp_file(64, 37, 5, pixels=struct.pack(f"<{len(samples)}h", *samples))
    picture = png_file(6, 8, 9, 5)
    for name, pixels, used in (("", picture, len(picture)), ("-of-unsaid-length", picture, 0)):
        file = bmp_file(0, 9, 5, compression=5, pixels=pixels, entries=0)
        yield f"png{name}", changed(file, 34, struct.pack("<I", used))
    yield "bad-png-cut", bmp_file(0, 9, 5, compression=5, pixels=picture[:90], entries=0)
    yield "bad-png-of-bmp", bmp_file(0, 9, 5, compression=5, pixels=bmp_file(24, 9, 5), entries=0)
    wrapping = bmp_file(0, 9, 5, compression=5, pixels=picture, entries=0)
    yield "bad-png-header-wraps", changed(wrapping, 14, b"\xF8\xFF\xFF\xFF")
    whole = bmp_file(24, 9, 5)
    for name, length in (("padding", 1), ("pixel", 5), ("rows", 28 * 2)):
        yield f"odd-cut-{name}", whole[:-length]
    yield "odd-cut-32", bmp_file(32, 9, 5, pixels=bgra(9, 5, ALPHAS["none"], True))[:-50]
    yield "odd-bytes-behind", whole + noise(1, 50)
    yield "bad-cut", whole[:-28 * 3]
    least, most = -1 << 31, (1 << 31) - 1
    for depth, width, height, header, compression in (
            (24, 0, 5, 40, 0), (24, -9, 5, 40, 0), (24, 9, 0, 40, 0), (24, 0, 5, 12, 0), (24, least, 5, 40, 0),
            (24, 9, least, 40, 0), (1, most, most, 40, 0), (32, most, -most, 40, 0), (1, 65536, 65536, 40, 0),
            (32, 1 << 27, 32, 40, 0), (24, 20000, 20000, 40, 0), (0, 9, 5, 40, 0), (3, 9, 5, 40, 0), (48, 9, 5, 40, 0),
            (8, 9, 5, 40, 2), (4, 9, 5, 40, 1), (24, 9, 5, 40, 1), (24, 9, 5, 40, 3), (8, 9, 5, 40, 3), (24, 9, 5, 40, 4),
            (0, 9, 5, 40, 5), (32, 9, 5, 40, 11), (1, 9, 5, 64, 3), (24, 9, 5, 64, 4), (24, 9, 5, 13, 0),
            (24, 9, 5, 15, 0)):
        yield (f"bad-{header}-{depth}-{compression}-{width}x{height}",
               bmp_file(depth, width, height, header, compression, pixels=noise(2, 200)))
    for name, at in (("signature", 0), ("signature-too", 1), ("header-size", 14)):
        yield f"bad-{name}", changed(whole, at, bytes([whole[at] ^ 0x80]))
    yield "bad-header-larger-than-file", changed(whole, 14, b"\xFF\xFF\xFF\x7F")
    yield from bmp_rules()


# What the codes of a run-length picture say: its width, its height and the codes.
RLE8 = {"line-ends-early": (4, 2, (2, 7, 0, 0, 1, 8, 0, 0)), "full-row-goes-on": (2, 2, (2, 7, 2, 8, 0, 0, 2, 9)),
        "run-over-the-row": (3, 2, (1, 5, 255, 6, 0, 0, 1, 7)),
        "literals-odd": (5, 2, (0, 3, 1, 2, 3, 99, 1, 4, 0, 0, 1, 5)), "literals-even": (5, 1, (0, 4, 1, 2, 3, 4, 1, 5)),
        "literals-over-the-row": (2, 2, (0, 4, 1, 2, 3, 4, 0, 0, 1, 5)), "literals-cut": (5, 2, (1, 9, 0, 4, 1, 2)),
        "literals-missing": (3, 1, (1, 9, 0, 3)), "code-cut": (3, 1, (1, 9, 2)),
        "codes-behind-the-end": (2, 2, (1, 9, 0, 1, 2, 8)), "delta-right": (4, 1, (1, 9, 0, 2, 2, 0, 1, 8)),
        "delta-up": (4, 2, (1, 9, 0, 2, 1, 1, 2, 8)), "delta-over-rows": (2, 4, (1, 9, 0, 2, 0, 3, 1, 8)),
        "delta-over-the-row": (2, 2, (0, 2, 9, 0, 1, 8, 0, 0, 1, 7)),
        "delta-over-the-last": (2, 2, (1, 9, 0, 2, 0, 200, 1, 8)), "delta-cut": (2, 2, (1, 9, 0, 2, 1)),
        "deltas-in-turn": (2, 3, (0, 2, 0, 1, 0, 2, 1, 1, 1, 5)),
        "just-enough": (255, 2, (3, 3, 3, 3))}
RLE4 = {"run": (6, 1, (5, 0x7A, 1, 0x30)), "run-over-the-row": (3, 2, (9, 0x7A, 0, 0, 1, 0x50)),
        "literals-1-byte": (4, 1, (0, 3, 0x12, 0x34, 1, 0x50)),
        "literals-3-bytes": (7, 1, (0, 5, 0x12, 0x34, 0x56, 0x99, 2, 0xBC)),
        "literals-over-the-row": (3, 2, (0, 5, 0x12, 0x34, 0x56, 0, 0, 0, 1, 0x70)),
        "literals-cut": (6, 1, (0, 6, 0x12, 0x34))}


def bmp_rules():
    for depth, pictures in ((8, RLE8), (4, RLE4)):
        for name, (width, height, codes) in pictures.items():
            method = 1 if depth == 8 else 2
            yield f"codes-{depth}-{name}", bmp_file(depth, width, height, compression=method, pixels=bytes(codes))
    for name, width, codes in (("pixel-too-many", 256, bytes(4)), ("byte-too-few", 255, bytes(3)), ("none", 255, b"")):
        yield f"bad-codes-{name}", bmp_file(8, width, 2, compression=1, pixels=codes)
    yield "codes-8-of-os2", bmp_file(8, 2, 2, 64, 1, pixels=b"\2\1\0\0\1\2\0\1")
    yield "codes-4-of-os2", bmp_file(4, 2, 2, 64, 2, pixels=b"\2\x12\0\0\1\x20\0\1")
    yield "codes-8-beyond-palette", bmp_file(8, 2, 1, compression=1, entries=3, used=3, pixels=b"\1\3\1\xFF")
    # Every value of five bits in each channel.
    ramps = (i | (31 - i) << 5 | i * 7 % 32 << 10 for i in range(32))
    yield "scaled-5-bits", bmp_file(16, 32, 1, pixels=struct.pack("<32H", *ramps))
    yield "fields-565-offset-0", bmp_file(16, 5, 3, 40, 3, RGB565, offset=0)
    for name, masks in {"": BGRX + (0xFF000000,), "-ignored": (0xFF, 0xFF00, 0xFF0000, 0xFF000000)}.items():
        pixels = bgra(9, 5, ALPHAS["complex"], False)
        yield f"alpha-v5-without-fields{name}", bmp_file(32, 9, 5, 124, 0, masks, pixels=pixels)
