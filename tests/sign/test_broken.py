"""Documents that are damaged, or made to do damage."""

from __future__ import annotations

import json
import os
import random
import subprocess
import zlib
from collections.abc import Callable
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import pytest

import forging
import writer
from checks import run
from keys import Keys
from tool import IS_FULL_LENGTH, IS_SANITIZED, PROGRAM, Place, Tool, environment, listing, one_line
from writer import Pdf, document, form

PLACE = Place(1, 60, 250, 180)
COUNT = 10_000 if IS_FULL_LENGTH else 60 if IS_SANITIZED else 240


def altered(**changes: tuple[bytes, bytes]) -> Callable[[], bytes]:
    """The document with one thing replaced by another."""

    def make() -> bytes:
        content = document()
        for old, new in changes.values():
            assert old in content
            content = content.replace(old, new)
        return content

    return make


def in_circles(pdf: Pdf) -> None:
    pdf.objects[2] = pdf.objects[2].replace(b"/Kids [", b"/Kids [2 0 R ")


def parents_in_circles(pdf: Pdf) -> None:
    del_box = pdf.objects[6].split(b"/MediaBox")[0]
    pdf.objects[6] = del_box + b">>"
    pdf.objects[2] = pdf.objects[2].replace(b"/Type", b"/Parent 2 0 R /Type")


def fields_in_circles(pdf: Pdf) -> None:
    pdf.add(b"<< /T (A) /Kids [41 0 R] /Parent 41 0 R >>", 40)
    pdf.add(b"<< /T (B) /Kids [40 0 R 41 0 R] /Parent 40 0 R >>", 41)
    pdf.objects[1] = pdf.objects[1].replace(b"/Catalog", b"/Catalog /AcroForm << /Fields [40 0 R 41 0 R] >>")


def lengths_in_circles(pdf: Pdf) -> None:
    pdf.objects[7] = b"<< /Length 7 0 R >>\nstream\nq Q\nendstream"


def deep() -> bytes:
    return document(page_entries="/Deep " + "[" * 100_000 + "]" * 100_000)


def deep_pages(pdf: Pdf) -> None:
    """A tree with one kid a node, 20,000 nodes high."""
    last = max(pdf.objects)
    height = 20_000
    for number in range(last + 1, last + height + 1):
        pdf.objects[number] = b"<< /Type /Pages /Count 1 /Kids [%d 0 R] /Parent %d 0 R >>" % (number + 1, number - 1)
    pdf.objects[2] = b"<< /Type /Pages /Count 1 /Kids [%d 0 R] >>" % (last + 1)
    pdf.objects[last + 1] = pdf.objects[last + 1].replace(b"/Parent %d 0 R" % last, b"/Parent 2 0 R")
    pdf.objects[last + height] = b"<< /Type /Pages /Count 1 /Kids [6 0 R] /Parent %d 0 R >>" % (last + height - 1)
    pdf.objects[6] = pdf.objects[6].replace(b"/Parent 2 0 R", b"/Parent %d 0 R" % (last + height))


