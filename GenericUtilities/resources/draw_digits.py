#!/usr/bin/env python3
# SPDX-License-Identifier: LGPL-2.1-or-later
"""Makes digits.bmp from the drawing in digits.txt, both in the folder of this program."""
import pathlib
import struct

WIDTH, HEIGHT = 16, 20


def read_drawing(text):
    colours, glyphs = {}, []
    lines = iter(text.splitlines())
    for line in lines:
        words = line.split()
        if words[:1] == ["colour"]:
            colours[words[1]] = bytes.fromhex(words[2])
        elif words[:1] == ["glyph"]:
            glyphs.append([next(lines) for _ in range(HEIGHT)])
    return colours, glyphs


def pixels(colours, glyphs):
    """Bottom row first, blue before green before red."""
    rows = ("".join(glyph[y] for glyph in glyphs) for y in reversed(range(HEIGHT)))
    return b"".join(colours[name][::-1] for row in rows for name in row)


def bitmap(data, width, height):
    information = struct.pack("<IiiHHIIiiII", 40, width, height, 1, 24, 0, len(data), 0, 0, 0, 0)
    return struct.pack("<2sIHHI", b"BM", 54 + len(data), 0, 0, 54) + information + data


def main():
    folder = pathlib.Path(__file__).parent
    colours, glyphs = read_drawing((folder / "digits.txt").read_text(encoding="ascii"))
    (folder / "digits.bmp").write_bytes(bitmap(pixels(colours, glyphs), WIDTH * len(glyphs), HEIGHT))


if __name__ == "__main__":
    main()
