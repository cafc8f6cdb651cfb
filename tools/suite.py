#!/usr/bin/env python3
"""Runs the tests of a build folder and counts them one by one, also those inside GoogleTest programs and runs of pytest.

    suite.py run NAME FOLDER --totals FILE [--timeout SECONDS] [--jobs N]   runs ctest and adds the counts to the file
    suite.py fail NAME REASON --totals FILE        one failure, for what could not be run at all
    suite.py close --totals FILE [--other-processors]   prints the sum of all; its last line is "N passed, N failed, N skipped"

The counts come from the reports that ctest, GoogleTest and pytest write, never from lines of their output. What ctest lists and
no report mentions has failed: a program that crashed or ran out of time, or one that was not built.

A name that ends in an instruction set (with_avx2, product_avx2) says which build of the kernels the test runs. It may be
skipped only where the processor lacks the set, or for AVX-512 where TESSARN_TEST_BEST_SET says to do without.
"""
import argparse
import collections
import json
import os
import re
import subprocess
import sys
import xml.etree.ElementTree as xml

SETS = {
    "baseline": set(),
    "avx2": {"avx", "avx2", "bmi2"},
    "avx512": {"avx2", "bmi2", "avx512f", "avx512dq", "avx512cd", "avx512bw", "avx512vl"},
}
SET_AT_END = re.compile(r"(?:^|[/_])(%s)$" % "|".join(SETS))
SKIPPED = re.compile(r"SKIP_(RETURN_CODE|REGULAR_EXPRESSION)|Disabled", re.IGNORECASE)
LONGEST_OUTPUT = 200  # lines shown of a test that failed


def required_sets(cpuinfo="/proc/cpuinfo"):
    """The instruction sets that must be tested here, by what the system says of the processor, not by the library."""
    flags = set()
    try:
        with open(cpuinfo) as lines:
            for line in lines:
                if line.startswith("flags"):
                    flags = set(line.split(":")[1].split())
                    break
    except OSError:
        pass
    masked = {"avx512"} if os.environ.get("TESSARN_TEST_BEST_SET") in ("baseline", "avx2") else set()
    return {name for name, needed in SETS.items() if needed <= flags and name not in masked}


class Counts:
    """What one suite, or all of them, came to."""

    def __init__(self):
        self.passed = self.failed = self.skipped = 0
        self.reasons = collections.Counter()  # of what was skipped
        self.sets = collections.Counter()  # tests that passed, by the build of the kernels that they name

    def add(self, other):
        self.passed += other.passed
        self.failed += other.failed
        self.skipped += other.skipped
        self.reasons += other.reasons
        self.sets += other.sets

    def text(self):
        return "%d passed, %d failed, %d skipped" % (self.passed, self.failed, self.skipped)


