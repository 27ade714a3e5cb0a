# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Writes the C++ program that stands in a text, as it stands there: readmeprogram.py TEXT PROGRAM

The text promises that it is short. More than one program, or one of over twenty lines, is an error.
"""

import pathlib
import re
import sys

LIMIT = 20

text, program = map(pathlib.Path, sys.argv[1:])
blocks = re.findall(r"^```cpp\n(.*?)^```$", text.read_text(encoding="utf-8"), re.MULTILINE | re.DOTALL)
if len(blocks) != 1:
    sys.exit(f"{text}: there are {len(blocks)} C++ programs in it instead of one")
lines = len(blocks[0].splitlines())
if lines > LIMIT:
    sys.exit(f"{text}: the program has {lines} lines; it may have {LIMIT}")
program.write_text(blocks[0], encoding="utf-8")
