"""Options, what they do to a document, and what is refused."""

from __future__ import annotations

import json
import re
from pathlib import Path

import numpy
import pytest

import writer
from checks import run, said_by_pdfsig, signatures
from looking import View, check_page, expected_box
from test_documents import PASSWORD, encrypted
from tool import Place, Tool, listing, one_line
from writer import document

PLACE = Place(1, 60, 250, 180)


@pytest.fixture
def original(tmp_path: Path) -> Path:
    file = tmp_path / "original.pdf"
    file.write_bytes(document(pages=3))
    return file


def test_help_and_version(tool: Tool) -> None:
    told = tool.run("--help")
    assert told.returncode == 0 and "Usage: " in told.stdout and not told.stderr
    for command in ("fields", "verify", "unseal"):
        assert command in told.stdout
        assert tool.run(command, "--help").returncode == 0
    assert re.fullmatch(r"scribera-sign \d+\.\d+\.\d+\n", tool.run("--version").stdout)


@pytest.mark.parametrize("arguments", [
    [], ["--nothing"], ["ORIGINAL"], ["ORIGINAL", "-o", "SIGNED"], ["ORIGINAL", "-o", "SIGNED", "INK"],
    ["ORIGINAL", "-o", "SIGNED", "PLACE"], ["ORIGINAL", "ORIGINAL", "-o", "SIGNED", "PLACE", "INK"],
    ["ORIGINAL", "PLACE", "INK"], ["ORIGINAL", "-o", "SIGNED", "PLACE", "INK", "--pad", "K210"],
    ["ORIGINAL", "-o", "SIGNED", "PLACE", "INK", "--field", "Customer"],
    ["ORIGINAL", "-o", "SIGNED", "PLACE", "INK", "--model", "K9"],
    ["ORIGINAL", "-o", "SIGNED", "--page", "0", "--at", "1,1", "INK"],
    ["ORIGINAL", "-o", "SIGNED", "--page", "x", "--at", "1,1", "INK"],
    *[["ORIGINAL", "-o", "SIGNED", "--page", "1", "--at", value, "INK"]
      for value in ("", "1", "1,", ",1", "1,2,3", "a,b", "nan,1", "1,inf", "0x10,2", "1e999,1")],
    *[["ORIGINAL", "-o", "SIGNED", "PLACE", "INK", "--width", value] for value in ("0", "-5", "x", "nan", "inf", "1e400", "")],
    ["fields"], ["fields", "ORIGINAL", "ORIGINAL"], ["verify"], ["unseal", "ORIGINAL", "-o", "SIGNED"],
    ["fields", "ORIGINAL", "-o", "SIGNED"],
])
def test_wrong_usage(tool: Tool, tmp_path: Path, original: Path, arguments: list[str]) -> None:
    meant = {"ORIGINAL": [str(original)], "SIGNED": [str(tmp_path / "signed.pdf")], "INK": tool.with_ink(),
             "PLACE": ["--page", "1", "--at", "60,250"]}
    words = [word for argument in arguments for word in meant.get(argument, [argument])]
    told = tool.run(*words)
    assert told.returncode == 2 and not told.stdout, (words, told.stdout, told.stderr)
    assert re.fullmatch(r"scribera-sign: [^\n]+\nTry 'scribera-sign --help'\.\n", told.stderr), told.stderr
    assert listing(tmp_path) == ["original.pdf"]


@pytest.mark.parametrize(("place", "reason"), [(Place(4, 60, 250, 180), "page"), (Place(10**9, 60, 250, 180), "page"),
                                               (Place(1, 595, 250, 180), ""), (Place(1, 60, 842, 180), ""),
                                               (Place(1, -50, 250, 180), ""), (Place(1, 500, 250, 180), ""),
                                               (Place(1, 60, 250, 10_000), ""), (Place(1, 60, 1e30, 180), "")])
def test_a_place_that_is_not_on_the_page(tool: Tool, tmp_path: Path, original: Path, place: Place, reason: str) -> None:
    done = tool.sign(original, tmp_path / "signed.pdf", place)
    assert done.returncode in (1, 2) and reason in done.stderr
    assert done.stderr.startswith("scribera-sign: ") and listing(tmp_path) == ["original.pdf"]


