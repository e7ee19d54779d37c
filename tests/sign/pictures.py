"""Pictures of pages as Poppler draws them, and the ink as the library draws it, both 300 dots an inch."""

from __future__ import annotations

import math
import re
import subprocess
from dataclasses import dataclass
from pathlib import Path

import numpy
from numpy.typing import NDArray

Mask = NDArray[numpy.bool_]
Pixels = NDArray[numpy.uint8]
DPI = 300


def page_picture(file: Path, page: int, dpi: float = DPI, *options: str) -> Pixels:
    """Height × width × 3; of the crop box, upright as a reader shows it."""
    made = subprocess.run(["pdftoppm", "-cropbox", "-r", str(dpi), "-f", str(page), "-l", str(page), *options, str(file)],
                          capture_output=True, timeout=120)
    assert made.stdout.startswith(b"P6"), made.stderr
    _, width, height, _ = (int(part) for part in re.match(rb"P(6)\s(\d+) (\d+)\s(\d+)\s", made.stdout).groups())  # type: ignore[union-attr]
    return numpy.frombuffer(made.stdout, dtype=numpy.uint8)[-width * height * 3 :].reshape(height, width, 3)


@dataclass
class Stroke:
    """One straight line of a drawing."""

    x1: float
    y1: float
    x2: float
    y2: float
    width: float


def strokes_of(svg: str) -> list[Stroke]:
    """What the library's own drawing consists of, in its pixels."""
    strokes = []
    width = 1.0
    for match in re.finditer(r'stroke-width="([\d.]+)"|<polyline[^>]*points="([^"]*)"', svg):
        if match[1]:
            width = float(match[1])
        else:
            numbers = [float(part) for part in re.split(r"[ ,]+", match[2].strip())]
            points = list(zip(numbers[::2], numbers[1::2], strict=True))
            strokes += [Stroke(*first, *second, width) for first, second in zip(points, points[1:])]
    assert strokes, svg[:2000]
    return strokes


@dataclass
class Box:
    left: float
    top: float
    right: float
    bottom: float

    @property
    def width(self) -> float:
        return self.right - self.left

    @property
    def height(self) -> float:
        return self.bottom - self.top


def bounds(strokes: list[Stroke]) -> Box:
    """Of the ink with its width."""
    return Box(min(min(s.x1, s.x2) - s.width / 2 for s in strokes), min(min(s.y1, s.y2) - s.width / 2 for s in strokes),
               max(max(s.x1, s.x2) + s.width / 2 for s in strokes), max(max(s.y1, s.y2) + s.width / 2 for s in strokes))


def drawn(strokes: list[Stroke], scale: float, x: float, y: float, shape: tuple[int, ...]) -> Mask:
    """The ink scaled and moved: pixels whose middle lies within a stroke."""
    ink = numpy.zeros(shape[:2], dtype=bool)
    height, width = ink.shape
    for s in strokes:
        ax, ay, bx, by = s.x1 * scale + x, s.y1 * scale + y, s.x2 * scale + x, s.y2 * scale + y
        radius = max(s.width * scale / 2, 0.5)
        left, right = max(0, math.floor(min(ax, bx) - radius)), min(width, math.ceil(max(ax, bx) + radius) + 1)
        top, bottom = max(0, math.floor(min(ay, by) - radius)), min(height, math.ceil(max(ay, by) + radius) + 1)
        if left >= right or top >= bottom:
            continue
        px, py = numpy.arange(left, right) + 0.5, (numpy.arange(top, bottom) + 0.5)[:, None]
        length = (bx - ax) ** 2 + (by - ay) ** 2
        along = numpy.clip(((px - ax) * (bx - ax) + (py - ay) * (by - ay)) / length, 0, 1) if length else numpy.zeros(1)
        distance = (px - ax - along * (bx - ax)) ** 2 + (py - ay - along * (by - ay)) ** 2
        ink[top:bottom, left:right] |= distance <= radius**2
    return ink


def widened(mask: Mask) -> Mask:
    """With the neighbours of each pixel, also those at its corners."""
    wide = mask.copy()
    wide[1:] |= mask[:-1]
    wide[:-1] |= mask[1:]
    once = wide.copy()
    wide[:, 1:] |= once[:, :-1]
    wide[:, :-1] |= once[:, 1:]
    return wide


def dark(picture: Pixels) -> Mask:
    """A quarter of a pixel is enough: lines that are thinner than one are never black."""
    result: Mask = picture.mean(axis=2) < 192
    return result


@dataclass
class Likeness:
    found: float  # the part of the page's new ink that lies on the library's
    drawn: float  # the part of the library's ink that is on the page


def likeness(new: Mask, old: Mask, library: Mask) -> Likeness:
    """Ink on what was dark before cannot be told from it."""
    expected, seen = library & ~old, new & ~old
    assert expected.any() and seen.any(), "no ink"
    return Likeness((seen & widened(library)).sum() / seen.sum(), (expected & widened(new)).sum() / expected.sum())
