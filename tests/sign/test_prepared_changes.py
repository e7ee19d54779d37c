"""Documents that were made so that a later change of what is seen passes for one that the signature allows."""

from __future__ import annotations

import json
import re
from collections.abc import Callable
from dataclasses import dataclass
from pathlib import Path

import pytest

import forging
import writer
from checks import output_of
from pictures import page_picture
from test_later_changes import (BOX, CONTENT, FORM, LINK, NAME, NOBODY, OTHER, PAGE, WIDGET, judged, look, now,
                                signed_by_customer)
from test_verifying import CERTIFYING
from tool import Tool
from writer import Pdf, stream

FIELD, DRAWN, KID, SECOND, OUTLINE, TREE, MARK, DESTINATIONS, HIDE = 20, 21, 22, 23, 24, 25, 26, 27, 28
NEW = 70
A_FIELD = "/FT /Tx /T (Field)"
ENTRIES = "/Type /XObject /Subtype /Form /BBox [0 0 100 100]"
SMALL, LARGE = stream(b"0 0 10 10 re f", ENTRIES), stream(b"0 0 100 100 re f", ENTRIES)
LARGER = {NEW: LARGE}
NOTHING = {NEW: b"(nobody refers to it)"}


def edit(pdf: Pdf, number: int, old: str, new: str) -> None:
    assert pdf.objects[number].count(old.encode()) == 1, (pdf.objects[number], old)
    pdf.objects[number] = pdf.objects[number].replace(old.encode(), new.encode())


def listed(pdf: Pdf, *fields: int) -> None:
    edit(pdf, FORM, "/Fields [", f"/Fields [{writer.references(list(fields))} ")


def drawing(pdf: Pdf, resource: str, content: str) -> None:
    """The page draws that, too."""
    edit(pdf, PAGE, "/Resources <<", f"/Resources << {resource}")
    edit(pdf, PAGE, f"/Contents {CONTENT} 0 R", f"/Contents [{CONTENT} 0 R 60 0 R]")
    pdf.add(stream(f"q 1 0 0 1 100 400 cm {content} Q".encode()), 60)
    pdf.add(SMALL, DRAWN)


@dataclass
class Trick:
    prepare: Callable[[Pdf], None]
    change: Callable[[bytes], dict[int, bytes]]
    levels: tuple[int, ...] = (2, 3)  # of certifying signatures that do not allow it
    is_seen: bool = True


def by_a_field(key: str) -> Trick:
    """The page's resources are a field."""

    def prepare(pdf: Pdf) -> None:
        drawing(pdf, f"/XObject {FIELD} 0 R", f"{key} Do")
        pdf.add(f"<< {A_FIELD} {key} {DRAWN} 0 R >>", FIELD)
        listed(pdf, FIELD)

    return Trick(prepare, lambda one: {**now(one, FIELD, (b"%d 0 R" % DRAWN, b"%d 0 R" % NEW)), **LARGER})


def by_a_kid(pdf: Pdf) -> None:
    drawing(pdf, f"/XObject {KID} 0 R", "/V Do")
    pdf.add(f"<< {A_FIELD} /Kids [{KID} 0 R] >>", FIELD)
    pdf.add(f"<< /Parent {FIELD} 0 R /V {DRAWN} 0 R >>", KID)
    listed(pdf, FIELD)


def by_the_catalog(key: str) -> Trick:
    def prepare(pdf: Pdf) -> None:
        drawing(pdf, "/XObject 1 0 R", f"{key} Do")
        edit(pdf, 1, "/Catalog", f"/Catalog {key} {DRAWN} 0 R")

    return Trick(prepare, lambda one: {**now(one, 1, (b"%s %d 0 R" % (key.encode(), DRAWN), b"%s %d 0 R" % (key.encode(), NEW))),
                                       **LARGER})


