"""PNG files; see draw_test_pictures.py."""
import random
import struct

import png_writer
from test_pictures.parts import changed, noise


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
