"""What goes wrong around the program: no half file is left, and the input stays as it is."""

from __future__ import annotations

import base64
import json
import os
import re
import resource
import signal
import socket
import struct
import subprocess
import threading
import time
from datetime import datetime
from pathlib import Path

import pytest

import writer
from checks import run
from tool import IS_SANITIZED, PATIENCE, PROGRAM, Place, Tool, copied, environment, listing, one_line, playing

PLACE = Place(1, 60, 250, 180)


@pytest.fixture
def original(tmp_path: Path) -> Path:
    folder = tmp_path / "in"
    folder.mkdir()
    file = folder / "contract.pdf"
    file.write_bytes(writer.document())
    return file


def with_small_disk(folder: Path, kilobytes: int, *command: str | Path) -> subprocess.CompletedProcess[str]:
    """Runs it where the folder is a disk of that size, and lists what is on that afterwards."""
    script = ('mount -t tmpfs -o size="$1"k tmpfs "$2" || exit 77; folder=$2; shift 2; "$@"; code=$?; '
              'ls -A "$folder" >&3; exit $code')
    listed = folder.parent / "listed"
    with open(listed, "w") as third:
        return run("unshare", "-rm", "bash", "-c", f"exec 3>&{third.fileno()}; {script}", "bash", str(kilobytes), folder,
                   *command, env=environment(), pass_fds=(third.fileno(),))


@pytest.mark.parametrize("kilobytes", [4, 20, 160])
def test_a_full_disk(tool: Tool, tmp_path: Path, original: Path, kilobytes: int) -> None:
    original.write_bytes(writer.by_qpdf(writer.document(pages=2000, nested=True), tmp_path))
    size = original.stat().st_size // 1024
    assert size > 160
    disk = tmp_path / "disk"
    disk.mkdir()
    done = with_small_disk(disk, kilobytes, PROGRAM, original, "-o", disk / "signed.pdf", *PLACE.options, *tool.with_ink(),
                           *tool.with_key("rsa"))
    if done.returncode == 77:
        pytest.skip("no disk of an own size can be mounted here")
    assert done.returncode == 1 and "No space left on device" in one_line(done)
    assert not (tmp_path / "listed").read_text()


def test_a_disk_that_is_full_from_the_start(tool: Tool, tmp_path: Path, original: Path) -> None:
    done = tool.sign(original, Path("/dev/full"), PLACE)
    assert done.returncode == 1 and one_line(done)
    assert Path("/dev/full").is_char_device()


def test_limited_file_size(tool: Tool, tmp_path: Path, original: Path) -> None:
    """Like a full disk, but with a signal."""
    out = tmp_path / "out"
    out.mkdir()
    done = run("prlimit", "--fsize=5000", PROGRAM, original, "-o", out / "signed.pdf", *PLACE.options, *tool.with_ink(),
               *tool.with_key("rsa"), env=environment())
    assert done.returncode != 0
    assert listing(out) == []


@pytest.mark.skipif(os.geteuid() == 0 and not Path("/usr/bin/setpriv").exists(), reason="root may write everywhere")
def test_a_folder_that_cannot_be_written(tool: Tool, tmp_path: Path, original: Path) -> None:
    out = tmp_path / "out"
    out.mkdir(mode=0o555)
    command: list[str | Path] = [PROGRAM, original, "-o", out / "signed.pdf", *PLACE.options, *tool.with_ink(),
                                 *tool.with_key("rsa")]
    if os.geteuid() == 0:  # without what lets root do everything
        command = ["setpriv", "--bounding-set=-all", "--inh-caps=-all", *command]
    done = run(*command, env=environment())
    assert done.returncode == 1 and "Permission denied" in one_line(done)
    assert listing(out) == []


def test_a_file_that_is_there_already(tool: Tool, tmp_path: Path, original: Path) -> None:
    """It is replaced when all is done, and stays as it was when something goes wrong."""
    target = tmp_path / "signed.pdf"
    target.write_text("what was here before")
    refused = tool.sign(original, target, Place(17, 60, 250, 180))
    assert refused.returncode in (1, 2) and one_line(refused)
    assert target.read_text() == "what was here before"
    tool.checked(original, target, PLACE)


def test_a_folder_that_is_not_there(tool: Tool, tmp_path: Path, original: Path) -> None:
    done = tool.sign(original, tmp_path / "nowhere" / "signed.pdf", PLACE)
    assert done.returncode == 1 and "No such file or directory" in one_line(done)
    done = tool.sign(original, tmp_path, PLACE)
    assert done.returncode == 1 and one_line(done)


