"""The example host, run as a user runs it."""

from __future__ import annotations

import os
import pty
import subprocess
import sys
from contextlib import suppress
from pathlib import Path

import pytest

from pictures import read_png
from scribera import Model, read_ink
from simulator import MODELS, recording_of


def sign(*arguments: str, **environment: str) -> subprocess.CompletedProcess[str]:
    return sign_onto(subprocess.PIPE, *arguments, **environment)


def sign_onto(stderr: int, /, *arguments: str, **environment: str) -> subprocess.CompletedProcess[str]:
    return subprocess.run(
        [sys.executable, example(), *arguments],
        env={**os.environ, "SCRIBERA_SIM_RATE": "max", **environment},
        stdout=subprocess.PIPE,
        stderr=stderr,
        text=True,
        timeout=100,
    )


def example() -> str:
    beside_the_tree = Path(__file__).parents[3] / "examples/python-host/sign.py"
    return os.environ.get("SCRIBERA_EXAMPLE", str(beside_the_tree))


@pytest.mark.parametrize("model", MODELS)
def test_a_confirmed_signature_is_saved(model: Model, folder: Path) -> None:
    recording = recording_of(model, folder)
    run = sign(model, "-o", "out", SCRIBERA_SIM_RECORDING=str(recording), SCRIBERA_SIM_KEY="confirm")
    assert run.returncode == 0, run
    assert run.stdout == "1 strokes saved as out.png, .svg and .ink\n"
    assert run.stderr == f"waiting for a signature on the {model}\n62 points\n"
    assert len(read_ink(Path("out.ink").read_text())) == 62
    assert read_png(Path("out.png").read_bytes()).ink()
    assert Path("out.svg").read_bytes().rstrip().endswith(b"</svg>")


def test_on_a_terminal_the_points_are_counted_on_one_line(folder: Path) -> None:
    terminal, writing_end = pty.openpty()
    run = sign_onto(
        writing_end,
        "SCK210",
        SCRIBERA_SIM_RECORDING=str(recording_of("K210", folder)),
        SCRIBERA_SIM_KEY="confirm",
    )
    os.close(writing_end)
    shown = b""
    with open(terminal, "rb", buffering=0) as reader, suppress(OSError):  # the end of a terminal is an error
        while part := reader.read(4096):
            shown += part
    assert run.returncode == 0
    first, counting, end = shown.decode().split("\r\n")
    assert (first, end) == ("waiting for a signature on the K210", "")
    assert counting.count("\r") >= 2 and counting.endswith("\r62 points")


def test_a_cancelled_signature_is_not_saved(folder: Path) -> None:
    recording = recording_of("T580", folder)
    run = sign("T580", SCRIBERA_SIM_RECORDING=str(recording), SCRIBERA_SIM_KEY="cancel")
    assert (run.returncode, run.stdout) == (1, "cancelled; nothing saved\n")
    assert list(folder.glob("signature.*")) == []


def test_failures_are_told_in_a_line(folder: Path) -> None:
    recording = {"SCRIBERA_SIM_RECORDING": str(recording_of("K210", folder)), "SCRIBERA_SIM_KEY": "confirm"}
    failures = [
        (sign("K210", "-t", "0.3"), "sign: nobody confirmed within 0.3 seconds"),
        (
            sign("K210", "-o", "missing/out", **recording),
            "sign: [Errno 2] No such file or directory: 'missing/out.png'",
        ),
        (sign("K210", "-d", "/"), "sign: There is no driver: Cannot load library ./libscriberadrv.so"),
        (sign("K210", "-d", "missing"), "sign: [Errno 2] No such file or directory: 'missing'"),
        (sign("K210", SCRIBERA_LIBRARY="missing.so"), "sign: cannot load the Scribera library: missing.so: "),
        (
            sign("K210", SCRIBERA_SIM_MODEL="SCX"),
            "sign: The pad is no K210: it calls itself 'SCX', with result 0",
        ),
    ]
    for run, message in failures:
        assert run.returncode == 2 and run.stdout == "", run
        assert run.stderr.splitlines()[-1].startswith(message), run
        assert "Traceback" not in run.stderr


def test_help_tells_the_models() -> None:
    run = sign("--help")
    assert run.returncode == 0
    assert all(model in run.stdout for model in MODELS)
    unknown = sign("K211")
    assert (unknown.returncode, unknown.stdout) == (2, "")
    assert unknown.stderr == "sign: no model 'K211'; there are K210, K420, K421B, KM730, T580\n"
