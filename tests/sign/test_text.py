"""Signing behind a text: what fonts say of their characters, and what is done to text on its way to the page."""

from __future__ import annotations

import re
from collections.abc import Callable
from pathlib import Path

import pytest

from tool import Tool, listing, one_line
from writer import Pdf, document

HEIGHT = 842
SIZE = 20
LEFT, LINE = 100, 300  # where the text begins, upwards
TEXT = "Sign:"
WIDTHS = dict(zip(TEXT, (600, 200, 500, 510, 250), strict=True))  # not those of any other font
WIDTH = sum(WIDTHS.values()) / 1000 * SIZE

SIMPLE = "/Type /Font /Subtype /Type1 /BaseFont /Own"
FIRST = min(map(ord, TEXT))
BY_CODE = "/FirstChar {} /Widths [{}]".format(
    FIRST, " ".join(str(WIDTHS.get(chr(code), 999)) for code in range(FIRST, max(map(ord, TEXT)) + 1)))
CODES = "".join(f"{code:02x}" for code in range(1, len(TEXT) + 1))  # the letters, one after another
IN_ORDER = "/FirstChar 1 /Widths [{}]".format(" ".join(str(WIDTHS[letter]) for letter in TEXT))
WIDE_CODES = "".join(f"{code:04x}" for code in range(1, len(TEXT) + 1))

Change = Callable[[Pdf], str]  # adds to the file, and gives the font


def font(entries: str) -> Change:
    return lambda _: f"<< {SIMPLE} {entries} >>"


def meaning(pdf: Pdf, size: int, table: str) -> str:
    """The stream in which a font tells what its codes mean."""
    text = (f"/CIDInit /ProcSet findresource begin begincmap 1 begincodespacerange <{'00' * size}> <{'ff' * size}> "
            f"endcodespacerange {table} endcmap end")
    return f"/ToUnicode {pdf.add_stream(text.encode())} 0 R"


def told_one_by_one(pdf: Pdf) -> str:
    rows = " ".join(f"<{code:02x}> <{ord(letter):04x}>" for code, letter in enumerate(TEXT, 1))
    return f"<< {SIMPLE} {IN_ORDER} {meaning(pdf, 1, f'{len(TEXT)} beginbfchar {rows} endbfchar')} >>"


def composite(widths: str, table: str) -> Change:
    def make(pdf: Pdf) -> str:
        own = pdf.add(f"<< /Type /Font /Subtype /CIDFontType2 /BaseFont /Own {widths} >>")
        return (f"<< /Type /Font /Subtype /Type0 /BaseFont /Own /Encoding /Identity-H /DescendantFonts [{own} 0 R] "
                f"{meaning(pdf, 2, table)} >>")

    return make


ARRAY = "1 beginbfrange <0001> <0005> [" + " ".join(f"<{ord(letter):04x}>" for letter in TEXT) + "] endbfrange"
LISTED = "/W [1 [{}]]".format(" ".join(str(WIDTHS[letter]) for letter in TEXT))
AS_RANGES = "/DW {} /W [1 1 {} 2 2 {} 3 3 {} 4 4 {}]".format(WIDTHS[":"], *(WIDTHS[letter] for letter in TEXT[:4]))
RANGES = ("4 beginbfrange <0001> <0001> <0053> <0002> <0002> <0069> <0003> <0003> <0067> <0004> <0004> <006e> endbfrange "
          "1 beginbfchar <0005> <003a> endbfchar")
