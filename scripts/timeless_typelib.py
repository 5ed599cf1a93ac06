#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Takes out of type libraries when they were made, so that the same description gives the same bytes.

    timeless_typelib.py FILE.tlb...

widl notes the compiler's version and the time as custom data of the library: a text, "... at Sun Nov 22 13:13:27 2026", and
a number of four bytes (VT_UI4, 0x13) before that of the version. Both get the first second of 1980, which zip archives have.
"""
import pathlib
import re
import sys

MADE = 315532800  # 1980-01-01 00:00:00, in seconds since 1970
TEXT = re.compile(rb"(Created by WIDL version [0-9.]+ at )[A-Z][a-z]{2} [A-Z][a-z]{2} [ \d]\d \d\d:\d\d:\d\d \d{4}")
NUMBER = re.compile(rb"(WW\x13\0)....(?=WW\x13\0\x2b\x02)", re.DOTALL)

for name in sys.argv[1:]:
    path = pathlib.Path(name)
    library, texts = TEXT.subn(rb"\1Tue Jan  1 00:00:00 1980", path.read_bytes())
    library, numbers = NUMBER.subn(lambda found: found[1] + MADE.to_bytes(4, "little"), library)
    if (texts, numbers) != (1, 1):
        sys.exit(f"{name}: the time is not where widl has written it so far ({texts} texts, {numbers} numbers)")
    path.write_bytes(library)
