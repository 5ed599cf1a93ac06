#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Draws the pictures of tests/data/pictures: every header, type, depth and compression of each format, files that are odd
and files that are bad. What loading each of them must give stands in tests/data/ledger.txt (scripts/ledger.sh).

Everything is made by hand, byte by byte, except what stands in folders that are named after the programs that made them;
those are only made anew with --programs (ImageMagick, netpbm, giflib and cjpeg), and nothing is ever deleted.

A new format is one function that yields (name, bytes), in a module of test_pictures, entered in FORMATS.
"""
import pathlib
import random
import struct
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parent))
from test_pictures import metafiles
from test_pictures.bmp import bmp
from test_pictures.ico import ico
from test_pictures.notes import notes
from test_pictures.parts import changed, noise
from test_pictures.png import png
from test_pictures.tga import tga

FOLDER = pathlib.Path(__file__).parent.parent / "tests" / "data" / "pictures"


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
    for gray in (15, 16):  # the last of the table's own grays, and the first that is none
        yield f"entry-0-gray-{gray}-of-16", gif_file(
            gif_control(3), gif_image(codes=lzw([i % 16 for i in range(63)], 4), code_size=4),
            table=bytes([gray] * 3) + gif_table(15))
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
    yield "odd-colours-beyond-local-table", gif_file(gif_image(37, 21, 8, 256, local=gif_table(16)), table=b"")
    yield "odd-indexes-above-255", gif_file(gif_image(codes=lzw([3, 257, 256, 258] * 16, 9), code_size=9))
    yield "odd-application-of-0", gif_file(b"!\xFF\0" + b"\3,;!\0", image)
    # The colours of indexes beyond the table are the bytes that follow in the file, as far as it goes.
    beyond = gif_image(codes=lzw([0, 1, 2, 40] * 16, 6), code_size=6)
    for name, lack in {"odd-last-colour-ends-file": 0, "bad-last-colour-behind-file": 1}.items():
        behind = 13 + 41 * 3 - lack - len(gif_file(gif_control(2), beyond, end=b""))
        yield name, gif_file(gif_control(2), beyond, end=bytes(range(behind)))
    yield "transparent-behind-file", gif_file(
        gif_control(255), gif_image(codes=lzw([0, 1, 2, 255] * 16, 8), code_size=8))

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


def jpegs(folder):
    """Every kind of JPEG that cjpeg writes, of an odd number of rows and columns, so that no block of any sampling is
    whole. Readers of the system's read them, so they are no pictures of the ledger."""
    source = random.Random(9)
    ppm = b"P6\n43 31\n255\n" + bytes(min(255, max(0, value + source.randrange(9) - 4)) for y in range(31) for x in range(43)
                                     for value in (x * 6, y * 8, 255 - 2 * x - 2 * y))
    for name, options in {"rgb": "-rgb", "444": "-quality 95 -sample 1x1", "422": "-sample 2x1", "440": "-sample 1x2",
                          "420": "-sample 2x2", "411": "-sample 4x1", "420-progressive": "-sample 2x2 -progressive",
                          "gray-progressive": "-grayscale -progressive", "420-restart": "-sample 2x2 -restart 1",
                          "444-progressive-restart": "-sample 1x1 -progressive -restart 3B",
                          "420-arithmetic": "-sample 2x2 -arithmetic", "best": "-optimize -quality 100",
                          "worst": "-quality 1"}.items():
        (folder / f"cjpeg-{name}").write_bytes(subprocess.run(["cjpeg", *options.split()], check=True, input=ppm,
                                                              stdout=subprocess.PIPE).stdout)


def main():
    for kind, draw in FORMATS.items():
        folder = FOLDER / kind
        folder.mkdir(parents=True, exist_ok=True)
        for name, data in draw():
            (folder / f"{name}.{kind}").write_bytes(data)
    folder = FOLDER.parent / "metafiles"
    folder.mkdir(exist_ok=True)
    (folder / "red.emf").write_bytes(metafiles.enhanced())
    (folder / "red.wmf").write_bytes(metafiles.placeable())
    folder = FOLDER.parent / "notes"
    folder.mkdir(exist_ok=True)
    for name, data in notes():
        (folder / name).write_bytes(data)
    if "--programs" in sys.argv:
        by_programs(FOLDER)
        jpegs(FOLDER.parent.parent.parent / "fuzz" / "seeds" / "picture")


if __name__ == "__main__":
    main()
