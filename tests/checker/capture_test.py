# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Captures of ours and of others, whole, torn and hostile; formats and exit codes."""

import json
import os
import pathlib
import random
import signal
import struct
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

from stage import CHECKER, Stage, wait_for

RULE = "status-signature"


def read(path, *options):
    done = subprocess.run([CHECKER, "read", str(path), *options], capture_output=True, timeout=30, check=False)
    return done.returncode, done.stdout.decode(), done.stderr.decode()


def rules(path):
    findings = json.loads(read(path, "--format", "json")[1])["findings"]
    return sorted(one["rule"] for one in findings if one["severity"] != "note")


class Captures(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        for name in ("ours", "redacted", "dbus-monitor", "busctl"):
            (cls.folder / name).touch(mode=0o666)
        with Stage() as stage:
            stage.host()
            ours = stage.checker("record", str(cls.folder / "ours"))
            redacted = stage.checker("record", "--redact", str(cls.folder / "redacted"))
            selected = stage.checker("record", str(cls.folder / "selected"), "python3")
            stranger = stage.checker("record", str(cls.folder / "stranger"), "nobody")
            others = [cls.other(stage, "dbus-monitor", ["dbus-monitor", "--pcap"]),
                      cls.other(stage, "busctl", ["busctl", "--user", "capture"])]
            watch = stage.checker("watch")
            players, played = stage.players("statusmistakes:TellsSigned")
            cls.uri = "sip:TellsSigned@example.org"
            lines = iter(watch.stdout.readline, "")
            assert any("answers with its objects" in line for line in lines)
            assert any(RULE in line for line in lines)
            players.stdin.close()
            assert any("has left the bus" in line for line in lines)
            assert played["TellsSigned"]["rule"] == RULE
            for path in (cls.folder / name for name in ("dbus-monitor", "busctl")):
                size = path.stat().st_size
                wait_for(lambda path=path, size=size: stage.check("why") and path.stat().st_size > size + 2000,
                         f"{path.name} goes on behind that")
            for program in (ours, redacted, selected, stranger, *others):
                stage.end(program, signal.SIGINT)

    @classmethod
    def other(cls, stage, name, command):
        path = cls.folder / name
        with open(path, "wb") as file:
            program = stage.start(command, stdout=file)
        # It says nothing when it follows the bus: there has to be something to be seen until it is.
        wait_for(lambda: stage.check("why") and path.stat().st_size > 1000, f"{name} captures")
        return program

    def test_ours_and_others_give_the_finding(self):
        for name in ("ours", "redacted", "selected", "dbus-monitor", "busctl"):
            with self.subTest(name):
                self.assertEqual(rules(self.folder / name), [RULE])

    def test_of_others_nothing_is_recorded(self):
        content = (self.folder / "stranger").read_bytes()
        self.assertEqual(rules(self.folder / "stranger"), [])
        self.assertNotIn(self.uri.encode(), content)

    def test_only_the_owner_may_read_ours(self):
        for name in ("ours", "redacted"):
            self.assertEqual((self.folder / name).stat().st_mode & 0o777, 0o600)

    def test_redacted_names_nobody(self):
        self.assertIn(self.uri.encode(), (self.folder / "ours").read_bytes())
        content = (self.folder / "redacted").read_bytes()
        self.assertNotIn(self.uri.encode(), content)
        self.assertNotIn(b"TellsSigned", content)

    def test_the_same_file_gives_the_same(self):
        self.assertEqual(read(self.folder / "ours"), read(self.folder / "ours"))

    def test_formats(self):
        code, output, _ = read(self.folder / "ours", "--format", "junit")
        suite = xml.etree.ElementTree.fromstring(output)
        failed = [case.get("name") for case in suite if case.find("failure") is not None]
        self.assertEqual((code, failed, suite.get("failures")), (1, [RULE], "1"))
        self.assertGreater(int(suite.get("tests")), 50)
        code, output, _ = read(self.folder / "ours")
        self.assertEqual(code, 1)
        self.assertTrue(output.startswith(f"error {RULE}  :"), output)
        self.assertNotIn("\033", output)

    def torn(self, content):
        path = self.folder / "torn"
        path.write_bytes(content)
        code, output, error = read(path, "--format", "json")
        self.assertIn(code, (0, 1, 3), error)
        json.loads(output)
        return code, error

    def test_what_could_be_read_before_a_tear_is_told(self):
        for name in ("ours", "busctl"):
            content = (self.folder / name).read_bytes()
            code, error = self.torn(content[:-7])
            self.assertEqual(code, 3)
            self.assertIn("ends in the middle of a message", error)
            self.assertEqual(rules(self.folder / "torn"), [RULE])

    def test_every_length_is_survived(self):
        for name in ("ours", "busctl"):
            content = (self.folder / name).read_bytes()
            for size in [*range(0, 120), *range(120, len(content), len(content) // 40)]:
                self.torn(content[:size])

    def test_changed_bytes_are_survived(self):
        chance = random.Random(15)
        for name in ("ours", "busctl"):
            content = (self.folder / name).read_bytes()
            for _ in range(60):
                changed = bytearray(content)
                for _ in range(chance.choice((1, 4, 30))):
                    changed[chance.randrange(len(changed))] = chance.choice((0, 1, 0x7f, 0x80, 0xff))
                self.torn(bytes(changed))

    def test_what_is_no_capture_is_refused(self):
        ethernet = struct.pack("<IHHiIII", 0xa1b2c3d4, 2, 4, 0, 0, 65535, 1)
        lying = struct.pack("<IHHiIII", 0xa1b2c3d4, 2, 4, 0, 0, 65535, 231) + struct.pack("<IIII", 1, 1, 0xfffffff0, 1)
        for content, words in ((b"", "no capture"), (b"Hello, world, how are you?", "no capture"),
                               (ethernet, "link type 1"), (lying, "more than a bus carries")):
            code, error = self.torn(content)
            self.assertEqual(code, 3)
            self.assertIn(words, error)
        code, _, error = read(self.folder / "missing")
        self.assertEqual((code, "No such file" in error), (3, True))

    def test_nothing_is_written_where_nothing_can_be(self):
        with Stage() as stage:
            code, _, error = stage.check("record", str(self.folder / "no" / "file"))
            self.assertEqual((code, "No such file" in error), (3, True))


class CommandLine(unittest.TestCase):
    def run_checker(self, *arguments, **environment):
        done = subprocess.run([CHECKER, *arguments], capture_output=True, text=True, timeout=30, check=False,
                              env={**os.environ, **environment})
        return done.returncode, done.stdout, done.stderr

    def test_wrong_ones(self):
        for words in ([], ["what"], ["read"], ["why", "a", "b"], ["why", "--redact"], ["explain", "nothing"],
                      ["read", "a", "--format", "yaml"], ["read", "a", "--format"], ["watch", "--format", "junit"],
                      ["run"], ["why", "--", "program"], ["record", "--host", "", "a"]):
            with self.subTest(words):
                code, output, error = self.run_checker(*words)
                self.assertEqual((code, output), (2, ""))
                self.assertTrue(error.startswith("ringlet-check: "), error)

    def test_no_bus(self):
        for words in (["why"], ["watch"], ["record", os.devnull + "x"]):
            code, _, error = self.run_checker(*words, DBUS_SESSION_BUS_ADDRESS="unix:path=/nowhere")
            self.assertEqual(code, 3, error)

    def test_every_rule_is_explained(self):
        listed = json.loads(self.run_checker("rules", "--format", "json")[1])
        self.assertGreater(len(listed), 50)
        self.assertEqual(len({one["rule"] for one in listed}), len(listed))
        for one in listed:
            code, output, _ = self.run_checker("explain", one["rule"])
            self.assertEqual(code, 0)
            for part in ("meaning", "matters", "remedy"):
                self.assertIn(one[part], output)
                self.assertRegex(one[part], r"^[A-Z0-9].*[^ ]\.$")
            self.assertTrue(one["wrong"] and one["right"])


if __name__ == "__main__":
    unittest.main(argv=sys.argv)
