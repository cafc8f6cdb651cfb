"""The package as a whole: examples, stubs, types, version, self-check."""
import doctest
import importlib.util
import os
import pathlib
import re
import subprocess
import sys

import numpy as np
import pytest

import tessarn

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent


def examples():
    """Every docstring of the package that has an example, by the name of its object."""
    found = {"tessarn": tessarn.__doc__}
    for name, member in vars(tessarn).items():
        if not name.startswith("__") and ">>>" in (getattr(member, "__doc__", None) or ""):
            found[name] = member.__doc__
    return found


@pytest.mark.parametrize("name", examples())
def test_example(name):
    test = doctest.DocTestParser().get_doctest(examples()[name], {"tessarn": tessarn, "np": np}, name, None, 0)
    report = []
    result = doctest.DocTestRunner(verbose=False).run(test, out=report.append)
    assert result.attempted > 0 and result.failed == 0, "".join(report)


def test_the_page_of_the_manual():
    """The examples of docs/python.md, run in their order."""
    text = (ROOT / "docs" / "python.md").read_text()
    blocks = re.findall(r"```pycon\n(.*?)```", text, re.DOTALL)
    assert len(blocks) >= 3
    test = doctest.DocTestParser().get_doctest("\n".join(blocks), {}, "docs/python.md", None, 0)
    report = []
    assert doctest.DocTestRunner(verbose=False).run(test, out=report.append).failed == 0, "".join(report)


def test_every_function_and_class_is_documented():
    for name in dir(tessarn):
        if not name.startswith("_"):
            assert getattr(tessarn, name).__doc__, name


def test_the_version_is_that_of_the_headers():
    header = (ROOT / "include" / "tessarn" / "version.h").read_text()
    assert tessarn.__version__ == ".".join(re.findall(r"#define TESSARN_VERSION_\w+ (\d+)", header))


def test_stubs_are_those_of_the_module():
    package = pathlib.Path(tessarn.__file__).parent
    done = subprocess.run(
        [sys.executable, ROOT / "python" / "stubs.py", package.parent, "--check"], text=True, capture_output=True
    )
    assert done.returncode == 0, done.stderr


def mypy(*files, cwd):
    checker = importlib.util.find_spec("mypy") and [sys.executable, "-m", "mypy"]
    assert checker, "mypy is missing: tools/install.sh python"
    found = cwd / "found"  # mypy refuses the folder of installed packages as a place to look
    found.mkdir(exist_ok=True)
    if not (found / "tessarn").exists():
        (found / "tessarn").symlink_to(pathlib.Path(tessarn.__file__).parent)
    environment = dict(os.environ, MYPYPATH=str(found))
    return subprocess.run(
        [*checker, "--strict", "--no-error-summary", "--cache-dir", str(cwd), *files],
        text=True,
        capture_output=True,
        env=environment,
        cwd=cwd,
    ).stdout


def test_types_of_the_package_and_of_a_program(tmp_path):
    assert mypy("-p", "tessarn", cwd=tmp_path) == ""
    assert mypy(str(HERE / "sample_program.py"), cwd=tmp_path) == ""


def test_types_tell_a_wrong_program(tmp_path):
    program = HERE / "wrong_program.py"
    found = {int(n) for n in re.findall(r"wrong_program\.py:(\d+): error", mypy(str(program), cwd=tmp_path))}
    marked = {n for n, line in enumerate(program.read_text().splitlines(), 1) if line.endswith("# wrong")}
    assert found == marked


def test_the_sample_program_runs():
    done = subprocess.run(
        [sys.executable, HERE / "sample_program.py"],
        text=True,
        capture_output=True,
        env=dict(os.environ, PYTHONPATH=str(pathlib.Path(tessarn.__file__).parent.parent)),
    )
    assert done.stdout == "too_few_points True\n", done.stderr


def test_selfcheck():
    report = tessarn.selfcheck()
    assert report.passed and report.differing == [] and report.rounds == "nearest"
    assert len(report.hashes) == report.count > 50


def test_selfcheck_is_that_of_the_program():
    program = os.environ["TESSARN_SELFCHECK"]
    line = subprocess.run([program, "--line"], text=True, capture_output=True, check=True).stdout.strip()
    assert tessarn.selfcheck().line == line
    stored = (ROOT / "selfcheck" / "stored.h").read_text()
    hashes = {f"{m} {i}": int(h, 16) for m, i, h in re.findall(r'\{"([^"]+)", "(\w+)", (0x\w+)u\}', stored)}
    assert tessarn.selfcheck().hashes == hashes
