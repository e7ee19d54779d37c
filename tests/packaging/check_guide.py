#!/usr/bin/env python3
"""Follows the links of pages: each has to lead to a file, and to a place in it.

check_guide.py FOLDER PAGE...     the pages below FOLDER that are told, and all to which they lead
"""

from __future__ import annotations

import re
import sys
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote


class Page(HTMLParser):
    def __init__(self, path: Path) -> None:
        super().__init__()
        self.links: list[str] = []
        self.places: set[str] = set()
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag: str, attrs: list[tuple[str, str | None]]) -> None:
        for name, value in attrs:
            if name in ("id", "name") and value:
                self.places.add(value)
            if name in ("href", "src") and value:
                self.links.append(value)


def main() -> None:
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    root = Path(sys.argv[1]).resolve()
    pages: dict[Path, Page] = {}

    def page(path: Path) -> Page:
        if path not in pages:
            pages[path] = Page(path)
            waiting.append(path)
        return pages[path]

    waiting: list[Path] = []
    for name in sys.argv[2:]:
        page(root / name)
    faults, links = [], 0
    while waiting:
        path = waiting.pop()
        for link in pages[path].links:
            if re.match(r"[a-z][a-z0-9+.-]*:", link):
                continue
            target, _, place = link.partition("#")
            file = (path.parent / unquote(target)).resolve() if target else path
            links += 1
            if not file.is_file() or root not in file.parents:
                faults.append(f"{path.relative_to(root)}: {link}: no such file")
            elif file.suffix == ".html" and unquote(place) not in page(file).places | {""}:
                faults.append(f"{path.relative_to(root)}: {link}: no such place")
    if faults:
        sys.exit("\n".join(faults))
    print(f"{links} links on {len(pages)} pages lead somewhere")


main()