def test_units_that_are_too_large(tool: Tool, tmp_path: Path) -> None:
    """The signature would be smaller than what a place is told in."""
    original, signed = tmp_path / "original.pdf", tmp_path / "signed.pdf"
    for unit, is_refused in (("9999999", True), ("30000", True), ("500", False)):
        original.write_bytes(document(page_entries=f"/UserUnit {unit}", version="1.6"))
        done = tool.sign(original, signed, PLACE)
        if is_refused:
            assert done.returncode == 1 and "units of the page" in one_line(done)
            assert listing(tmp_path) == ["original.pdf"]
        else:
            assert done.returncode == 0, done.stderr
            told = re.search(r" at 60,250, ([\d.]+) by ", tool.run("fields", signed).stdout)
            assert told and abs(float(told[1]) - 180) < 2


def test_a_relative_path(tool: Tool, tmp_path: Path, original: Path) -> None:
    done = tool.run(original.name, "-o", "signed.pdf", *PLACE.options, *tool.with_ink(), *tool.with_key("rsa"), cwd=tmp_path)
    assert done.returncode == 0, done.stderr
    tool.check(original.read_bytes(), tmp_path / "signed.pdf")
    assert listing(tmp_path) == ["original.pdf", "signed.pdf"]


def test_a_document_that_looks_like_a_command(tool: Tool, tmp_path: Path, original: Path) -> None:
    (tmp_path / "verify").write_bytes(original.read_bytes())
    done = tool.run("./verify", "-o", "signed.pdf", *PLACE.options, *tool.with_ink(), *tool.with_key("rsa"), cwd=tmp_path)
    assert done.returncode == 0, done.stderr


def test_without_a_certificate(tool: Tool, tmp_path: Path, original: Path) -> None:
    """The mark is there, and people are told that it seals nothing."""
    marked = tmp_path / "marked.pdf"
    done = tool.run(original, "-o", marked, *PLACE.options, *tool.with_ink())
    assert done.returncode == 0, done.stderr
    assert re.search(r"no(t a)? seal", done.stdout + done.stderr)
    content = marked.read_bytes()
    assert content.startswith(original.read_bytes()) and not signatures(content) and not said_by_pdfsig(marked)
    assert run("qpdf", "--check", marked).returncode == 0
    check_page(original, marked, View(1), tool.inks["initials"], expected_box(tool.inks["initials"], PLACE))
    assert tool.run("verify", marked).returncode == 1


def test_a_mark_that_is_sealed_later(tool: Tool, tmp_path: Path, original: Path) -> None:
    marked, sealed = tmp_path / "marked.pdf", tmp_path / "sealed.pdf"
    assert tool.run(original, "-o", marked, *PLACE.options, *tool.with_ink()).returncode == 0
    tool.checked(marked, sealed, Place(2, 100, 100, 200), "ec", ink="paraph")
    check_page(marked, sealed, View(2), tool.inks["paraph"], expected_box(tool.inks["paraph"], Place(2, 100, 100, 200)))


def test_a_mark_on_what_is_sealed(tool: Tool, tmp_path: Path, original: Path) -> None:
    """It shows as a later change, which people are told before others tell them."""
    sealed, marked = tmp_path / "sealed.pdf", tmp_path / "marked.pdf"
    tool.checked(original, sealed, PLACE)
    done = tool.run(sealed, "-o", marked, *Place(2, 100, 100, 200).options, *tool.with_ink())
    assert done.returncode == 0 and "do not cover it" in done.stdout
    assert tool.run("verify", marked).returncode == 1


@pytest.mark.parametrize("text", ["Jörg Ägidius (the 2nd) \\ Co.", "Δημήτρης", "李明", "a" * 500, "line\nbreak", "\U0001f58b"])
def test_words_in_any_script(tool: Tool, tmp_path: Path, original: Path, text: str) -> None:
    signed = tmp_path / "signed.pdf"
    tool.checked(original, signed, PLACE, "rsa", "--name", text, "--reason", text, "--location", text)
    told = tool.run("verify", "--json", signed)
    assert told.returncode == 0
    [one] = json.loads(told.stdout)["signatures"]
    assert (one["name"], one["reason"], one["location"]) == (text, text, text)


def test_lines_below_the_ink(tool: Tool, tmp_path: Path, original: Path) -> None:
    signed = tmp_path / "signed.pdf"
    tool.checked(original, signed, PLACE, "rsa", "--show", "name,date,reason", "--name", "Jörg Ägidius", "--reason",
                 "I agree (with all of it)")
    box = expected_box(tool.inks["initials"], PLACE)
    check_page(original, signed, View(1), tool.inks["initials"], box, below=60)
    # What is below the ink can be read as text.
    texts = run("pdftocairo", "-pdf", "-f", "1", "-l", "1", signed, tmp_path / "flat.pdf")
    assert texts.returncode == 0, texts.stderr
    below = run("pdftotext", "-x", "55", "-y", str(int(box.bottom)), "-W", "200", "-H", "60", tmp_path / "flat.pdf", "-").stdout
    assert "Jörg Ägidius" in below and "I agree (with all of it)" in below and re.search(r"20\d\d", below), below


