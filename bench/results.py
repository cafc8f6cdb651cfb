"""Reads the raw results of the runs and joins them into rows."""

import json
import statistics

TRAFFIC = ["copy", "read", "move"]  # by the number that the programs give
PEER_FAMILIES = ["Eigen", "LAPACK", "GSL", "other"]

# The runs whose times of the peers a processor of the set would show, beside those of headers that are compiled for
# every processor. The best set of the machine has the runs of "default" and "native".
PEER_RUNS = {"avx2": "avx2", "baseline": "baseline"}
TUNED_FAMILIES = ["LAPACK", "GSL"]  # they choose their kernels by the processor, so "default" is for this machine

SET_NAMES = {"avx2": "AVX2", "avx512": "AVX-512"}


class Call:
    """One call of a row: its times in nanoseconds, for each program that timed it."""

    def __init__(self, family, name):
        self.family = family
        self.name = name
        self.times = {}

    def runs_for(self, instruction_set):
        """The runs that count for a set; None is the best set of the machine."""
        if instruction_set is None:
            runs = ["default", "native"]
        else:
            runs = [PEER_RUNS[instruction_set]] + ([] if self.family in TUNED_FAMILIES else ["default"])
        return [run for run in runs if run in self.times]

    def program(self, instruction_set=None):
        """The run in which the call was faster."""
        return min(self.runs_for(instruction_set), key=lambda p: statistics.median(self.times[p]))

    def median(self, instruction_set=None):
        return statistics.median(self.times[self.program(instruction_set)])

    def spread(self):
        """Half of the range over the median."""
        times = self.times[self.program()]
        return (max(times) - min(times)) / 2 / self.median()


class Row:
    def __init__(self, operation, size):
        self.operation = operation
        self.size = size
        self.calls = {}
        self.hashes = {}  # by program and instruction set
        self.operations = self.bytes = self.memory = 0
        self.traffic = TRAFFIC[0]
        self.note = ""

    @property
    def ours(self):
        """Our call with the best instruction set, which is timed first."""
        return next((c for c in self.calls.values() if c.family == "ours"), None)

    def ours_with(self, instruction_set):
        return self.calls.get(("ours", instruction_set))

    @property
    def plain(self):
        return self.calls.get(("plain", "plain form"))

    def peers(self, family=None):
        return [c for c in self.calls.values()
                if c.family in PEER_FAMILIES and family in (None, c.family)]

    def best_peer(self, family=None, instruction_set=None):
        """The fastest one; the plain form where no other library has the operation."""
        timed = [c for c in self.peers(family) if c.runs_for(instruction_set)]
        return min(timed, key=lambda c: c.median(instruction_set), default=self.plain if family is None else None)

    def ratio(self, instruction_set=None):
        """The time of the best peer over ours, with the best set of the machine or with a lesser one. What is compiled
        into the caller has one time for all sets."""
        ours = self.ours_with(instruction_set) or self.ours
        best = self.best_peer(None, instruction_set)
        return best.median(instruction_set) / ours.median() if best and ours else None


class Results:
    """Rows in the order of the programs, the machine's limits, and the errors that were met."""

    def __init__(self):
        self.rows = {}
        self.machine = {}
        self.context = {}
        self.peer_sets = []  # the lesser sets with runs of the peers
        self.errors = []

    def read(self, program, path):
        with open(path) as f:
            data = json.load(f)
        self.context[program] = data["context"]
        if program not in ("default", "native"):
            self.peer_sets.append(program)
        for b in data["benchmarks"]:
            if b["run_type"] == "iteration":
                self._add(program, b)

    def _add(self, program, b):
        name = b["run_name"].removesuffix("/repeats:1")
        operation, size, family, call = name.split("|")
        if b.get("error_occurred"):
            self.errors.append(f"{program}: {operation} {size}, {call}: {b['error_message']}")
            return
        time = b["cpu_time"]  # the processor is shared; this counts our own time only
        rows = self.machine if family == "machine" else self.rows
        row = rows.setdefault((operation, int(size)) if family != "machine" else (call, int(size)),
                              Row(operation, int(size)))
        entry = row.calls.setdefault((family, call), Call(family, call))
        entry.times.setdefault(program, []).append(time)
        row.operations, row.bytes, row.memory = (b[key] for key in ("operations", "bytes", "memory"))
        row.traffic = TRAFFIC[int(b["traffic"])]
        digest, row.note = b["label"].split("|", 1)
        if family == "ours":
            row.hashes[program, call] = digest

    def check(self):
        """Both programs and all instruction sets must give results with the same bits."""
        for row in self.rows.values():
            if len(set(row.hashes.values())) > 1:
                described = ", ".join(f"{h} with {s} in the program {p}" for (p, s), h in row.hashes.items())
                self.errors.append(f"{row.operation} {row.size}: results differ: {described}")

    def sets(self):
        """The instruction sets that were timed, the best one first."""
        names = []
        for row in self.rows.values():
            names += [c.name for c in row.calls.values() if c.family == "ours" and c.name not in names]
        return names

    # ------------------------------------------------------------------ limits of the machine

    def rate(self, row):
        """Operations or bytes in a nanosecond."""
        call = next(iter(row.calls.values()))
        return max(row.operations, row.bytes) / call.median()

    def arithmetic_rate(self):
        return max((self.rate(r) for (call, _), r in self.machine.items() if call == "multiply and add"),
                   default=None)

    def memory_rate(self, kind, size):
        """The rate of this kind of traffic in the smallest level of memory that holds so many bytes."""
        rates = sorted((s, self.rate(r)) for (call, s), r in self.machine.items() if call == kind)
        return next((rate for s, rate in rates if s >= size), rates[-1][1] if rates else None)

    def time_of_operations(self, row):
        return row.operations / self.arithmetic_rate() if self.machine else None

    def limit(self, row):
        """The least time in nanoseconds, and whether operations or bytes set it."""
        if not self.machine:
            return None, ""
        by_operations = self.time_of_operations(row)
        # The inputs take turns: what one of them left in a cache is there again if all of them fit.
        by_bytes = row.bytes / self.memory_rate(row.traffic, row.memory)
        if max(by_operations, by_bytes) == 0:
            return None, ""
        return (by_operations, "operations") if by_operations >= by_bytes else (by_bytes, "bytes")
