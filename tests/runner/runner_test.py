"""The counts of tools/suite.py, on tests that pass, fail, are skipped, crash, run out of time, or were not built."""
import contextlib
import io
import os
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, sys.argv.pop(1))
import suite  # noqa: E402

CASE = '<testcase name="%s" classname="S" status="run" result="completed"%s'
REPORT = '<?xml version="1.0"?><testsuites><testsuite name="S">%s</testsuite></testsuites>'
GOOD = CASE % ("good", "/>")
BAD = CASE % ("bad", '><failure message="here"/></testcase>')


def skip(name, reason="this processor has no avx512"):
    return '<testcase name="%s" classname="S" status="run" result="skipped"><skipped message="f.h:1&#x0A;%s"/></testcase>' % (
        name, reason)


class Folder:
    """A build folder with tests that are shell scripts."""

    def __init__(self):
        self.temporary = tempfile.TemporaryDirectory()
        self.path = self.temporary.name
        self.lines = []

    def script(self, name, text):
        path = os.path.join(self.path, name)
        with open(path, "w") as file:
            file.write("#!/bin/sh\n" + text)
        os.chmod(path, 0o755)
        return path

    def test(self, name, text, arguments="", **properties):
        self.add(name, self.script(name.replace("/", "-"), text), arguments, **properties)

    def add(self, name, path, arguments="", **properties):
        self.lines.append('add_test("%s" "%s" %s)' % (name, path, arguments))
        properties.setdefault("SKIP_RETURN_CODE", 77)
        properties.setdefault("WORKING_DIRECTORY", self.path)
        self.lines.append('set_tests_properties("%s" PROPERTIES %s)' %
                          (name, " ".join('%s "%s"' % each for each in properties.items())))

    def google(self, name, cases, end="exit 0", listed=5):
        """A GoogleTest program: lists its tests, or writes a report of the cases and ends. Without cases: no report."""
        file = name.replace("/", "-") + ".xml"
        report = "cat >%s <<'end'\n%s\nend\n" % (file, REPORT % cases) if cases is not None else ""
        text = 'case $* in *list_tests*) echo S.; for i in $(seq %d); do echo "  t$i"; done; exit 0;; esac\n%s%s\n'
        self.test(name, text % (listed, report, end), "--gtest_output=xml:" + file)

    def run(self, required=("baseline",), timeout=20):
        with open(os.path.join(self.path, "CTestTestfile.cmake"), "w") as file:
            file.write("\n".join(self.lines) + "\n")
        self.said = io.StringIO()
        with contextlib.redirect_stdout(self.said):
            return suite.run_suite(self.path, timeout, 2, set(required))


