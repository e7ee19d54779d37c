"""Ink points: stored, live, and in the ink packet stream."""

from __future__ import annotations

import base64
import re
import struct
from datetime import datetime, timedelta

import pytest

from scribera import (
    DecodedPoint,
    InkPoint,
    InvalidParametersError,
    LivePoint,
    Model,
    NothingThereError,
    Pad,
    read_ink,
)
from simulator import AREAS, DOWN, MODELS, MOVE, UP, Sample, Simulator, diagonal, tap


def stored(samples: list[Sample]) -> list[tuple[int, int, int, bool]]:
    """What the samples leave behind: a pen-up repeats place and pressure of the point before it."""
    points: list[tuple[int, int, int, bool]] = []
    for x, y, pressure, status in samples:
        points.append((*points[-1][:3], True) if status == UP else (x, y, pressure, False))
    return points


def numbers(point: InkPoint) -> tuple[int, int, int, bool]:
    return point.x, point.y, point.pressure, point.is_stroke_end


def live(model: Model, samples: list[Sample]) -> list[LivePoint]:
    area = AREAS[model]

    def scaled(value: int, origin: int, size: int) -> int:
        return min(max(value - origin, 0), size - 1) * 65535 // size

    return [
        LivePoint(scaled(x, area.left, area.width), scaled(y, area.top, area.height), pressure, not is_end)
        for x, y, pressure, is_end in stored(samples)
    ]


def edges(model: Model) -> list[Sample]:
    """The corners of the writing area and places outside it."""
    area = AREAS[model]
    right, bottom = area.left + area.width, area.top + area.height
    return [
        (area.left, area.top, 1, DOWN),
        (right - 1, bottom - 1, area.max_pressure, MOVE),
        (right + 500, bottom + 500, 7, MOVE),
        (0, 0, 0, MOVE),
        (right, area.top, 300, UP),
    ]


@pytest.mark.parametrize("model", MODELS)
def test_stored_points_are_what_the_pen_did(model: Model, simulator: Simulator) -> None:
    samples = diagonal(model) + edges(model) + tap(model)
    with Pad(model) as pad:
        simulator.send(samples)
        assert len(pad) == len(samples)
        assert [numbers(point) for point in pad] == stored(samples)
        assert [numbers(point) for stroke in pad.strokes() for point in stroke] == stored(samples)
        assert [len(stroke) for stroke in pad.strokes()] == [62, 5, 2]


@pytest.mark.parametrize("model", MODELS)
def test_live_points_are_scaled_to_the_writing_area(model: Model, simulator: Simulator) -> None:
    arrived: list[LivePoint] = []
    samples = diagonal(model) + edges(model)
    with Pad(model, on_point=arrived.append):
        simulator.send(samples)
        assert arrived == live(model, samples)
        assert max(point.x for point in arrived) < 65535
        assert {point.is_pen_down for point in arrived} == {True, False}


def test_live_numbers_are_taken_apart() -> None:
    assert LivePoint.unpack(0xFFFE0001, 0x00012345) == LivePoint(1, 0xFFFE, 0x2345, True)
    assert LivePoint.unpack(0x0001FFFE, 0x0000FFFF) == LivePoint(0xFFFE, 1, 0xFFFF, False)


def test_the_point_function_can_be_changed_and_taken_away(simulator: Simulator) -> None:
    with Pad("K210") as pad:
        first: list[LivePoint] = []
        second: list[LivePoint] = []

        @pad.on_point
        def note(point: LivePoint) -> None:
            first.append(point)

        simulator.send(tap("K210"))
        pad.on_point(second.append)
        simulator.send(tap("K210"))
        pad.on_point(None)
        simulator.send(tap("K210"))
        assert (len(first), len(second), len(pad)) == (2, 2, 6)
        note(first[0])
        assert len(first) == 3


def test_points_are_indexed_as_a_list(simulator: Simulator) -> None:
    with Pad("T580") as pad:
        assert len(pad) == 0 and list(pad) == [] and pad.strokes() == [] and pad[:] == []
        assert pad  # also without points
        with pytest.raises(IndexError):
            pad[0]
        with pytest.raises(IndexError):
            pad[-1]
        simulator.send(diagonal("T580"))
        points = list(pad)
        assert len(points) == len(diagonal("T580"))
        assert pad[3] == points[3] and pad[-1] == points[-1] and pad[-len(points)] == points[0]
        assert pad[2:7:2] == points[2:7:2] and pad[::-1] == points[::-1] and pad[-3:] == points[-3:]
        assert points[5] in pad
        for index in (len(points), -len(points) - 1, 2**31, 2**32, -(2**40)):
            with pytest.raises(IndexError):
                pad[index]
        with pytest.raises(TypeError):
            pad["0"]  # type: ignore[call-overload]


def test_an_unfinished_stroke_is_a_stroke(simulator: Simulator) -> None:
    with Pad("K210") as pad:
        simulator.send(tap("K210") + diagonal("K210")[:-1])
        assert [len(stroke) for stroke in pad.strokes()] == [2, 61]
        assert [stroke[-1].is_stroke_end for stroke in pad.strokes()] == [True, False]


def test_times_are_given_as_text(simulator: Simulator) -> None:
    before = datetime.now() - timedelta(seconds=2)
    with Pad("K420") as pad:
        simulator.send(diagonal("K420"))
        records = read_ink(pad.ink())
        assert len(records) == len(pad)
        for point, record in zip(pad, records):
            assert re.fullmatch(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}", point.time)
            assert datetime.fromisoformat(point.time[:19]) == datetime.fromtimestamp(record.seconds)
            assert int(point.time[-3:]) == record.tick % 1000
            assert before < datetime.fromisoformat(point.time) < datetime.now() + timedelta(seconds=2)


