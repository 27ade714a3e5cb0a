# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Runs cells of the table of faults, each in a process and on a bus of its own, and prints the table."""

import argparse
import dataclasses
import datetime
import os
import pathlib
import re
import signal
import subprocess
import sys
import time

FAST = ["departures", "replies", "floods", "busfaults", "lostbus", "advice", "scarce", "sizes", "sizes_advised",
        "sizes_narrow"]
LONG = ["faults_long", "faults_long_advised"]
FAST_LIMIT_S = 60
LONG_LIMIT_S = 3600

# What the cells of each program are, for the summary.
GROUPS = {
    "departures": "killed, stopped and killed, stopped and continued, at 15 steps of a call",
    "replies": "requests and commands answered never, with an error, with a wrong type, twice, late, after the call "
               "was removed, unasked",
    "floods": "floods of eight kinds, and two of them by one application after the other",
    "busfaults": "daemon stopped for 5 s, descriptors, host killed with ten applications up, service path taken",
    "lostbus": "daemon killed",
    "advice": "on a bus with the advised limits",
    "scarce": "on a bus with 300 match rules and 300 pending replies",
}

RESULT = re.compile(r"^fault-cell: gone=(\S+) latency=(\S+) memory=(\d+):(\d+):(\d+) descriptors=(\d+):(\d+)$",
                    re.MULTILINE)
NOTE = re.compile(r"^fault-note: (.*)$", re.MULTILINE)
HEADINGS = ["cell", "result", "gone", "worst latency", "memory", "allowed", "descriptors", "took"]


@dataclasses.dataclass
class Cell:
    program: pathlib.Path
    test: str
    limit_s: int

    @property
    def name(self):
        # What the parameters were instantiated for says nothing that the rest does not.
        bus = next((f" ({name} bus)" for name in ["advised", "narrow"] if f"_{name}" in self.program.name), "")
        return re.sub(r"^(Application|Answers|Of)/", "", self.test) + bus


def cells_of(program, limit_s):
    listing = subprocess.run([program, "--gtest_list_tests"], check=True, capture_output=True, text=True).stdout
    suite = ""
    for line in listing.splitlines():
        name = line.split("#")[0].strip()
        if line.startswith(" "):
            yield Cell(program, suite + name, limit_s)
        else:
            suite = name


def all_cells(directory, with_long):
    for name in FAST:
        yield from cells_of(directory / f"faults_{name}_test", FAST_LIMIT_S)
    for name in LONG if with_long else []:
        yield from cells_of(directory / name, LONG_LIMIT_S)


def run(cell):
    """Whether the cell passed, what it printed, and how long it took."""
    began = time.monotonic()
    # A group of its own: what a cell that hangs has started ends with it.
    process = subprocess.Popen([cell.program, f"--gtest_filter={cell.test}"], stdout=subprocess.PIPE,
                               stderr=subprocess.STDOUT, text=True, errors="replace", start_new_session=True)
    try:
        output, _ = process.communicate(timeout=cell.limit_s)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        output = process.communicate()[0] + f"\nended after {cell.limit_s} s\n"
    except BaseException:
        os.killpg(process.pid, signal.SIGKILL)
        raise
    # A filter that finds nothing is a success to the test library.
    passed = process.returncode == 0 and "[  PASSED  ] 1 test." in output
    return passed, output, time.monotonic() - began


def row(cell, passed, output, seconds):
    numbers = RESULT.search(output)
    facts = ["-"] * 5
    if numbers:
        gone, latency, before, after, allowed, open_before, open_after = numbers.groups()
        facts = [f"{gone} ms", f"{latency} ms", f"{before} -> {after} KiB", f"+{allowed} KiB",
                 f"{open_before} -> {open_after}"]
    return [cell.name, "ok" if passed else "FAILED", *facts, f"{seconds:.1f} s"]


def markdown(fields):
    return "| " + " | ".join(fields) + " |\n"


def summary(rows):
    """A line for each group of cells, of (program, output) of each."""
    yield markdown(["fault", "cells", "calls gone after the application's death", "worst latency of the honest call",
                    "host grown by at most"])
    yield markdown(["---"] * 5)
    for name, what in GROUPS.items():
        found = [RESULT.search(output) for program, output in rows if program == f"faults_{name}_test"]
        facts = [match.groups() for match in found if match]
        gone = [int(fact[0]) for fact in facts if int(fact[0]) >= 0]
        yield markdown([what, str(len(found)), f"{min(gone)} to {max(gone)} ms" if gone else "",
                        f"{max(float(fact[1]) for fact in facts):.0f} ms" if facts else "",
                        f"{max(int(fact[3]) - int(fact[2]) for fact in facts):,} KiB" if facts else ""])
    yield f"\nOn {datetime.date.today()}, at a load average of {os.getloadavg()[0]:.1f} on {os.cpu_count()} processors.\n"


def options():
    parser = argparse.ArgumentParser(prog="scripts/check faults")
    parser.add_argument("--only", metavar="PATTERN", default="")
    parser.add_argument("--long", action="store_true")
    parser.add_argument("--report", metavar="FILE", type=argparse.FileType("w"))
    parser.add_argument("--summary", metavar="FILE", type=argparse.FileType("w"))
    parser.add_argument("directory", type=pathlib.Path)
    return parser.parse_args()


def main():
    chosen = options()
    wanted = re.compile(chosen.only)
    cells = [cell for cell in all_cells(chosen.directory, chosen.long) if wanted.search(cell.name)]
    if not cells:
        sys.exit(f"scripts/check faults: no cell's name matches '{chosen.only}'")
    width = max(len(cell.name) for cell in cells)
    report = chosen.report or open(os.devnull, "w")  # pylint: disable=consider-using-with
    report.write(markdown(HEADINGS) + markdown(["---"] * len(HEADINGS)))
    notes = []
    done = []
    failed = 0

    for cell in cells:
        passed, output, seconds = run(cell)
        fields = row(cell, passed, output, seconds)
        done.append((cell.program.name, output))
        print(f"{fields[0]:{width}}  " + "  ".join(f"{field:>{size}}" for field, size in
                                                   zip(fields[1:], [6, 9, 11, 19, 11, 8, 7])), flush=True)
        report.write(markdown(fields))
        for note in NOTE.findall(output):
            print(f"    {note}", flush=True)
            notes.append(f"- {cell.name}: {note}\n")
        if not passed:
            failed += 1
            print("    " + output.replace("\n", "\n    "), flush=True)
        report.flush()
    report.write("\n" + "".join(notes))
    if chosen.summary:
        chosen.summary.writelines(summary(done))
    print(f"{len(cells)} cells, {failed} failed")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
