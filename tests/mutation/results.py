# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""What is known of the mutants, kept in a file to which each result is appended at once."""

import hashlib
import json


def digest(root, files):
    """Of the names and contents of the files, and of what is in the folders."""
    whole = hashlib.sha256()
    found = {path for file in files for path in ([root / file] if (root / file).is_file() else (root / file).rglob("*"))
             if path.is_file() and "__pycache__" not in path.parts}
    for file in sorted(path.relative_to(root).as_posix() for path in found):
        whole.update(f"{file}\0".encode() + hashlib.sha256((root / file).read_bytes()).digest())
    return whole.hexdigest()[:16]


class Results:
    """Results that still hold, by the mutant's id and the kind of build.

    A kill holds until the mutated file or the source of the test that noticed changes. A survival holds until
    any source or any test changes, and so does that a mutant does not compile. Of what all tests stand on
    (tests/support) it is taken that it tells right from wrong as it did before.
    """

    def __init__(self, path, root, sources, tests):
        """`sources` and `tests` are files or folders."""
        self.path = path
        self.root = root
        self.digests = {}
        self.everything = digest(root, [*sources, *tests])
        self.known = {}
        if path.exists():
            for line in path.read_text(encoding="utf-8").splitlines():
                self.keep(json.loads(line))

    def keep(self, record):
        key = record["id"], record["build"]
        if record["holds"] == self.condition(record["state"], record["file"], record.get("source")):
            self.known[key] = record
        else:
            self.known.pop(key, None)

    def condition(self, state, file, source):
        """What a result depends on, as it is now."""
        return [self.digest_of(file), self.digest_of(source)] if state == "killed" else [self.everything]

    def digest_of(self, file):
        if file and file not in self.digests:
            self.digests[file] = digest(self.root, [file])
        return self.digests.get(file)

    def get(self, mutant, build):
        return self.known.get((mutant.id, build))

    def add(self, mutant, build, state, test=None, how=None):
        """`state` is "killed", "survived" or "not compiling"."""
        record = {"id": mutant.id, "build": build, "state": state, "file": mutant.file}
        if test:
            record.update(test=test.name, source=test.source, how=how)
        record["holds"] = self.condition(state, mutant.file, record.get("source"))
        with self.path.open("a", encoding="utf-8") as file:
            file.write(json.dumps(record) + "\n")
        self.keep(record)
