"""Signature fields: which there are, and signing them."""

from __future__ import annotations

import re
from pathlib import Path

import pytest

import writer
from checks import run
from looking import View, check_ink, check_page
from pictures import Box
from tool import Ink, Tool, listing, one_line
from writer import Pdf, document, form


def fields(tool: Tool, file: Path, *more: str | Path) -> list[tuple[str, ...]]:
    told = tool.run("fields", file, *more)
    assert told.returncode == 0, told.stderr
    lines = [re.fullmatch(r"(.+): page (\d+) at ([-\d.]+),([-\d.]+), ([\d.]+) by ([\d.]+) points, (signed|not signed)", line)
             for line in told.stdout.splitlines()]
    assert all(lines), told.stdout
    return [line.groups() for line in lines if line]


def sign_field(tool: Tool, source: Path, output: Path, field: str, kind: str, *more: str | Path,
               ink: str = "initials") -> None:
    done = tool.run(source, "-o", output, "--field", field, *tool.with_ink(ink), *tool.with_key(kind), *more)
    assert done.returncode == 0, done.stderr
    tool.check(source.read_bytes(), output)


def filled(ink: Ink, box: Box) -> Box:
    """As large as it fits, in the middle."""
    scale = min(box.width / ink.bounds.width, box.height / ink.bounds.height)
    across, down = (box.left + box.right) / 2, (box.top + box.bottom) / 2
    wide, high = ink.bounds.width * scale / 2, ink.bounds.height * scale / 2
    return Box(across - wide, down - high, across + wide, down + high)


FIELD = Box(300, 662, 500, 722)  # as people see it, on a page that is not turned
WHERE = {
    "upright": ("", FIELD, 1, ("300", "662", "200", "60")),
    "rotated": ("/Rotate 90", Box(120, 300, 180, 500), 1, ("120", "300", "60", "200")),
    "upside-down": ("/Rotate 180", Box(95, 120, 295, 180), 1, ("95", "120", "200", "60")),
    "rotated-back": ("/Rotate 270", Box(662, 95, 722, 295), 1, ("662", "95", "60", "200")),
    "cropped": ("/CropBox [100 50 550 800]", Box(200, 620, 400, 680), 1, ("200", "620", "200", "60")),
    "larger-units": ("/UserUnit 2", Box(600, 1324, 1000, 1444), 2, ("600", "1324", "400", "120")),
}


@pytest.mark.parametrize("name", WHERE)
def test_fills_a_field(tool: Tool, tmp_path: Path, name: str) -> None:
    entries, box, unit, told = WHERE[name]
    original, signed = tmp_path / "original.pdf", tmp_path / "signed.pdf"
    original.write_bytes(form(page_entries=entries, version="1.6"))
    assert fields(tool, original) == [("Customer", "1", *told, "not signed")]
    sign_field(tool, original, signed, "Customer", "rsa")
    assert fields(tool, signed) == [("Customer", "1", *told, "signed")]
    check_page(original, signed, View(1, unit), tool.inks["initials"], filled(tool.inks["initials"], box))


@pytest.mark.parametrize("structure", ["table", "stream", "objects", "hybrid"])
def test_two_fields(tool: Tool, tmp_path: Path, structure: str) -> None:
    def second(pdf: Pdf) -> None:
        number = pdf.add(writer.EMPTY_FIELD.replace("PAGE", "6").replace("Customer", "Clerk").replace("[300", "[80"))
        pdf.objects[1] = pdf.objects[1].replace(b"/Fields [", b"/Fields [%d 0 R " % number)
        pdf.objects[6] = pdf.objects[6].replace(b"/Annots [", b"/Annots [%d 0 R " % number)

    def both(pdf: Pdf) -> None:
        number = pdf.add(writer.EMPTY_FIELD.replace("PAGE", "6"))
        pdf.objects[1] = pdf.objects[1].replace(b"/Catalog", b"/Catalog /AcroForm << /Fields [%d 0 R] >>" % number)
        pdf.objects[6] = pdf.objects[6].replace(b"/Contents", b"/Annots [%d 0 R] /Contents" % number)
        second(pdf)

    original, once, twice = (tmp_path / f"{name}.pdf" for name in ("original", "once", "twice"))
    original.write_bytes(document(change=both, structure=structure))
    assert {(line[0], line[-1]) for line in fields(tool, original)} == {("Clerk", "not signed"), ("Customer", "not signed")}
    sign_field(tool, original, once, "Customer", "ec")
    sign_field(tool, once, twice, "Clerk", "rsa", ink="flowing")
    assert {(line[0], line[-1]) for line in fields(tool, twice)} == {("Clerk", "signed"), ("Customer", "signed")}
    assert tool.run("verify", twice, "--trust", tool.keys.authority).returncode == 0