def another_page(pdf: Pdf, annotations: str) -> None:
    pdf.add(f"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 99 99] /Annots {annotations} >>", SECOND)
    edit(pdf, 2, "/Kids [6 0 R]", f"/Kids [6 0 R {SECOND} 0 R]")
    edit(pdf, 2, "/Count 1", "/Count 2")


def by_a_page(kind: str, content: str, annotations: str) -> Callable[[Pdf], None]:
    """Its annotations are none."""

    def prepare(pdf: Pdf) -> None:
        drawing(pdf, f"/{kind} {SECOND} 0 R", content)
        another_page(pdf, annotations)

    return prepare


def a_stamp(pdf: Pdf) -> None:
    """What looks like a field's value is an annotation of another kind."""
    pdf.add(f"<< /Type /Annot /Subtype /Stamp /F 4 /P {PAGE} 0 R {A_FIELD} /Rect [100 400 200 500] /AP << /N {DRAWN} 0 R >> >>",
            FIELD)
    pdf.add(SMALL, DRAWN)
    edit(pdf, PAGE, "/Annots [", f"/Annots [{FIELD} 0 R ")
    listed(pdf, FIELD)


def a_parent(number: int) -> Callable[[Pdf], None]:
    """What the page draws is above a field."""

    def prepare(pdf: Pdf) -> None:
        edit(pdf, PAGE, f"/Contents {CONTENT} 0 R", f"/Contents {KID} 0 R")
        pdf.add(f"[{CONTENT} 0 R]", KID)
        pdf.add(f"<< {A_FIELD} /Parent {number} 0 R >>", FIELD)
        listed(pdf, FIELD)

    return prepare


def a_group(parent: str) -> Callable[[Pdf], None]:
    """A field below another one that it does not name as its parent."""

    def prepare(pdf: Pdf) -> None:
        pdf.add(f"<< /T (Group) /DA (/F1 12 Tf 0 g) /Kids [{KID} 0 R] >>", FIELD)
        pdf.add(f"{WIDGET} /FT /Tx /T (Kid) /V (Ann) /Rect [100 400 200 420] /AP << /N {DRAWN} 0 R >> {parent} >>", KID)
        pdf.add("<< /T (Apart) >>", SECOND)
        pdf.add(SMALL, DRAWN)
        edit(pdf, PAGE, "/Annots [", f"/Annots [{KID} 0 R ")
        listed(pdf, FIELD)

    return prepare


KIDS = b"/Kids [%d 0 R]" % KID
SIGNED_FIELD = b"<< /FT /Sig /T (Signed) /V << /Type /Sig /Contents <00> >> >>"
OTHER_CONTENT = stream(b"0 0 600 900 re f")

TRICKS: dict[str, Trick] = {
    **{f"the value of a field, as its {key}": by_a_field(key) for key in ("/AP", "/AS", "/I", "/M", "/RV", "/V")},
    "the value of a kid": Trick(by_a_kid, lambda one: {**now(one, KID, (b"/V %d" % DRAWN, b"/V %d" % NEW)), **LARGER}),
    **{f"about the document, as its {key}": by_the_catalog(key) for key in ("/DSS", "/Extensions", "/Metadata")},
    "annotations that are a form": Trick(by_a_page("XObject", "/Annots Do", f"{DRAWN} 0 R"), lambda one: {
        **now(one, SECOND, (b"/Annots %d" % DRAWN, b"/Annots %d" % NEW)), **LARGER}),
    "annotations that are a colour": Trick(
        by_a_page("ColorSpace", "/Annots cs 0 sc 0 0 99 99 re f", "[/Indexed /DeviceRGB 0 <00ff00>]"),
        lambda one: now(one, SECOND, (b"00ff00", b"ff0000"))),
    "annotations that are no list": Trick(
        lambda pdf: another_page(pdf, "(none)"), lambda one: now(one, SECOND, (b"(none)", b"(some)")), is_seen=False),
    "an annotation that is a field": Trick(a_stamp, lambda one: {
        **now(one, FIELD, (b"/N %d" % DRAWN, b"/N %d" % NEW)), **LARGER}, levels=(2,)),
    "a parent that is a content": Trick(a_parent(CONTENT), lambda one: {CONTENT: OTHER_CONTENT}),
    "a parent that is a list": Trick(a_parent(KID), lambda one: {KID: b"[%d 0 R]" % NEW, NEW: OTHER_CONTENT}),
    **{f"{name}, parent: {parent or 'none'}": Trick(a_group(parent), change, is_seen=False)
       for parent in ("", f"/Parent {SECOND} 0 R") for name, change in {
           "a field less": lambda one: {**now(one, FIELD, (KIDS, b"/Kids [%d 0 R]" % NEW)), NEW: b"<< /FT /Tx /T (Kid) >>"},
           "a signed field more": lambda one: {**now(one, FIELD, (KIDS, b"/Kids [%d 0 R %d 0 R]" % (KID, NEW))), NEW: SIGNED_FIELD},
           "an inherited value": lambda one: now(one, FIELD, (KIDS, KIDS + b" /V (Bob)")),
           "an inherited font": lambda one: now(one, FIELD, (b"12 Tf", b"24 Tf")),
       }.items()},
}


