"""No text for people is left out: neither by the sources nor by a catalogue."""

from __future__ import annotations

import functools
import os
import re
import shutil
import subprocess
import xml.etree.ElementTree as xml
from collections.abc import Iterator
from dataclasses import dataclass
from pathlib import Path

import pytest

from sources import TREE, Text, files_in, is_for_people, texts_in, texts_of

# Which folders a catalogue is for, with all that is below them.
CATALOGUES = {
    "translations/scribera_de.ts": ("drivers", "tools", "translations"),
    "examples/qt-host/scribera-demo-host_de.ts": ("examples/qt-host",),
}

# These speak to the host's log and to tests, as parts of a driver.
DRIVER_ALONE = {
    "drivers/pen/message.h", "drivers/pen/penpad.cpp",
    *(f"drivers/simulator/{name}.cpp" for name in ("configuration", "driverlink", "exports", "person", "settings",
                                                   "simulator"))}
# What a program reads, or nobody.
NO_TEXTS = {
    ("drivers/simulator/recording.cpp", "# scribera recording 1"),
    ("drivers/simulator/recording.cpp", "\nmodel: "),
    ("drivers/simulator/recording.cpp", "\narea: "),
    ("drivers/simulator/recording.cpp", "max-pressure: "),
    # Goes to the host, whose driver writes it into its log.
    ("drivers/simulator/virtualpad/padserver.cpp", "it has another host"),
    ("drivers/simulator/virtualpad/padserver.cpp", "it speaks another version"),
    # Mistakes of the program itself.
    ("tools/pad/driver.cpp", "the folder before is gone"),
    ("tools/pad/leftovers.cpp", "too many or too long leftovers"),
    ("examples/qt-host/signaturepanel.cpp", "DejaVu Serif"),
    ("examples/qt-host/main.cpp", "Fusion"),
    ("tools/sign/appearance.cpp", " Tj ET\n"),
    ("tools/sign/appearance.cpp", "Helvetica"),
    ("tools/sign/standard_fonts.cpp", "Helvetica"),
    ("tools/sign/standard_fonts.cpp", "Courier"),
    ("tools/sign/document.cpp", "Signature"),  # begins the names of fields
    ("tools/sign/document.cpp", "reported number of objects"),  # in qpdf's words
    ("tools/sign/sealed_ink.cpp", "Scribera sealed ink "),
    ("tools/sign/sealed_ink.cpp", "document-size: "),
    ("tools/sign/sign_command.cpp", "yyyy-MM-dd HH:mm:ss t"),  # on the page, for readers in any country
}
NAMES_OF_GLYPHS = "tools/sign/fonts.cpp"
STYLE_SHEET = re.compile(r"#\w+ \{|background: %1$")


def left_out(texts: list[Text]) -> list[Text]:
    return [text for text in texts
            if is_for_people(text.text) and not text.is_looked_up and text.file not in DRIVER_ALONE
            and (text.file, text.text) not in NO_TEXTS and not STYLE_SHEET.match(text.text)
            and (text.file != NAMES_OF_GLYPHS or " " in text.text)]


@dataclass
class Message:
    context: str
    source: str
    translations: list[str]
    state: str


def messages_of(catalogue: str) -> Iterator[Message]:
    for context in xml.fromstring(catalogue).iter("context"):
        for message in context.iter("message"):
            translation = message.find("translation")
            assert translation is not None
            forms = [form.text or "" for form in translation.iter("numerusform")] or [translation.text or ""]
            yield Message(context.findtext("name") or "", message.findtext("source") or "", forms,
                          translation.get("type", "finished"))


def placeholders(text: str) -> list[str]:
    return sorted(re.findall(r"%L?\d|%n", text))


