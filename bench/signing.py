"""The measurement of bench/signing."""

from __future__ import annotations

import os
import statistics
import sys
import tempfile
from pathlib import Path

import writer
from checks import run
from keys import Keys
from tool import Ink, Place, environment

ROUNDS = 7
DOCUMENTS = ["icon-help", "camlpdf", "policy", "bash-reference", "evolver", "siscone", "vym"]


# A process inherits the largest memory of the one that started it: that has to be a small one.
LAUNCHER = """
import os, sys, time
start = time.monotonic()
child = os.posix_spawnp(sys.argv[1], sys.argv[1:], os.environ)
_, status, usage = os.wait4(child, 0)
print(time.monotonic() - start, usage.ru_maxrss * 1024, status)
"""


def measured(command: list[str]) -> tuple[float, int]:
    """Seconds, and the most memory in bytes."""
    done = run("/usr/bin/python3", "-I", "-S", "-c", LAUNCHER, *command, env=environment())
    took, memory, status = done.stdout.split()[-3:]
    if status != "0":
        sys.exit(f"{command[0]} failed: {done.stderr}")
    return float(took), int(memory)


def main() -> None:
    corpus, checks_promises = Path(sys.argv[1]), "--check" in sys.argv[2:]
    broken = False
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        keys = Keys(folder)
        ink = Ink(folder, "flowing")
        certificate = keys.p12("rsa")
        database = folder / "nss"
        database.mkdir()
        for command in (["certutil", "-N", "-d", database, "--empty-password"],
                        ["pk12util", "-d", database, "-i", certificate, "-W", keys.password, "-K", ""]):
            done = run(*command)
            if done.returncode:
                sys.exit(done.stderr)
        # A scan: much in few objects.
        large = folder / "large.pdf"
        large.write_bytes(writer.document(change=lambda pdf: pdf.objects.update({4: writer.stream(os.urandom(100_000_000))})))
        documents = [corpus / f"{one}.pdf" for one in DOCUMENTS] + [large]
        print(f"{'document':16}{'size':>10}{'pages':>7}{'scribera-sign':>16}{'pdfsig':>10}{'ratio':>8}{'memory':>10}{'allowed':>10}")
        for document in documents:
            out = folder / "out.pdf"
            ours = [os.environ["SCRIBERA_SIGN"], str(document), "-o", str(out), *Place(1, 5, 5, 40).options, "--ink", str(ink.file),
                    "--certificate", str(certificate), "--password-file", str(keys.password_file)]
            theirs = ["pdfsig", "-nssdir", str(database), "-add-signature", "-nick", "Signer rsa", str(document), str(out)]
            times: dict[str, list[float]] = {"ours": [], "theirs": []}
            memory = 0
            for _ in range(ROUNDS):
                for side, command in (("ours", ours), ("theirs", theirs)):
                    out.unlink(missing_ok=True)
                    took, most = measured(command)
                    times[side].append(took)
                    if side == "ours":
                        memory = max(memory, most)
            mine, other = statistics.median(times["ours"]), statistics.median(times["theirs"])
            size = document.stat().st_size
            allowed = 3 * size + 60_000_000
            pages = next(line.split()[1] for line in run("pdfinfo", document).stdout.splitlines() if line.startswith("Pages"))
            print(f"{document.stem:16}{size / 1e6:8.2f}MB{pages:>7}{mine * 1e3:13.0f} ms{other * 1e3:7.0f} ms{mine / other:8.2f}"
                  f"{memory / 1e6:8.0f}MB{allowed / 1e6:8.0f}MB")
            broken = broken or mine > 1.5 * other + 0.5 or memory > allowed
    if checks_promises and broken:
        sys.exit(1)


main()
