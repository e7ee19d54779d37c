#!/usr/bin/env python3
"""Takes a signature on a pad and saves it as PNG, SVG and ink packet stream."""

import argparse
import sys
from pathlib import Path
from time import monotonic

from scribera import FAMILIES, Pad, PadTimeoutError, ScriberaError, Status, let_workers_wait


def wait(pad: Pad, seconds: float) -> Status:
    """Waits for the key; somebody who looks on sees the points grow."""
    print(f"waiting for a signature on the {pad.model}", file=sys.stderr)
    if not sys.stderr.isatty():
        return pad.wait(seconds)
    end = monotonic() + seconds
    while True:
        print(f"\r{len(pad)} points", end="", file=sys.stderr, flush=True)
        try:
            return pad.wait(min(0.1, end - monotonic()))
        except PadTimeoutError:
            if monotonic() >= end:
                raise


def sign(pad: Pad, stem: Path, seconds: float) -> int:
    try:
        status = wait(pad, seconds)
    finally:
        start = "\r" if sys.stderr.isatty() else ""
        print(f"{start}{len(pad)} points", file=sys.stderr)
    if status is Status.CANCEL:
        print("cancelled; nothing saved")
        return 1
    pad.save(stem.with_suffix(".png"), clip=(10, 10))
    pad.save(stem.with_suffix(".svg"))
    pad.save(stem.with_suffix(".ink"))
    print(f"{len(pad.strokes())} strokes saved as {stem}.png, .svg and .ink")
    return 0


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, epilog="Exit code: 0 saved, 1 cancelled, 2 failed.")
    parser.add_argument("model", help=f"the pad's model: {', '.join(FAMILIES)}")
    parser.add_argument("-o", "--output", type=Path, default=Path("signature"), help="path without suffix")
    parser.add_argument("-t", "--timeout", type=float, default=60, metavar="SECONDS", help="default: 60")
    parser.add_argument("-d", "--driver-directory", type=Path, help="default: the current one")
    arguments = parser.parse_args()
    try:
        let_workers_wait()  # a person takes a while, and nothing has to poll meanwhile
        with Pad(arguments.model, driver_directory=arguments.driver_directory) as pad:
            return sign(pad, arguments.output, arguments.timeout)
    except PadTimeoutError:
        print(f"sign: nobody confirmed within {arguments.timeout:g} seconds", file=sys.stderr)
    except (ScriberaError, OSError) as error:
        print(f"sign: {error}", file=sys.stderr)
    return 2


if __name__ == "__main__":
    sys.exit(main())
