# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Makes the mutants of a folder's sources, on clang's AST, and of the bus interfaces that it is made from."""

import itertools
import json
import pathlib
import re
import shlex

from clang.cindex import (AccessSpecifier, CursorKind, File, Index, SourceLocation, SourceRange, TokenKind,
                          TranslationUnit, TypeKind)

from mutants import Edit, Form, Mutant, difference, flat, head, number_occurrences

FUNCTIONS = {CursorKind.FUNCTION_DECL, CursorKind.CXX_METHOD, CursorKind.CONSTRUCTOR, CursorKind.DESTRUCTOR}
CLASSES = {CursorKind.CLASS_DECL, CursorKind.STRUCT_DECL}
BODIES = {CursorKind.IF_STMT, CursorKind.FOR_STMT, CursorKind.WHILE_STMT, CursorKind.CXX_FOR_RANGE_STMT}

OPERATORS = {
    "==": ["!="], "!=": ["=="], "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"],
    "&&": ["||"], "||": ["&&"], "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"],
    "&": ["|"], "|": ["&", "^"], "^": ["|", "&"], "<<": [">>"], ">>": ["<<"],
    "+=": ["-=", "="], "-=": ["+=", "="], "|=": ["&=", "="], "&=": ["|=", "="],
}
LOG_LEVELS = {"qCInfo": "qCDebug", "qCWarning": "qCInfo", "qInfo": "qDebug", "qDebug": "qInfo"}

# Functions of the libraries, and what is easily taken for them.
LIBRARY = {
    "take": ["value"], "value": ["take"], "toUInt": ["toInt"], "toInt": ["toUInt"], "toBool": ["isValid"],
    "all_of": ["any_of", "none_of"], "any_of": ["all_of"], "none_of": ["all_of"],
    "cbegin": ["cend"], "cend": ["cbegin"], "begin": ["end"], "end": ["begin"], "crbegin": ["crend"],
    "first": ["last"], "last": ["first"], "constFirst": ["constLast"], "constLast": ["constFirst"],
    "startsWith": ["endsWith"], "endsWith": ["startsWith"], "append": ["prepend"], "prepend": ["append"],
    "left": ["right"], "right": ["left"], "mid": ["left"], "isEmpty": ["isNull"], "isNull": ["isEmpty"],
    "keys": ["uniqueKeys"], "removeOne": ["removeAll"], "removeAll": ["removeOne"], "remove": ["take"],
    "min": ["max"], "max": ["min"], "qMin": ["qMax"], "qMax": ["qMin"], "write": ["read"],
    "asyncCall": ["call"], "call": ["asyncCall"], "send": ["call"], "toString": ["toByteArray"],
    "deleteLater": ["disconnect"], "start": ["restart"], "restart": ["start", "elapsed"],
}

# What takes the place of a value that is empty already.
OTHER_THAN_EMPTY = {
    "QString()": 'QString(QLatin1String("changed"))',
    "QDateTime()": "QDateTime::currentDateTime()",
    "QVariant()": "QVariant(1)",
    "QVariantMap()": '(QVariantMap{{QString(QLatin1String("changed")), 1}})',
    "nullptr": None,
}
EMPTY = re.compile(r"\w+(<.*>)?\(\)|nullptr")

STRING_CALL = re.compile(r"\b(QStringLiteral|QLatin1String)\($")
# In the bodies of macros, which have no AST.
MACRO_TOKENS = {"__LINE__": "0", "Q_FUNC_INFO": "__func__", "this": "nullptr"}
# A call as a statement: a send, a connection, a call of the host.
SEND = re.compile(r"[\w:.>\[\]()-]+?\(.*\);$", re.DOTALL)
SECTION = re.compile(r"^(?:public|protected|private)(?: Q_SLOTS)?:|^Q_SIGNALS:", re.MULTILINE)


def compile_commands(build, sources, folder):
    """Arguments to parse each source of the folder with, by its path."""
    commands = {}
    for entry in json.loads((build / "compile_commands.json").read_text()):
        file = pathlib.Path(entry["file"])
        if file.is_relative_to(sources / folder):
            words = shlex.split(entry["command"])[1:]
            # Without the output and without precompiled headers, which are another compiler's.
            kept = [word for word in words if word.startswith(("-I", "-D", "-std", "-f")) and "pch" not in word]
            system = [f"-isystem{words[at + 1]}" for at, word in enumerate(words) if word == "-isystem"]
            commands[file.relative_to(sources).as_posix()] = kept + system
    return commands


