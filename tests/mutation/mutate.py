#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Makes mutants of the plug-in's sources and runs the tests against each."""

import argparse
import concurrent.futures
import json
import os
import pathlib
import resource
import shutil
import signal
import subprocess
import sys
import threading
import time

import equivalents
import mutants as mutant_files
import results as result_files
import schemata
import suite

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
# What a copy of the tree is made of. The top is tests/mutation/tree.
COPIED = ["cmake", "dbus", "platform", "src", "tests/support", "tests/unit", "tests/bus", "tests/tree"]
# What is mutated, and what it is made of and runs in.
MUTATED = ["src", "dbus", "platform"]
TESTS = ["tests/unit/*_test.cpp", "tests/bus/*_test.cpp", "tests/tree/plugin_test.py"]

# What must come in a test is waited for so long: less than elsewhere, for with a mutant it often never comes.
WAIT_LIMITS = {"plain": 5000, "sanitized": 10000}
BUILD_TYPE = ["-DCMAKE_BUILD_TYPE=Debug"]
OPTIONS = {"plain": ["-DCMAKE_CXX_FLAGS_DEBUG=-O0"], "sanitized": ["-DRINGLET_SANITIZE=address,undefined"]}
SANITIZER = {"ASAN_OPTIONS": "detect_leaks=1:strict_string_checks=1", "UBSAN_OPTIONS": "print_stacktrace=0",
             "LSAN_OPTIONS": f"print_suppressions=0:suppressions={ROOT}/tests/support/leaks.supp"}


def say(text):
    print(time.strftime("%H:%M:%S"), text, flush=True)


def write_changed(path, text):
    """Leaves a file alone that has the text already, so that nothing is built again for it."""
    if not path.exists() or path.read_text(encoding="utf-8") != text:
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")


def files_below(root, folders):
    return sorted(path.relative_to(root).as_posix() for folder in folders for path in (root / folder).rglob("*")
                  if path.is_file() and "__pycache__" not in path.parts)


def copy_tree(target):
    """Brings the copy up to date. The files that it has to have."""
    wanted = {file: ROOT / file for file in files_below(ROOT, COPIED)}
    wanted.update((path.name, path) for path in (HERE / "tree").iterdir())
    for file in set(files_below(target, ["."])) - set(wanted):
        (target / file).unlink()
    for file, path in wanted.items():
        write_changed(target / file, path.read_text(encoding="utf-8"))


def shorten_waits(tree, limit):
    header = tree / "tests/support/waitfor.h"
    text = header.read_text(encoding="utf-8")
    old = "constexpr int waitLimitMs = 20000;"
    if old not in text:
        raise RuntimeError(f"{header} does not have '{old}' any more")
    write_changed(header, text.replace(old, f"constexpr int waitLimitMs = {limit};"))


def run(*command, check=True):
    """Runs a command of the build; its output is shown when it fails."""
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if check and done.returncode:
        sys.exit(f"{done.stdout}\n{' '.join(command)} failed")
    return done.returncode == 0