def test_a_field_with_its_widget_apart(tool: Tool, tmp_path: Path) -> None:
    """Its name is below another one's, and what is seen of it is an object of its own."""

    def change(pdf: Pdf) -> None:
        widget = pdf.add("<< /Type /Annot /Subtype /Widget /F 4 /P 6 0 R /Rect [300 120 500 180] /Parent 31 0 R >>", 30)
        pdf.add(f"<< /T (Seller) /FT /Sig /Kids [{widget} 0 R] /Parent 32 0 R >>", 31)
        pdf.add("<< /T (Contract) /Kids [31 0 R] >>", 32)
        pdf.objects[1] = pdf.objects[1].replace(b"/Catalog", b"/Catalog /AcroForm << /Fields [32 0 R] >>")
        pdf.objects[6] = pdf.objects[6].replace(b"/Contents", b"/Annots [30 0 R] /Contents")

    original, signed = tmp_path / "original.pdf", tmp_path / "signed.pdf"
    original.write_bytes(document(change=change))
    assert fields(tool, original)[0][0] == "Contract.Seller"
    done = tool.run(original, "-o", signed, "--field", "Contract.Seller", *tool.with_ink(), *tool.with_key("rsa"))
    assert done.returncode == 0, done.stderr
    tool.check(original.read_bytes(), signed)
    assert tool.run("verify", signed).returncode == 0
    assert fields(tool, signed)[0][-1] == "signed"
    check_page(original, signed, View(1), tool.inks["initials"], filled(tool.inks["initials"], FIELD))


@pytest.mark.parametrize("name", ["Kundin Jörg (2)", "客户", "a\\b"])
def test_names_in_any_script(tool: Tool, tmp_path: Path, name: str) -> None:
    original, signed = tmp_path / "original.pdf", tmp_path / "signed.pdf"
    text = "<feff" + name.encode("utf-16-be").hex() + ">"

    def change(pdf: Pdf) -> None:
        number = pdf.add(writer.EMPTY_FIELD.replace("PAGE", "6").replace("(Customer)", text))
        pdf.objects[1] = pdf.objects[1].replace(b"/Catalog", b"/Catalog /AcroForm << /Fields [%d 0 R] >>" % number)
        pdf.objects[6] = pdf.objects[6].replace(b"/Contents", b"/Annots [%d 0 R] /Contents" % number)

    original.write_bytes(document(change=change))
    assert fields(tool, original)[0][0] == name
    sign_field(tool, original, signed, name, "ec")


@pytest.mark.parametrize(("field", "reason"), [("Nobody", "Nobody"), ("Name", "Name")])
def test_no_such_field(tool: Tool, tmp_path: Path, field: str, reason: str) -> None:
    original = tmp_path / "original.pdf"
    original.write_bytes(form())
    done = tool.run(original, "-o", tmp_path / "signed.pdf", "--field", field, *tool.with_ink(), *tool.with_key("rsa"))
    assert done.returncode == 1 and reason in one_line(done)
    assert listing(tmp_path) == ["original.pdf"]


