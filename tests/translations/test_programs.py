"""Programs in German, in no language that there is, and in one where every text is longer and in brackets."""

from __future__ import annotations

import json
import os
import re
import subprocess
import sys
import tempfile
from dataclasses import dataclass
from pathlib import Path

import pytest

from pseudo import BEGIN, END

sys.path.append(str(Path(__file__).resolve().parents[1] / "sign"))
from writer import document  # noqa: E402

PROGRAMS = {name: os.environ[f"SCRIBERA_PROGRAM_{name.upper().replace('-', '_')}"]
            for name in ("ink", "pad", "virtual-pad", "sim-generate", "sim-fingerprint", "sim-import", "sign")
            if f"SCRIBERA_PROGRAM_{name.upper().replace('-', '_')}" in os.environ}
RECORDINGS = Path(__file__).resolve().parents[2] / "drivers" / "simulator" / "recordings"
PATIENCE = 120
RUNTIME_FOLDER = tempfile.TemporaryDirectory()  # without one, Qt complains
GERMAN = {"LANGUAGE": "de"}
PSEUDO = {"LANGUAGE": "en_XA", "SCRIBERA_TRANSLATIONS": os.environ["SCRIBERA_PSEUDO_FOLDER"]}
COMMANDS = {
    "ink": ("info", "plot", "to-json", "to-csv", "to-svg", "to-png", "to-pdf", "to-recording", "to-inkml",
            "to-iso19794-7", "from-json", "from-csv", "from-recording", "from-inkml", "from-iso19794-7"),
    "pad": ("list", "info", "watch", "record", "sign", "doctor"),
    "sign": ("fields", "verify", "unseal"),
}
HELPS = [(name, "--help") for name in PROGRAMS] + [
    (name, command, "--help") for name, commands in COMMANDS.items() if name in PROGRAMS for command in commands]


@dataclass
class Outcome:
    code: int
    output: bytes
    error: str

    @property
    def text(self) -> str:
        return self.output.decode()


def run(name: str, *arguments: str | Path, language: dict[str, str], stdin: bytes = b"") -> Outcome:
    kept = {variable: value for variable, value in os.environ.items()
            if variable not in ("LANG", "LANGUAGE") and not variable.startswith(("LC_", "SCRIBERA_"))}
    done = subprocess.run([PROGRAMS[name], *arguments], input=stdin, capture_output=True, timeout=PATIENCE,
                          env={**kept, "QT_QPA_PLATFORM": "offscreen", "LC_ALL": "C.UTF-8",
                               "XDG_RUNTIME_DIR": RUNTIME_FOLDER.name, **language})
    return Outcome(done.returncode, done.stdout, done.stderr.decode())


@pytest.fixture(scope="module")
def ink() -> bytes:
    done = run("ink", "from-recording", RECORDINGS / "initials.rec", language={})
    assert done.code == 0, done.error
    return done.output


def unbracketed(text: str) -> str:
    """What no pseudo text holds, which may hold others and the values that were filled in."""
    depth = 0
    rest = ""
    for character in text:
        depth += (character == BEGIN) - (character == END)
        assert depth >= 0, text
        if depth == 0 and character != END:
            rest += character
    assert depth == 0, text
    return rest


def words_left(text: str, *names: str) -> list[str]:
    """Without options, paths, what was named, and names with a number in them."""
    rest = re.sub(r"(?<!\S)--?[a-z][-a-z]*|\S*/\S*", " ", unbracketed(text))
    return [word for word in re.findall(r"[A-Za-z][-A-Za-z0-9.]+", rest)
            if word not in names and not re.search(r"\d", word)]


def line_of(text: str, name: str) -> str:
    [found] = [line[len(name):].strip() for line in text.splitlines() if line.startswith(name)]
    return found


