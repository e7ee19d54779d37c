#!/usr/bin/env python3
"""Checks the documents; one check a call, exit code 0 when it holds.

check_docs.py blocks            every sample is shown and run, and nothing else
check_docs.py links             relative links in the repository's documents lead to files and headings
check_docs.py loglines          log lines in the documents are lines that the library writes
check_docs.py run CASE ...      runs samples against the library and the simulated pad
"""

from __future__ import annotations

import argparse
import base64
import contextlib
import fcntl
import os
import re
import shlex
import shutil
import signal
import struct
import subprocess
import sys
import threading
from collections.abc import Callable, Iterator
from functools import cache
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
SAMPLES = ROOT / "docs" / "samples"
RECORDING = ROOT / "drivers" / "simulator" / "recordings" / "initials.rec"
WATCHDOG_SECONDS = 240

failures: list[str] = []


def expect(condition: object, complaint: str) -> None:
    if not condition:
        failures.append(complaint)


# Documents


def documents() -> list[Path]:
    left_out = {".git", "build", "demo-out", "node_modules"}
    found = []
    for folder, folders, files in os.walk(ROOT):
        folders[:] = [name for name in folders if name not in left_out]
        found += [Path(folder) / name for name in files if name.endswith(".md")]
    return sorted(found)


FENCE = re.compile(r"( *)```(.*)")


def fences(document: Path) -> Iterator[tuple[int, str, str]]:
    """Line, info text and content of each fenced block."""
    info, start, indent, lines = None, 0, "", []
    for number, line in enumerate(document.read_text().splitlines(keepends=True), 1):
        fence = FENCE.match(line)
        if not fence:
            lines.append(line.removeprefix(indent))
        elif info is None:
            info, start, indent, lines = fence[2].strip(), number, fence[1], []
        else:
            yield start, info, "".join(lines)
            info = None
    expect(info is None, f"{document}:{start}: the block does not end")


def prose(document: Path) -> Iterator[tuple[int, str]]:
    """The lines outside fenced blocks, without inline code."""
    fenced = False
    for number, line in enumerate(document.read_text().splitlines(), 1):
        if FENCE.match(line):
            fenced = not fenced
        elif not fenced:
            yield number, re.sub(r"`[^`]*`", "", line)


def check_blocks() -> None:
    shown = set()
    for document in documents():
        for _, info, _ in fences(document):
            named = re.search(r"\bsample=(\S+)", info)
            if named:
                shown.add(named[1])
        for _, line in prose(document):
            shown.update(re.findall(r"\]\((?:docs/)?samples/([^)#]+)\)", line))
    run = {sample for case in CASES.values() for sample in case.samples}
    for sample in sorted(shown):
        expect((SAMPLES / sample).is_file(), f"there is no sample {sample}")
    for sample in sorted(path.name for path in SAMPLES.iterdir() if path.is_file()):
        expect(sample in shown, f"no document shows the sample {sample}")
        expect(sample in run, f"no case runs the sample {sample}")
    expect(shown, "no document shows any sample")


@cache
def anchors(document: Path) -> set[str]:
    """Anchors as the usual renderers make them of headings."""
    found: dict[str, int] = {}
    names = set()
    fenced = False
    for line in document.read_text().splitlines():
        if FENCE.match(line):
            fenced = not fenced
        heading = re.match(r"#{1,6} +(.*?)(?: +#+)? *$", line)
        if fenced or not heading:
            continue
        text = re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", heading[1])
        name = re.sub(r"[^\w\- ]", "", text.lower()).replace(" ", "-")
        count = found.get(name, 0)
        found[name] = count + 1
        names.add(f"{name}-{count}" if count else name)
    return names


def check_links() -> None:
    count = 0
    for document in documents():
        for number, line in prose(document):
            targets = re.findall(r"\]\(\s*<?([^)\s>]+)>?[^)]*\)", line)
            targets += re.findall(r"^\s*\[[^\]]+\]:\s+(\S+)", line)
            for target in targets:
                if re.match(r"[a-z][a-z0-9+.-]*:", target):
                    continue
                count += 1
                path, _, anchor = target.partition("#")
                file = document.parent / path if path else document
                where = f"{document}:{number}: {target}"
                if not file.exists():
                    failures.append(f"{where}: no such file")
                elif anchor:
                    expect(file.suffix == ".md" and anchor in anchors(file.resolve()), f"{where}: no such heading")
    expect(count, "there is no link at all")


