# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""What is asked of the plug-in, and whether the results have it."""

from dataclasses import dataclass
import statistics

from results import Estimate, p99

INSTRUCTIONS = "instructions, "
# Of instructions, to the floor that sends the same.
INSTRUCTION_LIMIT = 1.10


@dataclass
class Goal:
    """One line of the table: the row that it is about, what was found, and what was asked."""

    row: tuple  # name and size
    what: str
    plugin: str
    floor: str
    figure: str
    asked: str
    met: str
    rounds: str


def time(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if abs(nanoseconds) >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def amount(value, unit):
    return time(value) if unit == "ns" else f"{value:,.0f} {unit}"


# Row, what it is called, the floor, the ratio that is allowed, and of which figure of a round; None where nothing is
# asked, and the row is shown all the same.
RATIOS = [
    ("status", "`StatusChanged` to the host's `statusChanged`, calls up: {}", "bare", 1.15),
    ("status, log silent", "the same with the log silent, {} up", "bare", 1.15),
    ("status, log traced", "the same with everything traced, {} up", "bare", None),
    ("Accept", "`Accept` to the application", "bare", 1.15),
    ("SetHold", "`SetHold` to the application", "bare", 1.15),
    ("SendDTMF", "`SendDTMF` to the application", "bare", 1.15),
    ("Accept, main thread", "`Accept`, time on the main thread", "bare", 1.1),
    ("SetHold, main thread", "`SetHold`, time on the main thread", "bare", 1.1),
    ("SendDTMF, main thread", "`SendDTMF`, time on the main thread", "bare", 1.1),
    ("RegisterCallManager", "`RegisterCallManager` and its answer", "bare", 1.15),
    ("InterfacesAdded", "`InterfacesAdded` to the host's `voiceCallAdded`", "bare, sending", 1.3),
    ("InterfacesAdded, Call1 only", "the same of a call without tones and audio control", "bare, sending", 1.3),
    ("snapshot", "snapshot, calls: {}", "bare, sending", 1.3),
    ("teardown", "departure, calls: {}", "bare, sending", 1.3),
    ("registrations", "registrations, {}", "bare", 1.3),
    ("departure", "departure, registrations: {}", "bare", 1.3),
    ("audio route", "host's route change, audio calls: {}", "bare", 1.15),
    ("audio route, main thread", "the same, time on the main thread, audio calls: {}", "bare", 1.1),
    ("audio devices", "host's device change, audio calls: {}", "bare", 1.15),
    ("audio devices, main thread", "the same, time on the main thread, audio calls: {}", "bare", 1.1),
    ("answer, no flood", "answered while nobody floods", "bare", 1.15),
    ("answer under flood", "answered under another's flood", "bare", 1.3),
    ("flood", "what the flooder gets rid of", "bare", None),
    ("answer, no flood, log silent", "answered while nobody floods, log silent", "bare", 1.15),
    ("answer under flood, log silent", "answered under another's flood, log silent", "bare", 1.3),
    ("flood, log silent", "what the flooder gets rid of, log silent", "bare", None),
    ("heap per call", "heap per call, of {}", "bare, sending", 1.3),
    ("resident per call", "resident memory per call, of {}", "bare, sending", 1.3),
    ("heap per registration", "heap per registration, of {}", "bare", 1.3),
    ("resident per registration", "resident memory per registration, of {}", "bare", 1.3),
]

# Rows whose rounds are long enough to have a p99 each, which then counts, too.
WITH_P99 = {"answer under flood", "answer under flood, log silent"}

MICROSECOND = 1e3
MILLISECOND = 1e6


def rounds_of(results, name, size, who="plug-in"):
    counts = [len(values) for values in results.rounds(name, size, who)]
    fewest, most = min(counts), max(counts)
    return f"{len(counts)} × {fewest}" + (f" to {most}" if most > fewest else "")


def ratio_goal(results, row, what, floor, limit, statistic=statistics.median):
    """A goal of a row of everybody's."""
    name, size = row
    unit = results.units[name]
    ratio = results.ratio(name, size, floor, statistic)
    plugin, below = (statistics.median([value for value in results.each_round(name, size, who, statistic)
                                        if value is not None]) for who in ("plug-in", floor))
    return Goal(row, what.format(f"{size:,}"), amount(plugin, unit), f"{amount(below, unit)} ({floor})",
                f"{ratio.middle:.2f} × ({ratio.low:.2f} to {ratio.high:.2f})", f"≤ {limit:.2f} ×" if limit else "-",
                ratio.verdict(limit) if limit else "-", rounds_of(results, name, size))


def by_ratio(results):
    for name, what, floor, limit in RATIOS:
        for size in results.sizes(name):
            yield ratio_goal(results, (name, size), what, floor, limit)
            if name in WITH_P99:
                yield ratio_goal(results, (name, size), what + ", p99 of a round", floor, limit, p99)


def in_process(results):
    """Differences to the call of the slot with nobody registered, for a hundred registrations; and a trace line."""
    name = "in process, departureOfAStranger"
    floors = results.each_round(name, 0, "plug-in")
    for size in results.sizes(name)[1:]:
        costs = results.each_round(name, size, "plug-in")
        cost = Estimate.of([(one - floor) * 100 / size for one, floor in zip(costs, floors)])
        # Of one alone, the hundredfold of next to nothing.
        is_asked = size >= 100
        yield Goal((name, size), f"departure of an unrelated name, registrations: {size:,}",
                   time(statistics.median(costs)), f"{time(statistics.median(floors))} (none registered)",
                   f"{time(cost.middle)} per 100 ({time(cost.low)} to {time(cost.high)})" if is_asked else "-",
                   "≤ 1 µs per 100" if is_asked else "-", cost.verdict(MICROSECOND) if is_asked else "-",
                   rounds_of(results, name, size))
    traced, silent = ("in process, operationWithTrace", 0), ("in process, operationWithoutTrace", 0)
    yield Goal(traced, "an operation with a trace that is off", time(results.p50(*traced, "plug-in")),
               f"{time(results.p50(*silent, 'plug-in'))} (without)", "-", "-", "-", rounds_of(results, *traced))


def idle(results):
    """Counts, not times: what happens in all windows together."""
    name = "idle, wake-ups"
    for size in results.sizes(name):
        total = {who: sum(results.all_of(name, size, who)) for who in ("bare", "plug-in", "plug-in, one ongoing")}
        rounds = rounds_of(results, name, size)
        seconds = size * len(results.rounds(name, size, "plug-in"))
        messages = sum(results.all_of("idle, messages", size, "all on the bus"))
        # A timer of a second may be late by a twentieth, and early.
        for row, what, value, floor, asked, is_met in (
                (name, "100 calls, none ongoing", total["plug-in"], total["bare"], "none", total["plug-in"] <= total["bare"]),
                (name, "one call ongoing", total["plug-in, one ongoing"], total["bare"], "1 a second",
                 total["plug-in, one ongoing"] <= seconds * 1.06 + 1),
                ("idle, messages", "the same", messages, 0, "none", messages == 0)):
            yield Goal((row, size), f"{row.split(', ')[1]} in {seconds} s, {what}", f"{value:.0f}", f"{floor:.0f}", "-", asked,
                       "yes" if is_met else "no", rounds)


def loading(results):
    name = "loading"
    plugin, bare = (results.each_round(name, 0, who) for who in ("plug-in", "bare"))
    more = Estimate.of([one - other for one, other in zip(plugin, bare)])
    yield Goal((name, 0), "loading, until the object is exported", time(statistics.median(plugin)),
               f"{time(statistics.median(bare))} (bare)", f"+ {time(more.middle)} ({time(more.low)} to {time(more.high)})",
               "≤ + 5 ms", more.verdict(5 * MILLISECOND), rounds_of(results, name, 0))


def log(results):
    """What the traced lines of a status cost when they are off."""
    row, check = ("status, traced lines", 1), (INSTRUCTIONS + "trace that is off", 0)
    status = (INSTRUCTIONS + "status", 1)
    lines, line, path = (results.each_round(*one, "plug-in") for one in (row, check, status))
    share = Estimate.of([100 * a * b / c for a, b, c in zip(lines, line, path)])
    yield Goal(row, "trace that is off, of a status", f"{statistics.median(lines):.0f} × {statistics.median(line):.1f} instructions",
               f"{statistics.median(path):,.0f} instructions", f"{share.middle:.2f} % ({share.low:.2f} to {share.high:.2f})",
               "≤ 1 %", share.verdict(1), rounds_of(results, *row))


def counted_paths(results):
    """Rows of instructions, and how they are called; a line of a trace is no path."""
    for name, size in results.values:
        if name.startswith(INSTRUCTIONS) and "trace" not in name:
            yield (name, size), name[len(INSTRUCTIONS):] + (f", {size:,}" if size else "")


def by_instructions(results):
    """Every path against the floor that sends the same."""
    for (name, size), what in counted_paths(results):
        if results.has(name, size, "bare, sending"):
            yield ratio_goal(results, (name, size), what, "bare, sending", INSTRUCTION_LIMIT)


def time_goals(results):
    """All the others, in the order of the table."""
    for part in (by_ratio, in_process, idle, loading, log):
        yield from part(results)


# What a goal takes as its floor or its part, and what stands in no table of its own.
PARTS = {("in process, departureOfAStranger", 0), ("in process, operationWithoutTrace", 0),
         (INSTRUCTIONS + "trace that is off", 0)}


def unjudged(results, found):
    """Rows that were measured and that no goal shows."""
    return sorted(set(results.values) - {goal.row for goal in found} - PARTS)
