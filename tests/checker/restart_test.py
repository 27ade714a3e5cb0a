# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""A host that is not there at first, and one that is killed and comes back."""

import json
import sys
import unittest

import restartplayers
from stage import Stage, counted, summary, wait_for


def lines_about(path, words):
    return [line for line in path.read_text(encoding="utf-8").splitlines() if words in line]


class Restart(unittest.TestCase):
    maxDiff = None

    def start(self, stage, names):
        """Lets a watch, a record and the applications run, without a host."""
        self.output = stage.folder / "live"
        with open(self.output, "w", encoding="utf-8") as live:
            self.watch = stage.checker("watch", "--format", "json", stdout=live)
        self.capture = stage.folder / "capture"
        self.record = stage.checker("record", str(self.capture))
        self.played = stage.players("restartplayers:" + names)[1]

    def wait_for(self, words, count=1):
        wait_for(lambda: len(lines_about(self.output, words)) >= count, words)

    def restart(self, stage, host):
        stage.kill_host(host)
        stage.host()
        self.wait_for('"not-registered-with-new-host"')

    def expect_all(self, stage):
        """That live and in the capture each is named, and nothing else is."""
        stage.end(self.watch)
        stage.end(self.record)
        live = summary(self.output.read_text(encoding="utf-8"))
        read = json.loads(stage.check("read", str(self.capture), "--format", "json")[1])["findings"]
        expected = {one["name"]: [one["rule"]] if one["rule"] else [] for one in self.played.values()}
        for findings in (live, read):
            self.assertEqual({one["name"]: counted(findings, one["names"]) for one in self.played.values()}, expected)

    def test_those_that_do_not_come_back_are_named(self):
        with Stage() as stage:
            self.start(stage, "GivesUp,TriesTwice,RegistersOnce,OpensItsMicrophone,Registers")
            self.wait_for('"no-host"')
            code, output, _ = stage.check("why")
            self.assertEqual(code, 1)
            self.assertIn("error no-host", output)
            host = stage.host()
            self.wait_for("RequestMute (true,)")
            # The other call is told that the microphone is muted.
            self.wait_for("is told UpdateAudioRoute\"", 2)
            self.restart(stage, host)
            self.wait_for('"opened-microphone-at-restart"')
            self.assertEqual(stage.check("why")[0], 0)
            self.assertIn("error not-registered ", stage.check("why", self.played["RegistersOnce"]["names"][0])[1])
            self.expect_all(stage)

    def test_one_that_stays_muted_is_not(self):
        with Stage() as stage:
            self.start(stage, "StaysMuted,RegistersOnce")
            host = stage.host()
            self.wait_for("RequestMute (true,)")
            self.wait_for("is told UpdateAudioRoute\"", 2)
            self.restart(stage, host)
            self.wait_for("RequestMute (true,)", 2)
            self.expect_all(stage)

    def test_flood_is_followed_to_the_last_message(self):
        with Stage() as stage:
            self.start(stage, "Pours")
            stage.host()
            count = restartplayers.Pours.count
            # The one more is the answer to Accept.
            self.wait_for("StatusChanged (", count + 1)
            self.assertEqual(len(lines_about(self.output, "StatusChanged (")), count + 1)
            self.expect_all(stage)

    def test_echo_is_named(self):
        with Stage() as stage:
            self.start(stage, "Echoes")
            stage.host()
            self.wait_for('"mute-echo"')
            self.expect_all(stage)


if __name__ == "__main__":
    unittest.main(argv=sys.argv)
