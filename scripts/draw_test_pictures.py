#!/usr/bin/env python3
"""Draws the pictures of tests/data/pictures: every header, type, depth and compression of each format, files that are odd
and files that are bad. What loading each of them must give stands in tests/data/ledger.txt (scripts/ledger.sh).

Everything is made by hand, byte by byte, except what stands in folders that are named after the programs that made them;
those are only made anew with --programs (ImageMagick, netpbm and giflib), and nothing is ever deleted.

A new format is one function that yields (name, bytes), entered in FORMATS.
"""
import pathlib
import random
import struct
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parent))
import png_writer

FOLDER = pathlib.Path(__file__).parent.parent / "tests" / "data" / "pictures"


def noise(seed, count):
    return random.Random(seed).randbytes(count)


def changed(data, at, replacement):
    """`data` with other bytes at an offset; a negative one counts from the end."""
    at %= len(data)
    return data[:at] + replacement + data[at + len(replacement):]


# --- PNG

def png_file(colour_type, depth, width, height, seed=0, **options):
    """Smooth colours with noise in the low bits, so that every filter has work and zlib finds matches."""
    few = random.Random(seed)
    most = (1 << depth) - 1
    rows = []
    for y in range(height):
        row = []
        for x in range(width):
            for channel in range(png_writer.CHANNELS[colour_type]):
                slope = (x * (channel + 2) + y * 3) * (most + 1) // 64
                row.append((slope + few.randrange(2 + most // 16)) & most)
        rows.append(row)
    if colour_type == 3:
        entries = noise(seed + 1, 3 << depth)
        options.setdefault("palette", [tuple(entries[i:i + 3]) for i in range(0, len(entries), 3)])
    return png_writer.png_bytes(width, height, colour_type, depth, rows, filters="cycle", **options)


def with_chunks(data, at, *chunks):
    """Inserts chunks before the chunk of this kind."""
    offset = data.index(at) - 4
    return data[:offset] + b"".join(chunks) + data[offset:]


def png():
    chunk = png_writer.chunk
    formats = ((0, 1), (0, 2), (0, 4), (0, 8), (0, 16), (2, 8), (2, 16), (3, 1), (3, 2), (3, 4), (3, 8), (4, 8), (4, 16),
               (6, 8), (6, 16))
    # Wider than any vector of pixels, with a tail.
    for colour_type, depth in formats:
        key = {0: struct.pack(">H", (1 << depth) // 2), 2: struct.pack(">HHH", 64, 96, 128), 3: noise(5, 1 << depth)}
        for interlaced in (False, True):
            for keyed in (False, True):
                if keyed and colour_type not in key:
                    continue
                yield (f"wide-{colour_type}-{depth}" + "-interlaced" * interlaced + "-trns" * keyed,
                       png_file(colour_type, depth, 67, 11, interlaced=interlaced,
                                transparency=key[colour_type] if keyed else None))
    for width, height in ((1, 1), (1, 9), (9, 1), (2, 3), (4, 4), (5, 5), (8, 8)):
        yield f"interlaced-{width}x{height}", png_file(6, 8, width, height, interlaced=True)

    good = png_file(2, 8, 9, 7)
    end = good.index(b"IEND") - 4
    data_at = good.index(b"IDAT") - 4
    (length,) = struct.unpack(">I", good[data_at:data_at + 4])
    stream = good[data_at + 8:data_at + 8 + length]
    before, after = good[:data_at], good[end:]

    def streamed(data):
        return before + chunk(b"IDAT", data) + after

    yield "odd-bytes-behind", good + noise(1, 40)
    yield "odd-bytes-of-one-idat", before + b"".join(chunk(b"IDAT", bytes([b])) for b in stream) + after
    yield "odd-empty-idats", before + chunk(b"IDAT", b"") + chunk(b"IDAT", stream) + chunk(b"IDAT", b"") + after
    yield "odd-chunk-between-idats", (before + chunk(b"IDAT", stream[:9]) + chunk(b"tEXt", b"a\0b")
                                      + chunk(b"IDAT", stream[9:]) + after)
    yield "odd-ancillary-chunks", with_chunks(good, b"IDAT", chunk(b"gAMA", struct.pack(">I", 45455)),
                                              chunk(b"pHYs", struct.pack(">IIB", 2835, 2835, 1)),
                                              chunk(b"bKGD", struct.pack(">HHH", 1, 2, 3)), chunk(b"zzZz", noise(3, 9)))
    yield "odd-unknown-critical-chunk", with_chunks(good, b"IDAT", chunk(b"ABCD", b"12"))
    yield "odd-suggested-palette", with_chunks(good, b"IDAT", chunk(b"PLTE", noise(4, 12)))
    yield "odd-wrong-adler", streamed(changed(stream, -2, b"\x12"))
    yield "odd-no-adler", streamed(stream[:-4])
    yield "odd-wrong-crc-of-text", with_chunks(good, b"IDAT", changed(chunk(b"tEXt", b"a\0b"), -1, b"\0"))
    yield "odd-two-headers", good[:33] + good[8:]
    yield "odd-short-palette", png_file(3, 8, 9, 7, palette=[(i, 2 * i, 255 - i) for i in range(100)])
    yield "odd-long-trns", png_file(3, 4, 9, 7, transparency=noise(6, 40))
    yield "odd-trns-of-rgba", png_file(6, 8, 9, 7, transparency=noise(6, 6))
    yield "odd-short-trns", png_file(2, 8, 9, 7, transparency=b"\0\1")
    yield "odd-filter-5", png_writer.png_from_rows(9, 7, 2, 8, b"".join(b"\5" + noise(y, 27) for y in range(7)))
    yield "odd-rows-missing", png_writer.png_from_rows(9, 7, 2, 8, b"".join(b"\1" + noise(y, 27) for y in range(4)))
    yield "odd-rows-too-many", png_writer.png_from_rows(9, 7, 2, 8, b"".join(b"\2" + noise(y, 27) for y in range(30)))
    for level in (0, 1, 9):
        yield f"deflate-level-{level}", png_file(2, 8, 30, 20, level=level)
    # Other wrong checksums are only seen where there is a zlib, so what they come to is no matter for a ledger.
    yield "odd-crc-0-of-header", changed(good, 29, b"\0\0\0\0")
    yield "odd-crc-0-of-data", changed(good, end - 4, b"\0\0\0\0")
    yield "bad-no-end", good[:end]
    yield "bad-signature", changed(good, 7, b"\r")
    yield "bad-no-data", before + after
    yield "odd-no-palette", png_file(3, 8, 9, 7).replace(b"PLTE", b"plTE")
    yield "bad-palette-of-767-bytes", png_file(3, 8, 9, 7).replace(b"\0\0\3\0PLTE", b"\0\0\2\xFFPLTE")
    yield "bad-damaged-stream", streamed(changed(stream, 2, noise(9, len(stream) // 2)))
    for name, header in {"width-0": (0, 7, 8, 2, 0, 0, 0), "height-0": (9, 0, 8, 2, 0, 0, 0),
                         "width-negative": (1 << 31, 7, 8, 2, 0, 0, 0), "depth-3": (9, 7, 3, 2, 0, 0, 0),
                         "rgb-4": (9, 7, 4, 2, 0, 0, 0), "colour-type-1": (9, 7, 8, 1, 0, 0, 0),
                         "compression-1": (9, 7, 8, 2, 1, 0, 0), "filter-1": (9, 7, 8, 2, 0, 1, 0),
                         "interlace-2": (9, 7, 8, 2, 0, 0, 2), "huge": (60000, 60000, 8, 2, 0, 0, 0)}.items():
        yield f"bad-{name}", good[:8] + chunk(b"IHDR", struct.pack(">IIBBBBB", *header)) + good[33:]


# --- BMP

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


def bgra(width, height, alpha, premultiplied):
    """Pixels whose alpha comes from a function of x and y."""
    source = random.Random(width * 100 + height)
    out = bytearray()
    for y in range(height):
        for x in range(width):
            a = alpha(x, y)
            out += bytes(source.randrange(a + 1 if premultiplied else 256) for _ in range(3)) + bytes([a])
    return bytes(out)


ALPHAS = {"none": lambda x, y: 255, "zero": lambda x, y: 0, "simple": lambda x, y: 255 * ((x + y) % 2),
          "complex": lambda x, y: (x * 13 + y * 29) % 256, "late": lambda x, y: 0 if y < 3 else 255 - 90 * (x % 2)}


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
        yield f"bad-{name}-depth", bmp_file(12 - depth, 17, 6, compression=method, pixels=codes)
    yield "odd-palette-short", bmp_file(8, 9, 5, entries=7, used=7)
    yield "odd-palette-long", bmp_file(4, 9, 5, entries=40, used=40)
    yield "odd-palette-300", bmp_file(8, 9, 5, entries=300, used=300)
    yield "odd-palette-none", bmp_file(4, 9, 5, entries=0)
    yield "odd-palette-count-huge", bmp_file(4, 9, 5, used=0xFFFFFFFF)
    yield "odd-palette-of-24", bmp_file(24, 9, 5, entries=6, used=6)
    for name, offset in (("0", 0), ("in-header", 30), ("out-of-file", 0x40000000), ("in-palette", 70),
                         ("at-palette", 54), ("too-far", 14 + 40 + 1024 + 5)):
        yield f"odd-offset-{name}", bmp_file(8, 9, 5, offset=offset)
    yield "odd-header-200", bmp_file(24, 9, 5, 200)
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
            (32, 1 << 27, 32, 40, 0), (24, 20000, 20000, 40, 0), (0, 9, 5, 40, 0), (3, 9, 5, 40, 0), (64, 9, 5, 40, 0),
            (8, 9, 5, 40, 2), (4, 9, 5, 40, 1), (24, 9, 5, 40, 1), (24, 9, 5, 40, 3), (8, 9, 5, 40, 3), (24, 9, 5, 40, 4),
            (0, 9, 5, 40, 5), (32, 9, 5, 40, 11), (1, 9, 5, 64, 3), (24, 9, 5, 64, 4), (24, 9, 5, 13, 0),
            (24, 9, 5, 15, 0)):
        yield (f"bad-{header}-{depth}-{compression}-{width}x{height}",
               bmp_file(depth, width, height, header, compression, pixels=noise(2, 200)))
    for name, at in (("signature", 0), ("signature-too", 1), ("header-size", 14)):
        yield f"bad-{name}", changed(whole, at, bytes([whole[at] ^ 0x80]))
    yield "bad-header-larger-than-file", changed(whole, 14, b"\xFF\xFF\xFF\x7F")


# --- TGA

def tga_file(kind, depth, width, height, descriptor=0, pixels=None, mapping=None, identity=b"", seed=0):
    """`mapping` is (first entry, number of entries, bits of an entry)."""
    first, count, bits = mapping or (0, 0, 0)
    if pixels is None:
        pixels = noise(seed, width * height * ((depth + 7) // 8))
    head = struct.pack("<BBBHHBHHHHBB", len(identity), mapping is not None, kind, first, count, bits, 3, 4, width, height,
                       depth, descriptor)
    return head + identity + noise(seed + 1, (first + count) * ((bits + 7) // 8)) + pixels


def packets(seed, pixels, size):
    """Run-length packets that describe this many pixels, some of them across rows."""
    source = random.Random(seed)
    out = bytearray()
    while pixels > 0:
        count = min(pixels, source.choice((1, 2, 3, 40, 128)))
        is_run = source.randrange(2)
        out += bytes([count - 1 | is_run << 7]) + source.randbytes(size if is_run else size * count)
        pixels -= count
    return bytes(out)


def tga_tail(data, attributes=None):
    """Extension area, when an attributes type is given, and footer."""
    area, at = b"", 0
    if attributes is not None:
        area, at = struct.pack("<H", 495) + bytes(492) + bytes([attributes]), len(data)
    return data + area + struct.pack("<II", at, 0) + b"TRUEVISION-XFILE.\0"


def tga():
    for descriptor in (0x00, 0x10, 0x20, 0x30, 0x40, 0x60):
        for depth in (15, 16, 24, 32):
            size = (depth + 7) // 8
            bits = descriptor | {16: 1, 32: 8}.get(depth, 0)
            yield f"rgb-{depth}-{descriptor:02x}", tga_file(2, depth, 21, 5, bits, seed=depth)
            yield f"rgb-{depth}-{descriptor:02x}-rle", tga_file(10, depth, 21, 5, bits, packets(depth, 105, size))
        for depth in (8, 16, 32):
            size = depth // 8
            yield f"gray-{depth}-{descriptor:02x}", tga_file(3, depth, 21, 5, descriptor, seed=depth)
            yield f"gray-{depth}-{descriptor:02x}-rle", tga_file(11, depth, 21, 5, descriptor, packets(depth, 105, size))
    for bits in (8, 15, 16, 24, 32):
        for first, count in ((0, 256), (0, 40), (9, 40), (0, 300)):
            yield f"map-{bits}-{first}-{count}", tga_file(1, 8, 13, 5, 0, mapping=(first, count, bits), seed=bits)
        yield f"map-{bits}-rle", tga_file(9, 8, 13, 5, 0x20, packets(bits, 65, 1), (0, 256, bits))
        for attributes in (0, 2, 3, 4):
            yield (f"map-{bits}-attributes-{attributes}",
                   tga_tail(tga_file(1, 8, 13, 5, 0, mapping=(0, 256, bits), seed=bits), attributes))
    for depth in (16, 32):
        for attributes in (0, 2, 3, 4):
            yield f"rgb-{depth}-attributes-{attributes}", tga_tail(tga_file(2, depth, 21, 5, 8, seed=depth), attributes)
    for name, alpha in ALPHAS.items():
        for premultiplied in (False, True):
            kind = "premultiplied" if premultiplied else "straight"
            yield f"alpha-{name}-{kind}", tga_file(2, 32, 37, 5, 8, bgra(37, 5, alpha, premultiplied))
    # Wide enough for what decodes several packets at once, with packets that cross rows.
    for depth, kind, mapping in ((8, 11, None), (8, 9, (0, 200, 24)), (16, 10, None), (24, 10, None), (32, 10, None)):
        for name, descriptor in (("", 1), ("-top-down", 0x21)):
            pixels = packets(depth + kind, 300 * 7, depth // 8)
            yield f"wide-{kind}-{depth}{name}-rle", tga_file(kind, depth, 300, 7, descriptor, pixels, mapping)
        yield f"bad-wide-{kind}-{depth}-rle-cut", tga_file(kind, depth, 300, 7, 1, pixels[:-1], mapping)
    whole = tga_file(2, 24, 9, 5)
    coded = tga_file(10, 24, 21, 5, 0, packets(7, 105, 3))
    yield "identity", tga_file(2, 24, 9, 5, identity=noise(8, 255))
    yield "footer", tga_tail(whole)
    yield "odd-map-of-rgb", tga_file(2, 24, 9, 5, mapping=(0, 16, 24))
    yield "odd-bytes-behind", whole + noise(9, 60)
    yield "odd-rle-packet-beyond-the-end", tga_file(10, 24, 9, 5, 0, b"\xFF\1\2\3")
    yield "odd-extension-out-of-file", changed(tga_tail(whole, 3), -26, b"\xFF\xFF\xFF\x7F")
    yield "odd-extension-of-wrong-size", changed(tga_tail(tga_file(2, 16, 9, 5, 1), 0), 18 + 90, b"\xF0\1")
    yield "odd-signature-in-small-letters", tga_tail(whole).replace(b"TRUEVISION", b"truevision")
    yield "bad-cut", whole[:-1]
    yield "bad-rle-cut", coded[:-1]
    yield "bad-map-cut", tga_file(1, 8, 9, 5, 0, mapping=(0, 256, 24))[:-1]
    yield "bad-rle-too-little", tga_file(10, 24, 2100, 500, 0, packets(7, 105, 3))
    yield "bad-footer-eats-pixels", tga_tail(whole[:-20])
    for name, arguments in {"type-0": (0, 24, 9, 5), "type-4": (4, 24, 9, 5), "type-32": (32, 8, 9, 5),
                            "depth-0": (2, 0, 9, 5), "depth-12": (2, 12, 9, 5), "width-0": (2, 24, 0, 5),
                            "height-0": (2, 24, 9, 0)}.items():
        yield f"bad-{name}", tga_file(*arguments, pixels=noise(2, 200))
    yield "bad-map-missing", tga_file(1, 8, 9, 5)
    yield "bad-map-depth-16", tga_file(1, 16, 9, 5, mapping=(0, 256, 24))
    yield "bad-map-empty", tga_file(1, 8, 9, 5, mapping=(0, 0, 24))
    yield "bad-map-bits-12", tga_file(1, 8, 9, 5, mapping=(0, 16, 12))


# --- icons and cursors

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


# --- GIF

def lzw(indexes, code_size, clear_first=True, clears=True, end_code=True, growth=12):
    """LZW codes; `clears`: begin anew when the table is full, `growth`: widest codes."""
    clear = 1 << code_size
    codes, table, width, after = [], {}, code_size + 1, clear + 2

    def reset():
        nonlocal table, width, after
        table = {(i,): i for i in range(clear)}
        width, after = code_size + 1, clear + 2

    def grow():  # the reader's table is one entry behind
        nonlocal width, after
        if after == 1 << width and width < growth:
            width += 1
        after += 1

    reset()
    if clear_first:
        codes.append((clear, width))
    string = ()
    for index in indexes:
        longer = string + (index,)
        if longer in table:
            string = longer
            continue
        codes.append((table[string], width))
        if after < 1 << growth:
            table[longer] = after
            grow()
        elif clears:
            codes.append((clear, width))
            reset()
        string = (index,)
    if string:
        codes.append((table[string], width))
        if after < 1 << growth:
            grow()
    if end_code:
        codes.append((clear + 1, width))
    return packed_codes(codes)


def packed_codes(codes):
    """Codes and their widths, low bits first."""
    bits = length = 0
    for code, width in codes:
        bits |= code << length
        length += width
    return bits.to_bytes((length + 7) // 8, "little")


def sub_blocks(data, most=255):
    blocks = (data[at:at + most] for at in range(0, len(data), most))
    return b"".join(bytes([len(block)]) + block for block in blocks) + b"\0"


def gif_table(entries, seed=1):
    return noise(seed, entries * 3)


def gif_table_bits(table):
    return 0x80 | (len(table) // 3 - 1).bit_length() - 1 if table else 0


def gif_image(width=9, height=7, code_size=2, colours=4, local=b"", interlaced=False, codes=None, place=(0, 0),
              block=255, stated=None, **style):
    """An image from its descriptor on; runs and noise unless codes are given."""
    if codes is None:
        few = random.Random(width * height + colours)
        indexes = []
        while len(indexes) < width * height:
            indexes += [few.randrange(colours)] * few.randrange(1, 6)
        codes = lzw(indexes[:width * height], code_size, **style)
    packed = gif_table_bits(local) | 0x40 * interlaced
    return (b"," + struct.pack("<HHHHB", *place, width, height, packed) + local
            + bytes([code_size if stated is None else stated]) + sub_blocks(codes, block))


def gif_file(*blocks, table=gif_table(16), signature=b"GIF89a", screen=(9, 7), end=b";"):
    """Large enough to be looked at (56 bytes are not) unless it has no table of its own."""
    return (signature + struct.pack("<HHBBB", *screen, gif_table_bits(table), 0, 0) + table + b"".join(blocks) + end)


def gif_control(transparent, flags=1):
    return struct.pack("<BBBBHBB", 0x21, 0xF9, 4, flags, 0, transparent, 0)


def gif():
    image = gif_image()
    comment = b"!\xFE\5hello\3,;!\0"
    text = b"!\1\x0C" + noise(3, 12) + b"\2ab\0"
    loop = b"!\xFF\x0BNETSCAPE2.0\3\1\0\0\0"
    for name, signature in {"87a": b"GIF87a", "89a": b"GIF89a", "capitals": b"GIF89A", "small": b"gif87a"}.items():
        yield f"signature-{name}", gif_file(image, signature=signature)
    for code_size in range(1, 12):
        table = gif_table(1 << min(code_size, 8))
        colours = min(1 << code_size, 256)
        for name, options in {"": {}, "-interlaced": {"interlaced": True}}.items():
            yield f"code-size-{code_size}{name}", gif_file(
                gif_image(37, 21, code_size, colours, **options), table=table, screen=(37, 21))
        first = random.Random(37 * 21 + colours).randrange(colours)
        yield f"code-size-{code_size}-transparent", gif_file(
            gif_control(first), gif_image(37, 21, code_size, colours), table=table, screen=(37, 21))
    for height in range(1, 10):
        yield f"interlaced-3x{height}", gif_file(gif_image(3, height, interlaced=True), screen=(3, height))
    for code_size, colours in ((2, 3), (8, 256)):
        for clears in (False, True):
            yield f"full-table-{colours}-{'cleared' if clears else 'kept'}", gif_file(
                gif_image(150, 110 if colours == 256 else 170, code_size, colours, clears=clears),
                table=gif_table(1 << code_size), screen=(150, 170))
    yield "strings-long", gif_file(gif_image(150, 120, codes=lzw([2] * 18000, 2)), screen=(150, 120))
    yield "screen-larger", gif_file(gif_image(place=(3, 2)), screen=(40, 30))
    yield "screen-smaller", gif_file(image, screen=(2, 1))
    yield "screen-0", gif_file(image, screen=(0, 0))
    yield "table-local", gif_file(gif_image(local=gif_table(16, 2)), table=b"")
    yield "table-both", gif_file(gif_image(local=gif_table(8, 2)), table=gif_table(256))
    yield "table-local-transparent", gif_file(gif_control(2), gif_image(local=gif_table(8, 2)), table=gif_table(256))
    yield "table-2", gif_file(comment, gif_image(colours=2), table=gif_table(2))
    yield "blocks-of-1", gif_file(gif_image(block=1))
    yield "no-clear-code", gif_file(gif_image(clear_first=False))
    yield "no-end-code", gif_file(gif_image(end_code=False))
    yield "extensions", gif_file(b"\0", comment, loop, text, gif_control(3, 0), image)
    yield "extensions-87a", gif_file(comment, gif_control(3), image, signature=b"GIF87a")
    yield "animated", gif_file(loop, gif_control(1), image, gif_control(2), gif_image(4, 4, local=gif_table(4, 9)))
    yield "animated-second-transparent", gif_file(loop, image, gif_control(2), gif_image(4, 4, place=(2, 2)))
    for transparent in range(4):
        yield f"transparent-{transparent}", gif_file(gif_control(transparent), image)
    for name, entry in {"black": b"\0\0\0", "gray-of-an-entry": b"\2\2\2", "gray-of-none": b"\x50\x50\x50",
                        "almost-gray": b"\2\2\3", "white": b"\xFF\xFF\xFF"}.items():
        for transparent in (0, 2):
            yield f"entry-0-{name}-{transparent}", gif_file(gif_control(transparent), image, table=entry + gif_table(3))
    yield "entry-0-gray-of-256", gif_file(gif_control(7), gif_image(37, 21, 8, 256),
                                          table=b"\x80\x80\x80" + gif_table(255), screen=(37, 21))
    yield "transparent-everywhere", gif_file(gif_control(1), gif_image(codes=lzw([1] * 63, 2)))
    yield "transparent-nowhere", gif_file(gif_control(200), image)
    yield "transparent-twice-said", gif_file(gif_control(1), gif_control(2), image)
    yield "transparent-taken-back", gif_file(gif_control(1), gif_control(2, 0), image)
    yield "same-colours-transparent", gif_file(gif_control(1), image, table=b"\x11\x22\x33" * 4)
    yield "odd-control-length", gif_file(changed(changed(gif_control(1), 2, b"\x99"), 7, b"\x55"), image)
    yield "odd-no-trailer", gif_file(image, end=b"")
    yield "odd-bytes-behind", gif_file(image, end=noise(4, 40))
    yield "odd-codes-behind", gif_file(gif_image(9, 5, codes=lzw([i % 4 for i in range(63)], 2)))
    yield "odd-bytes-behind-end-code", gif_file(gif_image(codes=lzw([i % 4 for i in range(63)], 2) + noise(5, 9)))
    yield "odd-clear-twice", gif_file(gif_image(2, 1, codes=packed_codes(
        ((4, 3), (4, 3), (1, 3), (4, 3), (4, 3), (2, 3)))))
    yield "odd-colours-beyond-table", gif_file(gif_image(37, 21, 8, 256), table=gif_table(16), screen=(37, 21))
    yield "odd-colours-beyond-table-transparent", gif_file(gif_control(1), gif_image(37, 21, 8, 256),
                                                           table=gif_table(16), screen=(37, 21))

    yield "bad-signature", gif_file(image, signature=b"GIF88a")
    yield "bad-no-table", gif_file(image, table=b"", end=bytes(40))
    yield "bad-block", gif_file(b"\x22\0", image)
    yield "bad-no-image", gif_file(comment, loop)
    for name, size in {"width": (0, 7), "height": (9, 0), "both": (0, 0)}.items():
        yield f"bad-{name}-0", gif_file(gif_image(*size, codes=lzw([1] * 63, 2)))
    yield "bad-huge", gif_file(gif_image(65535, 65535, codes=lzw([1] * 63, 2)))
    yield "bad-more-than-codes", gif_file(gif_image(3000, 2000, codes=lzw([1] * 63, 2)))
    for code_size in (0, 12, 13, 255):
        yield f"bad-code-size-{code_size}", gif_file(gif_image(stated=code_size))
    for count in (0, 1, 2, 3):
        yield f"bad-codes-of-{count}-bytes", gif_file(gif_image(codes=noise(7, count)))
    for lack in (1, 2, 9, 10, 62, 63):
        for name, ends in (("end-code", True), ("cut", False)):
            indexes = [i * i % 4 for i in range(63 - lack)]
            yield f"bad-{lack}-missing-{name}", gif_file(gif_image(codes=lzw(indexes, 2, end_code=ends)))
    yield "bad-1-missing-clear-and-end", gif_file(gif_image(2, 1, codes=packed_codes(((4, 3), (1, 3), (4, 3), (5, 3)))))
    yield "bad-first-code-is-a-string", gif_file(gif_image(codes=packed_codes(((4, 3), (6, 3), (1, 3), (5, 3)))))
    yield "bad-code-of-no-string", gif_file(gif_image(codes=packed_codes(((4, 3), (1, 3), (7, 3), (0, 3), (0, 4)))))
    whole = gif_file(comment, loop, gif_control(1), image, end=b"")
    for at in (58, 75, *range(len(whole) - 64, len(whole), 7), len(whole) - 1):
        yield f"bad-cut-at-{at}", whole[:at]


FORMATS = {"png": png, "bmp": bmp, "tga": tga, "ico": ico, "gif": gif}


# --- by other programs

def by_programs(folder):
    """The same small picture, as ImageMagick, netpbm and giflib write it."""
    netpbm, magick, giflib = folder / "netpbm", folder / "imagemagick", folder / "giflib"
    for place in (netpbm, magick, giflib):
        place.mkdir(parents=True, exist_ok=True)
    source = FOLDER / "png" / "wide-2-8.png"
    with_alpha = FOLDER / "png" / "wide-6-8.png"

    def run(target, command, **options):
        target.write_bytes(subprocess.run(command, check=True, stdout=subprocess.PIPE, **options).stdout)

    ways = {"bmp": ("", "-compress RLE -colors 16", "-colors 2", "-colors 200", "-type Grayscale"),
            "bmp3": ("", "-colors 16"), "bmp2": ("", "-colors 16"),
            "tga": ("", "-compress RLE", "-type Palette", "-type Palette -compress RLE", "-type Grayscale"),
            "png": ("", "-colors 16", "-type Grayscale", "-interlace PNG"),
            "ico": ("", "-colors 16", "-colors 2", "-colors 200"),
            "gif": ("", "-colors 16", "-colors 2", "-interlace GIF"), "gif87": ("",)}
    for kind, options in ways.items():
        for way in options:
            for picture, mark in ((source, ""), (with_alpha, "-alpha")):
                if mark and way != "" and kind != "png":
                    continue
                name = kind + mark + "-" + "-".join(way.replace("-", "").lower().split())
                target = magick / (name.strip("-") + "." + kind[:3])
                run(target, ["convert-im6.q16", str(picture), *way.split(), "-strip",
                             "-define", "png:exclude-chunk=all", f"{kind}:-"])
    pnm = subprocess.run(["pngtopnm", str(source)], check=True, stdout=subprocess.PIPE).stdout
    few = subprocess.run(["pnmquant", "16"], input=pnm, check=True, stdout=subprocess.PIPE).stdout
    gray = subprocess.run(["ppmtopgm"], input=pnm, check=True, stdout=subprocess.PIPE).stdout
    bits = subprocess.run(["pgmtopbm", "-threshold"], input=gray, check=True, stdout=subprocess.PIPE).stdout
    for name, picture in {"colours": pnm, "few": few, "gray": gray, "bits": bits}.items():
        for variant, arguments in {"windows": ["-windows"], "os2": ["-os2"]}.items():
            run(netpbm / f"{name}-{variant}.bmp", ["ppmtobmp", *arguments], input=picture)
        run(netpbm / f"{name}.png", ["pnmtopng"], input=picture)
        if name != "colours":
            run(netpbm / f"{name}.gif", ["pamtogif"], input=picture)
            run(netpbm / f"{name}-interlaced.gif", ["pamtogif", "-interlace", "-transparent=black"], input=picture)
            text = subprocess.run(["gifbuild", "-d"], check=True, stdout=subprocess.PIPE,
                                  input=(netpbm / f"{name}-interlaced.gif").read_bytes()).stdout
            run(giflib / f"{name}.gif", ["gifbuild"], input=text)
        kind = {"few": "-cmap", "gray": "-mono", "bits": "-mono"}.get(name, "-rgb")
        for variant, arguments in {"rle": [], "raw": ["-norle"]}.items():
            run(netpbm / f"{name}-{variant}.tga", ["ppmtotga", kind, *arguments], input=picture)


def main():
    for kind, draw in FORMATS.items():
        folder = FOLDER / kind
        folder.mkdir(parents=True, exist_ok=True)
        for name, data in draw():
            (folder / f"{name}.{kind}").write_bytes(data)
    if "--programs" in sys.argv:
        by_programs(FOLDER)


if __name__ == "__main__":
    main()