class Counting(unittest.TestCase):
    def setUp(self):
        self.folder = Folder()
        self.addCleanup(self.folder.temporary.cleanup)

    def comes_to(self, passed, failed, skipped, **options):
        counts = self.folder.run(**options)
        self.assertEqual((counts.passed, counts.failed, counts.skipped), (passed, failed, skipped),
                         self.folder.said.getvalue())
        return counts

    def test_passes_failures_and_skips_apart(self):
        self.folder.test("good", "exit 0")
        self.folder.test("bad", "exit 1")
        self.folder.test("left_out", "echo this processor has no avx512; exit 77")
        counts = self.comes_to(1, 1, 1)
        self.assertEqual(dict(counts.reasons), {"this processor has no avx512": 1})

    def pytest(self, name, cases, end="exit 0"):
        """A run of pytest: writes a report of the cases and ends. Without cases: no report."""
        text = "cat >%s.xml <<'end'\n%s\nend\n" % (name, REPORT % cases) if cases is not None else ""
        self.folder.test(name, text + end, "--junitxml=%s.xml" % name)

    def test_runs_of_pytest_are_counted_case_by_case(self):
        case = '<testcase classname="test_a" name="%s">%s</testcase>'
        self.pytest("cases", case % ("good", "") * 2 + case % ("bad", '<failure message="here"/>') +
                    case % ("broken", '<error message="there"/>') + case % ("left", '<skipped message="no such module"/>'),
                    "exit 1")
        counts = self.comes_to(2, 2, 1)
        self.assertEqual(dict(counts.reasons), {"no such module": 1})

    def test_a_run_of_pytest_without_a_report_is_a_failure(self):
        self.pytest("crash", None, "kill -SEGV $$")
        self.pytest("empty", "", "exit 5")
        self.pytest("late", '<testcase classname="test_a" name="good"/>', "exit 1")
        self.comes_to(1, 3, 0)

    def test_a_crash_is_a_failure(self):
        self.folder.test("good", "exit 0")
        self.folder.test("crash", "kill -SEGV $$")
        self.comes_to(1, 1, 0)
        self.assertIn("SegFault", self.folder.said.getvalue())

    def test_running_out_of_time_is_a_failure(self):
        self.folder.test("endless", "exec sleep 60")
        self.comes_to(0, 1, 0, timeout=1)
        self.assertIn("Timeout", self.folder.said.getvalue())

    def test_what_was_not_built_is_a_failure(self):
        self.folder.test("good", "exit 0")
        self.folder.add("absent", self.folder.path + "/absent")
        self.folder.add("absent_google", self.folder.path + "/absent", "--gtest_output=xml:report.xml")
        self.comes_to(1, 2, 0)

    def test_what_waits_for_a_failed_test_is_a_failure(self):
        self.folder.test("first", "exit 1", FIXTURES_SETUP="f")
        self.folder.test("second", "exit 0", FIXTURES_REQUIRED="f")
        self.comes_to(0, 2, 0)

    def test_each_test_of_a_program_counts(self):
        self.folder.google("p", GOOD * 3 + BAD + skip("x_avx512"), "exit 1")
        counts = self.comes_to(3, 1, 1)
        self.assertEqual(dict(counts.reasons), {"this processor has no avx512": 1})
        self.assertIn("S.bad: here", self.folder.said.getvalue())

    def test_a_program_that_crashes_half_way_has_failed_whole(self):
        self.folder.google("p", None, "echo '[ RUN      ] S.t3'; kill -SEGV $$")
        self.comes_to(0, 5, 0)
        self.assertIn("S.t3", self.folder.said.getvalue())

    def test_a_program_out_of_time_has_failed_whole(self):
        self.folder.google("p", None, "exec sleep 60")
        self.comes_to(0, 5, 0, timeout=1)

    def test_half_a_report_is_none(self):
        self.folder.google("p", None, "echo '<testsuites><testcase' >p.xml; exit 0")
        self.comes_to(0, 5, 0)

    def test_the_report_of_an_earlier_run_does_not_count(self):
        with open(self.folder.path + "/p.xml", "w") as file:
            file.write(REPORT % GOOD)
        self.folder.google("p", None, "exit 0")
        self.comes_to(0, 5, 0)

    def test_a_bad_end_after_good_tests_is_a_failure(self):
        self.folder.google("p", GOOD * 4, "echo '[ RUN      ] S.t1'; echo misread; echo '[       OK ] S.t1'; echo leaked; exit 23")
        self.comes_to(4, 1, 0)
        self.assertIn("misread", self.folder.said.getvalue())
        self.assertIn("leaked", self.folder.said.getvalue())

    def test_failures_behind_a_good_end_count(self):
        self.folder.google("p", GOOD + BAD, "exit 0")
        self.comes_to(1, 1, 0)

    def test_a_program_without_tests_is_a_failure(self):
        self.folder.google("p", "", "exit 0")
        self.comes_to(0, 1, 0)

    def test_a_test_that_was_cut_off_is_a_failure(self):
        self.folder.google("p", GOOD + '<testcase name="cut" classname="S" status="run" result=""/>', "exit 0")
        self.comes_to(1, 1, 0)

    def test_a_program_left_out_skips_all_its_tests(self):
        self.folder.google("p/with_avx512", None, "echo this processor has no avx512; exit 77")
        counts = self.comes_to(0, 0, 5)
        self.assertEqual(dict(counts.reasons), {"this processor has no avx512": 5})

    def test_a_set_that_the_processor_has_may_not_be_skipped(self):
        self.folder.google("p/with_avx2", None, "exit 77")
        self.folder.google("q", skip("x_avx2"))
        self.folder.test("replay/avx2", "exit 77")
        self.folder.test("replay/avx512", "exit 77")
        self.comes_to(0, 7, 1, required=("baseline", "avx2"))

    def test_a_folder_without_tests_is_a_failure(self):
        self.comes_to(0, 1, 0)


