# SPDX-License-Identifier: MIT
"""PNG files; see draw_test_pictures.py."""
import random
import struct
import zlib

import png_writer
from test_pictures.parts import changed, noise


# Colour types and depths.
FORMATS = ((0, 1), (0, 2), (0, 4), (0, 8), (0, 16), (2, 8), (2, 16), (3, 1), (3, 2), (3, 4), (3, 8), (4, 8), (4, 16),
           (6, 8), (6, 16))


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
    # Wider than any vector of pixels, with a tail.
    for colour_type, depth in FORMATS:
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
    yield from png_of_chunks()
    yield from png_of_streams()
    yield from png_of_samples()


# --- single rules of the reader, each in as few pixels as show it

def header(width=1, height=1, depth=8, colour_type=2, compression=0, filtering=0, interlace=0):
    return png_writer.chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, depth, colour_type, compression, filtering,
                                                 interlace))


def data(rows):
    """Filtered rows in a stream that is the same with every zlib."""
    return png_writer.chunk(b"IDAT", zlib.compress(rows, 0))


def with_wrong_crc(chunk):
    return changed(chunk, -1, bytes([chunk[-1] ^ 1]))


def of_chunks(*chunks, end=png_writer.chunk(b"IEND", b"")):
    return b"\x89PNG\r\n\x1a\n" + b"".join(chunks) + end


