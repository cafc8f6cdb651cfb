#!/usr/bin/env python3
"""--json prints what the report prints: valid JSON, and the numbers of the text.

usage: json_test.py TESSARN DATA SIMULATED
"""
import json
import re
import subprocess
import sys

tessarn, data, simulated = sys.argv[1:]


def run(*arguments, code=0):
    done = subprocess.run([tessarn, *arguments], capture_output=True, text=True)
    assert done.returncode == code, (arguments, done.returncode, done.stderr)
    return done.stdout


def both(*arguments):
    found = json.loads(run(*arguments, "--json"), parse_constant=lambda c: sys.exit(f"{c} in {arguments}"))
    return run(*arguments), found


def same(shown, number):
    """The digits of the report are those of the number, rounded."""
    digits = len(re.sub(r"[^0-9]", "", shown.split("e")[0]).lstrip("0")) or 1
    assert float(shown) == float(f"{number:.{digits}g}"), (shown, number)


text, found = both("curve", f"{data}/water.csv", "-m", "5")
coefficients = re.findall(r"^coefficient x\^\d +(\S+?),", text, re.M)
assert len(coefficients) == 5 == len(found["fit"]["coefficients"])
for shown, c in zip(coefficients, found["fit"]["coefficients"]):
    assert float(shown) == c["value"]
same(re.search(r"^maximum +at x = (\S+),", text, re.M).group(1), found["extremes"]["places"][0]["x"])
assert found["extremes"]["places"][0]["maximum"] is True and len(found["values"]) == 3
assert found["files"][0]["title"] == "Density of water" and found["files"][0]["points"] == 8

text, found = both("curve", f"{simulated}/simulated_profile.csv", "-m", "5")
assert [len(found[k]["places"]) for k in ("zeros", "extremes", "inflections")] == [4, 3, 2]
assert found["notes"] == ["4 points left out (marked by x = -1)"] and found["files"][0]["simulated"] is True
same(re.search(r"radius (\S+), centre", text).group(1), found["largest_curvature"]["radius"])

text, found = both("align", f"{simulated}/simulated_coil_a.csv", f"{simulated}/simulated_coil_b.csv")
same(re.search(r"^angle +(\S+)", text, re.M).group(1), found["angle_degrees"])
assert len(found["rotation"]) == 3 and all(len(row) == 3 for row in found["rotation"])
same(re.search(r"before, (\S+) after$", text, re.M).group(1), found["root_mean_square"]["after"])

text, found = both("flatness", f"{simulated}/simulated_plate.csv")
same(re.search(r"^flatness \(ISO 1101\) +(\S+)", text, re.M).group(1), found["minimum_zone"]["flatness"])
assert len(found["minimum_zone"]["touching"]) == 4 and found["least_squares"]["lowest"]["line"] == 254

text, found = both("outliers", f"{simulated}/simulated_scan.csv", "--deviation", "2")
assert found["after"]["points"] == 212 and len(found["after"]["removed"]) == 9
same(re.search(r"^largest distance +(\S+)", text, re.M).group(1), found["line"]["largest_distance"])
assert found["line"]["robust"]["with_weight_0"] == 5

# A run that ends without a result says so in the JSON, too; wrong input prints no JSON.
failed = json.loads(run("curve", f"{simulated}/one_abscissa.csv", "-m", "2", "--json", code=1))
assert "the fit failed" in failed["error"], failed
assert run("curve", "/nonexistent.csv", "--json", code=2) == ""
print("the findings of four commands are JSON with the numbers of their reports")