@pytest.mark.parametrize("way", ["same", "link", "hard link", "detour"])
def test_the_output_is_the_input(tool: Tool, tmp_path: Path, original: Path, way: str) -> None:
    """The input is never touched."""
    before = original.read_bytes()
    target = tmp_path / "other.pdf"
    if way == "same":
        target = original
    elif way == "link":
        target.symlink_to(original)
    elif way == "hard link":
        target.hardlink_to(original)
    else:
        target = original.parent / ".." / original.parent.name / original.name
    there = listing(tmp_path)
    done = tool.sign(original, target, PLACE)
    assert original.read_bytes() == before
    if way == "hard link" and done.returncode == 0:  # the name is another file now, the input is what it was
        tool.check(before, target)
        return
    assert done.returncode in (1, 2) and one_line(done)
    assert listing(tmp_path) == there


def test_the_output_is_something_else_that_is_read(tool: Tool, tmp_path: Path, original: Path) -> None:
    """A slip in a command line costs nobody a key."""
    files = {name: copied(file, tmp_path) for name, file in {
        "--certificate": tool.keys.p12("rsa"), "--password-file": tool.keys.password_file, "--ink": tool.inks["initials"].file,
        "--seal-ink": tool.keys.escrow("rsa")[0]}.items()}
    options = [str(part) for option in files.items() for part in option]
    before = {file: file.read_bytes() for file in files.values()}
    for file in before:
        done = tool.run(original, "-o", file, *PLACE.options, *options)
        assert done.returncode == 1 and f"{file} is read, and stays as it is" in one_line(done)
        assert file.read_bytes() == before[file]


def test_the_input_is_not_there(tool: Tool, tmp_path: Path) -> None:
    for path, reason in ((tmp_path / "no.pdf", "No such file or directory"), (tmp_path, "no regular file")):
        done = tool.sign(path, tmp_path / "signed.pdf", PLACE)
        assert done.returncode == 1 and reason in one_line(done)
    assert listing(tmp_path) == []


def begun(command: list[str | Path], folder: Path, **variables: str) -> subprocess.Popen[str]:
    process = subprocess.Popen([str(part) for part in command], env=variables, cwd=folder, stdout=subprocess.PIPE,
                               stderr=subprocess.PIPE, stdin=subprocess.DEVNULL, text=True)
    end = threading.Timer(PATIENCE, process.kill)  # so that nobody waits for a line for ever
    end.daemon = True
    end.start()
    return process


def with_pad(original: Path, out: Path, *key: str) -> list[str | Path]:
    return [PROGRAM, original, "-o", out / "signed.pdf", *PLACE.options, "--pad", "K210", "--driver",
            os.environ["SCRIBERA_DRIVER_LIBRARY"], *key]


def test_signs_on_the_pad(tool: Tool, tmp_path: Path, original: Path) -> None:
    out = tmp_path / "out"
    out.mkdir()
    done = run(*with_pad(original, out, *tool.with_key("rsa")), env=playing("initials.rec"))
    assert done.returncode == 0, done.stderr
    tool.check(original.read_bytes(), out / "signed.pdf")
    assert listing(out) == ["signed.pdf"]


def test_the_time_is_when_it_was_signed(tool: Tool, tmp_path: Path, original: Path) -> None:
    """Not when the pad began to wait."""
    out, (certificate, key) = tmp_path / "out", tool.keys.escrow("ec")
    out.mkdir()
    done = run(*with_pad(original, out, *tool.with_key("ec"), "--seal-ink", str(certificate)),
               env=playing("initials.rec", SCRIBERA_SIM_RATE="1"))
    assert done.returncode == 0, done.stderr
    assert tool.run("unseal", out / "signed.pdf", "--key", key, "-o", tmp_path / "ink.txt").returncode == 0
    points = base64.b64decode((tmp_path / "ink.txt").read_text())
    first, last = (int.from_bytes(points[at + 16 : at + 24], "little") for at in (0, len(points) - 25))
    assert last > first
    told = json.loads(tool.run("verify", "--json", out / "signed.pdf").stdout)["signatures"][0]["time"]
    assert datetime.fromisoformat(told).timestamp() >= last


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT])
def test_interrupted_in_mid_signature(tool: Tool, tmp_path: Path, original: Path, number: signal.Signals) -> None:
    """Not even the memory, with passwords in it, which SIGQUIT asks for."""
    most = resource.getrlimit(resource.RLIMIT_CORE)[1]
    resource.setrlimit(resource.RLIMIT_CORE, (most, most))
    out, private = tmp_path / "out", tmp_path / "private"
    out.mkdir()
    private.mkdir()
    # Nobody confirms, so that it waits.
    variables = playing("initials.rec", SCRIBERA_SIM_KEY="", TMPDIR=str(private), XDG_RUNTIME_DIR=str(private))
    tool_process = begun(with_pad(original, out, *tool.with_key("rsa")), out, **variables)
    try:
        assert tool_process.stderr and "ign" in tool_process.stderr.readline()
        tool_process.send_signal(number)
        tool_process.communicate(timeout=PATIENCE)
    finally:
        tool_process.kill()
    assert tool_process.returncode == -number
    assert listing(out) == [] and listing(private) == []


