#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""The steps of the demo: two applications' calls in the desktop host, seen and checked from both sides.

Called by scripts/demo with the build directory, and perhaps --stay. Everything runs on a session bus of
its own and ends with this program. Prints a timeline; exits with 1 at the first step that does not hold,
and names it.
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
            command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True
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


def start_second(demo):
    return demo.start(
        "second app", demo.path("kit/examples/glib/ringlet-example-glib"),
        "--name", "Grace Hopper", "--address", "sip:grace@example.org",
    )


ADA = "sip:ada@example.org"
GRACE = "sip:grace@example.org"


def walk(demo):
    demo.step("A host with the plug-in, and an application that registers")
    start_bus(demo)
    host = start_host(demo)
    app = demo.start("first app", demo.path("kit/simulator/ringlet-sim"))
    app.expect("^registered ")
    demo.table({})

    demo.step("An incoming call appears")
    app.type(f'incoming ada {ADA} name="Ada Lovelace"')
    app.expect("^ada shown 3 incoming")
    call = demo.table({ADA: "incoming"})[ADA]
    if (call["name"], call["direction"]) != ("Ada Lovelace", "incoming"):
        raise DoesNotHold(f"name and direction are wrong: {call['name']}, {call['direction']}")

    demo.step("It is answered from the host")
    demo.command("answer")
    app.expect("^ada command accept")
    demo.table({ADA: "active"})

    demo.step("Its duration runs")
    demo.wait_for("calls", "the duration does not run", lambda calls: calls[0]["duration"] >= 2)
    demo.table({ADA: "active"})

    demo.step("Mute and audio route go both ways")
    demo.command("mute", "on")
    app.expect("^ada audio-route muted=yes")
    app.type("mute ada off")
    demo.audio(muted=False)
    demo.command("output", "speaker")
    app.expect('^ada audio-route .*output="speaker"')
    app.type("route ada headset headset")
    demo.audio(input="headset", output="headset")
    app.expect('^ada audio-route .*input="headset" output="headset"')

    demo.step("Tones arrive")
    demo.command("dtmf", "12#")
    app.expect('^ada command tones "12#"')

    demo.step("Hold and release")
    demo.command("hold", "on")
    app.expect("^ada command hold on")
    demo.table({ADA: "held"})
    demo.command("hold", "off")
    app.expect("^ada command hold off")
    demo.table({ADA: "active"})

    demo.step("Meanwhile another application's call comes in")
    second = start_second(demo)
    second.expect("^call1 shown 3 incoming")
    demo.table({ADA: "active", GRACE: "incoming"})

    demo.step("Dialling is refused, with the reason")
    provider = demo.read("providers")[0]["id"]
    refusal = demo.callctl("dial", provider, "123")
    say("host", refusal.stderr.strip())
    if refusal.returncode == 0 or "cannot dial with this provider" not in refusal.stderr:
        raise DoesNotHold("the reason is not 'cannot dial with this provider'")

    demo.step("The second application is killed: its call goes, the first one's stays")
    second.end(kill=True)
    demo.table({ADA: "active"})

    demo.step("The far end of the first call hangs up")
    app.type("hangup ada")
    app.expect("^ada removed")
    demo.table({})
    return host, app


def stay(demo, app):
    demo.step("Two calls are up")
    app.type(f'incoming ada {ADA} name="Ada Lovelace"')
    app.expect("^ada shown")
    start_second(demo).expect("^call1 shown")
    demo.table({ADA: "incoming", GRACE: "incoming"})
    programs = [demo.path("desktop/callctl"), demo.path("kit/simulator")]
    print(
        f"""
In another terminal:

    export DBUS_SESSION_BUS_ADDRESS='{os.environ["DBUS_SESSION_BUS_ADDRESS"]}'
    export PATH="{':'.join(programs)}:$PATH"
    callctl watch             # the calls, kept up to date
    callctl answer c3         # and hangup, hold, dtmf, mute, output: see callctl --help
    ringlet-sim               # an application of your own: type help
    busctl --user tree org.tarnwickle.voicecall

Ctrl-C here ends it all.""",
        flush=True,
    )
    threading.Event().wait()


def main(build, staying):
    demo = Demo(build)
    try:
        host, app = walk(demo)
        if staying:
            stay(demo, app)
        demo.step("Host and application end cleanly")
        codes = {"application": app.end(), "host": host.end()}
        if any(codes.values()):
            raise DoesNotHold(f"exit codes are {codes}")
    except DoesNotHold as failure:
        print(f"\nFAILED at '{demo.step_name}': {failure}", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        print()
        return 0 if staying else 130
    finally:
        demo.end()
    print("\nEvery step held.")
    return 0


if __name__ == "__main__":
    sys.exit(main(os.path.abspath(sys.argv[1]), "--stay" in sys.argv[2:]))