def customers(tool: Tool, file: Path) -> dict[str, object]:
    [one] = [one for one in judged(tool, file)[1] if one["field"] == "Customer"]
    return one


def test_the_tricks_are_what_they_seem(tool: Tool, tmp_path: Path) -> None:
    """What is seen differs, and a signature that allows everything stays valid."""
    before, after = tmp_path / "once.pdf", tmp_path / "changed.pdf"
    for name, trick in TRICKS.items():
        once = signed_by_customer(tool, tmp_path, NOBODY, trick.prepare)
        after.write_bytes(writer.appended(once, trick.change(once)))
        one, other = (page_picture(file, 1, 20) for file in (before, after))
        assert (one != other).any() == trick.is_seen, name
        assert customers(tool, after)["valid"], name


@pytest.mark.parametrize("name", TRICKS)
def test_a_certified_document(tool: Tool, tmp_path: Path, name: str) -> None:
    trick, file = TRICKS[name], tmp_path / "changed.pdf"
    for level in (2, 3):
        once = signed_by_customer(tool, tmp_path, f"{NOBODY} /P {level}", trick.prepare)
        file.write_bytes(writer.appended(once, trick.change(once)))
        one, is_allowed = customers(tool, file), level not in trick.levels
        assert one["valid"] == is_allowed and ("it certifies the document" in str(one["fault"])) != is_allowed, (level, one)
        file.write_bytes(writer.appended(once, NOTHING))
        assert customers(tool, file)["valid"]


def looks(resources: str, content: str) -> bytes:
    return stream(content.encode(), f"{ENTRIES} /Resources << {resources} >>")


def of_the_page(pdf: Pdf) -> None:
    """The states of the field are entries of the page."""
    edit(pdf, NAME, f"/AP << /N {NAME + 10} 0 R >>", f"/AP {PAGE} 0 R")
    edit(pdf, PAGE, "/Missing", f"/N {DRAWN} 0 R /Missing")
    pdf.add(SMALL, DRAWN)


def of_another_field(resource: str, content: str, entries: str) -> Callable[[Pdf], None]:
    def prepare(pdf: Pdf) -> None:
        pdf.objects[NAME + 10] = looks(resource, content)
        pdf.add(f"<< {A_FIELD} {entries} >>", FIELD)
        pdf.add(SMALL, DRAWN)
        listed(pdf, FIELD)

    return prepare


def below_another_field(pdf: Pdf) -> None:
    """From which it has its value, though it is not among its kids."""
    edit(pdf, NAME, "/V (Ann)", f"/Parent {OTHER} 0 R")


A_FONT = "/Type /Font /Subtype /Type1 /BaseFont /Helvetica"
TEXT = "BT /%s 90 Tf (abc) Tj ET"
ANOTHER_FONT = (b"/Helvetica", b"/Symbol")


