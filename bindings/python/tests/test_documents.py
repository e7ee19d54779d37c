"""Signing documents, by the program that SCRIBERA_SIGN names."""

from __future__ import annotations

import base64
import os
import subprocess
from pathlib import Path

import pytest

from scribera import DocumentError, InvalidParametersError, Pad, sign_pdf
from simulator import Simulator, diagonal

PASSWORD = "two words"

needs_program = pytest.mark.skipif("SCRIBERA_SIGN" not in os.environ, reason="built without scribera-sign")


@pytest.fixture
def ink(simulator: Simulator) -> str:
    with Pad("K210") as pad:
        simulator.send(diagonal("K210"))
        return pad.ink_text()


@pytest.fixture
def document(folder: Path) -> Path:
    """One empty page."""
    objects = [
        b"<< /Type /Catalog /Pages 2 0 R >>",
        b"<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        b"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] >>",
    ]
    content, places = b"%PDF-1.7\n", []
    for number, body in enumerate(objects, 1):
        places.append(b"%010d 00000 n \n" % len(content))
        content += b"%d 0 obj\n%s\nendobj\n" % (number, body)
    table = b"xref\n0 4\n0000000000 65535 f \n" + b"".join(places) + b"trailer << /Size 4 /Root 1 0 R >>\n"
    path = folder / "contract.pdf"
    path.write_bytes(content + table + b"startxref\n%d\n%%%%EOF\n" % len(content))
    return path


@pytest.fixture
def certificate(folder: Path) -> Path:
    def openssl(*arguments: str) -> None:
        subprocess.run(["openssl", *arguments], cwd=folder, check=True, capture_output=True)

    curve = ("-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256")
    openssl("req", "-x509", *curve, "-nodes", "-keyout", "own.key", "-out", "own.pem", "-subj", "/CN=Ann Example")
    secret = ("-passout", f"pass:{PASSWORD}")
    openssl("pkcs12", "-export", "-inkey", "own.key", "-in", "own.pem", "-out", "own.p12", *secret)
    return folder / "own.p12"


def told(*arguments: str | Path) -> subprocess.CompletedProcess[str]:
    return subprocess.run([os.environ["SCRIBERA_SIGN"], *arguments], capture_output=True, text=True)


@needs_program
def test_a_document_is_sealed(ink: str, document: Path, certificate: Path, folder: Path) -> None:
    before = document.read_bytes()
    signed = folder / "signed.pdf"
    sign_pdf(
        document,
        signed,
        ink=ink,
        at=(60, 120.5),
        width=200,
        show=["name", "reason"],
        certificate=certificate,
        password=PASSWORD,
        reason="--because",
        seal_ink=folder / "own.pem",
    )
    assert document.read_bytes() == before == signed.read_bytes()[: len(before)]
    verified = told("verify", signed, "--trust", folder / "own.pem")
    assert verified.returncode == 0
    assert "Ann Example" in verified.stdout and "--because" in verified.stdout
    assert told("unseal", signed, "--key", folder / "own.key", "-o", folder / "ink.txt").returncode == 0
    assert (folder / "ink.txt").read_text().strip() == ink


@needs_program
def test_ink_may_be_bytes(ink: str, document: Path, folder: Path) -> None:
    sign_pdf(document, "text.pdf", ink=ink, at=(60, 120))
    sign_pdf(document, "bytes.pdf", ink=base64.b64decode(ink), at=(60, 120))
    sizes = {len((folder / name).read_bytes()) for name in ("text.pdf", "bytes.pdf")}
    assert len(sizes) == 1


@needs_program
def test_a_refusal_has_its_reason(ink: str, document: Path, certificate: Path, folder: Path) -> None:
    with pytest.raises(DocumentError, match="password") as refused:
        sign_pdf(document, "signed.pdf", ink=ink, at=(60, 120), certificate=certificate, password="wrong")
    assert refused.value.result == 1
    with pytest.raises(DocumentError, match="page"):
        sign_pdf(document, "signed.pdf", ink=ink, at=(60, 120), page=2)
    with pytest.raises(InvalidParametersError, match="width"):
        sign_pdf(document, "signed.pdf", ink=ink, at=(60, 120), width=-1)
    assert not (folder / "signed.pdf").exists()


def test_a_place_has_to_be_named() -> None:
    with pytest.raises(InvalidParametersError):
        sign_pdf("in.pdf", "out.pdf", ink="")
    with pytest.raises(InvalidParametersError):
        sign_pdf("in.pdf", "out.pdf", ink="", at=(1, 1), field="here")


def test_a_password_is_one_line() -> None:
    """The program would read the first line and call it wrong."""
    with pytest.raises(InvalidParametersError, match="one line"):
        sign_pdf("in.pdf", "out.pdf", ink="", at=(1, 1), certificate="own.p12", password="two\nlines")
    with pytest.raises(InvalidParametersError, match="one line"):
        sign_pdf("in.pdf", "out.pdf", ink="", at=(1, 1), document_password="two\rlines")


@needs_program
def test_one_line_is_shown(document: Path, ink: str, folder: Path) -> None:
    sign_pdf(document, "signed.pdf", ink=ink, at=(60, 120), reason="I agree", show="reason")
    assert (folder / "signed.pdf").exists()
    with pytest.raises(DocumentError):
        sign_pdf(document, "other.pdf", ink="\u00e9", at=(60, 120))


def test_no_password_is_on_the_command_line(folder: Path) -> None:
    program = folder / "program"
    program.write_text(
        '#!/bin/sh\nprintf "%s\\n" "$@" > arguments\n'
        'for one; do case $one in --password-file=*) cat "${one#*=}" > password;; esac; done\n'
    )
    program.chmod(0o755)
    sign_pdf("in.pdf", "out.pdf", ink="AA==", at=(1, 1), certificate="own.p12", password=PASSWORD, program=program)
    assert PASSWORD not in (folder / "arguments").read_text()
    assert (folder / "password").read_text() == PASSWORD + "\n"


def test_without_the_program() -> None:
    with pytest.raises(DocumentError, match="nowhere"):
        sign_pdf("in.pdf", "out.pdf", ink="", at=(1, 1), program="/nowhere/scribera-sign")
