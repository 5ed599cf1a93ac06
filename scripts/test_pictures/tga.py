# SPDX-License-Identifier: MIT
"""TGA files; see draw_test_pictures.py."""
import random
import struct

from test_pictures.parts import ALPHAS, bgra, changed, noise


def tga_file(kind, depth, width, height, descriptor=0, pixels=None, mapping=None, identity=b"", seed=0, map_type=None):
    """`mapping` is (first entry, number of entries, bits of an entry). A map type other than 1 goes without a map."""
    first, count, bits = mapping or (0, 0, 0)
    if pixels is None:
        pixels = noise(seed, width * height * ((depth + 7) // 8))
    if map_type is None:
        map_type = int(mapping is not None)
    head = struct.pack("<BBBHHBHHHHBB", len(identity), map_type, kind, first, count, bits, 3, 4, width, height, depth,
                       descriptor)
    entries = noise(seed + 1, (first + count) * ((bits + 7) // 8)) if map_type == 1 else b""
    return head + identity + entries + pixels


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
    yield from tga_rules()


def tga_rules():
    """Each in as few pixels as show it, and some bytes behind so that files of this size are looked at."""
    rows = noise(3, 9 * 5 * 3)
    yield "map-type-2", tga_file(2, 24, 9, 5, 0, rows, (0, 9999, 24), map_type=2)
    yield "map-of-rgb-first-entry", tga_file(2, 24, 9, 5, 0, rows, (2, 1, 15))
    for bit in (0x01, 0x10, 0x80):
        yield f"bits-of-alpha-{bit:02x}", tga_file(2, 16, 21, 5, bit, seed=1)
    yield "bits-of-alpha-15", tga_file(2, 15, 21, 5, 1, seed=1)
    # True colour whose first bytes are those of cursor files with 0, 1 and 256 images.
    for name, mapping in (("0", (0, 0, 0)), ("1", (256, 0, 0)), ("256", (0, 1, 0))):
        yield f"like-a-cursor-of-{name}", tga_file(2, 24, 9, 9, 0, noise(4, 9 * 9 * 3), mapping, map_type=0)
    for name, width, height, codes in (
            ("run-across-rows", 2, 2, (0x83, 5)), ("literals-across-rows", 2, 2, (3, 1, 2, 3, 4)),
            ("run-then-literals", 3, 2, (0x83, 5, 1, 1, 2)), ("literals-then-run", 3, 2, (1, 1, 2, 0x83, 5)),
            ("run-over-the-end", 2, 1, (0xFF, 5)), ("literals-over-the-end", 2, 1, (0x7F, 5, 6)),
            ("behind-the-end", 2, 1, (0x81, 5, 0x81, 6)), ("just-enough", 128, 3, (0xFF, 9) * 3)):
        for place in (0, 0x20):
            # Behind an ID, which makes a file of it, so that nothing follows the codes.
            yield f"packets-{name}-{place:02x}", tga_file(11, 8, width, height, place, bytes(codes), identity=bytes(40))
    for name, width, height, codes in (("run-cut", 2, 1, (0, 5, 0x80)), ("literals-cut", 3, 1, (0x80, 5, 1, 6)),
                                       ("missing", 3, 1, (1, 5, 6)),
                                       ("literals-cut-in-a-long-row", 300, 1, (127, *range(40))),
                                       ("pixel-too-many", 129, 3, (0xFF, 9) * 3),
                                       ("greatest", 65535, 65535, (0xFF, 9) * 100)):
        yield f"bad-packets-{name}", tga_file(11, 8, width, height, 0, bytes(codes), identity=bytes(40))
    yield "bad-greatest", tga_file(2, 32, 65535, 65535, 8, bytes(100))
    yield "bad-map-of-rgb-empty", tga_file(2, 24, 9, 5, 0, rows, (0, 0, 24))
    yield "bad-map-of-rgb-12-bits", tga_file(2, 24, 9, 5, 0, rows, (0, 1, 12))
    yield "bad-map-of-rgb-too-large", tga_file(2, 24, 9, 5, 0, rows, (0, 65535, 24))[:300]
    yield "bad-map-type-2-of-indexes", tga_file(9, 8, 9, 5, 0, b"\x80\0" * 45, (0, 1, 24), map_type=2)
    yield "bad-type-33", tga_file(33, 8, 9, 5, 0, noise(1, 200), (0, 256, 24))
    # The footer is not taken for pixels, where it is found: up to four bytes before the end.
    tall = tga_file(2, 24, 1, 15, 0, noise(2, 45 - 22))
    for behind in (0, 1, 4, 5):
        yield f"{'odd' if behind == 5 else 'bad'}-footer-{behind}-before-the-end", tga_tail(tall) + bytes(behind)
    yield "odd-footer-misspelt", tga_tail(tall).replace(b".", b"!")
    # Pixels from right to left, one byte low: of one pixel, and with a palette.
    for name, arguments in {"one-32": (2, 32, 1, 1), "one-gray": (3, 8, 1, 1), "two-rows": (2, 32, 2, 2),
                            "row": (2, 24, 3, 1), "row-coded": (10, 24, 3, 1)}.items():
        codes = b"\2" * (arguments[0] == 10)
        count = arguments[2] * arguments[3] * arguments[1] // 8
        for place in (0x40, 0x60):
            yield f"left-{name}-{place:02x}", tga_file(*arguments, place, codes + noise(5, count), identity=bytes(40))
    yield "left-map", tga_file(1, 8, 3, 2, 0x40, b"\0\1\0\1\1\0", (0, 2, 24), identity=bytes(40))
    # Areas that count, and those that lie where they cannot.
    keyed = tga_file(2, 16, 9, 5, 1, seed=7)
    for attributes in (0, 1, 2, 3):
        yield f"keyed-attributes-{attributes}", tga_tail(keyed, attributes)
    whole = tga_tail(keyed, 2)
    for name, offset in {"behind": len(keyed) + 27, "negative": 2**32 - 16, "none": 0}.items():
        yield f"keyed-area-{name}", changed(whole, -26, struct.pack("<I", offset))
    yield "keyed-behind-an-area-before-the-end", whole + bytes(3)
