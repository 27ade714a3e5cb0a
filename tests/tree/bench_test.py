# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

import json
import os
import pathlib
import sys
import tempfile
import unittest

SOURCE = pathlib.Path(os.environ["SOURCE"])
sys.path.insert(0, str(SOURCE / "bench/report"))

import counts
import goals
import report
import results


def made_results(*rows):
    """Results of rows (name, size, unit, {who: p50}); p99 is the double."""
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder) / "results.json"
        path.write_text(json.dumps({"rows": [
            {"name": name, "size": size, "unit": unit,
             "samples": [{"who": who, "count": 1, "p50": value, "p99": 2 * value} for who, value in values.items()]}
            for name, size, unit, values in rows]}), encoding="utf-8")
        return results.Results(path)


class ReportTest(unittest.TestCase):
    def test_ratio_goal_is_met_up_to_its_limit(self):
        for plugin, is_met in ((115, True), (116, False)):
            found = list(goals.by_ratio(made_results(("Accept", 0, "ns", {"bare": 100, "plug-in": plugin}))))
            self.assertEqual([goal.is_met for goal in found], [is_met])

    def test_wake_up_of_an_idle_plug_in_misses_its_goal(self):
        row = ("idle, wake-ups", 60, "count", {"bare": 0, "plug-in": 1, "plug-in, one ongoing": 60})
        found = list(goals.idle(made_results(row, ("idle, messages", 60, "count", {"all on the bus": 0}))))
        self.assertEqual([goal.is_met for goal in found], [False, True, True])

    def test_departure_of_a_stranger_is_judged_for_a_hundred_registrations(self):
        found = goals.strangers({"departureOfAStranger/0": 400, "departureOfAStranger/100": 1300,
                                 "departureOfAStranger/1000": 10900})
        self.assertEqual([(goal.value, goal.is_met) for goal in found], [(900, True), (1050, False)])

    def test_tables_are_written_between_their_marks_only(self):
        text = "a\n<!-- x: written by scripts/bench --docs -->\nold\n<!-- end of x -->\nb\n"
        self.assertEqual(report.replaced(text, "x", ["new"]), text.replace("old", "new"))
        self.assertRaises(SystemExit, report.replaced, text, "y", [])

    def test_page_has_a_place_for_every_table(self):
        page = (SOURCE / "docs/performance.md").read_text(encoding="utf-8")
        for name in ("goals", "status", "commands", "registration", "announcement", "audio", "scale", "slopes", "memory",
                     "flood", "log", "counts", "in-process"):
            self.assertNotEqual(report.replaced(page, name, ["nothing else"]), page)


class CountsTest(unittest.TestCase):
    def test_what_has_become_worse_is_told(self):
        self.assertEqual(list(counts.compare({"a": 1.05, "b": 1.0}, {"a": 1.0, "b": 1.0})), ["a: 1.050, recorded 1.000"])

    def test_what_differs_by_chance_or_is_better_is_not(self):
        self.assertEqual(list(counts.compare({"a": 1.03, "b": 0.5}, {"a": 1.0, "b": 1.0})), [])

    def test_what_is_missing_is_told(self):
        self.assertEqual(list(counts.compare({"a": 1}, {"b": 1})), ["a: is only in this run", "b: is only in the record"])

    def test_ratios_are_to_each_floor(self):
        row = made_results(("instructions, status", 1, "instructions", {"bare": 50, "bare, sending": 80, "plug-in": 60}),
                           (counts.TRACE, 0, "instructions", {"plug-in": 20}))
        self.assertEqual(counts.ratios(row), {"instructions, status 1 / bare": 1.2,
                                              "instructions, status 1 / bare, sending": 0.75, counts.TRACE: 20})


if __name__ == "__main__":
    unittest.main()
