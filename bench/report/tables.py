# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""The tables of docs/performance.md."""

import goals
from goals import amount, time
from results import p99

WHO = ["relay", "libdbus", "bare", "bare, sending", "plug-in"]

# Each measurement has a file of its own. In the order of the page.
MEASUREMENTS = ["counts", "status", "commands", "registration", "announcement", "scale", "departure", "audio", "flood",
                "idle", "loading", "log", "inprocess"]


def table(head, rows):
    yield "| " + " | ".join(head) + " |"
    yield "|" + "---|" * len(head)
    for row in rows:
        yield "| " + " | ".join(row) + " |"


def goal_table(found):
    return table(["what", "plug-in", "floor", "figure (spread)", "goal", "met", "rounds"],
                 ([goal.what, goal.plugin, goal.floor, goal.figure, goal.asked,
                   f"**{goal.met}**" if goal.met.startswith("no") else goal.met, goal.rounds] for goal in found))


def cell(results, name, size, who):
    if not results.has(name, size, who):
        return ""
    values = results.all_of(name, size, who)
    both = (results.p50(name, size, who), p99(values))
    return " / ".join(amount(value, results.units[name]) for value in both if value is not None)


def detail_table(*names):
    """p50 and p99 of everybody, and the ratios with their spread."""
    def lines(results):
        rows = [(name, size) for name in names for size in results.sizes(name)]
        who = [one for one in WHO if any(results.has(*row, one) for row in rows)]
        floors = [one for one in ("bare", "bare, sending") if one in who]

        def ratio(row, floor):
            if not results.has(*row, floor):
                return ""
            estimate = results.ratio(*row, floor)
            return f"{estimate.middle:.2f} ({estimate.low:.2f} to {estimate.high:.2f})"

        return table(["p50 / p99"] + who + [f"to {floor}" for floor in floors],
                     ([row[0] + (f", {row[1]:,}" if row[1] else "")] + [cell(results, *row, one) for one in who]
                      + [ratio(row, floor) for floor in floors] for row in rows))
    return lines


def count_table(results):
    """Instructions of everybody, and where those that the plug-in has beyond its floor are spent."""
    who = ["bare", "bare, sending", "bare, relaying", "plug-in, log silent", "plug-in"]

    def line(row, what):
        bare, sending, relaying, silent, plugin = values = [results.p50(*row, one) for one in who]
        parts = [relaying - sending, plugin - silent, silent - relaying]
        return [what] + [f"{value:,.0f}" for value in values] + [f"{part / sending:+.1%}" for part in parts]

    return table(["instructions"] + who + ["adaptor's relay", "log lines", "the rest"],
                 (line(*path) for path in goals.counted_paths(results) if results.has(*path[0], "bare, relaying")))


def slope_table(*names):
    """What one call or registration more costs, between the two largest sizes."""
    def lines(results):
        def line(name):
            small, large = results.sizes(name)[-2:]
            slopes = [(results.p50(name, large, who) - results.p50(name, small, who)) / (large - small)
                      for who in ("bare", "plug-in")]
            return [name, f"{small:,} to {large:,}"] + [time(slope) for slope in slopes] + [f"{slopes[1] / slopes[0]:.2f}"]

        return table(["for each one more", "between", "bare", "plug-in", "ratio"], (line(name) for name in names))
    return lines


def in_process_table(results):
    rows = [row for row in results.values if row[0].startswith("in process, ")]
    return table(["in the process, without a message", "processor time"],
                 ([f"`{name.partition(', ')[2]}`" + (f", {size:,}" if size or "Stranger" in name else ""),
                   time(results.p50(name, size, "plug-in"))] for name, size in rows))


def run_table(results):
    """When and where each measurement was made."""
    return table(["measurement", "begun", "took", "load average then", "machine"],
                 ([name, about["began"].replace("T", " ").replace("Z", " UTC"), f"{about['seconds']} s",
                   f"{about['load']:.2f}", f"{about['processors']} × {about['processor']}, Qt {about['qt']}"]
                  for name, about in sorted(results.circumstances.items(), key=lambda item: item[1]["began"])))


# By the name of its place: the measurements that it needs, and what makes it of the results.
TABLES = {
    "runs": ([], run_table),
    "goals": (["counts"], lambda results: goal_table(goals.by_instructions(results))),
    "counts": (["counts"], count_table),
    "time-goals": (MEASUREMENTS, lambda results: goal_table(goals.time_goals(results))),
    "status": (["status"], detail_table("status")),
    "commands": (["commands"], detail_table("Accept", "Accept, main thread", "SetHold", "SetHold, main thread",
                                            "SendDTMF", "SendDTMF, main thread")),
    "registration": (["registration"], detail_table("RegisterCallManager")),
    "announcement": (["announcement"], detail_table("InterfacesAdded", "InterfacesAdded, Call1 only")),
    "audio": (["audio"], detail_table("audio route", "audio route, main thread", "audio devices",
                                      "audio devices, main thread")),
    "scale": (["scale"], detail_table("snapshot", "teardown")),
    "many-registrations": (["departure"], detail_table("registrations", "departure")),
    "slopes": (["scale", "departure"], slope_table("snapshot", "teardown", "registrations", "departure")),
    "memory": (["scale", "departure"], detail_table("heap per call", "resident per call", "heap per registration",
                                                    "resident per registration")),
    "flood": (["flood"], detail_table("answer, no flood", "answer under flood", "flood", "answer, no flood, log silent",
                                      "answer under flood, log silent", "flood, log silent")),
    "log": (["status", "log"], detail_table("status", "status, log silent", "status, log traced")),
    "in-process": (["inprocess"], in_process_table),
}
