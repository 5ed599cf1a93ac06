# SPDX-License-Identifier: MIT
"""Files that say something beside their pixels; see draw_test_pictures.py."""
import struct
import zlib

import png_writer
from test_pictures.png import png_file, with_chunks


def exif(orientation, order):
    """A directory of two entries, in either order of bytes."""
    entries = struct.pack(order + "HHLHH", 0x0112, 3, 1, orientation, 0) + struct.pack(order + "HHLL", 0x0128, 3, 1, 2)
    return {"<": b"II", ">": b"MM"}[order] + struct.pack(order + "HLH", 42, 8, 2) + entries + bytes(4)


def segment(marker, data):
    return bytes([0xFF, marker]) + struct.pack(">H", len(data) + 2) + data


def jpeg(*segments, end=b"\xFF\xD9"):
    """8 x 16 pixels, of which the upper half is bright: two blocks of a constant each, in codes of one or two bits."""
    tables = (segment(0xDB, b"\0" + b"\1" * 64)
              + segment(0xC4, b"\0" + bytes([1, 1] + [0] * 14) + bytes([0, 10]))  # differences of 0 and 10 bits
              + segment(0xC4, b"\x10" + bytes([1] + [0] * 15) + b"\0"))  # nothing but the end of the block
    frame = segment(0xC0, struct.pack(">BHHB", 8, 16, 8, 1) + b"\1\x11\0")
    bits = "10" + f"{1000:010b}" + "0" + "10" + f"{1023 - 1000:010b}" + "0"
    bits += "1" * (-len(bits) % 8)
    codes = int(bits, 2).to_bytes(len(bits) // 8, "big").replace(b"\xFF", b"\xFF\0")
    return b"\xFF\xD8" + b"".join(segments) + tables + frame + segment(0xDA, b"\1\1\0\0\x3F\0") + codes + end


def png_that_says_much():
    chunk = png_writer.chunk
    damaged = chunk(b"tEXt", b"Author\0nobody")
    return with_chunks(
        png_file(2, 16, 9, 7), b"IDAT", chunk(b"gAMA", struct.pack(">L", 100000)), chunk(b"eXIf", exif(3, "<")),
        chunk(b"pHYs", struct.pack(">LLB", 2835, 5669, 1)), chunk(b"tEXt", b"Title\0Gr\xF6\xDFe"),
        chunk(b"zTXt", b"Comment\0\0" + zlib.compress(b"a long one " * 40)),
        chunk(b"iTXt", b"Comment\0\1\0en\0\0" + zlib.compress("an \u2260 one".encode())),
        damaged[:-1] + b"\0", chunk(b"zTXt", b"Source\0\0" + zlib.compress(bytes(b"." * (1 << 20 | 1)))),
        chunk(b"acTL", struct.pack(">LL", 3, 0)), chunk(b"fcTL", struct.pack(">LLLLLHHBB", 0, 9, 7, 0, 0, 1, 10, 0, 0)))


def notes():
    """Names with extensions. Readers of the system's read JPEG files, so these are no pictures of the ledger."""
    said = (segment(0xE0, b"JFIF\0" + struct.pack(">HBHHBB", 258, 1, 300, 300, 0, 0)),
            segment(0xE1, b"Exif\0\0" + exif(6, ">")), segment(0xE2, b"ICC_PROFILE\0\1\1" + bytes(8)))
    yield "turned.jpg", jpeg(*said)
    yield "cut.jpg", jpeg(end=b"")
    yield "says-much.png", png_that_says_much()
    # The same 5 x 3 pixels, twice as dense downwards, to those who turn them. By EXIF 2.3: the sides that the stored picture's first row and first
    # column are of what is shown.
    sides = ("top left", "top right", "bottom right", "bottom left", "left top", "right top", "right bottom", "left bottom")
    upright = [[(50 * x, 80 * y, 99) for x in range(5)] for y in range(3)]
    for orientation, row_and_column in enumerate(sides, 1):
        row, column = row_and_column.split()
        shown = [line[::-1] if "right" in row_and_column else line for line in upright]
        shown = shown[::-1] if "bottom" in row_and_column else shown
        stored = shown if row in ("top", "bottom") else [list(line) for line in zip(*shown)]
        rows = [[sample for pixel in line for sample in pixel] for line in stored]
        density = (2835, 5669) if stored is shown else (5669, 2835)
        yield f"upright-{orientation}.png", with_chunks(
            png_writer.png_bytes(len(stored[0]), len(stored), 2, 8, rows), b"IDAT",
            png_writer.chunk(b"pHYs", struct.pack(">LLB", *density, 1)),
            png_writer.chunk(b"eXIf", exif(orientation, "<>"[orientation % 2])))
