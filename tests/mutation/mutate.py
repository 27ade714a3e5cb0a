#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Makes mutants of a folder's sources and runs the tests against each."""

import argparse
import concurrent.futures
import dataclasses
import json
import os
import pathlib
import re
import resource
import shutil
import signal
import subprocess
import sys
import threading
import time

import equivalents
import mutants as mutant_files
import observed
import results as result_files
import schemata
import suite

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]


@dataclasses.dataclass(frozen=True)
class Target:
    """A folder whose sources are mutated, and what judges it."""
    folder: str
    goal: int      # percent of its mutants to be noticed, of those that are not equal to the original
    mutated: list  # its targets
    built: list    # targets that the tests need
    tests: dict    # pattern of the tests' names by folder

    @property
    def name(self):
        return self.folder.replace("/", "-")


TARGETS = [
    Target("src", 100, ["ringlet_core"], ["tests/unit/all", "tests/bus/all", "voicecall-ringlet-plugin", "pluginprobe"],
           {"tests/unit": "^(?!LostProgram)", "tests/bus": "", "tests/tree": "^Plugin[.]"}),
    Target("platform", 95, ["voicecall", "appruntime"], ["tests/platform/all", "tests/bus/all"],
           {"tests/platform": "^(?!SystemPlatform)", "tests/bus": ""}),
    Target("desktop/voicecalld", 95, ["voicecalld"], ["tests/desktop/all"], {"tests/desktop": ""}),
    Target("kit/client", 95, ["RingletClient"], ["tests/client/all", "tests/kit/all"],
           {"tests/client": "", "tests/kit": ""}),
    Target("busserver", 95, ["busserver"], ["tests/desktop/all", "tests/client/all", "tests/kit/all"],
           {"tests/desktop": "", "tests/client": "", "tests/kit": ""}),
]

# What a copy of the tree is made of.
COPIED = ["CMakeLists.txt", "README.md", "busserver", "cmake", "dbus", "desktop", "docs", "kit", "platform", "programs",
          "scripts", "src", "tests"]

# Where the figures of complete runs are written to.
PAGE = ROOT / "docs" / "reliability.md"

# What must come in a test is waited for so long: less than elsewhere, for with a mutant it often never comes.
WAIT_LIMITS = {"plain": 5000, "sanitized": 10000}
BUILD_TYPE = ["-DCMAKE_BUILD_TYPE=Debug"]
OPTIONS = {"plain": ["-DCMAKE_CXX_FLAGS_DEBUG=-O0"], "sanitized": ["-DRINGLET_SANITIZE=address,undefined"]}
# Kinds of results; the last one is of what is listed as equal.
BUILDS = [*OPTIONS, "observed"]
SANITIZER = {"ASAN_OPTIONS": "detect_leaks=1:strict_string_checks=1", "UBSAN_OPTIONS": "print_stacktrace=0",
             "LSAN_OPTIONS": f"print_suppressions=0:suppressions={ROOT}/tests/support/leaks.supp"}


def say(text):
    print(time.strftime("%H:%M:%S"), text, flush=True)


def write_changed(path, content):
    """Leaves a file alone that has the content already, so that nothing is built again for it."""
    content = content.encode() if isinstance(content, str) else content
    if not path.exists() or path.read_bytes() != content:
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)


def files_below(root, names):
    """Files of these names, and all in the folders of these names."""
    return sorted(path.relative_to(root).as_posix() for name in names
                  for path in ([root / name] if (root / name).is_file() else (root / name).rglob("*"))
                  if path.is_file() and "__pycache__" not in path.parts)


def copy_tree(target, changed=()):
    """Brings the copy up to date, but for the files that will be written with other texts in them."""
    wanted = files_below(ROOT, COPIED)
    for file in set(files_below(target, ["."])) - set(wanted):
        (target / file).unlink()
    for file in set(wanted) - set(changed):
        write_changed(target / file, (ROOT / file).read_bytes())
        (target / file).chmod((ROOT / file).stat().st_mode)


