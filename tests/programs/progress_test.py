#!/usr/bin/env python3
"""On a terminal the error stream says what takes long, and takes it away again; elsewhere it stays empty.

usage: progress_test.py TESSARN FILE
"""
import os
import pty
import subprocess
import sys

tessarn, file = sys.argv[1:]
ours, theirs = pty.openpty()
report = subprocess.run([tessarn, "curve", file], stdout=subprocess.PIPE, stderr=theirs, check=True).stdout
os.close(theirs)
said = b""
try:
    while block := os.read(ours, 4096):
        said += block
except OSError:  # how Linux tells the end of a terminal
    pass
assert b"reading " in said and b"fitting 8 points ..." in said, said
assert said.endswith(b"\r\033[K"), said
assert b"\033" not in report
quiet = subprocess.run([tessarn, "curve", file], capture_output=True, check=True)
assert quiet.stderr == b"" and quiet.stdout == report
print("phases on a terminal alone")
