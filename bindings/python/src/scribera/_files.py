"""Writing a file so that a full disk, or an end of the process, leaves the older file as it was."""

from __future__ import annotations

import errno
import os
import stat
import threading
from contextlib import suppress
from pathlib import Path

_CANNOT_RESERVE = {errno.EOPNOTSUPP, errno.EINVAL, errno.ENOSYS, errno.ENODEV}

# Keeps threads that write the same file from taking each other's new one for a leftover.
_new_name_lock = threading.Lock()


def write_file(path: Path, content: bytes) -> None:
    """Writes a new file, or new content into an old one. The file that was there keeps owner, mode, access
    list and links, and stays as it was when the disk is full."""
    try:
        try:
            descriptor = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_EXCL | os.O_CLOEXEC, 0o666)
        except FileExistsError:
            _write_over(path, content)
        else:
            _write_new(path, descriptor, content)
    except OSError as error:
        if error.filename is None:
            error.filename = os.fspath(path)
        raise


def _write_new(path: Path, descriptor: int, content: bytes) -> None:
    try:
        try:
            _write_whole(descriptor, content)
        finally:
            os.close(descriptor)
    except BaseException:
        os.unlink(path)
        raise


def _write_over(path: Path, content: bytes) -> None:
    descriptor = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_CLOEXEC, 0o666)
    try:
        if not _is_replaced(path, descriptor, content):
            _write_in_place(descriptor, content)
    finally:
        os.close(descriptor)


def _is_replaced(path: Path, descriptor: int, content: bytes) -> bool:
    """Puts a new file into the place of the open one, in one step, if nobody can tell the two apart. Nothing
    has happened otherwise."""
    if _leads_through_proc(path):
        return False
    folder, name = os.path.split(os.path.realpath(path))
    try:
        directory = os.open(folder, os.O_PATH | os.O_DIRECTORY | os.O_CLOEXEC)
        try:
            if not _may_be_replaced(directory, name, os.fstat(descriptor)):
                return False
            # A file without a name, which goes away by itself when the process is killed.
            new = os.open(".", os.O_TMPFILE | os.O_WRONLY | os.O_CLOEXEC, 0o600, dir_fd=directory)
            try:
                if not _looks_alike(new, descriptor):
                    return False
                _write_whole(new, content)
                os.fsync(new)
                _put_in_place(new, directory, name)
            finally:
                os.close(new)
        finally:
            os.close(directory)
    except OSError:  # the folder is not ours to write, the file is a mount point, there is no space for both
        return False
    return True


def _leads_through_proc(path: Path) -> bool:
    """Whether a link on the way stands for an open file, as /dev/stdout does."""
    while path.is_symlink():
        folder = path.parent.resolve()
        if folder.is_relative_to("/proc"):
            return True
        path = folder / path.readlink()
    return False


def _may_be_replaced(directory: int, name: str, old: os.stat_result) -> bool:
    place = os.stat(directory)
    named = os.stat(name, dir_fd=directory, follow_symlinks=False)
    return (
        _is_own_file(old)
        and os.path.samestat(named, old)
        and not (place.st_mode & stat.S_ISVTX and place.st_uid != os.geteuid())
    )


def _is_own_file(status: os.stat_result) -> bool:
    return (
        stat.S_ISREG(status.st_mode)
        and status.st_nlink == 1
        and (status.st_uid, status.st_gid) == (os.geteuid(), os.getegid())
        and stat.S_IMODE(status.st_mode) & ~0o777 == 0
    )


def _looks_alike(new: int, old: int) -> bool:
    """Gives the new file mode, access list and other attributes of the old one."""
    os.fchmod(new, stat.S_IMODE(os.fstat(old).st_mode))
    wanted = {name: os.getxattr(old, name) for name in os.listxattr(old)}
    for name in set(os.listxattr(new)) - set(wanted):
        os.removexattr(new, name)
    for name, value in wanted.items():
        os.setxattr(new, name, value)

    def identity(descriptor: int) -> tuple[int, int, int, int]:
        status = os.fstat(descriptor)
        return status.st_dev, status.st_mode, status.st_uid, status.st_gid

    return identity(new) == identity(old)


def _put_in_place(new: int, directory: int, name: str) -> None:
    # A nameless file can be given a name, but not one that is in use. What a process leaves that is killed
    # between the two steps is removed by the next one that writes the file, the library too.
    new_name = f".{name}.scribera-new"
    with _new_name_lock:
        with suppress(FileNotFoundError):
            if _is_own_file(os.stat(new_name, dir_fd=directory, follow_symlinks=False)):
                os.unlink(new_name, dir_fd=directory)
        try:
            os.link(f"/proc/self/fd/{new}", new_name, dst_dir_fd=directory)
            os.rename(new_name, name, src_dir_fd=directory, dst_dir_fd=directory)
        except FileExistsError:  # somebody else's
            raise
        except BaseException:
            with suppress(FileNotFoundError):
                os.unlink(new_name, dir_fd=directory)
            raise


def _write_in_place(descriptor: int, content: bytes) -> None:
    status = os.fstat(descriptor)
    if not stat.S_ISREG(status.st_mode):
        _write_whole(descriptor, content)
        return
    try:
        os.posix_fallocate(descriptor, 0, max(1, len(content)))
    except OSError as error:
        if error.errno not in _CANNOT_RESERVE:
            os.ftruncate(descriptor, status.st_size)  # what could be reserved
            raise
    try:
        _write_whole(descriptor, content)
        os.ftruncate(descriptor, len(content))
    except BaseException:
        os.ftruncate(descriptor, 0)  # nothing rather than a part
        raise


def _write_whole(descriptor: int, content: bytes) -> None:
    rest = memoryview(content)
    while rest:
        rest = rest[os.write(descriptor, rest) :]
