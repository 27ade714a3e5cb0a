# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Writes many mutants into one text, each behind a switch that is asked at run time.

Only one mutant is on at a time. So what takes the place of something is always the original text, with no
other mutant in it, and the text grows by no more than its mutants.
"""

import dataclasses
import re

from mutants import Form, flat


@dataclasses.dataclass
class Node:
    """A range of the original text that mutants concern; never overlaps another without being inside of it."""
    start: int
    end: int
    expressions: list = dataclasses.field(default_factory=list)  # (mutant, text in its place)
    statements: list = dataclasses.field(default_factory=list)   # (mutant, text in its place)
    dropped: list = dataclasses.field(default_factory=list)      # mutants
    plain: str = None  # takes the place whatever mutant is on


class Overlap(Exception):
    """Two ranges share a part only; names a mutant to leave out."""
    def __init__(self, mutant):
        super().__init__()
        self.mutant = mutant


def nodes_of(text, mutants, constants):
    nodes = {}

    def node(edit):
        return nodes.setdefault((edit.start, edit.end), Node(edit.start, edit.end))

    for mutant in mutants:
        if mutant.form == Form.SWAP:
            for edit in mutant.edits:
                node(edit).statements.append((mutant, flat(edit.changed)))
        elif mutant.form == Form.STATEMENT:
            (edit,) = mutant.edits
            if edit.changed:
                node(edit).statements.append((mutant, flat(edit.changed)))
            else:
                node(edit).dropped.append(mutant)
        else:
            for edit in mutant.edits:
                node(edit).expressions.append((mutant, flat(edit.changed)))
    for start, end in constants:
        if any(start <= first and last <= end for first, last in list(nodes)):
            keyword = re.compile(r"\bconstexpr\b").search(text, start)
            nodes[keyword.span()] = Node(*keyword.span(), plain="const")
    return sorted(nodes.values(), key=lambda item: (item.start, -item.end))


def mutants_of(node):
    return [mutant for mutant, _ in node.expressions + node.statements] + node.dropped


# Takes the place of the first line, a comment, so that all lines keep their numbers.
INCLUDE = '#include "mutant.h"'


def with_include(text):
    """The text of a C++ file with it; others as they are."""
    return INCLUDE + text[text.index("\n"):] if text.startswith("//") else text


class Schemata:
    """The text of one file with mutants in it, and which part of it is whose."""

    def __init__(self, text, mutants, constants):
        self.original = text
        self.chunks = []  # (text, mutant or none)
        self.nodes = nodes_of(text, mutants, constants)
        self.at = 0
        if not text.startswith("//"):
            raise ValueError("the first line is no comment")
        self.put(INCLUDE)
        self.put_until(text.index("\n"), len(text))

    @property
    def text(self):
        return "".join(text for text, _ in self.chunks)

    def owner(self, offset):
        """The mutant whose text is at the offset."""
        for text, mutant in self.chunks:
            offset -= len(text)
            if offset < 0:
                return mutant
        return None

    def put(self, text, mutant=None):
        self.chunks.append((text, mutant))

    def put_until(self, position, end):
        """The original text from the position on, with the nodes inside of it."""
        while self.at < len(self.nodes) and self.nodes[self.at].start < end:
            node = self.nodes[self.at]
            if node.start < position or node.end > end:
                raise Overlap(mutants_of(node)[0])
            self.at += 1
            self.put(self.original[position:node.start])
            self.put_node(node)
            position = node.end
        self.put(self.original[position:end])

    def put_node(self, node):
        if node.plain is not None:
            self.put(node.plain)
        elif node.expressions:
            self.put_expression(node)
        else:
            self.put_statement(node)

    def put_expression(self, node):
        is_condition = any(mutant.operator.startswith("condition") for mutant, _ in node.expressions)
        self.put("(")
        for mutant, changed in node.expressions:
            self.put(f"mutant({mutant.number}) ? ({changed}) : ", mutant)
        self.put("bool(" if is_condition else "(")
        self.put_until(node.start, node.end)
        self.put("))")

    def put_statement(self, node):
        self.put("{ ")
        for mutant in node.dropped:
            self.put(f"if (!mutant({mutant.number})) ", mutant)
        self.put("{ ")
        for mutant, changed in node.statements:
            self.put(f"if (mutant({mutant.number})) {{ {changed} }} else ", mutant)
        self.put("{ ")
        self.put_until(node.start, node.end)
        self.put(" } } }")


def write(text, mutants, constants):
    """The schemata of a file, and the mutants that could not be told from others by their place."""
    left_out = []
    while True:
        try:
            return Schemata(text, [mutant for mutant in mutants if mutant not in left_out], constants), left_out
        except Overlap as overlap:
            left_out.append(overlap.mutant)


def places(diagnostic):
    """Where a compiler's message points to, the deepest place first."""
    yield diagnostic.location
    for note in diagnostic.children:
        yield from places(note)


def fits(parser, mutants, constants, say):
    """Drops what does not compile beside the others; the texts of all files, with the mutants that are left.

    A mutant that is dropped gets the number 0 and can still be tried in a program of its own.
    """
    files = {file: (parser.root / file).read_text(encoding="ascii") for file in constants}
    for number, mutant in enumerate([mutant for mutant in mutants if mutant.form != Form.TEXT], 1):
        mutant.number = number
    pending = sorted(parser.commands)
    while pending:
        written = {}
        for file, text in files.items():
            here = [mutant for mutant in mutants if mutant.file == file and mutant.number]
            written[file], left_out = write(text, here, constants[file])
            for mutant in left_out:
                mutant.number = 0
        texts = {file: schemata.text for file, schemata in written.items()}
        again = []
        for source in pending:
            bad = bad_mutants(parser, source, texts, written)
            say(f"{source}: {len(bad)} mutants do not compile beside the others")
            for mutant in bad:
                mutant.number = 0
            if bad:
                # A header's mutants are in the others, too, but those have the same complaints.
                again.append(source)
        pending = again
    return {file: write(text, [mutant for mutant in mutants if mutant.file == file and mutant.number],
                        constants[file])[0].text for file, text in files.items()}


def bad_mutants(parser, source, texts, written):
    bad, errors = [], []
    for diagnostic in parser.parse(source, texts).diagnostics:
        if diagnostic.severity >= 3:
            errors.append(str(diagnostic))
            bad += [owner for owner in owners_of(diagnostic, parser.root, written) if owner not in bad]
    # One error brings others, where no mutant is.
    if errors and not bad:
        raise RuntimeError(f"{errors[0]}: no mutant is there")
    return bad


def owners_of(diagnostic, root, written):
    """The mutant whose text a message points to; else all whose text begins in the same line."""
    found = [(written[file], place) for place in places(diagnostic)
             for file in [place.file and place.file.name.removeprefix(f"{root}/")] if file in written]
    for schemata, place in found:
        owner = schemata.owner(place.offset)
        if owner:
            return [owner]
    # Lines are where they were in the original.
    return [mutant for schemata, place in found for node in schemata.nodes for mutant in mutants_of(node)
            if schemata.original.count("\n", 0, node.start) + 1 == place.line]
