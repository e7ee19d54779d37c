"""Puts what `carry` has laid out, the shared library above all, into the wheel; ./wheel sets the environment for it.
Without it the wheel is of Python alone."""

import os
import shutil
import subprocess
from pathlib import Path

from setuptools import Distribution, setup
from setuptools.command.build_py import build_py

try:
    from setuptools.command.bdist_wheel import bdist_wheel
except ImportError:  # setuptools before 70.1
    from wheel.bdist_wheel import bdist_wheel

CARRIED = os.environ.get("SCRIBERA_WHEEL_CARRIED")  # a folder
SBOM = os.environ.get("SCRIBERA_WHEEL_SBOM")  # the program that says what the wheel holds
PLATFORM = os.environ.get("SCRIBERA_WHEEL_PLATFORM", "any")  # the library's, not that of the machine that builds the wheel


class BuildWithLibrary(build_py):
    def run(self):
        super().run()
        if CARRIED:
            shutil.copytree(CARRIED, Path(self.build_lib, "scribera"), dirs_exist_ok=True)


class WheelWithLibrary(bdist_wheel):
    def finalize_options(self):
        super().finalize_options()
        self.root_is_pure = not CARRIED

    def get_tag(self):
        # By ctypes any Python of any ABI calls the library.
        return ("py3", "none", PLATFORM)

    def write_wheelfile(self, *arguments, **options):
        super().write_wheelfile(*arguments, **options)
        # The wheel lies there unpacked, but for the list of its files.
        if SBOM:
            subprocess.run([SBOM, "--wheel", self.bdist_dir], check=True)


class WithLibrary(Distribution):
    def has_ext_modules(self):
        return bool(CARRIED)


setup(distclass=WithLibrary, cmdclass={"build_py": BuildWithLibrary, "bdist_wheel": WheelWithLibrary})
