#!/usr/bin/env python3
"""CMake configures a host with the library's Qt or none, and refuses one with windows of the other Qt.

    check_qt_mix.py BUILD QT WORK
"""

import shutil
import subprocess
import sys
from pathlib import Path


def run(*command: object) -> tuple[int, str]:
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    return done.returncode, done.stdout


def main() -> None:
    build, qt, work = Path(sys.argv[1]), sys.argv[2], Path(sys.argv[3])
    shutil.rmtree(work, ignore_errors=True)
    prefix = work / "prefix"
    for component in ("runtime", "development"):
        code, text = run("cmake", "--install", build, "--prefix", prefix, "--component", component)
        assert code == 0, text
    host = Path(__file__).resolve().parents[1] / "consumer" / "other_qt"
    configure = ("cmake", "-S", host, "-B", work / "host", "-G", "Ninja", f"-DCMAKE_PREFIX_PATH={prefix}", f"-DQT={qt}")
    code, text = run(*configure)
    assert code == 0, text
    code, text = run(*configure, "-DMIXED=ON")
    assert code != 0, "the mix is not refused"
    words = " ".join(text.split())
    name = "Scribera::scriberasdk" if qt == "5" else "Scribera::scriberasdk-qt6"
    reason = (
        f'The INTERFACE_QT_MAJOR_VERSION property of "{name}" does not agree with the value of QT_MAJOR_VERSION '
        'already determined for "mixed".'
    )
    assert reason in words, text
    shutil.rmtree(work)


if __name__ == "__main__":
    main()
