"""Values that the package takes and gives."""

from __future__ import annotations

import base64
import binascii
import struct
from dataclasses import dataclass
from enum import IntEnum
from typing import Self

from ._errors import InvalidParametersError


class ImageType(IntEnum):
    """What a signature is turned into; the numbers are the library's."""

    BMP = 1
    JPEG = 2
    PNG = 3
    INK = 6
    PDF = 7
    SVG = 8


class Status(IntEnum):
    """The key with which the person ended the signature. CANCEL is false, CONFIRM is true."""

    CANCEL = 0
    CONFIRM = 1


@dataclass(frozen=True, slots=True)
class InkPoint:
    """One stored ink point.

    ``x`` (0 to 65535) and ``y`` (-32768 to 32767) are in pad units, ``pressure`` is as the pad delivered it.
    ``is_stroke_end`` is true for the point that the lifted pen leaves: it repeats the place and pressure of
    the one before. ``time`` is the library's text, "2024-03-09 14:05:17.482", in local time; its milliseconds
    come from another clock and are good for distances between points only.
    """

    x: int
    y: int
    pressure: int
    is_stroke_end: bool
    time: str


@dataclass(frozen=True, slots=True)
class LivePoint:
    """One ink point as the point callback tells it.

    ``x`` and ``y`` run from 0 to 65534 over the writing area, whatever the model; ``pressure`` is as the pad
    delivered it, its low 16 bits. ``is_pen_down`` is false when the pen is lifted.
    """

    x: int
    y: int
    pressure: int
    is_pen_down: bool

    @classmethod
    def unpack(cls, position: int, pen: int) -> Self:
        """Takes apart the two numbers of the library's real-time callback."""
        return cls(position & 0xFFFF, position >> 16 & 0xFFFF, pen & 0xFFFF, bool(pen >> 16 & 0xFFFF))


@dataclass(frozen=True, slots=True)
class DecodedPoint:
    """One point that the library decoded; units as in :class:`InkPoint`."""

    x: int
    y: int
    is_stroke_end: bool


@dataclass(frozen=True, slots=True)
class InkRecord:
    """One record of an ink packet stream; units as in :class:`InkPoint`.

    ``tick`` counts milliseconds of the writer's monotonic clock, ``seconds`` those since 1970-01-01 00:00
    UTC.
    """

    x: int
    y: int
    pressure: int
    is_stroke_end: bool
    tick: int
    seconds: int


@dataclass(frozen=True, slots=True)
class PadInfo:
    """What the library knows about an open pad: ``width`` and ``height`` of the writing area are in pad
    units, ``library_version`` is (major, minor)."""

    connected: bool
    width: int
    height: int
    max_pressure: int
    maker: str
    model: str
    library_version: tuple[int, int]


_INK_RECORD = struct.Struct("<HhhBxqq")


def base64_text(content: bytes | str) -> bytes:
    """The Base64 text of an ink packet stream or a picture, given as bytes; or as that text already."""
    if isinstance(content, str):
        text = content.encode("ascii", "replace")
        if b"\0" in text:
            raise InvalidParametersError("a Base64 text holds no zero byte")
        return text
    return base64.b64encode(content)


def read_ink(ink: bytes | str) -> list[InkRecord]:
    """Reads an ink packet stream without the library, with the pressures and times that
    :meth:`Pad.decode` cannot tell.

    ``ink`` is the stream as bytes (:meth:`Pad.ink`) or its Base64 text (:meth:`Pad.ink_text`). Raises
    :class:`InvalidParametersError` when it is not a number of whole records and one zero byte.
    """
    try:
        stream = base64.b64decode(ink, validate=True) if isinstance(ink, str) else ink
    except (binascii.Error, ValueError) as error:
        raise InvalidParametersError(f"not a Base64 text: {error}") from error
    if len(stream) % _INK_RECORD.size != 1 or stream[-1] != 0:
        raise InvalidParametersError(f"not an ink packet stream: {len(stream)} bytes")
    return [
        InkRecord(x, y, pressure, status == 1, tick, seconds)
        for x, y, pressure, status, tick, seconds in _INK_RECORD.iter_unpack(stream[:-1])
    ]
