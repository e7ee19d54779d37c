"""Whether the ink is where it was asked for, looks as the library draws it, and nothing else of the page changed."""

from __future__ import annotations

import math
from dataclasses import dataclass
from pathlib import Path

import numpy

from checks import run
from pictures import DPI, Box, Mask, Pixels, dark, drawn, likeness, page_picture
from tool import Ink, Place

POINTS = 72
LARGEST_PICTURE = 20_000_000  # pixels; of larger pages the rest is compared in less detail
WHITE_ALL_AROUND = 40  # pixels of the part that is looked at


@dataclass
class View:
    """How to draw a page of a file. Poppler takes no notice of user units: the resolution makes up for them."""

    page: int
    unit: float = 1
    password: str = ""

    def options(self) -> list[str]:
        return ["-upw", self.password] if self.password else []

    def picture(self, file: Path, dpi: float, part: Box | None = None) -> Pixels:
        cut = []
        if part:
            cut = ["-x", str(int(part.left)), "-y", str(int(part.top)), "-W", str(int(part.width)), "-H", str(int(part.height))]
        return page_picture(file, self.page, dpi * self.unit, *cut, *self.options())

    def size(self, file: Path) -> tuple[float, float]:
        """In points, as it is seen."""
        told = run("pdfinfo", "-box", "-f", str(self.page), "-l", str(self.page), *self.options(), file).stdout
        words = {line.split(":")[0].split(None, 2)[-1]: line.split(":")[1].split() for line in told.splitlines()
                 if line.startswith("Page ") and line.split()[1].isdigit()}
        left, bottom, right, top = (float(word) for word in words["CropBox"])
        width, height = (right - left) * self.unit, (top - bottom) * self.unit
        return (height, width) if int(words["rot"][0]) % 180 else (width, height)


def pixels(points: float) -> float:
    return points * DPI / POINTS


def expected_box(ink: Ink, place: Place) -> Box:
    """In points."""
    height = place.width * ink.bounds.height / ink.bounds.width
    return Box(place.left, place.top, place.left + place.width, place.top + height)


def library_ink(ink: Ink, box: Box, part: Box, shape: tuple[int, ...]) -> Mask:
    scale = pixels(box.width) / ink.bounds.width
    return drawn(ink.strokes, scale, pixels(box.left) - ink.bounds.left * scale - part.left,
                 pixels(box.top) - ink.bounds.top * scale - part.top, shape)


def check_ink(before: Path, after: Path, view: View, ink: Ink, box: Box, below: float = 0) -> None:
    """The box is where the ink should be, in points; below it there may be lines so many points high."""
    width, height = (round(pixels(side)) for side in view.size(after))
    part = Box(max(0, math.floor(pixels(box.left)) - WHITE_ALL_AROUND), max(0, math.floor(pixels(box.top)) - WHITE_ALL_AROUND),
               min(width, math.ceil(pixels(box.right)) + WHITE_ALL_AROUND),
               min(height, math.ceil(pixels(box.bottom)) + WHITE_ALL_AROUND))
    old, new = view.picture(before, DPI, part), view.picture(after, DPI, part)
    assert old.shape == new.shape
    found = dark(new)
    if below:
        found[math.ceil(pixels(box.bottom) - part.top) + 1 :] = False
    alike = likeness(found, dark(old), library_ink(ink, box, part, new.shape))
    assert alike.found >= 0.995 and alike.drawn >= 0.995, alike


def check_rest(before: Path, after: Path, view: View, box: Box, below: float = 0) -> None:
    """Nothing outside of the box changed."""
    width, height = (round(pixels(side)) for side in view.size(after))
    dpi = DPI if width * height <= LARGEST_PICTURE else DPI * math.sqrt(LARGEST_PICTURE / (width * height))
    old, new = view.picture(before, dpi), view.picture(after, dpi)
    assert old.shape == new.shape
    rows, columns = numpy.nonzero((old != new).any(axis=2))
    assert rows.size
    scale = dpi / POINTS
    assert columns.min() >= math.floor(box.left * scale) - 1 and columns.max() <= math.ceil(box.right * scale) + 1
    assert rows.min() >= math.floor(box.top * scale) - 1 and rows.max() <= math.ceil((box.bottom + below) * scale) + 1


def check_page(before: Path, after: Path, view: View, ink: Ink, box: Box, below: float = 0) -> None:
    check_ink(before, after, view, ink, box, below)
    check_rest(before, after, view, box, below)
