"""What the sources say to people: texts that are looked up in a catalogue, and texts that are not."""

from __future__ import annotations

import re
from dataclasses import dataclass
from pathlib import Path

TREE = Path(__file__).resolve().parents[2]

# The functions and macros that look a text up, and which of their arguments it is.
LOOKUPS = {"tr": 0, "trText": 1, "translate": 1, "QT_TRANSLATE_NOOP": 1, "TR_LATER": 1}

LITERAL = r'"(?:[^"\\\n]|\\.)*"'
TOKEN = re.compile(
    rf"//[^\n]*|/\*.*?\*/|^[ \t]*#(?:[^\n\\]|\\\n)*|{LITERAL}|'(?:[^'\\\n]|\\.)+'|\d[\d']*|\w+|[(){{}},;:?]",
    re.DOTALL | re.MULTILINE)
ESCAPES = {"n": "\n", "t": "\t", '"': '"', "'": "'", "\\": "\\"}
TWO_WORDS = re.compile(r"[A-Za-z]{2,}['.,:;]? +['(]?[A-Za-z%]{2,}|[a-z]{2,}:? +['\"]?%\d|%\d[',:;]* +[a-z]{2,}|[a-z]{2,}: $")
# One word alone is for people with a capital, a key or an end; otherwise it may as well be a name.
ONE_WORD = re.compile(r"[A-Z][a-z]{2,}\.?|[A-Za-z]*&[A-Za-z]+|[A-Za-z&]*[a-z]{2}(…|\.\.\.|[:!?])\n?")
PROGRAM_BEFORE_ITS_WORDS = re.compile(r"scribera[-a-z]*: %[s1]\n(%s\n)?")


@dataclass(frozen=True)
class Text:
    file: str
    line: int
    text: str
    call: int  # where the call stands that looks it up; -1 without one

    @property
    def is_looked_up(self) -> bool:
        return self.call >= 0


def unescaped(literal: str) -> str:
    def replaced(match: re.Match[str]) -> str:
        code = match.group(1)
        return chr(int(code[1:], 16)) if code[0] == "u" else ESCAPES.get(code[0], "")

    return re.sub(r"\\(u[0-9a-fA-F]{4}|.)", replaced, literal[1:-1])


def texts_in(source: str, name: str) -> list[Text]:
    """All literals; those that stand side by side are one."""
    found: list[Text] = []
    calls = [("", 0, 0)]  # the open brackets: what is called, which of its arguments this is, where it stands
    previous, previous_at = "", 0
    for match in TOKEN.finditer(source):
        token = match.group()
        if token.startswith(("//", "/*")) or token.lstrip().startswith("#"):
            continue
        name_of_call, argument, at = calls[-1]
        if token in ("(", "{"):
            calls.append((previous if token == "(" else "", 0, previous_at))
        elif token in (")", "}") and len(calls) > 1:
            calls.pop()
        elif token == ",":
            calls[-1] = (name_of_call, argument + 1, at)
        elif token.startswith('"') and LOOKUPS.get(name_of_call, argument) == argument:
            # Other arguments are the context, or tell translators texts of the same wording apart.
            if previous.startswith('"'):
                last = found.pop()
                found.append(Text(name, last.line, last.text + unescaped(token), last.call))
            else:
                line = source.count("\n", 0, match.start()) + 1
                found.append(Text(name, line, unescaped(token), at if name_of_call in LOOKUPS else -1))
        previous, previous_at = token, match.start()
    return found


def is_for_people(text: str) -> bool:
    """Whether it looks like words of a sentence rather than a name or a format."""
    is_of_words = TWO_WORDS.search(text) or ONE_WORD.fullmatch(text)
    return is_of_words is not None and not PROGRAM_BEFORE_ITS_WORDS.fullmatch(text)


def files_in(*folders: str) -> list[Path]:
    return sorted(path for folder in folders for path in (TREE / folder).rglob("*") if path.suffix in (".cpp", ".h"))


def texts_of(paths: list[Path]) -> list[Text]:
    return [text for path in paths
            for text in texts_in(path.read_text(encoding="utf-8"), str(path.relative_to(TREE)))]
