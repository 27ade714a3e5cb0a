# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Mutants that no test can notice, and why.

The file has groups of mutants with one reason each. The reason comes first, in lines that begin with "# ".
Then come the mutants, each in three lines, in the form in which survivors are reported:

    FILE: FUNCTION: OPERATOR, or OPERATOR #N for the Nth that is otherwise the same
    - original text
    + changed text
"""


def entry(mutant):
    """The lines of a mutant."""
    occurrence = f" #{mutant.occurrence}" if mutant.occurrence > 1 else ""
    return "\n".join([f"{mutant.file}: {mutant.function}: {mutant.operator}{occurrence}",
                      f"- {mutant.original}".rstrip(), f"+ {mutant.changed}".rstrip()])


def read(text):
    """Reasons by entry. Text of another form is an error."""
    reasons = {}
    blocks = [block.strip("\n") for block in text.split("\n\n")]
    reason = None
    for block in filter(None, blocks):
        lines = [line.rstrip() for line in block.splitlines()]
        said = [line[2:] for line in lines if line.startswith("# ")]
        if said:
            reason = " ".join(said)
            lines = lines[len(said):]
        if len(lines) % 3:
            raise ValueError(f"not in groups of three lines: {lines[0]}")
        for at in range(0, len(lines), 3):
            if not lines[at + 1].startswith("-") or not lines[at + 2].startswith("+") or not reason:
                raise ValueError(f"needs a reason, '- original' and '+ changed': {lines[at]}")
            if "\n".join(lines[at:at + 3]) in reasons:
                raise ValueError(f"is there twice: {lines[at]}")
            reasons["\n".join(lines[at:at + 3])] = reason
    return reasons


def match(reasons, mutants):
    """Reasons by the mutants' ids, and the entries that no mutant has."""
    entries = {entry(mutant): mutant.id for mutant in mutants}
    return ({entries[text]: reason for text, reason in reasons.items() if text in entries},
            [text for text in reasons if text not in entries])
