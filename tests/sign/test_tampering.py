"""A signed file of which one byte is another one."""

from __future__ import annotations

import random
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import pytest

import writer
from checks import accepted_by_pdfsig, output_of, signatures
from tool import IS_FULL_LENGTH, IS_SANITIZED, Place, Tool

PLACE = Place(1, 60, 250, 180)


def accepted(tool: Tool, file: Path) -> bool:
    told = tool.run("verify", file)
    assert told.returncode in (0, 1), told.stderr
    return told.returncode == 0


def changed(content: bytes, at: int, value: int) -> bytes:
    return content[:at] + bytes([value]) + content[at + 1 :]


def tampered_places(content: bytes, earlier: int, gap: range) -> list[int]:
    """All of the last revision that is no compressed data, and some of everything else."""
    everything = [at for at in range(len(content)) if at not in gap]
    if IS_FULL_LENGTH:
        return everything
    chance = random.Random(4)
    revision = [at for at in everything if at >= earlier]
    near = list(range(gap.start - 400, gap.start)) + list(range(gap.stop, min(len(content), gap.stop + 400)))
    some = chance.sample(everything, 60) + chance.sample(revision, 60) + chance.sample(near, 120)
    some += [0, 5, 7, len(content) - 1, len(content) - 3, gap.start - 1, gap.stop]
    return sorted({at for at in some if 0 <= at < len(content) and at not in gap})


@pytest.mark.skipif(IS_SANITIZED, reason="finds nothing more and takes minutes")
@pytest.mark.parametrize(("structure", "kind"), [("table", "rsa"), ("objects", "ec")])
def test_every_byte_counts(tool: Tool, tmp_path: Path, structure: str, kind: str) -> None:
    original, file = tmp_path / "original.pdf", tmp_path / "signed.pdf"
    original.write_bytes(writer.document(structure=structure))
    escrow, _ = tool.keys.escrow(kind)
    content = tool.checked(original, file, PLACE, kind, "--seal-ink", escrow)
    _, start, end, _ = signatures(content)[0].ranges
    assert accepted(tool, file) and accepted_by_pdfsig(file)
    gap = range(start, end)
    chance = random.Random(5)

    def try_one(at: int) -> str:
        value = content[at] ^ (1 << chance.randrange(8))
        one = tmp_path / f"{at}.pdf"
        one.write_bytes(changed(content, at, value))
        unnoticed = [name for name, done in (("verify", accepted(tool, one)), ("pdfsig", accepted_by_pdfsig(one))) if done]
        one.unlink()
        return f"byte {at} from {content[at]} to {value} unnoticed by {unnoticed}" if unnoticed else ""

    with ThreadPoolExecutor(2) as pool:
        found = [told for told in pool.map(try_one, tampered_places(content, original.stat().st_size, gap)) if told]
    assert not found


# Object identifiers: what kind of content it is, its digest, the certificate; the algorithms of the signature.
STATED = [bytes.fromhex(text) for text in ("06092a864886f70d010903", "06092a864886f70d010904",
                                           "060b2a864886f70d010910022f")]
ALGORITHMS = {"rsa": bytes.fromhex("06092a864886f70d0101"), "ec": bytes.fromhex("06082a8648ce3d0403")}


@pytest.mark.skipif(IS_SANITIZED, reason="finds nothing more and takes minutes")
@pytest.mark.parametrize("kind", ["rsa", "ec"])
def test_the_signature_itself_counts(tool: Tool, tmp_path: Path, kind: str) -> None:
    """The certificate that it names, what it says, its value; and whatever is put behind it."""
    original, file = tmp_path / "original.pdf", tmp_path / "signed.pdf"
    original.write_bytes(writer.document())
    content = tool.checked(original, file, PLACE, kind)
    signature = signatures(content)[0]
    start, length = signature.ranges[1] + 1, 2 * len(signature.der)
    certificate = output_of("openssl", "x509", "-in", tool.keys.certificate(kind, kind), "-outform", "DER")
    assert signature.der.count(certificate) == 1
    at = signature.der.index(certificate)
    statement = min(signature.der.index(one, at + len(certificate)) for one in STATED)
    algorithm = signature.der.rindex(ALGORITHMS[kind])
    parts = [range(at, at + len(certificate)), range(statement, algorithm),
             range(algorithm + len(ALGORITHMS[kind]) + 6, len(signature.der))]
    digits = [digit for part in parts for digit in range(2 * part.start, 2 * part.stop)]
    chance = random.Random(6)
    some = digits if IS_FULL_LENGTH else chance.sample(digits, 150)
    behind = [length, length + 1, 2 * len(signature.cms) - 1]

    def try_one(at: int) -> str:
        old = content[start + at]
        value = ord("0") if old != ord("0") else ord("7")
        one = tmp_path / f"{at}.pdf"
        one.write_bytes(changed(content, start + at, value))
        done = accepted(tool, one)
        one.unlink()
        return f"digit {at} of {length}" if done else ""

    with ThreadPoolExecutor(2) as pool:
        found = [told for told in pool.map(try_one, some + behind) if told]
    assert not found


def test_the_first_signature_stays(tool: Tool, tmp_path: Path) -> None:
    """A second one does not touch it, and it is told of which revision it is."""
    original, once, twice, both = (tmp_path / f"{name}.pdf" for name in ("original", "once", "twice", "both"))
    original.write_bytes(writer.document())
    first = tool.checked(original, once, PLACE, "rsa")
    second = tool.checked(once, twice, Place(1, 300, 250, 180), "ec")
    assert second.startswith(first)
    told = tool.run("verify", twice, "--trust", tool.keys.authority)
    assert told.returncode == 0
    assert told.stdout.index("Signer rsa") < told.stdout.index("Signer ec")
    # What belongs to the first one alone, changed: both are wrong.
    at = len(original.read_bytes()) // 2
    both.write_bytes(changed(second, at, second[at] ^ 1))
    assert not accepted(tool, both) and not accepted_by_pdfsig(both)


def test_something_appended(tool: Tool, tmp_path: Path) -> None:
    original, file, more = (tmp_path / f"{name}.pdf" for name in ("original", "signed", "more"))
    original.write_bytes(writer.document())
    content = tool.checked(original, file, PLACE)
    assert accepted(tool, file)
    # The page's content is another one from now on, though all signed bytes are there.
    page = writer.stream(b"BT /F1 40 Tf 100 500 Td (I owe you everything) Tj ET")
    more.write_bytes(writer.appended(content, {7: page}))
    assert not accepted(tool, more)
    for behind in (b" ", b"\n", b"%", b"\0"):
        more.write_bytes(content + behind)
        assert not accepted(tool, more)
