"""What other programs say about a signed file, and what its bytes and its picture say."""

from __future__ import annotations

import re
import subprocess
import tempfile
from dataclasses import dataclass
from pathlib import Path

RANGES = re.compile(rb"/ByteRange\s*\[\s*(\d+)\s+(\d+)\s+(\d+)\s+(\d+)\s*\]")


@dataclass
class Signature:
    """One that is in a file's bytes."""

    ranges: tuple[int, int, int, int]
    covered: bytes
    cms: bytes  # with the zeros that fill its place

    @property
    def end(self) -> int:
        return self.ranges[2] + self.ranges[3]

    @property
    def der(self) -> bytes:
        """Without the zeros behind it."""
        assert self.cms[0] == 0x30
        first = self.cms[1]
        if first < 0x80:
            return self.cms[: 2 + first]
        count = first & 0x7F
        return self.cms[: 2 + count + int.from_bytes(self.cms[2 : 2 + count], "big")]


def signatures(document: bytes) -> list[Signature]:
    found = []
    for match in RANGES.finditer(document):
        start, length, second, rest = (int(part) for part in match.groups())
        hexadecimal = document[start + length : second]
        assert start == 0 and hexadecimal[:1] == b"<" and hexadecimal[-1:] == b">", "a gap that is no string"
        covered = document[:length] + document[second : second + rest]
        found.append(Signature((start, length, second, rest), covered, bytes.fromhex(hexadecimal[1:-1].decode())))
    return sorted(found, key=lambda one: one.end)


def run(*command: str | Path, **how: object) -> subprocess.CompletedProcess[str]:
    how = {"capture_output": True, "text": True, "timeout": 120, "errors": "replace", **how}
    return subprocess.run([str(part) for part in command], **how)  # type: ignore[call-overload, no-any-return]


def output_of(*command: str | Path) -> bytes:
    return subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, check=True, timeout=120).stdout


def check_by_openssl(signature: Signature, authority: Path) -> str:
    """Holds the CMS against the bytes and what a PAdES baseline B signature is; gives the structure's text."""
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        (folder / "cms").write_bytes(signature.der)
        (folder / "covered").write_bytes(signature.covered)
        verified = run("openssl", "cms", "-verify", "-cades", "-binary", "-inform", "DER", "-in", folder / "cms", "-content",
                       folder / "covered", "-CAfile", authority, "-purpose", "any", "-out", "/dev/null")
        assert verified.returncode == 0, verified.stderr
        text = run("openssl", "cms", "-cmsout", "-print", "-inform", "DER", "-in", folder / "cms").stdout
    assert not any(signature.cms[len(signature.der) :]), "something behind the signature"
    for name in ("contentType", "messageDigest", "id-smime-aa-signingCertificateV2"):
        assert name in text, text
    assert "eContent: <ABSENT>" in text, "the content is in the signature, too"
    assert not re.search(r"algorithm: (md5|sha1)\b", text), text
    # The claimed time belongs into the dictionary: PAdES forbids the attribute.
    assert "signingTime" not in text
    return text


def said_by_pdfsig(file: Path, *options: str) -> list[dict[str, str]]:
    told = run("pdfsig", "-nocert", *options, file)
    parts = re.split(r"^Signature #\d+:\n", told.stdout, flags=re.MULTILINE)[1:]
    said = []
    for part in parts:
        if "is not signed" in part:
            continue
        lines = (line.strip(" -\t").partition(":") for line in part.splitlines() if line.startswith("  "))
        said.append({name.strip(): value.strip() for name, _, value in lines})
        said[-1]["whole"] = str("Total document signed" in part)
    return said


def check_by_pdfsig(file: Path, count: int, *options: str) -> list[dict[str, str]]:
    said = said_by_pdfsig(file, *options)
    assert len(said) == count, said
    for one in said:
        assert one["Signature Validation"] == "Signature is Valid.", one
        assert one["Signature Type"] == "ETSI.CAdES.detached", one
    assert [one["whole"] for one in said].count("True") == 1, said
    return said


def check_by_qpdf(file: Path, *options: str) -> None:
    told = run("qpdf", "--check", *options, file)
    assert told.returncode == 0, told.stdout + told.stderr


def accepted_by_pdfsig(file: Path) -> bool:
    """Whether it holds every signature of the file for valid, and one of them for that of the whole file."""
    said = said_by_pdfsig(file)
    return (bool(said) and all(one.get("Signature Validation") == "Signature is Valid." for one in said)
            and any(one["whole"] == "True" for one in said))
