# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""The rows that the measurements have left, and what can be said of them."""

from dataclasses import dataclass
import json
import math
import statistics

ROUNDS_FOR_A_VERDICT = 20
VALUES_FOR_P99 = 100


def p99(values):
    """The smallest value that 99 of 100 are not above; None when there are too few to tell."""
    if len(values) < VALUES_FOR_P99:
        return None
    return sorted(values)[math.ceil(0.99 * len(values)) - 1]


def ranks_of_the_middle(count):
    """
    Between which of so many values, from the smallest on, the middle of all that there could be lies, in 95 of 100
    cases whatever their distribution; the outermost ones where they are too few to say even that.
    """
    lower, chance = 0, 0.5 ** count
    while chance <= 0.025:
        lower += 1
        chance += math.comb(count, lower) * 0.5 ** count
    lower = max(lower, 1)
    return lower, count + 1 - lower


@dataclass
class Estimate:
    """A figure that each round gives: the middle of them, and the spread that the middle has."""

    middle: float
    low: float
    high: float
    rounds: int

    @staticmethod
    def of(values):
        ordered = sorted(values)
        lower, upper = ranks_of_the_middle(len(ordered))
        return Estimate(statistics.median(ordered), ordered[lower - 1], ordered[upper - 1], len(ordered))

    def verdict(self, limit):
        """Whether it is up to the limit: "yes", "no", or "not decided" where the spread crosses it or means nothing."""
        if self.rounds < ROUNDS_FOR_A_VERDICT or self.low <= limit < self.high:
            return "not decided"
        return "yes" if self.high <= limit else "no"


class Results:
    """Rows by name and size; each has a unit, and of everybody who was measured the values of each round."""

    def __init__(self, *paths):
        self.units = {}
        self.values = {}
        self.circumstances = {}
        for path in paths:
            with open(path, encoding="utf-8") as file:
                read = json.load(file)
            if "benchmarks" in read:
                self._add_in_process(read["benchmarks"])
            else:
                self.circumstances[path.stem] = {key: value for key, value in read.items() if key != "rows"}
                for row in read["rows"]:
                    self._add(row)

    def _add(self, row):
        # Several processes follow one another.
        self.units[row["name"]] = row["unit"]
        values = self.values.setdefault((row["name"], row["size"]), {})
        for one in row["samples"]:
            values.setdefault(one["who"], []).extend(one["rounds"])

    def _add_in_process(self, benchmarks):
        # Google Benchmark's file: a repetition is a round.
        for one in benchmarks:
            if one["run_type"] == "iteration":
                name, _, size = one["name"].partition("/")
                self.units["in process, " + name] = "ns"
                row = self.values.setdefault(("in process, " + name, int(size or 0)), {"plug-in": []})
                row["plug-in"].append([one["cpu_time"]])

    def sizes(self, name):
        return sorted(size for row, size in self.values if row == name)

    def has(self, name, size, who):
        return who in self.values.get((name, size), {})

    def rounds(self, name, size, who):
        """A list of values for each round; KeyError when it was not measured."""
        return self.values[name, size][who]

    def all_of(self, name, size, who):
        return [value for values in self.rounds(name, size, who) for value in values]

    def p50(self, name, size, who):
        return statistics.median(self.all_of(name, size, who))

    def each_round(self, name, size, who, statistic=statistics.median):
        """A figure for each round, where a round has it."""
        return [statistic(values) for values in self.rounds(name, size, who)]

    def ratio(self, name, size, floor, statistic=statistics.median):
        """The plug-in's figure to that of the floor in the same round."""
        pairs = zip(self.each_round(name, size, "plug-in", statistic), self.each_round(name, size, floor, statistic))
        return Estimate.of([one / other for one, other in pairs if one is not None and other])
