# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""The plots of docs/performance.md, drawn by gnuplot."""

import subprocess

# File, title, label of the other axis, and the rows with who is drawn of each.
PLOTS = [
    ("status", "from the application's StatusChanged to the host's statusChanged", "calls up", "µs", 1e3,
     [("status", who) for who in ("relay", "libdbus", "bare", "plug-in")]),
    ("calls", "calls that come with a snapshot, and go with their application", "calls", "ms", 1e6,
     [(row, who) for row in ("snapshot", "teardown") for who in ("bare", "plug-in")]),
    ("registrations", "registrations of one application, and its departure", "registrations", "ms", 1e6,
     [(row, who) for row in ("registrations", "departure") for who in ("bare", "plug-in")]),
]


def data(results, name, who, scale):
    lines = (f"{size} {results.p50(name, size, who) / scale}" for size in results.sizes(name))
    return "\n".join(lines) + "\ne\n"


def script(results, plot):
    _, title, axis, unit, scale, lines = plot
    drawn = ", ".join(f"'-' using 1:2 with linespoints title '{name}, {who}'" if len({row for row, _ in lines}) > 1
                      else f"'-' using 1:2 with linespoints title '{who}'" for name, who in lines)
    return (f"set terminal svg size 720,400 font 'sans,12' background '#ffffff'\nset title \"{title}\"\n"
            f"set xlabel '{axis}'\nset ylabel '{unit}'\nset logscale xy\nset key left top\nset grid\n"
            f"set encoding utf8\nplot {drawn}\n" + "".join(data(results, name, who, scale) for name, who in lines))


def write(directory, results):
    """An SVG file for each plot."""
    directory.mkdir(exist_ok=True)
    for plot in PLOTS:
        svg = subprocess.run(["gnuplot"], input=script(results, plot), capture_output=True, text=True, check=True).stdout
        (directory / f"{plot[0]}.svg").write_text(svg, encoding="utf-8")
