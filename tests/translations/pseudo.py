"""Writes the pseudo catalogue: every text longer, with accents and in brackets, and windows that run from right to left.

Whatever shows without the brackets was not translated; whatever is cut off has no room for a longer language.
"""

from __future__ import annotations

import re
import sys
import xml.etree.ElementTree as xml
from pathlib import Path

BEGIN, END = "⟦", "⟧"
ACCENTS = str.maketrans("aceinorsuyzACEINORSUYZ", "àçéîñöřşûýžÀÇÉÎÑÖŘŞÛÝŽ")
LENGTHENING = 0.4
# What a program reads: numbers of values, kinds of files.
UNTOUCHED = re.compile(r"(%L?\d|%n|\(\*[^)]*\))")


def pseudo(text: str) -> str:
    parts = [part if UNTOUCHED.fullmatch(part) else part.translate(ACCENTS) for part in UNTOUCHED.split(text)]
    body = "".join(parts)
    line = body.rstrip("\n")
    padding = "~" * max(2, round(len(line) * LENGTHENING))
    # Of a long text, every line but the last keeps its length: help has lines as long as the terminal.
    return f"{BEGIN}{line} {padding if len(line) < 100 else '~~~~'}{END}{body[len(line):]}"


def translate(message: xml.Element) -> None:
    source = message.findtext("source") or ""
    translation = message.find("translation")
    assert translation is not None
    translation.clear()
    if source == "QT_LAYOUT_DIRECTION":
        text = "RTL"
    elif (message.findtext("comment") or "").startswith("date"):
        text = f"{BEGIN}yyyy-MM-dd{END}"  # names of months are the locale's
    else:
        text = pseudo(source)
    if message.get("numerus") == "yes":
        for _ in range(2):
            xml.SubElement(translation, "numerusform").text = text
    else:
        translation.text = text


def main() -> None:
    catalogue, output = map(Path, sys.argv[1:])
    tree = xml.parse(catalogue)
    tree.getroot().set("language", "en_XA")
    for message in tree.getroot().iter("message"):
        translate(message)
    with output.open("wb") as file:
        file.write(b'<?xml version="1.0" encoding="utf-8"?>\n<!DOCTYPE TS>\n')
        tree.write(file, encoding="utf-8")


if __name__ == "__main__":
    main()