class Suite:
    def __init__(self, required):
        self.counts = Counts()
        self.required = required

    def passed(self, name, program=""):
        self.counts.passed += 1
        for each in {m.group(1) for m in map(SET_AT_END.search, (name, program)) if m}:
            self.counts.sets[each] += 1

    def failed(self, name, reason, count=1):
        self.counts.failed += count
        print("FAILED %s: %s" % (name, reason))

    def skipped(self, name, reason, program="", count=1):
        must = {m.group(1) for m in map(SET_AT_END.search, (name, program)) if m} & self.required
        if must:
            self.failed(name, "skipped, but this processor has %s" % ", ".join(must), count)
        else:
            self.counts.skipped += count
            self.counts.reasons[reason] += count

    # ------------------------------------------------------------------ GoogleTest programs

    def google(self, test, result):
        """The tests of one program, from its own report."""
        try:
            cases = list(xml.parse(test.report).getroot().iter("testcase"))
        except (OSError, xml.ParseError):
            self.google_without_report(test, result)
            return
        failures = self.counts.failed
        for case in cases:
            name = "%s: %s.%s" % (test.name, case.get("classname"), case.get("name"))
            skip = case.find("skipped")
            if case.find("failure") is not None:
                self.failed(name, case.find("failure").get("message", "").split("\n")[0])
            elif skip is not None or case.get("result") == "skipped":
                self.skipped(case.get("name"), last_line(skip.get("message") if skip is not None else ""), test.name)
            elif case.get("status") == "notrun":
                self.skipped(case.get("name"), "disabled", test.name)
            elif case.get("result") == "completed":
                self.passed(case.get("name"), test.name)
            else:
                self.failed(name, "no result")
        if not cases:
            self.failed(test.name, "no test ran")
        elif result.status != "passed" and self.counts.failed == failures:
            self.failed(test.name, result.reason)
        if self.counts.failed > failures:
            show(result.output)

    def google_without_report(self, test, result):
        count = max(test.listed(), 1)
        if result.status == "skipped":
            self.skipped(test.name, result.reason, count=count)
        else:
            self.failed(test.name, "%s: none of its %d tests has a result" % (result.reason, count), count)
            show(result.output)

    # ------------------------------------------------------------------ runs of pytest

    def pytest(self, test, result):
        """The tests of one run, from the report that pytest wrote."""
        try:
            cases = list(xml.parse(test.report).getroot().iter("testcase"))
        except (OSError, xml.ParseError):
            cases = []
        failures = self.counts.failed
        for case in cases:
            wrong = next((part for part in case if part.tag in ("failure", "error")), None)
            if wrong is not None:
                self.failed("%s: %s" % (test.name, case.get("name")), wrong.get("message", "").split("\n")[0])
            elif case.find("skipped") is not None:
                self.skipped(case.get("name"), last_line(case.find("skipped").get("message")), test.name)
            else:
                self.passed(case.get("name"), test.name)
        if not cases or (result.status != "passed" and self.counts.failed == failures):
            self.failed(test.name, result.reason if result.status != "passed" else "no test ran")
        if self.counts.failed > failures:
            show(result.output)

    # ------------------------------------------------------------------ other tests

    def plain(self, test, result):
        if result.status == "passed":
            self.passed(test.name)
        elif result.status == "skipped":
            self.skipped(test.name, result.reason)
        else:
            self.failed(test.name, result.reason)
            show(result.output)


class Result:
    """What ctest says of one of its tests."""

    def __init__(self, status, reason, output=""):
        self.status, self.reason, self.output = status, reason, output

    @staticmethod
    def of(case):
        output = case.findtext("system-out") or ""
        if case.get("status") == "run":
            return Result("passed", "", output)
        skip, failure = case.find("skipped"), case.find("failure")
        message = next((part.get("message", "") for part in (skip, failure) if part is not None), "")
        if case.get("status") == "disabled" or (skip is not None and SKIPPED.search(message)):
            return Result("skipped", last_line(output) or message, output)
        return Result("failed", message, output)


