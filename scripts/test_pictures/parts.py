# SPDX-License-Identifier: MIT
"""What the pictures of several formats are made of."""
import random


def noise(seed, count):
    return random.Random(seed).randbytes(count)


def changed(data, at, replacement):
    """`data` with other bytes at an offset; a negative one counts from the end."""
    at %= len(data)
    return data[:at] + replacement + data[at + len(replacement):]


def bgra(width, height, alpha, premultiplied):
    """Pixels whose alpha comes from a function of x and y."""
    source = random.Random(width * 100 + height)
    out = bytearray()
    for y in range(height):
        for x in range(width):
            a = alpha(x, y)
            out += bytes(source.randrange(a + 1 if premultiplied else 256) for _ in range(3)) + bytes([a])
    return bytes(out)


ALPHAS = {"none": lambda x, y: 255, "zero": lambda x, y: 0, "simple": lambda x, y: 255 * ((x + y) % 2),
          "complex": lambda x, y: (x * 13 + y * 29) % 256, "late": lambda x, y: 0 if y < 3 else 255 - 90 * (x % 2)}
