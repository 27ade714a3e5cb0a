# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

import os
import pathlib
import unittest

from maketree import made_tree
from packages import ALWAYS, LIST, problems

GOOD_LIST = "# All of them.\n\n" + "".join(f"{name}   # why\n" for name in sorted(ALWAYS)) + "qtbase5-dev # Qt\n"


class TreeTest(unittest.TestCase):
    def test_packages(self):
        self.assertEqual(list(problems(pathlib.Path(os.environ["SOURCE"]))), [])


class CheckerTest(unittest.TestCase):
    def problems(self, packages, cmake=""):
        with made_tree({LIST: packages, "src/CMakeLists.txt": cmake}) as root:
            return list(problems(root))

    def test_complete_list_is_accepted(self):
        self.assertEqual(self.problems(GOOD_LIST + "qtbase5-dev-tools # moc\n",
                                       "find_package(Qt5 5.6 REQUIRED COMPONENTS Core)\n"
                                       "# find_package(Nothing)\n"
                                       "pkg_check_modules(v REQUIRED IMPORTED_TARGET voicecall>=1)\n"), [])

    def test_missing_package_is_reported(self):
        self.assertEqual(self.problems(GOOD_LIST, "find_package(Qt5 REQUIRED)"),
                         ["src/CMakeLists.txt: looks for Qt5, but qtbase5-dev-tools is missing in " + LIST])

    def test_unknown_names_are_reported(self):
        found = self.problems(GOOD_LIST, "if(x)\n  find_package(Foo)\nendif()\nfind_program(BAR bar REQUIRED)\n"
                                         "pkg_check_modules(BAZ REQUIRED\n    IMPORTED_TARGET baz>=1.0 baz2)\n")
        self.assertEqual([line.split(";")[0].split()[-1] for line in found], ["Foo", "bar", "baz", "baz2"])

    def test_missing_tool_is_reported(self):
        self.assertEqual(self.problems(GOOD_LIST.replace("g++ ", "gcc ")), [LIST + ": g++ is missing"])

    def test_malformed_and_repeated_lines_are_reported(self):
        self.assertEqual(len(self.problems(GOOD_LIST + "no-reason\n")), 1)
        self.assertEqual(len(self.problems(GOOD_LIST + "two names # why\n")), 1)
        self.assertEqual(len(self.problems(GOOD_LIST + "qtbase5-dev # again\n")), 1)


if __name__ == "__main__":
    unittest.main()
