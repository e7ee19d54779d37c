"""The signature for NumPy, Pillow and notebooks, and its times as datetime."""

from __future__ import annotations

import copy
import io
import pickle
import subprocess
import sys
import time
import xml.etree.ElementTree
from collections.abc import Callable
from datetime import datetime, timedelta, timezone
from types import ModuleType
from typing import cast

import pytest

from pictures import read_png
from scribera import (
    InkPoint,
    InkRecord,
    InvalidParametersError,
    Model,
    NothingThereError,
    Pad,
    ink_array,
    read_ink,
)
from simulator import DOWN, MODELS, MOVE, UP, Simulator, diagonal, tap

SIZE = (160, 90)
EXTREMES = [(40000, -5, 3, DOWN), (65535, 32767, 4, MOVE), (0, -32768, 5, MOVE), (0, 0, 0, UP)]


@pytest.mark.parametrize("model", MODELS)
def test_an_array_has_every_field_of_every_point(model: Model, simulator: Simulator) -> None:
    pytest.importorskip("numpy")
    with Pad(model, size=SIZE) as pad:
        simulator.send(diagonal(model) + EXTREMES)
        array, records = pad.array(), read_ink(pad.ink())
        assert array.dtype.names == ("x", "y", "pressure", "status", "tick", "seconds")
        assert array.tolist() == [
            (r.x, r.y, r.pressure, int(r.is_stroke_end), r.tick, r.seconds) for r in records
        ]
        assert [tuple(row)[:3] for row in array.tolist()] == [(p.x, p.y, p.pressure) for p in pad]
        assert array["x"].max() == 65535 and array["y"].min() == -32768
        assert ink_array(pad.ink_text()).tolist() == array.tolist()


def test_an_array_is_a_view_of_the_stream_and_nobody_writes_into_it(simulator: Simulator) -> None:
    numpy = pytest.importorskip("numpy")
    with Pad("K210", size=SIZE) as pad:
        simulator.send(diagonal("K210"))
        stream = pad.ink()
        for kept in (stream, bytearray(stream)):
            array = ink_array(kept)
            assert numpy.shares_memory(array, numpy.frombuffer(kept, numpy.uint8))
            assert array.nbytes == len(stream) - 1 and not array.flags.writeable
            with pytest.raises(ValueError):
                array["x"][0] = 1


def test_without_points_the_array_is_empty() -> None:
    pytest.importorskip("numpy")
    with Pad("T580", size=SIZE) as pad:
        array = pad.array()
    assert array.shape == (0,) and array.dtype == ink_array(b"\0").dtype and array["x"].tolist() == []
    assert ink_array(b"\0").shape == (0,)
    with pytest.raises(InvalidParametersError, match="2 bytes are not whole records"):
        ink_array(b"\0\0")


@pytest.mark.parametrize("transparent", [True, False])
def test_pillow_has_the_pixels_of_the_png(transparent: bool, simulator: Simulator) -> None:
    image_module = pytest.importorskip("PIL.Image")
    with Pad("K210", size=SIZE) as pad:
        simulator.send(diagonal("K210"))
        for clip in (None, (3, 4)):
            image = pad.to_pil(transparent=transparent, clip=clip)
            png = pad.png(transparent=transparent, clip=clip)
            assert image.tobytes() == image_module.open(io.BytesIO(png)).tobytes()
            assert image.size == (read_png(png).width, read_png(png).height)
            assert (image.convert("RGBA").getextrema()[3][0] == 0) == transparent
    image.save("closed.png")  # it needs neither pad nor stream any more


def test_pillow_gets_no_picture_without_ink() -> None:
    pytest.importorskip("PIL.Image")
    with Pad("K210", size=SIZE) as pad, pytest.raises(NothingThereError):
        pad.to_pil()


NEEDS: list[tuple[str, str, str, Callable[[Pad], object]]] = [
    ("numpy", "array", "numpy: install python3-numpy", lambda pad: pad.array()),
    ("numpy", "an array of ink points", "numpy: install python3-numpy", lambda pad: ink_array(b"\0")),
    ("PIL.Image", "to_pil", "Pillow: install python3-pil", lambda pad: pad.to_pil()),
]


