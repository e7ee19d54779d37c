"""What `verify` says of signatures that others made: correct ones, and those of attackers."""

from __future__ import annotations

import json
import re
from collections.abc import Callable
from pathlib import Path

import pytest

import forging
import writer
from checks import accepted_by_pdfsig
from forging import PLACE, honest_ranges, signed
from keys import Keys
from tool import Place, Tool

Make = Callable[[Keys], bytes]


def said(tool: Tool, file: Path, *more: str | Path) -> tuple[int, list[dict[str, object]]]:
    told = tool.run("verify", "--json", file, *more)
    assert told.returncode in (0, 1), told.stderr
    return told.returncode, json.loads(told.stdout)["signatures"] if told.stdout else []


@pytest.mark.parametrize("kind", ["rsa", "rsa3072", "ec", "ec384", "ec521"])
def test_honest_signatures_of_others(tool: Tool, tmp_path: Path, kind: str) -> None:
    file = tmp_path / "signed.pdf"
    file.write_bytes(signed(tool.keys, name=kind))
    assert accepted_by_pdfsig(file)
    code, [one] = said(tool, file, "--trust", tool.keys.authority)
    assert code == 0 and f"Signer {kind}" in str(one), one


@pytest.mark.parametrize("bits", ["128", "256"])
@pytest.mark.parametrize("kind", [b"", b"/Type /Sig "])
def test_in_an_encrypted_document(tool: Tool, tmp_path: Path, kind: bytes, bits: str) -> None:
    """The signature itself is not encrypted, and need not say what it is."""
    source = writer.by_qpdf(writer.form(), tmp_path, "--allow-weak-crypto", "--encrypt", "", "owner", bits, "--")
    keeping = re.search(rb"/Encrypt \d+ 0 R", source), re.search(rb"/ID ?\[[^]]*\]", source)
    field = re.search(rb"\n(\d+) 0 obj\n([^\n]*/FT /Sig.*?)\nendobj", source, re.DOTALL)
    assert field and all(keeping)
    whole = writer.appended(source, {
        int(field[1]): field[2].replace(b"/FT /Sig", b"/FT /Sig /V 60 0 R"),
        60: b"<< " + kind + b"/Filter /Adobe.PPKLite /SubFilter /ETSI.CAdES.detached /ByteRange " + forging.RANGES
            + b" /Contents " + PLACE + b" >>",
    }, b" ".join(one[0] for one in keeping if one))
    ranges = honest_ranges(whole)
    whole = forging.fill(whole, ranges)
    file = tmp_path / "signed.pdf"
    file.write_bytes(forging.put(whole, forging.cms(tool.keys, whole[: ranges[1]] + whole[ranges[2] :])))
    assert not kind or accepted_by_pdfsig(file)
    code, [one] = said(tool, file, "--trust", tool.keys.authority)
    assert code == 0 and one["valid"] and one["field"] == "Customer", one


def test_trust(tool: Tool, tmp_path: Path) -> None:
    file = tmp_path / "signed.pdf"
    file.write_bytes(signed(tool.keys))
    assert said(tool, file)[0] == 0
    assert said(tool, file, "--trust", tool.keys.authority)[0] == 0
    code, [one] = said(tool, file, "--trust", tool.keys.stranger)
    assert code == 1, one
    text = tool.run("verify", file, "--trust", tool.keys.stranger)
    assert "trust" in text.stdout


@pytest.mark.parametrize("digest", ["sha1", "md5", "sha256"])
def test_issued_with_a_digest_that_can_be_forged(tool: Tool, tmp_path: Path, digest: str) -> None:
    keys, name, file = tool.keys, f"issued-{digest}", tmp_path / "signed.pdf"
    certificate = keys.certificate(name, "ec")
    keys.openssl("x509", "-req", f"-{digest}", "-in", keys.folder / f"{name}.csr", "-CA", keys.authority, "-CAkey",
                 keys.folder / "root.key", "-days", "20", "-extfile", keys.folder / f"{name}.ext", "-out", certificate)
    file.write_bytes(signed(keys, name=name))
    assert said(tool, file)[0] == 0
    assert said(tool, file, "--trust", keys.authority)[0] == (0 if digest == "sha256" else 1)