# Log lines


LITERALS = re.compile(r'L?"(?:[^"\\]|\\.)*"(?:\s*L?"(?:[^"\\]|\\.)*")*')
PLACES = {"%ld": r"-?\d+", "%d": r"-?\d+", "%lx": "[0-9a-f]+", "%x": "[0-9a-f]+", "%f": r"-?\d+\.\d{6}", "%s": r"\S*"}


def sources() -> Iterator[str]:
    for path in sorted((ROOT / "src").rglob("*.[ch]*")):
        yield path.read_text()


def literals() -> set[str]:
    found = set()
    for source in sources():
        for group in LITERALS.findall(source):
            found.add("".join(re.findall(r'"((?:[^"\\]|\\.)*)"', group)).replace('\\"', '"'))
    return found


def as_pattern(literal: str) -> re.Pattern[str]:
    parts = re.split(r"(%(?:ld|lx|d|x|s|f))", literal)
    return re.compile("".join(PLACES[part] if part in PLACES else re.escape(part) for part in parts))


def check_loglines() -> None:
    known = literals()
    texts = [as_pattern(text.removeprefix("<%ld>")) for text in known if text.startswith("<%ld>")]
    families = re.search(r"#define SCRIBERA_FAMILIES\(X\)(.*)", (ROOT / "include" / "scriberasdk.h").read_text())
    models = "(?:" + "|".join(re.findall(r"X\((\w+)\)", families[1] if families else "")) + ")"
    count = 0
    for document in documents():
        for line, info, content in fences(document):
            if info != "log":
                continue
            for number, quoted in enumerate(content.splitlines(), line + 1):
                count += 1
                where = f"{document}:{number}: {quoted}"
                parts = re.fullmatch(r"\[([^\]]*)\]:<\d+>(.*?),", quoted.rstrip())
                if not parts:
                    failures.append(f"{where}: not the form of a log line")
                    continue
                label, text = parts.groups()
                expect(any(pattern.fullmatch(text) for pattern in texts), f"{where}: no line of the library")
                owner = rf"(?:SC{models}_|C{models}Sign(?:Widget|Obj)::|CK421BFPWidget::)"
                named = re.fullmatch(rf"{owner}(\w+(?:\(\))?)", label)
                if not named:
                    failures.append(f"{where}: no label of the library")
                    continue
                # Names of models are put together in the model table.
                function = re.sub(rf"^Rx{models}|^C{models}Sign(Widget|Obj)\(\)$", "", named[1])
                expect(any(text.endswith(function) for text in known), f"{where}: no function of the library")
    expect(count, "no document quotes a log line")


# Samples


class Case:
    def __init__(self, samples: list[str], check: Callable[[Bench], None]) -> None:
        self.samples = samples
        self.check = check


def case(*samples: str) -> Callable[[Callable[[Bench], None]], None]:
    def add(check: Callable[[Bench], None]) -> None:
        CASES[check.__name__] = Case(list(samples), check)

    return add


CASES: dict[str, Case] = {}


def recorded() -> tuple[int, int]:
    """Points and strokes that the library stores of the recording."""
    statuses = [line.split()[4] for line in RECORDING.read_text().splitlines() if re.match(r"\d", line)]
    return sum(status in "012" for status in statuses), statuses.count("2")


def private_tmp(keep: list[Path]) -> list[str]:
    """A prefix that gives a program a /tmp of its own, in which the folders to keep still show; empty when the
    system does not allow that."""
    script = "exec " + " ".join(f"{at}<{shlex.quote(str(path))}" for at, path in enumerate(keep, 3)) + "\n"
    script += "cd / && mount -t tmpfs -o mode=1777 private /tmp\n"
    for at, path in enumerate(keep, 3):
        name = shlex.quote(str(path))
        script += f"mkdir -p {name} && mount --no-canonicalize --rbind /proc/self/fd/{at} {name}\n"
    script += 'cd "$1" && shift && exec "$@"\n'
    for namespace in (["--mount"], ["--user", "--map-root-user", "--mount"]):
        prefix = ["unshare", *namespace, "sh", "-ec", script, "sh"]
        probe = [*prefix, str(keep[0]), "test", "-d", str(keep[-1])]
        with contextlib.suppress(FileNotFoundError):
            if subprocess.run(probe, capture_output=True, check=False).returncode == 0:
                return prefix
    return []