class Test:
    """One test of ctest's list."""

    def __init__(self, entry, folder):
        self.name = entry["name"]
        self.command = entry.get("command", [])
        self.folder = folder
        for each in entry.get("properties", []):
            if each["name"] == "WORKING_DIRECTORY":
                self.folder = each["value"]
        self.report = None
        self.by_pytest = False
        for argument in self.command:
            if argument.startswith("--gtest_output=xml:"):
                self.report = os.path.join(self.folder, argument.split(":", 1)[1])
            elif argument.startswith("--junitxml="):
                self.report = os.path.join(self.folder, argument.split("=", 1)[1])
                self.by_pytest = True

    def listed(self):
        """The number of tests that the program would run."""
        try:
            lines = subprocess.run(self.command + ["--gtest_list_tests"], cwd=self.folder, timeout=60, text=True,
                                   stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout.splitlines()
        except (OSError, subprocess.SubprocessError):
            return 0
        return sum(line.startswith("  ") for line in lines)


def last_line(text):
    lines = [line.strip() for line in (text or "").splitlines() if line.strip()]
    return lines[-1] if lines else ""


def show(output):
    """The output of a test that failed, without the lines of GoogleTest's tests that passed."""
    kept = []
    for line in output.splitlines():
        if line.startswith("[       OK ]") and kept and kept[-1].startswith("[ RUN      ]"):
            kept.pop()
        elif not re.match(r"\[-{10}\]|\s*$", line):
            kept.append(line)
    for line in kept[-LONGEST_OUTPUT:]:
        print("    " + line)


def ctest_list(folder):
    text = subprocess.run(["ctest", "--test-dir", folder, "--show-only=json-v1"], text=True, stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL).stdout
    return [Test(entry, folder) for entry in json.loads(text)["tests"]]


def run_suite(folder, timeout, jobs, required):
    """Runs every test of a build folder; the counts of what came out."""
    suite = Suite(required)
    try:
        tests = ctest_list(folder)
    except (OSError, ValueError, KeyError):
        tests = []
    if not tests:
        suite.failed(folder, "no tests")
        return suite.counts
    report = os.path.abspath(os.path.join(folder, "ctest-report.xml"))
    for old in [report] + [test.report for test in tests if test.report]:
        os.makedirs(os.path.dirname(old), exist_ok=True)
        if os.path.exists(old):
            os.remove(old)
    said = subprocess.run(["ctest", "--test-dir", folder, "-j%d" % jobs, "--timeout", str(timeout), "--output-junit",
                           report, "--test-output-size-failed", "1000000"], text=True, errors="replace",
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT).stdout
    # The report does not tell a crash from a timeout; what ctest says while it runs does.
    ends = dict(re.findall(r"Test +#\d+: (\S+) \.*(?: +|\*\*\*)(\w[\w: ]*?) +[\d.]+ sec", said))
    count(tests, report, ends, suite)
    return suite.counts


def count(tests, report, ends, suite):
    """Holds the list of the tests against the reports."""
    try:
        results = {case.get("name"): Result.of(case) for case in xml.parse(report).getroot().iter("testcase")}
    except (OSError, xml.ParseError):
        results = {}
    for test in tests:
        result = results.get(test.name, Result("failed", "no result"))
        result.reason = result.reason or ends.get(test.name, "failed")
        kind = suite.pytest if test.by_pytest else suite.google if test.report else suite.plain
        kind(test, result)


# ------------------------------------------------------------------------------------- the sum of all suites


def add_to(path, counts):
    with open(path, "a") as file:
        file.write(json.dumps(vars(counts)) + "\n")


def read(path):
    total = Counts()
    with open(path) as file:
        for line in file:
            one = Counts()
            for name, value in json.loads(line).items():
                setattr(one, name, collections.Counter(value) if isinstance(value, dict) else value)
            total.add(one)
    return total


def close(path, required):
    """Prints what was tested with which kernels, why something was skipped, and the total; true if nothing failed."""
    total = read(path)
    for name in SETS:
        if name in required and not total.sets[name]:
            total.failed += 1
            print("FAILED: no test of the kernels for %s has passed" % name)
    print("tests that name the build of the kernels they run: %s" %
          ", ".join("%d %s" % (total.sets[name], name) for name in SETS if total.sets[name]))
    if total.skipped:
        masked = os.environ.get("TESSARN_TEST_BEST_SET")
        print("skipped%s: %s" % (" (with TESSARN_TEST_BEST_SET=%s)" % masked if masked else "",
                                 ", ".join("%d because %s" % (n, reason or "of no stated reason")
                                           for reason, n in total.reasons.most_common())))
    print(total.text())
    return total.failed == 0 and total.passed > 0


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    commands = parser.add_subparsers(dest="command", required=True)
    run = commands.add_parser("run")
    run.add_argument("name")
    run.add_argument("folder")
    run.add_argument("--timeout", type=int, default=600)
    run.add_argument("--jobs", type=int, default=2)
    fail = commands.add_parser("fail")
    fail.add_argument("name")
    fail.add_argument("reason")
    closing = commands.add_parser("close")
    closing.add_argument("--other-processors", action="store_true", help="this processor's sets need not have been tested")
    for each in (run, fail, closing):
        each.add_argument("--totals", required=True)
    arguments = parser.parse_args()
    if arguments.command == "close":
        return 0 if close(arguments.totals, set() if arguments.other_processors else required_sets()) else 1
    if arguments.command == "fail":
        suite = Suite(set())
        suite.failed(arguments.name, arguments.reason)
        counts = suite.counts
    else:
        counts = run_suite(arguments.folder, arguments.timeout, arguments.jobs, required_sets())
        print("%s: %s" % (arguments.name, counts.text()))
    add_to(arguments.totals, counts)
    return 0 if counts.failed == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