@pytest.mark.parametrize("kind", [None, "rsa", "ec"])
def test_what_is_told(tool: Tool, tmp_path: Path, kind: str | None) -> None:
    """The same in both forms; a document without a signature is not valid."""
    file, signed_file = tmp_path / "original.pdf", tmp_path / "signed.pdf"
    file.write_bytes(writer.document())
    if kind is None:
        told = tool.run("verify", file)
        assert told.returncode == 1 and said(tool, file) == (1, [])
        return
    tool.checked(file, signed_file, Place(1, 60, 250, 180), kind, "--reason", "I agree", "--location", "Málaga", "--name",
                 "Jörg Ägidius")
    code, [one] = said(tool, signed_file)
    text = tool.run("verify", signed_file).stdout
    assert code == 0
    for words in ("I agree", "Málaga", "Jörg Ägidius", f"Signer {kind}"):
        assert words in text and words in json.dumps(one, ensure_ascii=False), (text, one)


def gap_with_more(whole: bytes) -> tuple[int, ...]:
    """What is between the ranges is more than the signature."""
    zero, start, end, rest = honest_ranges(whole)
    return zero, start - 20, end, rest


def gap_behind(whole: bytes) -> tuple[int, ...]:
    zero, start, end, rest = honest_ranges(whole)
    return zero, start, end + 3, rest - 3


def not_from_the_start(whole: bytes) -> tuple[int, ...]:
    _, start, end, rest = honest_ranges(whole)
    return 9, start - 9, end, rest


def not_to_the_end(whole: bytes) -> tuple[int, ...]:
    zero, start, end, rest = honest_ranges(whole)
    return zero, start, end, rest - 12


def three_parts(whole: bytes) -> tuple[int, ...]:
    zero, start, end, rest = honest_ranges(whole)
    return zero, 100, 100, start - 100, end, rest


def one_part(whole: bytes) -> tuple[int, ...]:
    return 0, honest_ranges(whole)[1]


def beyond_the_end(whole: bytes) -> tuple[int, ...]:
    zero, start, end, rest = honest_ranges(whole)
    return zero, start, end, rest + 1


def overlapping(whole: bytes) -> tuple[int, ...]:
    _, start, end, rest = honest_ranges(whole)
    return 0, end, start, rest + end - start


def the_other_way_round(whole: bytes) -> tuple[int, ...]:
    zero, start, end, rest = honest_ranges(whole)
    return end, rest, zero, start


def moved_away(keys: Keys) -> bytes:
    """The signed end of the file is moved behind what an attacker put in, and the gap is made larger for it."""
    honest = signed(keys)
    _, start, end, rest = forging.honest_ranges(honest.replace(between(honest), PLACE))
    evil = b"\n7 0 obj\n" + writer.stream(b"BT /F1 40 Tf 100 500 Td (I owe you everything) Tj ET") + b"\nendobj\n"
    shifted = honest[:end] + evil + honest[end:]
    at = shifted.index(b"/ByteRange [") + len(b"/ByteRange [")
    close = shifted.index(b"]", at)
    ranges = b"0 %d %d %d" % (start, end + len(evil), rest)
    return shifted[:at] + ranges.ljust(close - at) + shifted[close:]


def between(content: bytes) -> bytes:
    """The hexadecimal string of the signature."""
    start = content.rindex(b"/Contents <") + len(b"/Contents ")
    return content[start : content.index(b">", start) + 1]


def comment_in_the_gap(keys: Keys) -> bytes:
    """A string is not all that the gap has."""
    extra = b" /Reason (signed by nobody)"
    whole = forging.prepared(writer.document(), contents=PLACE + extra)
    start = whole.rindex(PLACE)
    end = start + len(PLACE) + len(extra)
    ranges = (0, start, end, len(whole) - end)
    whole = forging.fill(whole, ranges)
    return forging.put(whole, forging.cms(keys, whole[:start] + whole[end:]))


def value_replaced(keys: Keys) -> bytes:
    """A later revision has another dictionary for the signed field, whose ranges are those of the first."""
    content = signed(keys)
    start = content.rindex(b"\n%d 0 obj\n" % forging.VALUE)
    value = content[start:].split(b"obj\n", 1)[1].split(b"\nendobj", 1)[0]
    return writer.appended(content, {forging.VALUE: value.replace(b"/Type /Sig", b"/Type /Sig /Name (The president)")})


