"""PDF files of every kind of structure, written byte by byte, so that no library's habits are in them."""

from __future__ import annotations

import subprocess
import zlib
from collections.abc import Callable
from dataclasses import dataclass, field
from pathlib import Path
from typing import Literal

Structure = Literal["table", "stream", "objects", "hybrid"]


@dataclass
class Pdf:
    """Objects by their numbers, and how they are to be written."""

    structure: Structure = "table"
    version: str = "1.7"
    newline: bytes = b"\n"
    before: bytes = b""  # in front of the header
    after: bytes = b""  # behind the last line
    objects: dict[int, bytes] = field(default_factory=dict)
    root: int = 1
    trailer: bytes = b""

    def add(self, content: bytes | str, number: int | None = None) -> int:
        number = number or max(self.objects, default=0) + 1
        self.objects[number] = content.encode() if isinstance(content, str) else content
        return number

    def add_stream(self, data: bytes, entries: str = "") -> int:
        return self.add(stream(data, entries))

    def written(self) -> bytes:
        body = bytearray(self.before + f"%PDF-{self.version}".encode() + self.newline + b"%\xe2\xe3\xcf\xd3" + self.newline)
        start = len(self.before)
        packed: list[int] = []
        if self.structure in ("objects", "hybrid"):
            packed = [number for number, content in self.objects.items() if not content.rstrip().endswith(b"endstream")]
            if self.structure == "hybrid":  # old readers need the rest
                packed = [number for number in packed if b"/OnlyForNewReaders" in self.objects[number]]
        places: dict[int, tuple[int, int, int]] = {}

        def write(number: int, content: bytes) -> None:
            places[number] = (1, len(body) - start, 0)
            body.extend(b"%d 0 obj" % number + self.newline + content + self.newline + b"endobj" + self.newline)

        for number, content in self.objects.items():
            if number not in packed:
                write(number, content)
        last = max(self.objects)
        if packed:
            holder = last = last + 1
            heads, texts = [], b""
            for index, number in enumerate(packed):
                heads.append(f"{number} {len(texts)}")
                texts += self.objects[number] + b"\n"
                places[number] = (2, holder, index)
            head = " ".join(heads).encode() + b"\n"
            write(holder, stream(head + texts, f"/Type /ObjStm /N {len(packed)} /First {len(head)}"))

        entries = f"/Root {self.root} 0 R /ID [<{'ab' * 16}> <{'cd' * 16}>]".encode() + self.trailer
        if self.structure == "table":
            at = len(body) - start
            body += self.table(places, last)
            body += b"trailer" + self.newline + b"<< /Size %d " % (last + 1) + entries + b" >>" + self.newline
        elif self.structure == "hybrid":
            hidden = {number: place for number, place in places.items() if place[0] == 2}
            stream_at = len(body) - start
            own = last = last + 1
            write(own, self.cross_reference_stream(hidden, last, entries))
            at = len(body) - start
            body += self.table({number: place for number, place in places.items() if place[0] == 1}, last)
            body += b"trailer" + self.newline
            body += b"<< /Size %d /XRefStm %d " % (last + 1, stream_at) + entries + b" >>" + self.newline
        else:
            at = len(body) - start
            own = last = last + 1
            places[own] = (1, at, 0)
            write(own, self.cross_reference_stream(places, last, entries))
        body += b"startxref" + self.newline + b"%d" % at + self.newline + b"%%EOF" + (self.after or self.newline)
        return bytes(body)

    def table(self, places: dict[int, tuple[int, int, int]], last: int) -> bytes:
        end = b"\r\n" if self.newline == b"\r\n" else b" \n"
        free = [number for number in range(last + 1) if number not in places]
        rows = []
        for number in range(last + 1):
            if number in places:
                rows.append(b"%010d 00000 n" % places[number][1])
            else:
                following = [other for other in free if other > number]
                rows.append(b"%010d %05d f" % (following[0] if following else 0, 65535 if number == 0 else 0))
        return b"xref" + self.newline + b"0 %d" % (last + 1) + self.newline + b"".join(row + end for row in rows)

    @staticmethod
    def cross_reference_stream(places: dict[int, tuple[int, int, int]], last: int, entries: bytes) -> bytes:
        numbers = sorted(places)
        rows = b"".join(bytes([places[n][0]]) + places[n][1].to_bytes(4, "big") + places[n][2].to_bytes(2, "big")
                        for n in numbers)
        index = " ".join(f"{number} 1" for number in numbers)
        return stream(rows, f"/Type /XRef /Size {last + 1} /W [1 4 2] /Index [{index}] " + entries.decode("latin-1"))


