#!/usr/bin/env python3
"""Prints how fast each stroke of a kept ink packet stream was. Needs no pad: python_ink.py signature.ink"""

import math
import sys
from pathlib import Path

from scribera import read_ink


def main() -> None:
    start = 0
    points = read_ink(Path(sys.argv[1]).read_text())
    for end, point in enumerate(points):
        if not point.is_stroke_end:
            continue
        stroke = points[start : end + 1]
        way = sum(math.dist((a.x, a.y), (b.x, b.y)) for a, b in zip(stroke, stroke[1:]))
        seconds = (point.tick - stroke[0].tick) / 1000
        print(f"{len(stroke)} points, {way:.0f} pad units in {seconds:.2f} s")
        start = end + 1


if __name__ == "__main__":
    main()
