# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""What the demos have in common: programs on a session bus of their own, and a timeline of what they do.

Everything ends with the demo. It exits with 1 at the first step that does not hold, and names it.
"""

import json
import os
import re
import subprocess
import sys
import threading
import time

PATIENCE = 20  # seconds to wait for what must come
START = time.monotonic()
PRINTING = threading.Lock()


class DoesNotHold(Exception):
    """What did not hold, in words for the reader of the timeline."""


def say(who, text):
    with PRINTING:
        print(f"{time.monotonic() - START:6.2f}  {who:<11} {text}", flush=True)


class Program:
    """A program in the background, whose lines of output are shown in the timeline and can be waited for."""

    def __init__(self, who, *command, shown=True):
        self.who = who
        self.shown = shown
        self.lines = []
        self.seen = 0
        self.news = threading.Condition()
        self.process = subprocess.Popen(
            command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
            errors="replace",
        )
        self.reader = threading.Thread(target=self._read, daemon=True)
        self.reader.start()

    def _read(self):
        for line in self.process.stdout:
            if self.shown:
                say(self.who, line.rstrip())
            with self.news:
                self.lines.append(line.rstrip())
                self.news.notify_all()

    def expect(self, pattern):
        """Waits for a line in which `pattern` is found, behind the line that was found before."""
        expression = re.compile(pattern)

        def found():
            while self.seen < len(self.lines):
                self.seen += 1
                if expression.search(self.lines[self.seen - 1]):
                    return True
            return False

        with self.news:
            if not self.news.wait_for(found, PATIENCE):
                raise DoesNotHold(f"{self.who} did not print a line with '{pattern}'")

    def type(self, line):
        say(self.who, f"> {line}")
        self.process.stdin.write(line + "\n")
        self.process.stdin.flush()

    def end(self, kill=False):
        if self.process.poll() is None:
            (self.process.kill if kill else self.process.terminate)()
        try:
            self.process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        self.reader.join()
        return self.process.returncode


class Demo:
    """The programs on their bus, and the host as callctl shows it."""

    def __init__(self, build):
        self.build = build
        self.programs = []
        self.step_name = "starting"

    def path(self, *parts):
        return os.path.join(self.build, *parts)

    def start(self, who, *command, shown=True):
        program = Program(who, *command, shown=shown)
        self.programs.append(program)
        return program

    def end(self):
        for program in reversed(self.programs):
            program.end()

    def end_cleanly(self, **programs):
        """Ends these programs, the values, in order; each has to end with exit code 0."""
        codes = {name: program.end() for name, program in programs.items()}
        if any(codes.values()):
            raise DoesNotHold(f"exit codes are {codes}")

    def step(self, name):
        self.step_name = name
        with PRINTING:
            print(f"\n        {name}", flush=True)

    def quietly(self, *arguments, check=True):
        """Runs callctl without a line in the timeline."""
        callctl = self.path("desktop/callctl/callctl")
        return subprocess.run([callctl, *arguments], capture_output=True, text=True, check=check)

    def callctl(self, *arguments):
        say("host", f"$ callctl {' '.join(arguments)}")
        return self.quietly(*arguments, check=False)

    def command(self, *arguments):
        result = self.callctl(*arguments)
        if result.returncode != 0:
            raise DoesNotHold(f"callctl {' '.join(arguments)}: {result.stderr.strip()}")

    def read(self, what):
        return json.loads(self.quietly(what, "--json").stdout)

    def wait_for(self, what, question, condition):
        """Asks the host for `what` until `condition` holds of the answer, and returns the answer."""
        deadline = time.monotonic() + PATIENCE
        while True:
            answer = self.read(what)
            if condition(answer):
                return answer
            if time.monotonic() > deadline:
                raise DoesNotHold(f"{question}; the host shows {json.dumps(answer)}")
            time.sleep(0.05)

    def table(self, expected):
        """Waits until the host shows these calls, {address: status}, and prints its table."""

        def matches(calls):
            return {call["address"]: call["status"] for call in calls} == expected

        calls = self.wait_for("calls", f"the calls are not {expected}", matches)
        table = self.quietly("calls").stdout
        with PRINTING:
            for line in table.splitlines():
                print(f"{'':8}| {line}", flush=True)
        return {call["address"]: call for call in calls}

    def audio(self, **expected):
        self.wait_for(
            "devices", f"the audio state is not {expected}", lambda state: expected.items() <= state.items()
        )
        say("host", "audio: " + ", ".join(f"{name} {value}" for name, value in expected.items()))


def start_bus(demo):
    bus = demo.start("bus", "dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address=1", shown=False)
    bus.expect("^unix:")
    address = next(line for line in bus.lines if line.startswith("unix:"))
    os.environ["DBUS_SESSION_BUS_ADDRESS"] = address
    return address


def start_host(demo):
    plugin = demo.path("src/libvoicecall-ringlet-plugin.so")
    host = demo.start("host", demo.path("desktop/voicecalld/voicecalld"), "--plugin", plugin)
    host.expect("ready as org.tarnwickle.voicecall")
    return host


def run(build, steps, when_interrupted=130):
    """Runs a demo on the programs of this build directory; its exit code."""
    demo = Demo(build)
    try:
        steps(demo)
    except DoesNotHold as failure:
        print(f"\nFAILED at '{demo.step_name}': {failure}", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        print()
        return when_interrupted
    finally:
        demo.end()
    print("\nEvery step held.")
    return 0