def test_interrupted_at_any_moment(tool: Tool, tmp_path: Path, original: Path) -> None:
    """Whenever the signal comes, there is the whole file or none."""
    out, private = tmp_path / "out", tmp_path / "private"
    out.mkdir()
    private.mkdir()
    before = original.read_bytes()
    start = time.monotonic()
    command: list[str | Path] = [PROGRAM, original, "-o", out / "signed.pdf", *PLACE.options, *tool.with_ink(),
                                 *tool.with_key("rsa")]
    variables = environment(TMPDIR=str(private), XDG_RUNTIME_DIR=str(private))
    assert run(*command, env=variables).returncode == 0
    took = time.monotonic() - start
    (out / "signed.pdf").unlink()
    outcomes = set()
    for step in range(40):
        process = begun(command, out, **variables)
        time.sleep(took * step / 32)
        process.send_signal(signal.SIGINT)
        process.communicate(timeout=PATIENCE)
        outcomes.add(process.returncode)
        assert process.returncode in (0, -signal.SIGINT)
        assert listing(private) == []
        assert listing(out) in ([], ["signed.pdf"])
        if listing(out):
            tool.check(before, out / "signed.pdf")
            (out / "signed.pdf").unlink()
        else:
            assert process.returncode != 0
    assert -signal.SIGINT in outcomes


@pytest.mark.parametrize(("settings", "code"), [({"SCRIBERA_SIM_KEY": "cancel"}, 3), ({"SCRIBERA_SIM_KEY": ""}, 4),
                                                 ({"SCRIBERA_SIM_MODEL": "SCT580"}, 1)])
def test_no_signature_comes(tool: Tool, tmp_path: Path, original: Path, settings: dict[str, str], code: int) -> None:
    """The person declines or walks away; the pad is another one."""
    out = tmp_path / "out"
    out.mkdir()
    done = run(*with_pad(original, out, *tool.with_key("rsa")), "--timeout", "3",
               env={**playing("initials.rec"), **settings})
    assert done.returncode == code, done.stderr
    assert listing(out) == []


class SocketPad:
    """What the simulated driver finds where its virtual pad listens: it comes, is signed on, and is pulled out."""

    DOWN, MOVE, UP, CONFIRM = 0, 1, 2, 4

    def __init__(self, path: Path) -> None:
        self.path = path
        self.plug_in()

    def plug_in(self) -> None:
        self.listener = socket.socket(socket.AF_UNIX)
        self.listener.bind(str(self.path))
        self.listener.listen()
        self.listener.settimeout(PATIENCE)

    def welcome(self) -> None:
        self.host = self.listener.accept()[0]
        self.send(65, b"SCRIBERA" + struct.pack("<i", 1) + b"SCK210")

    def send(self, kind: int, content: bytes) -> None:
        self.host.sendall(bytes([kind]) + len(content).to_bytes(3, "little") + content)

    def write(self, *samples: tuple[int, int, int]) -> None:
        self.send(67, b"".join(struct.pack("<4i", x, y, 600, status) for x, y, status in samples))

    def pull_out(self) -> None:
        self.path.unlink()
        self.listener.close()
        self.host.close()


@pytest.fixture
def pad(tmp_path: Path) -> SocketPad:
    return SocketPad(tmp_path / "pad")


def signing_on(pad: SocketPad, tool: Tool, original: Path, out: Path, *more: str) -> subprocess.Popen[str]:
    """Begun, and the pad is lost in the middle of a stroke."""
    process = begun(with_pad(original, out, *tool.with_key("rsa"), *more), out, **environment(SCRIBERA_SIM_PAD=str(pad.path)))
    pad.welcome()
    assert process.stderr and "ign" in process.stderr.readline()
    pad.write((1000, 1000, pad.DOWN), (3000, 2000, pad.MOVE), (4000, 1500, pad.MOVE))
    pad.pull_out()
    assert process.stderr.readline() == "The pad does not answer.\n"
    return process