class Work:
    """The build directory: copies of the tree, builds of them, and what is known."""

    def __init__(self, directory, jobs):
        self.directory = directory
        self.jobs = jobs
        self.runner = suite.Runner()
        self.tests_files = sorted(path.relative_to(ROOT).as_posix() for pattern in TESTS for path in ROOT.glob(pattern))
        makers = [HERE / "mutants.py", HERE / "maker.py", HERE / "schemata.py", *(HERE / "tree").iterdir()]
        self.sources = files_below(ROOT, MUTATED)
        self.base = result_files.digest(ROOT, self.sources + [path.relative_to(ROOT).as_posix() for path in makers])
        self.mutants = []
        self.lock = threading.Lock()

    def path(self, *names):
        return self.directory.joinpath(*names)

    def configure(self, tree, build, kind):
        run("cmake", "-S", str(tree), "-B", str(build), "-G", "Ninja", *BUILD_TYPE, *OPTIONS[kind])

    def make_mutants(self):
        """Makes the mutants and the sources that hold many of them, unless they are there already."""
        original = self.path("original")
        copy_tree(original)
        made = self.path("mutants.json")
        if made.exists():
            record = json.loads(made.read_text(encoding="utf-8"))
            if record["base"] == self.base:
                self.mutants = [mutant_files.from_json(mutant) for mutant in record["mutants"]]
                self.texts = record["texts"]
                return
        # Only here: the list and the report need no clang.
        import maker
        say("making mutants")
        self.configure(original, self.path("build-original"), "plain")
        # Makes the headers that the sources include.
        run("cmake", "--build", str(self.path("build-original")), "--target", "ringlet_core")
        parser = maker.Parser(self.path("build-original"), original)
        self.mutants, constants = maker.make(parser)
        say(f"{len(self.mutants)} mutants")
        self.texts = schemata.fits(parser, self.mutants, constants, say)
        made.write_text(json.dumps({"base": self.base, "texts": self.texts,
                                    "mutants": [mutant_files.to_json(mutant) for mutant in self.mutants]}))

    def results(self):
        return result_files.Results(self.path("results.jsonl"), ROOT, self.sources, self.tests_files)

    def build(self, kind, tree_name, texts):
        """A build of a copy of the tree with other texts in it; its tests."""
        tree, build = self.path(tree_name), self.path(f"build-{tree_name}")
        copy_tree(tree)
        for file, text in texts.items():
            write_changed(tree / file, text)
        shorten_waits(tree, WAIT_LIMITS[kind])
        say(f"building {build.name}")
        self.configure(tree, build, kind)
        run("cmake", "--build", str(build), "--parallel", str(self.jobs))
        tests = suite.tests_of(build, tree, self.tests_files)
        if kind == "sanitized":
            for test in tests:
                test.environment.update(SANITIZER)
        return tests

    def measure(self, name, tests):
        """Runs every test without a mutant. What was learnt is kept for the same sources."""
        known = self.path(f"measured-{name}.json")
        digest = self.base + result_files.digest(ROOT, self.tests_files)
        learnt = json.loads(known.read_text(encoding="utf-8")) if known.exists() else {}
        if learnt.get("digest") == digest:
            for test in tests:
                test.seconds, sites = learnt["tests"][test.name]
                test.sites = frozenset(sites)
            return
        say(f"{len(tests)} tests without a mutant")
        self.parallel(lambda test: suite.measure(self.runner, test, self.directory), tests)
        known.write_text(json.dumps({"digest": digest, "tests": {
            test.name: [test.seconds, sorted(test.sites)] for test in tests}}), encoding="utf-8")

    def parallel(self, action, items):
        with concurrent.futures.ThreadPoolExecutor(self.jobs) as pool:
            waiting = {pool.submit(action, item) for item in items}
            try:
                for done in concurrent.futures.as_completed(waiting):
                    done.result()
            except BaseException:
                self.runner.stop()
                for future in waiting:
                    future.cancel()
                raise