FONTS: dict[str, tuple[Change, str, float]] = {
    "standard": (lambda _: "<< /Type /Font /Subtype /Type1 /BaseFont /Times-Bold >>", f"({TEXT}) Tj",
                 (556 + 278 + 500 + 556 + 333) / 1000 * SIZE),
    "own widths": (font(BY_CODE), f"({TEXT}) Tj", WIDTH),
    "windows": (font(f"{BY_CODE} /Encoding /WinAnsiEncoding"), f"({TEXT}) Tj", WIDTH),
    "macintosh": (font(f"{BY_CODE} /Encoding /MacRomanEncoding"), f"({TEXT}) Tj", WIDTH),
    "names": (font(f"{IN_ORDER} /Encoding << /Differences [1 /S /i /g /n /colon] >>"), f"<{CODES}> Tj", WIDTH),
    "names by number": (font(f"{IN_ORDER} /Encoding << /Differences [1 /uni0053 /u0069 /g.alt 4 /n /uni003A] >>"),
                        f"<{CODES}> Tj", WIDTH),
    "told one by one": (told_one_by_one, f"<{CODES}> Tj", WIDTH),
    "composite": (composite(LISTED, ARRAY), f"<{WIDE_CODES}> Tj", WIDTH),
    "composite with ranges": (composite(AS_RANGES, RANGES), f"<{WIDE_CODES}> Tj", WIDTH),
}


def contract(make_font: Change, shown: str, before: str = "", more: str = "", **how: object) -> bytes:
    """One page that shows the text at its place."""

    def change(pdf: Pdf) -> None:
        pdf.objects[5] = make_font(pdf).encode()
        content = f"{before} BT /F1 {SIZE} Tf {LEFT} {LINE} Td {shown} ET {more}"
        pdf.objects[7] = f"<< /Length {len(content)} >>\nstream\n{content}\nendstream".encode()

    return document(change=change, **how)  # type: ignore[arg-type]


def place_behind(tool: Tool, folder: Path, content: bytes, text: str = TEXT, *more: str) -> tuple[float, float]:
    """Where the signature begins, and the line on which it stands, upwards."""
    original, signed = folder / "original.pdf", folder / "signed.pdf"
    original.write_bytes(content)
    done = tool.run(original, "-o", signed, "--after", text, "--width", "80", *tool.with_ink(), *tool.with_key("ec"), *more)
    assert done.returncode == 0, done.stderr
    told = tool.run("fields", signed).stdout
    found = re.search(r" at ([-\d.]+),([-\d.]+), ([\d.]+) by ([\d.]+) points", told)
    assert found, told
    left, top, _, high = map(float, found.groups())
    return left, HEIGHT - top - high


def is_behind(place: tuple[float, float], width: float, size: float = SIZE, line: float = LINE) -> bool:
    """Half the font's size behind."""
    return abs(place[0] - (LEFT + width + size / 2)) < 0.15 and abs(place[1] - line) < 0.15


@pytest.mark.parametrize("name", FONTS)
def test_fonts(tool: Tool, tmp_path: Path, name: str) -> None:
    make, shown, width = FONTS[name]
    place = place_behind(tool, tmp_path, contract(make, shown))
    assert is_behind(place, width), (place, width)


OWN = font(BY_CODE)
WAYS = {
    "in parts": ("(Si) Tj (gn:) Tj", WIDTH),
    "moved letters": ("[(S) -100 (ig) 50 (n:)] TJ", WIDTH + 50 / 1000 * SIZE),
    "spaced letters": ("2 Tc (Sign:) Tj", WIDTH + 4 * 2),
    "spaced words": ("7 Tw (Sign:) Tj", WIDTH),
    "stretched": ("150 Tz (Sign:) Tj", WIDTH * 1.5),
    "next line": ("0 20 Td 20 TL (x) '  0 0 Td 1 0 0 1 100 300 Tm (Sign:) Tj", WIDTH),
    "both spacings": ("20 TL 0 20 Td 3 1 (Sign:) \"", WIDTH + 4),
}


@pytest.mark.parametrize("name", WAYS)
def test_ways_of_showing(tool: Tool, tmp_path: Path, name: str) -> None:
    shown, width = WAYS[name]
    place = place_behind(tool, tmp_path, contract(OWN, shown))
    # What is added behind the last letter is no part of it.
    assert is_behind(place, width), (place, width)


