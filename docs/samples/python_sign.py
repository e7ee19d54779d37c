#!/usr/bin/env python3
"""Takes a signature with the Python package: three pictures and the ink."""

import sys

from scribera import NoPadError, Pad, PadTimeoutError, Status


def main() -> int:
    try:
        with Pad("K420", size=(690, 390)) as pad:
            pad.pen_color = (0, 0, 128)
            if pad.wait(timeout=60) is Status.CANCEL:
                return 1
            for name in ("signature.png", "signature.pdf", "signature.svg", "signature.ink"):
                pad.save(name, dpi=300, clip=(10, 10))
            print(f"{len(pad)} points in {len(pad.strokes())} strokes")
    except NoPadError:
        print("no pad", file=sys.stderr)
        return 2
    except PadTimeoutError:
        print("nobody signed", file=sys.stderr)
        return 3
    return 0


if __name__ == "__main__":
    sys.exit(main())