def png_of_chunks():
    """Chunks that are repeated, out of order, empty, or longer and shorter than they should be."""
    chunk = png_writer.chunk
    rgb, rgb_data = header(), data(b"\0\x0A\x14\x1E")
    indexed, index_data = header(colour_type=3), data(b"\0\0")
    palette, half = chunk(b"PLTE", b"\x0A\x14\x1E"), chunk(b"tRNS", b"\x80")
    gray_alpha, gray_alpha_data = header(colour_type=4), data(b"\0\x32\xFF")
    text = chunk(b"tEXt", b"a\0b")
    yield "chunks-all", of_chunks(indexed, palette, half, text, index_data)
    yield "order-data-first", of_chunks(rgb_data, rgb)
    yield "order-second-header", of_chunks(header(2, 2), rgb, rgb_data)
    yield "order-second-header-behind-data", of_chunks(header(2, 2), rgb_data, rgb)
    yield "order-palette-of-earlier-header", of_chunks(indexed, palette, header(colour_type=0), index_data)
    yield "order-palette-and-trns-twice", of_chunks(indexed, chunk(b"tRNS", b"\x09"), chunk(b"PLTE", noise(1, 6)),
                                                    index_data, palette, half)
    yield "order-palette-before-header", of_chunks(with_wrong_crc(chunk(b"PLTE", b"\1\2\3\4")), indexed, index_data)
    yield "order-trns-before-header-gray", of_chunks(chunk(b"tRNS", b"\x80\xFF"), header(2, 1, 8, 0), data(b"\0\0\1"))
    yield "order-trns-before-header-palette", of_chunks(chunk(b"tRNS", b"\x80\xFF"), header(2, 1, 8, 3),
                                                        chunk(b"PLTE", noise(2, 18)), data(b"\0\0\5"))
    yield "odd-palette-of-gray", of_chunks(gray_alpha, with_wrong_crc(chunk(b"PLTE", b"\1\2")), gray_alpha_data)
    yield "odd-trns-beside-alpha", of_chunks(gray_alpha, chunk(b"tRNS", b"\0\x32"), gray_alpha_data)
    yield "odd-empty-chunks", of_chunks(with_wrong_crc(chunk(b"IHDR", b"")), rgb,
                                        *(with_wrong_crc(chunk(kind, b"")) for kind in (b"PLTE", b"tRNS", b"IDAT")),
                                        rgb_data, chunk(b"tEXt", b""))
    yield "odd-end-with-data", of_chunks(rgb, rgb_data, chunk(b"IEND", b"123"), chunk(b"IHDR", b"1"), end=b"")
    yield "odd-header-of-14-bytes", of_chunks(chunk(b"IHDR", rgb[8:21] + b"\x4D"), rgb_data)
    yield "odd-types-in-small-letters", of_chunks(rgb, chunk(b"iDAT", b"1"), chunk(b"iEND", b"1"), rgb_data)
    coder = zlib.compressobj(9, zlib.DEFLATED, 15, 9, zlib.Z_FIXED)
    # 62 bytes: the code of its one row is there, what ends the stream is not.
    yield "smallest", of_chunks(header(colour_type=0), chunk(b"IDAT", (coder.compress(b"\0\x4D") + coder.flush())[:5]))
    yield "one-gray", of_chunks(header(colour_type=0), data(b"\0\x4D"))
    yield "bad-header-of-12-bytes", of_chunks(chunk(b"IHDR", rgb[8:20]), rgb_data)
    # A reader that goes on takes the first byte of the checksum for the last of the header, so that is one it likes.
    yield "bad-header-of-12-bytes-crc-0", of_chunks(changed(chunk(b"IHDR", rgb[8:20]), -4, bytes(4)), rgb_data)
    yield "bad-second-header", of_chunks(rgb, header(colour_type=5), rgb_data)
    yield "bad-palette-of-4-bytes", of_chunks(indexed, chunk(b"PLTE", b"\1\2\3\4"), index_data)
    yield "bad-palette-of-2-bytes-beside-rgb", of_chunks(rgb, chunk(b"PLTE", b"\1\2"), rgb_data)
    yield "bad-no-header", of_chunks(rgb_data, chunk(b"tEXt", bytes(40)))
    # Lengths that lead out of the data, or back to the header for ever.
    begun = of_chunks(rgb, rgb_data, end=b"")
    behind = b"\1\2\3" + bytes(4) + chunk(b"IEND", b"")
    for name, length in {"too-long": len(behind) - 2, "greatest": 2**31 - 1, "negative": 2**31, "wraps": 2**32 - 12,
                         "minus-1": 2**32 - 1, "back-to-the-header": 2**32 - 4 - len(begun)}.items():
        for kind in (b"tEXt", b"IDAT", b"PLTE", b"IEND"):
            yield f"bad-length-{name}-{kind.decode()}", begun + struct.pack(">I", length) + kind + behind
    for width, height, depth, colour_type in (
            (1, 2**31 + 1, 8, 2), (8192, 8192, 8, 2), (2**31 - 1, 2**31 - 1, 1, 0), (2**31 - 1, 1, 1, 0), (1, 2**26, 1, 0),
            (1, 1, 0, 2), (1, 1, 32, 2), (1, 1, 8, 5), (1, 1, 8, 7), (1, 1, 8, 255), (1, 1, 1, 2), (1, 1, 2, 2),
            (1, 1, 16, 3), (1, 1, 1, 4), (1, 1, 2, 4), (1, 1, 4, 4), (1, 1, 1, 6), (1, 1, 2, 6), (1, 1, 4, 6)):
        yield f"bad-{width}x{height}-{colour_type}-{depth}", of_chunks(header(width, height, depth, colour_type),
                                                                       data(bytes(32)))


