"""Signed documents that scribera-sign did not make: correct ones, and those that an attacker would show."""

from __future__ import annotations

import tempfile
from collections.abc import Callable
from pathlib import Path

from checks import run
from keys import Keys
from writer import appended, document

PLACE = b"<" + b"0" * 12000 + b">"
RANGES = b"[0 1111111111 2222222222 3333333333]"
FIELD, VALUE, PAGE = 20, 21, 6


def cms(keys: Keys, content: bytes, name: str = "rsa", digest: str = "sha256") -> bytes:
    """A detached signature, made by openssl."""
    certificate, key = keys.certificate(name, name), keys.key(name, name)
    with tempfile.TemporaryDirectory() as folder:
        file, made = Path(folder) / "content", Path(folder) / "cms"
        file.write_bytes(content)
        done = run("openssl", "cms", "-sign", "-binary", "-cades", "-md", digest, "-signer", certificate, "-inkey", key,
                   "-in", file, "-outform", "DER", "-out", made)
        assert done.returncode == 0, done.stderr
        return made.read_bytes()


def prepared(source: bytes, value_entries: bytes = b"", catalog: bytes = b"", ranges: bytes = RANGES,
             contents: bytes = PLACE) -> bytes:
    """The document with a revision that has everything of a signature but its content."""
    root = source.split(b"\n1 0 obj\n", 1)[1].split(b"\nendobj", 1)[0]
    page = source.split(b"\n%d 0 obj\n" % PAGE, 1)[1].split(b"\nendobj", 1)[0]
    return appended(source, {
        1: root.replace(b"/Catalog", b"/Catalog /AcroForm << /Fields [%d 0 R] /SigFlags 3 >> " % FIELD + catalog),
        PAGE: page.replace(b"/Contents", b"/Annots [%d 0 R] /Contents" % FIELD),
        FIELD: b"<< /Type /Annot /Subtype /Widget /FT /Sig /T (Made elsewhere) /F 132 /P %d 0 R /Rect [0 0 0 0] "
               b"/V %d 0 R >>" % (PAGE, VALUE),
        VALUE: b"<< /Type /Sig /Filter /Adobe.PPKLite /SubFilter /ETSI.CAdES.detached /M (D:20260102030405Z) "
               + value_entries + b" /ByteRange " + ranges + b" /Contents " + contents + b" >>",
    })


def fill(whole: bytes, ranges: tuple[int, ...]) -> bytes:
    text = b"[" + b" ".join(b"%d" % part for part in ranges)
    assert RANGES in whole
    return whole.replace(RANGES, text.ljust(len(RANGES) - 1) + b"]")


def honest_ranges(whole: bytes) -> tuple[int, int, int, int]:
    start = whole.rindex(PLACE)
    end = start + len(PLACE)
    return 0, start, end, len(whole) - end


def put(whole: bytes, signature: bytes, behind: bytes = b"") -> bytes:
    digits = signature.hex().encode() + behind
    return whole.replace(PLACE, b"<" + digits.ljust(len(PLACE) - 2, b"0") + b">")


def signed(keys: Keys, source: bytes | None = None, *, name: str = "rsa", digest: str = "sha256",
           ranges: Callable[[bytes], tuple[int, ...]] = honest_ranges, behind: bytes = b"", covers: bytes | None = None,
           **entries: bytes) -> bytes:
    """As an honest program signs, unless told otherwise."""
    whole = prepared(source or document(), **entries)
    chosen = ranges(whole)
    whole = fill(whole, chosen)
    if covers is None:
        covers = b"".join(whole[at : at + length] for at, length in zip(chosen[::2], chosen[1::2], strict=True)
                          if at >= 0 and length >= 0)
    return put(whole, cms(keys, covers, name, digest), behind)
