#!/usr/bin/env python3
"""Compares what bash completes with what the program says: commands, options and models, none missing on either side.

check_completion.py COMPLETION PROGRAM
"""

from __future__ import annotations

import re
import subprocess
import sys
from pathlib import Path

OPTION = re.compile(r"(?<![\w-])--?[A-Za-z][A-Za-z-]*")

# What bash does when somebody presses Tab behind these words.
PRESS_TAB = """
source "$1"
shift
COMP_WORDS=("$@")
COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
function=$(complete -p "$1" | sed 's/.*-F \\([^ ]*\\).*/\\1/')
"$function"
printf '%s\\n' "${COMPREPLY[@]}"
"""


def offered(completion: str, *words: str) -> set[str]:
    outcome = subprocess.run(
        ["bash", "-c", PRESS_TAB, "bash", completion, *words], capture_output=True, text=True, timeout=60, check=True
    )
    if outcome.stderr:
        sys.exit(outcome.stderr)
    return set(outcome.stdout.split())


def help_of(program: str, *arguments: str) -> str:
    return subprocess.run(
        [program, *arguments, "--help"], capture_output=True, text=True, timeout=60, check=True
    ).stdout


def main() -> None:
    completion, program = sys.argv[1:]
    name = Path(program).name
    faults: list[str] = []

    def compare(place: str, completed: set[str], told: set[str]) -> None:
        faults.extend(f"{place}: {word} is completed and not in --help" for word in sorted(completed - told))
        faults.extend(f"{place}: {word} is in --help and not completed" for word in sorted(told - completed))

    general = help_of(program)
    block = re.search(r"^Commands:\n((?:  .*\n)+)", general, re.MULTILINE)
    commands = set(re.findall(r"^  (\S+)", block.group(1), re.MULTILINE)) if block else set()
    if not commands:
        faults.append("--help names no command")
    compare(name, offered(completion, name, ""), commands | {"--help", "--version"})
    if "\nOptions:" in general:  # of what the program does without a command
        told = set(re.findall(OPTION, general[general.index("\nOptions:") :].split("\n\n")[0]))
        compare(f"{name} without a command", offered(completion, name, "file", "-"), told)
    for command in sorted(commands):
        text = help_of(program, command)
        told = set(re.findall(OPTION, text[text.index("Options:") :].split("\nArguments:")[0]))
        compare(command, offered(completion, name, command, "-"), told)
        if "--model" in told:
            models = re.search(r"The pad: ([\w\s,]+);", text)
            compare(command, offered(completion, name, command, "--model", ""), set(re.findall(r"\w+", models.group(1) if models else "")))
    if faults:
        sys.exit("\n".join(faults))


main()
