#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Runs the tests on a machine that is slow in all the wrong places: every process that a test starts, and its own,
is stopped again and again for a random while; and once more beside busy loops."""

import argparse
import os
import pathlib
import random
import re
import signal
import subprocess
import sys
import time

# Seconds. Most tests are over in a tenth of one when nobody stops them.
FIRST_RUN = (0.0, 0.2)
RUNS = (0.05, 0.5)
STOPS = (0.05, 1.5)
POLL = 0.01
BUSY_LOOPS = 4


def children(pid):
    """Of all of the process's threads; none when it has gone."""
    found = []
    try:
        for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
            found += map(int, (task / "children").read_text().split())
    except OSError:
        pass
    return found


def descendants(pid):
    found = children(pid)
    for child in found:
        found += children(child)
    return found


def is_running(pid):
    """Whether the process is there, and nobody has stopped it."""
    try:
        return pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()[0] not in "TtZX"
    except OSError:
        return False


def send(pid, number):
    try:
        os.kill(pid, number)
    except ProcessLookupError:
        pass


class Interrupter:
    """Stops what a process has started, each by itself."""

    def __init__(self, chance):
        self.random = chance
        self.next_stop = {}   # times by process
        self.next_start = {}
        self.stops = 0

    def look(self, pid, now):
        alive = set(descendants(pid))
        for process in alive - set(self.next_stop) - set(self.next_start):
            self.next_stop[process] = now + self.random.uniform(*FIRST_RUN)
        for process in [process for process, at in self.next_start.items() if at <= now]:
            del self.next_start[process]
            send(process, signal.SIGCONT)
            self.next_stop[process] = now + self.random.uniform(*RUNS)
        for process in [process for process, at in self.next_stop.items() if at <= now or process not in alive]:
            del self.next_stop[process]
            if process in alive and is_running(process):
                send(process, signal.SIGSTOP)
                self.stops += 1
                self.next_start[process] = now + self.random.uniform(*STOPS)

    def end(self):
        for process in self.next_start:
            send(process, signal.SIGCONT)


def run_tests(command, interrupter=None):
    """ctest's exit code and what it has printed."""
    ctest = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    os.set_blocking(ctest.stdout.fileno(), False)
    output = b""
    try:
        while ctest.poll() is None:
            output += ctest.stdout.read() or b""
            if interrupter:
                interrupter.look(ctest.pid, time.monotonic())
            time.sleep(POLL)
    finally:
        if interrupter:
            interrupter.end()
        if ctest.poll() is None:
            ctest.terminate()
            ctest.wait()
    return ctest.returncode, (output + (ctest.stdout.read() or b"")).decode(errors="replace")


class BusyLoops:
    def __enter__(self):
        self.loops = [subprocess.Popen([sys.executable, "-c", "while True: pass"]) for _ in range(BUSY_LOOPS)]

    def __exit__(self, *_):
        for loop in self.loops:
            loop.kill()
            loop.wait()


def judge(what, code, output):
    """Tells how a round has ended; whether it was well."""
    summary = re.search(r"^.*tests passed, .* out of (\d+)$", output, re.MULTILINE)
    well = code == 0 and summary is not None and int(summary.group(1)) > 0
    if not well:
        print(output)
    print(f"{what}: {summary.group(0) if summary else 'no tests ran'}", flush=True)
    return well


def main():
    parser = argparse.ArgumentParser(prog="scripts/check slow", description=__doc__)
    parser.add_argument("--build", required=True, help="where the tests are built")
    parser.add_argument("--rounds", type=int, default=3, help="so many times with processes stopped")
    parser.add_argument("--seed", type=int, default=random.SystemRandom().randrange(1 << 32))
    options, rest = parser.parse_known_args()
    environment = {"RINGLET_TEST_PATIENCE": "5", "LC_ALL": "C.UTF-8"}
    os.environ.update(environment)
    for name in ["DBUS_SESSION_BUS_ADDRESS", "QT_LOGGING_RULES"]:
        os.environ.pop(name, None)
    command = ["ctest", "--test-dir", options.build, "--output-on-failure", "-j4", *rest]
    well = True
    for number in range(options.rounds):
        interrupter = Interrupter(random.Random(options.seed + number))
        code, output = run_tests(command, interrupter)
        what = f"round {number + 1}, seed {options.seed}, processes stopped {interrupter.stops} times"
        well = judge(what, code, output) and interrupter.stops > 0 and well
    with BusyLoops():
        well = judge(f"beside {BUSY_LOOPS} busy loops", *run_tests(command)) and well
    return 0 if well else 1


if __name__ == "__main__":
    sys.exit(main())
