# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""The tests of a build, run one by one as ctest runs them."""

import array
import dataclasses
import json
import os
import pathlib
import resource
import shutil
import signal
import subprocess
import tempfile
import threading
import time

# A mutant may loop for ever; a machine may be busy.
LIMIT_SECONDS = 20
LIMIT_FACTOR = 10
# Or fill a list for ever. Sanitizers need all addresses.
LIMIT_BYTES = 4 << 30

NOT_PASSED_ON = {"DBUS_SESSION_BUS_ADDRESS", "QT_LOGGING_RULES", "RINGLET_MUTANT", "RINGLET_SITES"}


@dataclasses.dataclass
class Test:
    name: str
    command: list
    folder: str
    environment: dict
    source: str          # the file that it is written in, relative to the tree
    seconds: float = 0   # how long it takes without a mutant
    sites: frozenset = frozenset()  # numbers of the mutants that it reaches


class Stopped(Exception):
    """The run was ended from outside."""


class Runner:
    """Starts tests, each in a session and with a folder for temporary files of its own, and leaves neither behind."""

    def __init__(self):
        self.lock = threading.Lock()
        self.running = set()
        self.stopped = False

    def stop(self):
        with self.lock:
            self.stopped = True
            for process in self.running:
                end_session(process)

    def run(self, test, mutant=0, sites=None, limit=600):
        """How it ended, as "passed", "failed", "crashed" or "timed out", and after how many seconds."""
        # Short, for names of sockets are.
        folder = tempfile.mkdtemp(prefix="mutant-")
        try:
            return self.run_in(folder, test, mutant, sites, limit)
        finally:
            shutil.rmtree(folder, ignore_errors=True)

    def run_in(self, folder, test, mutant, sites, limit):
        environment = {name: value for name, value in os.environ.items() if name not in NOT_PASSED_ON}
        environment.update(test.environment, TMPDIR=folder, LC_ALL="C.UTF-8", GTEST_BREAK_ON_FAILURE="1")
        if mutant:
            environment["RINGLET_MUTANT"] = str(mutant)
        if sites:
            environment["RINGLET_SITES"] = str(sites)
        begin = time.monotonic()
        with self.lock:
            if self.stopped:
                raise Stopped
            process = subprocess.Popen(test.command, cwd=test.folder, env=environment, start_new_session=True,
                                       stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            self.running.add(process)
        if "ASAN_OPTIONS" not in environment:
            limit_memory(process)
        try:
            process.wait(limit)
            outcome = outcome_of(process.returncode)
        except subprocess.TimeoutExpired:
            outcome = "timed out"
        finally:
            end_session(process)
            with self.lock:
                self.running.discard(process)
        if self.stopped:
            raise Stopped
        return outcome, time.monotonic() - begin


def limit_memory(process):
    try:
        resource.prlimit(process.pid, resource.RLIMIT_AS, (LIMIT_BYTES, LIMIT_BYTES))
    except ProcessLookupError:
        pass


def outcome_of(code):
    if code == 0:
        return "passed"
    # GoogleTest ends the process with this signal at the first failure.
    return "failed" if code > 0 or code == -signal.SIGTRAP else "crashed"


def end_session(process):
    """Kills the process and what it has started."""
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
    process.wait()


def source_of(command, tree, folder):
    """The file of the tree that a test's command runs: a script, or the source of the program; else the folder."""
    for word in command:
        if word.endswith(".py"):
            return pathlib.Path(word).relative_to(tree).as_posix()
    name = pathlib.Path(command[0]).name
    for source in [name, name.removeprefix(f"{pathlib.Path(folder).name}_")]:
        if (tree / folder / f"{source}.cpp").exists():
            return f"{folder}/{source}.cpp"
    return folder


def tests_of(build, tree, folders):
    """The tests of the build in these folders; of each those whose names match its pattern."""
    tests = []
    for folder, pattern in folders.items():
        listing = subprocess.run(["ctest", "--show-only=json-v1", "-R", pattern], cwd=build / folder, check=True,
                                 stdout=subprocess.PIPE).stdout
        for entry in json.loads(listing)["tests"]:
            properties = {item["name"]: item["value"] for item in entry["properties"]}
            if "command" not in entry:
                raise RuntimeError(f"{entry['name']} is not built")
            environment = dict(item.split("=", 1) for item in properties.get("ENVIRONMENT", []))
            tests.append(Test(entry["name"], entry["command"], properties["WORKING_DIRECTORY"], environment,
                              source_of(entry["command"], tree, folder)))
    if not tests:
        raise RuntimeError(f"there are no tests in {', '.join(folders)}")
    return tests


def limit_of(test):
    return LIMIT_SECONDS + LIMIT_FACTOR * test.seconds


def measure(runner, test, build):
    """Runs the test without a mutant; it has to pass. Learns how long it takes and what it reaches."""
    sites = build / "sites" / test.name.replace("/", "_")
    sites.parent.mkdir(exist_ok=True)
    sites.unlink(missing_ok=True)
    for _ in range(3):
        outcome, test.seconds = runner.run(test, sites=sites)
        if outcome == "passed":
            break
    else:
        raise RuntimeError(f"{test.name} {outcome} without a mutant")
    numbers = array.array("I", sites.read_bytes() if sites.exists() else b"")
    test.sites = frozenset(numbers)


def is_noticed(runner, test, number):
    """Whether a failure is the mutant's doing: without it the test passes; if it is always there, it fails again."""
    again = runner.run(test, limit=limit_of(test))[0]
    return (again == "passed") == bool(number)


def try_mutant(runner, tests, number):
    """The first test that notices the mutant and how, else nothing. Number 0 stands for one that is always there."""
    for test in tests:
        for _ in range(3):
            outcome, _ = runner.run(test, number, limit=limit_of(test))
            if outcome == "passed":
                break
            if is_noticed(runner, test, number):
                return test, outcome
        else:
            raise RuntimeError(f"{test.name} fails now and then without a mutant, too")
    return None