def shorten_waits(tree, limit):
    header = tree / "tests/support/waitfor.h"
    text = (ROOT / "tests/support/waitfor.h").read_text(encoding="utf-8")
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

    def __init__(self, directory, target, jobs):
        self.directory = directory / target.name
        self.directory.mkdir(parents=True, exist_ok=True)
        self.target = target
        self.jobs = jobs
        self.runner = suite.Runner()
        makers = ["mutants.py", "maker.py", "schemata.py", "switch"]
        self.sources = [target.folder, "dbus", "platform"]
        self.base = result_files.digest(ROOT, self.sources + [f"tests/mutation/{name}" for name in makers])
        self.mutants = []
        self.lock = threading.Lock()

    def path(self, *names):
        return self.directory.joinpath(*names)

    def configure(self, tree, build, kind):
        run("cmake", "-S", str(tree), "-B", str(build), "-G", "Ninja", *BUILD_TYPE, *OPTIONS[kind],
            "-DBUILD_TESTING=ON", f"-DMUTATED_TARGETS={';'.join(self.target.mutated)}",
            f"-DCMAKE_PROJECT_ringlet_INCLUDE={tree}/tests/mutation/switch/mutants.cmake")

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
        say(f"making mutants of {self.target.folder}")
        self.configure(original, self.path("build-original"), "plain")
        # Makes the headers that the sources include.
        run("cmake", "--build", str(self.path("build-original")), "--target", *self.target.mutated)
        parser = maker.Parser(self.path("build-original"), original, self.target.folder)
        self.mutants, constants = maker.make(parser)
        say(f"{len(self.mutants)} mutants")
        self.texts = schemata.fits(parser, self.mutants, constants, say)
        made.write_text(json.dumps({"base": self.base, "texts": self.texts,
                                    "mutants": [mutant_files.to_json(mutant) for mutant in self.mutants]}))

    def results(self):
        return result_files.Results(self.path("results.jsonl"), ROOT, self.sources, [*self.target.tests])

    def build(self, kind, tree_name, texts):
        """A build of a copy of the tree with other texts in it; its tests."""
        tree, build = self.path(tree_name), self.path(f"build-{tree_name}")
        copy_tree(tree, [*texts, "tests/support/waitfor.h"])
        for file, text in texts.items():
            write_changed(tree / file, text)
        shorten_waits(tree, WAIT_LIMITS[kind])
        say(f"building {build.name}")
        self.configure(tree, build, kind)
        observer = ["observe"] if self.target.folder == "src" else []
        run("cmake", "--build", str(build), "--parallel", str(self.jobs), "--target", *self.target.built, *observer)
        tests = suite.tests_of(build, tree, self.target.tests)
        if kind == "sanitized":
            for test in tests:
                test.environment.update(SANITIZER)
        return tests

    def measure(self, name, tests):
        """Runs every test without a mutant. What was learnt is kept for the same sources."""
        known = self.path(f"measured-{name}.json")
        digest = self.base + result_files.digest(ROOT, [*self.target.tests, "tests/support"])
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
                say(f"{self.done}/{self.total} {mutant.id} survived {len(tests)} tests: {mutant.name}")

    def run_together(self, mutants, tests):
        """Mutants that are in one program."""
        self.total = len(mutants)
        self.work.parallel(
            lambda mutant: self.judge(mutant, [test for test in tests if mutant.number in test.sites], mutant.number),
            mutants)

    def run_singly(self, mutants, tests, reach, observer, equivalent):
        """Mutants that need a program of their own; `reach` gives the numbers of those in the same function. Those
        that are listed as equal are observed, too."""
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
            if run("cmake", "--build", str(build), "--parallel", str(self.work.jobs), "--target",
                   *self.work.target.built, *(["observe"] if observer else []), check=False):
                near = reach(mutant)
                reached = [test for test in tests if not near or near & test.sites]
                self.judge(mutant, reached, 0)
                if mutant.id in equivalent and observer and not is_killed(self.results, mutant):
                    self.kind = "observed"
                    self.judge(mutant, observer.tests(), 0)
                    self.kind = "plain"
            else:
                self.done += 1
                self.results.add(mutant, self.kind, "not compiling")
                say(f"{self.done}/{self.total} {mutant.id} {mutant.file}:{mutant.line} does not compile")
        if changed:
            shutil.copyfile(original / changed, tree / changed)


def is_killed(results, mutant):
    return any((results.get(mutant, build) or {}).get("state") == "killed" for build in BUILDS)