@pytest.mark.parametrize("call", HELPS, ids=" ".join)
def test_help_is_wholly_translated(call: tuple[str, ...]) -> None:
    name, *arguments = call
    pseudo = run(name, *arguments, language=PSEUDO)
    assert (pseudo.code, pseudo.error) == (0, "")
    assert words_left(pseudo.text, "scribera-" + name, *COMMANDS.get(name, ())) == []
    german = run(name, *arguments, language=GERMAN)
    assert (german.code, german.error) == (0, "")
    assert german.text.startswith("Aufruf: ")
    assert set(re.findall(r"--[a-z][-a-z]*", german.text)) == set(
        re.findall(r"--[a-z][-a-z]*", run(name, *arguments, language={}).text))


@pytest.mark.parametrize("language", [
    {"LC_ALL": "C", "LANGUAGE": "de"}, {"LC_ALL": "POSIX", "LANGUAGE": "de"}, {"LC_ALL": "", "LANGUAGE": "de"},
    {"LANGUAGE": "en:de"}, {"LANGUAGE": "en_GB:de"}, {"LANGUAGE": "C:de"}, {"LANGUAGE": "fr"}, {"LANGUAGE": "../x"},
    {"LANGUAGE": "de_"}, {"LC_ALL": "nowhere.UTF-8", "LANGUAGE": "de"},
    {"LANGUAGE": "fr", "SCRIBERA_TRANSLATIONS": "/nonexistent"}])
def test_english_where_nothing_else_is_wanted_or_known(language: dict[str, str]) -> None:
    for name in PROGRAMS:
        found = run(name, "--help", language=language)
        assert (found.code, found.error) == (0, "")
        assert found.output == run(name, "--help", language={}).output


@pytest.mark.parametrize("preferred", ["de", "de_AT", "de_DE.UTF-8", "de_DE@euro", "fr:de", "xx_YY:de:en"])
def test_german_where_it_is_preferred(preferred: str) -> None:
    for name in PROGRAMS:
        assert run(name, "--help", language={"LANGUAGE": preferred}).text.startswith("Aufruf: "), name


def test_the_locale_alone_chooses(tmp_path: Path) -> None:
    """Without LANGUAGE, as most people have it; the variables in the order that all programs follow."""
    for locale in ("de_DE", "en_US"):
        subprocess.run(["localedef", "-i", locale, "-f", "UTF-8", tmp_path / f"{locale}.UTF-8"], check=True,
                       stdout=subprocess.DEVNULL)

    def begin(**variables: str) -> str:
        return run("sim-generate", "--help", language={"LOCPATH": str(tmp_path), "LC_ALL": "", **variables}).text[:6]

    german, english = "de_DE.UTF-8", "en_US.UTF-8"
    assert begin(LANG=german) == "Aufruf"
    assert begin(LANG=english) == "usage:"
    assert begin(LANG=english, LC_MESSAGES=german) == "Aufruf"
    assert begin(LANG=german, LC_MESSAGES=english) == "usage:"
    assert begin(LANG=german, LC_MESSAGES=german, LC_ALL=english) == "usage:"
    assert begin(LANG=english, LC_ALL=german) == "Aufruf"
    assert begin(LANG=german, LANGUAGE="en") == "usage:"


def test_a_catalogue_of_ones_own(tmp_path: Path) -> None:
    """The folder goes before what the programs bring."""
    (tmp_path / "scribera_de.qm").write_bytes(Path(PSEUDO["SCRIBERA_TRANSLATIONS"], "scribera_en_XA.qm").read_bytes())
    own = {"LANGUAGE": "de", "SCRIBERA_TRANSLATIONS": str(tmp_path)}
    assert BEGIN in run("sim-generate", "--help", language=own).text
    (tmp_path / "scribera_de.qm").write_bytes(b"no catalogue")
    assert run("sim-generate", "--help", language=own).text.startswith("Aufruf")