class Parser:
    """Parses the tree's sources, as they are or with other texts in their place."""

    def __init__(self, build, sources, folder):
        self.root = sources
        self.folder = folder
        self.commands = compile_commands(build, sources, folder)
        self.index = Index.create()

    def parse(self, source, texts=None):
        unsaved = [(str(self.root / file), text) for file, text in (texts or {}).items()]
        return self.index.parse(
            str(self.root / source),
            args=self.commands[source] + ["-w", "-ferror-limit=0", f"-I{self.root}"],
            unsaved_files=unsaved, options=TranslationUnit.PARSE_DETAILED_PROCESSING_RECORD)


class FileMutants:
    """Mutants of one file, found in the AST of a translation unit that has it."""

    def __init__(self, root, file, unit):
        self.file = file
        self.path = str(root / file)
        self.root = root
        self.text = (root / file).read_text(encoding="ascii")
        self.unit = unit
        self.found = []
        self.functions = []  # (start, end, name, result type), the inner ones behind those around them
        self.constants = []  # ranges of variables that are constexpr
        self.cursors = [cursor for cursor in unit.cursor.get_children() if self.is_here(cursor)]
        self.macros = [self.range(cursor) for cursor in self.cursors
                       if cursor.kind == CursorKind.MACRO_INSTANTIATION]

    def make(self):
        for cursor in self.cursors:
            if not cursor.kind.is_preprocessing():
                self.visit(cursor)
        self.literals()
        self.macro_bodies()
        self.declarations()
        return self.found

    # --- Places

    def is_here(self, cursor):
        file = cursor.extent.start.file
        return file is not None and file.name == self.path

    def range(self, cursor):
        return cursor.extent.start.offset, cursor.extent.end.offset

    def of(self, cursor):
        start, end = self.range(cursor)
        return self.text[start:end]

    def in_macro(self, start, end):
        return any(first <= start and end <= last for first, last in self.macros)

    def function_at(self, offset):
        """Name and result type of the function around the offset."""
        around = [function[2:] for function in self.functions if function[0] <= offset < function[1]]
        return around[-1] if around else ("-", None)

    # --- Adding

    def add(self, operator, edits, form=Form.EXPRESSION, change=None):
        start, end = edits[0].start, edits[-1].end
        first = self.text.rfind("\n", 0, start) + 1
        last = self.text.find("\n", end)
        # Whole lines, which say more than the bare expression.
        mutant = Mutant(self.file, self.function_at(start)[0], operator, form, list(edits),
                        self.text.count("\n", 0, start) + 1, flat(self.text[first:last]), "", change or "")
        tail = len(self.text) - last
        changed = mutant.apply(self.text)
        mutant.changed = flat(changed[first:len(changed) - tail])
        mutant.change = change or difference(flat(self.text[start:end]), flat(changed[start:len(changed) - len(self.text) + end]))
        self.found.append(mutant)

    def replace(self, operator, start, end, changed, form=Form.EXPRESSION, change=None):
        if form != Form.EXPRESSION or not self.in_macro(start, end):
            self.add(operator, [Edit(start, end, changed)], form, change)

    # --- The AST

    def visit(self, cursor, parent=None):
        start, end = self.range(cursor)
        if cursor.kind in FUNCTIONS and cursor.is_definition():
            self.functions.append((start, end, self.name_of(cursor), cursor.result_type))
        if end and not self.in_macro(start, end):
            rule = RULES.get(cursor.kind)
            if rule:
                rule(self, cursor, parent)
        if cursor.kind == CursorKind.COMPOUND_STMT and not self.in_macro(start, end):
            self.statements(cursor)
        for child in cursor.get_children():
            if self.is_here(child):
                self.visit(child, cursor)

    @staticmethod
    def name_of(function):
        owner = function.semantic_parent
        prefix = "" if owner.kind == CursorKind.TRANSLATION_UNIT else f"{owner.spelling}::"
        return prefix + function.spelling

    def token_between(self, left, right):
        """The operator between two operands: its place and text."""
        start, end = self.range(left)[1], self.range(right)[0]
        text = self.text[start:end]
        token = text.strip(" \n()")
        return start + text.find(token), token

    def operands(self, cursor):
        """Both operands of a binary operator, built in or not; else nothing."""
        children = list(cursor.get_children())
        if cursor.kind == CursorKind.CALL_EXPR:
            if not cursor.spelling.startswith("operator") or len(children) != 3:
                return None
            children = [children[0], children[2]]
        if len(children) != 2 or self.range(children[0])[1] > self.range(children[1])[0]:
            return None
        return children

    def binary(self, cursor, _parent=None):
        pair = self.operands(cursor)
        if not pair:
            return
        at, token = self.token_between(*pair)
        start, end = self.range(cursor)
        # The bus layer's and the log's streams have no other direction.
        if token in {"<<", ">>"} and cursor.kind == CursorKind.CALL_EXPR:
            return
        for other in OPERATORS.get(token, []):
            self.replace("operator replaced", start, end, self.text[start:at] + other + self.text[at + len(token):end])
        if token in {"&&", "||"}:
            for operand in pair:
                self.condition(operand, dropped="true" if token == "&&" else "false")

    def condition(self, cursor, dropped=None):
        start, end = self.range(cursor)
        text = self.text[start:end]
        pair = self.operands(cursor) if cursor.kind in {CursorKind.BINARY_OPERATOR, CursorKind.CALL_EXPR} else None
        equality = pair and self.token_between(*pair)[1] in {"==", "!="}
        if not text.startswith("!") and not equality:
            self.replace("condition negated", start, end, f"!bool({text})", change="not")
        for value in ["true", "false"]:
            if dropped in {None, value}:
                self.replace("condition constant", start, end, value, change=value)

    def unary(self, cursor, _parent=None):
        start, end = self.range(cursor)
        text = self.text[start:end]
        if text.startswith("!"):
            self.replace("operator dropped", start, end, f"bool({text[1:]})", change="!")
        elif text.startswith("~"):
            self.replace("operator dropped", start, end, text[1:])
        elif text.startswith("++"):
            self.replace("operator replaced", start, end, "--" + text[2:])
        elif re.match(r"-\w", text):
            self.replace("operator dropped", start, end, text[1:])

    def if_statement(self, cursor, _parent):
        first = next(cursor.get_children())
        if first.kind != CursorKind.VAR_DECL:
            self.condition(first)

    def for_statement(self, cursor, _parent):
        semicolons = [match.start() for match in re.finditer(";", self.of(cursor))]
        start = self.range(cursor)[0]
        for child in cursor.get_children():
            if start + semicolons[0] < self.range(child)[0] < start + semicolons[1]:
                self.condition(child)

    def while_statement(self, cursor, _parent):
        self.condition(next(cursor.get_children()))

    def conditional(self, cursor, _parent):
        self.condition(next(cursor.get_children()))

    def integer(self, cursor, _parent):
        start, end = self.range(cursor)
        value = re.fullmatch(r"(\d+)(\w*)", self.text[start:end])
        if not value:
            return
        number = int(value.group(1))
        others = {number + 1, number - 1, number * 2, number // 2, number * 7 // 10} if number else {1}
        for other in sorted(others - {number}):
            self.replace("constant changed", start, end, str(other) + value.group(2))
        if number:
            self.replace("constant changed", start, end, f"-{self.text[start:end]}")

    def boolean(self, cursor, _parent):
        start, end = self.range(cursor)
        self.replace("constant changed", start, end, "false" if self.text[start:end] == "true" else "true")

    def emptied(self, cursor, operator, change):
        """The value that an empty one takes the place of; `change` says which value it is."""
        start, end = self.range(cursor)
        text = self.text[start:end]
        # Pointers to members name signals and slots; other rules change literals.
        if not text or cursor.type.get_canonical().kind == TypeKind.MEMBERPOINTER \
                or re.match(r'\[|"|\d|true|false', text):
            return
        if EMPTY.fullmatch(text):
            if OTHER_THAN_EMPTY.get(text):
                self.replace(operator, start, end, OTHER_THAN_EMPTY[text], change=change)
        elif "QStringLiteral" not in text and not self.in_macro(start, end):
            self.replace(operator, start, end, f"emptied<decltype(({text}))>()", change=change)

    def call(self, cursor, parent):
        if cursor.spelling == "operator!":
            self.unary(cursor)
            return
        if cursor.spelling == "operator++":
            self.unary(cursor)
        start, end = self.range(cursor)
        arguments = [argument for argument in cursor.get_arguments()
                     if argument and self.range(argument)[1] and self.range(argument) != (start, end)]
        if cursor.spelling.startswith("operator") and cursor.spelling != "operator()":
            self.binary(cursor)
            if len(arguments) == 2 and cursor.spelling != "operator=":
                self.emptied(arguments[1], "argument emptied", cursor.spelling)
            return
        for number, argument in enumerate(arguments, 1):
            self.emptied(argument, "argument emptied", f"{cursor.spelling} {number}")
        # A declaration's own name, and a type behind "new", are no part of an expression.
        declares = parent is not None and (parent.kind == CursorKind.VAR_DECL and start == parent.location.offset
                                           or parent.kind in {CursorKind.CONSTRUCTOR, CursorKind.CXX_NEW_EXPR})
        for left, right in itertools.combinations(enumerate(arguments, 1), 2):
            change = f"{cursor.spelling} {left[0]} <-> {right[0]}"
            self.swapped_arguments(start, end, left[1], right[1], declares, change)
        self.callee(cursor)
        self.library(cursor, arguments)

    def library(self, cursor, arguments):
        start, end = self.range(cursor)
        text = self.text[start:end]
        for other in LIBRARY.get(cursor.spelling, []):
            # The last one before the arguments, for an object may be called like its function.
            before = self.text[start:self.range(arguments[0])[0]] if arguments else text
            at = [match.start() for match in re.finditer(rf"\b{cursor.spelling}\b", before)]
            if at:
                self.replace("other library call", start, end,
                             text[:at[-1]] + other + text[at[-1] + len(cursor.spelling):],
                             change=f"{cursor.spelling} -> {other}")
        if cursor.spelling == "insert" and len(arguments) == 2:
            (a, b), (c, d) = map(self.range, arguments)
            place = re.sub(r"(\.|->)insert\($", "", self.text[start:a])
            if place != self.text[start:a]:
                self.replace("other library call", start, end, f"{place}[{self.text[a:b]}] = {self.text[c:d]}",
                             change="insert -> []")

    def swapped_arguments(self, start, end, left, right, declares, change):
        (a, b), (c, d) = self.range(left), self.range(right)
        types = [re.sub(r"\bconst\b| |&", "", operand.type.get_canonical().spelling) for operand in (left, right)]
        if types[0] != types[1] or self.text[a:b] == self.text[c:d] or b > c or self.in_macro(start, end):
            return
        if declares:
            self.add("arguments swapped", [Edit(a, b, self.text[c:d]), Edit(c, d, self.text[a:b])], change=change)
        else:
            self.replace("arguments swapped", start, end,
                         self.text[start:a] + self.text[c:d] + self.text[b:c] + self.text[a:b] + self.text[d:end],
                         change=change)

    def is_ours(self, cursor):
        file = cursor.location.file
        return file is not None and (file.name.startswith(str(self.root)) or "_dbus/" in file.name
                                     or cursor.semantic_parent.spelling == "QDBusArgument")

    def sibling(self, target):
        """Name of the next declaration of the same kind and type beside the target; none when there is no other."""
        if target is None or target.semantic_parent is None or not self.is_ours(target):
            return None
        names = []
        for other in target.semantic_parent.get_children():
            seen = other.access_specifier in {AccessSpecifier.PUBLIC, AccessSpecifier.INVALID} or self.is_here(other)
            if other.kind == target.kind and other.type.spelling == target.type.spelling and seen \
                    and other.storage_class == target.storage_class and other.spelling not in names:
                names.append(other.spelling)
        if target.spelling not in names or len(names) < 2:
            return None
        return names[(names.index(target.spelling) + 1) % len(names)]

    def renamed(self, cursor, target, operator, start, end, at):
        other = self.sibling(target)
        name = target.spelling if target is not None else ""
        if other and not other.startswith("operator") and self.text[at:at + len(name)] == name:
            self.replace(operator, start, end, self.text[start:at] + other + self.text[at + len(name):end],
                         change=f"{name} -> {other}")

    def callee(self, cursor):
        target = cursor.referenced
        if target is None or target.kind not in {CursorKind.CXX_METHOD, CursorKind.FUNCTION_DECL}:
            return
        callee = next(cursor.get_children(), None)
        if callee is not None:
            start, end = self.range(cursor)
            self.renamed(cursor, target, "other function", start, end, self.range(callee)[1] - len(target.spelling))

    def reference(self, cursor, parent):
        target = cursor.referenced
        if target is None:
            return
        start, end = self.range(cursor)
        at = end - len(target.spelling)
        if target.kind == CursorKind.ENUM_CONSTANT_DECL:
            self.enumerator(cursor, target)
        elif target.kind == CursorKind.PARM_DECL and target.semantic_parent.kind in FUNCTIONS:
            self.parameter(cursor, target)
        elif target.kind in {CursorKind.VAR_DECL, CursorKind.FIELD_DECL}:
            self.renamed(cursor, target, "other variable", start, end, at)
        elif target.kind == CursorKind.CXX_METHOD and self.text[start - 1] == "&":
            self.renamed(cursor, target, "other function", start - 1, end, at)

    def parameter(self, cursor, target):
        same = [other.spelling for other in target.semantic_parent.get_arguments()
                if other.type.get_canonical().spelling == target.type.get_canonical().spelling and other.spelling]
        if target.spelling in same and len(same) > 1:
            other = same[(same.index(target.spelling) + 1) % len(same)]
            self.replace("other variable", *self.range(cursor), other, change=f"{target.spelling} -> {other}")

    def enumerator(self, cursor, target):
        names = [other.spelling for other in target.semantic_parent.get_children()]
        at = names.index(target.spelling)
        start, end = self.range(cursor)
        prefix = self.text[start:end].removesuffix(target.spelling)
        for other in sorted({names[(at + 1) % len(names)], names[at - 1]}):
            self.replace("constant changed", start, end, prefix + other, change=f"{target.spelling} -> {other}")

    def variable(self, cursor, _parent):
        start, end = self.range(cursor)
        if re.search(r"\bconstexpr\b", self.text[start:cursor.location.offset]):
            self.constants.append((start, end))
        children = list(cursor.get_children())
        is_initialised = children and "=" in self.text[cursor.location.offset:self.range(children[-1])[0]]
        if is_initialised and cursor.type.kind != TypeKind.LVALUEREFERENCE and children[-1].kind.is_expression():
            self.emptied(children[-1], "initialiser emptied", cursor.spelling)

    def constructor(self, cursor, _parent):
        children = list(cursor.get_children())
        for member, value in zip(children, children[1:]):
            if member.kind == CursorKind.MEMBER_REF and self.range(value)[0] > self.range(member)[0]:
                self.emptied(value, "initialiser emptied", member.spelling)

    def return_statement(self, cursor, parent):
        value = next(cursor.get_children(), None)
        if value is None:
            return
        start, end = self.statement_range(cursor)
        text = self.of(value)
        kind = value.type.get_canonical().kind
        result = self.function_at(start)[1]
        if kind == TypeKind.BOOL:
            if text not in {"true", "false"}:
                self.replace("return value changed", start, end, f"return !({text});", Form.STATEMENT, "not")
        elif kind in {TypeKind.INT, TypeKind.UINT, TypeKind.LONGLONG}:
            self.replace("return value changed", start, end, f"return ({text}) + 1;", Form.STATEMENT, "+ 1")
        elif result is not None and result.kind == TypeKind.LVALUEREFERENCE:
            if result.get_pointee().is_const_qualified() and "QDBusArgument" not in result.spelling:
                self.replace(
                    "return value changed", start, end,
                    f"static const std::decay_t<decltype({text})> changed{{}}; return changed;", Form.STATEMENT, "empty")
        elif EMPTY.fullmatch(text):
            self.replace("return value changed", start, end, f"return {OTHER_THAN_EMPTY.get(text) or '{nullptr}'};",
                         Form.STATEMENT, "not empty")
        else:
            self.replace("return value changed", start, end, "return {};", Form.STATEMENT, "empty")

    # --- Statements

    def statement_range(self, cursor):
        """With what stands before it for the reader only, and with its semicolon."""
        start, end = self.range(cursor)
        before = re.search(r"\bemit\s+$", self.text[:start])
        start = before.start() if before else start
        after = re.match(r"\s*;", self.text[end:])
        if after and not self.text[start:end].endswith(("}", ";")):
            end += after.end()
        return start, end

    def statements(self, compound):
        children = [child for child in compound.get_children()
                    if not self.text.startswith("Q_UNUSED", self.range(child)[0])]
        for at, child in enumerate(children):
            self.statement(child, is_last=at == len(children) - 1)
            if child.kind in BODIES:
                self.bodies(child)
        for at in range(len(children)):
            for distance in [1, 2, 3]:
                if at + distance < len(children):
                    self.swapped_statements(children[at:at + distance + 1])

    def bodies(self, cursor):
        """Statements that stand without braces."""
        for child in list(cursor.get_children())[1:]:
            start, end = self.range(child)
            in_head = self.text[:start].rstrip().endswith((";", "("))
            is_statement = child.kind == CursorKind.RETURN_STMT or self.text[end:].lstrip().startswith(";")
            if child.kind in BODIES:
                self.bodies(child)
            elif child.kind != CursorKind.COMPOUND_STMT and is_statement and not in_head:
                self.statement(child, is_last=False)

    def statement(self, cursor, is_last):
        start, end = self.statement_range(cursor)
        text = self.text[start:end]
        if not text.endswith((";", "}")) or cursor.kind == CursorKind.DECL_STMT:
            return
        if not (is_last and cursor.kind == CursorKind.RETURN_STMT):
            self.replace("statement dropped", start, end, "", Form.STATEMENT, head(text))
        if text.startswith("emit ") or SEND.match(text):
            self.replace("statement repeated", start, end, f"{text} {text}", Form.STATEMENT, head(text))
        for level, other in LOG_LEVELS.items():
            if text.startswith(level + "("):
                self.replace("log level changed", start, end, other + text[len(level):], Form.STATEMENT)

    def swapped_statements(self, between):
        """The first and the last of some statements in a row."""
        left, right = between[0], between[-1]
        kinds = {statement.kind for statement in between}
        if CursorKind.RETURN_STMT in {left.kind, right.kind} or left.kind == right.kind == CursorKind.DECL_STMT \
                or len(between) > 2 and CursorKind.DECL_STMT in kinds:
            return
        (a, b), (c, d) = self.statement_range(left), self.statement_range(right)
        if self.text[a:b] == self.text[c:d]:
            return
        form = Form.TEXT if CursorKind.DECL_STMT in kinds else Form.SWAP
        operator = "statements swapped" if len(between) == 2 else "statements swapped over a distance"
        self.add(operator, [Edit(a, b, self.text[c:d]), Edit(c, d, self.text[a:b])], form,
                 f"{head(self.text[a:b])} <-> {head(self.text[c:d])}")

    # --- Texts

    def literals(self):
        file = File.from_name(self.unit, self.path)
        whole = SourceRange.from_locations(SourceLocation.from_offset(self.unit, file, 0),
                                           SourceLocation.from_offset(self.unit, file, len(self.text)))
        for token in self.unit.get_tokens(extent=whole):
            if token.kind == TokenKind.LITERAL:
                self.literal(token.extent.start.offset, token.extent.end.offset)

    def literal(self, start, end):
        text = self.text[start:end]
        line = self.text[self.text.rfind("\n", 0, start) + 1:start]
        form = Form.TEXT if "Q_PLUGIN_METADATA" in line else Form.EXPRESSION
        if "#" in line or text[0] not in "\"'":
            return
        if text[0] == "'":
            self.add("text changed", [Edit(start, end, f"'{chr(ord(text[1]) + 1)}'")], change=text)
            return
        call = STRING_CALL.search(self.text[:start])
        first, last = (call.start(), end + 1) if call else (start, end)
        others = [text[:-1] + '~"', '""'] if text != '""' else ['"~"']
        for other in others:
            self.add("text changed", [Edit(first, last, self.text[first:start] + other + self.text[end:last])], form,
                     f"{text} -> {other}")

    def macro_bodies(self):
        for macro in re.finditer(r"^#define (\w+)\(\) (.*)$", self.text, re.MULTILINE):
            start, body = macro.start(2), macro.group(2)
            for token in re.finditer(r'"[^"]+"|\w+', body):
                at, end, text = start + token.start(), start + token.end(), token.group()
                if text in MACRO_TOKENS:
                    self.add("argument changed", [Edit(at, end, MACRO_TOKENS[text])])
                elif text in LOG_LEVELS:
                    self.add("log level changed", [Edit(at, end, LOG_LEVELS[text])], Form.TEXT)
                elif text.startswith('"'):
                    self.add("text changed", [Edit(at, end, text[:-1] + '~"')])
        for macro in re.finditer(r"^ *(Q_CONSTRUCTOR_FUNCTION|Q_INTERFACES)\(\w+\)$", self.text, re.MULTILINE):
            self.add("declaration dropped", [Edit(macro.start(), macro.end(), "")], Form.TEXT, macro.group(1))

    # --- Declarations

    def declarations(self):
        for cursor in self.cursors:
            if cursor.kind in CLASSES and cursor.is_definition():
                children = list(cursor.get_children())
                fields = [child for child in children if child.kind == CursorKind.FIELD_DECL]
                for left, right in zip(fields, fields[1:]):
                    # The order of making and releasing shows only where both do something then.
                    if all(field.type.get_canonical().kind == TypeKind.RECORD for field in (left, right)):
                        self.swapped_declarations("fields swapped", left, right)
                self.meta_members([child for child in children if child.kind == CursorKind.CXX_METHOD])

    def section(self, cursor):
        """The label that the member stands under: its place and text."""
        labels = [match for match in SECTION.finditer(self.text) if match.start() < self.range(cursor)[0]]
        return (labels[-1].start(), labels[-1].group()) if labels else (0, "")

    def meta_members(self, methods):
        """Signals and slots, whose order and whose parameters' names others can see."""
        seen = [method for method in methods if "Q_S" in self.section(method)[1] and self.is_here(method)]
        for left, right in zip(seen, seen[1:]):
            if self.section(left) == self.section(right):
                self.swapped_declarations("declarations swapped", left, right)
        for method in seen:
            for parameter in method.get_arguments():
                if parameter.spelling:
                    at = parameter.location.offset
                    self.add("parameter renamed", [Edit(at, at + len(parameter.spelling), parameter.spelling + "X")],
                             Form.TEXT)

    def swapped_declarations(self, operator, left, right):
        (a, b), (c, d) = (self.statement_range(cursor) for cursor in (left, right))
        self.add(operator, [Edit(a, b, self.text[c:d]), Edit(c, d, self.text[a:b])], Form.TEXT,
                 f"{left.spelling} <-> {right.spelling}")


RULES = {
    CursorKind.BINARY_OPERATOR: FileMutants.binary,
    CursorKind.COMPOUND_ASSIGNMENT_OPERATOR: FileMutants.binary,
    CursorKind.UNARY_OPERATOR: FileMutants.unary,
    CursorKind.IF_STMT: FileMutants.if_statement,
    CursorKind.FOR_STMT: FileMutants.for_statement,
    CursorKind.WHILE_STMT: FileMutants.while_statement,
    CursorKind.CONDITIONAL_OPERATOR: FileMutants.conditional,
    CursorKind.INTEGER_LITERAL: FileMutants.integer,
    CursorKind.CXX_BOOL_LITERAL_EXPR: FileMutants.boolean,
    CursorKind.CALL_EXPR: FileMutants.call,
    CursorKind.DECL_REF_EXPR: FileMutants.reference,
    CursorKind.MEMBER_REF_EXPR: FileMutants.reference,
    CursorKind.VAR_DECL: FileMutants.variable,
    CursorKind.CONSTRUCTOR: FileMutants.constructor,
    CursorKind.RETURN_STMT: FileMutants.return_statement,
}


def text_mutants(root, file, operator, pattern, changes, function="-"):
    """What stands in the first group of each match, changed into each of the texts that `changes` gives."""
    text = (root / file).read_text(encoding="ascii")
    for match in re.finditer(pattern, text, re.MULTILINE | re.DOTALL):
        for other in changes(match.group(1)):
            line = text.count("\n", 0, match.start(1)) + 1
            place = function if function == "-" else owner_in(text, match.start(1))
            yield Mutant(file, place, operator, Form.TEXT, [Edit(match.start(1), match.end(1), other)], line,
                         flat(match.group(1)), flat(other), f"{flat(match.group(1))[:60]} -> {flat(other)}".strip())


def owner_in(text, offset):
    """The method, signal or property of an interface file that the offset is in, or behind whose head it is."""
    heads = re.findall(r'<(?:method|signal|property) name="(\w+)"', text[:text.find(">", offset)])
    return heads[-1] if heads else "interface"


def linker_mutants(root):
    """What the plug-in's link says of its symbols and of its unloading."""
    yield from text_mutants(root, "src/plugin/exports.map", "export dropped", r"^( +[\w*]+;)$", lambda _: [""])
    yield from text_mutants(root, "src/CMakeLists.txt", "link option dropped", r"^ +(LINKER:[^\s)]+)", lambda _: [""])


OTHER_TYPES = {"u": "i", "i": "u", "s": "o", "o": "s", "b": "u", "as": "s", "v": "s"}
OTHER_ACCESS = {"read": "readwrite", "readwrite": "read", "write": "read"}
# A whole method, signal, property, argument or annotation.
ELEMENT = r'^( +<(?:{0})\b[^>]*?(?:/>|>.*?^ +</(?:{0})>|>[^\n]*</(?:{0})>))$'


def interface_mutants(root, file):
    """Names, types, directions and annotations of a bus interface."""
    found = []
    for operator, pattern, changes in [
            ("interface name changed", r'\bname="([^"]+)"', lambda name: [name + "X"]),
            ("interface type changed", r'\btype="([^"]+)"', lambda type_: [OTHER_TYPES.get(type_, "s")]),
            ("interface direction changed", r'\bdirection="(\w+)"', lambda way: ["in" if way == "out" else "out"]),
            ("interface access changed", r'\baccess="(\w+)"', lambda access: [OTHER_ACCESS[access]]),
            ("interface element dropped", ELEMENT.format("annotation"), lambda _: [""]),
            ("interface element dropped", ELEMENT.format("arg"), lambda _: [""]),
            ("interface element dropped", ELEMENT.format("method|signal|property"), lambda _: [""])]:
        found += text_mutants(root, file, operator, pattern, changes, "interface")
    return found


def interfaces_of(root, folder):
    """The bus interfaces that a folder is made from."""
    used = set()
    for file in (root / folder).rglob("*"):
        if file.name == "CMakeLists.txt":
            used |= set(re.findall(r"ringlet_dbus_(?:adaptor|proxy)\(\w+ ([\w.]+)", file.read_text(encoding="utf-8")))
        elif file.suffix == ".qrc":
            used |= set(re.findall(r"([\w.]+)\.xml", file.read_text(encoding="utf-8")))
    return [f"dbus/{name}.xml" for name in sorted(used) if (root / f"dbus/{name}.xml").exists()]


def sources_of(root, folder):
    """Paths of the files whose AST is looked at."""
    return sorted(path.relative_to(root).as_posix() for path in (root / folder).rglob("*")
                  if path.suffix in {".h", ".cpp"})


def make(parser):
    """All mutants, and for each file the ranges of its constexpr variables."""
    files, found, constants = set(sources_of(parser.root, parser.folder)), [], {}
    for source in sorted(file for file in files if file in parser.commands):
        unit = parser.parse(source)
        errors = [str(diagnostic) for diagnostic in unit.diagnostics if diagnostic.severity >= 3]
        if errors:
            raise RuntimeError("\n".join(errors))
        included = {include.include.name for include in unit.get_includes()} | {str(parser.root / source)}
        for file in sorted(file for file in files if str(parser.root / file) in included):
            maker = FileMutants(parser.root, file, unit)
            found += maker.make()
            constants[file] = maker.constants
            files.discard(file)
    if files:
        raise RuntimeError(f"no source includes {', '.join(sorted(files))}")
    if parser.folder == "src":
        found += linker_mutants(parser.root)
    for interface in interfaces_of(parser.root, parser.folder):
        found += interface_mutants(parser.root, interface)
    return number_occurrences(found), constants
