"""The samples that a pad has to give when a recording is played on it, by the driver's documented rules.

    expected.py RECORDING LEFT TOP WIDTH HEIGHT LIMIT [FIT [ROTATION [AREA]]]

Prints x, y, pressure and status of each.
"""

import sys
from collections.abc import Iterator
from pathlib import Path
from typing import Optional

import recording as r
from formula import Axis, Formula, Mounting, Pad

DOWN, MOVE, UP, CANCEL, CONFIRM = range(5)
KEYS = {r.BTN_STYLUS: CANCEL, r.BTN_STYLUS2: CONFIRM}
WRITING = {r.BTN_PEN, r.BTN_BRUSH, r.BTN_PENCIL, r.BTN_AIRBRUSH}
TOOLS = set(range(r.BTN_PEN, r.BTN_TOUCH)) - {0x148, 0x149}  # those two count fingers

Report = list[tuple[int, int, int]]


def reports(events: Report) -> Iterator[tuple[bool, Report]]:
    """The events between two SYN_REPORTs, and whether the reader has lost them."""
    report: Report = []
    lost = False
    for event in events:
        if event[:2] == (r.EV_SYN, r.SYN_REPORT):
            yield lost, report
            report, lost = [], False
        elif event[:2] == (r.EV_SYN, r.SYN_DROPPED):
            lost = True
        else:
            report.append(event)


class Player:
    """What both kinds of device have in common: strokes and keys."""

    def __init__(self, formula: Formula):
        self.formula = formula
        self.samples: list[tuple[int, int, int, int]] = []
        self.on = False
        self.key: Optional[int] = None

    def touch(self, x: int, y: int, pressure: int) -> None:
        if self.key is not None:
            self.release(self.key)
        self.samples.append((*self.formula.place(x, y), self.formula.pressure(pressure), MOVE if self.on else DOWN))
        self.on = True

    def leave(self) -> None:
        if self.on:
            self.samples.append((*self.samples[-1][:2], 0, UP))
        self.on = False

    def press(self, key: int) -> None:
        if self.key is None and not self.on:
            self.key = key
            self.samples.append((0, 0, 0, key))

    def release(self, key: int) -> None:
        if self.key == key:
            self.key = None
            self.samples.append((0, 0, 0, UP))


def play_tip(device: r.Device, player: Player, writing: set[int]) -> None:
    keys: dict[int, int] = {}
    axes: dict[int, int] = {}
    seen_tool = False
    for lost, report in reports(device.events):
        if lost:
            player.leave()
        before, axes_before = dict(keys), dict(axes)
        for kind, code, value in report:
            if kind == r.EV_KEY and value != 2 and device.has(kind, code):
                keys[code] = value
            elif kind == r.EV_ABS and device.has(kind, code):
                axes[code] = value
        if lost and keys == before and axes == axes_before:
            continue  # there is nothing to tell anew
        tools = {code for code in TOOLS if keys.get(code)}
        seen_tool = seen_tool or bool(tools & writing)
        if device.has(r.EV_KEY, r.BTN_TOUCH):
            touches = bool(keys.get(r.BTN_TOUCH))
        else:
            touches = axes.get(r.ABS_PRESSURE, 0) != device.axes[r.ABS_PRESSURE][0]
        if touches and not tools - writing and (tools or not seen_tool):
            player.touch(axes.get(r.ABS_X, 0), axes.get(r.ABS_Y, 0), axes.get(r.ABS_PRESSURE, 0))
        else:
            player.leave()
        if lost:  # only what became of them is known
            report = [(r.EV_KEY, code, keys.get(code, 0)) for code in sorted(KEYS)]
        for kind, code, value in report:
            if kind == r.EV_KEY and code in KEYS and value != 2 and value != before.get(code, 0):
                before[code] = value
                (player.press if value else player.release)(KEYS[code])


def play_fingers(device: r.Device, player: Player) -> None:
    slots: dict[int, dict[int, int]] = {}
    slot = 0
    pen = None  # slot and tracking number of the finger that signs
    for lost, report in reports(device.events):
        if lost:
            player.leave()
        seen = {}
        known = {number: contact.get(r.ABS_MT_ID, -1) for number, contact in slots.items()}
        for kind, code, value in report:
            if kind != r.EV_ABS:
                continue
            if code == r.ABS_MT_SLOT:
                slot = value
            elif code > r.ABS_MT_SLOT and 0 <= slot <= device.axes[r.ABS_MT_SLOT][1]:
                seen[slot] = True
                contact = slots.setdefault(slot, {})
                if code == r.ABS_MT_ID and value >= 0 and value != contact.get(code, -1):
                    contact[r.ABS_MT_TOOL] = r.MT_TOOL_FINGER
                contact[code] = value

        def signs(number: int) -> bool:
            contact = slots.get(number, {})
            return contact.get(r.ABS_MT_ID, -1) >= 0 and contact.get(r.ABS_MT_TOOL, 0) != r.MT_TOOL_PALM

        if pen and (slots[pen[0]].get(r.ABS_MT_ID) != pen[1] or not signs(pen[0])):
            player.leave()
            pen = None
        begins = False
        if not pen:
            new = [n for n in sorted(slots) if signs(n) and slots[n][r.ABS_MT_ID] != known.get(n, -1)]
            if new:
                pen, begins = (new[0], slots[new[0]][r.ABS_MT_ID]), True
        if pen and (begins or lost or pen[0] in seen or not seen):
            contact = slots[pen[0]]
            player.touch(contact.get(r.ABS_MT_X, 0), contact.get(r.ABS_MT_Y, 0), contact.get(r.ABS_MT_PRESSURE, 0))


def main() -> None:
    device = r.Device(Path(sys.argv[1]))
    pad = Pad(*(int(word) for word in sys.argv[2:7]))
    fit, rotation, area = (sys.argv[7:] + ["keep", "0", ""][len(sys.argv) - 7 :])[:3]
    part = tuple(round(1000 * float(word)) for word in area.split(",")) if area else None
    pen = any(device.has(r.EV_KEY, code) for code in WRITING | {r.BTN_RUBBER} | set(KEYS))
    fingers = not pen and r.ABS_MT_SLOT in device.axes
    x, y, pressure = (r.ABS_MT_X, r.ABS_MT_Y, r.ABS_MT_PRESSURE) if fingers else (r.ABS_X, r.ABS_Y, r.ABS_PRESSURE)

    def axis(code: int) -> Axis:
        minimum, maximum, _, _, resolution = device.axes[code]
        return Axis(minimum, maximum, resolution)

    mounting = Mounting(fit, int(rotation), part)  # type: ignore[arg-type]
    formula = Formula(axis(x), axis(y), pad, mounting, axis(pressure) if pressure in device.axes else None)
    player = Player(formula)
    if fingers:
        play_fingers(device, player)
    else:
        play_tip(device, player, WRITING if pen else WRITING | {r.BTN_FINGER})
    for sample in player.samples:
        print(*sample)


if __name__ == "__main__":
    main()
