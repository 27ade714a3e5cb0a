#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""How much of a processor `callctl watch` takes while calls are active, on a terminal and as lines.

Usage: bench/watch.py BUILD [CALLS [SECONDS]]

Starts a bus, voicecalld and one application of its own with so many active calls, whose durations change once
a second each, and prints a line for each of the two ways. Figures of a busy machine are too high, never too low.
"""

import os
import pathlib
import pty
import subprocess
import sys
import threading
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "scripts"))
from timeline import run, start_bus, start_host

TICKS = os.sysconf("SC_CLK_TCK")


def processor_seconds(process):
    # Behind the program's name, which stands in brackets: user and system time are the 12th and the 13th.
    fields = pathlib.Path(f"/proc/{process}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / TICKS


class Reader(threading.Thread):
    """Takes what the program writes, so that it never waits, and counts it."""

    def __init__(self, descriptor):
        super().__init__(daemon=True)
        self.descriptor = descriptor
        self.count = 0
        self.start()

    def run(self):
        try:
            while data := os.read(self.descriptor, 1 << 16):
                self.count += len(data)
        except OSError:
            pass  # the other end of a terminal has gone


def measure(demo, name, ends, seconds):
    near, far = ends
    watch = subprocess.Popen(
        [demo.path("desktop/callctl/callctl"), "watch"], stdin=far, stdout=far, env={**os.environ, "TERM": "xterm"}
    )
    os.close(far)
    output = Reader(near)
    time.sleep(3)  # it reads the host first, which is not what is measured
    before, written, start = processor_seconds(watch.pid), output.count, time.monotonic()
    time.sleep(seconds)
    percent = 100 * (processor_seconds(watch.pid) - before) / (time.monotonic() - start)
    print(f"{name:13} {percent:6.1f} % of a processor, {(output.count - written) / seconds:9.0f} bytes/s", flush=True)
    watch.terminate()
    watch.wait()


def main(build, calls=1000, seconds=10):
    def steps(demo):
        os.environ["QT_LOGGING_RULES"] = "*.debug=false"  # the plug-in logs every call
        start_bus(demo)
        start_host(demo)
        application = demo.start("application", demo.path("kit/simulator/ringlet-sim"), shown=False)
        application.expect("^registered ")
        application.type(f"many {calls} incoming line sip:line%@example.org")
        application.type("status line* 5")
        demo.wait_for("calls", "not all calls are active",
                      lambda shown: len([call for call in shown if call["status"] == "active"]) == calls)
        measure(demo, "on a terminal", pty.openpty(), seconds)
        measure(demo, "as lines", os.pipe(), seconds)

    return run(build, steps)


if __name__ == "__main__":
    sys.exit(main(os.path.abspath(sys.argv[1]), *map(int, sys.argv[2:])))
