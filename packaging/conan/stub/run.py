#!/usr/bin/env python3
"""Runs the recipes with stand-ins for Conan: run.py WORK. The package is made in WORK, and the test package takes it."""
import inspect
import pathlib
import runpy
import subprocess
import sys

STUB = pathlib.Path(__file__).resolve().parent
RECIPES = STUB.parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(STUB))

import conan  # noqa: E402
from conan.tools.cmake import CMakeToolchain  # noqa: E402


def recipe(folder, shared):
    names = runpy.run_path(str(folder / "conanfile.py")).values()
    kinds = [k for k in names if inspect.isclass(k) and issubclass(k, conan.ConanFile)]
    return next(k for k in kinds if k is not conan.ConanFile)(folder, shared)


def create(work):
    r = recipe(RECIPES, shared=False)
    r.set_version()
    r.export_sources_folder = r.source_folder = str(work / "sources")
    r.build_folder, r.package_folder = str(work / "build"), str(work / "package")
    r.export_sources()
    r.config_options()
    r.configure()
    r.layout()
    r.generate()
    r.build()
    r.package()
    r.package_info()
    assert r.cpp_info.libs == ["tessarn"], r.cpp_info.libs
    assert r.cpp_info.properties["cmake_target_name"] == "tessarn::tessarn"
    return r


def test(work, package):
    r = recipe(RECIPES / "test_package", shared=False)
    r.tested_reference_str = f"{package.name}/{package.version}"
    required = []
    r.requires = required.append
    r.run = lambda command, env: subprocess.run([command], check=True)
    r.requirements()
    assert required == [r.tested_reference_str]
    r.source_folder, r.build_folder = str(RECIPES / "test_package"), str(work / "consumer")
    CMakeToolchain(r).cache_variables["CMAKE_PREFIX_PATH"] = package.package_folder
    r.layout()
    r.cpp.build.bindir = r.build_folder
    r.build()
    r.test()


if __name__ == "__main__":
    folder = pathlib.Path(sys.argv[1])
    test(folder, create(folder))
