"""Ctrl-C between any two lines: the process ends, and the pad is closed or can be closed."""

from __future__ import annotations

import os
import subprocess
import sys
import textwrap
from pathlib import Path

import pytest

from simulator import recording_of

# Forks a child for each line that the operation runs, in this package or everywhere, until a child comes
# through without having met its line. The others raise KeyboardInterrupt there, which nobody catches. When its
# interpreter is about to go, each child tells whether it raised and how often the driver was started and stopped.
SCRIPT = """
import atexit, ctypes, os, signal, sys, threading, warnings
driver = ctypes.CDLL("./libscriberadrv.so")

def calls(name):
    return driver.ScrSim_CallCount(b"SCRDAPI_" + name)

def report():  # registered before the package registers its own: runs after it
    print(raised, calls(b"Initial"), calls(b"UnInitial"), flush=True)

atexit.register(report)
import scribera
from scribera import Pad, PadClosedError, _pad
warnings.simplefilter("ignore", ResourceWarning)

everywhere, operation = sys.argv[1] == "everywhere", sys.argv[2]
raised = False

def interrupt_line(wanted):
    count = 0

    def local(frame, event, argument):
        nonlocal count
        global raised
        if event == "line":
            count += 1
            if count == wanted:
                raised = True
                raise KeyboardInterrupt
        return local

    def enter(frame, event, argument):
        return local if everywhere or frame.f_code.co_filename == _pad.__file__ else None

    sys.settrace(enter)

def use(point):  # holds each of the locks that a callback may hold
    try:
        pad.ink()
        pad.png()
    except (PadClosedError, NameError):
        pass

def wait():
    try:
        pad.wait()
    except PadClosedError:
        pass

def run():
    global pad
    if operation == "open":
        interrupt_line(number)
        pad = Pad("K210", size=(60, 40), on_point=use)
        sys.settrace(None)
        pad.close()
        return
    pad = Pad("K210", size=(60, 40), on_point=use)
    while len(pad) < 3:
        pass
    if operation == "wait":
        interrupt_line(number)
        try:
            pad.wait(0.001)
        except scribera.PadTimeoutError:
            sys.settrace(None)
    elif operation == "with":
        with pad:
            interrupt_line(number)
        sys.settrace(None)
    elif operation == "close again":
        waiting = threading.Thread(target=wait)
        waiting.start()
        interrupt_line(number)
        try:
            pad.close()
        finally:
            sys.settrace(None)
            pad.close()
            assert pad.closed
    else:
        interrupt_line(number)
        pad.close()
        sys.settrace(None)

number = 0
while True:
    number += 1
    child = os.fork()
    if child == 0:
        signal.alarm(60)
        break
    _, status = os.waitpid(child, 0)
    code = os.waitstatus_to_exitcode(status)
    print("end", number, code, flush=True)
    if code != -signal.SIGINT:  # how the interpreter ends after an interrupt that nobody caught
        os._exit(0)

sys.stderr = open(os.devnull, "w")
run()
"""


def interrupted_at_each_line(frames: str, operation: str, folder: Path) -> list[list[str]]:
    """What the children and their ends told, in words, but for the last one, which met no interrupt."""
    run = subprocess.run(
        [sys.executable, "-c", textwrap.dedent(SCRIPT), frames, operation],
        env={
            **os.environ,
            "SCRIBERA_SIM_RECORDING": str(recording_of("K210", folder)),
            "SCRIBERA_SIM_RATE": "max",
            "SCRIBERA_SIM_LOOP": "1",
            "SCRIBERA_SIM_START_MS": "0",
        },
        capture_output=True,
        text=True,
        timeout=170,
    )
    lines = [line.split() for line in run.stdout.splitlines()]
    assert lines and lines[-1][::2] == ["end", "0"] and lines[-2][0] == "False", (lines[-5:], run.stderr)
    return lines[:-2]


CLOSINGS = [
    ("everywhere", "close"),
    ("package", "with"),
    ("everywhere", "close again"),
]


@pytest.mark.parametrize(("frames", "operation"), CLOSINGS)
def test_a_close_that_is_interrupted_anywhere_closes(frames: str, operation: str, folder: Path) -> None:
    lines = interrupted_at_each_line(frames, operation, folder)
    ends = [line for line in lines if line[0] == "end"]
    assert len(ends) > 20 and all(code == "-2" for _, _, code in ends)
    reports = [line for line in lines if line[0] != "end"]
    assert len(reports) == len(ends) and all(line == ["True", "1", "1"] for line in reports)


@pytest.mark.parametrize("operation", ["open", "wait"])
def test_an_interrupt_at_any_line_leaves_a_pad_that_can_be_closed(operation: str, folder: Path) -> None:
    lines = interrupted_at_each_line("package", operation, folder)
    ends = [line for line in lines if line[0] == "end"]
    assert len(ends) > 20 and all(code == "-2" for _, _, code in ends)
    for raised, opened, closed in (line for line in lines if line[0] != "end"):
        assert raised == "True" and opened == closed
