#!/usr/bin/env python3
"""Checks the wheels that carry the library, without Qt and with it: in fresh environments without network and other
packages, a signature is taken with the wheel's own library, and with its own Qt where it has one.

check_wheel.py --wheel PROGRAM --sbom PROGRAM --library LIBRARY --driver DRIVER --work FOLDER [--python INTERPRETER]...
"""

from __future__ import annotations

import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile
import zipfile
from pathlib import Path

SIGN = """
import asyncio, ctypes, sys
import scribera
from scribera import Pad, Status

async def sign(pad):
    points = pad.live_points()
    status = await pad.wait_async(120)
    points.close()
    return status, [point async for point in points]

with Pad("K210", size=(300, 200)) as pad:
    status, points = asyncio.run(sign(pad))
    assert status is Status.CONFIRM and len(points) == len(pad) > 10, (status, len(points), len(pad))
    assert pad.png().startswith(b"\\x89PNG") and "</svg>" in pad._repr_svg_()
    assert pad.jpeg().startswith(b"\\xff\\xd8\\xff") and pad.pdf().startswith(b"%PDF")
    assert pad[0].when.utcoffset() is not None
    maps = open("/proc/self/maps").read().splitlines()
    print(*sorted({line.split()[-1] for line in maps if "libscriberasdk" in line or "libQt" in line or "libqjpeg" in line}))
    try:
        pad.array()
    except ImportError as error:
        assert "python3-numpy" in str(error)
    else:
        sys.exit("there is a NumPy in an environment of its own")
"""


def run(*command: str | Path, **options: object) -> str:
    done = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, text=True, **options)  # type: ignore
    if done.returncode != 0:
        sys.exit(f"{command[0]} ended with {done.returncode}:\n{done.stdout}")
    return done.stdout


def without_network() -> list[str]:
    """A prefix that takes the network away; empty where the system does not allow that."""
    for prefix in (["unshare", "--net"], ["unshare", "--user", "--map-root-user", "--net"]):
        if subprocess.run([*prefix, "true"], capture_output=True).returncode == 0:
            return prefix
    return []


def members(wheel: Path) -> list[str]:
    with zipfile.ZipFile(wheel) as archive:
        return archive.namelist()


def tag(wheel: Path) -> str:
    with zipfile.ZipFile(wheel) as archive:
        (name,) = (name for name in archive.namelist() if name.endswith(".dist-info/WHEEL"))
        return archive.read(name).decode()


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--wheel", type=Path, required=True)
    parser.add_argument("--sbom", type=Path, required=True)
    parser.add_argument("--library", type=Path, required=True)
    parser.add_argument("--driver", type=Path, required=True)
    parser.add_argument("--work", type=Path, required=True)
    parser.add_argument("--python", type=Path, action="append", default=[])
    arguments = parser.parse_args()
    for name in ("wheel", "sbom", "library", "driver", "work"):
        setattr(arguments, name, getattr(arguments, name).resolve())
    arguments.work.mkdir(parents=True, exist_ok=True)
    folder = Path(tempfile.mkdtemp(dir=arguments.work))
    prefix = without_network()
    foreign = ("SCRIBERA_", "PIP_", "PYTHON", "LD_LIBRARY_PATH")
    environment = {name: value for name, value in os.environ.items() if not name.startswith(foreign)}

    plain = Path(run(*prefix, arguments.wheel, "--output", folder / "plain", env=environment).strip())
    assert plain.name.endswith("-py3-none-any.whl") and "Tag: py3-none-any\n" in tag(plain), plain
    assert "Root-Is-Purelib: true" in tag(plain) and not any(".so" in name for name in members(plain))

    platform = f"py3-none-linux_{os.uname().machine}"
    wheel = Path(run(*prefix, arguments.wheel, "--output", folder, arguments.library, env=environment).strip())
    assert wheel.name.endswith(f"-{platform}.whl") and f"Tag: {platform}\n" in tag(wheel), wheel
    assert "Root-Is-Purelib: false" in tag(wheel)
    name = arguments.library.name[: arguments.library.name.index(".so") + len(".so.1")]
    with zipfile.ZipFile(wheel) as archive:
        assert archive.read(f"scribera/{name}") == arguments.library.read_bytes()
    more = set(members(wheel)) - set(members(plain))
    assert {name for name in more if not name.endswith(".spdx.json")} == {f"scribera/{name}"}, more

    whole = Path(run(*prefix, arguments.wheel, "--with-qt", "--output", folder, arguments.library, env=environment).strip())
    platform = whole.name.removeprefix(f"{plain.name.removesuffix('-none-any.whl')}-none-").removesuffix(".whl")
    assert re.fullmatch(rf"manylinux_2_\d+_{os.uname().machine}", platform) and f"Tag: py3-none-{platform}\n" in tag(whole), whole
    carried = {Path(one).name.split(".")[0] for one in members(whole) if one.startswith("scribera/qt/")}
    assert {"libqjpeg", "LGPL-3", "packages"} <= carried and not carried & {"libc", "libstdc++"}, carried
    run(sys.executable, arguments.sbom, "--damaged", wheel, whole)

    (folder / "text.so").write_text("not a library\n" * 10)
    refused = subprocess.run(
        [arguments.wheel, "--output", folder / "refused", folder / "text.so"], env=environment, capture_output=True
    )
    assert refused.returncode == 1 and b"is no library for 64 bits" in refused.stderr, refused
    assert not list((folder / "refused").iterdir())

    trials = [(python, wheel) for python in arguments.python] + [(python, whole) for python in arguments.python[:1]]
    for number, (python, chosen) in enumerate(trials):
        environ = folder / f"environment{number}"
        own = environ / "bin" / "python"
        pip = [own, "-m", "pip", "--disable-pip-version-check"]
        run(*prefix, python, "-m", "venv", environ, env=environment)
        run(*prefix, *pip, "install", "--quiet", "--no-index", chosen, env=environment)
        place = folder / f"place{number}"
        place.mkdir()
        (place / "libscriberadrv.so").symlink_to(arguments.driver)
        simulated = {
            "SCRIBERA_SIM_RECORDING": str(Path(__file__).parents[2] / "drivers/simulator/recordings/initials.rec"),
            "SCRIBERA_SIM_RATE": "max",
            "SCRIBERA_SIM_KEY": "confirm",
            "SCRIBERA_SIM_START_MS": "1000",
        }
        loaded = run(*prefix, own, "-c", SIGN, cwd=place, env=environment | simulated).split()
        (package,) = (environ / "lib").glob("python3*/site-packages/scribera")
        library, qt = str(package.resolve() / name), str(package.resolve() / "qt") + "/"
        assert library in loaded and any("/libqjpeg.so" in one for one in loaded), loaded
        others = [one for one in loaded if one != library]
        assert all(one.startswith(qt) == (chosen == whole) for one in others), loaded
        print(f"{python}: a signature with {library} and the Qt of {qt if chosen == whole else 'the system'}")
    shutil.rmtree(folder)


if __name__ == "__main__":
    main()