@pytest.mark.parametrize(("module", "what", "package", "use"), NEEDS)
def test_a_package_that_is_missing_is_named_when_it_is_needed(
    module: str, what: str, package: str, use: Callable[[Pad], object], monkeypatch: pytest.MonkeyPatch
) -> None:
    monkeypatch.setitem(sys.modules, module, cast(ModuleType, None))  # the import system's word for "not there"
    with Pad("K210", size=SIZE) as pad, pytest.raises(ImportError, match=f"{what} needs {package}"):
        use(pad)


def test_the_package_loads_neither_numpy_nor_pillow() -> None:
    script = "import scribera, sys; print([name for name in ('numpy', 'PIL') if name in sys.modules])"
    run = subprocess.run([sys.executable, "-c", script], stdout=subprocess.PIPE, text=True, check=True)
    assert run.stdout == "[]\n"


@pytest.mark.parametrize("model", MODELS)
def test_a_notebook_shows_the_signature(model: Model, simulator: Simulator) -> None:
    with Pad(model, size=SIZE) as pad:
        assert pad._repr_png_() is None and pad._repr_svg_() is None
        simulator.send(diagonal(model))
        png, svg = pad._repr_png_(), pad._repr_svg_()
        assert png == pad.png(transparent=False) and read_png(png).is_opaque()
        assert svg is not None and svg.encode() == pad.svg()
        assert xml.etree.ElementTree.fromstring(svg).tag.endswith("svg")
    assert pad._repr_png_() is None and pad._repr_svg_() is None


def test_a_notebook_shows_no_picture_of_points_only(simulator: Simulator) -> None:
    with Pad("K210", size=(0, 0)) as pad:
        simulator.send(tap("K210"))
        assert pad._repr_png_() is None


def test_times_of_points_have_the_zone_of_the_machine(monkeypatch: pytest.MonkeyPatch) -> None:
    def when(text: str) -> datetime:
        return InkPoint(0, 0, 0, False, text).when

    monkeypatch.setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3")
    time.tzset()
    winter, summer = when("2024-01-09 14:05:17.482"), when("2024-07-09 14:05:17.482")
    assert winter.isoformat() == "2024-01-09T14:05:17.482000+01:00"
    assert summer.isoformat() == "2024-07-09T14:05:17.482000+02:00"
    assert winter.astimezone(timezone.utc).hour == 13 and winter.tzname() == "CET"
    assert when("2024-10-27 02:30:00.000").utcoffset() == timedelta(hours=2)  # the first of the two


def test_times_of_records_are_in_utc() -> None:
    record = InkRecord(0, 0, 0, False, tick=5, seconds=1_710_000_000)
    assert record.when == datetime(2024, 3, 9, 16, 0, tzinfo=timezone.utc)
    assert record.when.utcoffset() == timedelta(0)


@pytest.mark.parametrize(
    ("seconds", "year"), [(-62_135_596_800, 1), (-10, 1969), (0, 1970), (253_402_300_799, 9999)]
)
def test_times_of_records_are_told_in_all_years_that_there_are(seconds: int, year: int) -> None:
    assert InkRecord(0, 0, 0, False, 0, seconds).when.year == year


@pytest.mark.parametrize("seconds", [-(2**63), -62_135_596_801, 253_402_300_800, 2**63 - 1])
def test_times_of_records_beyond_all_years_are_refused(seconds: int) -> None:
    with pytest.raises(OverflowError):
        print(InkRecord(0, 0, 0, False, 0, seconds).when)


def test_points_and_records_tell_one_time(simulator: Simulator, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setenv("TZ", "XYZ-5:30")
    time.tzset()
    with Pad("K420") as pad:
        simulator.send(tap("K420"))
        for point, record in zip(pad, read_ink(pad.ink())):
            assert point.when.utcoffset() == timedelta(hours=5, minutes=30)
            assert point.when.replace(microsecond=0) == record.when
            assert abs(datetime.now(timezone.utc) - point.when) < timedelta(minutes=5)


def test_values_can_be_copied_and_sent_to_other_processes() -> None:
    for value in (InkPoint(1, 2, 3, True, "2024-01-09 14:05:17.482"), InkRecord(1, 2, 3, True, 4, 5)):
        assert copy.copy(value) == pickle.loads(pickle.dumps(value)) == value
        assert hash(value) == hash(copy.deepcopy(value))
        with pytest.raises(AttributeError):
            setattr(value, "x", 2)
