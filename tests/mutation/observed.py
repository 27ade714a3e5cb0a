#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Looks at what is listed as equal: whether the program `observe` prints with a mutant what it prints without, also
under valgrind.

Run by itself as a test, with a file of what is to be printed and a command: fails when the command does, or prints
something else.
"""

import os
import pathlib
import re
import subprocess
import sys

import suite

# What differs from run to run. A trace line's number is the source's, not the plug-in's doing.
VOLATILE = re.compile(r":\d+ 0x[0-9a-f]+|0x[0-9a-f]+|pid \d+")
# Leaks are looked for by the sanitized tests.
VALGRIND = ["valgrind", "--quiet", "--error-exitcode=99", "--leak-check=no"]


def printed(command):
    """What a command prints, without what always differs; nothing when it fails."""
    environment = {**os.environ, "QT_HASH_SEED": "0", "LC_ALL": "C.UTF-8", "RINGLET_TEST_PATIENCE": "10"}
    done = subprocess.run(command, env=environment, text=True, errors="replace", stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL)
    return VOLATILE.sub("", done.stdout) if done.returncode == 0 else None


class Observer:
    """The program of one build, and what it prints without a mutant."""

    def __init__(self, runner, build, jobs, say):
        self.program = str(build / "tests/mutation/observe")
        self.expected = build / "observed.txt"
        say("observing without a mutant")
        runs = {printed([self.program]) for _ in range(5)}
        if len(runs) != 1 or None in runs:
            raise RuntimeError(f"{self.program} does not print the same every time: {len(runs)} texts")
        self.expected.write_text(runs.pop(), encoding="utf-8")
        for test in self.tests():
            if runner.run(test)[0] != "passed":
                raise RuntimeError(f"{test.name} fails without a mutant")

    def tests(self):
        """As of the suite; each reaches every mutant."""
        return [suite.Test(name, [sys.executable, "-B", __file__, str(self.expected), *before, self.program], "/",
                           {}, "tests/mutation/observe.cpp", seconds, Everything())
                for name, before, seconds in [("observed", [], 2), ("observed under valgrind", VALGRIND, 30)]]


class Everything:
    def __contains__(self, _number):
        return True


def main():
    expected, *command = sys.argv[1:]
    return printed(command) != pathlib.Path(expected).read_text(encoding="utf-8")


if __name__ == "__main__":
    sys.exit(main())
