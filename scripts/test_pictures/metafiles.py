# SPDX-License-Identifier: MIT
"""Metafiles that fill their left half with red; see draw_test_pictures.py. Not every system draws them, so they stand apart
from the pictures of the ledger."""
import struct


def enhanced():
    """40 x 20 pixels at 96 to the inch."""
    records = (struct.pack("<6I", 39, 24, 1, 0, 0xFF, 0)    # EMR_CREATEBRUSHINDIRECT: solid red
               + struct.pack("<3I", 37, 12, 1)              # EMR_SELECTOBJECT
               + struct.pack("<3I", 37, 12, 0x80000008)     # the pen that draws nothing
               + struct.pack("<6I", 43, 24, 0, 0, 21, 21)   # EMR_RECTANGLE
               + struct.pack("<5I", 14, 20, 0, 16, 20))     # EMR_EOF
    header = struct.pack("<12I", 1, 100, 0, 0, 39, 19, 0, 0, 1058, 529, 0x464D4520, 0x10000)
    header += struct.pack("<IIHH", 100 + len(records), 6, 2, 0)
    header += struct.pack("<10I", 0, 0, 0, 1920, 1080, 508, 286, 0, 0, 0)  # 3780 pixels a metre
    return header.ljust(100, b"\0") + records


def placeable():
    """Half an inch by a quarter."""
    records = struct.pack("<43H", 5, 0, 0x020B, 0, 0,         # META_SETWINDOWORG
                          5, 0, 0x020C, 20, 40,               # META_SETWINDOWEXT
                          7, 0, 0x02FC, 0, 0xFF, 0, 0,        # META_CREATEBRUSHINDIRECT
                          4, 0, 0x012D, 0,                    # META_SELECTOBJECT
                          8, 0, 0x02FA, 5, 0, 0, 0, 0,        # META_CREATEPENINDIRECT: none
                          4, 0, 0x012D, 1,
                          7, 0, 0x041B, 21, 21, 0, 0,         # META_RECTANGLE
                          3, 0, 0)
    placing = struct.pack("<10H", 0xCDD7, 0x9AC6, 0, 0, 0, 720, 360, 1440, 0, 0)
    checksum = 0
    for (word,) in struct.iter_unpack("<H", placing):
        checksum ^= word
    header = struct.pack("<9H", 1, 9, 0x300, 9 + len(records) // 2, 0, 2, 8, 0, 0)
    return placing + struct.pack("<H", checksum) + header + records
