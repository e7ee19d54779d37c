#!/usr/bin/env python3
"""The version stands in CMakeLists.txt; whatever else has to hold it in writing holds the same one."""

from __future__ import annotations

import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
# A release is dated there, and Python's package is built without CMake.
WRITTEN = {"CMakeLists.txt", "CHANGELOG.md", "bindings/python/src/scribera/__init__.py"}
# Functions keep the version that they came with.
KEPT = {"include/scriberasdk_ext.h", "packaging/debian/libscriberasdk1.symbols"}


def output_of(*command: str) -> str:
    return subprocess.run(command, cwd=ROOT, check=True, capture_output=True, text=True).stdout.strip()


def main() -> None:
    version = output_of("scripts/version")
    faults = []
    if not re.fullmatch(r"\d+\.\d+\.\d+", version):
        faults.append(f"scripts/version says {version!r}")
    if not re.fullmatch(r"\d{4}-\d\d-\d\d", output_of("scripts/version", "--date")):
        faults.append("the release has no date")
    python = (ROOT / "bindings/python/src/scribera/__init__.py").read_text()
    if f'__version__ = "{version}"' not in python:
        faults.append("the Python package has another version")
    header = (ROOT / "include/scriberasdk_ext.h").read_text()
    if ".".join(re.findall(r"#define SCRX_VERSION_(?:MAJOR|MINOR|PATCH) (\d+)", header)) != version:
        faults.append("include/scriberasdk_ext.h has another version")

    number = re.compile(rf"(?<![\d.]){re.escape(version)}(?!\.?\d)")
    places = set()
    for name in output_of("scripts/list-sources", "*").splitlines():
        try:
            text = (ROOT / name).read_text()
        except UnicodeDecodeError:
            continue
        if number.search(text):
            places.add(name)
    faults += [f"{name} holds the version, which scripts/version or CMake could give it" for name in sorted(places - WRITTEN - KEPT)]
    faults += [f"{name} does not hold the version" for name in sorted(WRITTEN - places)]
    if faults:
        sys.exit("\n".join(faults))


main()