def end_group(process: subprocess.Popen[str]) -> None:
    if process.poll() is None:
        os.killpg(process.pid, signal.SIGKILL)


class Bench:
    """A folder of its own for one case, with the simulated pad in it, and a /tmp of its own if possible."""

    def __init__(self, arguments: argparse.Namespace) -> None:
        self.samples: Path = arguments.samples
        self.library: Path = arguments.library
        self.driver: Path = arguments.driver
        self.unplugged_driver: Path = arguments.unplugged_driver
        self.folder: Path = arguments.work / f"{arguments.case}.{os.getpid()}"
        self.folder.mkdir(parents=True)
        (self.folder / "tmp").mkdir(mode=0o700)
        files = (arguments.library, self.driver, self.unplugged_driver)
        needed = {self.folder, self.samples, ROOT, *(file.parent for file in files)}
        below_tmp = sorted(path for path in needed if path.is_relative_to("/tmp"))
        outermost = [path for path in below_tmp if not needed.intersection(path.parents)]
        self.prefix = private_tmp(outermost or [self.folder])
        if not self.prefix:
            self.lock = Path("/tmp/scribera-tests.lock").open("a")  # kept open: the lock goes with it
            fcntl.flock(self.lock, fcntl.LOCK_EX)
            for stale in ("/tmp/scriberasdk.log", "/tmp/scriberasdk_inthread.log"):
                Path(stale).unlink(missing_ok=True)
        suppressions = self.folder / "leaks"
        suppressions.write_text("leak:libfontconfig.so\n")
        clean = {name: value for name, value in os.environ.items() if not name.startswith("SCRIBERA_")}
        self.environment = clean | {
            "QT_QPA_PLATFORM": "offscreen",
            "XDG_RUNTIME_DIR": str(self.folder / "tmp"),
            "LSAN_OPTIONS": f"suppressions={suppressions}:print_suppressions=0",
            "PYTHONPATH": str(ROOT / "bindings" / "python" / "src"),
            "PYTHONDONTWRITEBYTECODE": "1",
            "SCRIBERA_LIBRARY": str(arguments.library),
            "SCRIBERA_SIM_RECORDING": str(RECORDING),
            "SCRIBERA_SIM_RATE": "max",
            "SCRIBERA_SIM_KEY": "confirm",
            # The person begins a second after the pad is open, when every callback is set.
            "SCRIBERA_SIM_START_MS": "1000",
        }

    def plug_in(self) -> None:
        (self.folder / "libscriberadrv.so").symlink_to(self.driver)

    def start(self, *commands: list[str], **environment: str) -> subprocess.Popen[str]:
        """Starts the commands, one after another, in one /tmp."""
        script = "\n".join(shlex.join(command) for command in commands)
        command = ["sh", "-ec", script]
        command = [*self.prefix, str(self.folder), *command] if self.prefix else command
        process = subprocess.Popen(
            command,
            cwd=self.folder,
            env=self.environment | environment,
            text=True,
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            start_new_session=True,
        )
        watchdog = threading.Timer(WATCHDOG_SECONDS, end_group, [process])
        watchdog.daemon = True
        watchdog.start()
        return process

    def run(self, *commands: list[str], answer: int = 0, stdin: str = "", **environment: str) -> str:
        process = self.start(*commands, **environment)
        output, _ = process.communicate(stdin)
        words = " ".join(commands[-1])
        got = process.returncode
        expect(got == answer, f"{words}: exit code {got}, not {answer}; it said:\n{output}")
        return output

    def binary(self, name: str) -> list[str]:
        return [str(self.samples / name)]

    def script(self, name: str, *arguments: str) -> list[str]:
        return [sys.executable, str(SAMPLES / name), *arguments]

    def content(self, name: str) -> bytes:
        path = self.folder / name
        return path.read_bytes() if path.is_file() else b""


def expect_lines(output: str, *lines: str) -> None:
    expect(output.splitlines() == list(lines), f"expected {list(lines)}, got:\n{output}")


