#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs the viewer on an X display of its own and compares pictures of the screen with pixels worked out here.

    viewer_test.py BUILD-FOLDER RUNNER...    RUNNER: what runs a Windows program, such as scripts/wine.sh run

The last line is "N passed, N failed". A picture of the screen that is not as expected stays in the build folder.
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

BUILD, RUNNER = pathlib.Path(sys.argv[1]), sys.argv[2:]
PICTURES = pathlib.Path("samples/pictures")
SCREEN = 1024, 768
VIEWER, SHAPE = "pixkit_viewer", "pixkit_viewer's_shape"
BACKGROUND, DESKTOP = (128, 128, 128), (0, 0, 0)
SQUARE = 8, (255, 255, 255), (192, 192, 192)
PATIENCE = 60  # seconds that a machine with other things to do may need for one step


def pixels_of(file):
    """Rows of (red, green, blue, alpha), read by a program that is not ours."""
    width, height = map(int, subprocess.check_output(["identify", "-format", "%w %h", file]).split())
    data = subprocess.check_output(["convert", file, "-depth", "8", "rgba:-"])
    pixel = [tuple(data[i : i + 4]) for i in range(0, len(data), 4)]
    return [pixel[row * width : (row + 1) * width] for row in range(height)]


def turned(rows):
    """A quarter to the right."""
    return [list(column) for column in zip(*rows[::-1])]


def mirrored(rows):
    return [row[::-1] for row in rows]


def enlarged(rows, factor):
    return [[pixel for pixel in row for _ in range(factor)] for row in rows for _ in range(factor)]


def gray(rows):
    def mix(r, g, b, a):
        level = round(0.299 * r + 0.587 * g + 0.114 * b)
        return level, level, level, a

    return [[mix(*pixel) for pixel in row] for row in rows]


def blended(pixel, below):
    alpha = pixel[3]
    return tuple((c * alpha + b * (255 - alpha)) / 255 for c, b in zip(pixel, below))


