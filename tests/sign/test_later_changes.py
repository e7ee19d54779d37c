"""What is changed after a signature that limits it: by certifying the document, or by locking fields."""

from __future__ import annotations

import json
from collections.abc import Callable
from pathlib import Path

import pytest

import forging
import writer
from test_verifying import CERTIFYING, signed_again
from tool import Place, Tool, one_line
from writer import Pdf, document, stream

FORM, CUSTOMER, CLERK, NAME, OTHER, BOX, LINK, FILE, MISSING = 40, 41, 42, 43, 44, 45, 46, 47, 77
PAGE, CONTENT, FONT = 6, 7, 5
WIDGET = "<< /Type /Annot /Subtype /Widget /F 4 /P 6 0 R"


def look(text: str) -> bytes:
    return stream(f"/Tx BMC q BT /F1 12 Tf 2 5 Td ({text}) Tj ET Q EMC".encode(), "/Type /XObject /Subtype /Form /BBox [0 0 100 20]")


def contract(lock: str, prepare: Callable[[Pdf], None] = lambda pdf: None) -> bytes:
    """With fields to sign and to fill, and what is refered to and not there; prepared for more."""

    def change(pdf: Pdf) -> None:
        pdf.add(f"{WIDGET} /FT /Sig /T (Customer) /Rect [300 120 500 180] /Lock << /Type /SigFieldLock {lock} >> >>", CUSTOMER)
        pdf.add(f"{WIDGET} /FT /Sig /T (Clerk) /Rect [80 120 280 180] >>", CLERK)
        for number, name, at in ((NAME, "Name", 600), (OTHER, "Other", 640)):
            pdf.add(f"{WIDGET} /FT /Tx /T ({name}) /V (Ann) /DA (/F1 12 Tf 0 g) /Rect [100 {at} 200 {at + 20}] "
                    f"/AP << /N {number + 10} 0 R >> >>", number)
            pdf.add(look(name), number + 10)
        pdf.add(f"{WIDGET} /FT /Btn /T (Box) /V /Off /AS /Off /Rect [300 600 320 620] "
                f"/AP << /N << /Yes {NAME + 10} 0 R /Off {OTHER + 10} 0 R >> >> >>", BOX)
        pdf.add("<< /Type /Annot /Subtype /Link /Rect [20 20 40 40] /Dest [6 0 R /Fit] >>", LINK)
        pdf.objects[FONT] = pdf.objects[FONT].replace(b"/Type /Font", b"/Type /Font /Rect [0 0 9 9]")
        fields = writer.references([CUSTOMER, CLERK, NAME, OTHER, BOX])
        pdf.add("<< /FT /Tx /T (File) /F (here) >>", FILE)
        pdf.add(f"<< /Fields [{FILE} 0 R {fields}] /DR << /Font << /F1 5 0 R >> >> /DA (/F1 12 Tf 0 g) >>", FORM)
        pdf.objects[1] = pdf.objects[1].replace(b"/Catalog", b"/Catalog /AcroForm %d 0 R" % FORM)
        pdf.objects[PAGE] = pdf.objects[PAGE].replace(
            b"/Contents", f"/Annots [{fields} {FONT} 0 R {LINK} 0 R] /Missing {MISSING} 0 R /Contents".encode())
        prepare(pdf)

    return document(change=change)


def now(content: bytes, number: int, *changes: tuple[bytes, bytes]) -> dict[int, bytes]:
    """The object as it is, but for that."""
    text = content[content.rindex(b"\n%d 0 obj\n" % number) :].split(b"obj\n", 1)[1].split(b"\nendobj", 1)[0]
    for old, new in changes:
        assert text.count(old) == 1, (text, old)
        text = text.replace(old, new)
    return {number: text}


def with_page(content: bytes) -> dict[int, bytes]:
    text = now(content, PAGE)[PAGE]
    return {**now(content, 2, (b"/Kids [6 0 R]", b"/Kids [6 0 R 70 0 R]"), (b"/Count 1", b"/Count 2")), 70: text}