def test_clear_empties_the_points(simulator: Simulator) -> None:
    with Pad("KM730") as pad:
        simulator.send(diagonal("KM730"))
        iterator = iter(pad)
        next(iterator)
        pad.clear()
        assert len(pad) == 0 and list(iterator) == []


@pytest.mark.parametrize("model", MODELS)
def test_ink_comes_back_as_it_went(model: Model, simulator: Simulator) -> None:
    samples = diagonal(model) + [
        (40000, -5, 3, DOWN),
        (65535, 32767, 4, MOVE),
        (0, -32768, 5, MOVE),
        (0, 0, 0, UP),
    ]
    with Pad(model) as pad:
        simulator.send(samples)
        points, stream, text = list(pad), pad.ink(), pad.ink_text()
        assert [numbers(point) for point in points] == stored(samples)
        assert len(stream) == 24 * len(points) + 1 and base64.b64decode(text, validate=True) == stream
        assert read_ink(stream) == read_ink(text)
        assert [(r.x, r.y, r.pressure, r.is_stroke_end) for r in read_ink(stream)] == stored(samples)
        expected = [DecodedPoint(x, y, is_end) for x, y, _, is_end in stored(samples)]
        assert pad.decode(stream) == expected and pad.decode(text) == expected
        assert list(pad) == points


def test_ink_of_one_pad_is_read_on_another(simulator: Simulator) -> None:
    with Pad("T580") as pad:
        simulator.send(diagonal("T580"))
        stream = pad.ink()
    with Pad("K210") as other:
        assert other.decode(stream) == [DecodedPoint(x, y, end) for x, y, _, end in stored(diagonal("T580"))]
        assert len(other) == 0


def test_the_library_decodes_whole_records_as_they_come() -> None:
    record = struct.pack("<HhhBxqq", 60000, -7, 9, 1, 11, 12)
    with Pad("K210") as pad:
        assert pad.decode(record * 2) == [DecodedPoint(60000, -7, True)] * 2
        assert pad.decode(record + b"short") == [DecodedPoint(60000, -7, True)]
        assert pad.decode(b"short") == [] and pad.decode("!") == [] and pad.decode("ü") == []
        nothings: list[bytes | str] = [b"", "", "AA\0AA"]
        for nothing in nothings:
            with pytest.raises(InvalidParametersError):
                pad.decode(nothing)


def test_an_ink_packet_stream_is_read_strictly() -> None:
    record = struct.pack("<HhhBxqq", 60000, -7, 9, 1, 11, 12)
    (point,) = read_ink(record + b"\0")
    assert (point.x, point.y, point.pressure, point.is_stroke_end) == (60000, -7, 9, True)
    assert (point.tick, point.seconds) == (11, 12)
    assert read_ink(b"\0") == []
    malformed: list[bytes | str] = [b"", record, record + b"\1", record + b"\0\0", "@@@@", "AAA", "ü"]
    for broken in malformed:
        with pytest.raises(InvalidParametersError):
            read_ink(broken)


@pytest.mark.parametrize("line_break", ["\n", "\r\n"])
@pytest.mark.parametrize("width", [1, 7, 64, 76])
def test_a_wrapped_ink_text_is_read(line_break: str, width: int) -> None:
    record = struct.pack("<HhhBxqq", 60000, -7, 9, 1, 11, 12)
    text = base64.b64encode(record * 5 + b"\0").decode()
    lines = [text[at : at + width] for at in range(0, len(text), width)]
    wrapped = line_break.join(lines) + line_break
    assert read_ink(wrapped) == read_ink(line_break + wrapped + " \t\n") == read_ink(text)
    with Pad("K210") as pad:
        assert pad.decode(wrapped) == pad.decode(text) == [DecodedPoint(60000, -7, True)] * 5


MALFORMED = [
    ("", "at character 0: there is no text"),
    ("\n \r\n", "at character 0: there is no text"),
    ("AA\nA*", "at character 4: not a Base64 character"),
    ("AA\n A", "at character 3: not a Base64 character"),
    (" AAAA", "at character 0: not a Base64 character"),
    ("AA\nA-AA", "at character 4: not a Base64 character"),
    ("AA==\nAA==", "at character 2: not a Base64 character"),
    ("AAA\n\n", "at character 3: the Base64 text ends within a group of four characters"),
    ("AA=\n==\n", "at character 6: the Base64 text ends within a group of four characters"),
    ("\nA\n=\n==", "at character 3: more than two padding characters"),
    ("A\nB=\n=\n", "at character 2: the last Base64 character has bits that belong to no byte"),
    ("AAAA\nAAB=", "at character 7: the last Base64 character has bits that belong to no byte"),
    ("AAAA", "3 bytes are not whole records of 24 bytes and one more"),
    ("eA==", "byte 0, after the last record, is not zero"),
    (b"AA==", "4 bytes are not whole records of 24 bytes and one more; a Base64 text is to be given as str"),
]


@pytest.mark.parametrize(("ink", "reason"), MALFORMED)
def test_what_is_no_ink_text_is_refused_with_the_place(ink: bytes | str, reason: str) -> None:
    with pytest.raises(InvalidParametersError) as caught:
        read_ink(ink)
    assert str(caught.value) == "not an ink packet stream: " + reason


def test_without_points_there_is_no_ink() -> None:
    with Pad("K210") as pad:
        with pytest.raises(NothingThereError):
            pad.ink()
        with pytest.raises(NothingThereError):
            pad.ink_text()
