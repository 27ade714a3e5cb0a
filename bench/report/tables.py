# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""The tables of docs/performance.md."""

from goals import amount, time

WHO = ["relay", "libdbus", "bare", "bare, sending", "plug-in"]


def table(head, rows):
    yield "| " + " | ".join(head) + " |"
    yield "|" + "---|" * len(head)
    for row in rows:
        yield "| " + " | ".join(row) + " |"


def goal_table(found):
    return table(["what", "plug-in", "floor", "goal", "met"],
                 ([goal.what, goal.figure, goal.floor, goal.asked, "yes" if goal.is_met else "**no**"] for goal in found))


def cell(results, name, size, who):
    if not results.has(name, size, who):
        return ""
    unit = results.units[name]
    return " / ".join(amount(results.of(name, size, who, quantile), unit) for quantile in ("p50", "p99"))


def detail_table(results, names):
    """p50 and p99 of everybody, and the ratios of p50."""
    who = [one for one in WHO if any(results.has(name, size, one) for name in names for size in results.sizes(name))]
    has_sending = "bare, sending" in who
    head = ["p50 / p99"] + who + ["to bare"] + (["to bare, sending"] if has_sending else [])

    def line(name, size):
        label = f"{name}, {size:,}" if size else name
        ratios = [f"{results.ratio(name, size):.2f}"]
        if has_sending:
            ratios.append(f"{results.ratio(name, size, 'bare, sending'):.2f}"
                          if results.has(name, size, "bare, sending") else "")
        return [label] + [cell(results, name, size, one) for one in who] + ratios

    return table(head, (line(name, size) for name in names for size in results.sizes(name)))


def count_table(results):
    names = sorted(name for name in results.units if name.startswith("instructions, ") and "trace" not in name)

    def line(name, size):
        values = [results.of(name, size, who) for who in ("bare", "bare, sending", "plug-in")]
        label = name[len("instructions, "):] + (f", {size:,}" if size else "")
        return [label] + [f"{value:,.0f}" for value in values] + [f"{values[2] / values[0]:.3f}", f"{values[2] / values[1]:.3f}"]

    return table(["instructions", "bare", "bare, sending", "plug-in", "to bare", "to bare, sending"],
                 (line(name, size) for name in names for size in results.sizes(name)))


def slope_table(results):
    """What one call or registration more costs, between the two largest sizes."""
    def line(name):
        small, large = results.sizes(name)[-2:]
        slopes = [(results.of(name, large, who) - results.of(name, small, who)) / (large - small)
                  for who in ("bare", "plug-in")]
        return [name, f"{small:,} to {large:,}"] + [time(slope) for slope in slopes] + [f"{slopes[1] / slopes[0]:.2f}"]

    return table(["for each one more", "between", "bare", "plug-in", "ratio"],
                 (line(name) for name in ("snapshot", "teardown", "registrations", "departure")))


def in_process_table(in_process):
    return table(["in the process, without a message", "processor time"],
                 ([f"`{name}`", time(cost)] for name, cost in in_process.items()))


def all_tables(results, in_process, found):
    """Lines of each, by the name of its place."""
    return {name: list(lines) for name, lines in {
        "goals": goal_table(found),
        "status": detail_table(results, ["status"]),
        "commands": detail_table(results, ["Accept", "Accept, main thread", "SetHold", "SetHold, main thread", "SendDTMF",
                                           "SendDTMF, main thread"]),
        "registration": detail_table(results, ["RegisterCallManager"]),
        "announcement": detail_table(results, ["InterfacesAdded", "InterfacesAdded, Call1 only"]),
        "audio": detail_table(results, ["audio route", "audio route, main thread", "audio devices",
                                        "audio devices, main thread"]),
        "scale": detail_table(results, ["snapshot", "teardown", "registrations", "departure"]),
        "slopes": slope_table(results),
        "memory": detail_table(results, ["heap per call", "resident per call", "heap per registration",
                                         "resident per registration"]),
        "flood": detail_table(results, ["answer, no flood", "answer under flood", "p99 of a flood", "flood",
                                        "answer under flood, log silent", "p99 of a flood, log silent",
                                        "flood, log silent"]),
        "log": detail_table(results, ["status", "status, log silent", "status, log traced"]),
        "counts": count_table(results),
        "in-process": in_process_table(in_process),
    }.items()}