# What becomes of the objects, and whether it is allowed where fields may be filled; where annotations are, too.
CHANGES: dict[str, tuple[Callable[[bytes], dict[int, bytes]], bool, bool]] = {
    "nothing": (lambda one: {70: b"(nobody refers to it)"}, True, True),
    "a value": (lambda one: {**now(one, NAME, (b"/V (Ann)", b"/V (Bob)"), (b"53 0 R", b"70 0 R")),
                             70: look("Bob")}, True, True),
    "a box": (lambda one: now(one, BOX, (b"/V /Off", b"/V /Yes"), (b"/AS /Off", b"/AS /Yes")), True, True),
    "read-only from now on": (lambda one: now(one, NAME, (b"/V (Ann)", b"/V (Ann) /Ff 1")), True, True),
    "about the document": (lambda one: {**now(one, 1, (b"/Catalog", b"/Catalog /Metadata 70 0 R")),
                                        70: stream(b"<x/>", "/Type /Metadata /Subtype /XML")}, True, True),
    "proofs": (lambda one: {**now(one, 1, (b"/Catalog", b"/Catalog /DSS << /Certs [70 0 R] >> /Extensions << /ESIC << >> >>")),
                            70: stream(b"a certificate")}, True, True),
    "an annotation more": (lambda one: {**now(one, PAGE, (b"/Annots [", b"/Annots [70 0 R ")),
                                        70: b"<< /Type /Annot /Subtype /Square /Rect [9 9 99 99] >>"}, False, True),
    "another annotation": (lambda one: now(one, LINK, (b"[20 20 40 40]", b"[20 20 90 90]")), False, True),
    "an annotation less": (lambda one: now(one, PAGE, (b" %d 0 R]" % LINK, b"]")), False, True),
    "a font that is an annotation, too": (lambda one: now(one, FONT, (b"/Helvetica", b"/Symbol")), False, False),
    "a field that is a file, too": (lambda one: now(one, FILE, (b"/F (here)", b"/F (there)")), False, False),
    "hidden": (lambda one: now(one, NAME, (b"/F 4", b"/F 2")), False, False),
    "how a box looks": (lambda one: now(one, BOX, (b"/Yes 53 0 R /Off 54 0 R", b"/Yes 54 0 R /Off 53 0 R")), False, False),
    "a moved field": (lambda one: now(one, NAME, (b"[100 600 200 620]", b"[0 0 595 842]")), False, False),
    "a field less": (lambda one: now(one, PAGE, (b" %d 0 R" % NAME, b"")), False, False),
    "a field that is not in the form": (lambda one: now(one, FORM, (b" %d 0 R" % NAME, b"")), False, False),
    "a field more": (lambda one: {**now(one, FORM, (b"/Fields [", b"/Fields [70 0 R ")),
                                  70: b"<< /FT /Tx /T (More) /V (x) >>"}, False, False),
    "a text field at the end": (lambda one: {**now(one, FORM, (b" ] /Sig", b" 70 0 R ] /Sig")),
                                             70: b"<< /FT /Tx /T (More) /V (x) >>"}, False, False),
    "a field that nobody signed": (lambda one: {
        **now(one, FORM, (b"/Fields [", b"/Fields [70 0 R ")), **now(one, PAGE, (b"/Annots [", b"/Annots [70 0 R ")),
        70: f"{WIDGET} /FT /Sig /T (More) /Rect [9 9 99 99] >>".encode()}, False, False),
    "a field to draw anew": (lambda one: now(one, FORM, (b"/DR", b"/NeedAppearances true /DR")), False, False),
    "another font": (lambda one: {FONT: b"<< /Type /Font /Subtype /Type1 /BaseFont /Symbol >>"}, False, False),
    "another content": (lambda one: {CONTENT: stream(b"0 0 600 900 re f")}, False, False),
    "another size": (lambda one: now(one, PAGE, (b"[0 0 595 842]", b"[0 0 595 400]")), False, False),
    "what was missing": (lambda one: {MISSING: b"(here it is)"}, False, False),
    "a page more": (with_page, False, False),
    "something to do": (lambda one: now(one, 1, (b"/Catalog", b"/Catalog /OpenAction [6 0 R /Fit]")), False, False),
    "the signed field": (lambda one: now(one, CUSTOMER, (b" 500 180 ]", b" 500 190 ]")), False, False),
}


