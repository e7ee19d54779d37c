"""Makes the recordings that the driver's tests play: input devices of all sorts, and what is done on them.

    generate.py RECORDINGS SILENT      the two folders, of devices that are signed on and of others
"""

import math
import random
import sys
from collections.abc import Callable
from pathlib import Path

import recording as r

PEN_KEYS = [r.BTN_PEN, r.BTN_RUBBER, r.BTN_TOUCH, r.BTN_STYLUS, r.BTN_STYLUS2]
SHORTEST, LONGEST = -(2**31), 2**31 - 1
STEP = 0.001  # seconds from one report to the next

Axes = dict[int, tuple[int, int, int]]  # minimum, maximum, resolution


class Recorder:
    """What happens on a device; each report is one line of a caller's code."""

    def __init__(self, name: str, keys: list[int], axes: Axes, properties: list[int], product: int):
        self.name, self.keys, self.axes, self.properties, self.product = name, keys, axes, properties, product
        self.lines: list[str] = []
        self.time = 1.0
        self.random = random.Random(name)

    def event(self, kind: int, code: int, value: int) -> None:
        self.lines.append(f"E: {self.time:.6f} {kind:04x} {code:04x} {value}")

    def report(self, keys: dict[int, int] = {}, axes: dict[int, int] = {}, moment: float = STEP) -> None:
        for code, value in axes.items():
            self.event(r.EV_ABS, code, value)
        for code, value in keys.items():
            self.event(r.EV_KEY, code, value)
        self.event(r.EV_SYN, r.SYN_REPORT, 0)
        self.time += moment

    def lose(self, keys: dict[int, int] = {}, axes: dict[int, int] = {}) -> None:
        """The reader learns nothing of these but that there was something."""
        self.event(r.EV_SYN, r.SYN_DROPPED, 0)
        self.report(keys, axes)

    def at(self, u: float, v: float, force: float = 0.5, x: int = r.ABS_X, y: int = r.ABS_Y) -> dict[int, int]:
        """The axes' values for a place in parts of the device, which may lie outside."""
        pressure = r.ABS_PRESSURE if x == r.ABS_X else r.ABS_MT_PRESSURE
        return {
            code: max(SHORTEST, min(LONGEST, round(first + part * (last - first))))
            for code, part in ((x, u), (y, v), (pressure, force))
            if code in self.axes
            for first, last, _ in [self.axes[code]]
        }

    def write(self, folder: Path) -> None:
        def mask(codes: list[int], size: int) -> bytes:
            bits = bytearray(size)
            for code in codes:
                bits[code // 8] |= 1 << code % 8
            return bytes(bits)

        types = [r.EV_SYN, r.EV_KEY, r.EV_ABS]
        masks = {0: mask(types, 8), r.EV_KEY: mask(self.keys, 96), r.EV_ABS: mask(list(self.axes), 8)}
        lines = ["# EVEMU 1.2", f"N: {self.name}", f"I: 0003 5343 {self.product:04x} 0100"]
        lines.append(f"P: {mask(self.properties, 8).hex(' ')}")
        for kind, bits in masks.items():
            lines += [f"B: {kind:02x} {bits[at : at + 8].hex(' ')}" for at in range(0, len(bits), 8)]
        lines += [f"A: {code:02x} {low} {high} 0 0 {res}" for code, (low, high, res) in self.axes.items()]
        (folder / f"{self.name}.evemu").write_text("\n".join(lines + self.lines) + "\n")


def curve(step: int, steps: int) -> tuple[float, float, float]:
    part = step / max(steps - 1, 1)
    return 0.1 + 0.8 * part, 0.5 + 0.4 * math.sin(9 * part), 0.5 + 0.5 * math.sin(5 * part)


def stroke(d: Recorder, steps: int = 40, tool: int = r.BTN_PEN) -> None:
    """Comes into range, hovers, touches, moves, lifts and goes."""
    has = [code for code in (tool,) if code in d.keys]
    u, v, force = curve(0, steps)
    d.report({code: 1 for code in has}, d.at(u, v - 0.1, 0))
    d.report({}, d.at(u, v - 0.05, 0))
    for step in range(steps):
        keys = {r.BTN_TOUCH: 1} if step == 0 and r.BTN_TOUCH in d.keys else {}
        d.report(keys, d.at(*curve(step, steps)))
    d.report({r.BTN_TOUCH: 0} if r.BTN_TOUCH in d.keys else {}, d.at(*curve(steps, steps)[:2], 0))
    d.report({code: 0 for code in has}, {})


def strokes(d: Recorder) -> None:
    for steps in (40, 1, 25):
        stroke(d, steps)


def beyond(d: Recorder) -> None:
    """All edges, and what lies outside of them."""
    d.report({r.BTN_PEN: 1}, d.at(0, 0, 0))
    for number, (u, v) in enumerate((u, v) for u in (-0.5, 0, 0.5, 1, 1.5) for v in (-0.5, 0, 0.5, 1, 1.5)):
        d.report({r.BTN_TOUCH: 1} if number == 0 else {}, d.at(u, v, u))
    for _ in range(100):
        d.report({}, d.at(d.random.random(), d.random.random(), d.random.random()))
    d.report({r.BTN_TOUCH: 0, r.BTN_PEN: 0})


def erase(d: Recorder) -> None:
    stroke(d)
    stroke(d, tool=r.BTN_RUBBER)
    # Turned while it touches, and back.
    d.report({r.BTN_PEN: 1, r.BTN_TOUCH: 1}, d.at(0.2, 0.2))
    d.report({}, d.at(0.3, 0.3))
    d.report({r.BTN_PEN: 0, r.BTN_RUBBER: 1}, d.at(0.4, 0.4))
    d.report({}, d.at(0.5, 0.5))
    d.report({r.BTN_RUBBER: 0, r.BTN_PEN: 1}, d.at(0.6, 0.6))
    d.report({}, d.at(0.7, 0.7))
    d.report({r.BTN_TOUCH: 0, r.BTN_PEN: 0})


def other_tools(d: Recorder) -> None:
    for tool in (r.BTN_MOUSE_TOOL, r.BTN_FINGER, r.BTN_AIRBRUSH, r.BTN_BRUSH, r.BTN_PENCIL):
        stroke(d, 10, tool)


def hover(d: Recorder) -> None:
    d.report({r.BTN_PEN: 1}, d.at(0, 0, 0))
    for step in range(50):
        d.report({}, d.at(*curve(step, 50)[:2], 0))
    d.report({r.BTN_PEN: 0})


def press_buttons(d: Recorder) -> None:
    d.report({r.BTN_PEN: 1}, d.at(0.1, 0.1, 0))
    for button in (r.BTN_STYLUS, r.BTN_STYLUS2):
        d.report({button: 1})
        d.report({}, d.at(0.2, 0.2, 0))
        d.report({button: 2})
        d.report({button: 0})
    d.report({r.BTN_STYLUS: 1, r.BTN_STYLUS2: 1})  # the first of two
    d.report({r.BTN_STYLUS: 0})
    d.report({r.BTN_STYLUS2: 0})
    d.report({r.BTN_TOUCH: 1}, d.at(0.3, 0.3))  # nothing while the tip is on
    d.report({r.BTN_STYLUS2: 1}, d.at(0.4, 0.4))
    d.report({r.BTN_STYLUS2: 0}, d.at(0.5, 0.5))
    d.report({r.BTN_STYLUS: 1}, d.at(0.6, 0.6))
    d.report({r.BTN_TOUCH: 0})
    d.report({r.BTN_STYLUS: 0})
    d.report({r.BTN_STYLUS2: 1})  # held when the tip touches
    d.report({r.BTN_TOUCH: 1}, d.at(0.7, 0.7))
    d.report({}, d.at(0.8, 0.8))
    d.report({r.BTN_TOUCH: 0})
    d.report({r.BTN_STYLUS2: 0})
    d.report({r.BTN_PEN: 0})


def lose_events(d: Recorder) -> None:
    touch = {r.BTN_PEN: 1, r.BTN_TOUCH: 1}
    nothing = {r.BTN_PEN: 0, r.BTN_TOUCH: 0}
    d.report(touch, d.at(0.1, 0.1))
    d.report({}, d.at(0.2, 0.2))
    d.lose({}, d.at(0.8, 0.8))  # still on the surface, elsewhere
    d.report({}, d.at(0.7, 0.7))
    d.lose(nothing, d.at(0.1, 0.9))  # lifted meanwhile
    d.report({}, d.at(0.2, 0.9))
    d.lose(touch, d.at(0.3, 0.3))  # set down meanwhile
    d.report({}, d.at(0.4, 0.3))
    d.lose()  # nothing changed
    d.report({}, d.at(0.5, 0.3))
    d.report({r.BTN_TOUCH: 0})
    d.report({r.BTN_STYLUS2: 1})
    d.lose({r.BTN_STYLUS2: 0})  # a key that was let go meanwhile
    d.report({r.BTN_TOUCH: 1}, d.at(0.9, 0.9))
    d.report(nothing)


def garbage(d: Recorder) -> None:
    """Between the events of a stroke, those that mean nothing."""
    d.report({r.BTN_PEN: 1}, d.at(0.1, 0.1, 0))
    for step in range(60):
        for _ in range(4):
            kind = d.random.choice([r.EV_REL, r.EV_MSC, 0x11, 0x12, 0x15, 0x1F, r.EV_ABS, r.EV_KEY, r.EV_SYN])
            code = d.random.choice([7, 0x1D, 0x2E, 0x100, 0x2FF, 0x3FF, 0xFFFF])
            if kind == r.EV_SYN:
                code = d.random.choice([r.SYN_CONFIG, r.SYN_MT_REPORT, 7])
            d.event(kind, code, d.random.choice([SHORTEST, -1, 0, 1, 2, LONGEST]))
        d.report({r.BTN_TOUCH: 1} if step in (0, 1, 30) else {}, d.at(*curve(step, 60)))
    d.report({r.BTN_TOUCH: 0})
    d.report({r.BTN_TOUCH: 0, r.BTN_PEN: 0})


def finger(d: Recorder, slot: int, number: int, u: float, v: float, force: float = 0.5) -> dict[int, int]:
    return {r.ABS_MT_SLOT: slot, r.ABS_MT_ID: number, **d.at(u, v, force, r.ABS_MT_X, r.ABS_MT_Y)}


def move(d: Recorder, slot: int, u: float, v: float) -> dict[int, int]:
    return {r.ABS_MT_SLOT: slot, **d.at(u, v, 0.6, r.ABS_MT_X, r.ABS_MT_Y)}


def lift(slot: int) -> dict[int, int]:
    return {r.ABS_MT_SLOT: slot, r.ABS_MT_ID: -1}


def fingers(d: Recorder) -> None:
    d.report({r.BTN_TOUCH: 1}, finger(d, 0, 11, 0.1, 0.1))
    d.report({}, move(d, 0, 0.2, 0.2))
    d.report({}, finger(d, 1, 12, 0.9, 0.9))  # a second finger, which stays
    d.report({}, move(d, 0, 0.3, 0.3))
    d.report({}, move(d, 1, 0.8, 0.8))
    d.event(r.EV_ABS, r.ABS_MT_SLOT, 1)
    d.event(r.EV_ABS, r.ABS_MT_X, 7)
    d.report({}, move(d, 0, 0.4, 0.4))  # both in one report
    d.report({}, lift(0))
    d.report({}, move(d, 1, 0.7, 0.7))
    d.report({}, finger(d, 2, 13, 0.5, 0.1))  # a new one, while the second is still there
    d.report({}, move(d, 2, 0.5, 0.2))
    d.report({}, lift(1))
    d.report({}, {**move(d, 2, 0.5, 0.3), r.ABS_MT_TOOL: r.MT_TOOL_PALM})
    d.report({}, move(d, 2, 0.5, 0.4))
    d.report({}, lift(2))
    d.report({}, {**finger(d, 0, 14, 0.3, 0.3), r.ABS_MT_TOOL: r.MT_TOOL_PALM})
    d.report({}, lift(0))
    d.report({}, finger(d, 0, 15, 0.6, 0.6))
    d.report({}, {r.ABS_MT_SLOT: 7, r.ABS_MT_X: 1})  # of nobody
    d.report({r.BTN_TOUCH: 0}, lift(0))


def lose_fingers(d: Recorder) -> None:
    d.report({r.BTN_TOUCH: 1}, finger(d, 0, 1, 0.1, 0.1))
    d.report({}, move(d, 0, 0.2, 0.2))
    d.lose({}, move(d, 0, 0.8, 0.8))  # still there, elsewhere
    d.report({}, move(d, 0, 0.7, 0.7))
    d.lose({}, lift(0))
    d.report({}, finger(d, 1, 2, 0.3, 0.3))
    d.event(r.EV_SYN, r.SYN_DROPPED, 0)
    for code, value in lift(1).items():
        d.event(r.EV_ABS, code, value)
    d.report({}, finger(d, 0, 3, 0.9, 0.1))
    d.report({}, move(d, 0, 0.9, 0.2))
    d.report({r.BTN_TOUCH: 0}, lift(0))


def single_touch(d: Recorder) -> None:
    for steps in (30, 1):
        stroke(d, steps, r.BTN_FINGER)


def axes(x: tuple[int, int, int], y: tuple[int, int, int], *pressure: tuple[int, int, int]) -> Axes:
    return {r.ABS_X: x, r.ABS_Y: y, **{r.ABS_PRESSURE: axis for axis in pressure}}


def screen(x: tuple[int, int, int], y: tuple[int, int, int], *pressure: tuple[int, int, int]) -> Axes:
    contacts = {r.ABS_MT_SLOT: (0, 9, 0), r.ABS_MT_X: x, r.ABS_MT_Y: y}
    contacts |= {r.ABS_MT_TOOL: (0, 2, 0), r.ABS_MT_ID: (0, 65535, 0)}
    return {r.ABS_X: x, r.ABS_Y: y, **contacts, **{r.ABS_MT_PRESSURE: axis for axis in pressure}}


WIDE, HIGH, FORCE = (0, 21600, 100), (0, 13500, 100), (0, 8191, 0)
TABLET = axes(WIDE, HIGH, FORCE)
ALL_TOOLS = [*PEN_KEYS, r.BTN_BRUSH, r.BTN_PENCIL, r.BTN_AIRBRUSH, r.BTN_MOUSE_TOOL, r.BTN_FINGER]
TOUCH = [r.BTN_TOUCH]

RECORDINGS: dict[str, tuple[list[int], Axes, list[int], Callable[[Recorder], None]]] = {
    "offset": (PEN_KEYS, axes((-4000, 31999, 120), (700, 20699, 120), (15, 4110, 0)), [r.DIRECT], strokes),
    "inverted": (PEN_KEYS, axes((32000, -1000, 200), (19999, 1, 90), (1023, 0, 0)), [], strokes),
    "unequal": ([r.BTN_TOUCH, r.BTN_STYLUS], axes((0, 32767, 235), (0, 32767, 323), (0, 1023, 0)), [], strokes),
    "tall": (PEN_KEYS, axes((0, 9000, 0), (0, 31000, 50), FORCE), [r.DIRECT], strokes),
    "no-pressure": (PEN_KEYS, axes(WIDE, HIGH), [], strokes),
    "by-pressure": ([r.BTN_PEN, r.BTN_STYLUS], axes(WIDE, HIGH, (0, 255, 0)), [], strokes),
    "beyond": (PEN_KEYS, TABLET, [], beyond),
    "eraser": (PEN_KEYS, TABLET, [r.DIRECT], erase),
    "tools": (ALL_TOOLS, TABLET, [], other_tools),
    "hover": (PEN_KEYS, TABLET, [], hover),
    "buttons": (PEN_KEYS, TABLET, [], press_buttons),
    "lost": (PEN_KEYS, TABLET, [], lose_events),
    "garbage": (PEN_KEYS, TABLET, [], garbage),
    "absurd": (PEN_KEYS, axes((SHORTEST, LONGEST, LONGEST), (LONGEST, SHORTEST, 1), (SHORTEST, LONGEST, 0)), [], beyond),
    "tiny": (PEN_KEYS, axes((0, 1, 0), (5, 6, 0), (0, 1, 0)), [], beyond),
    "fingers": (TOUCH, screen((0, 1919, 6), (0, 1079, 6), (0, 255, 0)), [r.DIRECT], fingers),
    "lost-fingers": (TOUCH, screen((0, 4095, 0), (0, 4095, 0)), [r.DIRECT], lose_fingers),
    "one-finger": ([r.BTN_TOUCH, r.BTN_FINGER], axes((200, 3900, 0), (3800, 250, 0)), [r.DIRECT], single_touch),
}

# Devices on which nothing happens.
KEY_ESC, KEY_ENTER, BTN_0, BTN_LEFT = 1, 28, 0x100, 0x110
SILENT: dict[str, tuple[list[int], Axes, list[int]]] = {
    "keyboard": ([KEY_ESC, KEY_ENTER], {}, []),
    "express-keys": ([BTN_0, BTN_0 + 1], {}, []),
    "touchpad": ([r.BTN_TOUCH, r.BTN_FINGER, BTN_LEFT], screen((0, 1000, 10), (0, 600, 10)), [r.POINTER]),
    "old-touchpad": ([r.BTN_TOUCH, r.BTN_FINGER], axes(WIDE, HIGH), []),
    "joystick": ([0x120], axes((-128, 127, 0), (-128, 127, 0)), []),
    "never-touched": ([r.BTN_PEN, r.BTN_STYLUS], axes(WIDE, HIGH), []),
    "flat-across": (PEN_KEYS, axes((7, 7, 1), HIGH, FORCE), []),
    "flat-down": (PEN_KEYS, axes(WIDE, (0, 0, 1), FORCE), []),
    "flat-pressure": (PEN_KEYS, axes(WIDE, HIGH, (5, 5, 0)), []),
    "flat-screen": (TOUCH, screen((3, 3, 0), (0, 9, 0)), [r.DIRECT]),
    "one-axis": (PEN_KEYS, {r.ABS_X: WIDE, r.ABS_PRESSURE: FORCE}, []),
}
# The parts of one tablet have its number.
SAME_TABLET = {"express-keys": 1}


def main() -> None:
    recordings, silent = Path(sys.argv[1]), Path(sys.argv[2])
    for folder in (recordings, silent):
        folder.mkdir(parents=True, exist_ok=True)
    for product, (name, (keys, ranges, properties, happens)) in enumerate(RECORDINGS.items(), 1):
        recorder = Recorder(name, keys, ranges, properties, product)
        happens(recorder)
        recorder.write(recordings)
    for product, (name, (keys, ranges, properties)) in enumerate(SILENT.items(), 101):
        Recorder(name, keys, ranges, properties, SAME_TABLET.get(name, product)).write(silent)


if __name__ == "__main__":
    main()