def stream(data: bytes, entries: str = "") -> bytes:
    packed = zlib.compress(data)
    return (f"<< /Length {len(packed)} /Filter /FlateDecode {entries} >>\nstream\n".encode("latin-1") + packed
            + b"\nendstream")


TEXT = "Signature:"


def page_content(width: float, height: float, number: int = 1) -> bytes:
    """Rules around everything, grey areas, and a line to sign at, whose places are told by fractions of the page."""
    size = min(width, height) / 30
    return (
        f"q {size / 8:.3f} w 0.2 0.2 0.6 RG {size / 4:.3f} {size / 4:.3f} {width - size / 2:.3f} {height - size / 2:.3f} re S Q\n"
        f"q 0.85 0.9 0.8 rg {width * 0.05:.3f} {height * 0.86:.3f} {width * 0.9:.3f} {height * 0.06:.3f} re f Q\n"
        f"BT /F1 {size:.3f} Tf {width * 0.07:.3f} {height * 0.88:.3f} Td (Contract, page {number}) Tj ET\n"
        f"BT /F1 {size:.3f} Tf {width * 0.07:.3f} {height * 0.2:.3f} Td ({TEXT}) Tj ET\n"
    ).encode()


def document(
    width: float = 595,
    height: float = 842,
    *,
    pages: int = 1,
    page_entries: str = "",
    origin: tuple[float, float] = (0, 0),
    annotations: Literal["none", "direct", "indirect"] = "none",
    inherit: bool = False,
    catalog_entries: str = "",
    acro_form: str = "",
    nested: bool = False,
    turned: int = 0,  # the content, so that it is upright on a page with this rotation
    change: Callable[[Pdf], None] | None = None,
    **how: object,
) -> bytes:
    """A document whose pages are alike; the first is object 6, its content object 7."""
    pdf = Pdf(**how)  # type: ignore[arg-type]
    left, bottom = origin
    box = f"/MediaBox [{left} {bottom} {left + width} {bottom + height}]"
    resources = "/Resources << /Font << /F1 5 0 R >> >>"
    pdf.add(f"<< /Type /Catalog /Pages 2 0 R {f'/AcroForm {acro_form}' if acro_form else ''} {catalog_entries} >>", 1)
    pdf.add("", 2)
    pdf.add("<< /Title (Contract) /OnlyForNewReaders true >>", 3)
    pdf.add("<< /Type /Nothing >>", 4)
    pdf.add("<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>", 5)
    kids: list[int] = []
    for number in range(1, pages + 1):
        matrix = {0: "1 0 0 1 0 0", 90: f"0 1 -1 0 {width} 0", 180: f"-1 0 0 -1 {width} {height}", 270: f"0 -1 1 0 0 {height}"}
        shift = f"1 0 0 1 {left} {bottom} cm {matrix[turned]} cm\n".encode()
        page = pdf.add("")
        sides = (height, width) if turned % 180 else (width, height)
        content = pdf.add_stream(shift + page_content(*sides, number))
        annots = ""
        if annotations != "none":
            note = pdf.add("<< /Type /Annot /Subtype /Text /Rect [20 20 40 40] /Contents (A note) /F 2 >>")
            annots = f"/Annots [{note} 0 R]"
            if annotations == "indirect":
                annots = f"/Annots {pdf.add(f'[{note} 0 R]')} 0 R"
        own = "" if inherit else f"{box} {resources} {page_entries}"
        pdf.add(f"<< /Type /Page /Parent 2 0 R /Contents {content} 0 R {annots} {own} >>", page)
        kids.append(page)
    top = list(kids)
    if nested:  # a tree with ten kids a node
        while len(top) > 10:
            level = []
            for at in range(0, len(top), 10):
                some = top[at : at + 10]
                count = sum(counted(pdf, kid) for kid in some)
                node = pdf.add(f"<< /Type /Pages /Count {count} /Parent 2 0 R /Kids [{references(some)}] >>")
                for kid in some:
                    pdf.objects[kid] = pdf.objects[kid].replace(b"/Parent 2 0 R", b"/Parent %d 0 R" % node)
                level.append(node)
            top = level
    inherited = f"{box} {resources} {page_entries}" if inherit else ""
    pdf.add(f"<< /Type /Pages /Count {pages} /Kids [{references(top)}] {inherited} >>", 2)
    if change:
        change(pdf)
    return pdf.written()