FORGED: dict[str, Make] = {
    "more in the gap": lambda keys: signed(keys, ranges=gap_with_more),
    "more behind the signature": lambda keys: signed(keys, ranges=gap_behind),
    "not from the start": lambda keys: signed(keys, ranges=not_from_the_start),
    "not to the end": lambda keys: signed(keys, ranges=not_to_the_end),
    "three parts": lambda keys: signed(keys, ranges=three_parts),
    "one part": lambda keys: signed(keys, ranges=one_part),
    "beyond the end": lambda keys: signed(keys, ranges=beyond_the_end),
    "overlapping": lambda keys: signed(keys, ranges=overlapping),
    "the other way round": lambda keys: signed(keys, ranges=the_other_way_round),
    "nothing is covered": lambda keys: signed(keys, ranges=lambda _: (0, 0, 0, 0)),
    "no ranges": lambda keys: signed(keys).replace(b"/ByteRange", b"/BiteRange"),
    "ranges are empty": lambda keys: put_ranges(keys, b"[]"),
    "ranges are null": lambda keys: put_ranges(keys, b"null"),
    "ranges are huge": lambda keys: put_ranges(keys, b"[0 99999999999999999999999999999999999999999999 1 1]"),
    "ranges are negative": lambda keys: put_ranges(keys, b"[0 -1 2 -3]"),
    "ranges overflow": lambda keys: put_ranges(keys, b"[0 9223372036854775807 9223372036854775807 9]"),
    "ranges are real": lambda keys: put_ranges(keys, b"[0.0 1.5 2.5 3.5]"),
    "no signature": lambda keys: forging.fill(forging.prepared(writer.document()), (0, 1, 2, 3)),
    "signature is empty": lambda keys: forging.prepared(writer.document(), ranges=b"[0 1 2 3]", contents=b"<>"),
    "signature is a byte": lambda keys: forging.prepared(writer.document(), ranges=b"[0 1 2 3]", contents=b"<00>"),
    "signature is null": lambda keys: forging.prepared(writer.document(), ranges=b"[0 1 2 3]", contents=b"null"),
    "signature is rubbish": lambda keys: forging.put(forging.fill(
        forging.prepared(writer.document()), (0, 1, 2, 3)), b"\x30\x82\xff\xff" + b"rubbish" * 99),
    "of other bytes": lambda keys: signed(keys, covers=b"something else"),
    "something behind the signature": lambda keys: signed(keys, behind=b"41424344"),
    "with SHA-1": lambda keys: signed(keys, digest="sha1"),
    "with MD5": lambda keys: signed(keys, digest="md5"),
    "unknown kind": lambda keys: signed(keys).replace(b"/ETSI.CAdES.detached", b"/ETSI.RFC3161/Nothing"[:20]),
    "moved away": moved_away,
    "an entry in the gap": comment_in_the_gap,
    "something appended": lambda keys: signed(keys) + b"\n% and more\n",
    "page replaced later": lambda keys: writer.appended(signed(keys), {7: writer.stream(b"0 0 600 900 re f")}),
    "value replaced later": value_replaced,
}


def put_ranges(keys: Keys, ranges: bytes) -> bytes:
    whole = forging.prepared(writer.document(), ranges=ranges)
    start = whole.rindex(PLACE)
    return forging.put(whole, forging.cms(keys, whole[:start] + whole[start + len(PLACE) :]))


@pytest.mark.parametrize("name", FORGED)
def test_forged(tool: Tool, tmp_path: Path, name: str) -> None:
    """Whatever another program thinks: it is not the whole file that is signed."""
    file = tmp_path / "forged.pdf"
    file.write_bytes(FORGED[name](tool.keys))
    told = tool.run("verify", file)
    assert told.returncode == 1, told.stdout
    as_json = tool.run("verify", "--json", file)
    assert as_json.returncode == 1
    if as_json.stdout:
        json.loads(as_json.stdout)


