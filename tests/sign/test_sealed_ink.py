"""The ink inside the document, which nobody reads but the holder of a key."""

from __future__ import annotations

import base64
import random
import re
from pathlib import Path

import pytest

import writer
from checks import check_by_qpdf, output_of, run, signatures
from test_tampering import changed
from tool import IS_FULL_LENGTH, Place, Tool, copied, listing, one_line

PLACE = Place(1, 60, 250, 180)
KEY = "/SCRB_SealedInk"


def sealed_document(tool: Tool, folder: Path, kind: str, *more: str, source: bytes | None = None) -> tuple[Path, Path]:
    """The file, and the key to its ink."""
    original, file = folder / "original.pdf", folder / "signed.pdf"
    original.write_bytes(source or writer.document())
    certificate, key = tool.keys.escrow(kind)
    tool.checked(original, file, PLACE, "rsa", "--seal-ink", certificate, *more)
    return file, key


def sealed_place(file: Path) -> tuple[int, int]:
    """Where the sealed ink is in the file's bytes."""
    content = file.read_bytes()
    number = re.search(KEY.encode() + rb" (\d+) 0 R", content)
    assert number
    data = output_of("qpdf", f"--show-object={int(number[1])}", "--raw-stream-data", file)
    assert content.count(data) == 1
    return content.index(data), len(data)


@pytest.mark.parametrize("kind", ["rsa", "rsa4096", "ec", "ec384", "ec521"])
def test_there_and_back(tool: Tool, tmp_path: Path, kind: str) -> None:
    file, key = sealed_document(tool, tmp_path, kind)
    back = tmp_path / "back.txt"
    done = tool.run("unseal", file, "--key", key, "-o", back)
    assert done.returncode == 0, done.stderr
    ink = tool.inks["initials"].file.read_text()
    assert back.read_text().strip() == ink.strip()
    # Nothing of it can be read without the key.
    content = file.read_bytes()
    points = base64.b64decode(ink)
    assert ink[40:80].encode() not in content and points[24:48] not in content


@pytest.mark.parametrize("kind", ["rsa", "ec"])
def test_openssl_can_read_it(tool: Tool, tmp_path: Path, kind: str) -> None:
    """No program of ours is needed to get at the ink."""
    file, key = sealed_document(tool, tmp_path, kind)
    start, length = sealed_place(file)
    sealed, opened = tmp_path / "sealed", tmp_path / "opened"
    sealed.write_bytes(file.read_bytes()[start : start + length])
    done = run("openssl", "cms", "-decrypt", "-inform", "DER", "-in", sealed, "-inkey", key, "-out", opened)
    assert done.returncode == 0, done.stderr
    assert tool.inks["initials"].file.read_bytes().strip() in opened.read_bytes()
    text = run("openssl", "cms", "-cmsout", "-print", "-inform", "DER", "-in", sealed).stdout
    assert "id-smime-ct-authEnvelopedData" in text and "aes-256-gcm" in text


def test_lies_in_the_signed_range(tool: Tool, tmp_path: Path) -> None:
    file, _ = sealed_document(tool, tmp_path, "rsa")
    start, length = sealed_place(file)
    [signature] = signatures(file.read_bytes())
    _, first_length, second, _ = signature.ranges
    assert start + length <= first_length or start >= second


def test_the_wrong_key(tool: Tool, tmp_path: Path) -> None:
    file, _ = sealed_document(tool, tmp_path, "rsa")
    for kind in ("rsa3072", "ec"):
        before = listing(tmp_path)
        done = tool.run("unseal", file, "--key", tool.keys.escrow(kind)[1], "-o", tmp_path / "back.txt")
        assert done.returncode == 1 and one_line(done)
        assert listing(tmp_path) == before


@pytest.mark.parametrize("kind", ["rsa", "ec"])
def test_every_byte_of_it_counts(tool: Tool, tmp_path: Path, kind: str) -> None:
    file, key = sealed_document(tool, tmp_path, kind)
    start, length = sealed_place(file)
    content = file.read_bytes()
    chance = random.Random(7)
    for at in range(length) if IS_FULL_LENGTH else sorted(chance.sample(range(length), 60)):
        other = tmp_path / "other.pdf"
        other.write_bytes(changed(content, start + at, content[start + at] ^ 1))
        done = tool.run("unseal", other, "--key", key, "-o", tmp_path / "back.txt")
        assert done.returncode == 1 and one_line(done), at
        assert not (tmp_path / "back.txt").exists()


