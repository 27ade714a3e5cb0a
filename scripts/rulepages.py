#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Writes docs/rules.md from the table of ringlet-check: scripts/rulepages.py [BUILD]"""

import json
import pathlib
import subprocess
import sys

HEAD = """# The rules of ringlet-check

Every rule that [`ringlet-check`](checker.md) knows, in the order of a call's life. This page is written by
`scripts/rulepages.py` from the table in the program; `ringlet-check explain RULE` prints the same.

An **error** is a call that does not show, or shows wrongly. A **warning** works by luck or in part. A **note** harms
nobody. Names of rules stay. What the rules rest on is [wire-contract.md](wire-contract.md).
"""


def code(lines):
    return "".join(f"    {line}\n" for line in lines.splitlines())


def section(rule):
    return (f"### {rule['rule']}\n\n**{rule['severity']}** · {rule['meaning']} {rule['matters']} {rule['remedy']}\n\n"
            f"Wrong:\n\n{code(rule['wrong'])}\nRight:\n\n{code(rule['right'])}")


def page(rules):
    """The whole page, from what `ringlet-check rules --format json` says."""
    parts = [HEAD]
    area = None
    for rule in rules:
        if rule["area"] != area:
            area = rule["area"]
            parts.append(f"## {area.capitalize()}\n")
        parts.append(section(rule))
    return "\n".join(parts)


def main(build):
    source = pathlib.Path(__file__).resolve().parent.parent
    checker = source / build / "kit/checker/ringlet-check"
    output = subprocess.run([checker, "rules", "--format", "json"], capture_output=True, text=True, check=True).stdout
    (source / "docs/rules.md").write_text(page(json.loads(output)), encoding="utf-8")


if __name__ == "__main__":
    main(*sys.argv[1:] or ["build"])