def value_in_an_object_stream(keys: Keys) -> bytes:
    """A later revision packs another dictionary, in which the signature is as far from the start as in the file."""
    content = signed(keys)
    whole = content.replace(between(content), PLACE)
    gap = honest_ranges(whole)[1]
    at = content.index(b"/ByteRange [")
    ranges = content[at : content.index(b"]", at) + 1]
    packed = b"%d 0 << /Type /Sig /SubFilter /ETSI.CAdES.detached /Name (The president) " % forging.VALUE + ranges
    packed = packed.ljust(gap - len(b"/Contents ")) + b"/Contents " + between(content) + b" >>"
    first = len(b"%d 0 " % forging.VALUE)
    stream, table = 30, 31
    body = content + b"%d 0 obj\n" % stream + writer.stream(packed, f"/Type /ObjStm /N 1 /First {first}") + b"\nendobj\n"
    rows = [(2, stream, 0), (1, len(content), 0), (1, len(body), 0)]
    data = b"".join(kind.to_bytes(1, "big") + where.to_bytes(4, "big") + b"\0" for kind, where, _ in rows)
    previous = int(content[content.rindex(b"startxref") + 9 :].split()[0])
    entries = (f"/Type /XRef /W [1 4 1] /Index [{forging.VALUE} 1 {stream} 2] /Size {table + 1} /Root 1 0 R "
               f"/Prev {previous}")
    return body + b"%d 0 obj\n" % table + writer.stream(data, entries) + b"\nendobj\nstartxref\n%d\n%%%%EOF\n" % len(body)


def value_in_two_fields(keys: Keys) -> bytes:
    content = signed(keys)
    start = content.rindex(b"\n1 0 obj\n") + len(b"\n1 0 obj\n")
    root = content[start : content.index(b"\nendobj", start)]
    field = b"<< /FT /Sig /T (I owe you everything) /V %d 0 R >>" % forging.VALUE
    return writer.appended(content, {1: root.replace(b"/Fields [", b"/Fields [30 0 R "), 30: field})


def reason_replaced(keys: Keys) -> bytes:
    """What is signed refers to what says why."""
    source = writer.appended(writer.document(), {30: b"(I have seen it)"})
    return writer.appended(signed(keys, source, value_entries=b"/Reason 30 0 R"), {30: b"(I owe you everything)"})


@pytest.mark.parametrize("make", [value_in_an_object_stream, value_in_two_fields, reason_replaced])
def test_nobody_else_speaks_for_the_signer(tool: Tool, tmp_path: Path, make: Make) -> None:
    """Not even when somebody signs all of it afterwards."""
    file, again = tmp_path / "forged.pdf", tmp_path / "signed.pdf"
    file.write_bytes(make(tool.keys))
    done = tool.sign(file, again, Place(1, 60, 250, 180), "ec")
    assert done.returncode == 0, done.stderr
    code, told = said(tool, again, "--trust", tool.keys.authority)
    assert code == 1 and told[-1]["valid"] and not any(one["valid"] for one in told[:-1]), told


CERTIFYING = b"/Reference [<< /Type /SigRef /TransformMethod /DocMDP /TransformParams << /P %d /V /1.2 >> >>]"


@pytest.mark.parametrize("level", [1, 2, 3])
def test_certified_against_every_change(tool: Tool, tmp_path: Path, level: int) -> None:
    file = tmp_path / "certified.pdf"
    content = signed(tool.keys, value_entries=CERTIFYING % level)
    file.write_bytes(content)
    assert said(tool, file)[0] == 0
    # Signed by somebody who does not care, in a field of its own.
    file.write_bytes(signed_again(tool.keys, content))
    code, told = said(tool, file)
    assert [one["valid"] for one in told] == [level == 3, True] and code == (0 if level == 3 else 1), told


def signed_again(keys: Keys, content: bytes, new: int = 30) -> bytes:
    """With another field and value, which are objects from that number on."""
    start = content.rindex(b"\n1 0 obj\n") + len(b"\n1 0 obj\n")
    root = content[start : content.index(b"\nendobj", start)]
    whole = writer.appended(content, {
        1: root.replace(b"/Fields [", b"/Fields [%d 0 R " % new),
        new: b"<< /FT /Sig /T (Another) /V %d 0 R >>" % (new + 1),
        new + 1: b"<< /Type /Sig /SubFilter /ETSI.CAdES.detached /ByteRange " + forging.RANGES + b" /Contents " + PLACE + b" >>",
    })
    ranges = honest_ranges(whole)
    whole = forging.fill(whole, ranges)
    return forging.put(whole, forging.cms(keys, whole[: ranges[1]] + whole[ranges[2] :], "ec"))
