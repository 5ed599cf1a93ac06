# SPDX-License-Identifier: MIT
"""Writes PNG files with nothing but the standard library: every colour type, depth and filter, interlaced or not."""
import struct
import zlib

CHANNELS = {0: 1, 2: 3, 3: 1, 4: 2, 6: 4}  # colour type -> samples a pixel
ADAM7 = ((0, 0, 8, 8), (4, 0, 8, 8), (0, 4, 4, 8), (2, 0, 4, 4), (0, 2, 2, 4), (1, 0, 2, 2), (0, 1, 1, 2))


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def pack_row(samples, depth):
    """Samples of one row, most significant bits first."""
    if depth == 8:
        return bytes(samples)
    if depth == 16:
        return struct.pack(">%dH" % len(samples), *samples)
    packed = bytearray((len(samples) * depth + 7) // 8)
    for i, sample in enumerate(samples):
        packed[i * depth // 8] |= sample << (8 - depth - i * depth % 8)
    return bytes(packed)


def paeth(left, up, corner):
    estimate = left + up - corner
    distances = (abs(estimate - left), abs(estimate - up), abs(estimate - corner))
    return (left, up, corner)[distances.index(min(distances))]


def filtered(kind, row, above, step):
    """The row as the filter of this number leaves it; `step` is the bytes of a pixel, at least one."""
    out = bytearray(len(row))
    for i, value in enumerate(row):
        left = row[i - step] if i >= step else 0
        corner = above[i - step] if i >= step else 0
        up = above[i]
        out[i] = (value - (0, left, up, (left + up) // 2, paeth(left, up, corner))[kind]) & 255
    return bytes(out)


def filter_rows(rows, step, choice):
    """`choice`: "best" takes, row by row, the filter with the smallest differences; "cycle" uses all five in turn."""
    above = bytes(len(rows[0]))
    data = bytearray()
    for y, row in enumerate(rows):
        kinds = range(5) if choice == "best" else (y % 5,)
        candidates = [(kind, filtered(kind, row, above, step)) for kind in kinds]
        kind, out = min(candidates, key=lambda c: sum(v if v < 128 else 256 - v for v in c[1]))
        data.append(kind)
        data += out
        above = row
    return data


def write_png(path, *arguments, **options):
    """As png_bytes, to a file."""
    with open(path, "wb") as file:
        file.write(png_bytes(*arguments, **options))


def png_bytes(width, height, colour_type, depth, rows, palette=None, transparency=None, interlaced=False, filters="best",
              level=9):
    """`rows` holds one list of samples for each row. `palette` is a list of (r, g, b), `transparency` the bytes of a
    tRNS chunk."""
    channels = CHANNELS[colour_type]
    step = max(1, channels * depth // 8)
    data = bytearray()
    passes = ADAM7 if interlaced else ((0, 0, 1, 1),)
    for x0, y0, dx, dy in passes:
        if x0 >= width or y0 >= height:
            continue
        part = []
        for y in range(y0, height, dy):
            row = rows[y]
            samples = [row[x * channels + c] for x in range(x0, width, dx) for c in range(channels)]
            part.append(pack_row(samples, depth))
        data += filter_rows(part, step, filters)
    return png_from_rows(width, height, colour_type, depth, bytes(data), palette, transparency, interlaced, level)


def png_from_rows(width, height, colour_type, depth, data, palette=None, transparency=None, interlaced=False, level=9):
    """A file around filtered rows, whatever they are."""
    out = b"\x89PNG\r\n\x1a\n"
    out += chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, depth, colour_type, 0, 0, int(interlaced)))
    if palette is not None:
        out += chunk(b"PLTE", b"".join(bytes(entry) for entry in palette))
    if transparency is not None:
        out += chunk(b"tRNS", transparency)
    return out + chunk(b"IDAT", zlib.compress(data, level)) + chunk(b"IEND", b"")