def with_a_page_as_font(pdf: Pdf) -> None:
    pdf.objects[NAME + 10] = looks(f"/Font << /P {PAGE} 0 R >>", TEXT % "P")
    edit(pdf, PAGE, "/Missing", f"{A_FONT.replace('/Type /Font ', '')} /Missing")


LOCKED: dict[str, tuple[str, Trick]] = {
    "looks of the page": ("Name", Trick(of_the_page, lambda one: {**now(one, PAGE, (b"/N %d" % DRAWN, b"/N %d" % NEW)), **LARGER})),
    "looks of another field": ("Name", Trick(
        of_another_field(f"/XObject {FIELD} 0 R", "/V Do", f"/V {DRAWN} 0 R"),
        lambda one: {**now(one, FIELD, (b"/V %d" % DRAWN, b"/V %d" % NEW)), **LARGER})),
    **{f"a font that is a field, as {key}": ("Name", Trick(
        of_another_field(f"/Font << {key} {FIELD} 0 R >>", TEXT % key[1:], A_FONT),
        lambda one: now(one, FIELD, ANOTHER_FONT))) for key in ("/F1", "/Fields", "/Kids", "/Obj", "/Parent", "/T")},
    "a form that was a field": ("Name", Trick(
        of_another_field(f"/XObject << /T {FIELD} 0 R >>", "/T Do", ""),
        lambda one: {FIELD: LARGE, **now(one, FORM, (b" %d 0 R " % FIELD, b" "))})),
    "a font that is the page": ("Name", Trick(
        with_a_page_as_font, lambda one: now(one, PAGE, ANOTHER_FONT))),
    "a value from elsewhere": ("Name", Trick(
        below_another_field, lambda one: now(one, OTHER, (b"/V (Ann)", b"/V (Bob)")), is_seen=False)),
    "a value from above": ("Group.Kid", Trick(
        a_group(""), lambda one: now(one, FIELD, (KIDS, KIDS + b" /V (Bob)")), is_seen=False)),
}


@pytest.mark.parametrize("name", LOCKED)
def test_a_locked_field(tool: Tool, tmp_path: Path, name: str) -> None:
    field, trick = LOCKED[name]
    once = signed_by_customer(tool, tmp_path, f"/Action /Include /Fields [({field})]", trick.prepare)
    before, file = tmp_path / "once.pdf", tmp_path / "changed.pdf"
    file.write_bytes(writer.appended(once, trick.change(once)))
    assert (page_picture(before, 1, 20) != page_picture(file, 1, 20)).any() == trick.is_seen
    one = customers(tool, file)
    assert not one["valid"] and f"the field {field} was changed" in str(one["fault"]), one
    file.write_bytes(writer.appended(once, NOTHING))
    assert customers(tool, file)["valid"]


