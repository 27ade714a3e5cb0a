# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Every rule has a mistake that breaks it, and a section in docs/rules.md as the checker's table says."""

import json
import os
import pathlib
import subprocess
import sys
import unittest

import play

SOURCE = pathlib.Path(os.environ["SOURCE"])
sys.path.insert(0, str(SOURCE / "scripts"))
import rulepages

MODULES = ("mistakes", "announcingmistakes", "propertymistakes", "statusmistakes", "commandmistakes",
           "restartplayers")


def listed():
    output = subprocess.run([os.environ["CHECKER"], "rules", "--format", "json"], capture_output=True, text=True,
                            timeout=30, check=True).stdout
    return json.loads(output)


class Table(unittest.TestCase):
    def test_every_rule_is_broken_by_a_mistake(self):
        played = [kind for module in MODULES for kind in play.table(module)]
        broken = {rule for kind in played for rule in (kind.rule, kind.why) if rule}
        # Named when the present is looked at only.
        self.assertEqual({one["rule"] for one in listed()} - broken, {"status-differs"})

    def test_there_are_enough_mistakes_and_near_misses(self):
        mistakes = [kind for module in MODULES for kind in play.table(module) if kind.rule]
        self.assertGreater(len(mistakes), 80)
        self.assertGreater(len(play.table("nearmisses")), 20)

    def test_pages_are_as_the_table_says(self):
        page = (SOURCE / "docs/rules.md").read_text(encoding="utf-8")
        self.assertEqual(page, rulepages.page(listed()), "docs/rules.md: run scripts/rulepages.py")


if __name__ == "__main__":
    unittest.main(argv=sys.argv)
