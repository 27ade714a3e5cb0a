# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Mutants that nobody can notice, and why.

The list has groups of mutants with one reason each. The reason comes first, in lines that begin with "# ". Then
come the mutants, one in a line, by the names under which survivors are reported:

    FILE FUNCTION: KIND: CHANGE, or CHANGE #N for the Nth that is called the same

The line of the source is no part of it: what is said in other words there is the same mutant.
"""


def read(text):
    """Reasons by name. Text of another form is an error."""
    reasons, said, in_reason = {}, [], False
    for line in map(str.rstrip, text.splitlines()):
        if line.startswith("# "):
            said = [*said, line[2:]] if in_reason else [line[2:]]
        elif line:
            if not said or line.count(": ") < 2:
                raise ValueError(f"needs a reason before it, and a file, function, kind and change: {line}")
            if line in reasons:
                raise ValueError(f"is there twice: {line}")
            reasons[line] = " ".join(said)
        in_reason = line.startswith("# ")
    return reasons


def match(reasons, mutants):
    """Reasons by the mutants' ids, and the names that no mutant has."""
    ids = {mutant.name: mutant.id for mutant in mutants}
    return ({ids[name]: reason for name, reason in reasons.items() if name in ids},
            [name for name in reasons if name not in ids])
