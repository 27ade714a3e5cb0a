# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Every mistake is named by its rule, live, from the capture and afterwards, and honest ways are not."""

import json
import sys
import time
import unittest

from stage import Stage, counted, noted, summary

MODULES = ("mistakes", "announcingmistakes", "propertymistakes", "statusmistakes", "commandmistakes", "nearmisses")
LONGEST = 7  # seconds that the longest of them takes, with what is waited for


class Mistakes(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        with Stage() as stage:
            stage.host()
            watch = stage.checker("watch", "--format", "json")
            capture = stage.folder / "capture"
            record = stage.checker("record", str(capture))
            program, cls.played = stage.players(*MODULES)
            end = time.monotonic() + LONGEST
            # What is there to be seen afterwards is there then; nothing tells when the last one is idle.
            while time.monotonic() < end:
                time.sleep(0.1)
            cls.why = json.loads(stage.check("why", "--format", "json")[1])["findings"]
            program.stdin.close()
            program.wait()
            cls.live = summary(stage.end(watch)[1])
            stage.end(record)
            cls.read = json.loads(stage.check("read", str(capture), "--format", "json")[1])["findings"]

    def expect(self, findings, how):
        wrong = []
        for one in self.played.values():
            found = counted(findings, one["names"])
            is_found = one["rule"] in noted(findings, one["names"])
            if found not in ([], [one["rule"]]) or (one["rule"] and not is_found):
                wrong.append(f"{one['name']} ({one['text']}): {found or 'nothing'}, not {one['rule']}")
        self.assertEqual(wrong, [], how)

    def test_watch_names_each(self):
        self.expect(self.live, "live")

    def test_read_names_each(self):
        self.expect(self.read, "from the capture")

    def test_why_names_what_is_to_be_seen(self):
        wrong = []
        for one in self.played.values():
            found = counted(self.why, one["names"])
            if found != ([one["why"]] if one["why"] else []) and (one["why"] or one["rule"] is None):
                wrong.append(f"{one['name']} ({one['text']}): {found or 'nothing'}, not {one['why']}")
        self.assertEqual(wrong, [])


if __name__ == "__main__":
    unittest.main(argv=sys.argv)
