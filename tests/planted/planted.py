#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Puts known faults into a copy of the sources, one at a time, and runs what has to notice each.

The faults are the patches in the folders beside this file, named after the rule that they break. A folder is
named after its judge."""

import argparse
import dataclasses
import os
import pathlib
import shutil
import subprocess
import sys
import time

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
LIMIT_SECONDS = 600


@dataclasses.dataclass(frozen=True)
class Judge:
    targets: list   # to be built
    command: list   # in the build; fails when it has noticed
    noticed: set    # exit codes that say so; others are an accident
    says: str       # what it then prints


JUDGES = {
    "model": Judge(["modelrun"], ["tests/model/modelrun", "--seed", "1", "--histories", "1000"], {1}, "should be"),
    "soak": Judge(["soak", "voicecalld", "voicecall-ringlet-plugin", "soakprobe"],
                  ["tests/soak/soak", "--registrations", "8", "--calls", "20", "--patience", "1"], {1}, ""),
    "durations": Judge(["callhandler_test"], ["tests/bus/callhandler_test", "--gtest_filter=CallDurationTest.*"],
                       {1}, "FAILED"),
    "endtoend": Judge(["typicalcall_test"], ["tests/endtoend/typicalcall_test"], {1}, "FAILED"),
}


def run(*command, cwd=None, check=True):
    done = subprocess.run(command, cwd=cwd, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          errors="replace", timeout=LIMIT_SECONDS)
    if check and done.returncode:
        raise RuntimeError(f"{done.stdout}\n{' '.join(map(str, command))} failed")
    return done


def copy_sources(tree):
    """Only what differs, so that little is built anew."""
    files = run("git", "ls-files", "-z", cwd=ROOT).stdout.split("\0")
    for file in filter(None, files):
        source, copy = ROOT / file, tree / file
        if source.exists() and (not copy.exists() or copy.read_bytes() != source.read_bytes()):
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, copy)


class Copy:
    """A copy of the tree and its build."""

    def __init__(self, directory):
        self.tree, self.build = directory / "tree", directory / "build"
        copy_sources(self.tree)
        run("cmake", "-S", self.tree, "-B", self.build, "-G", "Ninja", "-DBUILD_TESTING=ON")

    def judge(self, judge):
        """How the judge's command ends on the sources as they are now, what it prints, and after how long."""
        run("cmake", "--build", self.build, "--target", *judge.targets)
        begin = time.monotonic()
        done = run(self.build / judge.command[0], *judge.command[1:], cwd=self.build, check=False)
        return done.returncode, done.stdout, time.monotonic() - begin

    def patch(self, patch, *options):
        run("patch", "-p1", "--silent", "--no-backup-if-mismatch", *options, "-i", patch, cwd=self.tree)


def is_noticed(copy, judge, patch):
    copy.patch(patch)
    try:
        code, output, seconds = copy.judge(judge)
    finally:
        copy.patch(patch, "-R")
    noticed = code in judge.noticed and judge.says in output
    print(f"{patch.parent.name}/{patch.stem}: {'noticed' if noticed else 'NOT NOTICED'} after {seconds:.0f} s"
          + ("" if noticed else f" (exit code {code})\n{output[-2000:]}"), flush=True)
    return noticed


def arguments():
    parser = argparse.ArgumentParser(prog="scripts/check planted", description=__doc__)
    parser.add_argument("--only", default="", metavar="TEXT", help="only faults with this in their names")
    parser.add_argument("--list", action="store_true", help="print the names and run nothing")
    parser.add_argument("--directory", type=pathlib.Path, default=ROOT / "build-planted", metavar="DIR",
                        help="build here (default: build-planted)")
    return parser.parse_args()


def main():
    options = arguments()
    patches = [patch for judge in JUDGES for patch in sorted((HERE / judge).glob("*.patch"))
               if options.only in f"{judge}/{patch.stem}"]
    if options.list:
        print("\n".join(f"{patch.parent.name}/{patch.stem}" for patch in patches))
        return 0
    os.nice(19)
    os.environ.update(LC_ALL="C.UTF-8")
    for name in ["DBUS_SESSION_BUS_ADDRESS", "QT_LOGGING_RULES"]:
        os.environ.pop(name, None)
    try:
        copy = Copy(options.directory.resolve())
        # A judge that always complains notices nothing.
        for name in sorted({patch.parent.name for patch in patches}):
            code, output, _ = copy.judge(JUDGES[name])
            if code:
                raise RuntimeError(f"{output[-2000:]}\nthe judge {name} fails without a fault")
        noticed = sum(is_noticed(copy, JUDGES[patch.parent.name], patch) for patch in patches)
    except (RuntimeError, subprocess.TimeoutExpired) as error:
        print(f"scripts/check planted: {error}", file=sys.stderr)
        return 1
    print(f"{noticed} of {len(patches)} planted faults were noticed")
    return 0 if patches and noticed == len(patches) else 1


if __name__ == "__main__":
    sys.exit(main())
