"""Documents that others made, each signed twice: by an RSA certificate, then by one of an EC key."""

from __future__ import annotations

import os
from pathlib import Path

import pytest

from documents import DAMAGED, DOCUMENTS
from looking import View, check_page, expected_box
from test_documents import places
from tool import Tool, listing, one_line

CORPUS = Path(os.environ["SCRIBERA_SIGN_CORPUS"])
SOUND = [name for name in DOCUMENTS if name not in DAMAGED]
HALF = {"1": SOUND[::2], "2": SOUND[1::2]}.get(os.environ.get("SCRIBERA_TEST_HALF", ""), SOUND)


@pytest.mark.parametrize("name", HALF)
def test_signed_twice(tool: Tool, tmp_path: Path, name: str) -> None:
    original = CORPUS / f"{name}.pdf"
    once, twice = tmp_path / "once.pdf", tmp_path / "twice.pdf"
    page = DOCUMENTS[name].page
    view = View(page)
    first, second = places(view.size(original), page)
    tool.checked(original, once, first, "rsa")
    tool.checked(once, twice, second, "ec", ink="flowing")
    check_page(original, once, view, tool.inks["initials"], expected_box(tool.inks["initials"], first))
    check_page(once, twice, view, tool.inks["flowing"], expected_box(tool.inks["flowing"], second))
    verified = tool.run("verify", twice, "--trust", tool.keys.authority)
    assert verified.returncode == 0, verified.stdout + verified.stderr


@pytest.mark.parametrize("name", DAMAGED)
def test_is_refused(tool: Tool, tmp_path: Path, name: str) -> None:
    """Readers repair it, each in its own way: nobody could say what was signed."""
    view = View(DOCUMENTS[name].page)
    first, _ = places(view.size(CORPUS / f"{name}.pdf"), view.page)
    done = tool.sign(CORPUS / f"{name}.pdf", tmp_path / "signed.pdf", first)
    assert done.returncode == 1 and "damaged" in one_line(done)
    assert listing(tmp_path) == []
