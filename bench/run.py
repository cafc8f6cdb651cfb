#!/usr/bin/env python3
"""Runs the benchmark programs and writes the raw results, the table, the pictures and a page of them.

Everything goes to the output directory: results-*.json (raw), table.md, summary.md, plots/*.svg,
index.html. The two tables are printed as well. With --update-docs the full one replaces that in
docs/benchmarks.md and the summary, ten rows, that in README.md. With --check the ratios are compared with
those of bench/targets.json, the ones that the library should have; a missed one is printed and the exit status is 2.
"""

import argparse
import json
import os
import pathlib
import re
import subprocess
import sys
import time

import plots
import report
from results import Results

ROOT = pathlib.Path(__file__).resolve().parent.parent
PEERS = "(Eigen|LAPACK|GSL|other)"


class Run:
    """A run of a benchmark program: of everything, or of the peers alone as on a lesser processor."""

    def __init__(self, program, families="", core_type="", needs=""):
        self.program, self.families, self.core_type, self.needs = program, families, core_type, needs

    def possible(self):
        return self.needs in pathlib.Path("/proc/cpuinfo").read_text().split() or not self.needs

    def filter(self, operations):
        """A regular expression over operation|size|family|call."""
        if self.families:
            return rf"^({operations or '.*'})[^|]*\|[0-9]+\|{self.families}\|"
        return f"^({operations}|machine)" if operations else ""


RUNS = {
    "default": Run("default"),
    "native": Run("native"),
    "avx2": Run("avx2", PEERS, "Haswell", "avx2"),
    "baseline": Run("default", "(LAPACK|GSL)", "Prescott"),
}
BEGIN, END = "<!-- benchmarks: begin -->", "<!-- benchmarks: end -->"


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--programs", type=pathlib.Path, default=ROOT / "build/bench/bench",
                        help="where the programs are")
    parser.add_argument("--output", type=pathlib.Path, default=ROOT / "build/bench", help="where results go")
    parser.add_argument("--quick", action="store_true", help="about a minute, with little precision")
    parser.add_argument("--filter", default="", help="only the operations that match this regular expression")
    parser.add_argument("--report-only", action="store_true", help="from the raw results of the last run")
    parser.add_argument("--update-docs", action="store_true", help="put the tables into the documentation")
    parser.add_argument("--check", action="store_true", help="compare the ratios with bench/targets.json")
    return parser.parse_args()


def run_program(run, options, output):
    minimum, repetitions = (0.002, 3) if options.quick else (0.03, 7)
    command = [
        options.programs / f"bench_{run.program}",
        f"--benchmark_out={output}", "--benchmark_out_format=json",
        f"--benchmark_min_time={minimum}", f"--benchmark_repetitions={repetitions}",
    ]
    if run.filter(options.filter):
        command.append(f"--benchmark_filter={run.filter(options.filter)}")
    environment = dict(os.environ, OPENBLAS_NUM_THREADS="1", OMP_NUM_THREADS="1")
    if run.core_type:
        environment["OPENBLAS_CORETYPE"] = run.core_type
    subprocess.run(command, env=environment, check=True, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL)


def update_documentation(texts):
    for name, text in texts.items():
        path = ROOT / name
        new = re.sub(re.escape(BEGIN) + ".*?" + re.escape(END), lambda _: f"{BEGIN}\n{text}{END}",
                     path.read_text(), flags=re.DOTALL)
        path.write_text(new)
        print(f"updated {name}", file=sys.stderr)


def main():
    options = arguments()
    options.output.mkdir(parents=True, exist_ok=True)
    files = {name: options.output / f"results-{name}.json" for name, run in RUNS.items() if run.possible()}
    if not options.report_only:
        for name in files:
            start = time.monotonic()
            run_program(RUNS[name], options, files[name])
            print(f"{name}: {time.monotonic() - start:.0f} s", file=sys.stderr)

    results = Results()
    for name in files:
        results.read(name, files[name])
    results.check()

    text = report.markdown(results)
    summary = report.summary(results)
    (options.output / "table.md").write_text(text)
    (options.output / "summary.md").write_text(summary)
    pictures = plots.draw(results, options.output / "plots")
    (options.output / "index.html").write_text(
        report.page(results, [(title, f"plots/{name}") for title, name in pictures]))
    print(text)
    print(summary)
    print(f"{options.output}/index.html shows the pictures", file=sys.stderr)
    absent = [f"{operation} {size}" for operation, size in report.FIRST_PAGE if (operation, size) not in results.rows]
    if options.update_docs and absent:
        results.errors.append("the documents keep their tables, since these rows were not run: " + "; ".join(absent))
    if options.update_docs and not results.errors:
        update_documentation({"docs/benchmarks.md": text, "README.md": summary})
    for error in results.errors:
        print("error: " + error, file=sys.stderr)
    missed = []
    if options.check:
        missed = report.missed_targets(results, json.loads((ROOT / "bench/targets.json").read_text()))
        print("\n".join("missed: " + line for line in missed) or "every target is reached", file=sys.stderr)
    return 1 if results.errors else 2 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