def test_no_field_twice(tool: Tool, tmp_path: Path) -> None:
    original, signed = tmp_path / "original.pdf", tmp_path / "signed.pdf"
    original.write_bytes(form())
    sign_field(tool, original, signed, "Customer", "rsa")
    done = tool.run(signed, "-o", tmp_path / "again.pdf", "--field", "Customer", *tool.with_ink(), *tool.with_key("ec"))
    assert done.returncode == 1 and "signed" in one_line(done)
    assert listing(tmp_path) == ["original.pdf", "signed.pdf"]


@pytest.mark.parametrize("rectangle", ["[0 0 0 0]", "[900 120 1000 180]", "[10 900 100 1000]", "[-200 0 -100 50]"])
def test_a_field_without_a_place(tool: Tool, tmp_path: Path, rectangle: str) -> None:
    """There is no room for ink."""
    original = tmp_path / "original.pdf"
    original.write_bytes(form(rectangle=rectangle))
    done = tool.run(original, "-o", tmp_path / "signed.pdf", "--field", "Customer", *tool.with_ink(), *tool.with_key("rsa"))
    assert done.returncode == 1 and one_line(done)
    assert listing(tmp_path) == ["original.pdf"]


def test_no_fields(tool: Tool, tmp_path: Path) -> None:
    original = tmp_path / "original.pdf"
    original.write_bytes(document())
    told = tool.run("fields", original)
    assert (told.returncode, told.stdout) == (0, "")


def test_a_form_whose_readers_draw_the_fields(tool: Tool, tmp_path: Path) -> None:
    """Poppler draws all of them anew where that is asked for: nothing would be seen of the ink."""
    original, signed = tmp_path / "original.pdf", tmp_path / "signed.pdf"
    original.write_bytes(form(form_entries="/NeedAppearances true"))
    sign_field(tool, original, signed, "Customer", "rsa")
    check_ink(original, signed, View(1), tool.inks["initials"], filled(tool.inks["initials"], FIELD))


def test_a_value_that_readers_have_to_draw(tool: Tool, tmp_path: Path) -> None:
    """It would vanish from the page that is signed, or the ink would."""
    original, signed = tmp_path / "original.pdf", tmp_path / "signed.pdf"
    original.write_bytes(re.sub(rb"/AP << /N \d+ 0 R >>", lambda found: b" " * len(found[0]),
                                form(form_entries="/NeedAppearances true")))
    done = tool.run(original, "-o", signed, "--field", "Customer", *tool.with_ink(), *tool.with_key("rsa"))
    assert done.returncode == 1 and "field Name " in one_line(done)
    assert listing(tmp_path) == ["original.pdf"]


CERTIFIED = ("/Perms << /DocMDP 50 0 R >>", "<< /Type /Sig /Filter /Adobe.PPKLite /SubFilter /adbe.pkcs7.detached "
             "/ByteRange [0 1 2 3] /Contents <00> /Reference [<< /Type /SigRef /TransformMethod /DocMDP "
             "/TransformParams << /Type /TransformParams /P LEVEL /V /1.2 >> >>] >>")


@pytest.mark.parametrize(("level", "field", "allowed"), [(1, "Customer", False), (2, "Customer", True), (3, "Customer", True),
                                                         (1, "", False), (2, "", False)])
def test_certified_documents(tool: Tool, tmp_path: Path, level: int, field: str, allowed: bool) -> None:
    """What is certified against every change stays; where forms may be filled, a field may be signed, but none added."""
    original, signed = tmp_path / "original.pdf", tmp_path / "signed.pdf"
    entries, value = CERTIFIED
    plain = form(catalog_entries=entries)
    original.write_bytes(writer.appended(plain, {
        50: value.replace("LEVEL", str(level)).encode(),
    }))
    place = ["--field", field] if field else ["--page", "1", "--at", "60,250", "--width", "180"]
    done = tool.run(original, "-o", signed, *place, *tool.with_ink(), *tool.with_key("rsa"))
    if allowed:
        assert done.returncode == 0, done.stderr
        assert run("qpdf", "--check", signed).returncode == 0
    else:
        assert done.returncode == 1 and "certified" in one_line(done)
        assert not signed.exists()