def expect_picture(content: bytes, name: str) -> tuple[int, int]:
    """Expects a PNG with an alpha channel, and returns its size."""
    is_png = content[:8] == b"\x89PNG\r\n\x1a\n"
    expect(is_png and content[24:26] == b"\x08\x06", f"{name} is no PNG with transparency")
    return struct.unpack(">II", content[16:24]) if len(content) > 26 else (0, 0)


def expect_clipped(content: bytes, name: str, canvas: tuple[int, int]) -> None:
    width, height = expect_picture(content, name)
    expect(0 < width < canvas[0] and 0 < height < canvas[1], f"{name} has {width} x {height} pixels of {canvas}")


@case("sign_and_save.c")
def sign_and_save(bench: Bench) -> None:
    bench.run(bench.binary("sign_and_save"), answer=1)
    bench.plug_in()
    output = bench.run(bench.binary("sign_and_save"))
    saved = [f"signature.{suffix}: saved" for suffix in ("png", "pdf", "svg")]
    expect_lines(output, f"{recorded()[0]} points", *saved)
    expect_clipped(bench.content("signature.png"), "signature.png", (800, 485))
    expect(bench.content("signature.pdf").startswith(b"%PDF-"), "signature.pdf is no PDF")
    expect(bench.content("signature.svg").count(b"<poly") > 100, "signature.svg has no strokes")


@case("qt_window.cpp")
def qt_window(bench: Bench) -> None:
    bench.plug_in()
    expect_lines(bench.run(bench.binary("qt_window")), "saved")
    expect_clipped(bench.content("signature.png"), "signature.png", (660, 400))


@case("readme.c")
def readme(bench: Bench) -> None:
    unplugged = bench.run(bench.binary("readme"), answer=1)
    expect_lines(unplugged, "host: no pad; is it plugged in, and its driver ./libscriberadrv.so there?")
    bench.plug_in()
    cancelled = bench.run(bench.binary("readme"), answer=1, SCRIBERA_SIM_KEY="cancel")
    expect_lines(cancelled, "host: cancelled at the pad")
    expect(not bench.content("signature.png"), "a cancelled signature was saved")
    without_ink = bench.run(bench.binary("readme"), answer=1, SCRIBERA_SIM_RECORDING="")
    expect_lines(without_ink, "host: no signature, or signature.png cannot be written")
    bench.run(bench.binary("readme"))
    expect_clipped(bench.content("signature.png"), "signature.png", (660, 400))


@case("readme_window.cpp")
def readme_window(bench: Bench) -> None:
    bench.plug_in()
    bench.run(bench.binary("readme_window"))
    expect(bench.content("signature.svg").count(b"<poly") > 100, "signature.svg has no strokes")


@case("readme.py")
def readme_python(bench: Bench) -> None:
    bench.plug_in()
    lines = bench.run(bench.script("readme.py")).splitlines()
    points, strokes = recorded()
    expect(lines[-1:] and lines[-1].startswith(f"{points} points in {strokes} strokes"), f"last line {lines[-1:]}")
    expect_clipped(bench.content("signature.png"), "signature.png", (660, 400))


@case("readme.sh")
def readme_build(bench: Bench) -> None:
    checkout = bench.folder / "checkout"
    (checkout / "build").mkdir(parents=True)
    (checkout / "include").symlink_to(ROOT / "include")
    (checkout / "drivers").symlink_to(ROOT / "drivers")
    (checkout / "build" / "release").symlink_to(bench.library.parent)
    shutil.copy(SAMPLES / "readme.c", bench.folder / "host.c")
    shutil.copy(SAMPLES / "readme_window.cpp", bench.folder / "window.cpp")
    commands = (SAMPLES / "readme.sh").read_text()
    if bench.library.name.startswith("libscriberasdk-qt6."):
        commands = commands.replace("Qt5Widgets", "Qt6Widgets").replace("-lscriberasdk", "-lscriberasdk-qt6")
    bench.run(["sh", "-e", "-c", commands], S=str(checkout))
    expect_clipped(bench.content("signature.png"), "signature.png", (660, 400))
    expect(bench.content("signature.svg").count(b"<poly") > 100, "signature.svg has no strokes")