class Order:
    """Which tests to run first against a mutant: those that have noticed others of the same function or file."""

    def __init__(self):
        self.kills = {}

    def learn(self, mutant, test_name):
        for place in [mutant.file, (mutant.file, mutant.function)]:
            counts = self.kills.setdefault(place, {})
            counts[test_name] = counts.get(test_name, 0) + 1

    def sorted(self, mutant, tests):
        near = self.kills.get((mutant.file, mutant.function), {})
        far = self.kills.get(mutant.file, {})
        return sorted(tests, key=lambda test: (-near.get(test.name, 0), -(far.get(test.name, 0) // 4), test.seconds))


class Stage:
    """Runs mutants against the tests of one kind of build."""

    def __init__(self, work, kind, results):
        self.work = work
        self.kind = kind
        self.results = results
        self.order = Order()
        self.done = 0
        by_id = {mutant.id: mutant for mutant in work.mutants}
        for (identity, _), record in results.known.items():
            if record["state"] == "killed" and identity in by_id:
                self.order.learn(by_id[identity], record["test"])

    def judge(self, mutant, tests, number):
        found = suite.try_mutant(self.work.runner, self.order.sorted(mutant, tests), number)
        with self.work.lock:
            self.done += 1
            if found:
                test, how = found
                self.order.learn(mutant, test.name)
                self.results.add(mutant, self.kind, "killed", test, how)
                say(f"{self.done}/{self.total} {mutant.id} {mutant.file}:{mutant.line} {how}: {test.name}")
            else:
                self.results.add(mutant, self.kind, "survived")
                say(f"{self.done}/{self.total} {mutant.id} survived {len(tests)} tests\n{equivalents.entry(mutant)}")

    def run_together(self, mutants, tests):
        """Mutants that are in one program."""
        self.total = len(mutants)
        self.work.parallel(
            lambda mutant: self.judge(mutant, [test for test in tests if mutant.number in test.sites], mutant.number),
            mutants)

    def run_singly(self, mutants, tests, reach):
        """Mutants that need a program of their own; `reach` gives the numbers of those in the same function."""
        self.total = len(mutants)
        tree, build = self.work.path("single"), self.work.path("build-single")
        original = self.work.path("original")
        changed = None
        for mutant in sorted(mutants, key=lambda mutant: (mutant.file, mutant.line)):
            if changed and changed != mutant.file:
                shutil.copyfile(original / changed, tree / changed)
            changed = mutant.file
            text = mutant.apply((original / changed).read_text(encoding="utf-8"))
            (tree / changed).write_text(schemata.with_include(text), encoding="utf-8")
            if run("cmake", "--build", str(build), "--parallel", str(self.work.jobs), check=False):
                near = reach(mutant)
                reached = [test for test in tests if not near or near & test.sites]
                self.judge(mutant, reached, 0)
            else:
                self.done += 1
                self.results.add(mutant, self.kind, "not compiling")
                say(f"{self.done}/{self.total} {mutant.id} {mutant.file}:{mutant.line} does not compile")
        if changed:
            shutil.copyfile(original / changed, tree / changed)


def run_all(work, chosen, results, equivalent):
    """Everything that is not known yet: together, then those left with sanitizers, then the others singly.

    What is listed as equivalent is not run, unless it is the only one chosen.
    """
    if len(chosen) > 1:
        chosen = [mutant for mutant in chosen if mutant.id not in equivalent]

    def unknown(mutant, build):
        return results.get(mutant, build) is None

    def is_killed(mutant):
        return any((results.get(mutant, build) or {}).get("state") == "killed" for build in OPTIONS)

    together = [mutant for mutant in chosen if mutant.number]
    measured = None
    todo = [mutant for mutant in together if unknown(mutant, "plain")]
    singles = [mutant for mutant in chosen if not mutant.number and unknown(mutant, "plain")]
    if todo or singles:
        measured = work.build("plain", "mutated", work.texts)
        work.measure("plain", measured)
    if todo:
        Stage(work, "plain", results).run_together(todo, measured)

    todo = [mutant for mutant in together if not is_killed(mutant) and unknown(mutant, "sanitized")]
    if todo:
        tests = work.build("sanitized", "sanitized", work.texts)
        work.measure("sanitized", tests)
        Stage(work, "sanitized", results).run_together(todo, tests)

    if singles:
        tests = work.build("plain", "single", {})
        times = {test.name: (test.seconds, test.sites) for test in measured}
        for test in tests:
            test.seconds, test.sites = times[test.name]

        def reach(mutant):
            return {other.number for other in work.mutants if other.number and mutant.function != "-"
                    and (other.file, other.function) == (mutant.file, mutant.function)}
        Stage(work, "plain", results).run_singly(singles, tests, reach)


def report(work, chosen, results, equivalent, stale):
    """Prints the figures and the survivors; whether all is well."""
    counts = {"killed": 0, "timed out": 0, "not compiling": 0, "equivalent": 0, "survived": 0, "not run": 0}
    killed_by_sanitizer, survivors, contradicted = 0, [], []
    for mutant in chosen:
        records = [results.get(mutant, build) for build in OPTIONS]
        states = {record["state"] for record in records if record}
        if "killed" in states:
            record = next(record for record in records if record and record["state"] == "killed")
            counts["timed out" if record["how"] == "timed out" else "killed"] += 1
            killed_by_sanitizer += record["build"] == "sanitized"
            if mutant.id in equivalent:
                contradicted.append(mutant)
        elif "not compiling" in states:
            counts["not compiling"] += 1
        elif mutant.id in equivalent:
            counts["equivalent"] += 1
        elif records[0] and (records[1] or not mutant.number):
            counts["survived"] += 1
            survivors.append(mutant)
        else:
            counts["not run"] += 1
    noticed = counts["killed"] + counts["timed out"]
    judged = noticed + counts["survived"]
    print(f"\n{len(chosen)} mutants made, {sum(1 for mutant in chosen if mutant.number)} of them in one program")
    for state, count in counts.items():
        print(f"{count:6} {state}" + (f" ({killed_by_sanitizer} by sanitizers alone)" if state == "killed" else ""))
    if judged:
        print(f"{100 * noticed / judged:.1f} % of the {judged} that can be noticed were noticed")
    if survivors:
        print("\nSurvivors:\n")
        for mutant in survivors:
            print(f"# {mutant.file}:{mutant.line} {mutant.id}\n{equivalents.entry(mutant)}\n")
    for mutant in contradicted:
        print(f"{mutant.id} is listed as equivalent, but was noticed:\n{equivalents.entry(mutant)}\n")
    for text in stale:
        print(f"This is listed as equivalent, but there is no such mutant:\n{text}\n")
    return not contradicted and not stale and not survivors and not counts["not run"]


def choose(mutants, only):
    if not only:
        return mutants
    chosen = [mutant for mutant in mutants if mutant.id == only or only in mutant.file]
    if not chosen:
        sys.exit(f"no mutant has the id '{only}', and no mutated file has it in its name; --list shows all")
    return chosen


def arguments():
    parser = argparse.ArgumentParser(prog="scripts/check mutate", description=__doc__)
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), metavar="N", help="how many tests run at a time")
    parser.add_argument("--only", metavar="FILE|ID", help="only mutants of files with this in their name, or the one")
    parser.add_argument("--list", action="store_true", help="print the mutants and run nothing")
    parser.add_argument("--report", action="store_true", help="print what is known and run nothing")
    parser.add_argument("--directory", type=pathlib.Path, default=ROOT / "build-mutation", metavar="DIR",
                        help="where everything is built and kept (default: build-mutation)")
    options = parser.parse_args()
    if options.jobs < 1:
        parser.error("--jobs: needs at least 1")
    return options


def main():
    options = arguments()
    signal.signal(signal.SIGTERM, lambda *_: (_ for _ in ()).throw(KeyboardInterrupt))
    options.directory.mkdir(parents=True, exist_ok=True)
    work = Work(options.directory.resolve(), options.jobs)
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    try:
        work.make_mutants()
        chosen = choose(work.mutants, options.only)
        if options.list:
            for mutant in chosen:
                print(f"# {mutant.file}:{mutant.line} {mutant.id}\n{equivalents.entry(mutant)}\n")
            return 0
        reasons = equivalents.read((HERE / "equivalent.txt").read_text(encoding="utf-8"))
        equivalent, stale = equivalents.match(reasons, work.mutants)
        results = work.results()
        if not options.report:
            run_all(work, chosen, results, equivalent)
        return 0 if report(work, chosen, results, equivalent, stale) else 1
    except (RuntimeError, ValueError) as error:
        print(f"scripts/check mutate: {error}", file=sys.stderr)
        return 1
    except (KeyboardInterrupt, suite.Stopped):
        work.runner.stop()
        print("\nstopped; the next run goes on from here", file=sys.stderr)
        return 130


if __name__ == "__main__":
    sys.exit(main())
