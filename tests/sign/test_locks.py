"""What earlier signatures, fields and owners allow."""

from __future__ import annotations

import subprocess
from pathlib import Path

import pytest

import writer
from tool import Tool, listing, one_line
from writer import Pdf, by_qpdf, document, form

AT = ["--at", "60,250", "--width", "180"]
CUSTOMER = ["--field", "Customer"]


def told(tool: Tool, original: Path, signed: Path, *how: str | Path) -> subprocess.CompletedProcess[str]:
    return tool.run(original, "-o", signed, *tool.with_ink(), *how)


def field(entries: str) -> bytes:
    """An empty signature field with more to it, before another one."""

    def change(pdf: Pdf) -> None:
        empty = writer.EMPTY_FIELD.replace("PAGE", "6")
        own = empty.replace("/F 4", "") if "/F " in entries else empty
        first = pdf.add(own.replace("/FT", f"{entries} /FT"))
        second = pdf.add(empty.replace("Customer", "Clerk").replace("[300", "[80"))
        fields = b"%d 0 R %d 0 R" % (first, second)
        pdf.objects[1] = pdf.objects[1].replace(b"/Catalog", b"/Catalog /AcroForm << /Fields [%s] >>" % fields)
        pdf.objects[6] = pdf.objects[6].replace(b"/Contents", b"/Annots [%s] /Contents" % fields)

    return document(change=change)


LOCKS = {  # whether the other field may be signed afterwards, and whether one may be added
    "all": ("/Action /All", False, False),
    "these": ("/Action /Include /Fields [(Clerk)]", False, True),
    "another": ("/Action /Include /Fields [(Nobody)]", True, True),
    "all but these": ("/Action /Exclude /Fields [(Clerk)]", True, False),
    "the document": ("/Action /Include /Fields [(Nobody)] /P 1", False, False),
    "all but forms": ("/Action /Include /Fields [(Nobody)] /P 2", True, False),
}


@pytest.mark.parametrize("name", LOCKS)
def test_a_field_that_locks_others(tool: Tool, tmp_path: Path, name: str) -> None:
    lock, signs_other, adds = LOCKS[name]
    original, once = tmp_path / "original.pdf", tmp_path / "once.pdf"
    original.write_bytes(field(f"/Lock << /Type /SigFieldLock {lock} >>"))
    assert told(tool, original, once, *CUSTOMER, *tool.with_key("rsa")).returncode == 0
    tool.check(original.read_bytes(), once)
    for is_allowed, where in ((signs_other, ["--field", "Clerk"]), (adds, AT)):
        twice = tmp_path / "twice.pdf"
        done = told(tool, once, twice, *where, *tool.with_key("ec"))
        assert (done.returncode == 0) == is_allowed == twice.exists(), (where, done.stderr)
        if is_allowed:
            tool.check(once.read_bytes(), twice)
            twice.unlink()
        else:
            assert "locks" in one_line(done) or "certified" in one_line(done)


REFUSED = {
    "read-only": ("/Ff 1", CUSTOMER, "read-only"),
    "hidden": ("/F 2", CUSTOMER, "hidden"),
    "demands": ("/SV << /Type /SV /Ff 2 /SubFilter [/adbe.pkcs7.detached] >>", CUSTOMER, "demands"),
}


@pytest.mark.parametrize("name", REFUSED)
def test_fields_that_cannot_be_signed(tool: Tool, tmp_path: Path, name: str) -> None:
    entries, where, reason = REFUSED[name]
    original = tmp_path / "original.pdf"
    original.write_bytes(field(entries))
    done = told(tool, original, tmp_path / "signed.pdf", *where, *tool.with_key("rsa"))
    assert done.returncode == 1 and reason in one_line(done)
    assert listing(tmp_path) == ["original.pdf"]


def test_a_mark_fills_no_field(tool: Tool, tmp_path: Path) -> None:
    original = tmp_path / "original.pdf"
    original.write_bytes(form())
    done = told(tool, original, tmp_path / "marked.pdf", *CUSTOMER)
    assert done.returncode == 1 and "without a certificate" in one_line(done)
    assert listing(tmp_path) == ["original.pdf"]


@pytest.mark.parametrize("where", [AT, CUSTOMER])
def test_forms_of_another_kind(tool: Tool, tmp_path: Path, where: list[str]) -> None:
    original = tmp_path / "original.pdf"
    original.write_bytes(form(form_entries="/XFA (a template)"))
    done = told(tool, original, tmp_path / "signed.pdf", *where, *tool.with_key("rsa"))
    assert done.returncode == 1 and "XFA" in one_line(done)
    assert listing(tmp_path) == ["original.pdf"]


@pytest.mark.parametrize(("what", "field_too", "place_too"), [("form", True, False), ("annotate", True, False),
                                                              ("assembly", False, False), ("all", True, True)])
def test_what_the_owner_allows(tool: Tool, tmp_path: Path, what: str, field_too: bool, place_too: bool) -> None:
    """Filling fields is one thing, adding them another."""
    original, signed = tmp_path / "original.pdf", tmp_path / "signed.pdf"
    original.write_bytes(by_qpdf(form(), tmp_path, "--encrypt", "", "owner", "256", f"--modify={what}", "--"))
    for is_allowed, where in ((field_too, CUSTOMER), (place_too, AT)):
        done = told(tool, original, signed, *where, *tool.with_key("rsa"))
        assert (done.returncode == 0) == is_allowed == signed.exists(), (where, done.stderr)
        signed.unlink(missing_ok=True)
    password = tmp_path / "password"
    password.write_text("owner\n")
    assert told(tool, original, signed, *AT, *tool.with_key("rsa"), "--document-password-file", password).returncode == 0


@pytest.mark.parametrize("bits", ["40", "128", "256"])
def test_passwords_that_are_not_ascii(tool: Tool, tmp_path: Path, bits: str) -> None:
    """Older documents have them in other encodings."""
    original, signed, password = (tmp_path / name for name in ("original.pdf", "signed.pdf", "password"))
    original.write_bytes(by_qpdf(document(), tmp_path, "--allow-weak-crypto", "--encrypt", "grüße", "owner", bits, "--"))
    password.write_text("grüße\n")
    done = told(tool, original, signed, *AT, *tool.with_key("ec"), "--document-password-file", password)
    assert done.returncode == 0, done.stderr
    verified = tool.run("verify", signed, "--document-password-file", password)
    assert "valid" in verified.stdout and verified.returncode == 0, verified.stdout + verified.stderr
