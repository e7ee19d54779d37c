"""Keys and inks are made once for all tests of a run; each test has a folder of its own."""

from __future__ import annotations

import pytest

from keys import Keys
from tool import Ink, Tool


@pytest.fixture(scope="session")
def keys(tmp_path_factory: pytest.TempPathFactory) -> Keys:
    return Keys(tmp_path_factory.mktemp("keys"))


@pytest.fixture(scope="session")
def tool(keys: Keys, tmp_path_factory: pytest.TempPathFactory) -> Tool:
    folder = tmp_path_factory.mktemp("inks")
    return Tool(keys, {name: Ink(folder, name) for name in ("initials", "flowing", "paraph")})