def signed_by_customer(tool: Tool, folder: Path, lock: str, prepare: Callable[[Pdf], None] = lambda pdf: None) -> bytes:
    original, once = folder / "original.pdf", folder / "once.pdf"
    original.write_bytes(contract(lock, prepare))
    done = tool.run(original, "-o", once, "--field", "Customer", *tool.with_ink(), *tool.with_key("rsa"))
    assert done.returncode == 0, done.stderr
    return once.read_bytes()


def judged(tool: Tool, file: Path) -> tuple[int, list[dict[str, object]]]:
    told = tool.run("verify", "--json", file)
    return told.returncode, json.loads(told.stdout)["signatures"]


NOBODY = "/Action /Include /Fields [(Nobody)]"


@pytest.mark.parametrize("name", CHANGES)
def test_a_certified_document(tool: Tool, tmp_path: Path, name: str) -> None:
    make, where_fields, where_annotations = CHANGES[name]
    for level, is_allowed in ((2, where_fields), (3, where_annotations)):
        once, file = signed_by_customer(tool, tmp_path, f"{NOBODY} /P {level}"), tmp_path / "changed.pdf"
        file.write_bytes(writer.appended(once, make(once)))
        code, [one] = judged(tool, file)
        assert (code, one["valid"]) == (1, is_allowed), (level, one)
        assert one["limitsChanges"] is (True if is_allowed else None)
        assert is_allowed or "it certifies the document" in str(one["fault"])
        # Whoever signs it as it is then does not make it better.
        again = tmp_path / "again.pdf"
        again.write_bytes(signed_again_in(tool, file.read_bytes()))
        code, told = judged(tool, again)
        assert [told[0]["valid"], told[1]["valid"]] == [is_allowed, True] and code == (0 if is_allowed else 1), told


def signed_again_in(tool: Tool, content: bytes) -> bytes:
    """Into the clerk's field, by somebody who does not care what is allowed."""
    whole = writer.appended(content, {
        **now(content, CLERK, (b"/T (Clerk)", b"/T (Clerk) /V 90 0 R")),
        90: b"<< /Type /Sig /SubFilter /ETSI.CAdES.detached /ByteRange " + forging.RANGES + b" /Contents " + forging.PLACE
            + b" >>",
    })
    ranges = forging.honest_ranges(whole)
    whole = forging.fill(whole, ranges)
    return forging.put(whole, forging.cms(tool.keys, whole[: ranges[1]] + whole[ranges[2] :], "ec"))


@pytest.mark.parametrize("level", [2, 3])
def test_signed_by_the_next(tool: Tool, tmp_path: Path, level: int) -> None:
    signed_by_customer(tool, tmp_path, f"{NOBODY} /P {level}")
    last = tmp_path / "once.pdf"
    for where in (["--field", "Clerk"], *([["--at", "60,250"]] if level == 3 else [])):
        done = tool.run(last, "-o", tmp_path / "next.pdf", *where, *tool.with_ink(), *tool.with_key("ec"))
        assert done.returncode == 0, done.stderr
        last = (tmp_path / "next.pdf").rename(tmp_path / f"{where[0]}.pdf")
        code, told = judged(tool, last)
        assert code == 0 and all(one["valid"] for one in told), told
    assert "what it allows to be changed" in tool.run("verify", last).stdout


@pytest.mark.parametrize("level", [2, 3])
def test_the_place_of_a_signature_shows_nothing_else(tool: Tool, tmp_path: Path, level: int) -> None:
    once, file = signed_by_customer(tool, tmp_path, f"{NOBODY} /P {level}"), tmp_path / "changed.pdf"
    file.write_bytes(writer.appended(once, now(once, CLERK, (b"/T (Clerk)", b"/T (Clerk) /AP << /N 53 0 R >>"))))
    code, [one] = judged(tool, file)
    assert (code, one["valid"]) == (1, False) and "the field Clerk was changed" in str(one["fault"]), one


