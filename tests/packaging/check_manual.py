#!/usr/bin/env python3
"""Compares a manual page with what its program says: the same options and commands, none missing on either side.

check_manual.py PAGE PROGRAM [ARGUMENT...]     PROGRAM ARGUMENT... --help is asked
"""

from __future__ import annotations

import re
import subprocess
import sys
from pathlib import Path

OPTION = re.compile(r"(?<![\w-])--?[A-Za-z][A-Za-z-]*")


def help_of(command: list[str]) -> str:
    outcome = subprocess.run([*command, "--help"], capture_output=True, text=True, timeout=60)
    if outcome.returncode != 0 or not outcome.stdout:
        sys.exit(f"{' '.join(command)} --help: exit code {outcome.returncode}, {outcome.stderr}")
    return outcome.stdout


def commands_in(text: str) -> set[str]:
    block = re.search(r"^Commands:\n((?:  .*\n)+)", text, re.MULTILINE)
    return set(re.findall(r"^  (\S+)", block.group(1), re.MULTILINE)) if block else set()


def commands_on(page: str) -> set[str]:
    section = re.search(r"^\.SH COMMANDS\n(.*?)(?=^\.SH )", page, re.MULTILINE | re.DOTALL)
    return set(re.findall(r"^\.B (\S+)$", section.group(1), re.MULTILINE)) if section else set()


def main() -> None:
    page = re.sub(r"\\f.", "", Path(sys.argv[1]).read_text()).replace("\\-", "-")
    program = sys.argv[2:]
    name = Path(sys.argv[1]).stem
    text = help_of(program)
    commands = commands_in(text)
    for command in commands:
        text += help_of([*program, command])

    faults = []
    if f".SH NAME\n{name} - " not in page:
        faults.append(f"the page does not name {name}")
    for kind, told, written in (
        ("option", set(OPTION.findall(text)), set(OPTION.findall(page))),
        ("command", commands, commands_on(page)),
    ):
        faults += [f"{kind} {one} is in --help and not on the page" for one in sorted(told - written)]
        faults += [f"{kind} {one} is on the page and not in --help" for one in sorted(written - told)]
    if not OPTION.search(text):
        faults.append("--help names no option")
    if faults:
        sys.exit("\n".join(f"{Path(sys.argv[1]).name}: {fault}" for fault in faults))


main()
