"""What the driver promises of places and pressures, in exact fractions.

As a program: answers cases on standard input, one a line, for the test of the driver's own arithmetic.
"""

import math
import sys
from fractions import Fraction
from typing import NamedTuple, Optional


class Axis(NamedTuple):
    minimum: int
    maximum: int
    resolution: int  # units in a millimetre, 0 when it is not told


class Pad(NamedTuple):
    left: int
    top: int
    width: int
    height: int
    pressure_limit: int


class Mounting(NamedTuple):
    fit: str = "keep"
    rotation: int = 0
    area: Optional[tuple[int, int, int, int]] = None  # left, top, width, height in micrometres


def half_up(value: Fraction) -> int:
    return math.floor(value + Fraction(1, 2))


def within(value: int, low: int, high: int) -> int:
    return max(low, min(high, value))


def used_part(x: Axis, y: Axis, pad: Pad, mounting: Mounting) -> tuple[Fraction, Fraction, Fraction, Fraction]:
    """Left, top, right and bottom of what is signed on, as parts of the device, before it is turned."""
    told = x.resolution > 0 and y.resolution > 0
    width = Fraction(abs(x.maximum - x.minimum), x.resolution if told else 1)
    height = Fraction(abs(y.maximum - y.minimum), y.resolution if told else 1)
    left, top, right, bottom = Fraction(0), Fraction(0), width, height
    if mounting.area:
        left, top, wide, high = (Fraction(number, 1000) for number in mounting.area)
        right, bottom = left + wide, top + high
    if mounting.fit == "keep":
        # The pad as it lies on the device.
        across, down = (pad.width, pad.height) if mounting.rotation in (0, 180) else (pad.height, pad.width)
        scale = min((right - left) / across, (bottom - top) / down)
        middle_x, middle_y = (left + right) / 2, (top + bottom) / 2
        left, right = middle_x - scale * across / 2, middle_x + scale * across / 2
        top, bottom = middle_y - scale * down / 2, middle_y + scale * down / 2
    return left / width, top / height, right / width, bottom / height


class Formula:
    def __init__(self, x: Axis, y: Axis, pad: Pad, mounting: Mounting, pressure: Optional[Axis] = None):
        self.x, self.y, self.pad, self.mounting, self.pressure_axis = x, y, pad, mounting, pressure
        self.used = used_part(x, y, pad, mounting)

    def place(self, x: int, y: int) -> tuple[int, int]:
        left, top, right, bottom = self.used
        along = Fraction(x - self.x.minimum, self.x.maximum - self.x.minimum)
        down = Fraction(y - self.y.minimum, self.y.maximum - self.y.minimum)
        u, v = (along - left) / (right - left), (down - top) / (bottom - top)
        u, v = {0: (u, v), 90: (1 - v, u), 180: (1 - u, 1 - v), 270: (v, 1 - u)}[self.mounting.rotation]
        pad = self.pad
        return (
            pad.left + within(half_up(u * (pad.width - 1)), 0, pad.width - 1),
            pad.top + within(half_up(v * (pad.height - 1)), 0, pad.height - 1),
        )

    def pressure(self, value: int) -> int:
        axis, limit = self.pressure_axis, self.pad.pressure_limit
        if not axis or axis.maximum == axis.minimum:
            return limit // 2
        part = Fraction(value - axis.minimum, axis.maximum - axis.minimum)
        return within(1 + half_up(part * (limit - 1)), 1, limit)


def main() -> None:
    # x axis, y axis, pad, fit, rotation, area (four zeros for none), pressure axis, then x, y and pressure
    for line in sys.stdin:
        words = line.split()
        fit = words.pop(11)
        n = [int(word) for word in words]
        area = (n[12], n[13], n[14], n[15]) if any(n[12:16]) else None
        formula = Formula(
            Axis(*n[0:3]), Axis(*n[3:6]), Pad(*n[6:11]), Mounting(fit, n[11], area), Axis(n[16], n[17], 0)
        )
        print(*formula.place(n[18], n[19]), formula.pressure(n[20]))


if __name__ == "__main__":
    main()
