#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Looks at the pages of `pixkit gallery`, `pixkit effects` and the reference in a real browser: Chromium, by its WebDriver.

  browser_test.py COMMAND [FOLDER]   such as build/release/src/cli/pixkit; FOLDER gets screenshots, for people to look at

The last line is "N passed, N failed". Ends with 77 where there is no Chromium.
"""
import base64
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time
import urllib.request

ROOT = pathlib.Path(__file__).resolve().parents[2]
ELEMENT = "element-6066-11e4-a52e-4f735466cecf"  # how the WebDriver standard calls one
KEYS = {"Tab": "\ue004", "Enter": "\ue007", "Escape": "\ue00c", "End": "\ue010", "Left": "\ue012", "Right": "\ue014"}


class Browser:
    """A window without a screen. Waits for nothing: what the page does, it does within one turn of its own."""

    def __init__(self, profile):
        self.driver = subprocess.Popen(["chromedriver", "--port=0"], stdout=subprocess.PIPE, text=True)
        port = next(line for line in self.driver.stdout if "started successfully on port" in line).split()[-1].rstrip(".")
        self.session = f"http://127.0.0.1:{port}/session"
        arguments = ["--headless=new", "--no-sandbox", "--disable-dev-shm-usage", "--disable-gpu", f"--user-data-dir={profile}"]
        options = {"args": arguments, "binary": shutil.which("chromium")}
        wanted = {"browserName": "chrome", "goog:chromeOptions": options, "goog:loggingPrefs": {"browser": "ALL"}}
        answer = self.call("", {"capabilities": {"alwaysMatch": wanted}})
        self.session += "/" + answer["sessionId"]

    def call(self, path, body=None):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.session + path, data, {"Content-Type": "application/json"})
        with urllib.request.urlopen(request, timeout=120) as answer:
            return json.load(answer)["value"]

    def open(self, page):
        self.call("/url", {"url": page.as_uri()})

    def do(self, script):
        """What an asynchronous function of that body returns."""
        wrapped = "const done = arguments[0]; (async () => {" + script + "})().then(done, error => done('' + error));"
        return self.call("/execute/async", {"script": wrapped, "args": []})

    def press(self, *keys):
        actions = [{"type": kind, "value": KEYS.get(key, key)} for key in keys for kind in ("keyDown", "keyUp")]
        self.call("/actions", {"actions": [{"type": "key", "id": "keys", "actions": actions}]})

    def click(self, selector):
        element = self.call("/element", {"using": "css selector", "value": selector})
        self.call(f"/element/{element[ELEMENT]}/click", {})

    def tell(self, command, **parameters):
        self.call("/goog/cdp/execute", {"cmd": command, "params": parameters})

    def complaints(self):
        return [entry["message"] for entry in self.call("/se/log", {"type": "browser"})]

    def end(self):
        try:
            urllib.request.urlopen(urllib.request.Request(self.session, method="DELETE"), timeout=30).close()
        finally:
            self.driver.terminate()
            self.driver.wait()


class Test:
    def __init__(self, command, screenshots):
        self.command, self.screenshots = command, screenshots
        self.passed = self.failed = 0
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.browser = Browser(self.folder / "profile")

    def check(self, what, found, expected=True):
        if found == expected:
            self.passed += 1
        else:
            self.failed += 1
            print(f"FAILED: {what}: {found!r} instead of {expected!r}")

    def shoot(self, name):
        if self.screenshots:
            (self.screenshots / f"{name}.png").write_bytes(base64.b64decode(self.browser.call("/screenshot")))

    def pixkit(self, *arguments):
        subprocess.run([self.command, *arguments, "--quiet"], check=True, stdin=subprocess.DEVNULL)

    def make_gallery(self):
        pictures = self.folder / "pictures"
        before = self.folder / "before"
        for folder in (pictures, before):
            folder.mkdir()
        samples = sorted((ROOT / "samples/pictures").glob("*.png"))
        names = [b"plain.jpg", b"a#1 50% ?.png", b"<b>\"q\"'.gif", b"caf\xe9.jpg", b"new\nline.png", b"x.tga", b"y.bmp", b"z.ico"]
        for number, name in enumerate(names):
            made = self.folder / ("made" + os.fsdecode(name[-4:]))
            sample = samples[number % len(samples)]
            self.pixkit("convert", str(sample), str(made), "--overwrite")
            os.rename(made, os.fsencode(pictures) + b"/" + name)
        self.pixkit("convert", str(samples[0]), str(before / "plain.png"), "--invert")
        self.pixkit("gallery", str(pictures), "--recursive", "--before", str(before), "-o", str(self.folder / "gallery"))
        return self.folder / "gallery/index.html", len(names)

    def look(self):
        page, count = self.make_gallery()
        browser = self.browser
        browser.tell("Emulation.setDeviceMetricsOverride", width=1200, height=800, deviceScaleFactor=1, mobile=False)
        browser.open(page)
        self.check("every thumbnail and every picture shows", browser.do("""
            const urls = [...document.querySelectorAll('li img')].map(image => image.src);
            for (const link of document.querySelectorAll('li a')) urls.push(link.href);
            let shown = 0;
            for (const url of urls) { const image = new Image(); image.src = url; await image.decode(); ++shown; }
            return shown;"""), 2 * count + 1)
        self.shoot("gallery")
        self.check_keys(count)
        self.check_widths_and_colours("gallery")
        self.check_without_script(page, count)
        self.check("nothing is complained of", browser.complaints(), [])
        effects = self.folder / "effects"
        self.pixkit("effects", str(next((ROOT / "samples/pictures").glob("*.png"))), "-o", str(effects))
        browser.open(effects / "index.html")
        self.check_widths_and_colours("effects")
        self.check("the page of effects complains of nothing", browser.complaints(), [])
        self.look_at_reference()
        self.measure()

    def look_at_reference(self):
        folder, browser = self.folder / "reference", self.browser
        subprocess.run([sys.executable, ROOT / "scripts/reference.py", folder], check=True, stdout=subprocess.DEVNULL)
        where = lambda: browser.call("/url").rpartition("/")[2]
        found = "return [...document.querySelectorAll('#found a')].map(link => link.firstChild.data)"
        browser.open(folder / "index.html")
        browser.press("/", *"trim")
        self.check("what begins with the word comes before what has it inside", browser.do(found)[:2], ["TrimImage", "trimLeft"])
        browser.press("Enter")
        self.check("a member's name leads to its page", where(), "TrimImage.html")
        self.check_widths_and_colours("reference")
        browser.press("/", *"imgTGA", "Enter")
        self.check("an enumerator's name leads to its line", where(), "eImageFormat.html#imgTGA")
        browser.press("/", *"no such word")
        self.check("what there is not, is not found", browser.do(found), [])
        self.check("the reference complains of nothing", browser.complaints(), [])

    def check_keys(self, count):
        state = """const viewer = document.querySelector('#viewer'), pair = viewer.querySelector('.pair');
            await document.querySelector('#picture').decode().catch(() => 0);
            await new Promise(requestAnimationFrame); // a dialog tells in a turn of its own that it is closed
            return [viewer.open, document.querySelector('.bar b').textContent, pair.clientWidth, pair.className,
                document.querySelector('#picture').style.clipPath != '', document.activeElement.href]"""
        look = lambda: self.browser.do(state)
        self.browser.press("Tab")
        outline = self.browser.do("return getComputedStyle(document.activeElement).outlineStyle")
        self.check("the focus is seen", outline, "solid")
        first = look()[5]
        self.browser.press("Enter")
        opened = look()
        self.check("Enter opens the first picture", (opened[0], opened[1]), (True, "<b>\"q\"'.gif"))
        self.browser.press("Right")
        self.check("the right arrow leads to the next", look()[1], "a#1 50% ?.png")
        self.browser.press("End", "Right")
        self.check("behind the last there is none", look()[1], "z.ico")
        names = [opened[1]]
        self.browser.press(*["Left"] * (count + 1))
        self.check("the left arrow leads to the first", look()[1], names[0])
        width = look()[2]
        self.browser.press("+", "+")
        self.check("plus enlarges", abs(look()[2] - width * 2.25) < 2)
        self.browser.press("-", "-", "-")
        self.check("minus makes smaller", abs(look()[2] - width / 1.5) < 2)
        self.browser.press("1", "c")
        self.check("c changes what is behind", "black" in look()[3])
        self.browser.press("0")
        self.shoot("viewer")
        while look()[1] != "plain.jpg":
            self.browser.press("Right")
        self.browser.press("b")
        self.check("b shows the picture before", look()[4])
        self.shoot("before")
        self.browser.press("Escape")
        closed = look()
        self.check("Escape leads back to the picture's link", (closed[0], closed[5].endswith("plain.jpg")), (False, True))
        self.check("and not to the first one", closed[5] != first)
        self.browser.click("li:nth-child(2) img")
        self.check("a click opens a picture", look()[:2], [True, "a#1 50% ?.png"])
        self.browser.press("Escape")

    def check_widths_and_colours(self, name):
        for width, scheme in ((360, "light"), (360, "dark"), (1200, "dark")):
            self.browser.tell("Emulation.setDeviceMetricsOverride", width=width, height=740, deviceScaleFactor=2, mobile=width < 800)
            self.browser.tell("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])
            widest, page, ink = self.browser.do("""const style = getComputedStyle(document.body);
                const light = colour => colour.match(/\\d+/g).slice(0, 3).reduce((sum, part) => sum + +part, 0) / 765;
                return [document.documentElement.scrollWidth, light(style.backgroundColor), light(style.color)]""")
            self.check(f"{name}: nothing reaches beyond {width} pixels", widest <= width)
            self.check(f"{name}: {scheme} page and ink", (page < 0.3, ink > 0.7) if scheme == "dark" else (page > 0.7, ink < 0.3),
                       (True, True))
            self.shoot(f"{name}-{width}-{scheme}")
        self.browser.tell("Emulation.setEmulatedMedia", features=[])
        self.browser.tell("Emulation.setDeviceMetricsOverride", width=1200, height=800, deviceScaleFactor=1, mobile=False)

    def check_without_script(self, page, count):
        self.browser.tell("Emulation.setScriptExecutionDisabled", value=True)
        self.browser.open(page)
        self.shoot("without-script")
        self.browser.tell("Emulation.setScriptExecutionDisabled", value=False)  # which runs no scripts of the page
        self.check("without scripts all pictures are there, and nothing before them", self.browser.do("""
            const images = [...document.querySelectorAll('li img')];
            await Promise.all(images.map(image => image.decode()));
            return [images.filter(image => image.getBoundingClientRect().width > 0).length,
                getComputedStyle(document.querySelector('dialog')).display]"""), [count, "none"])
        self.browser.click("li:nth-child(5) img")
        self.check("and thumbnails are links", self.browser.call("/url").endswith("plain.jpg"))

    def measure(self):
        many = self.folder / "many"
        many.mkdir()
        sample = self.folder / "sample.jpg"
        self.pixkit("convert", str(ROOT / "samples/pictures/lantern.png"), str(sample), "--resize", "900x")
        for number in range(1000):
            os.link(sample, many / f"IMG_{number:04}.jpg")
        start = time.monotonic()
        self.pixkit("gallery", str(many), "-r", "-o", str(self.folder / "thousand"))
        made = time.monotonic() - start
        page = self.folder / "thousand/index.html"
        for _ in range(5):  # a machine that is busy gets another try, which none has over by chance
            first, whole = sorted(self.load_times(page) for _ in range(3))[1]
            if first <= 1000:
                break
        self.shoot("thousand")
        size = page.stat().st_size
        largest = max(file.stat().st_size for file in (self.folder / "thousand/thumbnails").iterdir())
        print(f"1,000 pictures: made in {made:.1f} s, page {size:,} bytes, first paint {first:.0f} ms, loaded {whole:.0f} ms")
        self.check("a page of 1,000 pictures has at most 1 MB", size <= 1_000_000)
        self.check("a thumbnail has at most 30 kB", largest <= 30_000)
        self.check("its first view takes at most a second", 0 < first <= 1000)
        self.check("all are there", self.browser.do("return document.querySelectorAll('li img').length"), 1000)

    def load_times(self, page):
        self.browser.open(page)
        return self.browser.do("""await new Promise(requestAnimationFrame);
            const paint = performance.getEntriesByName('first-contentful-paint')[0];
            return [paint ? paint.startTime : 0, performance.getEntriesByType('navigation')[0].loadEventEnd]""")

    def end(self):
        self.browser.end()
        shutil.rmtree(self.folder)
        print(f"{self.passed} passed, {self.failed} failed")
        return self.failed != 0


def main():
    if len(sys.argv) < 2:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    if not shutil.which("chromium") or not shutil.which("chromedriver"):
        print("skipped: scripts/setup.sh browser installs Chromium and its WebDriver")
        return 77
    screenshots = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else None
    test = Test(str(pathlib.Path(sys.argv[1]).resolve()), screenshots)
    try:
        test.look()
    except BaseException:
        test.end()
        raise
    return test.end()


if __name__ == "__main__":
    sys.exit(main())
