# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""What a mutant is: one small change of one source file."""

import dataclasses
import enum
import hashlib
import re


class Form(enum.Enum):
    """How a mutant can be expressed beside the others in one program."""
    EXPRESSION = "expression"  # the edits replace expressions
    STATEMENT = "statement"    # the edit replaces a statement by none or more
    SWAP = "swap"              # the two edits are a statement and the next one, each replaced by the other
    TEXT = "text"              # only by a program of its own


@dataclasses.dataclass(frozen=True)
class Edit:
    """Replaces the characters from start to end of a file by other text."""
    start: int
    end: int
    changed: str


@dataclasses.dataclass
class Mutant:
    file: str      # relative to the tree
    function: str  # qualified name; "-" outside of functions
    operator: str
    form: Form
    edits: list    # in order, not overlapping
    line: int
    original: str  # text of the lines concerned, on one line
    changed: str   # the same after the change
    change: str    # what tells it from others of its kind in the function, in a few words of the code
    occurrence: int = 1  # counts mutants of one function that are otherwise the same
    number: int = 0      # in the program that holds many; 0 when it is not in there

    @property
    def key(self):
        """Says which mutant it is, whatever is written around it."""
        return (self.file, self.function, self.operator, self.change, self.occurrence)

    @property
    def name(self):
        """The key as one line."""
        occurrence = f" #{self.occurrence}" if self.occurrence > 1 else ""
        return f"{self.file} {self.function}: {self.operator}: {self.change}{occurrence}"

    @property
    def id(self):
        return hashlib.sha256("\0".join(map(str, self.key)).encode()).hexdigest()[:8]

    def apply(self, text):
        """The file's text with the mutant in it."""
        for edit in reversed(self.edits):
            text = text[:edit.start] + edit.changed + text[edit.end:]
        return text


COMMENT = re.compile(r'("(?:[^"\\]|\\.)*")|//[^\n]*|/\*.*?\*/', re.DOTALL)


def flat(text):
    """Code on one line, without comments."""
    return " ".join(COMMENT.sub(lambda match: match.group(1) or " ", text).split())


TOKEN = re.compile(r'"(?:[^"\\]|\\.)*"|\w+|->|::|&&|\|\||<<|>>|[-+*/|&=!<>]=|[^\w\s]')


def difference(original, changed):
    """Two texts' words that are not in the other one, as "these -> those"."""
    before, after = TOKEN.findall(original), TOKEN.findall(changed)
    while before and after and before[0] == after[0]:
        before, after = before[1:], after[1:]
    while before and after and before[-1] == after[-1]:
        before, after = before[:-1], after[:-1]
    return f"{' '.join(before)} -> {' '.join(after)}".strip()


NAME = r"(?:\w+(?:->|\.|::))*~?(\w+)"
HEADS = [
    (re.compile(r"(if|for|while|switch|return|delete)\b"), "{}"),
    (re.compile(rf"emit\s+{NAME}"), "emit {}"),
    (re.compile(rf"{NAME}\s*(?:<[^;]*?>)?\("), "{}()"),
    (re.compile(rf"{NAME}(?:\[[^\]]*\])?\s*[-+|&]?="), "{} ="),
    (re.compile(r"[\w:<>,\s*&]*?(\w+)\s*[=;({]"), "{} declared"),
]


def head(statement):
    """What a statement does, in a word."""
    for pattern, form in HEADS:
        match = pattern.match(statement)
        if match:
            return form.format(match.group(1))
    return TOKEN.findall(statement)[0]


def number_occurrences(mutants):
    """Tells apart what is called the same in the same function; drops what is the same altogether, or no change."""
    seen, counts, kept = set(), {}, []
    for mutant in mutants:
        effect = (mutant.file, tuple(mutant.edits))
        if effect in seen or mutant.original == mutant.changed:
            continue
        seen.add(effect)
        key = mutant.key[:-1]
        counts[key] = counts.get(key, 0) + 1
        mutant.occurrence = counts[key]
        kept.append(mutant)
    return kept


def to_json(mutant):
    record = dataclasses.asdict(mutant)
    record["form"] = mutant.form.value
    record["edits"] = [[edit.start, edit.end, edit.changed] for edit in mutant.edits]
    return record


def from_json(record):
    return Mutant(**{**record, "form": Form(record["form"]), "edits": [Edit(*edit) for edit in record["edits"]]})
