# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Plays all applications of the named modules at once, each in a process of its own. Prints how many there are, and
a line for each: its bus names and what the checker has to find. Ends with its standard input."""

import importlib
import json
import os
import sys
import traceback

from application import Application, Person
from gi.repository import GLib


def table(argument):
    """The classes of a module that have a text, and so are meant to be played; MODULE:NAME,NAME means only these."""
    name, _, chosen = argument.partition(":")
    module = importlib.import_module(name)
    found = [value for value in vars(module).values()
             if isinstance(value, type) and issubclass(value, Application) and value.__module__ == name]
    return [value for value in dict.fromkeys(found + list(getattr(module, "MADE", [])))
            if value.__doc__ and (not chosen or value.__name__ in chosen.split(","))]


def loop_until_the_end():
    loop = GLib.MainLoop()
    GLib.io_add_watch(0, GLib.PRIORITY_DEFAULT, GLib.IOCondition.HUP | GLib.IOCondition.IN, lambda *_: loop.quit())
    loop.run()


def play(kind, person):
    application = kind(person)
    application.start()
    names = [bus.get_unique_name() for bus in (application.bus, getattr(application, "second", None)) if bus]
    sys.stdout.write(json.dumps({"name": kind.__name__, "rule": kind.rule, "why": kind.why, "text": kind.__doc__,
                                 "names": names}) + "\n")
    sys.stdout.flush()


def apart(action):
    """Does it in a process of its own, which goes on until standard input ends; back when it has been done."""
    reading, writing = os.pipe()
    child = os.fork()
    if child == 0:
        try:
            action()
            os.write(writing, b".")
            loop_until_the_end()
        except BaseException:
            traceback.print_exc()
            os._exit(1)
        os._exit(0)
    os.close(writing)
    os.read(reading, 1)
    os.close(reading)
    return child


def main(modules):
    kinds = [kind for module in modules for kind in table(module)]
    print(len(kinds), flush=True)
    # The modules are loaded once; nothing is connected before the processes part.
    person = Person()
    children = [apart(person.serve)] + [apart(lambda kind=kind: play(kind, person)) for kind in kinds]
    return max(os.waitpid(child, 0)[1] for child in children)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]) != 0)