def test_scaled(tool: Tool, tmp_path: Path) -> None:
    place = place_behind(tool, tmp_path, contract(OWN, "(Sign:) Tj", before="q 1.5 0 0 2 -50 -300 cm", more="Q"))
    assert is_behind(place, WIDTH * 1.5, size=SIZE * 2)


def test_on_a_form_of_the_page(tool: Tool, tmp_path: Path) -> None:
    def change(pdf: Pdf) -> None:
        pdf.objects[5] = f"<< {SIMPLE} {BY_CODE} >>".encode()
        inner = pdf.add_stream(f"BT /Inner {SIZE} Tf 10 20 Td ({TEXT}) Tj ET".encode(),
                               "/Type /XObject /Subtype /Form /BBox [0 0 300 300] /Matrix [1 0 0 1 40 80] "
                               "/Resources << /Font << /Inner 5 0 R >> >>")
        content = "q 1 0 0 1 50 200 cm /Outer Do Q"
        pdf.objects[7] = f"<< /Length {len(content)} >>\nstream\n{content}\nendstream".encode()
        pdf.objects[6] = pdf.objects[6].replace(b"/Resources <<", b"/Resources << /XObject << /Outer %d 0 R >>" % inner)

    assert is_behind(place_behind(tool, tmp_path, document(change=change)), WIDTH)


def test_blanks_do_not_count(tool: Tool, tmp_path: Path) -> None:
    place = place_behind(tool, tmp_path, contract(OWN, "(S) Tj 30 0 Td (ign:) Tj"), "S i gn :")
    assert is_behind(place, 30 + WIDTH - WIDTHS["S"] / 1000 * SIZE)


def test_letters_that_are_one(tool: Tool, tmp_path: Path) -> None:
    make = font("/FirstChar 1 /Widths [600 300] /Encoding << /Differences [1 /fi /n] >>")
    assert is_behind(place_behind(tool, tmp_path, contract(make, "<0102> Tj"), "fin"), 0.9 * SIZE)


def test_the_page_decides_between_several(tool: Tool, tmp_path: Path) -> None:
    original = tmp_path / "original.pdf"
    original.write_bytes(document(pages=3))
    signed = tmp_path / "signed.pdf"
    command = ["--after", "Signature:", *tool.with_ink(), *tool.with_key("ec")]
    done = tool.run(original, "-o", signed, *command)
    assert done.returncode == 1 and "3 times" in one_line(done)
    assert listing(tmp_path) == ["original.pdf"]
    assert tool.run(original, "-o", signed, *command, "--page", "2").returncode == 0
    assert "page 2 at" in tool.run("fields", signed).stdout


REFUSED = {
    "widths that nobody knows": (font(""), "(Sign:) Tj"),
    "letters that nobody knows": (font(f"{IN_ORDER} /Encoding << /Differences [1 /g1 /g2 /g3 /g4 /g5] >>"), f"<{CODES}> Tj"),
    "upwards": (OWN, "0 1 -1 0 100 300 Tm (Sign:) Tj"),
    "mirrored": (OWN, "-1 0 0 1 300 300 Tm (Sign:) Tj"),
    "letters far from each other": (OWN, "(Sig) Tj 200 0 Td (n:) Tj"),
    "letters on two lines": (OWN, "(Sig) Tj 0 -30 Td (n:) Tj"),
    "no room behind it": (OWN, "1 0 0 1 530 300 Tm (Sign:) Tj"),
}


@pytest.mark.parametrize("name", REFUSED)
def test_refused(tool: Tool, tmp_path: Path, name: str) -> None:
    make, shown = REFUSED[name]
    original = tmp_path / "original.pdf"
    original.write_bytes(contract(make, shown))
    done = tool.run(original, "-o", tmp_path / "signed.pdf", "--after", TEXT, *tool.with_ink(), *tool.with_key("ec"))
    assert done.returncode == 1 and "text" in one_line(done)
    assert listing(tmp_path) == ["original.pdf"]