@pytest.mark.parametrize("turn", [90, 180, 270])
def test_lines_are_upright(tool: Tool, tmp_path: Path, turn: int) -> None:
    original, signed = tmp_path / "original.pdf", tmp_path / "signed.pdf"
    original.write_bytes(document(page_entries=f"/Rotate {turn}"))
    tool.checked(original, signed, PLACE, "ec", "--show", "reason", "--reason", "I agree")
    box = expected_box(tool.inks["initials"], PLACE)
    check_page(original, signed, View(1), tool.inks["initials"], box, below=60)


def test_colour_and_width(tool: Tool, tmp_path: Path, original: Path) -> None:
    signed = tmp_path / "signed.pdf"
    tool.checked(original, signed, PLACE, "rsa", "--colour", "#0000c0")
    picture = View(1).picture(signed, 300)[1042:1400, 250:1000]
    ink = picture[picture.sum(axis=2) < 3 * 160]
    assert len(ink) > 1000 and ink[:, 2].mean() > 150 and ink[:, 0].mean() < 40


def expected_after(file: Path, text: str, tmp_path: Path) -> tuple[int, float, float]:
    """Where the text ends and its line begins, by another program: page, x, y of its middle."""
    words = run("pdftotext", "-bbox", file, "-").stdout
    page = 0
    for line in words.splitlines():
        page += "<page " in line
        match = re.search(r'xMin="([\d.]+)" yMin="([\d.]+)" xMax="([\d.]+)" yMax="([\d.]+)">(.*)</word>', line)
        if match and match[5] == text:
            return page, float(match[3]), (float(match[2]) + float(match[4])) / 2
    raise AssertionError(words)


def ink_on(tool: Tool, before: Path, after: Path, page: int) -> tuple[float, float, float, float]:
    """The bounds of what changed, in points."""
    view = View(page)
    rows, columns = numpy.nonzero((view.picture(before, 144) != view.picture(after, 144)).any(axis=2))
    return columns.min() / 2, rows.min() / 2, columns.max() / 2, rows.max() / 2


@pytest.mark.parametrize("turn", [0, 90, 180, 270])
def test_after_a_text(tool: Tool, tmp_path: Path, turn: int) -> None:
    original, signed = tmp_path / "original.pdf", tmp_path / "signed.pdf"
    original.write_bytes(document(page_entries=f"/Rotate {turn}", turned=turn))
    done = tool.run(original, "-o", signed, "--after", writer.TEXT, "--width", "150", *tool.with_ink(), *tool.with_key("rsa"))
    assert done.returncode == 0, done.stderr
    tool.check(original.read_bytes(), signed)
    page, x, y = expected_after(original, writer.TEXT, tmp_path)
    left, top, right, bottom = ink_on(tool, original, signed, page)
    assert x - 10 <= left <= x + 20
    assert top - 30 <= y <= bottom + 30


def test_annotations_that_pages_share(tool: Tool, tmp_path: Path) -> None:
    """The signature comes to one page alone."""

    def change(pdf: writer.Pdf) -> None:
        note = pdf.add("<< /Type /Annot /Subtype /Text /Rect [20 20 40 40] /Contents (A note) /F 2 >>")
        shared = pdf.add(f"[{note} 0 R]")
        for number, content in pdf.objects.items():
            if b"/Type /Page " in content:
                pdf.objects[number] = content.replace(b"/Contents", b"/Annots %d 0 R /Contents" % shared)

    original, signed = tmp_path / "original.pdf", tmp_path / "signed.pdf"
    original.write_bytes(document(pages=2, change=change))
    tool.checked(original, signed, PLACE)
    assert (View(2).picture(original, 72) == View(2).picture(signed, 72)).all()


def test_after_a_text_that_lies_on_its_side(tool: Tool, tmp_path: Path) -> None:
    original = tmp_path / "original.pdf"
    original.write_bytes(document(page_entries="/Rotate 90"))
    done = tool.run(original, "-o", tmp_path / "signed.pdf", "--after", writer.TEXT, *tool.with_ink(), *tool.with_key("rsa"))
    assert done.returncode == 1 and writer.TEXT in one_line(done)
    assert listing(tmp_path) == ["original.pdf"]


