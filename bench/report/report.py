# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Tells what a run has found: report.py [--docs DOCS] BUILD. With --docs, into the documentation."""

import argparse
import pathlib
import re
import sys

import plots
import tables
from goals import goals
from results import Results, read_in_process


def print_goals(found):
    for goal in found:
        print(f"{'met   ' if goal.is_met else 'MISSED'}  {goal.what}: {goal.figure}, floor {goal.floor}, goal {goal.asked}")


def replaced(text, name, lines):
    """The text with what stands between the marks of this name replaced."""
    begin, end = f"<!-- {name}: written by scripts/bench --docs -->\n", f"<!-- end of {name} -->"
    pattern = re.compile(re.escape(begin) + ".*?" + re.escape(end), re.DOTALL)
    if not pattern.search(text):
        sys.exit(f"report.py: docs/performance.md has no place for '{name}'")
    return pattern.sub(lambda _: begin + "\n".join(lines) + "\n" + end, text)


def write_docs(docs, results, in_process, found):
    page = docs / "performance.md"
    text = page.read_text(encoding="utf-8")
    for name, lines in tables.all_tables(results, in_process, found).items():
        text = replaced(text, name, lines)
    page.write_text(text, encoding="utf-8")
    plots.write(docs / "performance", results)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--docs", type=pathlib.Path)
    parser.add_argument("build", type=pathlib.Path)
    arguments = parser.parse_args()
    try:
        results = Results(arguments.build / "results.json")
        in_process = read_in_process(arguments.build / "inprocess.json")
        found = list(goals(results, in_process))
    except (OSError, KeyError) as error:
        sys.exit(f"report.py: a whole run of scripts/bench is needed first: {error!r}")
    print_goals(found)
    if arguments.docs:
        write_docs(arguments.docs, results, in_process, found)


if __name__ == "__main__":
    main()
