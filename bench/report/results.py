# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""The rows that a run has left."""

import json


class Results:
    """Rows by name and size; each has a unit, and p50 and p99 of everybody who was measured."""

    def __init__(self, path):
        with open(path, encoding="utf-8") as file:
            rows = json.load(file)["rows"]
        self.units = {row["name"]: row["unit"] for row in rows}
        self.values = {(row["name"], row["size"]): {one["who"]: one for one in row["samples"]} for row in rows}

    def sizes(self, name):
        return sorted(size for row, size in self.values if row == name)

    def of(self, name, size, who, quantile="p50"):
        """A value; KeyError when it was not measured."""
        return self.values[name, size][who][quantile]

    def has(self, name, size, who):
        return who in self.values.get((name, size), {})

    def ratio(self, name, size, floor="bare"):
        """Of p50, the plug-in's to that of the floor."""
        return self.of(name, size, "plug-in") / self.of(name, size, floor)


def read_in_process(path):
    """Nanoseconds of processor time by name, of Google Benchmark's file."""
    with open(path, encoding="utf-8") as file:
        return {row["name"]: row["cpu_time"] for row in json.load(file)["benchmarks"]}