def with_references(pdf: Pdf) -> None:
    """To pages, fields and the catalog, wherever honest documents have them."""
    page, name, other = (f"{number} 0 R" for number in (PAGE, NAME, OTHER))
    edit(pdf, 1, "/Catalog", f"/Catalog /Outlines {OUTLINE} 0 R /StructTreeRoot {TREE} 0 R /Dests {DESTINATIONS} 0 R "
         f"/Names << /Dests << /Names [(a) [{page} /Fit] (b) << /D [{page} /XYZ 0 0 0] >>] >> >> /OpenAction [{page} /Fit]")
    pdf.add(f"<< /First {KID} 0 R /Last {KID} 0 R /Count 1 >>", OUTLINE)
    pdf.add(f"<< /Title (A page) /Parent {OUTLINE} 0 R /Dest [{page} /FitH 9] >>", KID)
    pdf.add(f"<< /Type /StructTreeRoot /K [{MARK} 0 R] /ParentTree << /Nums [0 {MARK} 0 R] >> >>", TREE)
    pdf.add(f"<< /S /Form /P {TREE} 0 R /Pg {page} /K << /Type /OBJR /Pg {page} /Obj {name} >> >>", MARK)
    pdf.add(f"<< /chapter [{page} /Fit] >>", DESTINATIONS)
    pdf.add(f"<< /S /Hide /T [{other} (Clerk)] /H true /Next << /S /ResetForm /Fields [{name}] >> >>", HIDE)
    edit(pdf, BOX, "/FT", f"/A {HIDE} 0 R /FT")
    edit(pdf, NAME, "/FT", f"/AA << /K << /S /Hide /T {other} >> >> /FT")
    edit(pdf, FORM, "/DR", f"/CO [{name}] /DR")
    # A field with two widgets, and one below it that names its parent.
    pdf.add(f"<< {A_FIELD} /V (Ann) /DA (/F1 9 Tf 0 g) /Kids [{SECOND} 0 R 30 0 R] >>", FIELD)
    for number in (SECOND, 30):
        pdf.add(f"{WIDGET} /Parent {FIELD} 0 R /Rect [100 {400 + number} 200 {420 + number}] >>", number)
    pdf.add(f"<< /T (Group) /Kids [{32} 0 R] >>", 31)
    pdf.add(f"{WIDGET} /Parent 31 0 R /FT /Tx /T (Kid) /V (Ann) /Rect [100 500 200 520] >>", 32)
    edit(pdf, PAGE, "/Annots [", f"/Annots [{SECOND} 0 R 30 0 R 32 0 R ")
    listed(pdf, FIELD, 31)


HONEST: dict[str, Callable[[bytes], dict[int, bytes]]] = {
    "a value": lambda one: {**now(one, NAME, (b"/V (Ann)", b"/V (Bob)"), (b"53 0 R", b"70 0 R")), NEW: look("Bob")},
    "a value with two widgets": lambda one: {
        **now(one, FIELD, (b"/V (Ann)", b"/V (Bob)")), NEW: look("Bob"),
        **now(one, SECOND, (b"/Rect", b"/AP << /N 70 0 R >> /Rect")), **now(one, 30, (b"/Rect", b"/AP << /N 70 0 R >> /Rect"))},
    "a value below another field": lambda one: now(one, 32, (b"/V (Ann)", b"/V (Bob)")),
    "a box": lambda one: now(one, BOX, (b"/V /Off", b"/V /Yes"), (b"/AS /Off", b"/AS /Yes")),
}
ANNOTATED = {
    "an annotation more": lambda one: {**now(one, PAGE, (b"/Annots [", b"/Annots [70 0 R ")),
                                       NEW: b"<< /Type /Annot /Subtype /Square /Rect [9 9 99 99] >>"},
    "an annotation less": lambda one: now(one, PAGE, (b" %d 0 R]" % LINK, b"]")),
}


@pytest.mark.parametrize("level", [2, 3])
def test_references_of_honest_documents(tool: Tool, tmp_path: Path, level: int) -> None:
    """They lead to what may be changed."""
    once, file = signed_by_customer(tool, tmp_path, f"{NOBODY} /P {level}", with_references), tmp_path / "changed.pdf"
    for name, change in {**HONEST, **ANNOTATED}.items():
        file.write_bytes(writer.appended(once, change(once)))
        [one] = judged(tool, file)[1]
        assert one["valid"] == (level == 3 or name in HONEST), (name, one)
    for where in (["--field", "Clerk"], *([["--at", "60,250"]] if level == 3 else [])):
        done = tool.run(tmp_path / "once.pdf", "-o", file, *where, *tool.with_ink(), *tool.with_key("ec"))
        assert done.returncode == 0, done.stderr
        code, told = judged(tool, file)
        assert code == 0 and all(one["valid"] for one in told), told


def test_references_of_a_locked_field(tool: Tool, tmp_path: Path) -> None:
    for field, kept in (("Name", "a value"), ("Field", "a value with two widgets"), ("Group", "a value below another field")):
        once = signed_by_customer(tool, tmp_path, f"/Action /Include /Fields [({field})]", with_references)
        for name, change in {**HONEST, **ANNOTATED, "the page": lambda one: {CONTENT: OTHER_CONTENT}}.items():
            file = tmp_path / "changed.pdf"
            file.write_bytes(writer.appended(once, change(once)))
            assert judged(tool, file)[1][0]["valid"] == (name != kept), (field, name)