@case("live_points.c")
def live_points(bench: Bench) -> None:
    bench.plug_in()
    lines = bench.run(bench.binary("live_points")).splitlines()
    points, strokes = recorded()
    lengths = [int(length) for length in re.findall(r"^stroke \d+: (\d+) points", "\n".join(lines), re.MULTILINE)]
    expect(len(lengths) == strokes and sum(lengths) == points, f"strokes of {lengths} points")
    expect(lines[-1:] == [f"{points} points live, {points} stored, 0 lost"], f"last line {lines[-1:]}")


@case("keys.c")
def keys(bench: Bench) -> None:
    bench.plug_in()
    expect_lines(bench.run(bench.binary("keys")), f"confirmed: {recorded()[0]} points")
    output = bench.run(bench.binary("keys"), answer=1, SCRIBERA_SIM_KEY="cancel", SCRIBERA_SIM_LOOP="1")
    expect_lines(output, *(f"cleared, {left} attempts left" for left in (2, 1, 0)))


@case("web_page.c")
def web_page(bench: Bench) -> None:
    bench.plug_in()
    expect_lines(bench.run(bench.binary("web_page")), "signature.html")
    picture = re.search(rb'src="data:image/png;base64,([^"]+)"', bench.content("signature.html"))
    expect(picture, "the page has no picture")
    if picture:
        expect_clipped(base64.b64decode(picture[1], validate=True), "the picture", (690, 390))


@case("keep_ink.c", "read_ink.py")
def keep_ink(bench: Bench) -> None:
    bench.plug_in()
    points, strokes = recorded()
    output = bench.run(bench.binary("keep_ink"))
    expect(output.startswith(f"{points} points in {strokes} strokes, "), f"keep_ink says: {output}")
    output = bench.run(bench.script("read_ink.py", "signature.ink"))
    lengths = [int(length) for length in re.findall(r"^stroke \d+: (\d+) points", output, re.MULTILINE)]
    expect(len(lengths) == strokes and sum(lengths) == points, f"read_ink.py says: {output}")


@case("reopen.c")
def reopen(bench: Bench) -> None:
    process = bench.start(bench.binary("reopen"), SCRIBERA_SIM_RECORDING="", PERSON_RECORDING=str(RECORDING))

    def await_line(expected: str) -> None:
        line = process.stdout.readline().rstrip("\n") if process.stdout else ""
        expect(line == expected, f"expected: {expected}; reopen says: {line}")

    await_line("please plug in the pad")
    (bench.folder / "simulated.so").symlink_to(bench.driver)
    (bench.folder / "libscriberadrv.so").symlink_to(bench.unplugged_driver)
    await_line("please sign")
    (bench.folder / "unplugged").touch()
    await_line("the pad is gone, please plug it in again")
    (bench.folder / "person").touch()
    (bench.folder / "unplugged").unlink()
    await_line("please sign")
    await_line(f"key 1, {recorded()[0]} points")
    expect(process.wait() == 0, f"exit code {process.returncode}")


@case("fingerprint.c")
def fingerprint(bench: Bench) -> None:
    bench.plug_in()
    expect_lines(bench.run(bench.binary("fingerprint"), SCRIBERA_SIM_FINGERPRINT="loop"), "saved")
    for name, size in (("signature.png", (800, 434)), ("fingerprint.png", (208, 288))):
        expect(expect_picture(bench.content(name), name) == size, f"{name} has another size than {size}")


@case("headless_service.c")
def headless_service(bench: Bench) -> None:
    reason, answer = bench.run(bench.binary("headless_service"), stdin="20\n").splitlines()
    expect(reason.startswith("There is no driver: "), f"it gives another reason: {reason}")
    expect(answer == "no pad", f"it answers {answer}")
    bench.plug_in()
    lines = bench.run(bench.binary("headless_service"), stdin="60\n60\n").splitlines()
    expect(len(lines) == 2 and all(line.startswith("signed ") for line in lines), f"headless_service says: {lines}")
    for line in lines:
        size = len(base64.b64decode(line.removeprefix("signed "), validate=True))
        expect(size == recorded()[0] * 24 + 1, f"an ink packet stream of {size} bytes")
    expect_lines(bench.run(bench.binary("headless_service"), stdin="60\n", SCRIBERA_SIM_KEY="cancel"), "cancelled")
    expect_lines(bench.run(bench.binary("headless_service"), stdin="0\n", SCRIBERA_SIM_RECORDING=""), "timeout")


