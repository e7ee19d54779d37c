"""Documents of every structure and geometry, each signed twice: by an RSA certificate, then by one of an EC key."""

from __future__ import annotations

import os
from collections.abc import Callable
from pathlib import Path

import pytest

import writer
from looking import View, check_page, expected_box
from tool import Place, Tool
from writer import by_qpdf, document, form

Make = Callable[[Path], bytes]
A4 = (595, 842)
PASSWORD = "open it"


def plain(**how: object) -> Make:
    return lambda _: document(**how)  # type: ignore[arg-type]


def through_qpdf(*options: str, **how: object) -> Make:
    return lambda folder: by_qpdf(document(**how), folder, *options)  # type: ignore[arg-type]


def encrypted(bits: str, *options: str, user: str = "") -> Make:
    weak = ("--allow-weak-crypto",) if bits != "256" else ()
    return through_qpdf(*weak, "--encrypt", user, "owner", bits, *options, "--", structure="objects")


def dangling_annotations() -> bytes:
    """What is refered to does not exist, which is the same as nothing."""
    return document(page_entries="/Annots 4000 0 R")


STRUCTURES: dict[str, Make] = {
    **{f"version-{version}": plain(version=version) for version in ("1.3", "1.4", "1.5", "1.6", "2.0")},
    "table-with-carriage-returns": plain(newline=b"\r\n"),
    "table-with-old-line-ends": plain(newline=b"\r"),
    "table-without-last-line-end": plain(after=b" "),
    "table-with-something-behind": plain(after=b"\n\n\0\0\0\r\n"),
    "cross-reference-stream": plain(structure="stream"),
    "object-streams": plain(structure="objects"),
    "hybrid": plain(structure="hybrid"),
    "two-revisions": lambda _: writer.appended(document(), {4: b"<< /Type /Nothing /Changed true >>"}),
    "linearised": through_qpdf("--linearize"),
    "linearised-with-object-streams": through_qpdf("--linearize", "--object-streams=generate", pages=3),
    "annotations": plain(annotations="direct"),
    "annotations-on-their-own": plain(annotations="indirect"),
    "annotations-in-an-object-stream": plain(annotations="indirect", structure="objects"),
    "dangling-annotations": lambda _: dangling_annotations(),
    "inherited": plain(inherit=True),
    "empty-form": plain(acro_form="<< /Fields [] >>"),
    "form-with-signature-flags": plain(acro_form="<< /Fields [] /SigFlags 0 /NeedAppearances false >>"),
    "form": lambda _: form(),
    "form-in-an-object-stream": lambda _: form(structure="objects"),
    "500-pages": plain(pages=500, nested=True),
    "500-pages-in-object-streams": plain(pages=500, nested=True, structure="objects"),
    "tagged": plain(catalog_entries="/MarkInfo << /Marked true >> /StructTreeRoot << /Type /StructTreeRoot >> /Lang (en)"),
}
SECRETS: dict[str, tuple[Make, str]] = {
    "rc4-40": (encrypted("40"), ""),
    "rc4-128": (encrypted("128", "--use-aes=n"), ""),
    "aes-128": (encrypted("128", "--use-aes=y"), ""),
    "aes-256": (encrypted("256"), ""),
    "aes-256-clear-metadata": (encrypted("256", "--cleartext-metadata"), ""),
    "aes-128-password": (encrypted("128", "--use-aes=y", user=PASSWORD), PASSWORD),
    "aes-256-password": (encrypted("256", user=PASSWORD), PASSWORD),
}
# Size and what the page says about itself; where the crop box begins and how large it is, as it is seen.
GEOMETRIES: dict[str, tuple[Make, tuple[float, float], float]] = {
    **{f"rotated-{turn}": (plain(page_entries=f"/Rotate {turn}"), (842, 595) if turn % 180 else A4, 1)
       for turn in (90, 180, 270, -90, 450)},
    "rotated-by-inheritance": (plain(inherit=True, page_entries="/Rotate 90"), (842, 595), 1),
    "cropped": (plain(page_entries="/CropBox [80 100 500 700]"), (420, 600), 1),
    "cropped-and-rotated": (plain(page_entries="/CropBox [80 100 500 700] /Rotate 270"), (600, 420), 1),
    "crop-box-beyond-the-page": (plain(page_entries="/CropBox [-100 -50 500 900]"), (500, 842), 1),
    "crop-box-the-other-way-round": (plain(page_entries="/CropBox [500 700 80 100]"), (420, 600), 1),
    "moved-origin": (plain(origin=(-300, 1000)), A4, 1),
    "moved-and-rotated": (plain(origin=(50, -70), page_entries="/Rotate 180"), A4, 1),
    "user-unit": (plain(width=200, height=300, page_entries="/UserUnit 2.5", version="1.6"), (500, 750), 2.5),
    "user-unit-cropped-and-rotated": (plain(width=200, height=300, page_entries="/UserUnit 2 /Rotate 90 /CropBox [20 40 180 280]"),
                                      (480, 320), 2),
    "stamp": (plain(width=72, height=60), (72, 60), 1),
    "a0": (plain(width=2384, height=3370), (2384, 3370), 1),
    "wide": (plain(width=14400, height=100), (14400, 100), 1),
}
CASES: dict[str, tuple[Make, tuple[float, float], float, str]] = {
    **{name: (make, A4, 1, "") for name, make in STRUCTURES.items()},
    **{name: (make, A4, 1, password) for name, (make, password) in SECRETS.items()},
    **{name: (make, size, unit, "") for name, (make, size, unit) in GEOMETRIES.items()},
}


def places(size: tuple[float, float], page: int) -> tuple[Place, Place]:
    """The first where nothing is, the second across what is there."""
    width, height = size
    wide = min(width * 0.4, height * 0.4)
    return Place(page, width * 0.1, height * 0.3, wide), Place(page, width * 0.45, height * 0.07, wide)


HALF = {"1": list(CASES)[::2], "2": list(CASES)[1::2]}.get(os.environ.get("SCRIBERA_TEST_HALF", ""), list(CASES))


@pytest.mark.parametrize("name", HALF)
def test_signed_twice(tool: Tool, tmp_path: Path, name: str) -> None:
    make, size, unit, password = CASES[name]
    original, once, twice = (tmp_path / f"{part}.pdf" for part in ("original", "once", "twice"))
    original.write_bytes(make(tmp_path))
    page = 250 if name.startswith("500") else 1
    first, second = places(size, page)
    more: tuple[str | Path, ...] = ()
    if password:
        file = tmp_path / "document-password"
        file.write_text(password + "\n")
        more = ("--document-password-file", file)
    tool.checked(original, once, first, "rsa", *more, password=password)
    tool.checked(once, twice, second, "ec", *more, ink="flowing", password=password)
    view = View(page, unit, password)
    check_page(original, once, view, tool.inks["initials"], expected_box(tool.inks["initials"], first))
    check_page(once, twice, view, tool.inks["flowing"], expected_box(tool.inks["flowing"], second))
    verified = tool.run("verify", twice, "--trust", tool.keys.authority, *more)
    assert verified.returncode == 0, verified.stdout + verified.stderr
