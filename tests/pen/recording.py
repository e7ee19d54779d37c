"""Recordings of input devices in evemu's text format, and what a mocked device needs to be like the recorded one.

As a program, with a recording: writes device.umockdev and device.ioctl for the node that is named.
"""

import struct
import sys
from pathlib import Path

EV_SYN, EV_KEY, EV_REL, EV_ABS, EV_MSC = 0, 1, 2, 3, 4
SYN_REPORT, SYN_CONFIG, SYN_MT_REPORT, SYN_DROPPED = 0, 1, 2, 3
ABS_X, ABS_Y, ABS_PRESSURE, ABS_TILT_X = 0x00, 0x01, 0x18, 0x1A
ABS_MT_SLOT, ABS_MT_X, ABS_MT_Y, ABS_MT_TOOL, ABS_MT_ID, ABS_MT_PRESSURE = 0x2F, 0x35, 0x36, 0x37, 0x39, 0x3A
BTN_PEN, BTN_RUBBER, BTN_BRUSH, BTN_PENCIL, BTN_AIRBRUSH, BTN_FINGER, BTN_MOUSE_TOOL = range(0x140, 0x147)
BTN_TOUCH, BTN_STYLUS, BTN_STYLUS2 = 0x14A, 0x14B, 0x14C
MT_TOOL_FINGER, MT_TOOL_PALM = 0, 2
DIRECT, POINTER = 1, 0

# How many bytes libevdev asks for, by event type.
MASK_BYTES = {EV_KEY: 96, 0x15: 16}
TYPES = (0, 1, 2, 3, 4, 5, 0x11, 0x12, 0x14, 0x15, 0x17)


class Device:
    def __init__(self, path: Path):
        self.name, self.identity = "", (0, 0, 0, 0)
        self.properties = b""
        self.masks: dict[int, bytes] = {}
        self.axes: dict[int, tuple[int, int, int, int, int]] = {}  # minimum, maximum, fuzz, flat, resolution
        self.events: list[tuple[int, int, int]] = []
        for line in path.read_text().splitlines():
            what, _, rest = line.partition(":")
            words = rest.split()
            if what == "N":
                self.name = rest.strip()
            elif what == "I":
                bus, vendor, product, version = (int(word, 16) for word in words)
                self.identity = (bus, vendor, product, version)
            elif what == "P":
                self.properties += bytes.fromhex(rest)
            elif what == "B":
                kind = int(words[0], 16)
                self.masks[kind] = self.masks.get(kind, b"") + bytes.fromhex("".join(words[1:]))
            elif what == "A":
                numbers = [int(word) for word in words[1:]] + [0]
                self.axes[int(words[0], 16)] = (numbers[0], numbers[1], numbers[2], numbers[3], numbers[4])
            elif what == "E":
                self.events.append((int(words[1], 16), int(words[2], 16), int(words[3])))

    def has(self, kind: int, code: int) -> bool:
        mask = self.masks.get(kind, b"")
        return code // 8 < len(mask) and bool(mask[code // 8] >> code % 8 & 1)


def padded(data: bytes, size: int) -> str:
    return data[:size].ljust(size, b"\0").hex().upper()


def ioctls(device: Device, node: str) -> str:
    name = device.name.encode() + b"\0"
    lines = [
        f"@DEV {node}",
        "EVIOCGVERSION 0 01000100",
        f"EVIOCGID 0 {struct.pack('<4H', *device.identity).hex().upper()}",
        f"EVIOCGNAME {len(name)} {padded(name, 255)}",
        f"EVIOCGPHYS 1 {padded(b'', 255)}",
        f"EVIOCGUNIQ 1 {padded(b'', 255)}",
        f"EVIOCGPROP 8 {padded(device.properties, 8)}",
    ]
    for kind in TYPES:
        size = MASK_BYTES.get(kind, 8)
        lines.append(f"EVIOCGBIT({kind}) {size} {padded(device.masks.get(kind, b''), size)}")
    lines += [f"EVIOCGKEY 96 {padded(b'', 96)}", *(f"EVIOCG{what} 8 {padded(b'', 8)}" for what in ("LED", "SW", "SND"))]
    for code, axis in device.axes.items():
        lines.append(f"EVIOCGABS({code}) 0 {struct.pack('<6i', 0, *axis).hex().upper()}")
    return "\n".join(lines) + "\n"


def description(device: Device, node: str) -> str:
    number = int(node.removeprefix("/dev/input/event"))
    path = f"/devices/pci0000:00/usb1/1-{number}/input/input{number}"
    return "\n".join(
        [
            f"P: {path}/event{number}",
            f"N: input/event{number}",
            f"E: DEVNAME={node}",
            "E: MAJOR=13",
            f"E: MINOR={64 + number}",
            "E: SUBSYSTEM=input",
            "",
            f"P: {path}",
            f'E: NAME="{device.name}"',
            "E: SUBSYSTEM=input",
            f"A: name={device.name}",
            "",
        ]
    )


def main() -> None:
    file, node = Path(sys.argv[1]), sys.argv[2]
    device = Device(file)
    Path("device.umockdev").write_text(description(device, node))
    Path("device.ioctl").write_text(ioctls(device, node))


if __name__ == "__main__":
    main()