def references(numbers: list[int]) -> str:
    return " ".join(f"{number} 0 R" for number in numbers)


def counted(pdf: Pdf, kid: int) -> int:
    content = pdf.objects[kid]
    return int(content.split(b"/Count ")[1].split()[0]) if b"/Type /Pages" in content else 1


def by_qpdf(source: bytes, folder: Path, *options: str) -> bytes:
    """The document as qpdf writes it."""
    before, after = folder / "before-qpdf.pdf", folder / "after-qpdf.pdf"
    before.write_bytes(source)
    after.unlink(missing_ok=True)
    subprocess.run(["qpdf", "--deterministic-id" if "--encrypt" not in options else "--static-id", *options,
                    str(before), str(after)], check=True)
    return after.read_bytes()


def appended(source: bytes, objects: dict[int, bytes], trailer: bytes = b"") -> bytes:
    """The document with a revision behind it: a table, as old readers have it."""
    previous = int(source[source.rindex(b"startxref") + 9 :].split()[0])
    size = max(int(part.split()[0]) for part in source.split(b"/Size ")[1:])
    body, places = bytearray(source), {}
    for number, content in objects.items():
        places[number] = len(body)
        body += b"%d 0 obj\n" % number + content + b"\nendobj\n"
    at = len(body)
    body += b"xref\n" + b"".join(b"%d 1\n%010d 00000 n \n" % (number, place) for number, place in sorted(places.items()))
    size = max([size, *(number + 1 for number in objects)])
    body += b"trailer\n<< /Size %d /Prev %d /Root 1 0 R " % (size, previous) + trailer
    body += b" >>\nstartxref\n%d\n%%%%EOF\n" % at
    return bytes(body)


EMPTY_FIELD = (
    "<< /Type /Annot /Subtype /Widget /FT /Sig /T (Customer) /F 4 /P PAGE 0 R /Rect [300 120 500 180] >>"
)


def form(rectangle: str = "[300 120 500 180]", form_entries: str = "", **how: object) -> bytes:
    """A document with an empty signature field, and a text field that is filled."""

    def change(pdf: Pdf) -> None:
        page = next(n for n, content in pdf.objects.items() if b"/Type /Page " in content)
        own = EMPTY_FIELD.replace("PAGE", str(page)).replace("[300 120 500 180]", rectangle)
        signature = pdf.add(own)
        look = pdf.add_stream(b"/Tx BMC q BT /F1 12 Tf 2 5 Td (Ann) Tj ET Q EMC",
                              "/Type /XObject /Subtype /Form /BBox [0 0 100 20] /Resources << /Font << /F1 5 0 R >> >>")
        text = pdf.add("<< /Type /Annot /Subtype /Widget /FT /Tx /T (Name) /V (Ann) /F 4 /DA (/F1 12 Tf 0 g) "
                       f"/P {page} 0 R /Rect [100 600 200 620] /AP << /N {look} 0 R >> >>")
        pdf.objects[page] = pdf.objects[page].replace(b"/Contents", b"/Annots [%d 0 R %d 0 R] /Contents" % (signature, text))
        fields = f"<< /Fields [{signature} 0 R {text} 0 R] /DR << /Font << /F1 5 0 R >> >> /DA (/F1 12 Tf 0 g) {form_entries} >>"
        pdf.objects[1] = pdf.objects[1].replace(b"/Catalog", f"/Catalog /AcroForm {pdf.add(fields)} 0 R".encode())

    return document(change=change, **how)  # type: ignore[arg-type]
