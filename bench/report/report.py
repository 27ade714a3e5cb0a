# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Tells what the measurements have found: report.py [--docs DOCS] RESULTS. With --docs, into the documentation."""

import argparse
import pathlib
import re
import sys

import goals
import plots
import tables
from results import Results


def print_goals(found):
    for goal in found:
        print(f"{goal.met:11}  {goal.what}: {goal.plugin}, floor {goal.floor}; {goal.figure}, goal {goal.asked}")


def replaced(text, name, lines, page="docs/performance.md", writer="scripts/bench --docs"):
    """The text with what stands between the marks of this name replaced."""
    begin, end = f"<!-- {name}: written by {writer} -->\n", f"<!-- end of {name} -->"
    pattern = re.compile(re.escape(begin) + ".*?" + re.escape(end), re.DOTALL)
    if not pattern.search(text):
        sys.exit(f"report.py: {page} has no place for '{name}'")
    return pattern.sub(lambda _: begin + "\n".join(lines) + "\n" + end, text)


def write_docs(docs, results, measured):
    """Those tables and plots that the measurements are enough for; the names of the others."""
    page = docs / "performance.md"
    text = page.read_text(encoding="utf-8")
    left = []
    for name, (needed, make) in tables.TABLES.items():
        if set(needed) <= measured:
            text = replaced(text, name, make(results))
        else:
            left.append(name)
    page.write_text(text, encoding="utf-8")
    if {"status", "scale", "departure"} <= measured:
        plots.write(docs / "performance", results)
    return left


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--docs", type=pathlib.Path)
    parser.add_argument("results", type=pathlib.Path)
    arguments = parser.parse_args()
    files = sorted(arguments.results.glob("*.json"))
    results = Results(*files)
    measured = {file.stem.partition("-")[0] for file in files}
    found = list(goals.by_instructions(results)) if "counts" in measured else []
    if measured >= set(tables.MEASUREMENTS):
        found += goals.time_goals(results)
        if goals.unjudged(results, found):
            sys.exit(f"report.py: no goal shows {goals.unjudged(results, found)}")
    print_goals(found)
    if not arguments.docs:
        return
    if any(about["short"] for about in results.circumstances.values()):
        sys.exit("report.py: what --short has measured is not for the page")
    left = write_docs(arguments.docs, results, measured)
    if left:
        print(f"Left as they were, for lack of {', '.join(sorted(set(tables.MEASUREMENTS) - measured))}: {', '.join(left)}")


if __name__ == "__main__":
    main()