def test_after_a_text_that_is_not_there(tool: Tool, tmp_path: Path, original: Path) -> None:
    done = tool.run(original, "-o", tmp_path / "signed.pdf", "--after", "Sign here:", *tool.with_ink(), *tool.with_key("rsa"))
    assert done.returncode == 1 and "Sign here:" in one_line(done)
    assert listing(tmp_path) == ["original.pdf"]


@pytest.mark.parametrize("kind", ["rsa", "rsa3072", "rsa4096", "ec", "ec384", "ec521"])
def test_kinds_of_keys(tool: Tool, tmp_path: Path, original: Path, kind: str) -> None:
    signed = tmp_path / "signed.pdf"
    tool.checked(original, signed, PLACE, kind)
    assert tool.run("verify", signed, "--trust", tool.keys.authority).returncode == 0
    assert tool.run("verify", signed, "--trust", tool.keys.stranger).returncode == 1


def test_many_ec_signatures(tool: Tool, tmp_path: Path, original: Path) -> None:
    """Their length is another one now and then."""
    lengths = set()
    for number in range(25):
        signed = tmp_path / f"{number}.pdf"
        tool.checked(original, signed, PLACE, "ec")
        lengths.add(len(signatures(signed.read_bytes())[0].der))
    assert len(lengths) > 1


@pytest.mark.parametrize(("name", "kind", "how", "reason"), [
    ("expired", "rsa", {"start": "20200101000000Z", "end": "20210101000000Z"}, "expired"),
    ("not-yet", "ec", {"start": "20900101000000Z", "end": "20910101000000Z"}, "not"),
    ("weak", "rsa1024", {}, ""),
    ("for-encryption", "rsa", {"usage": "keyEncipherment"}, ""),
])
def test_certificates_that_must_not_sign(tool: Tool, tmp_path: Path, original: Path, name: str, kind: str,
                                         how: dict[str, str], reason: str) -> None:
    certificate = tool.keys.p12(kind, name, **how)
    done = tool.run(original, "-o", tmp_path / "signed.pdf", *PLACE.options, *tool.with_ink(), "--certificate", certificate,
                    "--password-file", tool.keys.password_file)
    assert done.returncode == 1 and reason in one_line(done)
    assert listing(tmp_path) == ["original.pdf"]


def test_passwords_of_certificates(tool: Tool, tmp_path: Path, original: Path) -> None:
    wrong, signed = tmp_path / "wrong", tmp_path / "signed.pdf"
    common: list[str | Path] = [original, "-o", signed, *PLACE.options, *tool.with_ink()]
    wrong.write_text("nonsense\n")
    wrong_ones: list[list[str | Path]] = [["--password-file", wrong], [], ["--password-file", tmp_path / "nowhere"]]
    for more in wrong_ones:
        done = tool.run(*common, "--certificate", tool.keys.p12("rsa"), *more, stdin=-3)
        assert done.returncode == 1 and one_line(done) and not signed.exists()
    for name, password in (("empty", ""), ("script", "пароль ü"), ("long", "x" * 300)):
        file = tmp_path / name
        file.write_text(password)
        done = tool.run(*common, "--certificate", tool.keys.p12("ec", name, password), "--password-file", file)
        assert done.returncode == 0, (name, done.stderr)
        signed.unlink()
    # No password at all: an empty one is tried.
    assert tool.run(*common, "--certificate", tool.keys.p12("ec", "empty", ""), stdin=-3).returncode == 0


def test_certificate_files_with_old_ciphers(tool: Tool, tmp_path: Path, original: Path) -> None:
    """Many programs still write them."""
    old, signed = tmp_path / "old.p12", tmp_path / "signed.pdf"
    made = run("openssl", "pkcs12", "-export", "-legacy", "-inkey", tool.keys.key("rsa", "rsa"), "-in",
               tool.keys.certificate("rsa", "rsa"), "-out", old, "-passout", f"pass:{tool.keys.password}")
    assert made.returncode == 0, made.stderr
    done = tool.run(original, "-o", signed, *PLACE.options, *tool.with_ink(), "--certificate", old, "--password-file",
                    tool.keys.password_file)
    assert done.returncode == 0, done.stderr
    assert tool.run("verify", signed, "--trust", tool.keys.authority).returncode == 0


