#!/usr/bin/env python3
"""`tessarn selfcheck` answers as tessarn-selfcheck does, with the same exit codes, also where the results differ.

usage: selfcheck_test.py TESSARN SELFCHECK ROUNDING_UPWARD
"""
import json
import os
import subprocess
import sys

tessarn, selfcheck, upward = sys.argv[1:]


def run(*command, preload=""):
    done = subprocess.run(command, capture_output=True, text=True, env={**os.environ, "LD_PRELOAD": preload})
    return done.returncode, done.stdout, done.stderr


for preload, code in (("", 0), (upward, 1)):
    for option in ([], ["--line"]):
        as_program = run(selfcheck, *option, preload=preload)
        as_command = run(tessarn, "selfcheck", *option, preload=preload)
        assert as_program[0] == code and as_program[:2] == as_command[:2], (option, as_program, as_command)
        assert bool(as_command[2]) == (code == 1), as_command[2]
    given, text, _ = run(tessarn, "selfcheck", "--json", preload=preload)
    found = json.loads(text)
    assert given == code and found["passed"] is (code == 0) and ("error" in found) is (code == 1), found["line"]
    assert found["line"] == run(selfcheck, "--line", preload=preload)[1].strip()
    differing = [m for m in found["members"] if m["differs"]]
    assert len(found["members"]) > 200 and bool(differing) is (code == 1)
    assert all((m["found"] != m["stored"]) is m["differs"] for m in found["members"])
    assert (found["rounding"] == "nearest") is (code == 0)
assert run(tessarn, "selfcheck", "--table") == run(selfcheck, "--table")
for wrong in (["--tabel"], ["--line", "--table"], ["--json", "--line"], ["--json", "--table"], ["file.csv"]):
    assert run(tessarn, "selfcheck", *wrong)[:2] == (2, ""), wrong
print("the command and the program give the same answers and exit codes")
