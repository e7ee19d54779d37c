"""What becomes of a file that is there already, and of the disk's end."""

from __future__ import annotations

import errno
import os
import resource
import signal
import stat
import struct
import subprocess
import sys
import threading
from collections.abc import Callable
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import pytest

from scribera import Pad
from scribera._files import write_file
from simulator import Simulator, diagonal

OLD, NEW = b"old " * 1000, b"new content " * 3000
ACL = "system.posix_acl_access"


def state(path: Path) -> tuple[int, int, int, int]:
    status = path.stat()
    return status.st_mode, status.st_uid, status.st_gid, status.st_nlink


def limit_size(size: int) -> None:
    resource.setrlimit(resource.RLIMIT_FSIZE, (size, resource.getrlimit(resource.RLIMIT_FSIZE)[1]))


def names(folder: Path) -> list[str]:
    return sorted(path.name for path in folder.iterdir() if path.name != "libscriberadrv.so")


@pytest.mark.parametrize("mode", [0o644, 0o600, 0o664, 0o777])
def test_a_file_is_replaced_in_one_step(mode: int, folder: Path) -> None:
    file = folder / "file"
    file.write_bytes(OLD)
    file.chmod(mode)
    before = state(file)
    with file.open("rb") as reader:
        write_file(file, NEW)
        assert reader.read() == OLD  # who reads it meanwhile has the whole of the old one
    assert file.read_bytes() == NEW and state(file) == before and names(folder) == ["file"]
    write_file(file, b"")
    assert file.read_bytes() == b"" and state(file) == before


def test_attributes_stay(folder: Path) -> None:
    # Owner rw, user 12345 rw, group r, mask rw, others nothing.
    entries = [(1, 6, -1), (2, 6, 12345), (4, 4, -1), (16, 6, -1), (32, 0, -1)]
    acl = struct.pack("<I", 2) + b"".join(struct.pack("<HHi", *entry) for entry in entries)
    file = folder / "file"
    file.write_bytes(OLD)
    os.setxattr(file, ACL, acl)
    os.setxattr(file, "user.note", b"kept")
    before, inode = state(file), file.stat().st_ino
    write_file(file, NEW)
    assert file.stat().st_ino != inode
    assert (os.getxattr(file, ACL), os.getxattr(file, "user.note")) == (acl, b"kept")
    assert file.read_bytes() == NEW and state(file) == before

    # What the folder would give to new files is not for one that has none.
    os.removexattr(file, ACL)
    file.chmod(0o640)
    os.setxattr(folder, "system.posix_acl_default", acl)
    inode = file.stat().st_ino
    write_file(file, OLD)
    assert file.stat().st_ino != inode
    assert ACL not in os.listxattr(file) and stat.S_IMODE(file.stat().st_mode) == 0o640


@pytest.mark.parametrize("mask", [0o022, 0o077, 0])
def test_a_new_file_gets_the_usual_mode(mask: int, folder: Path) -> None:
    os.umask(mask)
    (folder / "as python makes it").write_bytes(NEW)
    write_file(folder / "file", NEW)
    assert state(folder / "file") == state(folder / "as python makes it")
    assert (folder / "file").read_bytes() == NEW


def test_a_link_stays_a_link(folder: Path) -> None:
    below = folder / "below"
    below.mkdir()
    (below / "file").write_bytes(OLD)
    (folder / "link").symlink_to("below/file")
    (folder / "new").symlink_to("below/new")
    inode = (below / "file").stat().st_ino
    write_file(folder / "link", NEW)
    write_file(folder / "new", NEW)
    assert (folder / "link").is_symlink() and (folder / "new").is_symlink()
    assert (below / "file").read_bytes() == (below / "new").read_bytes() == NEW
    assert (below / "file").stat().st_ino != inode and names(below) == ["file", "new"]


def test_a_file_with_two_names_is_written_over(folder: Path) -> None:
    first, second = folder / "first", folder / "second"
    first.write_bytes(OLD)
    os.link(first, second)
    for content in (NEW, b"short", b""):
        write_file(first, content)
        assert second.read_bytes() == content and first.samefile(second)


