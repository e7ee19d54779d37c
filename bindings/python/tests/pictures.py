"""Reads PNG and BMP pictures into rows of (red, green, blue, alpha), with nothing but the standard
library."""

from __future__ import annotations

import struct
import zlib
from dataclasses import dataclass

Pixel = tuple[int, int, int, int]


@dataclass(frozen=True)
class Picture:
    width: int
    height: int
    rows: tuple[tuple[Pixel, ...], ...]
    pixels_per_metre: int | None = None

    def on_white(self) -> tuple[tuple[tuple[int, int, int], ...], ...]:
        """As it looks on paper; pixels are wholly transparent or not at all."""
        return tuple(
            tuple((255, 255, 255) if alpha == 0 else (red, green, blue) for red, green, blue, alpha in row)
            for row in self.rows
        )

    def ink(self) -> set[tuple[int, int]]:
        """Where it is not white."""
        return {
            (x, y)
            for y, row in enumerate(self.on_white())
            for x, pixel in enumerate(row)
            if pixel != (255, 255, 255)
        }

    def ink_box(self) -> tuple[int, int, int, int]:
        """Left, top, right and bottom of what is not white."""
        places = self.ink()
        columns, rows = [x for x, _ in places], [y for _, y in places]
        return min(columns), min(rows), max(columns), max(rows)

    def is_transparent_where_white(self) -> bool:
        return all((alpha == 0) == (white == (255, 255, 255)) for (*_, alpha), white in self._pairs())

    def is_opaque(self) -> bool:
        return all(alpha == 255 for row in self.rows for *_, alpha in row)

    def _pairs(self) -> list[tuple[Pixel, tuple[int, int, int]]]:
        return [pair for row, white in zip(self.rows, self.on_white()) for pair in zip(row, white)]


def read_png(data: bytes) -> Picture:
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    position, packed, density = 8, b"", None
    palette: list[tuple[int, int, int]] = []
    alphas = b""
    while position < len(data):
        length, kind = struct.unpack_from(">I4s", data, position)
        body = data[position + 8 : position + 8 + length]
        position += length + 12
        if kind == b"IHDR":
            width, height, depth, color, _, _, interlaced = struct.unpack(">IIBBBBB", body)
        elif kind == b"PLTE":
            palette = [(body[i], body[i + 1], body[i + 2]) for i in range(0, len(body), 3)]
        elif kind == b"tRNS":
            alphas = body
        elif kind == b"pHYs":
            density = struct.unpack(">IIB", body)[0]
        elif kind == b"IDAT":
            packed += body
    assert interlaced == 0 and depth == 8, (interlaced, depth)
    channels = {0: 1, 2: 3, 3: 1, 4: 2, 6: 4}[color]
    lines = unfiltered(zlib.decompress(packed), width * channels, height, channels)

    def pixel(values: bytes) -> Pixel:
        if color == 3:
            index = values[0]
            return *palette[index], alphas[index] if index < len(alphas) else 255
        if color in (0, 4):
            return values[0], values[0], values[0], values[1] if color == 4 else 255
        return values[0], values[1], values[2], values[3] if color == 6 else 255

    rows = tuple(
        tuple(pixel(line[i : i + channels]) for i in range(0, len(line), channels)) for line in lines
    )
    return Picture(width, height, rows, density)


def unfiltered(data: bytes, stride: int, height: int, channels: int) -> list[bytes]:
    lines: list[bytes] = []
    above = bytes(stride)
    for number in range(height):
        start = number * (stride + 1)
        method, line = data[start], bytearray(data[start + 1 : start + 1 + stride])
        for i in range(stride):
            left = line[i - channels] if i >= channels else 0
            corner = above[i - channels] if i >= channels else 0
            guess = (0, left, above[i], (left + above[i]) // 2, nearest(left, above[i], corner))[method]
            line[i] = (line[i] + guess) & 0xFF
        above = bytes(line)
        lines.append(above)
    return lines


def nearest(left: int, above: int, corner: int) -> int:
    estimate = left + above - corner
    return min((left, above, corner), key=lambda value: abs(estimate - value))


def read_bmp(data: bytes) -> Picture:
    assert data[:2] == b"BM"
    start, _, width, height, _, bits = struct.unpack_from("<IIiiHH", data, 10)
    assert bits in (24, 32) and height > 0, (bits, height)
    size = bits // 8
    stride = (width * size + 3) // 4 * 4
    rows = []
    for number in reversed(range(height)):
        line = data[start + number * stride : start + number * stride + width * size]
        rows.append(tuple((line[i + 2], line[i + 1], line[i], 255) for i in range(0, len(line), size)))
    return Picture(width, height, tuple(rows))


def jpeg_size(data: bytes) -> tuple[int, int]:
    assert data[:2] == b"\xff\xd8" and data[-2:] == b"\xff\xd9"
    position = 2
    while True:
        marker, length = struct.unpack_from(">HH", data, position)
        if 0xFFC0 <= marker <= 0xFFC2:
            height, width = struct.unpack_from(">HH", data, position + 5)
            return width, height
        position += 2 + length
