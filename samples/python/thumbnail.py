# SPDX-License-Identifier: MIT
"""Makes a thumbnail of a picture, from bytes to bytes, with pywin32.

    python thumbnail.py PICTURE RESULT.png
"""
import pathlib
import sys

from win32com.client import Dispatch

streamPNG = 10
resampleLanczos3 = 4


def check(success, what, sheet):
    # With a wrapper class made of the type library, members that store in arguments return those, too.
    if not (success[0] if isinstance(success, tuple) else success):
        sys.exit(f"{what}: {sheet.LastErrorText}")


def main(picture, result):
    sheet = Dispatch("pixkit.cPixSheet")
    sheet.Unattended = True
    sheet.MaxPixels = 50e6
    check(sheet.LoadPicture_Stream(pathlib.Path(picture).read_bytes()), "LoadPicture_Stream", sheet)

    # What ScaleImage would store in its arguments is worked out here.
    scale = min(1, 160 / sheet.Width, 160 / sheet.Height)
    check(sheet.Resample(round(sheet.Width * scale), round(sheet.Height * scale), resampleLanczos3), "Resample", sheet)

    # Rows from the top, red first, straight colours: as other libraries take them.
    bits = sheet.DIBbits(False, False, True, False, False, 0, 0, 0, 0, False)
    print(f"{sheet.Width} x {sheet.Height}, {len(bits)} bytes, alpha {sheet.PixelAlpha(0, 0)}")

    file = sheet.StreamOf(streamPNG)
    check(file is not None, "StreamOf", sheet)
    pathlib.Path(result).write_bytes(bytes(file))


if __name__ == "__main__":
    main(*sys.argv[1:3])
