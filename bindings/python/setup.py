"""Puts the shared library into the wheel when SCRIBERA_WHEEL_LIBRARY names it; ./wheel does that. Without it the
wheel is of Python alone."""

import os
import shutil
import struct
from pathlib import Path

from setuptools import Distribution, setup
from setuptools.command.build_py import build_py

try:
    from setuptools.command.bdist_wheel import bdist_wheel
except ImportError:  # setuptools before 70.1
    from wheel.bdist_wheel import bdist_wheel

LIBRARY = os.environ.get("SCRIBERA_WHEEL_LIBRARY")
MACHINES = {62: "x86_64", 183: "aarch64"}  # of ELF, and what Python calls them


def platform_of(library):
    """The wheel's platform, which is the library's and not that of the machine that builds the wheel."""
    with open(library, "rb") as file:
        header = file.read(20)
    if header[:6] != b"\x7fELF\x02\x01":
        raise SystemExit(f"{library} is no library for 64 bits")
    (machine,) = struct.unpack_from("<H", header, 18)
    if machine not in MACHINES:
        raise SystemExit(f"{library} is for a machine that the package does not know: {machine}")
    return f"linux_{MACHINES[machine]}"


def name_of(library):
    """What the library is called in the package: by its Qt, whatever number its file bears."""
    return f"libscriberasdk{'-qt6' if '-qt6' in Path(library).name else ''}.so.1"


class BuildWithLibrary(build_py):
    def run(self):
        super().run()
        if LIBRARY:
            shutil.copyfile(LIBRARY, Path(self.build_lib, "scribera", name_of(LIBRARY)))


class WheelWithLibrary(bdist_wheel):
    def finalize_options(self):
        super().finalize_options()
        self.root_is_pure = not LIBRARY

    def get_tag(self):
        # By ctypes any Python of any ABI calls the library.
        return ("py3", "none", platform_of(LIBRARY) if LIBRARY else "any")


class WithLibrary(Distribution):
    def has_ext_modules(self):
        return bool(LIBRARY)


setup(distclass=WithLibrary, cmdclass={"build_py": BuildWithLibrary, "bdist_wheel": WheelWithLibrary})