LOCKED = {name: name in ("a value", "hidden", "a moved field", "a field less", "a field that is not in the form", "read-only from now on")
          for name in CHANGES if name not in ("another font", "a font that is an annotation, too", "the signed field")}


@pytest.mark.parametrize("name", LOCKED)
def test_a_locked_field(tool: Tool, tmp_path: Path, name: str) -> None:
    """Whatever else is changed, the signature does not forbid it."""
    once, file = signed_by_customer(tool, tmp_path, "/Action /Include /Fields [(Name)]"), tmp_path / "changed.pdf"
    file.write_bytes(writer.appended(once, CHANGES[name][0](once)))
    code, [one] = judged(tool, file)
    assert (code, one["valid"]) == (1, not LOCKED[name]), one
    assert not LOCKED[name] or "the field Name was changed" in str(one["fault"])


def test_a_lock_does_not_hold_others(tool: Tool, tmp_path: Path) -> None:
    once, file = signed_by_customer(tool, tmp_path, "/Action /Include /Fields [(Name)] /P 2"), tmp_path / "changed.pdf"
    for number, is_allowed in ((OTHER, True), (NAME, False)):
        file.write_bytes(writer.appended(once, now(once, number, (b"/V (Ann)", b"/V (Bob)"))))
        assert judged(tool, file)[1][0]["valid"] is is_allowed


@pytest.mark.parametrize("level", [1, 2])
def test_limits_that_are_replaced(tool: Tool, tmp_path: Path, level: int) -> None:
    """What a signature allows is told where a later revision could tell something else."""
    limits = (CERTIFYING % level).replace(b"/Reference ", b"")
    source = writer.appended(document(), {30: limits})
    once = forging.signed(tool.keys, source, value_entries=b"/Reference 30 0 R")
    file = tmp_path / "forged.pdf"
    file.write_bytes(signed_again(tool.keys, writer.appended(once, {30: b"[]", CONTENT: stream(b"0 0 600 900 re f")}), new=80))
    code, told = judged(tool, file)
    assert code == 1 and [one["valid"] for one in told] == [False, True], told


def test_without_limits(tool: Tool, tmp_path: Path) -> None:
    original, once, twice = (tmp_path / f"{name}.pdf" for name in ("original", "once", "twice"))
    original.write_bytes(document())
    tool.checked(original, once, Place(1, 60, 250, 180))
    tool.checked(once, twice, Place(1, 300, 250, 180), "ec")
    code, told = judged(tool, twice)
    assert code == 0 and [one["limitsChanges"] for one in told] == [False, None]
    assert "any changes; it does not limit them" in tool.run("verify", twice).stdout


def test_nothing_that_could_be_compared(tool: Tool, tmp_path: Path) -> None:
    """What is signed ends before the document does."""
    file = tmp_path / "signed.pdf"

    def cut(whole: bytes) -> tuple[int, ...]:
        zero, start, end, rest = forging.honest_ranges(whole)
        return zero, start, end, rest - 20

    file.write_bytes(forging.signed(tool.keys, ranges=cut))
    code, [one] = judged(tool, file)
    assert code == 1 and not one["valid"] and "cannot be judged" in str(one["fault"])
    assert not one_line(tool.run("unseal", file, "--key", tool.keys.escrow("ec")[1], "-o", tmp_path / "ink")).endswith(".")


def test_more_than_can_be_compared(tool: Tool, tmp_path: Path) -> None:
    """Values that are nothing, so that the program needs little memory for them."""

    def crowd(pdf: Pdf) -> None:
        numbers = list(range(100, 200))
        for number in numbers:
            pdf.add("[" + "null " * 50_010 + "]", number)
        entry = f"/Crowd [{writer.references(numbers)}] /T "
        pdf.objects[NAME] = pdf.objects[NAME].replace(b"/T ", entry.encode())

    once = signed_by_customer(tool, tmp_path, "/Action /Include /Fields [(Name)]", crowd)
    file = tmp_path / "changed.pdf"
    file.write_bytes(writer.appended(once, {70: b"(nobody refers to it)"}))
    code, [one] = judged(tool, file)
    assert (code, one["fault"]) == (1, "what was changed after it cannot be judged: there is too much to compare")