def missing(work, results, equivalent, mutant):
    """Kinds of runs that the mutant still needs. What is listed as equal is looked at like any other, and
    more closely."""
    first = results.get(mutant, "plain")
    if is_killed(results, mutant) or (first and first["state"] == "not compiling"):
        return []
    needed = ["plain", "sanitized"] if mutant.number else ["plain"]
    if mutant.id in equivalent and work.target.folder == "src":
        needed.append("observed")
    return [build for build in needed if results.get(mutant, build) is None]


def run_all(work, chosen, results, equivalent):
    """Everything that is not known yet: together, then those left with sanitizers, what is listed as equal under
    observation, and then the others singly."""
    def todo(build, together=True):
        return [mutant for mutant in chosen if bool(mutant.number) == together
                and build in missing(work, results, equivalent, mutant)]

    measured = None
    if any(todo(build, together) for build in ["plain", "observed"] for together in [True, False]):
        measured = work.build("plain", "mutated", work.texts)
        work.measure("plain", measured)
    if todo("plain"):
        Stage(work, "plain", results).run_together(todo("plain"), measured)
    if todo("sanitized"):
        tests = work.build("sanitized", "sanitized", work.texts)
        work.measure("sanitized", tests)
        Stage(work, "sanitized", results).run_together(todo("sanitized"), tests)
    if todo("observed"):
        observe = observed.Observer(work.runner, work.path("build-mutated"), work.jobs, say)
        Stage(work, "observed", results).run_together(todo("observed"), observe.tests())

    singles = sorted({mutant.id: mutant for build in ["plain", "observed"] for mutant in todo(build, False)}.values(),
                     key=lambda mutant: (mutant.file, mutant.line))
    if singles:
        run_singles(work, singles, results, equivalent, measured)


def run_singles(work, singles, results, equivalent, measured):
    tests = work.build("plain", "single", {})
    times = {test.name: (test.seconds, test.sites) for test in measured}
    for test in tests:
        test.seconds, test.sites = times[test.name]
    observer = None
    if any(mutant.id in equivalent for mutant in singles) and work.target.folder == "src":
        observer = observed.Observer(work.runner, work.path("build-single"), work.jobs, say)

    def reach(mutant):
        return {other.number for other in work.mutants if other.number and mutant.function != "-"
                and (other.file, other.function) == (mutant.file, mutant.function)}
    Stage(work, "plain", results).run_singly(singles, tests, reach, observer, equivalent)


COLUMNS = ["made", "noticed", "equal", "not compiling", "not noticed"]


def tally(work, chosen, results, equivalent):
    """Counts by kind of mutant, the survivors, what is listed wrongly, and how many have not been run to the end."""
    table, survivors, contradicted, unfinished = {}, [], [], 0
    for mutant in chosen:
        row = table.setdefault(mutant.operator, dict.fromkeys(COLUMNS, 0))
        row["made"] += 1
        killed = is_killed(results, mutant)
        if killed and mutant.id in equivalent:
            contradicted.append(mutant)
        if killed:
            row["noticed"] += 1
        elif missing(work, results, equivalent, mutant):
            unfinished += 1
        elif results.get(mutant, "plain")["state"] == "not compiling":
            row["not compiling"] += 1
        elif mutant.id in equivalent:
            row["equal"] += 1
        else:
            row["not noticed"] += 1
            survivors.append(mutant)
    return table, survivors, contradicted, unfinished


def table_text(table):
    """A table for the page, which adds up, with its last line in the same columns."""
    total = {column: sum(row[column] for row in table.values()) for column in COLUMNS}
    lines = ["| kind | " + " | ".join(COLUMNS) + " |", "|---|" + "---:|" * len(COLUMNS)]
    for kind, row in [*sorted(table.items()), ("all", total)]:
        lines.append(f"| {kind} | " + " | ".join(str(row[column]) for column in COLUMNS) + " |")
    judged = total["noticed"] + total["not noticed"]
    lines += ["", f"{100 * total['noticed'] / max(1, judged):.1f} % of the {judged} that are not equal were noticed."]
    return "\n".join(lines), judged and 100 * total["noticed"] / judged


