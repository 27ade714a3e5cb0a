# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""A bus, a host and the checker, for tests. Everything ends with the block that it was started in."""

import contextlib
import json
import os
import pathlib
import select
import signal
import subprocess
import tempfile
import time

CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:dir={folder}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
  <limit name="max_outgoing_bytes">1000000000</limit>
  <limit name="max_connections_per_user">100000</limit>
  <limit name="max_match_rules_per_connection">50000</limit>
  <limit name="max_replies_per_connection">50000</limit>
</busconfig>
"""
HERE = pathlib.Path(__file__).parent
CHECKER = os.environ["CHECKER"]
PATIENCE = 30


def wait_for(condition, what):
    """Looks again and again until the condition gives something true; that is the result."""
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        found = condition()
        if found:
            return found
        select.select([], [], [], 0.02)
    raise AssertionError(f"{what}: not within {PATIENCE} s")


class Stage:
    def __init__(self):
        self.stack = contextlib.ExitStack()

    def __enter__(self):
        self.folder = pathlib.Path(self.stack.enter_context(tempfile.TemporaryDirectory()))
        configuration = self.folder / "bus.conf"
        configuration.write_text(CONFIGURATION.format(folder=self.folder), encoding="utf-8")
        bus = self.start(["dbus-daemon", f"--config-file={configuration}", "--nofork", "--nopidfile", "--print-address=1"])
        self.environment = {**os.environ, "DBUS_SESSION_BUS_ADDRESS": bus.stdout.readline().strip(),
                            "PYTHONDONTWRITEBYTECODE": "1"}
        return self

    def __exit__(self, *details):
        return self.stack.__exit__(*details)

    def start(self, command, **options):
        options.setdefault("stderr", subprocess.DEVNULL)
        options.setdefault("stdout", subprocess.PIPE)
        program = subprocess.Popen(command, stdin=subprocess.PIPE, text=True,
                                   env=getattr(self, "environment", None), **options)
        self.stack.callback(self.end, program)
        return program

    @staticmethod
    def end(program, how=signal.SIGTERM):
        """Ends the program; its exit code and the rest of its output."""
        if program.poll() is None:
            program.send_signal(how)
        if program.stdin.closed:
            program.stdin = None
        try:
            output, _ = program.communicate(timeout=PATIENCE)
        except subprocess.TimeoutExpired:
            program.kill()
            raise
        return program.returncode, output

    def host(self):
        program = self.start([os.environ["VOICECALLD"], "--plugin", os.environ["PLUGIN"]])
        ready = program.stdout.readline()
        assert "ready" in ready, f"the host did not start: {ready}"
        return program

    def kill_host(self, host):
        self.end(host, signal.SIGKILL)

    def check(self, *arguments):
        """Runs the checker to its end: exit code, output, errors."""
        done = subprocess.run([CHECKER, *arguments], env=self.environment, capture_output=True, text=True,
                              timeout=2 * PATIENCE, check=False)
        return done.returncode, done.stdout, done.stderr

    def checker(self, *arguments, **options):
        """Starts the checker and waits until it follows the bus."""
        log = self.folder / f"checker{len(list(self.folder.glob('checker*')))}"
        with open(log, "w", encoding="utf-8") as errors:
            program = self.start([CHECKER, *arguments], stderr=errors, **options)
        wait_for(lambda: "Ctrl-C" in log.read_text(encoding="utf-8"), "the checker follows the bus")
        return program

    def players(self, *modules):
        """Starts the applications of the modules: the program, and what each has said of itself, by name."""
        program = self.start(["/usr/bin/python3", "-B", str(HERE / "play.py"), *modules], stderr=None)
        count = int(program.stdout.readline())
        played = [json.loads(program.stdout.readline()) for _ in range(count)]
        return program, {one["name"]: one for one in played}


def summary(output):
    """The findings at the end of what the checker has printed as JSON."""
    start = output.rindex('{"findings":')
    return json.loads(output[start:])["findings"]


def counted(findings, names):
    """The rules of errors and warnings about connections of these names."""
    return sorted(one["rule"] for one in findings if one["application"] in names and one["severity"] != "note")


def noted(findings, names):
    return sorted(one["rule"] for one in findings if one["application"] in names)