@case("log_a_signature.c", "read_log.py")
def read_log(bench: Bench) -> None:
    bench.plug_in()
    output = bench.run(bench.binary("log_a_signature"), bench.script("read_log.py"))
    points = recorded()[0]
    calls = re.findall(r"^ *\d+  (SCK210_\w+)\(\)  \d+ ms  (.*)$", output, re.MULTILINE)
    expected = [
        ("SCK210_InitialDevice", "leave with bRet=1 !"),
        ("SCK210_SignatureStatusCallback", "leave with nResult=0 !"),
        ("SCK210_GetTotalPacketsNumber", f"leave with nInkCount={points} !"),
        ("SCK210_UnInitialDevice", "leave with ARI_SUCCESS..."),
    ]
    expect(calls == expected, f"calls {calls}, of:\n{output}")
    # The key is one sample when it is touched and one when it is left.
    expect(f"{points + 2} pen samples" in output, f"no {points + 2} pen samples in:\n{output}")


@case("python_sign.py")
def python_sign(bench: Bench) -> None:
    bench.run(bench.script("python_sign.py"), answer=2)
    bench.plug_in()
    points, strokes = recorded()
    expect_lines(bench.run(bench.script("python_sign.py")), f"{points} points in {strokes} strokes")
    expect_clipped(bench.content("signature.png"), "signature.png", (690, 390))
    expect(bench.content("signature.pdf").startswith(b"%PDF-"), "signature.pdf is no PDF")
    expect(bench.content("signature.svg").count(b"<poly") > 100, "signature.svg has no strokes")


@case("python_notebook.py")
def python_notebook(bench: Bench) -> None:
    # By the system's Python, which has NumPy and Pillow.
    notebook = ["/usr/bin/python3", str(ROOT / "scripts" / "notebook"), str(bench.library), str(bench.driver)]
    expect_lines(bench.run([*notebook, "--check"]))


@case("python_ink.py")
def python_ink(bench: Bench) -> None:
    bench.plug_in()
    points, strokes = recorded()
    output = bench.run(bench.binary("keep_ink"), bench.script("python_ink.py", "signature.ink"))
    lengths = [int(length) for length in re.findall(r"^(\d+) points, \d+ pad units", output, re.MULTILINE)]
    expect(sum(lengths[-strokes:]) == points, f"python_ink.py says: {output}")


def contract(bench: Bench) -> bytes:
    """A page with the words "Signature:" on it, and the program that signs it."""
    content = (ROOT / "fuzz" / "corpus" / "document" / "plain").read_bytes()
    (bench.folder / "contract.pdf").write_bytes(content)
    program = Path(os.environ["SCRIBERA_SIGN"])
    bench.environment |= {"SCRIBERA_SIGN": str(program), "PATH": f"{program.parent}:{os.environ['PATH']}"}
    return content


@case("sign_document.sh")
def sign_document(bench: Bench) -> None:
    bench.plug_in()
    original = contract(bench)
    output = bench.run(["sh", str(SAMPLES / "sign_document.sh")])
    expect(output.endswith("The document is as it was signed.\n"), f"sign_document.sh says: {output}")
    expect(bench.content("signed.pdf").startswith(original), "signed.pdf does not begin with contract.pdf")
    expect("reason:      Current account agreement\n" in output, f"the reason is another one: {output}")


@case("python_document.py")
def python_document(bench: Bench) -> None:
    bench.plug_in()
    original = contract(bench)
    bench.run(bench.script("python_sign.py"), ["sh", str(SAMPLES / "sign_document.sh")])
    script = bench.script("python_document.py", "signed.pdf", "twice.pdf", "counter.p12")
    expect_lines(bench.run([*script, "counter.password"]), "twice.pdf is signed")
    verified = bench.run([os.environ["SCRIBERA_SIGN"], "verify", "twice.pdf", "--trust", "counter.pem"])
    expect(verified.count("result:      valid") == 2, f"twice.pdf has other signatures: {verified}")
    (bench.folder / "wrong").write_text("wrong")
    refused = bench.run([*script, "wrong"], answer=1)
    expect(refused.startswith("not signed: ") and "password" in refused, f"python_document.py says: {refused}")
    expect(bench.content("twice.pdf").startswith(original), "twice.pdf does not begin with contract.pdf")


