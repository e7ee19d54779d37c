"""The ink inside the document, which nobody reads but the holder of a key."""

from __future__ import annotations

import base64
import hashlib
import os
import random
import re
import struct
import zlib
from collections.abc import Callable
from pathlib import Path

import pytest

import writer
from checks import check_by_qpdf, output_of, run, signatures
from test_tampering import changed
from tool import IS_FULL_LENGTH, LARGEST_GROWTH, Place, Tool, copied, listing, one_line

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
    _, _, content = opened.read_bytes().partition(b"\n\n")
    assert zlib.decompress(content).strip() == tool.inks["initials"].file.read_bytes().strip()
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


def marked(tool: Tool, folder: Path, content: Callable[[bytes], bytes]) -> tuple[Path, Path]:
    """A document with this sealed in it as another program seals, and the key."""
    original, (certificate, key) = writer.document(), tool.keys.escrow("rsa")
    plain, sealed, file = folder / "plain", folder / "sealed", folder / "marked.pdf"
    plain.write_bytes(content(original))
    done = run("openssl", "cms", "-encrypt", "-binary", "-aes-256-gcm", "-in", plain, "-outform", "DER", "-out", sealed,
               certificate)
    assert done.returncode == 0, done.stderr
    page = original.split(b"\n6 0 obj\n", 1)[1].split(b"\nendobj", 1)[0]
    data = sealed.read_bytes()
    file.write_bytes(writer.appended(original, {
        6: page.replace(b"/Contents", b"/Annots [30 0 R] /Contents"),
        30: b"<< /Type /Annot /Subtype /Stamp /Rect [0 0 9 9] " + KEY.encode() + b" 31 0 R >>",
        31: b"<< /Length %d >>\nstream\n" % len(data) + data + b"\nendstream",
    }))
    return file, key


def sealing(version: int, ink: bytes) -> Callable[[bytes], bytes]:
    return lambda document: (f"Scribera sealed ink {version}\ndocument-size: {len(document)}\n"
                             f"document-sha256: {hashlib.sha256(document).hexdigest()}\n\n").encode() + ink


def test_what_the_first_version_sealed(tool: Tool, tmp_path: Path) -> None:
    """Without compression."""
    ink, back = tool.inks["initials"].file.read_bytes(), tmp_path / "back.txt"
    file, key = marked(tool, tmp_path, sealing(1, ink))
    done = tool.run("unseal", file, "--key", key, "-o", back)
    assert done.returncode == 0, done.stderr
    assert back.read_bytes() == ink


@pytest.mark.parametrize(("version", "make", "reason"), [
    (3, zlib.compress, "in a form"), (2, lambda ink: ink, "damaged"), (2, lambda ink: zlib.compress(ink)[:-9], "damaged"),
    (2, lambda _: zlib.compress(bytes(300_000_000), 1), "more than")], ids=["later", "plain", "cut", "bomb"])
def test_what_nobody_sealed(tool: Tool, tmp_path: Path, version: int, make: Callable[[bytes], bytes], reason: str) -> None:
    """Anybody can seal for a certificate that is known."""
    file, key = marked(tool, tmp_path, sealing(version, make(tool.inks["initials"].file.read_bytes())))
    done = tool.run("unseal", file, "--key", key, "-o", tmp_path / "back.txt")
    assert done.returncode == 1 and reason in one_line(done)
    assert not (tmp_path / "back.txt").exists()


def test_a_long_signature(tool: Tool, tmp_path: Path) -> None:
    """50 seconds of writing, no point like another one."""
    record = struct.Struct("<HHhHIIQ")
    chance = random.Random(3)
    stream = base64.b64decode(tool.inks["flowing"].file.read_text())
    taken = list(record.iter_unpack(stream[:-1]))
    tick, second, points = taken[0][4], taken[0][6], []
    for number in range(10_000):
        x, y, pressure, status, _, unused, _ = taken[number % len(taken)]
        trembling = [max(0, value + chance.randint(-9, 9)) for value in (x, y, pressure)] if status != 1 else (x, y, pressure)
        points.append(record.pack(*trembling, status, tick + 5 * number, unused, second + number // 200))
    ink, original, file, back = (tmp_path / name for name in ("ink.txt", "original.pdf", "signed.pdf", "back.txt"))
    ink.write_text(base64.b64encode(b"".join(points) + stream[-1:]).decode() + "\n")
    original.write_bytes(writer.document())
    certificate, key = tool.keys.escrow("rsa4096")
    done = tool.run(original, "-o", file, *PLACE.options, "--ink", ink, *tool.with_key("rsa"), "--seal-ink", certificate)
    assert done.returncode == 0, done.stderr
    assert file.stat().st_size - original.stat().st_size <= LARGEST_GROWTH
    assert tool.run("unseal", file, "--key", key, "-o", back).returncode == 0
    assert back.read_bytes() == ink.read_bytes()


def test_nobody_else_may_read_it(tool: Tool, tmp_path: Path) -> None:
    """Whatever the umask says, and whoever could read what was there before."""
    file, key = sealed_document(tool, tmp_path, "ec")
    back = tmp_path / "back.txt"
    for _ in range(2):
        done = tool.run("unseal", file, "--key", key, "-o", back, preexec_fn=lambda: os.umask(0))
        assert done.returncode == 0, done.stderr
        assert back.stat().st_mode & 0o777 == 0o600
        back.chmod(0o666)


def test_whose_ink_it_is(tool: Tool, tmp_path: Path) -> None:
    file, key = sealed_document(tool, tmp_path, "ec")
    back, twice, mark = tmp_path / "back.txt", tmp_path / "twice.pdf", tmp_path / "mark.pdf"

    def told(document: Path) -> str:
        done = tool.run("unseal", document, "--key", key, "-o", back)
        assert done.returncode == 0, done.stderr
        assert done.stdout.startswith(f"{back}: the ink of ") and done.stdout.count("\n") == 1
        return done.stdout

    whole = told(file)
    assert "field Signature1, signed by Signer rsa; the signature is valid\n" in whole
    tool.checked(file, twice, Place(1, 300, 250, 180), "ec")
    assert told(twice) == whole.replace("valid\n", "valid, and the document was changed afterwards\n")
    certificate, _ = tool.keys.escrow("ec")
    assert tool.run(tmp_path / "original.pdf", "-o", mark, *PLACE.options, *tool.with_ink(), "--seal-ink",
                    certificate).returncode == 0
    assert "Nobody signed it" in told(mark)