def over_board(rows):
    """The picture over squares that begin in its corner."""
    side, first, second = SQUARE
    return [
        [blended(pixel, second if (x // side + y // side) % 2 else first) for x, pixel in enumerate(row)]
        for y, row in enumerate(rows)
    ]


def layered(rows, below, opacity):
    """A layered window, as it is shown here. Without a compositing manager, Wine lets what is behind be seen where the
    window is entirely clear, and nowhere else: all other pixels are shown with the premultiplied colours that they were
    given, times the opacity, as over black. So this proves colours, opacity, and what is clear. It cannot prove the
    alpha of half clear pixels over a background: only a system that blends shows that."""
    return [
        [pixel_over(pixel, behind, opacity / 100) for pixel, behind in zip(row, back)]
        for row, back in zip(rows, below)
    ]


def pixel_over(pixel, behind, opacity):
    alpha = pixel[3] * opacity
    if 0 < alpha < 2:  # may have been rounded to clear
        return None
    return tuple(c * alpha / 255 for c in pixel[:3]) if alpha else behind


def shaped(rows):
    """Only what is more than half opaque, over white."""
    return [[blended(pixel, (255, 255, 255)) if pixel[3] >= 128 else DESKTOP for pixel in row] for row in rows]


class Test:
    def __init__(self, driver, display):
        self.driver, self.display = driver, display
        self.passed = self.failed = 0
        self.inside = (0, 0, 0, 0)

    def say(self, line):
        self.driver.stdin.write(line + "\n")
        self.driver.stdin.flush()
        return self.driver.stdout.readline().rstrip("\r\n")

    def screen(self):
        command = ["import", "-display", self.display, "-window", "root", "-depth", "8", "rgb:-"]
        return subprocess.run(command, stdout=subprocess.PIPE, check=False).stdout

    def title(self):
        words = self.say("wait " + VIEWER).split(" ", 4)
        if len(words) == 5:
            self.inside = tuple(map(int, words[:4]))
        return words[-1]

    def middle(self, width, height):
        """Where a picture of this size lies in the window, as the viewer centres it."""
        left, top, right, bottom = self.inside
        return left + (right - left - width) // 2, top + (bottom - top - height) // 2

    def differences(self, rows, corner):
        """How many pixels of the screen, of those in sight, are not as expected."""
        data, count = self.screen(), 0
        left, top, right, bottom = self.inside
        if len(data) != SCREEN[0] * SCREEN[1] * 3:
            return -1
        for y, row in enumerate(rows, corner[1]):
            if not top <= y < bottom:
                continue
            for x, pixel in enumerate(row, corner[0]):
                at = (y * SCREEN[0] + x) * 3
                # Drawing may truncate or round more than once.
                if pixel and left <= x < right and any(abs(data[at + i] - pixel[i]) > 3 for i in range(3)):
                    count += 1
        return count

    def check(self, name, rows, corner=None, title=""):
        """Waits until the window shows the picture, in its middle or with its corner at a point of the screen."""
        start = time.monotonic()
        while True:
            said = self.title() if title else ""
            place = corner or self.middle(len(rows[0]), len(rows))
            wrong = self.differences(rows, place)
            if wrong == 0 and title in said:
                self.passed += 1
                return
            if time.monotonic() - start > PATIENCE:
                break
            time.sleep(0.1)
        self.failed += 1
        kept = BUILD / f"viewer-{name.replace(' ', '-')}.png"
        subprocess.run(["import", "-display", self.display, "-window", "root", str(kept)], check=False)
        print(f"FAILED: {name}: {wrong} pixels differ, title {said!r}; see {kept}")

    def answer_dialog(self, key, file):
        """Types a name into the dialog that a key opens, and waits until it is gone: the next one looks alike."""
        self.say("key " + key)
        self.say("wait #32770")
        self.say(f"type {windows_path(file)}")
        self.say("gone #32770")

    def check_layers(self, file, rows, corner):
        """Layered windows over what the screen shows."""
        data = self.screen()
        pixel = [tuple(data[i : i + 3]) for i in range(0, len(data), 3)]
        starts = [y * SCREEN[0] + corner[0] for y, _ in enumerate(rows, corner[1])]
        below = [pixel[start : start + len(rows[0])] for start in starts]
        for opacity in (100, 50):
            said = self.say(f"layer {corner[0]} {corner[1]} {opacity} {windows_path(file)}")
            if said != "shown":
                print("the driver says:", said)
            self.check(f"layered window {opacity}", layered(rows, below, opacity), corner)
        self.say("unlayer")
        self.check("no layered window", below, corner)

    def run(self, folder):
        lantern, butterfly = (pixels_of(PICTURES / name) for name in ("lantern.png", "butterfly-interlaced.png"))
        sprite = pixels_of(PICTURES / "sprite-4-bit.png")
        for name in ("butterfly-interlaced.png", "lantern.png", "sprite-4-bit.png"):
            shutil.copy(PICTURES / name, folder)
        (folder / "broken.png").write_bytes((PICTURES / "lantern.png").read_bytes()[:60])
        viewer = BUILD / "samples/viewer/viewer.exe"
        self.say(f'run "{windows_path(viewer)}" "{windows_path(folder / "lantern.png")}"')

        self.check("opened", over_board(lantern), title="lantern.png - 240 x 300 - 100 %")
        left, top = self.middle(240, 300)
        self.check("background", [[BACKGROUND] * 8] * 300, (left - 8, top))
        self.check_layers(folder / "butterfly-interlaced.png", butterfly, (left, top))
        self.say("key r")
        self.check("turned", over_board(turned(lantern)), title="300 x 240")
        self.say("key m")
        self.check("mirrored", over_board(mirrored(turned(lantern))))
        self.say("key g")
        self.check("gray", over_board(gray(mirrored(turned(lantern)))))
        self.say("key ctrl+c")
        for key in ("g", "m", "shift+R"):
            self.say("key " + key)
        self.check("turned back", over_board(lantern))

        for _ in range(2):  # 150 and 200 per cent
            self.say("key plus")
        self.check("enlarged", over_board(enlarged(lantern, 2)), title="200 %")
        # Dragged down and to the right as far as it goes: no further than to its corner, and across centred.
        left, top = self.inside[:2]
        self.say(f"drag {left + 10} {top + 10} {left + 400} {top + 400}")
        self.check("dragged", over_board(enlarged(lantern, 2)), (self.middle(480, 600)[0], top))
        # What lies under the pointer stays there: half as far again is all between it and the picture's corner.
        left = self.middle(480, 600)[0]
        self.say(f"wheel {left + 300} {top + 200} 1")
        self.check("about the pointer", over_board(enlarged(lantern, 3)), (left - 150, top - 100), title="300 %")
        self.say("key 0")
        self.check("actual size", over_board(lantern), title="100 %")

        self.say("key next")
        self.check("next file", over_board(sprite), title="sprite-4-bit.png - 24 x 24")
        self.say("key next")
        self.check("broken file", [[BACKGROUND] * 100] * 100, title="cannot open broken.png: ")
        self.say(f"drop {VIEWER} {windows_path(folder / 'butterfly-interlaced.png')}")
        self.check("dropped", over_board(butterfly), title="butterfly-interlaced.png - 280 x 220 - 100 %")
        self.say("key ctrl+v")
        self.check("pasted", over_board(gray(mirrored(turned(lantern)))), title="pasted - 300 x 240")
        self.say(f"files {windows_path(folder / 'butterfly-interlaced.png')}")
        self.say("key ctrl+v")
        self.check("pasted file", over_board(butterfly), title="butterfly-interlaced.png")

        # Around the shape the desktop is seen, and no viewer; afterwards it is back.
        corner = self.middle(280, 220)
        self.say("key s")
        self.say("wait " + SHAPE)
        self.check("shape", shaped(butterfly), corner)
        self.say("key s")
        self.say("gone " + SHAPE)
        self.check("no shape", over_board(butterfly), title="butterfly-interlaced.png")
        # What nobody could see does not hide the viewer.
        subprocess.run(["convert", "-size", "9x9", "xc:none", f"PNG32:{folder / 'clear.png'}"], check=True)
        self.say(f"drop {VIEWER} {windows_path(folder / 'clear.png')}")
        self.check("clear", over_board([[(0, 0, 0, 0)] * 9] * 9), title="clear.png")
        self.say("key s")
        self.check("clear shape", [[BACKGROUND] * 4] * 4, self.inside[:2], title="cannot show the shape: ")
        self.say(f"drop {VIEWER} {windows_path(folder / 'butterfly-interlaced.png')}")
        self.check("dropped again", over_board(butterfly), title="butterfly-interlaced.png")
        # The dialogs: what is saved is what is shown.
        self.say("key r")
        self.answer_dialog("ctrl+s", folder / "saved.png")
        self.check("saved", over_board(turned(butterfly)), title="butterfly-interlaced.png - 220 x 280")
        self.answer_dialog("ctrl+o", folder / "saved.png")
        self.check("opened again", over_board(turned(butterfly)), title="saved.png - 220 x 280")

        self.say("close " + VIEWER)
        ended = self.say("gone " + VIEWER) == "gone"
        self.passed += ended
        self.failed += not ended


def windows_path(path):
    return "Z:" + str(path.absolute()).replace("/", "\\")


def main():
    # The server says which display was free.
    reading, writing = os.pipe()
    options = ["-displayfd", str(writing), "-screen", "0", "%dx%dx24" % SCREEN, "-dpi", "96", "-br", "-nolisten", "tcp"]
    server = subprocess.Popen(["Xvfb", *options], pass_fds=[writing], stderr=subprocess.DEVNULL)
    os.close(writing)
    with os.fdopen(reading) as said:
        display = ":" + said.readline().strip()
    os.environ["PIXKIT_WINE_DISPLAY"] = display
    stop = [RUNNER[0], RUNNER[1].replace("run", "stop")]
    subprocess.run(stop, check=False)  # what a run that was broken off may have left
    driver = subprocess.Popen(
        [*RUNNER, str(BUILD / "tests/com/viewer/viewer-driver.exe")],
        stdin=subprocess.PIPE,
        stdout=subprocess.PIPE,
        text=True,
    )
    test = Test(driver, display)
    try:
        with tempfile.TemporaryDirectory() as folder:
            test.run(pathlib.Path(folder))
    except (OSError, ValueError) as problem:
        test.failed += 1
        print("FAILED:", problem)
    finally:
        subprocess.run(stop, check=False)
        driver.kill()
        server.terminate()
        server.wait()
    print(f"{test.passed} passed, {test.failed} failed")
    return 1 if test.failed else 0


if __name__ == "__main__":
    sys.exit(main())