def test_carried_to_another_document(tool: Tool, tmp_path: Path) -> None:
    """What was appended to one document is behind another one of the same length, with everything in its place."""
    file, key = sealed_document(tool, tmp_path, "rsa", source=writer.document(page_entries="/Note (the price is 1)"))
    content = file.read_bytes()
    other = tmp_path / "other.pdf"
    other.write_bytes(content.replace(b"the price is 1", b"the price is 9", 1))
    done = tool.run("unseal", other, "--key", key, "-o", tmp_path / "back.txt")
    assert done.returncode == 1 and one_line(done)
    assert not (tmp_path / "back.txt").exists()


def test_carried_to_a_later_revision(tool: Tool, tmp_path: Path) -> None:
    """The sealed object of one document within another, as an attacker would append it."""
    file, key = sealed_document(tool, tmp_path, "rsa")
    start, length = sealed_place(file)
    sealed = file.read_bytes()[start : start + length]
    forged = tmp_path / "forged.pdf"
    place = b"<< /Length %d >>\nstream\n" % len(sealed) + sealed + b"\nendstream"
    widget = (b"<< /Type /Annot /Subtype /Widget /FT /Sig /T (Forged) /F 4 /P 6 0 R /Rect [0 0 9 9] "
              b"/SCRB_SealedInk 30 0 R /V << /Type /Sig /Filter /Adobe.PPKLite /SubFilter /ETSI.CAdES.detached "
              b"/ByteRange [0 1 2 3] /Contents <00> /SCRB_SealedInk 30 0 R >> >>")
    base = writer.document(page_entries="/Annots [31 0 R]", acro_form="<< /Fields [31 0 R] /SigFlags 3 >>")
    forged.write_bytes(writer.appended(base, {30: place, 31: widget}))
    check_by_qpdf(forged)
    done = tool.run("unseal", forged, "--key", key, "-o", tmp_path / "back.txt")
    assert done.returncode == 1 and one_line(done)


def test_two_people(tool: Tool, tmp_path: Path) -> None:
    """Each signature has its own ink; which one is meant has to be said."""
    file, key = sealed_document(tool, tmp_path, "rsa")
    twice = tmp_path / "twice.pdf"
    certificate, _ = tool.keys.escrow("rsa")
    tool.checked(file, twice, Place(1, 300, 250, 180), "ec", "--seal-ink", certificate, ink="flowing")
    back = tmp_path / "back.txt"
    done = tool.run("unseal", twice, "--key", key, "-o", back)
    assert done.returncode == 1 and one_line(done) and not back.exists()
    names = re.findall(r"^(\S+): page 1 .*, signed$", tool.run("fields", twice).stdout, re.MULTILINE)
    assert len(names) == 2
    for name, ink in zip(names, ("initials", "flowing"), strict=True):
        done = tool.run("unseal", twice, "--key", key, "--field", name, "-o", back)
        assert done.returncode == 0, done.stderr
        assert back.read_text().strip() == tool.inks[ink].file.read_text().strip()


def test_the_ink_takes_nothings_place(tool: Tool, tmp_path: Path) -> None:
    file, key = sealed_document(tool, tmp_path, "ec")
    own_key = copied(key, tmp_path)
    for target in (file, own_key):
        before = target.read_bytes()
        done = tool.run("unseal", file, "--key", own_key, "-o", target)
        assert done.returncode == 1 and f"{target} is read, and stays as it is" in one_line(done)
        assert target.read_bytes() == before


def test_nothing_sealed(tool: Tool, tmp_path: Path) -> None:
    original, file = tmp_path / "original.pdf", tmp_path / "signed.pdf"
    original.write_bytes(writer.document())
    tool.checked(original, file, PLACE)
    for one in (original, file):
        done = tool.run("unseal", one, "--key", tool.keys.escrow("rsa")[1], "-o", tmp_path / "back.txt")
        assert done.returncode == 1 and one_line(done)


def test_without_a_signature_it_is_still_bound(tool: Tool, tmp_path: Path) -> None:
    """A mark alone may have its ink sealed; what it was made for is known all the same."""
    original, file = tmp_path / "original.pdf", tmp_path / "marked.pdf"
    original.write_bytes(writer.document(page_entries="/Note (the price is 1)"))
    certificate, key = tool.keys.escrow("ec")
    done = tool.run(original, "-o", file, *PLACE.options, *tool.with_ink(), "--seal-ink", certificate)
    assert done.returncode == 0, done.stderr
    back = tmp_path / "back.txt"
    assert tool.run("unseal", file, "--key", key, "-o", back).returncode == 0
    back.unlink()
    file.write_bytes(file.read_bytes().replace(b"the price is 1", b"the price is 2", 1))
    refused = tool.run("unseal", file, "--key", key, "-o", back)
    assert refused.returncode == 1 and one_line(refused) and not back.exists()