class Closing(unittest.TestCase):
    def close(self, required, *runs):
        with tempfile.NamedTemporaryFile("r", suffix=".totals") as totals:
            for one in runs:
                suite.add_to(totals.name, one)
            said = io.StringIO()
            with contextlib.redirect_stdout(said):
                good = suite.close(totals.name, set(required))
            return good, said.getvalue().splitlines()

    def counts(self, passed, failed=0, skipped=0, **sets):
        counts = suite.Counts()
        counts.passed, counts.failed, counts.skipped = passed, failed, skipped
        counts.sets.update(sets)
        if skipped:
            counts.reasons["this processor has no avx512"] = skipped
        return counts

    def test_sums_and_says_why(self):
        good, lines = self.close({"baseline", "avx2"}, self.counts(3, 0, 4, baseline=1), self.counts(5, 0, 2, avx2=2))
        self.assertTrue(good)
        self.assertEqual(lines[-1], "8 passed, 0 failed, 6 skipped")
        self.assertIn("6 because this processor has no avx512", lines[-2])

    def test_one_failure_fails(self):
        good, lines = self.close({"baseline"}, self.counts(3, 1, baseline=3))
        self.assertFalse(good)
        self.assertEqual(lines[-1], "3 passed, 1 failed, 0 skipped")

    def test_a_set_without_any_test_is_a_failure(self):
        good, lines = self.close({"baseline", "avx2"}, self.counts(3, baseline=3))
        self.assertFalse(good)
        self.assertEqual(lines[-1], "3 passed, 1 failed, 0 skipped")

    def test_nothing_at_all_is_no_success(self):
        self.assertFalse(self.close(set())[0])


class Processor(unittest.TestCase):
    AVX2 = "avx avx2 bmi2"
    AVX512 = AVX2 + " avx512f avx512dq avx512cd avx512bw avx512vl"

    def sets(self, flags, best=None):
        with tempfile.NamedTemporaryFile("w") as file:
            file.write("processor : 0\nflags\t\t: fpu sse2 %s\n" % flags)
            file.flush()
            os.environ.pop("TESSARN_TEST_BEST_SET", None)
            if best:
                os.environ["TESSARN_TEST_BEST_SET"] = best
                self.addCleanup(os.environ.pop, "TESSARN_TEST_BEST_SET", None)
            return suite.required_sets(file.name)

    def test_what_must_run(self):
        self.assertEqual(self.sets(""), {"baseline"})
        self.assertEqual(self.sets(self.AVX2), {"baseline", "avx2"})
        self.assertEqual(self.sets(self.AVX512), {"baseline", "avx2", "avx512"})
        self.assertEqual(self.sets(self.AVX512.replace("avx512vl", "")), {"baseline", "avx2"})

    def test_only_avx512_can_be_masked(self):
        self.assertEqual(self.sets(self.AVX512, "avx2"), {"baseline", "avx2"})
        self.assertEqual(self.sets(self.AVX512, "baseline"), {"baseline", "avx2"})
        self.assertEqual(self.sets(self.AVX512, "avx512"), {"baseline", "avx2", "avx512"})


unittest.main()