def png_of_streams():
    """Image data that ends early or late, is damaged, or lacks what surrounds it: three rows of one pixel."""
    rows = bytes((0, 1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9))
    whole = zlib.compress(rows, 0)
    stored = b"\x78\1\0\6\0\xF9\xFF" + rows[:6]  # one row and a half, in a block that is not the last
    fixed = zlib.compressobj(9, zlib.DEFLATED, 15, 9, zlib.Z_FIXED)
    for name, colour_type, stream in (
            ("ends-in-a-row", 2, zlib.compress(rows[:6], 0)),
            ("ends-in-a-row-of-rgba", 6, zlib.compress(b"\0\1\2\3\xFF\0\4", 0)),
            ("ends-in-a-palette-row", 3, zlib.compress(b"\0\1", 0)), ("no-last-block", 2, stored),
            ("first-row-alone", 2, zlib.compress(rows[:4], 0)),
            ("first-row-alone-no-end", 2, b"\x78\1\0\4\0\xFB\xFF" + rows[:4]),
            ("too-long", 2, zlib.compress(rows + bytes(5), 0)),
            ("bytes-behind", 2, whole + b"\xFF" * 20), ("fixed-codes", 2, fixed.compress(rows) + fixed.flush()),
            ("wrong-adler", 2, changed(whole, -1, b"\0")), ("no-adler", 2, whole[:-4]),
            ("damage-behind-the-last-row", 2, b"\x78\1\0\x11\0\xEE\xFF" + rows + bytes(5) + b"\6")):
        yield f"stream-{name}", of_chunks(header(1, 3, 8, colour_type), png_writer.chunk(b"PLTE", b"\7\x08\x09"),
                                          png_writer.chunk(b"IDAT", stream))
    for name, stream in (("damage-before-the-last-row", stored + b"\6"),
                         ("ends-in-the-first-row", zlib.compress(rows[:3], 0)),
                         ("ends-in-the-first-row-no-end", b"\x78\1\0\4\0\xFB\xFF" + rows[:3]),
                         ("ends-in-a-block", b"\x78\1\x63\x60\4"), ("header-alone", b"\x78\1"), ("one-byte", b"\x78"),
                         ("empty", zlib.compress(b"", 0)),
                         ("wrong-complement", b"\x78\1\1\3\0\3\0" + bytes(3)),
                         ("distance-before-the-start", b"\x78\1\x63\0\x12"), ("no-zlib-header", b"\x79\1\1\0\0\xFF\xFF"),
                         ("preset-dictionary", b"\x78\x20\1\2\3\4\1\0\0\xFF\xFF"), ("not-compressed", rows)):
        yield f"bad-stream-{name}", of_chunks(header(1, 3), png_writer.chunk(b"IDAT", stream))
    # A copy is the last of the data, and there is room behind it for whatever a fast decoder writes too far.
    few = b"".join(b"\0" + noise(y, 27) for y in range(5)) + b"\0" + b"\x77" * 20
    coder = zlib.compressobj(9, zlib.DEFLATED, 15, 9, zlib.Z_FIXED)
    yield "stream-ends-in-a-copy", of_chunks(header(9, 60), png_writer.chunk(
        b"IDAT", coder.compress(few) + coder.flush() + bytes(80)))