def test_what_scribera_ink_tells_of_ink(ink: bytes) -> None:
    english = run("ink", "info", "--units-per-mm", "20", language={}, stdin=ink).text
    german = run("ink", "info", "--units-per-mm", "20", language=GERMAN, stdin=ink).text
    assert line_of(german, "Punkte:").replace(".", "") == line_of(english, "points:")
    assert line_of(german, "Dauer:") == line_of(english, "duration:").replace(".", ",")
    assert line_of(german, "Abtastrate:") == line_of(english, "report rate:").replace("points", "Punkte").replace(".", ",")
    assert line_of(german, "unterschrieben:") == "ja"
    columns = {len(line) - len(line.split(":", 1)[1].lstrip()) for line in german.splitlines()}
    assert len(columns) == 1
    dated = b"x,y,pressure,status,tick,seconds\n1,2,3,0,5000,1700000000\n1,2,0,1,5010,1700000000\n"
    stream = run("ink", "from-csv", language={}, stdin=dated).output
    assert line_of(run("ink", "info", language={}, stdin=stream).text, "date:") == "2023-11-14 22:13:20 UTC"
    assert line_of(run("ink", "info", language=GERMAN, stdin=stream).text, "Datum:") == "14.11.2023 22:13:20 UTC"
    assert words_left(run("ink", "info", language=PSEUDO, stdin=ink).text, "x", "y") == []


def test_a_plot_is_for_people(ink: bytes) -> None:
    assert "Geschwindigkeit in mm/s" in run("ink", "plot", "--units-per-mm", "20", language=GERMAN, stdin=ink).text
    labels = re.findall(r"<text [^>]*>([^<]*)<", run("ink", "plot", language=PSEUDO, stdin=ink).text)
    assert len(labels) > 5
    assert words_left(" ".join(labels)) == []


@pytest.mark.parametrize("call", [
    ("to-json",), ("to-csv",), ("to-inkml",), ("to-recording", "--model", "K210"), ("to-svg", "--model", "K210"),
    ("to-svg", "--model", "K210", "--compact"), ("to-iso19794-7", "--units-per-mm", "20.5")], ids=" ".join)
def test_what_programs_read_is_the_same_in_every_language(call: tuple[str, ...], ink: bytes) -> None:
    outputs = {run("ink", *call, language=language, stdin=ink).output for language in ({}, GERMAN, PSEUDO)}
    assert len(outputs) == 1
    assert outputs.pop()


COMPLAINTS = [
    ("ink",), ("ink", "draw"), ("ink", "info", "--nothing"), ("ink", "to-csv", "-o"), ("ink", "info", "a", "b"),
    ("ink", "to-svg"), ("ink", "to-svg", "--model", "K210", "--size", "9"), ("ink", "info", "/none"),
    ("ink", "from-csv", "/dev/null"), ("ink", "from-inkml", "NOTHING"), ("ink", "from-json", "NOTHING"),
    ("ink", "from-recording", "/dev/null"), ("ink", "from-iso19794-7", "/dev/null"),
    ("pad", "sign"), ("pad", "sign", "-o", "a.xyz"), ("pad", "sign", "-o", "/none/a.png"), ("pad", "record"),
    ("pad", "watch", "--seconds", "0"), ("pad", "info", "--driver", "/none"), ("pad", "info", "--driver", ""),
    ("virtual-pad", "--nothing"), ("virtual-pad", "--loop"), ("virtual-pad", "--model", "K1"), ("virtual-pad", "x"),
    ("virtual-pad", "--replay", "/none"), ("virtual-pad", "--replay", "/dev/null"), ("virtual-pad", "--size", "9"),
    ("sim-generate",), ("sim-generate", "--style", "x"), ("sim-generate", "--style"), ("sim-generate", "x"),
    ("sim-generate", "--style", "flowing", "-o", "/none/x"),
    ("sim-fingerprint",), ("sim-fingerprint", "--pattern", "x"), ("sim-fingerprint", "--seed", "x"),
    ("sim-import",), ("sim-import", "a", "b"), ("sim-import", "/none"), ("sim-import", "--x"),
    ("sign",), ("sign", "/none"), ("sign", "/none", "-o", "/tmp/x"), ("sign", "verify", "/dev/null"),
    ("sign", "verify", "NOTHING"), ("sign", "NOTHING", "-o", "/none/x", "--at", "1,1", "--ink", "-"),
    ("sign", "NOTHING", "-o", "x", "--at", "1", "--ink", "-"), ("sign", "fields", "a", "b"), ("sign", "unseal", "a")]


