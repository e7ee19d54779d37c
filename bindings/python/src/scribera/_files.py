"""Writing a file so that a full disk, or an end of the process, leaves the older file as it was."""

from __future__ import annotations

import errno
import os
import secrets
import stat
from contextlib import suppress
from pathlib import Path

_CANNOT_RESERVE = {errno.EOPNOTSUPP, errno.EINVAL, errno.ENOSYS, errno.ENODEV}


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


def _may_be_replaced(directory: int, name: str, old: os.stat_result) -> bool:
    place = os.stat(directory)
    named = os.stat(name, dir_fd=directory, follow_symlinks=False)
    return (
        stat.S_ISREG(old.st_mode)
        and old.st_nlink == 1
        and (old.st_uid, old.st_gid) == (os.geteuid(), os.getegid())
        and os.path.samestat(named, old)
        and not (place.st_mode & stat.S_ISVTX and place.st_uid != os.geteuid())
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
    # A nameless file can be given a name, but not one that is in use; between these two lines it has its own.
    own_name = f".scribera-{secrets.token_hex(8)}"
    try:
        os.link(f"/proc/self/fd/{new}", own_name, dst_dir_fd=directory)
        os.rename(own_name, name, src_dir_fd=directory, dst_dir_fd=directory)
    except BaseException:
        with suppress(FileNotFoundError):
            os.unlink(own_name, dir_fd=directory)
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
    _write_whole(descriptor, content)
    os.ftruncate(descriptor, len(content))


def _write_whole(descriptor: int, content: bytes) -> None:
    rest = memoryview(content)
    while rest:
        rest = rest[os.write(descriptor, rest) :]
