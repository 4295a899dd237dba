#!/usr/bin/env python3
"""Makes the Windows icon (.ico) of the program from packaging/tkquarv.svg:
each size drawn by rsvg-convert, stored as PNG inside the .ico (as Windows
reads it since Vista).
    make_icon.py SVG OUT.ico"""

import struct
import subprocess
import sys

SIZES = (16, 24, 32, 48, 64, 256)


def main():
    svg, out = sys.argv[1], sys.argv[2]
    images = [subprocess.run(["rsvg-convert", "-w", str(s), "-h", str(s), svg],
                             check=True, capture_output=True).stdout for s in SIZES]
    head = struct.pack("<HHH", 0, 1, len(images))
    offset = len(head) + 16 * len(images)
    entries = b""
    for size, png in zip(SIZES, images):
        dim = 0 if size >= 256 else size  # 0 stands for 256
        entries += struct.pack("<BBBBHHII", dim, dim, 0, 0, 1, 32, len(png), offset)
        offset += len(png)
    with open(out, "wb") as f:
        f.write(head + entries + b"".join(images))


if __name__ == "__main__":
    main()
