"""The person at the simulated pad, and what the tests know about the pads."""

from __future__ import annotations

import ctypes
from collections.abc import Callable, Iterable
from ctypes import c_char_p, c_double, c_int, c_uint
from dataclasses import dataclass
from pathlib import Path
from time import monotonic

from scribera import Model

DOWN, MOVE, UP, CANCEL_KEY, CONFIRM_KEY = range(5)

Sample = tuple[int, int, int, int]


@dataclass(frozen=True)
class Area:
    """What the interface promises about a pad, written down a second time."""

    left: int
    top: int
    width: int
    height: int
    max_pressure: int
    reported_model: str
    parts_version: str


AREAS: dict[Model, Area] = {
    "K210": Area(160, 220, 2360, 1430, 2048, "K210", "SCK210"),
    "K420": Area(200, 200, 2300, 1300, 2048, "K420", "SCK420"),
    "K421B": Area(2050, 1750, 21170, 11490, 2048, "K421H", "SCK421B"),
    "KM730": Area(550, 180, 29870, 20120, 8192, "KM730", "SCKM730"),
    "T580": Area(550, 180, 29870, 20120, 8192, "T580", "SCT580"),
}
MODELS: list[Model] = list(AREAS)
WITH_SCREEN: list[Model] = ["K210", "K420", "K421B"]
WITHOUT_SCREEN: list[Model] = ["KM730", "T580"]


class RawSample(ctypes.Structure):
    _fields_ = [("x", c_int), ("y", c_int), ("pressure", c_int), ("penStatus", c_int)]


class Simulator:
    def __init__(self, driver: Path) -> None:
        self._driver = ctypes.CDLL(str(driver))

    def _call(self, name: str, *arguments: object) -> int:
        return int(getattr(self._driver, "ScrSim_" + name)(*arguments))

    def _do(self, name: str, *arguments: object) -> None:
        assert self._call(name, *arguments) == 0, name

    def queue(self, samples: Iterable[Sample]) -> None:
        """The samples arrive one after the other while this returns at once."""
        raw = [RawSample(*sample) for sample in samples]
        self._do("SendSamples", (RawSample * len(raw))(*raw), len(raw))

    def send(self, samples: Iterable[Sample]) -> None:
        self.queue(samples)
        self.wait_idle()

    def press(self, key: int) -> None:
        self._do("PressKey", key)

    def wait_idle(self) -> None:
        self._do("WaitIdle", 120_000)

    def play_again_and_again(self, path: Path) -> None:
        self._do("Play", str(path).encode(), c_double(0), 1, -1)

    def set_result(self, entry_point: str, result: int) -> None:
        self._do("SetResult", b"SCRDAPI_" + entry_point.encode(), result)

    def set_delay(self, entry_point: str, milliseconds: int) -> None:
        self._do("SetDelay", b"SCRDAPI_" + entry_point.encode(), milliseconds)

    def set_text(self, entry_point: str, text: bytes, terminate: bool) -> None:
        self._do("SetText", b"SCRDAPI_" + entry_point.encode(), c_char_p(text), len(text), int(terminate))

    def call_count(self, entry_point: str) -> int:
        return self._call("CallCount", b"SCRDAPI_" + entry_point.encode())

    def last_argument(self, entry_point: str) -> int:
        return self._call("LastArgument", b"SCRDAPI_" + entry_point.encode())

    def send_fingerprint(self, pattern: str) -> None:
        self._do("SendSyntheticFingerprint", pattern.encode(), c_uint(1), 80)
        self.wait_idle()


def diagonal(model: Model, moves: int = 60) -> list[Sample]:
    """One stroke across the writing area."""
    area = AREAS[model]

    def at(step: int, status: int) -> Sample:
        part = 0.2 + 0.6 * step / (moves + 1)
        place = int(area.left + part * area.width), int(area.top + part * area.height)
        return *place, area.max_pressure // 2, status

    return [at(0, DOWN), *(at(step, MOVE) for step in range(1, moves + 1)), at(moves + 1, UP)]


def tap(model: Model) -> list[Sample]:
    area = AREAS[model]
    place = area.left + area.width // 2, area.top + area.height // 2
    return [(*place, 100, DOWN), (*place, 100, UP)]


def recording_of(model: Model, folder: Path) -> Path:
    """The diagonal as a file that the simulated pad plays."""
    area = AREAS[model]
    lines = [
        "# scribera recording 1",
        f"model: {area.parts_version}",
        f"area: {area.left} {area.top} {area.width} {area.height}",
        f"max-pressure: {area.max_pressure}",
        *(f"{time} {x} {y} {force} {status}" for time, (x, y, force, status) in enumerate(diagonal(model))),
    ]
    recording = folder / "diagonal.rec"
    recording.write_text("\n".join(lines) + "\n")
    return recording


def wait_until(condition: Callable[[], bool], what: str) -> None:
    end = monotonic() + 60
    while not condition():
        assert monotonic() < end, f"never came: {what}"