def write_page(target, text):
    """Puts the figures between the marks of the folder on the page, with the command and the day."""
    page = PAGE.read_text(encoding="utf-8")
    begin, end = f"<!-- mutants of {target.folder} -->", "<!-- end -->"
    head = f"`scripts/check mutate --target {target.folder}`, run to its end on {time.strftime('%Y-%m-%d')}:"
    if begin not in page:
        raise RuntimeError(f"{PAGE.name} has no line '{begin}'")
    PAGE.write_text(re.sub(f"{begin}.*?{end}", lambda _: f"{begin}\n{head}\n\n{text}\n{end}", page, count=1,
                           flags=re.DOTALL), encoding="utf-8")


def report(work, chosen, results, equivalent, stale):
    """Prints the figures, unless some are missing, and the survivors; whether all is well."""
    table, survivors, contradicted, unfinished = tally(work, chosen, results, equivalent)
    for mutant in survivors:
        print(f"survived: {mutant.id} {mutant.name}\n    {mutant.file}:{mutant.line}\n    - {mutant.original}\n"
              f"    + {mutant.changed}")
    for mutant in contradicted:
        print(f"listed as equal, but was noticed: {mutant.id} {mutant.name}")
    for name in stale:
        print(f"listed as equal, but there is no such mutant: {name}")
    if unfinished:
        print(f"{work.target.folder}: {unfinished} of {len(chosen)} mutants have not been run to the end: no score")
        return False
    text, score = table_text(table)
    print(f"\n{text}")
    if len(chosen) == len(work.mutants):
        write_page(work.target, text)
    return not contradicted and not stale and score >= work.target.goal


def choose(mutants, only):
    if not only:
        return mutants
    chosen = [mutant for mutant in mutants if mutant.id == only or only in mutant.name]
    if not chosen:
        sys.exit(f"no mutant has the id '{only}', and none has it in its name; --list shows all")
    return chosen


def arguments():
    parser = argparse.ArgumentParser(prog="scripts/check mutate", description=__doc__)
    parser.add_argument("--target", action="append", choices=[target.folder for target in TARGETS],
                        help="a folder to mutate, several times for more (default: all that there are)")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), metavar="N", help="how many tests run at a time")
    parser.add_argument("--only", metavar="TEXT|ID", help="only mutants with this in their name, or the one")
    parser.add_argument("--list", action="store_true", help="print the mutants and run nothing")
    parser.add_argument("--report", action="store_true", help="print what is known and run nothing")
    parser.add_argument("--directory", type=pathlib.Path, default=ROOT / "build-mutation", metavar="DIR",
                        help="where everything is built and kept (default: build-mutation)")
    options = parser.parse_args()
    if options.jobs < 1:
        parser.error("--jobs: needs at least 1")
    return options


def judge_target(work, options):
    """Whether all is well with the target's mutants."""
    work.make_mutants()
    chosen = choose(work.mutants, options.only)
    if options.list:
        for mutant in chosen:
            print(f"{mutant.id} {mutant.name}")
        return True
    reasons = equivalents.read((HERE / "equivalent.txt").read_text(encoding="utf-8"))
    files = {mutant.file for mutant in work.mutants}
    listed = {name: reason for name, reason in reasons.items()
              if name.split(" ")[0] in files or name.startswith(f"{work.target.folder}/")}
    equivalent, stale = equivalents.match(listed, work.mutants)
    results = work.results()
    if not options.report:
        run_all(work, chosen, results, equivalent)
    return report(work, chosen, results, equivalent, [] if options.only else stale)


def main():
    options = arguments()
    signal.signal(signal.SIGTERM, lambda *_: (_ for _ in ()).throw(KeyboardInterrupt))
    # It takes all that nobody else wants.
    os.nice(19)
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    chosen = [target for target in TARGETS if target.folder in (options.target or [target.folder])
              and (options.target or (ROOT / target.folder).exists())]
    well = True
    for target in chosen:
        work = Work(options.directory.resolve(), target, options.jobs)
        try:
            well = judge_target(work, options) and well
        except (RuntimeError, ValueError) as error:
            print(f"scripts/check mutate: {error}", file=sys.stderr)
            return 1
        except (KeyboardInterrupt, suite.Stopped):
            work.runner.stop()
            print("\nstopped: no score; the next run goes on from here", file=sys.stderr)
            return 130
    return 0 if well else 1


if __name__ == "__main__":
    sys.exit(main())
