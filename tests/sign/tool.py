"""scribera-sign as people call it, and what has to be true of every file that it makes."""

from __future__ import annotations

import os
import re
import shutil
import subprocess
from pathlib import Path

import pictures
from checks import check_by_openssl, check_by_pdfsig, check_by_qpdf, run, signatures
from keys import Keys

SOURCE = Path(__file__).resolve().parents[2]
RECORDINGS = SOURCE / "drivers" / "simulator" / "recordings"
PROGRAM = os.environ["SCRIBERA_SIGN"]
MODEL = "K210"
# Programs with a sanitizer take their time, and are run where that finds something.
IS_SANITIZED = bool(os.environ.get("SCRIBERA_SANITIZER"))
IS_FULL_LENGTH = os.environ.get("SCRIBERA_FULL_LENGTH") == "yes"
LARGEST_GROWTH = 200_000
PATIENCE = 120


def environment(**more: str) -> dict[str, str]:
    own = {name: value for name, value in os.environ.items() if not name.startswith("SCRIBERA_SIM_")}
    return {**own, "QT_QPA_PLATFORM": "offscreen", "LC_ALL": "C.UTF-8", **more}


def playing(recording: str, **more: str) -> dict[str, str]:
    return environment(**{"SCRIBERA_SIM_RATE": "max", "SCRIBERA_SIM_KEY": "confirm",
                          "SCRIBERA_SIM_RECORDING": str(RECORDINGS / recording), **more})


class Ink:
    """A signature as an ink text, and as the library draws it."""

    def __init__(self, folder: Path, recording: str) -> None:
        self.file = folder / f"{recording}.txt"
        taken = run(os.environ["SCRIBERA_PAD_TOOL"], "sign", "--driver", os.environ["SCRIBERA_DRIVER_LIBRARY"], "--model", MODEL,
                    "-o", self.file, env=playing(f"{recording}.rec"))
        assert taken.returncode == 0, taken.stderr
        # The default canvas of that program: 400 pixels high, as wide as the pad's proportions make it.
        svg = run(os.environ["SCRIBERA_INK_TOOL"], "to-svg", "--model", MODEL, "--size", "660x400", self.file)
        assert svg.returncode == 0, svg.stderr
        self.strokes = pictures.strokes_of(svg.stdout)
        self.bounds = pictures.bounds(self.strokes)


class Place:
    """Where the ink shall be: points from the upper left of what is seen of a page."""

    def __init__(self, page: int, left: float, top: float, width: float) -> None:
        self.page, self.left, self.top, self.width = page, left, top, width

    @property
    def options(self) -> list[str]:
        return ["--page", str(self.page), "--at", f"{self.left:g},{self.top:g}", "--width", f"{self.width:g}"]


class Tool:
    def __init__(self, keys: Keys, inks: dict[str, Ink]) -> None:
        self.keys = keys
        self.inks = inks

    def run(self, *arguments: str | Path, **how: object) -> subprocess.CompletedProcess[str]:
        how.setdefault("env", environment())
        how.setdefault("timeout", PATIENCE)
        return run(PROGRAM, *arguments, **how)

    def run_briefly(self, *arguments: str | Path) -> subprocess.CompletedProcess[str]:
        """Ended after ten seconds of a processor's time, however busy that is with others."""
        seconds = 100 if IS_SANITIZED else 10
        return run("prlimit", f"--cpu={seconds}", PROGRAM, *arguments, env=environment(), timeout=20 * seconds)

    def with_key(self, kind: str) -> list[str]:
        return ["--certificate", str(self.keys.p12(kind)), "--password-file", str(self.keys.password_file)]

    def with_ink(self, name: str = "initials") -> list[str]:
        return ["--ink", str(self.inks[name].file)]

    def sign(self, source: Path, output: Path, place: Place, kind: str = "rsa", *more: str | Path,
             ink: str = "initials") -> subprocess.CompletedProcess[str]:
        return self.run(source, "-o", output, *place.options, *self.with_ink(ink), *self.with_key(kind), *more)

    def checked(self, source: Path, output: Path, place: Place, kind: str = "rsa", *more: str | Path, ink: str = "initials",
                password: str = "") -> bytes:
        """Signs and holds the outcome against everything but the picture."""
        before = source.read_bytes()
        done = self.sign(source, output, place, kind, *more, ink=ink)
        assert done.returncode == 0, done.stderr
        after = output.read_bytes()
        assert source.read_bytes() == before, "the input was touched"
        self.check(before, output, password)
        assert len(after) - len(before) <= LARGEST_GROWTH
        return after

    def check(self, before: bytes, output: Path, password: str = "") -> None:
        after = output.read_bytes()
        assert after.startswith(before), "old bytes changed"
        assert is_table(after) == is_table(before), "another kind of cross-reference"
        earlier, all_of_them = signatures(before), signatures(after)
        assert [one.ranges for one in all_of_them[: len(earlier)]] == [one.ranges for one in earlier]
        assert len(all_of_them) == len(earlier) + 1
        newest = all_of_them[-1]
        assert newest.end == len(after) and newest.ranges[1] >= len(before)
        for one in all_of_them:
            check_by_openssl(one, self.keys.authority)
        check_by_pdfsig(output, len(all_of_them), *(("-upw", password) if password else ()))
        check_by_qpdf(output, *((f"--password={password}",) if password else ()))


def is_table(document: bytes) -> bool:
    """Of what kind the last cross-reference is."""
    at = int(document[document.rindex(b"startxref") + 9 :].split()[0])
    start = document.find(b"%PDF-") if document.find(b"%PDF-") < 1024 else 0
    parts = {document[at + shift :].lstrip()[:4] == b"xref" for shift in (0, start)}
    return True in parts


def one_line(told: subprocess.CompletedProcess[str]) -> str:
    """What a refusal says: one line, and nothing on standard output."""
    assert not told.stdout, told.stdout
    assert re.fullmatch(r"scribera-sign: [^\n]+\n", told.stderr), told.stderr
    return told.stderr[len("scribera-sign: ") : -1]


def listing(folder: Path) -> list[str]:
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*"))


def copied(source: Path, folder: Path) -> Path:
    return Path(shutil.copy(source, folder / source.name))