def encryption(folder: Path, strings: bytes) -> tuple[bytes, bytes]:
    """What encrypts streams, or strings, too, with an empty password for whoever reads; and the identifier for it."""
    source = writer.by_qpdf(writer.document(), folder, "--allow-weak-crypto", "--encrypt", "", "owner", "128", "--force-V4",
                            "--use-aes=n", "--")
    number, identifier = re.search(rb"/Encrypt (\d+) 0 R", source), re.search(rb"/ID ?\[[^]]*\]", source)
    assert number and identifier
    told = re.search(rb"\n%s 0 obj\n(.*?)\nendobj" % number[1], source, re.DOTALL)
    assert told and told[1].count(b"/StrF /StdCF") == 1
    return told[1].replace(b"/StrF /StdCF", b"/StrF " + strings), identifier[0]


LIMITS = {"no limits": b"", "forms": CERTIFYING % 2, "annotations": CERTIFYING % 3}


@pytest.mark.parametrize("limits", LIMITS)
@pytest.mark.parametrize("strings", ["/Identity", "/StdCF"])
def test_encrypted_afterwards(tool: Tool, tmp_path: Path, strings: str, limits: str) -> None:
    """All that was signed is there, and readers decrypt it to something else."""
    once, changed = tmp_path / "once.pdf", tmp_path / "changed.pdf"
    once.write_bytes(forging.signed(tool.keys, value_entries=b"/Reason (I agree) " + LIMITS[limits]))
    by, identifier = encryption(tmp_path, strings.encode())
    changed.write_bytes(writer.appended(once.read_bytes(), {NEW: by}, b"/Encrypt %d 0 R " % NEW + identifier))
    before, after = (output_of("qpdf", f"--show-object={CONTENT}", "--raw-stream-data", file) for file in (once, changed))
    assert before != after
    one = judged(tool, changed)[1][0]
    assert not one["valid"] and one["fault"] == "how the document is encrypted was changed after it", one


@pytest.mark.parametrize("bits", ["128", "256"])
def test_encrypted_as_before(tool: Tool, tmp_path: Path, bits: str) -> None:
    """The second half of the identifier is the revision's own; where nothing is encrypted, neither half matters."""
    source = writer.by_qpdf(writer.form(), tmp_path, "--allow-weak-crypto", "--encrypt", "", "owner", bits, "--")
    reference, identifier = re.search(rb"/Encrypt \d+ 0 R", source), re.search(rb"/ID ?\[<(\w+)>", source)
    assert reference and identifier
    original, once, file = (tmp_path / f"{name}.pdf" for name in ("original", "once", "changed"))
    original.write_bytes(source)
    done = tool.run(original, "-o", once, "--field", "Customer", *tool.with_ink(), *tool.with_key("rsa"))
    assert done.returncode == 0, done.stderr
    for encrypt, first, is_same in ((reference[0], identifier[1], True), (reference[0], identifier[1][::-1], False),
                                    (b"", identifier[1], False)):
        file.write_bytes(writer.appended(once.read_bytes(), {NEW: b"[]"}, encrypt + b" /ID [<%s> <abcd>]" % first))
        told = tool.run("verify", "--json", file)
        # The shorter key depends on the identifier: nothing is read with another one.
        assert bool(told.stdout) == (is_same or bits == "256" or not encrypt), told
        assert (bool(told.stdout) and json.loads(told.stdout)["signatures"][0]["valid"]) == is_same, told.stdout
    for trailer in (b"", b"/ID [<ab> <cd>]"):
        file.write_bytes(writer.appended(forging.signed(tool.keys), {NEW: b"[]"}, trailer))
        assert judged(tool, file)[1][0]["valid"]