def test_a_pad_that_is_lost(tool: Tool, tmp_path: Path, original: Path, pad: SocketPad) -> None:
    """In mid-signature, for good: one line says so, and no file is left."""
    out = tmp_path / "out"
    out.mkdir()
    process = signing_on(pad, tool, original, out, "--timeout", "4")
    told, reason = process.communicate(timeout=PATIENCE)
    assert (process.returncode, told) == (1, "")
    assert reason == "scribera-sign: the pad does not answer any more; nothing is saved\n"
    assert listing(out) == []


def test_interrupted_while_the_pad_is_lost(tool: Tool, tmp_path: Path, original: Path, pad: SocketPad) -> None:
    out = tmp_path / "out"
    out.mkdir()
    process = signing_on(pad, tool, original, out)
    process.send_signal(signal.SIGINT)
    process.communicate(timeout=PATIENCE)
    assert process.returncode == -signal.SIGINT and listing(out) == []


def test_a_pad_that_is_put_back(tool: Tool, tmp_path: Path, original: Path, pad: SocketPad) -> None:
    """The signature goes on where it was left."""
    out, (certificate, key) = tmp_path / "out", tool.keys.escrow("ec")
    out.mkdir()
    process = signing_on(pad, tool, original, out, "--seal-ink", str(certificate))
    pad.plug_in()
    pad.welcome()
    assert process.stderr and process.stderr.readline() == "The pad answers again.\n"
    pad.write((6000, 1000, pad.DOWN), (7000, 2000, pad.MOVE), (7000, 2000, pad.UP))
    pad.write((0, 0, pad.CONFIRM), (0, 0, pad.UP))
    _, reason = process.communicate(timeout=PATIENCE)
    assert process.returncode == 0, reason
    tool.check(original.read_bytes(), out / "signed.pdf")
    assert tool.run("unseal", out / "signed.pdf", "--key", key, "-o", tmp_path / "ink.txt").returncode == 0
    info = run(os.environ["SCRIBERA_INK_TOOL"], "info", tmp_path / "ink.txt").stdout
    assert re.search(r"strokes: +2\b", info), info


@pytest.mark.skipif(IS_SANITIZED, reason="keeps memory that was given back")
def test_passwords_are_gone_when_somebody_signs(tool: Tool, tmp_path: Path, original: Path) -> None:
    """People take their time, and the memory of a process may come to a disk."""
    out, password = tmp_path / "out", tmp_path / "password"
    out.mkdir()
    kept, secret = "known to everybody", "not to be found in memory"
    long = 40 * secret  # so that nothing else takes its place soon
    password.write_text(long + "\n")
    key = ["--certificate", str(tool.keys.p12("ec", "forgotten", long)), "--password-file", str(password), "--reason", kept]
    process = begun(with_pad(original, out, *key), out, **playing("initials.rec", SCRIBERA_SIM_KEY=""))
    try:
        assert process.stderr and "ign" in process.stderr.readline()
        memory = memory_of(process.pid)
    finally:
        process.terminate()
        process.communicate(timeout=PATIENCE)
    # The other text shows that it would have been found.
    assert kept.encode() in memory and secret.encode() not in memory and secret.encode("utf-16-be") not in memory


def memory_of(process: int) -> bytes:
    """All that it could write to."""
    content = b""
    with open(f"/proc/{process}/mem", "rb", 0) as memory:
        for line in Path(f"/proc/{process}/maps").read_text().splitlines():
            places, rights, *_ = line.split()
            if rights.startswith("rw"):
                start, end = (int(place, 16) for place in places.split("-"))
                memory.seek(start)
                content += memory.read(end - start)
    return content


def test_keys_are_nobodys_to_read(tool: Tool, tmp_path: Path, original: Path) -> None:
    """While it waits for the pad, no file of its own is there that others could read."""
    out, private = tmp_path / "out", tmp_path / "private"
    out.mkdir()
    private.mkdir()
    variables = playing("initials.rec", SCRIBERA_SIM_KEY="", TMPDIR=str(private), XDG_RUNTIME_DIR=str(private))
    process = begun(with_pad(original, out, *tool.with_key("rsa")), out, **variables)
    try:
        assert process.stderr and "ign" in process.stderr.readline()
        for path in [*private.rglob("*"), *out.rglob("*")]:
            mode = path.lstat().st_mode & 0o777
            assert mode & 0o077 == 0 or any(parent.lstat().st_mode & 0o077 == 0 for parent in path.parents
                                            if private in parent.parents), path
    finally:
        process.terminate()
        process.communicate(timeout=PATIENCE)