def test_certificates_in_between(tool: Tool, tmp_path: Path, original: Path) -> None:
    """They go into the signature, so that who trusts the root alone finds the way."""

    def openssl(*arguments: str | Path) -> None:
        done = run("openssl", *arguments, cwd=tmp_path)
        assert done.returncode == 0, done.stderr

    def below(name: str, issuer: Path, issuers_key: Path, extensions: str) -> tuple[Path, Path]:
        (tmp_path / f"{name}.ext").write_text(extensions)
        key = tool.keys.key(name, "ec")
        openssl("req", "-new", "-key", key, "-subj", f"/CN={name}", "-out", f"{name}.csr")
        openssl("x509", "-req", "-in", f"{name}.csr", "-CA", issuer, "-CAkey", issuers_key, "-days", "20", "-extfile",
                f"{name}.ext", "-out", f"{name}.pem")
        return tmp_path / f"{name}.pem", key

    between, key = below("between", tool.keys.authority, tool.keys.folder / "root.key",
                         "basicConstraints=critical,CA:TRUE\nkeyUsage=critical,keyCertSign\n")
    last, last_key = below("last", between, key, "basicConstraints=CA:FALSE\nkeyUsage=critical,nonRepudiation\n")
    chains: list[tuple[list[Path], int]] = [([between], 0), ([], 1)]
    for chain, code in chains:
        file, signed = tmp_path / f"{code}.p12", tmp_path / f"{code}.pdf"
        more = [str(option) for one in chain for option in ("-certfile", one)]
        openssl("pkcs12", "-export", "-inkey", last_key, "-in", last, *more, "-out", file, "-passout", "pass:")
        done = tool.run(original, "-o", signed, *PLACE.options, *tool.with_ink(), "--certificate", file)
        assert done.returncode == 0, done.stderr
        assert tool.run("verify", signed, "--trust", tool.keys.authority).returncode == code
        assert tool.run("verify", signed, "--trust", last).returncode == 0
        assert tool.run("verify", signed, "--trust", tool.keys.stranger).returncode == 1


def test_passwords_of_documents(tool: Tool, tmp_path: Path) -> None:
    original, signed, file = tmp_path / "original.pdf", tmp_path / "signed.pdf", tmp_path / "password"
    original.write_bytes(encrypted("256", user=PASSWORD)(tmp_path))
    before = listing(tmp_path)
    done = tool.sign(original, signed, PLACE)
    assert done.returncode == 1 and "password" in one_line(done)
    file.write_text("nonsense\n")
    done = tool.sign(original, signed, PLACE, "rsa", "--document-password-file", file)
    assert done.returncode == 1 and "password" in one_line(done)
    for command in ("fields", "verify"):
        assert "password" in one_line(tool.run(command, original))
    assert listing(tmp_path) == sorted([*before, "password"])
    # What is new is encrypted as the rest is.
    file.write_text(PASSWORD + "\n")
    done = tool.sign(original, signed, PLACE, "rsa", "--document-password-file", file, "--reason", "a reason nobody sees")
    assert done.returncode == 0, done.stderr
    added = signed.read_bytes()[original.stat().st_size :]
    for words in (b"a reason nobody sees", "a reason".encode("utf-16-be"), b"a reason".hex().encode()):
        assert words not in added
    told = tool.run("verify", signed, "--document-password-file", file)
    assert told.returncode == 0 and "a reason nobody sees" in told.stdout


def test_a_document_whose_owner_allows_nothing(tool: Tool, tmp_path: Path) -> None:
    """Without the owner's password it may be read, but neither changed nor signed."""
    original = tmp_path / "original.pdf"
    original.write_bytes(writer.by_qpdf(document(), tmp_path, "--encrypt", "", "owner", "256", "--modify=none", "--"))
    before = listing(tmp_path)
    done = tool.sign(original, tmp_path / "signed.pdf", PLACE)
    assert done.returncode == 1 and one_line(done)
    assert listing(tmp_path) == before


def test_ink_from_standard_input(tool: Tool, tmp_path: Path, original: Path) -> None:
    done = tool.run(original, "-o", tmp_path / "signed.pdf", *PLACE.options, "--ink", "-", *tool.with_key("rsa"),
                    input=tool.inks["initials"].file.read_text())
    assert done.returncode == 0, done.stderr
    check_page(original, tmp_path / "signed.pdf", View(1), tool.inks["initials"], expected_box(tool.inks["initials"], PLACE))


def test_the_same_ten_times(tool: Tool, tmp_path: Path, original: Path) -> None:
    """A revision behind the other; the file grows by the same each time."""
    sizes = []
    for number in range(10):
        following = tmp_path / f"{number}.pdf"
        tool.checked(original, following, Place(1 + number % 3, 60, 100 + 60 * number, 100), "ec" if number % 2 else "rsa")
        sizes.append(following.stat().st_size - original.stat().st_size)
        original = following
    assert max(sizes) < 1.3 * min(sizes)