def packed(piece: bytes, megabytes: int) -> bytes:
    """The same again and again."""
    packer = zlib.compressobj(1)
    block = piece * (1_000_000 // len(piece))
    return b"".join(packer.compress(block) for _ in range(megabytes)) + packer.flush()


def bomb(piece: bytes, megabytes: int = 300) -> Callable[[], bytes]:
    """A page that is small in the file."""
    data = packed(piece, megabytes)
    content = b"<< /Length %d /Filter /FlateDecode >>\nstream\n" % len(data) + data + b"\nendstream"
    return lambda: document(change=lambda pdf: pdf.objects.update({7: content}))


def objects_in_a_bomb() -> bytes:
    content = document(structure="objects")
    at = content.rindex(b"/Type /ObjStm")
    start = content.rindex(b"<<", 0, at)
    end = content.index(b"endstream", at) + 9
    data = packed(b"1 0 ", 300)
    bomb = b"<< /Type /ObjStm /N 7 /First 40 /Length %d /Filter /FlateDecode >>\nstream\n" % len(data) + data + b"\nendstream"
    return moved(content, start, end, bomb)


def references_in_a_bomb() -> bytes:
    """A cross-reference of a hundred million entries."""
    content = document(structure="stream")
    at = content.rindex(b"/Type /XRef")
    start = content.rindex(b"<<", 0, at)
    end = content.index(b"endstream", at) + 9
    data = packed(b"\1\0\0\0\x0f\0\0" * 10, 300)
    bomb = (b"<< /Type /XRef /W [1 4 2] /Size 100000000 /Root 1 0 R /Length %d /Filter /FlateDecode >>\nstream\n" % len(data)
            + data + b"\nendstream")
    return content[:start] + bomb + content[end:]


def moved(content: bytes, start: int, end: int, other: bytes) -> bytes:
    """Something else in a place before the last cross-reference."""
    last = int(content[content.rindex(b"startxref") + 9 :].split()[0])
    after = content[:start] + other + content[end:]
    at = after.rindex(b"startxref")
    return after[:at] + b"startxref\n%d\n%%%%EOF\n" % (last + len(other) - (end - start))


def long_names(pdf: Pdf) -> None:
    """One text for the names of all fields."""
    pdf.objects[40] = b"(" + b"x" * 200_000 + b")"
    numbers = range(100, 20_100)
    pdf.objects.update((number, b"<< /FT /Sig /T 40 0 R >>") for number in numbers)
    fields = writer.references(list(numbers)).encode()
    pdf.objects[1] = pdf.objects[1].replace(b"/Catalog", b"/Catalog /AcroForm << /Fields [" + fields + b"] >>")


def many_fields(pdf: Pdf) -> None:
    numbers = range(100, 20_100)
    for number in numbers:
        pdf.objects[number] = b"<< /Type /Annot /Subtype /Widget /FT /Sig /T (F%d) /Rect [9 9 90 90] /P 6 0 R >>" % number
    all_of_them = writer.references(list(numbers)).encode()
    pdf.objects[1] = pdf.objects[1].replace(b"/Catalog", b"/Catalog /AcroForm << /Fields [" + all_of_them + b"] >>")
    pdf.objects[6] = pdf.objects[6].replace(b"/Contents", b"/Annots [" + all_of_them + b"] /Contents")


def references_in_a_larger_bomb() -> bytes:
    """Three gigabytes in three megabytes."""
    packer = zlib.compressobj(9, zlib.DEFLATED, -zlib.MAX_WBITS)
    block = packer.compress(bytes(1_000_000)) + packer.flush(zlib.Z_FULL_FLUSH)
    data = b"\x78\xda" + block * 3000 + b"\x03\0" + bytes(4)
    before = document(structure="stream")
    head = b"20 0 obj\n<< /Type /XRef /Root 1 0 R /Size 21 /W [1 4 2] /Filter /FlateDecode /Length %d >>\nstream\n" % len(data)
    return before + head + data + b"\nendstream\nendobj\nstartxref\n%d\n%%%%EOF\n" % len(before)


def previous_in_circles() -> bytes:
    content = writer.appended(document(), {4: b"null"})
    at = content.rindex(b"xref\n", 0, content.rindex(b"startxref"))
    before = content[: content.rindex(b"/Prev ")]
    after = content[content.rindex(b"/Prev ") :].split(b" ", 2)[2]
    return before + b"/Prev %d " % at + after


HOSTILE: dict[str, Callable[[], bytes]] = {
    "empty": lambda: b"",
    "a-header": lambda: b"%PDF-1.7\n",
    "no-pdf": lambda: b"Dear Sir or Madam,\n" * 50,
    "a-picture": lambda: b"\x89PNG\r\n\x1a\n" + bytes(range(256)) * 10,
    "nothing-but-zeros": lambda: bytes(100_000),
    "no-trailer": lambda: document().split(b"trailer")[0],
    "no-startxref": lambda: document().split(b"startxref")[0],
    "wrong-startxref": lambda: document().replace(b"startxref\n", b"startxref\n9"),
    "huge-startxref": lambda: document().replace(b"startxref\n", b"startxref\n99999999999999999999999999"),
    "negative-startxref": lambda: document().replace(b"startxref\n", b"startxref\n-"),
    "wrong-offsets": lambda: document().replace(b"00000000", b"00000009"),
    "no-root": altered(a=(b"/Root 1 0 R", b"/Roof 1 0 R")),
    "root-is-a-number": altered(a=(b"/Root 1 0 R", b"/Root 1    ")),
    "root-is-a-page": altered(a=(b"/Root 1 0 R", b"/Root 6 0 R")),
    "no-pages": altered(a=(b"/Pages 2 0 R", b"/Pages 9 0 R")),
    "no-kids": altered(a=(b"/Kids [6 0 R]", b"/Kids []     ")),
    "kids-are-numbers": altered(a=(b"/Kids [6 0 R]", b"/Kids [6 0 1]")),
    "no-page-size": altered(a=(b"/MediaBox [0 0 595 842]", b"/MediaBox [0 0 595]")),
    "empty-page": altered(a=(b"/MediaBox [0 0 595 842]", b"/MediaBox [0 0 0 0]")),
    "infinite-page": altered(a=(b"/MediaBox [0 0 595 842]", b"/MediaBox [0 0 1" + b"0" * 400 + b" 842]")),
    "page-size-is-no-number": altered(a=(b"/MediaBox [0 0 595 842]", b"/MediaBox [(a) /b null true]")),
    "strange-rotation": lambda: document(page_entries="/Rotate 45"),
    "huge-rotation": lambda: document(page_entries="/Rotate 99999999999999999999"),
    "user-unit-of-nothing": lambda: document(page_entries="/UserUnit 0"),
    "negative-user-unit": lambda: document(page_entries="/UserUnit -3"),
    "crop-box-elsewhere": lambda: document(page_entries="/CropBox [5000 5000 6000 6000]"),
    "annotations-are-a-number": lambda: document(page_entries="/Annots 5"),
    "annotations-are-a-page": lambda: document(page_entries="/Annots 6 0 R"),
    "form-is-a-number": lambda: document(acro_form="7"),
    "fields-are-a-name": lambda: document(acro_form="<< /Fields /None >>"),
    "pages-in-circles": lambda: document(change=in_circles),
    "parents-in-circles": lambda: document(change=parents_in_circles),
    "fields-in-circles": lambda: document(change=fields_in_circles),
    "lengths-in-circles": lambda: document(change=lengths_in_circles),
    "revisions-in-circles": previous_in_circles,
    "deep-arrays": deep,
    "deep-pages": lambda: document(change=deep_pages),
    "a-bomb": bomb(b" "),
    "objects-in-a-bomb": objects_in_a_bomb,
    "references-in-a-bomb": references_in_a_bomb,
    "many-fields": lambda: document(change=many_fields),
    "long-names": lambda: document(change=long_names),
    "huge-object-number": altered(a=(b"/Size 8", b"/Size 2147483647")),
    "objects-that-overflow": lambda: writer.appended(document(), {2147483646: b"null"}),
    "damaged-encryption": lambda: document(structure="table", trailer=b" /Encrypt << /Filter /Standard /V 5 /R 6 /O () /U () /P -1 >> "),
    "unknown-encryption": lambda: document(trailer=b" /Encrypt << /Filter /Nobodys /V 1 >> "),
}


def check_outcome(tool: Tool, original: Path, out: Path, *arguments: str | Path) -> int:
    """No crash, no hang; one clear line and no file, or a file that is right."""
    told = tool.run_briefly(*arguments)
    assert told.returncode in (0, 1), (told.returncode, told.stderr)
    if told.returncode == 1 and "verify" not in arguments:
        assert told.stderr.startswith("scribera-sign: ") and told.stderr.count("\n") == 1, told.stderr
        assert len(told.stderr) < 400
        assert listing(out) == []
    if "-o" in arguments and told.returncode == 0:
        made = (out / "signed.pdf").read_bytes()
        assert made.startswith(original.read_bytes())
        # What was there before may be wrong already.
        newest = json.loads(tool.run("verify", "--json", out / "signed.pdf").stdout)["signatures"][-1]
        assert newest["valid"] and newest["wholeFile"], newest
        (out / "signed.pdf").unlink()
    return told.returncode


def try_all(tool: Tool, original: Path, out: Path) -> list[int]:
    out.mkdir(exist_ok=True)
    return [
        check_outcome(tool, original, out, original, "-o", out / "signed.pdf", *PLACE.options, *tool.with_ink(),
                      *tool.with_key("ec")),
        check_outcome(tool, original, out, "fields", original),
        check_outcome(tool, original, out, "verify", original),
    ]


@pytest.mark.parametrize("name", HOSTILE)
def test_hostile_document(tool: Tool, tmp_path: Path, name: str) -> None:
    original, out = tmp_path / "original.pdf", tmp_path / "out"
    original.write_bytes(HOSTILE[name]())
    try_all(tool, original, out)


def with_font(font: bytes, **objects: bytes) -> Callable[[], bytes]:
    """What its entries refer to are objects 40 and 41."""
    changes = {5: b"<< /Type /Font /BaseFont /Helvetica " + font + b" >>", 40: objects["first"], 41: objects.get("second", b"null")}
    return lambda: document(change=lambda pdf: pdf.objects.update(changes))


ALL_CODES = b"<0000> <ffff> "
COMPOSITE = b"/Subtype /Type0 /Encoding /Identity-H /DescendantFonts [<< /Type /Font /W 40 0 R >>] "

BOMBS = {
    "a number without an end": lambda: document(change=lambda pdf: pdf.objects.update(
        {7: writer.stream(b"BT /F1 " + b"9" * 100_000 + b" Tf (x) Tj ET")})),
    "long meanings": with_font(b"/Subtype /Type1 /ToUnicode 40 0 R", first=writer.stream(
        ALL_CODES + b"<" + b"0041" * 30_000 + b"> endbfrange")),
    "many meanings": with_font(b"/Subtype /Type1 /ToUnicode 40 0 R", first=writer.stream(
        (ALL_CODES + b"<0041> ") * 10_000 + b"endbfrange")),
    "the same widths again and again": with_font(
        COMPOSITE, first=b"[" + b" ".join(b"%d 41 0 R" % (number * 100_000) for number in range(2000)) + b"]",
        second=b"[" + b"1 " * 100_000 + b"]"),
    "blanks": bomb(b" "),
    "text": bomb(b"BT /F1 9 Tf (x) Tj ET "),
    "text-that-is-read": bomb(b"BT /F1 9 Tf (x) Tj ET ", 50),
    "arrays": bomb(b"["),
    "arrays-that-are-read": bomb(b"[", 60),
    "numbers": bomb(b"1 ", 60),
}


@pytest.mark.skipif(IS_SANITIZED, reason="memory is not limited there")
def test_memory_for_a_bomb(tool: Tool, tmp_path: Path) -> None:
    original = tmp_path / "original.pdf"
    original.write_bytes(references_in_a_larger_bomb())
    with subprocess.Popen([PROGRAM, "fields", original], env=environment(), stderr=subprocess.PIPE, text=True) as process:
        assert process.stderr
        reason = process.stderr.read()
        usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(usage[1])
    assert process.returncode == 1 and reason.startswith("scribera-sign: "), reason
    assert usage[2].ru_maxrss < 1_200_000  # kilobytes


@pytest.mark.skipif(IS_SANITIZED, reason="takes minutes")
@pytest.mark.parametrize("name", BOMBS)
def test_looking_for_text_in_a_bomb(tool: Tool, tmp_path: Path, name: str) -> None:
    original, out = tmp_path / "original.pdf", tmp_path / "out"
    original.write_bytes(BOMBS[name]())
    out.mkdir()
    check_outcome(tool, original, out, original, "-o", out / "signed.pdf", "--after", writer.TEXT, "--width", "100",
                  *tool.with_ink(), *tool.with_key("ec"))


def mutated(content: bytes, chance: random.Random) -> bytes:
    """Cut off, or with bits, bytes, digits or whole parts changed."""
    way = chance.randrange(6)
    if way == 0:
        return content[: chance.randrange(len(content))]
    result = bytearray(content)
    if way == 1:
        for _ in range(chance.choice((1, 1, 2, 8, 40))):
            result[chance.randrange(len(result))] ^= 1 << chance.randrange(8)
    elif way == 2:
        digits = [at for at, byte in enumerate(content) if 0x30 <= byte <= 0x39]
        for _ in range(chance.choice((1, 2, 5))):
            result[chance.choice(digits)] = 0x30 + chance.randrange(10)
    elif way == 3:
        start = chance.randrange(len(content))
        del result[start : start + chance.choice((1, 2, 10, 100))]
    elif way == 4:
        start, to = chance.randrange(len(content)), chance.randrange(len(content))
        result[to:to] = content[start : start + chance.choice((1, 10, 200))]
    else:
        names = (b"/Kids", b"/Type", b"/Parent", b"/Count", b"/Length", b"obj", b"R", b"/Fields", b"/V", b"/ByteRange",
                 b"/Contents", b"<<", b">>", b"[", b"]", b"/Prev", b"/Root", b"/Filter", b"/W", b"/Index", b"/N", b"/First")
        name = chance.choice([one for one in names if one in content])
        places = [at for at in range(len(content)) if content.startswith(name, at)]
        at = chance.choice(places)
        result[at : at + len(name)] = chance.choice((b"", b" ", b"null", b"-1", b"9" * 20, b"<<", b"(", chance.choice(names)))
    return bytes(result)


def seeds(keys: Keys, folder: Path) -> list[bytes]:
    return [
        document(), document(structure="objects"), document(structure="hybrid", annotations="indirect"), form(),
        form(structure="stream"), forging.signed(keys), forging.signed(keys, name="ec"),
        writer.by_qpdf(document(structure="objects", pages=3), folder, "--linearize", "--object-streams=generate"),
        writer.by_qpdf(document(), folder, "--encrypt", "", "owner", "256", "--"),
    ]


def test_damaged_documents(tool: Tool, tmp_path: Path) -> None:
    """SCRIBERA_TEST_SEED repeats one that failed."""
    sources = seeds(tool.keys, tmp_path)
    single = os.environ.get("SCRIBERA_TEST_SEED")
    numbers = [int(single)] if single else range(COUNT)

    def try_one(number: int) -> str:
        chance = random.Random(number)
        original, out = tmp_path / f"{number}.pdf", tmp_path / f"out-{number}"
        original.write_bytes(mutated(chance.choice(sources), chance))
        try:
            try_all(tool, original, out)
        except Exception as error:  # told with its number
            return f"seed {number}: {error}"
        original.unlink()
        out.rmdir()
        return ""

    with ThreadPoolExecutor(2) as pool:
        faults = [fault for fault in pool.map(try_one, numbers) if fault]
    assert not faults, "\n".join(faults[:20])


def test_a_damaged_certificate(tool: Tool, tmp_path: Path) -> None:
    original, out = tmp_path / "original.pdf", tmp_path / "out"
    original.write_bytes(document())
    out.mkdir()
    good = tool.keys.p12("ec").read_bytes()
    certificate = tmp_path / "damaged.p12"
    for number in range(60):
        chance = random.Random(number)
        broken = bytearray(good)
        broken[chance.randrange(len(broken))] ^= 1 << chance.randrange(8)
        certificate.write_bytes(broken if number % 3 else broken[: chance.randrange(len(broken))])
        check_outcome(tool, original, out, original, "-o", out / "signed.pdf", *PLACE.options, *tool.with_ink(),
                      "--certificate", certificate, "--password-file", tool.keys.password_file)


def test_a_damaged_ink(tool: Tool, tmp_path: Path) -> None:
    original, out = tmp_path / "original.pdf", tmp_path / "out"
    original.write_bytes(document())
    out.mkdir()
    ink = tmp_path / "ink.txt"
    for text in (b"", b"no ink", b"\0" * 100, b"AAAA", tool.inks["initials"].file.read_bytes()[:-7], b"A" * 32):
        ink.write_bytes(text)
        done = tool.run(original, "-o", out / "signed.pdf", *PLACE.options, "--ink", ink, *tool.with_key("ec"))
        assert done.returncode in (1, 5), text
        assert one_line(done) and listing(out) == []




@pytest.mark.parametrize("separator", [b"", b"%\n", b" \0"])
def test_readers_see_another_revision(tool: Tool, tmp_path: Path, separator: bytes) -> None:
    """What is signed is what was looked at, or nothing."""
    content = document()
    first = int(content[content.rindex(b"startxref") + 9 :].split()[0])
    whole = writer.appended(content, {7: writer.stream(b"BT /F1 40 Tf 100 500 Td (I owe you everything) Tj ET")})
    at = whole.rindex(b"startxref")
    second = int(whole[at + 9 :].split()[0])
    original, output = tmp_path / "original.pdf", tmp_path / "signed.pdf"
    original.write_bytes(whole[:at] + b"startxref\n%d\n%%%%EOF\nstartxref" % first + separator + b"%d\n" % second)
    if tool.sign(original, output, PLACE, "ec").returncode == 0:
        page = [run("qpdf", "--show-object=7", "--filtered-stream-data", file).stdout for file in (original, output)]
        assert page[0] == page[1]
