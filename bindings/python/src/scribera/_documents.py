"""Signing PDF documents, which the program scribera-sign does."""

from __future__ import annotations

import base64
import os
import subprocess
from collections.abc import Iterator, Sequence
from contextlib import ExitStack, contextmanager
from typing import Union

from ._errors import DocumentError, InvalidParametersError
from ._families import Model

_WRONG_USAGE = 2

StrPath = Union[str, "os.PathLike[str]"]


def sign_pdf(
    document: StrPath,
    output: StrPath,
    *,
    ink: bytes | str,
    page: int | None = None,
    at: tuple[float, float] | None = None,
    after: str | None = None,
    width: float | None = None,
    field: str | None = None,
    model: Model = "K210",
    pen_width: int = 3,
    pen_color: str = "black",
    show: Sequence[str] = (),
    certificate: StrPath | None = None,
    password: str | None = None,
    name: str | None = None,
    reason: str | None = None,
    location: str | None = None,
    seal_ink: StrPath | None = None,
    document_password: str | None = None,
    program: StrPath | None = None,
) -> None:
    """Puts a signature into a PDF document; the signed document is another file, there whole or not at all.

    ``ink`` is the ink packet stream, bytes of :meth:`Pad.ink` or text of :meth:`Pad.ink_text`, of a pad of
    this ``model``. It goes to ``at``, in points from the upper left corner of the page as it is seen, with room
    for so much ``width``; behind the text ``after``, which has to be there once; or into the signature field of
    that name. The ``page`` is by default the first with ``at`` and any with ``after``. ``show`` names lines
    below the ink: "name", "date", "reason".

    ``certificate`` is a PKCS#12 file, whose key seals the document so that every later change shows; without
    one the document is only marked. ``seal_ink`` is a certificate in PEM: the ink goes into the document so
    that only the holder of its private key can read it.

    The program is the argument's, else that of ``SCRIBERA_SIGN`` in the environment, else ``scribera-sign`` in
    ``PATH``. Raises :class:`InvalidParametersError` for what the program does not understand, and
    :class:`DocumentError` with its reason for what it refuses.
    """
    if [at, after, field].count(None) != 2:
        raise InvalidParametersError("one of at, after and field says where the signature goes")
    command = [os.fspath(program or os.environ.get("SCRIBERA_SIGN") or "scribera-sign")]
    command += ["--output", os.fspath(output), "--ink", "-", "--model", model]
    command += ["--pen-width", str(pen_width), "--colour", pen_color]
    if at is not None:
        command += ["--at", f"{at[0]:g},{at[1]:g}"]
    options = {
        "--page": None if page is None else str(page),
        "--after": after,
        "--width": None if width is None else f"{width:g}",
        "--field": field,
        "--show": ",".join([show] if isinstance(show, str) else show) or None,
        "--certificate": certificate,
        "--name": name,
        "--reason": reason,
        "--location": location,
        "--seal-ink": seal_ink,
    }
    for option, value in options.items():
        if value is not None:
            command.append(f"{option}={os.fspath(value)}")
    with ExitStack() as stack:
        secrets = []
        for option, secret in (("--password-file", password), ("--document-password-file", document_password)):
            if secret is not None:
                if "\n" in secret or "\r" in secret:
                    raise InvalidParametersError("a password is one line")
                descriptor = stack.enter_context(_secret_file(secret))
                secrets.append(descriptor)
                command.append(f"{option}=/proc/self/fd/{descriptor}")
        command += ["--", os.fspath(document)]
        text = ink.encode() if isinstance(ink, str) else base64.b64encode(ink)
        _run(command, text, secrets)


def _run(command: list[str], text: bytes, descriptors: Sequence[int]) -> None:
    try:
        done = subprocess.run(command, input=text, capture_output=True, pass_fds=descriptors, check=False)
    except OSError as error:
        raise DocumentError(f"{command[0]} cannot be run: {error.strerror}") from error
    if done.returncode == 0:
        return
    message = done.stderr.decode(errors="replace").strip().removeprefix("scribera-sign: ")
    if done.returncode == _WRONG_USAGE:
        raise InvalidParametersError(message.partition("\n")[0], done.returncode)
    raise DocumentError(message or f"{command[0]} ended with {done.returncode}", done.returncode)


@contextmanager
def _secret_file(secret: str) -> Iterator[int]:
    """In memory, and gone with the block."""
    descriptor = os.memfd_create("password", os.MFD_CLOEXEC)
    try:
        os.write(descriptor, secret.encode() + b"\n")
        yield descriptor
    finally:
        os.close(descriptor)
