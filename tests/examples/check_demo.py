#!/usr/bin/env python3
"""Checks the demo and its hosts; one check a call, exit code 0 when it holds, 77 when it cannot be made here.

check_demo.py folder      replaces results of its own only
check_demo.py run         signs on every pad, in the pads' proportions, and leaves nothing in /tmp
check_demo.py terminal    shows the signing on a terminal in one place
"""

from __future__ import annotations

import argparse
import os
import pty
import shutil
import struct
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests" / "docs"))
from check_docs import private_tmp  # noqa: E402

SKIPPED = 77
RECORDINGS = ROOT / "drivers" / "simulator" / "recordings"
AREAS = {
    "K210": (2360, 1430),
    "K420": (2300, 1300),
    "K421B": (21170, 11490),
    "KM730": (29870, 20120),
    "T580": (29870, 20120),
}

failures: list[str] = []


def expect(condition: object, complaint: str) -> None:
    if not condition:
        failures.append(complaint)


def content(folder: Path) -> dict[str, bytes]:
    return {str(path.relative_to(folder)): path.read_bytes() for path in folder.rglob("*") if path.is_file()}


def environment(**more: str) -> dict[str, str]:
    clean = {name: value for name, value in os.environ.items() if not name.startswith("SCRIBERA_")}
    return clean | {"SCRIBERA_SIM_RATE": "20"} | more


def demo(arguments: argparse.Namespace, hosts: Path, out: Path, prefix: list[str]) -> subprocess.CompletedProcess[str]:
    command = [str(ROOT / "scripts" / "run-demo"), arguments.library, arguments.driver, hosts, RECORDINGS, out]
    return subprocess.run([*prefix, *map(str, command)], env=environment(), capture_output=True, text=True, check=False)


def check_folder(arguments: argparse.Namespace, work: Path) -> None:
    hosts = work / "hosts"
    hosts.mkdir()
    for name, folder in (
        ("sign_on_every_pad", "K210"),
        ("carry_away", "K210"),
        ("place_fingerprints", "."),
    ):
        host = hosts / name
        host.write_text(f'#!/bin/sh\nmkdir -p "$2/{folder}" && echo {name} >"$2/{folder}/{name}.txt"\n')
        host.chmod(0o755)

    mine = work / "mine"
    (mine / "K210").mkdir(parents=True)
    (mine / "K210" / "letter.txt").write_text("mine")
    (work / "file").write_text("mine")
    for taken in (mine, work / "file", work):
        before = content(work)
        run = demo(arguments, hosts, taken, [])
        expect(run.returncode == 1, f"{taken}: exit code {run.returncode}")
        expect(run.stderr.startswith(f"demo: FAILED: {taken} ") and run.stderr.count("\n") == 1, run.stderr)
        expect(content(work) == before, f"{taken} is not what it was")

    results = {"K210/sign_on_every_pad.txt", "K210/carry_away.txt", "K421B-fingerprint/place_fingerprints.txt"}
    empty = work / "empty"
    empty.mkdir()
    for out in (work / "new" / "folder", empty):
        expect(demo(arguments, hosts, out, []).returncode == 0, f"{out} was refused")
        expect(results < set(content(out)), f"in {out} is {list(content(out))}")
        (out / "K210" / "stale.png").write_text("of an older demo")
        (out / "letter.txt").write_text("mine")
        expect(demo(arguments, hosts, out, []).returncode == 0, f"{out} was refused the second time")
        expect(results < set(content(out)), f"in {out} is {list(content(out))}")
        expect(not (out / "K210" / "stale.png").exists(), "an old result is taken for a new one")
        expect((out / "letter.txt").read_text() == "mine", "what somebody put there is gone")


def check_run(arguments: argparse.Namespace, work: Path) -> None:
    out = work / "out"
    left = work / "left"
    needed = {work, ROOT, arguments.hosts, arguments.library.parent, arguments.driver.parent}
    below_tmp = sorted(path for path in needed if path.is_relative_to("/tmp"))
    outermost = [path for path in below_tmp if not needed.intersection(path.parents)] or [work]
    prefix = private_tmp(outermost)
    if not prefix:
        print("no private /tmp here")
        sys.exit(SKIPPED)
    list_tmp = ["sh", "-c", 'ls -A /tmp >"$0" && "$@"; answer=$?; ls -A /tmp >"$0.after"; exit $answer', str(left)]
    run = demo(arguments, arguments.hosts, out, [*prefix, str(work), *list_tmp])
    expect(run.returncode == 0, f"exit code {run.returncode}:\n{run.stdout}{run.stderr}")
    before, after = left.read_text(), Path(f"{left}.after").read_text()
    expect(before == after, f"in /tmp was {before.split()} and is {after.split()}")

    # A line for each signature: twice five pads, each pad and its copy, four placements.
    lines = run.stderr.splitlines()
    expect("\r" not in run.stderr and len(lines) == 10 + 10 + 4, f"on standard error:\n{run.stderr!r}")
    for line in lines:
        expect(line.endswith(" points") and " s, " in line, line)
    for model, (width, height) in AREAS.items():
        picture = (out / model / "windowless.png").read_bytes()
        got = struct.unpack(">II", picture[16:24])
        expect(got[1] == 400 and abs(got[0] - 400 * width / height) <= 0.5, f"the canvas of the {model} is {got}")


def check_terminal(arguments: argparse.Namespace, work: Path) -> None:
    (work / "libscriberadrv.so").symlink_to(arguments.driver)
    master, terminal = pty.openpty()
    host = subprocess.Popen(
        [arguments.hosts / "place_fingerprints", arguments.library, work / "out", RECORDINGS / "initials.rec"],
        cwd=work,
        env=environment(
            SCRIBERA_SIM_KEY="confirm",
            SCRIBERA_SIM_FINGERPRINT="loop",
            QT_QPA_PLATFORM="offscreen",
            XDG_RUNTIME_DIR=str(work),
        ),
        stdout=subprocess.DEVNULL,
        stderr=terminal,
    )
    os.close(terminal)
    shown = b""
    while True:
        try:
            block = os.read(master, 65536)
        except OSError:  # its end
            break
        if not block:
            break
        shown += block
    expect(host.wait() == 0, f"exit code {host.returncode}")
    expect(shown.count(b"\r") > 4 * 2 and b"\n" not in shown, f"on the terminal: {shown!r}")
    expect(shown.count(b"\r" + b" " * 60 + b"\r") == 4, "the place is not cleared after each signature")


def main() -> int:
    checks = {"folder": check_folder, "run": check_run, "terminal": check_terminal}
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("check", choices=checks)
    for name in ("library", "driver", "hosts", "work"):
        parser.add_argument(f"--{name}", type=lambda text: Path(text).resolve(), required=True)
    arguments = parser.parse_args()
    work = arguments.work / f"{arguments.check}.{os.getpid()}"
    work.mkdir(parents=True, mode=0o700)
    checks[arguments.check](arguments, work)
    for failure in failures:
        print(failure)
    if failures:
        print(f"left for a look: {work}")
        return 1
    shutil.rmtree(work)
    return 0


if __name__ == "__main__":
    sys.exit(main())