def faults_of(catalogue: str, texts: list[Text]) -> list[str]:
    """Everything that a person would miss in a program with this catalogue."""
    faults = []
    known = set()
    for message in messages_of(catalogue):
        known.add(message.source)
        place = f"{message.context}: {message.source!r}"
        if message.state != "finished":
            faults.append(f"{place} is {message.state}")
        for translation in message.translations:
            if not translation:
                faults.append(f"{place} has no translation")
            elif placeholders(translation) != placeholders(message.source):
                faults.append(f"{place} has other values in {translation!r}")
            elif translation[-1:].isspace() != message.source[-1:].isspace():
                faults.append(f"{place} ends otherwise in {translation!r}")
            elif ("&" in translation) != ("&" in message.source):
                faults.append(f"{place} has no key, or one too many, in {translation!r}")
            elif translation == message.source and len(re.findall(r"[a-z]{3,}", translation)) > 2:
                faults.append(f"{place} is not translated")
    faults += [f"{text.file}:{text.line}: {text.text!r} is not in the catalogue"
               for text in texts if text.is_looked_up and text.text not in known]
    return faults


@functools.cache
def source_of(file: str) -> str:
    return (TREE / file).read_text(encoding="utf-8")


TEXTS = {name: texts_of(files_in(*folders)) for name, folders in CATALOGUES.items()}
ALL_TEXTS = [text for texts in TEXTS.values() for text in texts]


def test_every_text_for_people_is_looked_up() -> None:
    assert left_out(ALL_TEXTS) == []


def test_what_is_left_out_is_found() -> None:
    """Each text in its turn, as it would be without its lookup."""
    for text in ALL_TEXTS:
        if text.is_looked_up and is_for_people(text.text):
            source = source_of(text.file)
            changed = source[:text.call] + re.sub(r"^\w+", "print", source[text.call:])
            assert any(found.text == text.text for found in left_out(texts_in(changed, text.file))), text


@pytest.mark.parametrize("word", ["Cancel", "&Replay…", "Re&cord", "strokes:", "Saved.", "Why?\\n"])
def test_one_word_alone_is_found(word: str) -> None:
    assert [text.text for text in left_out(texts_in(f'show("{word}");', "a.cpp"))] == [word.replace("\\n", "\n")]


@pytest.mark.parametrize("name", ["DISPLAY", "stretch", "--model", "a.png", "K210", "QWidget", "%1: %2", "&"])
def test_a_name_may_stand_alone(name: str) -> None:
    assert left_out(texts_in(f'show("{name}");', "a.cpp")) == []


@pytest.mark.parametrize("name", CATALOGUES)
def test_a_catalogue_is_complete(name: str) -> None:
    assert faults_of((TREE / name).read_text(encoding="utf-8"), TEXTS[name]) == []


@pytest.mark.parametrize("change", [
    ("<translation>Striche:</translation>", '<translation type="unfinished"></translation>', "unfinished"),
    ("<translation>Striche:</translation>", "<translation></translation>", "no translation"),
    ("%1: lässt sich nicht lesen: %2", "%1: lässt sich nicht lesen", "other values"),
    ("&amp;Modell", "Modell", "no key"),
    ("<source>strokes:</source>", "<source>lines:</source>", "'strokes:' is not in the catalogue"),
    ("Die Punkte als kommagetrennte Werte.", "The points as comma-separated values.", "not translated"),
])
def test_a_fault_of_a_catalogue_is_found(change: tuple[str, str, str]) -> None:
    before, after, fault = change
    name = "translations/scribera_de.ts"
    catalogue = (TREE / name).read_text(encoding="utf-8")
    assert before in catalogue
    assert any(fault in found for found in faults_of(catalogue.replace(before, after), TEXTS[name]))


def test_the_catalogues_are_as_the_sources(tmp_path: Path) -> None:
    """Qt's own reader of sources finds nothing new and nothing that is gone."""
    for name in CATALOGUES:
        copy = tmp_path / Path(name).name
        shutil.copy(TREE / name, copy)
        subprocess.run([TREE / "scripts" / "translations", name, copy], check=True,
                       env={**os.environ, "LUPDATE": os.environ["SCRIBERA_LUPDATE"]})
        assert copy.read_text(encoding="utf-8") == (TREE / name).read_text(encoding="utf-8")