def png_of_samples():
    """Samples to pixels, where a rule differs from other readers' or is easily missed."""
    chunk = png_writer.chunk
    entries = bytes((1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 200, 100, 50))
    plte = chunk(b"PLTE", entries)

    def trns(*values):
        return chunk(b"tRNS", bytes(values))
    for name, (width, depth, colour_type), row, *before in (
            ("gray-1-bit", (3, 1, 0), (0x40,)), ("gray-2-bits", (4, 2, 0), (0x1B,)), ("gray-4-bits", (3, 4, 0), (1, 0xEF)),
            ("gray-16-bits", (2, 16, 0), (0x12, 0xFF, 0xFE, 0xFF)),
            ("trns-low-byte", (2, 8, 0), (0x34, 0x12), trns(0x12, 0x34)),
            ("trns-low-bits", (4, 2, 0), (0x1B,), trns(0xFF, 0xFF)),
            ("trns-high-bytes", (3, 16, 0), (0x12, 0xFF, 0x34, 0x12, 0x12, 0x34), trns(0x12, 0x34)),
            ("trns-of-no-pixel", (1, 8, 0), (9,), trns(0, 8)), ("trns-short", (1, 8, 0), (0,), trns(0)),
            ("trns-long", (1, 8, 0), (5,), trns(0, 5, 1, 1)), ("trns-taken-back", (1, 8, 0), (5,), trns(0, 5), trns(5)),
            ("trns-rgb-low-bytes", (2, 8, 2), (1, 2, 3, 3, 2, 1), trns(9, 1, 9, 2, 9, 3)),
            ("trns-rgb-high-bytes", (2, 16, 2), (1, 77, 2, 88, 3, 99, 9, 1, 9, 2, 9, 3), trns(1, 9, 2, 9, 3, 9)),
            ("trns-rgb-short", (1, 8, 2), (0, 0, 0), trns(0, 0, 0, 0, 0)),
            ("palette-partial-alpha", (3, 8, 3), (0, 5, 1), plte, trns(255, 0, 255, 255, 255, 128)),
            ("palette-trns-short", (2, 4, 3), (5,), plte, trns(0)),
            ("palette-trns-first", (1, 2, 3), (0x40,), trns(9, 51), plte),
            ("palette-index-beyond", (2, 8, 3), (6, 255), plte, trns(*[7] * 256)),
            ("palette-none-1-bit", (2, 1, 3), (0x40,)), ("palette-none-2-bits", (2, 2, 3), (0x70,)),
            ("palette-none-8-bits", (2, 8, 3), (1, 255)),
            ("palette-of-259", (2, 8, 3), (255, 0), chunk(b"PLTE", bytes(765) + b"\1" + bytes(11)),
             trns(*[128] * 255, 255, *[128] * 44)),
            ("alpha-truncates", (3, 8, 6), (100, 101, 255, 127, 255, 254, 253, 1, 255, 255, 255, 254)),
            ("alpha-clear-colour", (2, 8, 6), (9, 9, 9, 0, 1, 2, 3, 255)),
            ("alpha-gray", (3, 8, 4), (200, 128, 200, 0, 200, 255)),
            ("alpha-16-bits", (1, 16, 6), (255, 1, 128, 2, 64, 3, 128, 255)),
            ("alpha-gray-16-bits", (2, 16, 4), (77, 7, 0, 255, 77, 7, 255, 0))):
        yield f"rule-{name}", of_chunks(header(width, 1, depth, colour_type), *before, data(bytes((0, *row))))
    for name, rows in (("average-of-a-sum", ((0, 255, 255, 255), (0, 255, 255, 255), (3, 128, 0, 1))),
                       ("average-first-row", ((3, 200, 100, 0),)), ("average-first-row-odd", ((3, 201, 101, 1),)),
                       ("paeth-first-row", ((4, 200, 100, 1),)),
                       ("up-first-row", ((2, 200, 100, 1),)), ("sub-wraps", ((1, 200, 100, 1),)),
                       ("paeth-ties", ((0, 15, 20, 10), (4, 251, 0, 251))),
                       ("unknown", ((255, 1, 2, 3), (2, 10, 10, 10), (128, 200, 201, 202)))):
        yield f"filter-{name}", of_chunks(header(3, len(rows), 8, 0), data(b"".join(bytes(row) for row in rows)))
    # Two of nine columns are in the first pass.
    for name, count in (("interlaced-first-row-alone", 7), ("bad-interlaced-ends-in-the-first-row", 6)):
        yield name, of_chunks(header(9, 9, interlace=1), data(b"\0" + noise(7, count - 1)))
        yield f"{name}-no-end", of_chunks(header(9, 9, interlace=1), png_writer.chunk(
            b"IDAT", b"\x78\1\0\x20\0\xDF\xFF\0" + noise(7, count - 1)))
    yield "interlaced-first-pass-alone", of_chunks(header(2, 2, 8, 0, interlace=1), data(b"\0\xC8"))
    # So wide that rows, and those of passes, are converted in pieces.
    yield "pieces-interlaced", png_file(3, 1, 2100, 3, interlaced=True)
    # Tails of every kind of row, and passes without columns or rows.
    for colour_type, depth in FORMATS:
        for width in (1, 2, 3, 5, 8, 13):
            yield f"width-{width}-{colour_type}-{depth}", png_file(colour_type, depth, width, width % 4 + 5,
                                                                   interlaced=width in (2, 5, 13))