@pytest.mark.parametrize("call", [call for call in COMPLAINTS if call[0] in PROGRAMS], ids=" ".join)
def test_complaints_are_translated(call: tuple[str, ...], tmp_path: Path) -> None:
    nothing = tmp_path / "nothing"  # but well-formed: for what is not, Qt has words of its own
    nothing.write_text("{}" if "from-json" in call else "<nothing/>")
    name, *arguments = (str(nothing) if word == "NOTHING" else word for word in call)
    english, pseudo, german = (run(name, *arguments, language=language) for language in ({}, PSEUDO, GERMAN))
    assert english.code == pseudo.code == german.code != 0
    assert pseudo.error.startswith(f"scribera-{name}: ")
    assert words_left(pseudo.error, "scribera-" + name) == []
    assert german.error.startswith(f"scribera-{name}: ")
    assert not set(german.error.splitlines()) & set(english.error.splitlines())


def test_what_scribera_pad_tells(tmp_path: Path) -> None:
    for command in ("list", "doctor"):
        english, pseudo, german = (run("pad", command, language=language).text for language in ({}, PSEUDO, GERMAN))
        assert len(english.splitlines()) == len(german.splitlines()) == len(pseudo.splitlines())
        assert not {line for line in english.splitlines() if ": " in line} & set(german.splitlines())
        assert words_left(pseudo, "pen", "simulated", "Qt", "offscreen") == []
    playing = {"SCRIBERA_SIM_RATE": "max", "SCRIBERA_SIM_KEY": "confirm",
               "SCRIBERA_SIM_RECORDING": str(RECORDINGS / "initials.rec")}
    target = tmp_path / "a.png"
    german = run("pad", "sign", "--driver", "simulated", "-o", str(target), language={**GERMAN, **playing})
    assert german.code == 0, german.error
    assert re.fullmatch(rf"K210: [1-9]\d* Punkte, [1-9]\d* Striche, \d+,\d Sekunden\n{target}\n", german.text)
    pseudo = run("pad", "info", "--driver", "simulated", language=PSEUDO).text
    assert words_left(pseudo, "Corvenna") == []


@pytest.mark.skipif("sign" not in PROGRAMS, reason="it is not built")
def test_what_scribera_sign_tells(tmp_path: Path, ink: bytes) -> None:
    original, marked = tmp_path / "original.pdf", tmp_path / "marked.pdf"
    original.write_bytes(document())
    outcome = run("sign", original, "-o", marked, "--at", "60,250", "--ink", "-", language=GERMAN, stdin=ink)
    assert outcome.code == 0, outcome.error
    assert outcome.text == (f"{marked}: Seite 1, markiert. Das ist kein Siegel: Ohne --certificate zeigt nichts spätere "
                            "Änderungen an.\n")
    assert run("sign", "verify", marked, language=GERMAN).text == "DAS DOKUMENT IST NICHT SIGNIERT.\n"
    assert words_left(run("sign", "verify", marked, language=PSEUDO).text) == []
    reports = {run("sign", "verify", "--json", marked, language=language).output for language in ({}, GERMAN, PSEUDO)}
    assert len(reports) == 1
    assert json.loads(reports.pop())["fault"] == "it has no signature"


@pytest.mark.parametrize(("preferred", "begin"), [
    ("de", "Ein Bankschalter"), ("de_AT", "Ein Bankschalter"), ("fr:de", "Ein Bankschalter"),
    ("xx_YY:de:en", "Ein Bankschalter"),
    ("", "A bank's counter"), ("fr", "A bank's counter"), ("en:de", "A bank's counter"), ("en_GB:de", "A bank's counter"),
    ("fr:en_US:de", "A bank's counter")])
def test_the_demo_host_chooses_by_itself(monkeypatch: pytest.MonkeyPatch, preferred: str, begin: str) -> None:
    """It has a catalogue of its own, which it loads by Qt's means: Qt passes over a C in LANGUAGE."""
    monkeypatch.setitem(PROGRAMS, "demo-host", os.environ["SCRIBERA_DEMO_HOST"])
    found = run("demo-host", "--help", language={"LANGUAGE": preferred} if preferred else {})
    assert f"{begin} " in found.text
