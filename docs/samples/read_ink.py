#!/usr/bin/env python3
"""Prints the strokes of an ink packet stream. Needs no pad and no library: read_ink.py signature.ink"""

import base64
import struct
import sys
from pathlib import Path

# x, y, pressure, status, padding, tick in milliseconds, seconds since 1970
RECORD = struct.Struct("<HhhBBqq")


def points(text: str) -> list[tuple[int, ...]]:
    data = base64.b64decode("".join(text.split()), validate=True)  # mail and editors break lines
    if len(data) % RECORD.size != 1 or data[-1] != 0:
        raise ValueError(f"{len(data)} bytes are not whole records and one zero byte")
    return list(RECORD.iter_unpack(data[:-1]))


def main() -> None:
    stroke: list[tuple[int, ...]] = []
    number = 0
    for point in points(Path(sys.argv[1]).read_text()):
        stroke.append(point)
        status, tick = point[3], point[5]
        if status == 1:
            number += 1
            strongest = max(each[2] for each in stroke)
            print(f"stroke {number}: {len(stroke)} points, {tick - stroke[0][5]} ms, pressure up to {strongest}")
            stroke = []


if __name__ == "__main__":
    main()
