# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

import contextlib
import pathlib
import tempfile


@contextlib.contextmanager
def made_tree(contents):
    """A directory with the given files, by path; it goes when the block ends."""
    with tempfile.TemporaryDirectory() as directory:
        root = pathlib.Path(directory)
        for path, text in contents.items():
            (root / path).parent.mkdir(parents=True, exist_ok=True)
            (root / path).write_text(text, encoding="utf-8")
        yield root
