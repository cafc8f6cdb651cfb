"""Builds the wheel: CMake compiles the module, which has the library inside."""
import os
import pathlib
import re
import shutil
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent
# Where CMake builds; a folder that is there already is brought up to date.
BUILD = pathlib.Path(os.environ.get("TESSARN_PYTHON_BUILD", ROOT / "build" / "python"))


def version():
    header = (ROOT / "include" / "tessarn" / "version.h").read_text()
    return ".".join(re.findall(r"#define TESSARN_VERSION_\w+ (\d+)", header))


class CMakeBuild(build_ext):
    def build_extension(self, extension):
        options = [
            "TESSARN_PYTHON=ON",
            "BUILD_SHARED_LIBS=OFF",
            "TESSARN_TESTS=OFF",
            "TESSARN_EXAMPLES=OFF",
            "TESSARN_INSTALL=OFF",
            f"Python3_EXECUTABLE={sys.executable}",
            "CMAKE_BUILD_TYPE=Release",
        ]
        generator = ["-G", "Ninja"] if shutil.which("ninja") else []
        subprocess.run(["cmake", "-S", ROOT, "-B", BUILD, *generator, *(f"-D{o}" for o in options)], check=True)
        subprocess.run(
            [
                "cmake",
                "--build",
                BUILD,
                "--config",
                "Release",
                "--target",
                "tessarn_python",
                "--parallel",
                str(os.cpu_count() or 1),
            ],
            check=True,
        )
        built = next((BUILD / "python" / "tessarn").glob("**/_core.*[!i]"))  # the module, not the stubs
        target = pathlib.Path(self.get_ext_fullpath(extension.name))
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy2(built, target)


# setuptools writes its intermediate files outside of the sources.
scratch = BUILD / "setuptools"
scratch.mkdir(parents=True, exist_ok=True)

setup(
    version=version(),
    packages=["tessarn"],
    package_data={"tessarn": ["*.pyi", "py.typed"]},
    ext_modules=[Extension("tessarn._core", [])],
    cmdclass={"build_ext": CMakeBuild},
    options={"build": {"build_base": str(scratch)}, "egg_info": {"egg_base": str(scratch)}},
    zip_safe=False,
)
