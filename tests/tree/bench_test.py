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
import tables
from results import Estimate, Results, p99


def made_results(*rows):
    """Results of rows (name, size, unit, {who: value of each round})."""
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder) / "made.json"
        path.write_text(json.dumps({"short": False, "rows": [
            {"name": name, "size": size, "unit": unit,
             "samples": [{"who": who, "rounds": [[value] for value in values]} for who, values in of_whom.items()]}
            for name, size, unit, of_whom in rows]}), encoding="utf-8")
        return Results(path)


def twenty(low, high=None):
    """Twenty rounds, in turns the one and the other."""
    return [low, low if high is None else high] * 10


class ReportTest(unittest.TestCase):
    def verdicts(self, plugin, name="Accept", floor="bare"):
        found = goals.by_ratio(made_results((name, 0, "ns", {floor: [100] * len(plugin), "plug-in": plugin})))
        return [goal.met for goal in found]

    def test_goal_is_met_up_to_its_limit(self):
        self.assertEqual(self.verdicts(twenty(115)), ["yes"])
        self.assertEqual(self.verdicts(twenty(116)), ["no"])

    def test_spread_that_crosses_the_goal_decides_nothing(self):
        self.assertEqual(self.verdicts(twenty(100, 130)), ["not decided"])

    def test_nineteen_rounds_decide_nothing(self):
        self.assertEqual(self.verdicts([100] * 19), ["not decided"])

    def test_what_is_promised_beforehand_is_part_of_the_floor(self):
        self.assertEqual(self.verdicts(twenty(120), "snapshot", "bare, sending"), ["yes"])
        self.assertRaises(KeyError, self.verdicts, twenty(120), "snapshot", "bare")

    def test_middle_of_two_values_is_between_them(self):
        self.assertEqual(made_results(("a", 0, "ns", {"bare": [1, 3]})).p50("a", 0, "bare"), 2)

    def test_p99_needs_a_hundred_values(self):
        self.assertIsNone(p99(list(range(99))))
        self.assertEqual(p99(list(range(1, 101))), 99)
        self.assertEqual(p99([1] * 98 + [5, 6]), 5)

    def test_spread_is_where_the_middle_lies_in_95_of_100_cases(self):
        estimate = Estimate.of(list(range(1, 21)))
        self.assertEqual((estimate.middle, estimate.low, estimate.high), (10.5, 6, 15))
        self.assertEqual((Estimate.of([3, 1, 2]).low, Estimate.of([3, 1, 2]).high), (1, 3))

    def test_ratio_is_of_the_same_round(self):
        ratio = made_results(("a", 0, "ns", {"bare": twenty(10, 1000), "plug-in": twenty(11, 1100)})).ratio("a", 0, "bare")
        self.assertEqual([round(value, 9) for value in (ratio.low, ratio.high)], [1.1, 1.1])

    def test_wake_up_of_an_idle_plug_in_misses_its_goal(self):
        row = ("idle, wake-ups", 3, "count", {"bare": twenty(0), "plug-in": [0] * 19 + [1],
                                              "plug-in, one ongoing": twenty(3)})
        found = goals.idle(made_results(row, ("idle, messages", 3, "count", {"all on the bus": twenty(0)})))
        self.assertEqual([goal.met for goal in found], ["no", "yes", "yes"])

    def test_departure_of_a_stranger_is_judged_for_a_hundred_registrations(self):
        name = "in process, departureOfAStranger"
        rows = [(name, size, "ns", {"plug-in": twenty(cost)}) for size, cost in ((0, 400), (1, 500), (100, 1300), (1000, 10900))]
        rows += [("in process, operationWith" + what, 0, "ns", {"plug-in": twenty(2)}) for what in ("Trace", "outTrace")]
        found = list(goals.in_process(made_results(*rows)))
        self.assertEqual([goal.met for goal in found], ["-", "yes", "no", "-"])

    def test_row_that_no_goal_shows_is_found(self):
        row = made_results(("Accept", 0, "ns", {"bare": twenty(1), "plug-in": twenty(1)}), ("new", 7, "ns", {}))
        self.assertEqual(goals.unjudged(row, list(goals.by_ratio(row))), [("new", 7)])

    def test_parts_of_a_path_add_up(self):
        costs = zip(["bare", "bare, sending", "bare, relaying", "plug-in, log silent", "plug-in"], (80, 100, 110, 112, 120))
        lines = tables.count_table(made_results(("instructions, snapshot", 20, "instructions",
                                                 {who: twenty(cost) for who, cost in costs})))
        self.assertTrue(list(lines)[-1].endswith("| +10.0% | +8.0% | +2.0% |"))

    def test_tables_are_written_between_their_marks_only(self):
        text = "a\n<!-- x: written by scripts/bench --docs -->\nold\n<!-- end of x -->\nb\n"
        self.assertEqual(report.replaced(text, "x", ["new"]), text.replace("old", "new"))
        self.assertRaises(SystemExit, report.replaced, text, "y", [])

    def test_page_has_a_place_for_every_table(self):
        page = (SOURCE / "docs/performance.md").read_text(encoding="utf-8")
        for name in tables.TABLES:
            self.assertNotEqual(report.replaced(page, name, ["nothing else"]), page)


class CountsTest(unittest.TestCase):
    def test_what_has_become_worse_is_told(self):
        self.assertEqual(list(counts.compare({"a": 1.05, "b": 1.0}, {"a": 1.0, "b": 1.0})), ["a: 1.050, recorded 1.000"])

    def test_what_differs_by_chance_or_is_better_is_not(self):
        self.assertEqual(list(counts.compare({"a": 1.02, "b": 0.5}, {"a": 1.0, "b": 1.0})), [])

    def test_what_is_missing_is_told(self):
        self.assertEqual(list(counts.compare({"a": 1}, {"b": 1})), ["a: is only in this run", "b: is only in the record"])

    def test_ratios_are_to_the_floor_that_sends_the_same(self):
        row = made_results(("instructions, status", 1, "instructions", {"bare, sending": twenty(80), "plug-in": twenty(60)}),
                           ("instructions, trace that is off", 0, "instructions",
                            {"bare, sending": twenty(1), "plug-in": twenty(20)}))
        self.assertEqual(counts.ratios(row), {"status 1": 0.75, "trace that is off": 20})


if __name__ == "__main__":
    unittest.main()
