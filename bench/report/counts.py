# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Compares counts of instructions with those that are recorded: counts.py --check|--record RECORDED COUNTS..."""

import json
import pathlib
import sys

from goals import INSTRUCTION_LIMIT, INSTRUCTIONS
from results import Results

# What one run differs from the next by: how often a thread looks in vain is not the same twice.
TOLERANCE = 1.03

FLOOR = "bare, sending"


def ratios(results):
    """The plug-in's instructions to those of the floor that sends the same, by path; of a trace line, they themselves."""
    found = {}
    for name, size in results.values:
        path = name[len(INSTRUCTIONS):] + (f" {size}" if size else "")
        if results.has(name, size, FLOOR) and "trace" not in name:
            found[path] = results.ratio(name, size, FLOOR).middle
        elif "trace" in name:
            found[path] = results.p50(name, size, "plug-in")
    return found


def compare(now, recorded):
    """A line for each that is worse than recorded, or not in both."""
    for key in sorted(set(now) | set(recorded)):
        if key not in now or key not in recorded:
            yield f"{key}: is only in {'this run' if key in now else 'the record'}"
        elif now[key] > recorded[key] * TOLERANCE:
            yield f"{key}: {now[key]:.3f}, recorded {recorded[key]:.3f}"


def main(mode, record, *counts):
    now = ratios(Results(*(pathlib.Path(file) for file in counts)))
    if mode == "--record":
        with open(record, "w", encoding="utf-8") as file:
            json.dump({key: round(value, 3) for key, value in now.items()}, file, indent=2)
            file.write("\n")
        return 0
    with open(record, encoding="utf-8") as file:
        recorded = json.load(file)
    worse = list(compare(now, recorded))
    for key, value in now.items():
        goal = "" if "trace" in key or value <= INSTRUCTION_LIMIT else f"  above the goal of {INSTRUCTION_LIMIT:.2f}"
        print(f"{value:8.3f}  recorded {recorded.get(key, float('nan')):8.3f}  {key}{goal}")
    for line in worse:
        print(f"Worse: {line}", file=sys.stderr)
    if worse:
        print("If this is meant to be so: scripts/bench --record writes the record anew.", file=sys.stderr)
    return 1 if worse else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
