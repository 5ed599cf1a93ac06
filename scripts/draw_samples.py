#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Draws the pictures under samples/pictures/, one for each kind of PNG file. Needs nothing but Python.

    scripts/draw_samples.py [FOLDER]
"""
import math
import os
import sys

sys.dont_write_bytecode = True  # no cache folder beside the scripts
from png_writer import write_png

# --- numbers


def mix(a, b, t):
    return a + (b - a) * t


def mix_colour(a, b, t):
    return tuple(mix(x, y, t) for x, y in zip(a, b))


def clamp(x):
    return 0.0 if x < 0 else 1.0 if x > 1 else x


def smooth(edge0, edge1, x):
    t = clamp((x - edge0) / (edge1 - edge0))
    return t * t * (3 - 2 * t)


def gradient(stops, t):
    """Colour at t of [(position, colour), ...], positions ascending."""
    if t <= stops[0][0]:
        return stops[0][1]
    for (p0, c0), (p1, c1) in zip(stops, stops[1:]):
        if t <= p1:
            return mix_colour(c0, c1, (t - p0) / (p1 - p0))
    return stops[-1][1]


def rgb(text):
    return tuple(int(text[i:i + 2], 16) / 255 for i in (0, 2, 4))


def hash01(x, y, seed):
    """The same numbers on every machine."""
    n = (x * 374761393 + y * 668265263 + seed * 2147483647) & 0xFFFFFFFF
    n = ((n ^ (n >> 13)) * 1274126177) & 0xFFFFFFFF
    return ((n ^ (n >> 16)) & 0xFFFF) / 65535


def noise(x, y, seed):
    xi, yi = math.floor(x), math.floor(y)
    fx, fy = smooth(0, 1, x - xi), smooth(0, 1, y - yi)
    top = mix(hash01(xi, yi, seed), hash01(xi + 1, yi, seed), fx)
    bottom = mix(hash01(xi, yi + 1, seed), hash01(xi + 1, yi + 1, seed), fx)
    return mix(top, bottom, fy)


def clouds(x, y, seed, octaves=4):
    total, weight, scale = 0.0, 0.5, 1.0
    for octave in range(octaves):
        total += weight * noise(x * scale, y * scale, seed + octave)
        weight, scale = weight / 2, scale * 2.03
    return total


def over(top, bottom):
    """Premultiplied (r, g, b, a) over premultiplied."""
    rest = 1 - top[3]
    return tuple(t + b * rest for t, b in zip(top, bottom))


def paint(colour, alpha):
    return (colour[0] * alpha, colour[1] * alpha, colour[2] * alpha, alpha)


def render(width, height, shade, samples=2):
    """Rows of straight (r, g, b, a); `shade(x, y)` answers premultiplied, in pixels, averaged over samples^2 points."""
    offsets = [(i + 0.5) / samples for i in range(samples)]
    rows = []
    for y in range(height):
        row = []
        for x in range(width):
            total = [0.0] * 4
            for oy in offsets:
                for ox in offsets:
                    total = [a + b for a, b in zip(total, shade(x + ox, y + oy))]
            alpha = total[3] / samples ** 2
            row.append(tuple(c / total[3] if total[3] else 0.0 for c in total[:3]) + (alpha,))
        rows.append(row)
    return rows


def quantised(rows, maximum, channels):
    """Samples from 0 to `maximum`; `channels` picks from r, g, b, a, and "y" is grey."""
    def sample(pixel, channel):
        value = sum(pixel[:3]) / 3 if channel == "y" else pixel["rgba".index(channel)]
        return int(clamp(value) * maximum + 0.5)
    return [[sample(pixel, channel) for pixel in row for channel in channels] for row in rows]


# --- pictures


def landscape(path):
    """RGB: an evening lake."""
    width, height = 384, 256
    horizon, sun = 0.62, (0.66, 0.50)
    sky_stops = [(0.0, rgb("1b2a5b")), (0.45, rgb("7a5c9e")), (0.75, rgb("f08a6c")), (1.0, rgb("ffd28a"))]
    ranges = [(0.50, 0.13, 3.0, rgb("9a7ba6"), 11), (0.555, 0.10, 5.0, rgb("5f5a8c"), 23),
              (0.60, 0.07, 8.0, rgb("34436b"), 37)]

    def scene(u, v):
        colour = gradient(sky_stops, v / horizon)
        distance = math.hypot((u - sun[0]) * 1.5, v - sun[1])
        veil = clouds(u * 4, v * 16, 5)
        colour = mix_colour(colour, rgb("ffe3c0"), 0.55 * smooth(0.46, 0.62, veil) * smooth(0.05, 0.3, v))
        colour = mix_colour(colour, rgb("fff3c4"), 0.9 * math.exp(-distance * 9))
        colour = mix_colour(colour, rgb("fffbe8"), smooth(0.062, 0.058, distance))
        for base, rise, scale, tone, seed in ranges:
            ridge = base - rise * (clouds(u * scale, 0.5, seed, 5) - 0.3)
            if v > ridge:
                haze = smooth(ridge, horizon + 0.03, v)
                colour = mix_colour(tone, rgb("e9a58f"), 0.45 * haze)
        return colour

    def shade(x, y):
        u, v = x / width, y / height
        if v <= horizon:
            colour = scene(u, v)
        else:
            depth = (v - horizon) / (1 - horizon)
            wave = (noise(u * 14, depth ** 0.5 * 34, 71) - 0.5) * (0.012 + 0.05 * depth)
            colour = scene(u + wave, max(0.0, horizon - depth * 0.52 + wave))
            colour = mix_colour(colour, rgb("0d1f3f"), 0.22 + 0.45 * depth)
            glint = math.exp(-abs(u - sun[0]) * (26 - 14 * depth)) * smooth(0.5, 0.75, noise(u * 30, depth * 60, 91))
            colour = mix_colour(colour, rgb("ffe2a0"), 0.75 * glint)
        # Reeds and a bank in front.
        bank = 0.93 + 0.05 * math.sin(u * 5 + 0.6) - 0.03 * noise(u * 40, 0, 3)
        stalk = abs(noise(u * 95, 0, 17) - 0.5)
        reed = bank - 0.16 * smooth(0.42, 0.0, u) * smooth(0.35, 0.5, stalk) * noise(u * 60, 1, 19)
        if v > min(bank, reed):
            colour = mix_colour(rgb("0b1522"), rgb("1d2b35"), clamp((v - bank) * 4))
        return paint(colour, 1.0)

    write_png(path, width, height, 2, 8, quantised(render(width, height, shade), 255, "rgb"))


def lantern(path):
    """RGBA with soft edges: a paper lantern, its glow, and coloured discs of glass."""
    width, height = 240, 300
    cx, cy = 120.0, 140.0
    discs = [(58, 226, 44, rgb("2fb7a3")), (120, 248, 40, rgb("f2b632")), (182, 226, 44, rgb("d9496b"))]

    def shade(x, y):
        distance = math.hypot(x - cx, y - cy)
        colour = paint(rgb("ffb347"), 0.75 * math.exp(-(distance / 62) ** 2 * 0.9) * smooth(120, 96, distance))
        for dx, dy, radius, tone in discs:
            d = math.hypot(x - dx, y - dy)
            rim = smooth(radius - 7, radius - 1, d)
            colour = over(paint(mix_colour(tone, (1, 1, 1), 0.45 * rim), smooth(radius + 0.6, radius - 0.6, d)
                                * (0.5 + 0.4 * rim)), colour)
        lx, ly = (x - cx) / 66, (y - cy) / 78
        r = math.hypot(lx, ly)
        rib = 0.5 + 0.5 * math.cos(math.asin(clamp(abs(ly))) * 15)
        light = clamp(1.15 - 0.75 * r * r)
        body = mix_colour(rgb("c42f23"), rgb("ffd774"), light * (0.72 + 0.28 * rib))
        colour = over(paint(body, smooth(1.008, 0.992, r) * 0.96), colour)
        for top, bottom, half in ((54, 66, 30), (214, 226, 30)):
            inside = min(smooth(top - 0.6, top + 0.6, y), smooth(bottom + 0.6, bottom - 0.6, y),
                         smooth(half + 0.6, half - 0.6, abs(x - cx)))
            colour = over(paint(mix_colour(rgb("3a2418"), rgb("8a5a33"), 1 - abs(x - cx) / half), inside), colour)
        cord = min(smooth(1.8, 1.0, abs(x - cx)), smooth(56, 54, y), smooth(8, 9, y))
        return over(paint(rgb("6b4a2f"), cord), colour)

    write_png(path, width, height, 6, 8, quantised(render(width, height, shade), 255, "rgba"))


def compass(path):
    """Palette with partial transparency: a compass rose with a soft shadow."""
    size, centre = 256, 128.0

    def star(x, y, points, outer, inner, turn):
        """Below 0 inside; and which half of the point this is."""
        angle = math.atan2(x, -y) + turn
        part = 2 * math.pi / points
        a = (angle % part) - part / 2
        half = a > 0
        a = abs(abs(a) - part / 2)
        r = math.hypot(x, y)
        px, py = r * math.cos(a), r * math.sin(a)
        ix, iy = inner * math.cos(part / 2), inner * math.sin(part / 2)
        nx, ny = iy, outer - ix
        return ((px - outer) * nx + py * ny) / math.hypot(nx, ny), half

    def shade(x, y):
        x, y = x - centre, y - centre
        r = math.hypot(x, y)
        colour = paint((0.05, 0.06, 0.12), 0.5 * smooth(124, 96, math.hypot(x - 4, y - 7)))
        colour = over(paint(rgb("f6efe0"), smooth(108.7, 107.3, r)), colour)
        ring = min(smooth(108.7, 107.3, r), smooth(98.3, 99.7, r))
        colour = over(paint(rgb("1f4e79"), ring), colour)
        ring = min(smooth(72.7, 71.3, r), smooth(68.3, 69.7, r))
        colour = over(paint(rgb("c9a24a"), ring), colour)
        tick = abs(((math.atan2(y, x) * 36 / math.pi) + 0.5) % 1 - 0.5) * r * math.pi / 36
        if 86 < r < 98:
            colour = over(paint(rgb("1f4e79"), smooth(1.4, 0.7, tick) * smooth(86, 88, r) * smooth(98, 96, r)), colour)
        for turn, outer, inner, light, dark in ((math.pi / 4, 74, 20, "d9b65f", "9c7426"),
                                                (0.0, 96, 22, "d8503f", "8f2a22")):
            distance, half = star(x, y, 4, outer, inner, turn)
            colour = over(paint(rgb(light if half else dark), smooth(0.7, -0.7, distance)), colour)
        return over(paint(rgb("f6efe0"), smooth(7.7, 6.3, r)), colour)

    rows = render(size, size, shade, 3)
    # Few enough levels for one palette; transparent entries first, as tRNS wants them.
    def key(pixel):
        alpha = round(clamp(pixel[3]) * 15)
        levels = 20 if alpha == 15 else 3
        return (alpha,) + tuple(round(clamp(c) * levels) / levels if alpha else 0.0 for c in pixel[:3])

    counts = {}
    for row in rows:
        for pixel in row:
            counts[key(pixel)] = counts.get(key(pixel), 0) + 1
    kept = sorted(sorted(counts, key=lambda k: (-counts[k], k))[:224])
    nearest = {k: min(range(len(kept)), key=lambda i: sum((a - b) ** 2 for a, b in zip(
        (k[0] / 5,) + k[1:], (kept[i][0] / 5,) + kept[i][1:]))) for k in counts}
    palette = [tuple(int(c * 255 + 0.5) for c in k[1:]) for k in kept]
    transparency = bytes(k[0] * 17 for k in kept if k[0] < 15)
    write_png(path, size, size, 3, 8, [[nearest[key(p)] for p in row] for row in rows], palette, transparency)


def moon(path):
    """Grey: a cratered moon among stars."""
    size = 256
    craters = [(hash01(i, 1, 7) * 2 - 1, hash01(i, 2, 7) * 2 - 1, 0.03 + 0.17 * hash01(i, 3, 7) ** 3) for i in range(90)]
    light = (-0.55, -0.42, 0.72)

    def height_at(x, y):
        level = 0.10 * clouds(x * 3 + 9, y * 3 + 9, 31, 5)
        for cx, cy, radius in craters:
            d = math.hypot(x - cx, y - cy) / radius
            if d < 1.4:
                level += radius * 0.22 * (min(d * d, 1) - 1 + 0.55 * math.exp(-((d - 1) / 0.16) ** 2))
        return level

    def shade(px, py):
        x, y = (px - 128) / 108, (py - 128) / 108
        r = math.hypot(x, y)
        star = hash01(int(px) // 3, int(py) // 3, 77)
        spot = max(0.0, 1 - math.hypot(px % 3 - 1.5, py % 3 - 1.5) / 1.3)
        grey = 0.03 + 0.05 * math.exp(-(r - 1) * 6) + (smooth(0.982, 1, star) * spot * 0.9)
        if r < 1:
            step = 0.012
            base = height_at(x, y)
            z = math.sqrt(1 - r * r)
            nx = x - (height_at(x + step, y) - base) / step * 0.8
            ny = y - (height_at(x, y + step) - base) / step * 0.8
            length = math.sqrt(nx * nx + ny * ny + z * z)
            lit = max(0.0, (nx * light[0] + ny * light[1] + z * light[2]) / length)
            sea = smooth(0.44, 0.58, clouds(x * 1.7 + 4, y * 1.7 + 4, 43))
            surface = (0.93 - 0.36 * sea) * (0.06 + 0.98 * lit)
            grey = mix(grey, surface, smooth(1.0, 0.99, r))
        return (grey, grey, grey, 1.0)

    write_png(path, size, size, 0, 8, quantised(render(size, size, shade, 1), 255, "y"))


def aurora(path):
    """RGB with 16 bits a sample: northern lights over snow."""
    width, height = 256, 176

    def shade(x, y):
        u, v = x / width, y / height
        colour = gradient([(0, rgb("050817")), (0.7, rgb("11284a")), (1, rgb("1f4a5e"))], v)
        for seed, base, tone, strength in ((3, 0.50, rgb("39f2a1"), 1.0), (8, 0.42, rgb("4fc3ff"), 0.6),
                                           (15, 0.33, rgb("b26bff"), 0.55)):
            edge = base + 0.16 * math.sin(u * 5.5 + seed) + 0.10 * (noise(u * 5, 0, seed) - 0.5)
            above = edge - v
            curtain = 0.45 + 0.55 * noise(u * 34 + 3 * above, 0, seed + 1)
            glow = smooth(-0.03, 0.03, above) * math.exp(-max(0.0, above) * 5.2) * curtain * strength
            colour = tuple(c + t * glow * 0.85 for c, t in zip(colour, tone))
        ridge = 0.80 - 0.12 * (clouds(u * 5, 0, 51, 5) - 0.2)
        if v > ridge:
            snow = mix_colour(rgb("0c1830"), rgb("6fb8b8"), 0.55 * smooth(ridge + 0.16, ridge, v) *
                              clouds(u * 22, v * 30, 61))
            colour = mix_colour(colour, snow, smooth(ridge, ridge + 0.008, v))
        return paint(tuple(min(1.0, c) for c in colour), 1.0)

    write_png(path, width, height, 2, 16, quantised(render(width, height, shade, 1), 65535, "rgb"))


def smoke(path):
    """Grey and alpha with 16 bits a sample: a wisp of smoke."""
    width, height = 200, 260

    def shade(x, y):
        u, v = x / width, y / height
        rise = 1 - v
        centre = 0.5 + 0.17 * rise * math.sin(7.5 * rise + 0.5) + 0.30 * rise * (noise(u * 3, v * 5, 21) - 0.5)
        spread = 0.025 + 0.20 * rise ** 1.3
        body = math.exp(-((u - centre) / spread) ** 2)
        swirl = clouds(u * 6 + 1.7 * noise(u * 4, v * 4, 5), v * 6 + rise, 13, 5)
        alpha = clamp(body * (0.35 + 2.2 * smooth(0.25, 0.65, swirl)) * smooth(0.0, 0.22, v) * smooth(1.0, 0.93, v))
        grey = 0.55 + 0.45 * smooth(0.3, 0.7, swirl)
        return paint((grey, grey, grey), alpha)

    write_png(path, width, height, 4, 16, quantised(render(width, height, shade, 1), 65535, "ya"), filters="cycle")


def butterfly(path):
    """RGBA, interlaced: a butterfly."""
    width, height = 280, 220

    def wing(x, y, cx, cy, rx, ry, turn):
        """Below 1 inside."""
        dx, dy = x - cx, y - cy
        c, s = math.cos(turn), math.sin(turn)
        return math.hypot((dx * c + dy * s) / rx, (dy * c - dx * s) / ry)

    def shade(x, y):
        fx, fy = abs(x - width / 2), y - 112
        colour = paint((0.02, 0.05, 0.12), 0.35 * smooth(1.12, 0.85, min(
            wing(fx, fy - 10, 66, -42, 74, 46, -0.62), wing(fx, fy - 10, 50, 42, 56, 38, 0.75))))
        for cx, cy, rx, ry, turn, inner, outer, spot in (
                (50, 40, 56, 38, 0.75, "ffd166", "ef6f3c", (66, 56, 11)),
                (66, -44, 74, 46, -0.62, "ffe08a", "e4572e", (98, -70, 12))):
            r = wing(fx, fy, cx, cy, rx, ry, turn)
            angle = math.atan2(fy - cy * 0.15, fx)
            vein = abs((angle * 6.5) % 1 - 0.5)
            tone = mix_colour(rgb(inner), rgb(outer), smooth(0.1, 1.0, math.hypot(fx, fy) / 125))
            tone = mix_colour(tone, rgb("2a1a1f"), 0.75 * smooth(0.06, 0.02, vein) * smooth(0.0, 0.5, math.hypot(fx, fy) / 60))
            tone = mix_colour(tone, rgb("2a1a1f"), smooth(0.86, 0.90, r))
            dot = abs((math.atan2(fy - cy, fx - cx) * 4.2) % 1 - 0.5)
            tone = mix_colour(tone, (1, 1, 1), smooth(0.16, 0.10, dot) * smooth(0.035, 0.02, abs(r - 0.94)))
            eye = math.hypot(fx - spot[0], fy - spot[1])
            tone = mix_colour(tone, rgb("2a1a1f"), smooth(spot[2] + 0.7, spot[2] - 0.7, eye))
            tone = mix_colour(tone, rgb("6fd3ff"), smooth(spot[2] * 0.6 + 0.7, spot[2] * 0.6 - 0.7, eye))
            colour = over(paint(tone, smooth(1.01, 0.99, r) * 0.94), colour)
        body = math.hypot(fx / 6.5, (fy - 6) / 46)
        colour = over(paint(mix_colour(rgb("6b4a3a"), rgb("241519"), clamp(body)), smooth(1.06, 0.94, body)), colour)
        feeler = abs(fx - 3 - 0.010 * (fy + 40) ** 2 * 0.9)
        if -92 < fy < -34:
            colour = over(paint(rgb("241519"), smooth(1.7, 0.7, feeler) * smooth(-92, -88, fy)), colour)
        return over(paint(rgb("241519"), smooth(3.6, 2.4, math.hypot(fx - 27, fy + 90))), colour)

    write_png(path, width, height, 6, 8, quantised(render(width, height, shade), 255, "rgba"), interlaced=True)


def rings(path):
    """RGB with one transparent colour (tRNS): hard-edged discs on a key colour."""
    size = 200
    key = (255, 0, 255)
    discs = [(74, 70, 52, (38, 104, 178)), (126, 70, 52, (226, 164, 32)), (100, 116, 52, (214, 58, 62))]

    rows = []
    for y in range(size):
        row = []
        for x in range(size):
            pixel = key
            for cx, cy, radius, tone in discs:
                d = math.hypot(x + 0.5 - cx, y + 0.5 - cy - 7)
                if radius - 16 < d < radius:
                    lit = 0.72 + 0.28 * math.cos((d - radius + 8) / 8 * 1.3 + 0.5)
                    pixel = tuple(int(c * lit + 0.5) for c in tone)
            row += pixel
        rows.append(row)
    write_png(path, size, size, 2, 8, rows, transparency=b"\0\xff\0\0\0\xff")


SPRITE = """
........................
.......oooooooooo.......
.....oorrrrrrrrrroo.....
....orrwwrrrrrrwwrro....
...orrwwwwrrrrwwwwrro...
...orrwwwwrrrrwwwwrro...
..orrrrwwrrrrrrwwrrrro..
..orrrrrrrrwwrrrrrrrro..
..orwrrrrrwwwwrrrrrwro..
..owwwrrrrwwwwrrrrwwwo..
..orwrrrrrrwwrrrrrrwro..
..ooorrrrrrrrrrrrrrooo..
....oooossssssssoooo....
......osssssssssso......
......ossossssosso......
......ossossssosso......
......osssssssssso......
......osspsssspsso......
......ossssoosssso......
.......osssssssso.......
........oosssoo.........
..gg..gg..ooo..gg..gg...
.gggggggggggggggggggggg.
........................
"""


def sprite(path):
    """Palette at four bits, the size of an icon: a toadstool."""
    names = ".orwspg"
    palette = [(0, 0, 0), (44, 24, 32), (214, 48, 49), (255, 246, 230), (245, 222, 179), (255, 150, 140), (86, 170, 84)]
    lines = SPRITE.split()
    rows = [[names.index(c) for c in line] for line in lines]
    write_png(path, len(lines[0]), len(lines), 3, 4, rows, palette, b"\0")


def halftone(path):
    """Grey at one bit: a sphere in printer's dots."""
    size = 240

    def tone(x, y):
        u, v = (x - 120) / 92, (y - 112) / 92
        r = math.hypot(u, v)
        if r < 1:
            z = math.sqrt(1 - r * r)
            lit = max(0.0, -0.5 * u - 0.55 * v + 0.67 * z)
            return clamp(0.08 + 0.85 * lit + 0.5 * lit ** 24)
        shadow = math.exp(-(((x - 142) / 82) ** 2 + ((y - 214) / 15) ** 2))
        return 0.93 - 0.80 * shadow - 0.18 * smooth(0, size, y)

    rows = []
    for y in range(size):
        row = []
        for x in range(size):
            a, b = (x + y) / 5.66, (x - y) / 5.66
            screen = 0.5 + 0.25 * (math.cos(a * 2 * math.pi / 1.0) + math.cos(b * 2 * math.pi / 1.0))
            row.append(int(tone(x, y) > 0.04 + 0.92 * screen))
        rows.append(row)
    write_png(path, size, size, 0, 1, rows)


PICTURES = {
    "landscape.png": landscape,
    "lantern.png": lantern,
    "compass-palette.png": compass,
    "moon-grey.png": moon,
    "aurora-16-bit.png": aurora,
    "smoke-grey-alpha-16-bit.png": smoke,
    "butterfly-interlaced.png": butterfly,
    "rings-colour-key.png": rings,
    "sprite-4-bit.png": sprite,
    "halftone-1-bit.png": halftone,
}


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    folder = sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, "..", "samples", "pictures")
    os.makedirs(folder, exist_ok=True)
    for name, draw in PICTURES.items():
        path = os.path.join(folder, name)
        draw(path)
        print(f"{os.path.getsize(path):8}  {name}")


if __name__ == "__main__":
    main()
