"""Packages that a few methods need and the others do not."""

from __future__ import annotations

from importlib import import_module
from typing import Any


def optional(module: str, package: str, debian: str, needed_for: str) -> Any:
    """The module, imported when it is needed. Raises ImportError that says what to install."""
    try:
        return import_module(module)
    except ImportError as error:
        raise ImportError(
            f"{needed_for} needs {package}: install {debian} (Debian) or {package} (pip)", name=error.name
        ) from error
