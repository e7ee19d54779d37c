"""Values that the package takes and gives."""

from __future__ import annotations

import base64
import re
import struct
from datetime import datetime, timedelta, timezone
from enum import IntEnum
from typing import TYPE_CHECKING, Any

from ._dataclass import dataclass
from ._errors import InvalidParametersError
from ._optional import optional

if TYPE_CHECKING:
    import numpy as np
    from numpy.typing import NDArray
    from typing_extensions import Self


class _Named(IntEnum):
    """A number of the library that prints as its name."""

    def __str__(self) -> str:
        return self.name

    def __format__(self, format_spec: str) -> str:
        return format(self.name, format_spec)


class ImageType(_Named):
    """What a signature is turned into; the numbers are the library's."""

    BMP = 1
    JPEG = 2
    PNG = 3
    INK = 6
    PDF = 7
    SVG = 8


class Status(_Named):
    """The key with which the person ended the signature. CANCEL is false, CONFIRM is true."""

    CANCEL = 0
    CONFIRM = 1


@dataclass(frozen=True)
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

    @property
    def when(self) -> datetime:
        """:attr:`time` with the zone of this machine. Of the hour that comes twice when the clocks go back,
        the text does not tell which it was; the first is taken. :attr:`InkRecord.when` has no such hour."""
        return datetime.fromisoformat(self.time).astimezone()


@dataclass(frozen=True)
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


@dataclass(frozen=True)
class DecodedPoint:
    """One point that the library decoded; units as in :class:`InkPoint`."""

    x: int
    y: int
    is_stroke_end: bool


@dataclass(frozen=True)
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

    @property
    def when(self) -> datetime:
        """:attr:`seconds` as a time in UTC. Finer distances between points are in :attr:`tick`, a clock of its
        own. OverflowError when it is not in the years 1 to 9999."""
        return _EPOCH + timedelta(seconds=self.seconds)


@dataclass(frozen=True)
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


_EPOCH = datetime(1970, 1, 1, tzinfo=timezone.utc)

_INK_RECORD = struct.Struct("<HhhBxqq")
# The same record for NumPy: name, type, offset.
_INK_FIELDS = (
    ("x", "<u2", 0),
    ("y", "<i2", 2),
    ("pressure", "<i2", 4),
    ("status", "u1", 6),
    ("tick", "<i8", 8),
    ("seconds", "<i8", 16),
)
_LINE_BREAKS = re.compile(r"[\r\n]+")
_BASE64_PARTS = re.compile(r"([A-Za-z0-9+/\r\n]*)([=\r\n]*)")


def base64_text(content: bytes | str) -> bytes:
    """The Base64 text of an ink packet stream or a picture, given as bytes; or as that text already, which
    the library reads with line breaks too."""
    if not content:
        raise InvalidParametersError("there is nothing to decode: it is empty")
    if not isinstance(content, str):
        return base64.b64encode(content)
    text = content.encode("ascii", "replace")
    if b"\0" in text:
        raise InvalidParametersError("a Base64 text holds no zero byte")
    return text


def read_ink(ink: bytes | str) -> list[InkRecord]:
    """Reads an ink packet stream without the library, with the pressures and times that
    :meth:`Pad.decode` cannot tell.

    ``ink`` is the stream as bytes (:meth:`Pad.ink`) or its Base64 text as a str (:meth:`Pad.ink_text`), in
    which line breaks may stand anywhere and blanks at the end. Raises :class:`InvalidParametersError` when it
    is not Base64, or not a number of whole records and one zero byte; the message tells where.
    """
    return [
        InkRecord(x, y, pressure, status == 1, tick, seconds)
        for x, y, pressure, status, tick, seconds in _INK_RECORD.iter_unpack(_whole_records(ink))
    ]


def ink_array(ink: bytes | str) -> NDArray[np.void]:
    """The records of an ink packet stream as a NumPy array with the fields ``x``, ``y``, ``pressure``, ``status``
    (1 ends a stroke, 0 does not), ``tick`` and ``seconds``; units as in :class:`InkRecord`.

    The array is a view of the stream: nothing is copied, and nothing can be written. ``ink`` and errors as with
    :func:`read_ink`; ImportError without NumPy.
    """
    numpy = optional("numpy", "numpy", "python3-numpy", "an array of ink points")
    records: NDArray[np.void] = numpy.frombuffer(_whole_records(ink), ink_dtype(numpy))
    return records


def ink_dtype(numpy: Any) -> Any:
    """The type of the records of :func:`ink_array`."""
    names, formats, offsets = zip(*_INK_FIELDS)
    return numpy.dtype(
        {"names": names, "formats": formats, "offsets": offsets, "itemsize": _INK_RECORD.size}
    )


def _whole_records(ink: bytes | str) -> memoryview:
    """The stream without the zero byte at its end, which has been checked."""
    stream = _base64_bytes(ink) if isinstance(ink, str) else ink
    if len(stream) % _INK_RECORD.size != 1:
        hint = "" if isinstance(ink, str) else "; a Base64 text is to be given as str"
        raise InvalidParametersError(
            f"not an ink packet stream: {len(stream)} bytes are not whole records of {_INK_RECORD.size} "
            f"bytes and one more{hint}"
        )
    if stream[-1] != 0:
        raise InvalidParametersError(
            f"not an ink packet stream: byte {len(stream) - 1}, after the last record, is not zero"
        )
    return memoryview(stream)[:-1].toreadonly()


def _base64_bytes(text: str) -> bytes:
    """Decodes Base64 that leaves no choice: complete groups, no foreign characters, no spare bits."""

    def refuse(offset: int, reason: str) -> InvalidParametersError:
        return InvalidParametersError(f"not an ink packet stream: at character {offset}: {reason}")

    text = text.rstrip(" \t\r\n")
    parts = _BASE64_PARTS.match(text)
    assert parts is not None  # it matches the empty text too
    digits = _LINE_BREAKS.sub("", parts[1])
    padding = parts[2].count("=")
    if not text:
        raise refuse(0, "there is no text")
    if parts.end() != len(text):
        raise refuse(parts.end(1), "not a Base64 character")
    if (len(digits) + padding) % 4:
        raise refuse(len(text), "the Base64 text ends within a group of four characters")
    if padding > 2:
        raise refuse(parts.end(1), "more than two padding characters")
    whole = digits + "=" * padding
    content = base64.b64decode(whole)
    if base64.b64encode(content[padding - 3 :]) != whole[-4:].encode():
        last = len(parts[1].rstrip("\r\n")) - 1
        raise refuse(last, "the last Base64 character has bits that belong to no byte")
    return content