def system_tool(bench: Bench, name: str, package: str) -> bool:
    """Whether the program is there; what cannot be tried is a failure."""
    bench.environment["PATH"] = f"{os.environ['PATH']}:/usr/sbin:/sbin"
    is_there = bool(shutil.which(name, path=bench.environment["PATH"]))
    expect(is_there, f"{name} is not there, so that nothing was tried; it is in the package {package}")
    return is_there


@case("counter.service", "counter-logs.conf")
def service_unit(bench: Bench) -> None:
    if not system_tool(bench, "systemd-analyze", "systemd"):
        return
    # The host of the unit is not on this machine.
    unit = (SAMPLES / "counter.service").read_text()
    verified = unit.replace("/usr/local/bin/counter-service", "/bin/true")
    expect(verified != unit, "the unit starts another program")
    addition = bench.folder / "counter.service.d" / "logs.conf"
    addition.parent.mkdir()
    shutil.copy(SAMPLES / "counter-logs.conf", addition)
    (bench.folder / "counter.service").write_text(verified)
    verify = ["systemd-analyze", "verify", "--man=no", "--recursive-errors=no", str(bench.folder / "counter.service")]
    expect_lines(bench.run(verify))
    # It reads the addition, and says what it does not know.
    addition.write_text("[Service]\nNobodyKnowsThis=yes\n")
    expect("NobodyKnowsThis" in bench.run(verify, answer=1), "an unknown setting is not found")


@case("counter.desktop")
def desktop_entry(bench: Bench) -> None:
    if system_tool(bench, "desktop-file-validate", "desktop-file-utils"):
        expect_lines(bench.run(["desktop-file-validate", str(SAMPLES / "counter.desktop")]))


@case("counter.logrotate")
def rotate_logs(bench: Bench) -> None:
    if not system_tool(bench, "logrotate", "logrotate"):
        return
    # The logs of a host without a service, and of the user whom programs take this one for.
    shown = (SAMPLES / "counter.logrotate").read_text()
    somebody = " ".join(bench.run(["id", "-un"], ["id", "-gn"]).split())
    rotation = shown.replace("/var/log/counter/", "/tmp/").replace("su counter counter", f"su {somebody}")
    expect(rotation.count("/tmp/") == 1 and somebody in rotation, "the file rotates other logs")
    (bench.folder / "rotation").write_text(rotation)
    (bench.folder / "rotation").chmod(0o644)
    bench.plug_in()
    sign = bench.binary("log_a_signature")
    rotate = ["logrotate", "--force", "--state", str(bench.folder / "state"), str(bench.folder / "rotation")]
    kept = ["sh", "-ec", "gzip -dc /tmp/scriberasdk.log.1.gz | head -n 1; head -n 1 /tmp/scriberasdk.log"]
    bench.run(["logrotate", "--debug", str(bench.folder / "rotation")])
    lines = bench.run(sign, rotate, sign, kept).splitlines()
    told = [line for line in lines if line.startswith("[")]
    expect(len(told) == 2 and all("InitialDevice" in line for line in told), f"the logs begin with {lines}")


def run_case(arguments: argparse.Namespace) -> None:
    bench = Bench(arguments)
    CASES[arguments.case].check(bench)
    if failures:
        print(f"left for a look: {bench.folder}")
    else:
        shutil.rmtree(bench.folder)


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    checks = parser.add_subparsers(required=True, metavar="CHECK")
    for name, check in (("blocks", check_blocks), ("links", check_links), ("loglines", check_loglines)):
        checks.add_parser(name).set_defaults(check=lambda _, check=check: check())
    run = checks.add_parser("run")
    run.add_argument("case", choices=sorted(CASES))
    for name in ("samples", "library", "driver", "unplugged-driver", "work"):
        run.add_argument(f"--{name}", type=lambda text: Path(text).resolve(), required=True)
    run.set_defaults(check=run_case)
    arguments = parser.parse_args()
    arguments.check(arguments)
    for failure in failures:
        print(failure)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
