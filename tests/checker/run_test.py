# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""ringlet-check run: honest programs pass every step that is possible, and others are found out."""

import concurrent.futures
import json
import os
import pathlib
import shlex
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

from stage import CHECKER, Stage

HERE = pathlib.Path(__file__).parent
HOST = shlex.join([os.environ["VOICECALLD"], "--plugin", os.environ["PLUGIN"]])
SIM = os.environ["SIM"]
EXAMPLES = pathlib.Path(os.environ["EXAMPLES"])
LIBRARIES = ("dasbus", "gjs", "glib", "libdbus", "perl", "qt", "sd-bus", "sdbus-cpp")
NEEDS_MORE = {"rejected while ringing", "a second call while one is up", "dialled", "cancelled by the far end",
              "muted by the application", "microphone stays muted over a restart"}


def run(*arguments, host=HOST):
    environment = {key: value for key, value in os.environ.items() if key != "DBUS_SESSION_BUS_ADDRESS"}
    done = subprocess.run([CHECKER, "run", "--host-command", host, *arguments], capture_output=True, text=True,
                          timeout=100, check=False, env=environment, stdin=subprocess.DEVNULL)
    return done.returncode, done.stdout, done.stderr


def examined(*arguments):
    """Exit code, results by step, and the rules of errors and warnings."""
    code, output, error = run("--format", "json", *arguments)
    report = json.loads(output)
    rules = {one["rule"] for one in report["report"]["findings"] if one["severity"] != "note"}
    return code, {one["step"]: one["result"] for one in report["steps"]}, rules, error


def in_session(*arguments):
    """The same on a bus and with a host that were there; whether the host still is."""
    with Stage() as stage:
        host = stage.host()
        code, output, error = stage.check("run", "--session", *arguments)
        return code, output, error, host.poll() is None


def with_orders(folder):
    """A program that reads what is to happen from a file, and the commands that write it there."""
    orders = pathlib.Path(folder) / "orders"
    orders.touch()
    ring = f"n=$(wc -l <{orders}); echo \"incoming ring$n sip:ring$n@example.org\" >>{orders}"
    dial = f"echo 'outgoing out sip:out@example.org' >>{orders}"
    return ["--ring", ring, "--dial", dial, "--", "/bin/sh", "-c", f"tail -f {orders} | {SIM}"]


class Run(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        """Lets all examinations run at once: most of their time they wait."""
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        mistaken = ["/usr/bin/python3", "-B", str(HERE / "play.py"), "restartplayers:HoldsNothing"]
        pool = concurrent.futures.ThreadPoolExecutor(16)
        call = ["--incoming", "sip:ann@example.org"]
        cls.honest = {name: pool.submit(examined, "--", str(EXAMPLES / name / f"ringlet-example-{name}"),
                                  "sip:ann@example.org", "Ann Example")
                      for name in LIBRARIES}
        cls.honest["ringlet-sim"] = pool.submit(examined, "--", SIM, *call)
        cls.further = pool.submit(examined, *with_orders(folder.name))
        cls.mistaken = pool.submit(run, "--format", "junit", "--", *mistaken)
        cls.silent = pool.submit(run, "--", SIM)
        cls.hostless = pool.submit(run, "--", SIM, host="exit 1")
        cls.session = pool.submit(in_session, "--", SIM, *call)
        concurrent.futures.wait([*cls.honest.values(), cls.further, cls.mistaken, cls.silent, cls.hostless, cls.session])
        pool.shutdown()

    def test_examples_pass_all_that_is_possible(self):
        for name, future in self.honest.items():
            with self.subTest(name):
                code, steps, rules, error = future.result()
                self.assertEqual((code, rules), (0, set()), error)
                self.assertEqual({step for step, result in steps.items() if result == "fail"}, set())
                self.assertLessEqual({step for step, result in steps.items() if result != "pass"}, NEEDS_MORE)

    def test_further_calls_come_on_command(self):
        code, steps, rules, error = self.further.result()
        self.assertEqual(steps["rejected while ringing"], "pass", error)
        self.assertEqual(steps["dialled"], "pass", error)
        # The simulator leaves it to its user to hold the first call.
        self.assertEqual((steps["a second call while one is up"], code), ("fail", 1))
        self.assertEqual(rules, {"two-active-calls"})

    def test_a_mistake_is_found(self):
        code, output, error = self.mistaken.result()
        self.assertEqual(code, 1, error)
        cases = {case.get("name"): case for case in xml.etree.ElementTree.fromstring(output)}
        self.assertIsNotNone(cases["held"].find("failure"))
        self.assertIsNotNone(cases["hold-promised-not-kept"].find("failure"))
        self.assertIsNone(cases["answered"].find("failure"))
        self.assertIsNotNone(cases["dialled"].find("skipped"))

    def test_nothing_is_passed_where_no_call_came(self):
        code, _, error = self.silent.result()
        self.assertEqual((code, "no call came" in error), (3, True))
        code, output, _ = self.hostless.result()
        self.assertEqual(code, 3)
        self.assertIn("not possible  host not there yet at the start", output)

    def test_the_bus_and_host_of_the_session_are_left_alone(self):
        code, output, error, is_alive = self.session.result()
        self.assertEqual((code, is_alive), (0, True), output + error)
        self.assertIn("not possible  host killed and back", output)
        self.assertIn("pass          hung up", output)


if __name__ == "__main__":
    unittest.main(argv=sys.argv)
