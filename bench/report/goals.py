# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""What is asked of the plug-in, and whether the results have it."""

from dataclasses import dataclass


@dataclass
class Goal:
    """One line of the table: what was asked, what was found, and what stands below it."""

    what: str
    figure: str
    floor: str
    asked: str
    value: float
    limit: float

    @property
    def is_met(self):
        return self.value <= self.limit


def time(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def amount(value, unit):
    return time(value) if unit == "ns" else f"{value:,.0f} {unit}"


# Row, what it is called, and the ratio of p50 that is allowed.
RATIOS = [
    ("status", "`StatusChanged` to the host's `statusChanged`, calls up: {}", 1.15),
    ("Accept", "`Accept` to the application", 1.15),
    ("SetHold", "`SetHold` to the application", 1.15),
    ("SendDTMF", "`SendDTMF` to the application", 1.15),
    ("RegisterCallManager", "`RegisterCallManager` and its answer", 1.15),
    ("InterfacesAdded", "`InterfacesAdded` to the host's `voiceCallAdded`", 1.3),
    ("snapshot", "snapshot, calls: {}", 1.3),
    ("teardown", "departure, calls: {}", 1.3),
    ("departure", "departure, registrations: {}", 1.3),
    ("audio route", "host's route change, audio calls: {}", 1.15),
    ("audio devices", "host's device change, audio calls: {}", 1.15),
    ("p99 of a flood", "answered under another's flood, p99", 1.3),
    ("p99 of a flood, log silent", "the same with the log silent", 1.3),
    ("heap per call", "heap per call, of {}", 1.3),
    ("resident per call", "resident memory per call, of {}", 1.3),
    ("heap per registration", "heap per registration, of {}", 1.3),
    ("resident per registration", "resident memory per registration, of {}", 1.3),
]

# Rows in which something is broadcast, so that the floor that sends the same is worth a figure.
SENDING = {"InterfacesAdded", "snapshot", "teardown"}

MICROSECOND = 1e3
MILLISECOND = 1e6


def by_ratio(results):
    for row, what, limit in RATIOS:
        for size in results.sizes(row):
            unit = results.units[row]
            ratio = results.ratio(row, size)
            ratios = f"{ratio:.2f} ×"
            if row in SENDING and results.has(row, size, "bare, sending"):
                ratios += f"; {results.ratio(row, size, 'bare, sending'):.2f} × of one that sends the same"
            yield Goal(what.format(f"{size:,}"), f"{amount(results.of(row, size, 'plug-in'), unit)} ({ratios})",
                       amount(results.of(row, size, "bare"), unit), f"≤ {limit} ×", ratio, limit)


def main_thread(results):
    for row in ("Accept", "SetHold", "SendDTMF"):
        name = f"{row}, main thread"
        cost = results.of(name, 0, "plug-in")
        yield Goal(f"`{row}`, time on the main thread", time(cost), time(results.of(name, 0, "bare")), "≤ 15 µs", cost,
                   15 * MICROSECOND)


def strangers(in_process):
    name = "departureOfAStranger/{}"
    floor = in_process[name.format(0)]
    for registrations in (100, 1000):
        cost = (in_process[name.format(registrations)] - floor) * 100 / registrations
        yield Goal(f"departure of an unrelated name, {registrations:,} registrations", f"{time(cost)} per 100", time(floor),
                   "≤ 1 µs per 100", cost, MICROSECOND)


def idle(results):
    row = "idle, wake-ups"
    for seconds in results.sizes(row):
        floor = results.of(row, seconds, "bare")
        resting, ongoing = (results.of(row, seconds, who) for who in ("plug-in", "plug-in, one ongoing"))
        yield Goal(f"wake-ups in {seconds} s, 100 calls, none ongoing", f"{resting:.0f}", f"{floor:.0f}", "0",
                   resting - floor, 0)
        # A timer of a second may be late by a twentieth, and early.
        yield Goal(f"wake-ups in {seconds} s, one call ongoing", f"{ongoing:.0f}", f"{floor:.0f}", "1 a second", ongoing,
                   seconds * 1.06 + 1)
        messages = results.of("idle, messages", seconds, "all on the bus")
        yield Goal(f"messages in {seconds} s", f"{messages:.0f}", "0", "0", messages, 0)


def loading(results):
    plugin, bare = (results.of("loading", 0, who) for who in ("plug-in", "bare"))
    yield Goal("loading, until the object is exported", f"{time(plugin)} (+ {time(plugin - bare)})", time(bare), "≤ + 5 ms",
               plugin - bare, 5 * MILLISECOND)


def log(results):
    lines = results.of("status, traced lines", 1, "plug-in")
    check = results.of("instructions, trace that is off", 0, "plug-in")
    path = results.of("instructions, status", 1, "plug-in")
    share = lines * check / path
    yield Goal("trace that is off, of a status", f"{lines:.0f} × {check:.0f} instructions ({share:.2%})",
               f"{path:,.0f} instructions", "≤ 1 %", share, 0.01)


def goals(results, in_process):
    """All of them, in the order of the table."""
    for part in (by_ratio(results), main_thread(results), strangers(in_process), idle(results), loading(results),
                 log(results)):
        yield from part
