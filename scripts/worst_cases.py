#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Keeps the table of the worst cases in docs/security.md: makes each of its files, smaller, has the command load or save
it, and holds the memory that this took, and the work, against what the table says of a pixel.

    worst_cases.py PIXKIT           checks the table
    worst_cases.py PIXKIT --full    makes the files at the table's size and prints its rows; takes minutes and 3 GB

Work is processor time, in that of a plain bitmap of as many pixels: 32 bits each, in a file. A busy machine takes longer
for both. What is slow is tried again, and to fail has to take three times what the table says.
"""
import os
import pathlib
import random
import struct
import subprocess
import sys
import tempfile
import zlib

TABLE = pathlib.Path(__file__).parent.parent / "docs" / "security.md"
SIDE = 2048  # of the smaller files
MEGABYTE = 1 << 20


# --- the files, by width and height

def plain(width, height):
    return bmp(width, height, 32, 0, random.Random(1).randbytes(width * 4) * height)


def bmp(width, height, bits, compression, data, palette=b""):
    start = 54 + len(palette)
    return (struct.pack("<2sIII", b"BM", start + len(data), 0, start) +
            struct.pack("<IiiHHIIiiII", 40, width, height, 1, bits, compression, 0, 0, 0, len(palette) // 4, 0) +
            palette + data)


def bmp_1_bit(width, height):
    return bmp(width, height, 1, 0, bytes((width + 31) // 32 * 4 * height // 2 + 1), bytes(4) + b"\xff" * 4)


def bmp_codes(width, height):
    return bmp(width, height, 8, 1, b"\xff\1" * (width * height // 255 + 1), bytes(8))


def chunk(name, content):  # a checksum of 0 is not checked
    return struct.pack(">I", len(content)) + name + content + bytes(4)


def png(width, height, data, interlacing=0, chunks=b""):
    header = struct.pack(">IIBBBBB", width, height, 16, 6, 0, 0, interlacing)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunks + chunk(b"IDAT", data) + chunk(b"IEND", b"")


def deflated(count, end):
    packer = zlib.compressobj(9, zlib.DEFLATED, -15)
    parts = [b"\x78\xda"]
    for position in range(0, count, MEGABYTE):
        parts.append(packer.compress(bytes(min(MEGABYTE, count - position))))
    return b"".join(parts) + packer.flush(zlib.Z_SYNC_FLUSH) + end


def row(width):
    return zlib.compress(bytes(width * 8 + 1))


def png_of_a_row(width, height):
    return png(width, height, row(width))


def png_damaged(width, height):
    return png(width, height, deflated(height * (width * 8 + 1) - 100, b"\7\xff\xff\xff"))  # no type of block


def png_whole(width, height):
    return png(width, height, deflated(height * (width * 8 + 1), b"\1\0\0\xff\xff") + zlib.adler32(b"").to_bytes(4, "big"))


def png_interlaced(width, height):
    """Of more bytes than the passes have."""
    return png(width, height, deflated(height * (width * 8 + 2), b"\1\0\0\xff\xff"), 1)


def png_of_chunks(width, height):
    """Half as many as there are pixels, by turns unknown ones and parts of the data, all of them empty."""
    return png(width, height, row(width), 0, (chunk(b"teSt", b"") + chunk(b"IDAT", b"")) * (width * height // 4))


def png_of_stored_blocks(width, height):
    """Empty ones, 2 bytes a pixel."""
    return png(width, height, b"\x78\1" + b"\0\0\0\xff\xff" * (width * height * 2 // 5) + row(width)[2:])


def png_of_codes(width, height):
    """Blocks that bring codes of their own, of which the one that ends the block comes alone; a byte for two pixels."""
    lengths = [0, 0, 1, 2] + [0] * 13 + [2]  # of the codes for 18, many zeros: 0; for 0 and 1: 10 and 11
    block = [(4, 3), (0, 5), (0, 5), (14, 4)] + [(length, 3) for length in lengths]
    block += [(0, 1), (127, 7), (0, 1), (107, 7), (3, 2), (1, 2), (0, 1)]  # 256 zeros, 1, 0; the end
    whole = sum_of_bits(block * 8)[:-1]
    return png(width, height, b"\x78\1" + whole * (width * height // 2 // len(whole)) + row(width)[2:])


def gif_of_extensions(width, height):
    """As many as another picture has pixels."""
    return (b"GIF89a" + struct.pack("<HHBBB", 1, 1, 0x80, 0, 0) + bytes(6) + b"\x21\xfe\0" * (width * height) +
            struct.pack("<BHHHHBB", 0x2C, 0, 0, 1, 1, 0, 2) + b"\2\x44\1\0;")


def icon(width, height):
    image, count = png_damaged(width, height), 65535
    entry = struct.pack("<BBBBHHII", 0, 0, 0, 0, 1, 32, len(image), 6 + 16 * count)
    return struct.pack("<HHH", 0, 1, count) + entry * count + image


def gif(width, height, flags=0, extension=b""):
    """One string of zeros that grows until the table is full, then the longest again and again."""
    codes, done, length, after = [(4, 3), (0, 3)], 1, 1, 6
    while done < width * height:
        bits = min(after.bit_length(), 12)
        codes.append((min(after, 4095), bits))
        length += after < 4096
        after = min(after + 1, 4096)
        done += length
    whole = sum_of_bits(codes)
    blocks = b"".join(bytes([len(whole[i:i + 255])]) + whole[i:i + 255] for i in range(0, len(whole), 255))
    return (struct.pack("<6sHHBBB", b"GIF89a", width, height, 0x81, 0, 0) + bytes(12) + extension +
            struct.pack("<BHHHHBB", 0x2C, 0, 0, width, height, flags, 2) + blocks + b"\0;")


def gif_interlaced(width, height):
    """And transparent, all of it."""
    return gif(width, height, 0x40, b"\x21\xf9\4\1\0\0\0\0")


def sum_of_bits(codes):
    held, count, out = 0, 0, bytearray()
    for code, bits in codes:
        held |= code << count
        count += bits
        while count >= 8:
            out.append(held & 255)
            held >>= 8
            count -= 8
    return bytes(out) + bytes([held])


def tga(width, height):
    header = struct.pack("<BBBHHBHHHHBB", 0, 0, 11, 0, 0, 0, 0, 0, width, height, 8, 0x40)
    return header + b"\xff\x55" * (width * height // 128 + 1)


def segment(marker, content):
    return bytes([0xFF, marker]) + struct.pack(">H", len(content) + 2) + content


def jpeg(width, height, scans=24, marker=0xC2, padding=1024):
    """Gray, and nothing but runs of empty blocks."""
    blocks = (width + 7) // 8 * ((height + 7) // 8)
    bits = ("0" + "1" * 14) * (blocks // 32767) + "0" + format(max(blocks % 32767 - 16384, 0), "014b")
    bits += "1" * (-len(bits) % 8)
    runs = int(bits, 2).to_bytes(len(bits) // 8, "big").replace(b"\xff", b"\xff\0")
    file = (b"\xff\xd8" + segment(0xDB, b"\0" + b"\1" * 64) +
            segment(marker, struct.pack(">BHHBBBB", 8, height, width, 1, 1, 0x11, 0)) +
            segment(0xC4, b"\x10\1" + bytes(15) + b"\xe0") +
            (segment(0xDA, b"\1\1\0\1\x3f\0") + runs) * scans)
    while len(file) < width * height // padding + 16:
        file += segment(0xFE, bytes(min(65000, width * height // padding)))
    return file + b"\xff\xd9"


def jpeg_arithmetic(width, height):
    return jpeg(width, height, 400, 0xCA, 16384)


def jpeg_of_inks(width, height):
    """Nothing but four full inks, and no end."""
    blocks = width // 8 * (height // 8)
    components = b"".join(bytes([i, 0x11, 0]) for i in range(1, 5))
    return (b"\xff\xd8" + segment(0xDB, b"\0" + b"\x10" * 64) +
            segment(0xC0, struct.pack(">BHHB", 8, height, width, 4) + components) +
            segment(0xC4, b"\0\1\1" + bytes(15) + b"\x08") + segment(0xC4, b"\x10\1" + bytes(16)) +
            segment(0xDA, b"\4\1\0\2\0\3\0\4\0\0\x3f\0") + b"\x9f\xd3\xfa\x7f\x4f\xe0" + bytes(blocks - 2) + b"\x0f")


def colliding(width, height):
    """Pixels whose strings, as a GIF writer finds them, a multiplication by the golden ratio leads to the same place."""
    pixels = list(range(256))  # which makes each index its colour
    strings = set()  # of two pixels: so many are enough to fill the writer's table
    while len(pixels) < 8000:
        last = pixels[-1] << 8
        near = (i for i in range(256) if ((last | i) * 0x9E3779B1 & 0xFFFFFFFF) >> 19 < 520 and last | i not in strings)
        pixels.append(next(near, 0))
        strings.add(last | pixels[-1])
    count = width * height
    return bmp(width, -height, 8, 0, (bytes(pixels) * (count // 8000 + 1))[:count],
               b"".join(bytes([i, i, i, 0]) for i in range(256)))


def meeting(width, height):
    """256 colours that a multiplication by the golden ratio leads to one place, then the last alone, from either end on."""
    colors = [color for color in range(1 << 20) if color * 0x9E3779B1 >> 22 & 1023 == 7][:256]
    all_of_them = bytes(range(256)) + b"\xff" * (width - 256)
    return bmp(width, height, 8, 0, all_of_them + b"\xff" * (width * (height - 2)) + all_of_them,
               b"".join(struct.pack("<I", color) for color in colors))


def half_clear(width, height):
    return bmp(width, height, 32, 0, (bytes(4) + b"\0\0\0\xff") * (width * height // 2))


def noise(width, height):
    count = width * height * 4
    return bmp(width, height, 32, 0, (random.Random(1).randbytes(MEGABYTE) * (count // MEGABYTE + 1))[:count])


def near_repeats(width, height):
    """Grays in which each byte has many earlier copies, all of them just shorter than a copy that is long enough."""
    block = random.Random(1).randbytes(256)
    pixels = b"".join(block + bytes([i & 255]) for i in range(width * height // 257 + 1))
    return bmp(width, height, 8, 0, pixels[:width * height], b"".join(bytes([i, i, i, 0]) for i in range(256)))


def nothing(width, height):
    return b"no picture" * 10  # made longer when it is written


LARGEST, LARGEST_PNG = (23168, 23170), (8191, 8193)


def convert(ending, *options):
    return ("convert", "--limit", "none", "FILE", "FILE" + ending, "--overwrite", *options)


LOAD = convert(".bmp", "--filter", "nearest", "--resize", "1x1")


# By the first column of the table: what makes the file, its size there and here (a number is both sides), the command.
ROWS = {
    "PNG of 16 bits a channel, one row of data": (png_of_a_row, LARGEST_PNG, SIDE, LOAD),
    "PNG of 16 bits a channel, all rows": (png_whole, LARGEST_PNG, SIDE, LOAD),
    "the same, damaged at the end": (png_damaged, LARGEST_PNG, SIDE, LOAD),
    "PNG of 16 bits a channel, all rows, interlaced": (png_interlaced, LARGEST_PNG, SIDE, LOAD),
    "PNG of empty chunks, one for two pixels": (png_of_chunks, LARGEST_PNG, SIDE // 2, LOAD),
    "the same, told by its headers": (png_of_chunks, (SIDE, SIDE), SIDE // 2, ("info", "FILE")),
    "PNG of empty stored blocks, 0.4 a pixel": (png_of_stored_blocks, LARGEST_PNG, SIDE, LOAD),
    "PNG of new codes for nothing, a byte for two pixels": (png_of_codes, LARGEST_PNG, SIDE, LOAD),
    "icon of 65,535 entries that all are the damaged PNG": (icon, LARGEST_PNG, 2 * SIDE, LOAD),
    "GIF, the longest strings": (gif, LARGEST, SIDE, LOAD),
    "the same, interlaced and transparent": (gif_interlaced, LARGEST, SIDE, LOAD),
    "GIF of one pixel, and that many empty extensions": (gif_of_extensions, LARGEST_PNG, SIDE, LOAD),
    "BMP of 1 bit, half of it there": (bmp_1_bit, LARGEST, SIDE, LOAD),
    "BMP, run-length codes": (bmp_codes, LARGEST, SIDE, LOAD),
    "TGA, run-length packets, right to left": (tga, LARGEST, SIDE, LOAD),
    "JPEG, progressive, as many empty scans as its bytes pay for": (jpeg, (65500, 8192), SIDE, LOAD),
    "the same, decoded at an eighth for a smaller picture": (jpeg, (65500, 8192), SIDE, convert(".bmp", "--resize", "1x1")),
    "JPEG of inks, without its end": (jpeg_of_inks, (8192, 8192), SIDE, LOAD),
    "JPEG, arithmetic coded, hundreds of scans": (jpeg_arithmetic, (8192, 8192), 4 * SIDE, LOAD),
    "no picture, of 2 GiB": (nothing, (1, 1), 1, LOAD),
    "saved as GIF: pixels whose strings collide": (colliding, (8192, 8192), 2 * SIDE, convert(".gif")),
    "saved as GIF: every other pixel clear": (half_clear, (8192, 8192), SIDE, convert(".gif")),
    "saved as GIF: 256 colours that collide": (meeting, (8192, 8192), SIDE, convert(".gif")),
    "saved as PNG: 256 colours that collide": (meeting, (8192, 8192), SIDE, convert(".png")),
    "saved as PNG: noise": (noise, (4096, 4096), 2 * SIDE, convert(".png")),
    "saved as PNG: near repeats": (near_repeats, (4096, 4096), SIDE, convert(".png")),
    "the same at level 9": (near_repeats, (4096, 4096), SIDE, convert(".png", "--png-level", "9")),
    "saved as an icon: noise": (noise, (8192, 8192), SIDE, convert(".ico")),
    "drawn at 101 %": (plain, (16000, 16000), SIDE, convert(".bmp", "--resize", "101%")),
    "one column drawn as one pixel": (plain, (1, 67108863), (1, SIDE * SIDE), convert(".bmp", "--resize", "1x1")),
    "one row drawn as one pixel": (plain, (67108863, 1), (SIDE * SIDE, 1), convert(".bmp", "--resize", "1x1")),
    "one row drawn as ten pixels": (plain, (67108863, 1), (SIDE * SIDE, 1), convert(".bmp", "--resize", "10x1")),
    "all effects on a plain bitmap": (plain, (1024, 1024), SIDE // 2, ("effects", "--limit", "none", "FILE", "-o", "FILE.effects")),
}


# --- what they take

def write(path, make, width, height):
    """In another process, so that this one stays small: the system counts its memory with that of what it starts."""
    if os.fork() == 0:
        try:
            path.write_bytes(make(width, height))
            if make is nothing:
                os.truncate(path, (1 << 31) - 1)
            os._exit(0)
        finally:
            os._exit(1)
    if os.wait()[1] != 0:
        sys.exit(f"{path} cannot be made")


def run(command, arguments, path):
    """Exit code, seconds of processor time, most bytes of memory."""
    process = subprocess.Popen([command] + [word.replace("FILE", str(path)) for word in arguments],
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, used = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    return process.returncode, used.ru_utime + used.ru_stime, used.ru_maxrss * 1024


def least(command, arguments, path, tries):
    """The least of several runs, of which some may have met a busy machine."""
    return [min(numbers) for numbers in zip(*(run(command, arguments, path) for _ in range(tries)))]


def table():
    """Of each file its bytes a pixel and its work."""
    lines = TABLE.read_text().split("| file | size |")[1].split("\n\n")[0].splitlines()[2:]
    rows = ([cell.strip() for cell in line.split("|")] for line in lines)
    return {row[1]: row[6:8] for row in rows}


class Measure:
    """What a program without a picture takes, and a plain bitmap."""

    def __init__(self, command, path):
        self.command, self.path = command, path
        _, self.start, self.floor = least(command, ("--version",), path, 5)
        write(path, plain, SIDE, SIDE)
        exit_code, seconds, memory = least(command, LOAD, path, 5)
        if exit_code != 0:
            sys.exit("a plain bitmap is refused")
        self.base = memory - path.stat().st_size - 4 * SIDE * SIDE
        self.plain = (seconds - self.start) / (SIDE * SIDE)

    def of(self, arguments, pixels, tries):
        """Whether there is a picture, bytes a pixel beside those of the file, work, seconds, bytes in all."""
        exit_code, seconds, memory = least(self.command, arguments, self.path, tries)
        taken = memory - self.base - self.path.stat().st_size
        return exit_code == 0, taken / pixels, (seconds - self.start) / self.plain / pixels, seconds, memory


def check(name, stated, measure):
    make, _, side, arguments = ROWS[name]
    width, height = side if isinstance(side, tuple) else (side, side)
    pixels = width * height
    write(measure.path, make, width, height)
    for tries in (1, 2, 5):
        loaded, taken, work, _, memory = measure.of(arguments, pixels, tries)
        if stated[0] == "refused":
            problem = "is not refused" if loaded else memory > measure.floor + 2 * MEGABYTE and f"takes {memory} bytes"
        elif abs(taken - float(stated[0])) > 0.6:
            problem = f"takes {taken:.1f} bytes a pixel, not {stated[0]}"
        else:
            problem = work > 3 * float(stated[1]) + 1 and f"takes {work:.1f} times as long as a plain bitmap, not {stated[1]}"
        if not problem:
            return True
    print(f"{name}: {problem}")
    return False


def print_row(name, stated, measure):
    make, (width, height), _, arguments = ROWS[name]
    write(measure.path, make, width, height)
    loaded, taken, work, seconds, memory = measure.of(arguments, width * height, 3)
    size = measure.path.stat().st_size
    print(f"| {name} | {width} x {height} | {size:,} | {seconds:.1f} s | {memory // 1000000} MB "
          f"| {taken:.1f} | {work:.1f} | {'' if loaded else 'refused'} (stated {stated})", flush=True)


def main():
    with tempfile.TemporaryDirectory() as folder:
        measure = Measure(sys.argv[1], pathlib.Path(folder) / "worst")
        stated = table()
        if stated.keys() != ROWS.keys():
            sys.exit(f"{TABLE} has other rows: {stated.keys() ^ ROWS.keys()}")
        each = print_row if "--full" in sys.argv else check
        results = [each(name, stated[name], measure) for name in ROWS]
        sys.exit(0 if all(result is not False for result in results) else 1)


main()