def test_a_pipe_is_written_into(folder: Path) -> None:
    os.mkfifo(folder / "pipe")
    told: list[bytes] = []
    reader = threading.Thread(target=lambda: told.append((folder / "pipe").read_bytes()))
    reader.start()
    write_file(folder / "pipe", NEW)
    reader.join()
    assert told == [NEW] and (folder / "pipe").is_fifo()


def test_a_mount_point_is_written_over(folder: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    def busy(*_: object, **__: object) -> None:
        raise OSError(errno.EBUSY, os.strerror(errno.EBUSY))

    file = folder / "file"
    file.write_bytes(OLD)
    inode = file.stat().st_ino
    monkeypatch.setattr(os, "rename", busy)
    write_file(file, NEW)
    assert (file.read_bytes(), file.stat().st_ino, names(folder)) == (NEW, inode, ["file"])


@pytest.mark.skipif(os.geteuid() != 0, reason="makes files of two users")
def test_what_another_user_could_tell_is_written_over(folder: Path) -> None:
    nobody = 65534
    cases = {"read-only folder": (0, 0o755), "sticky folder": (0, 0o1777), "own folder": (nobody, 0o700)}
    for name, (owner, mode) in cases.items():
        (folder / name).mkdir()
        (folder / name / "file").write_bytes(OLD)
        os.chown(folder / name / "file", nobody, nobody)
        os.chown(folder / name, owner, owner)
        (folder / name).chmod(mode)
    (folder / "own folder" / "foreign").write_bytes(OLD)
    (folder / "own folder" / "foreign").chmod(0o666)
    (folder / "own folder" / "protected").write_bytes(OLD)
    (folder / "own folder" / "protected").chmod(0o444)
    os.chown(folder / "own folder" / "protected", nobody, nobody)
    folder.chmod(0o755)
    files = [folder / name / "file" for name in cases] + [folder / "own folder" / "foreign"]
    before = [(state(file), file.stat().st_ino) for file in files]
    os.setegid(nobody)
    os.seteuid(nobody)
    try:
        for file in files:
            write_file(file, NEW)
            assert file.read_bytes() == NEW
        after = [(state(file), file.stat().st_ino) for file in files]
        with pytest.raises(PermissionError):
            write_file(folder / "own folder" / "protected", NEW)
    finally:
        os.seteuid(0)
        os.setegid(0)
    assert [old == new for old, new in zip(before, after)] == [True, True, False, True]
    assert [old[0] == new[0] for old, new in zip(before, after)] == [True] * 4
    assert (folder / "own folder" / "protected").read_bytes() == OLD


@pytest.mark.parametrize("links", [1, 2])
def test_what_does_not_fit_leaves_the_old_file(links: int, folder: Path) -> None:
    file = folder / "file"
    file.write_bytes(OLD)
    if links == 2:
        os.link(file, folder / "other")
    before, inode, there = state(file), file.stat().st_ino, names(folder)
    limit_size(len(NEW) - 1)
    for path in (file, folder / "new"):
        with pytest.raises(OSError, match="File too large") as caught:
            write_file(path, NEW)
        assert caught.value.filename == str(path)
    assert (file.read_bytes(), state(file), file.stat().st_ino) == (OLD, before, inode)
    assert names(folder) == there


FULL_DISK = """
import os, sys
from pathlib import Path
from scribera._files import write_file

old = os.urandom(100_000)
Path("single").write_bytes(old)
Path("twice").write_bytes(old)
os.link("twice", "again")
filler = open("filler", "wb", buffering=0)
try:
    while True:
        filler.write(bytes(4096))
except OSError:
    pass
for name in ("single", "twice", "new"):
    try:
        write_file(Path(name), bytes(200_000))
        sys.exit(name + " was written")
    except OSError as error:
        assert error.filename == name and error.strerror == "No space left on device", error
assert Path("single").read_bytes() == Path("again").read_bytes() == old
assert sorted(os.listdir()) == ["again", "filler", "single", "twice"], os.listdir()
# What fits into the place of the old file is written there.
write_file(Path("single"), bytes(90_000))
assert Path("single").read_bytes() == bytes(90_000)
"""


def test_a_full_disk_leaves_the_old_file(folder: Path) -> None:
    mount = ["unshare", "--user", "--map-root-user", "--mount"]
    if subprocess.run([*mount, "true"], capture_output=True).returncode != 0:
        pytest.skip("makes no small disk: this system allows no namespaces")
    run = subprocess.run(
        [*mount, "sh", "-c", 'mount -t tmpfs -o size=512k none "$1" && cd "$1" && exec "$2" -c "$3"']
        + ["sh", str(folder), sys.executable, FULL_DISK],
        capture_output=True,
        text=True,
    )
    assert run.returncode == 0, run


def test_a_kill_leaves_the_old_file_and_nothing_else(folder: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    file = folder / "file"
    file.write_bytes(OLD)
    child = os.fork()
    if child == 0:
        monkeypatch.setattr(os, "fsync", lambda _: os.kill(os.getpid(), signal.SIGKILL))
        write_file(file, NEW)
        os._exit(0)
    assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == -signal.SIGKILL
    assert file.read_bytes() == OLD and names(folder) == ["file"]


def test_what_a_kill_left_is_removed_by_the_next_write(folder: Path) -> None:
    file, leftover = folder / "file", folder / ".file.scribera-new"
    file.write_bytes(OLD)
    leftover.write_bytes(b"from a process that was killed between two system calls")
    inode = file.stat().st_ino
    write_file(file, NEW)
    assert (file.read_bytes(), names(folder)) == (NEW, ["file"]) and file.stat().st_ino != inode
    leftover.mkdir()  # nobody's leftover: stays, and the file is written over
    inode = file.stat().st_ino
    write_file(file, OLD)
    assert file.read_bytes() == OLD and leftover.is_dir() and file.stat().st_ino == inode


def test_a_file_that_is_open_under_a_number_is_written_over(folder: Path) -> None:
    file = folder / "file"
    file.write_bytes(OLD)
    with file.open("r+b") as opened:
        (folder / "link").symlink_to(f"/proc/self/fd/{opened.fileno()}")
        for path in (f"/proc/self/fd/{opened.fileno()}", f"/dev/fd/{opened.fileno()}", "link"):
            for content in (NEW, OLD):
                write_file(Path(path), content)
                assert opened.seek(0) == 0 and opened.read() == content


def test_threads_that_write_the_same_file_leave_one_of_theirs(folder: Path) -> None:
    contents = [bytes([number]) * 50_000 for number in range(8)]
    file = folder / "file"
    file.write_bytes(OLD)
    with ThreadPoolExecutor(8) as threads:
        for _ in range(5):
            list(threads.map(lambda content: write_file(file, content), contents))
            assert file.read_bytes() in contents and names(folder) == ["file"]


def test_an_interrupt_leaves_the_old_file_and_nothing_else(
    folder: Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    def interrupt(*_: object, **__: object) -> None:
        raise KeyboardInterrupt

    file = folder / "file"
    file.write_bytes(OLD)
    for function in ("write", "fsync", "link", "rename"):
        with monkeypatch.context() as patch, pytest.raises(KeyboardInterrupt):
            patch.setattr(os, function, interrupt)
            write_file(file, NEW)
        assert file.read_bytes() == OLD and names(folder) == ["file"]


def test_all_writers_of_the_pad_take_this_way(simulator: Simulator, folder: Path) -> None:
    with Pad("K210", size=(160, 90)) as pad:
        simulator.send(diagonal("K210"))
        png = pad.png()
        writers: dict[str, Callable[[], None]] = {
            "a.png": lambda: pad.save("a.png"),
            "a.svg": lambda: pad.save("a.svg"),
            "a.ink": lambda: pad.save("a.ink"),
            "b.png": lambda: pad.decode_image(png, "b.png"),
        }
        for name, write in writers.items():
            file = folder / name
            file.write_bytes(OLD)
            file.chmod(0o640)
            inode = file.stat().st_ino
            write()
            assert file.stat().st_ino != inode and stat.S_IMODE(file.stat().st_mode) == 0o640
        assert names(folder) == sorted(writers)
