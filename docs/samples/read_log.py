#!/usr/bin/env python3
"""Sums up a log: the host's calls with their time and last words, and the pen samples between them.

read_log.py [FILE], /tmp/scriberasdk.log without one
"""

import re
import sys
from pathlib import Path

LINE = re.compile(r"\[(?P<label>[^\]]*)\]:<(?P<tick>\d+)>-?(?P<text>.*?), $")


def main() -> None:
    path = Path(sys.argv[1] if len(sys.argv) > 1 else "/tmp/scriberasdk.log")
    entered: dict[str, int] = {}
    samples = 0
    for number, line in enumerate(path.read_text(errors="replace").splitlines(), 1):
        match = LINE.match(line)
        if not match:  # the lines of the clipping have no tick
            continue
        label, tick, text = match["label"], int(match["tick"]), match["text"]
        if "SignPadRawData()" in label and text.startswith("Enter"):
            samples += 1
        if "::" in label:  # the library's own classes; the host's calls have none
            continue
        if text.lower().startswith("enter"):
            entered[label] = tick
        elif text.startswith("leave"):
            if samples:
                print(f"        {samples} pen samples")
                samples = 0
            print(f"{number:6}  {label}  {tick - entered.pop(label, tick)} ms  {text}")
    for label in entered:
        print(f"        {label} was entered and not left")


if __name__ == "__main__":
    main()
