# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

import os
import pathlib
import subprocess
import unittest

from maketree import made_tree
from packages import ALWAYS, BENCH_LIST, BUILD_LIST, LISTS, SIP_LIST, TEST_LIST, problems

SOURCE = pathlib.Path(os.environ["SOURCE"])

GOOD_LISTS = {name: "# All of them.\n\n" + "".join(f"{package}   # why\n" for package in sorted(ALWAYS[name]))
              for name in LISTS}


class TreeTest(unittest.TestCase):
    def test_packages(self):
        self.assertEqual(list(problems(SOURCE)), [])


class CheckerTest(unittest.TestCase):
    def problems(self, cmake="", folder="src", build="", test="", sip="", bench=""):
        """Problems of a tree with good lists, to which the given lines are added, and one file of CMake."""
        with made_tree({**GOOD_LISTS, BUILD_LIST: GOOD_LISTS[BUILD_LIST] + build, TEST_LIST: GOOD_LISTS[TEST_LIST] + test,
                        SIP_LIST: GOOD_LISTS[SIP_LIST] + sip,
                        BENCH_LIST: GOOD_LISTS[BENCH_LIST] + bench, f"{folder}/CMakeLists.txt": cmake}) as root:
            return list(problems(root))

    def test_complete_list_is_accepted(self):
        self.assertEqual(self.problems("find_package(Qt5 5.6 REQUIRED COMPONENTS Core)\n"
                                       "# find_package(Nothing)\n"
                                       "pkg_check_modules(v REQUIRED IMPORTED_TARGET voicecall>=1)\n",
                                       build="qtbase5-dev # Qt\nqtbase5-dev-tools # moc\n"), [])

    def test_missing_package_is_reported(self):
        self.assertEqual(self.problems("find_package(Qt5 REQUIRED)", build="qtbase5-dev # Qt\n"),
                         ["src/CMakeLists.txt: looks for Qt5, but qtbase5-dev-tools is missing in " + BUILD_LIST])

    def test_tests_and_their_examples_may_use_every_list(self):
        for folder in ("tests/a", "kit/examples/gjs"):
            self.assertEqual(self.problems("find_program(GJS gjs REQUIRED)\nfind_program(SIPP sipp REQUIRED)\n",
                                           folder=folder, test="gjs command:gjs # why\n", sip="sip-tester # why\n"), [])

    def test_what_the_demo_builds_may_not(self):
        for folder in ("src", "kit/client", "kit/examples/qt"):
            self.assertEqual(self.problems("find_program(GJS gjs REQUIRED)", folder=folder, test="gjs # why\n"),
                             [f"{folder}/CMakeLists.txt: looks for gjs, but gjs is missing in {BUILD_LIST}"])

    def test_benchmarks_have_a_list_that_the_tests_have_not(self):
        for folder, problems in (("bench", 0), ("tests/a", 1), ("src", 1)):
            found = self.problems("find_package(benchmark REQUIRED)", folder=folder, bench="libbenchmark-dev # why\n")
            self.assertEqual(len(found), problems, found)

    def test_who_configures_the_tests_installs_what_they_need(self):
        for script, expected in (("install_packages \"${test_packages[@]}\"\nbuild_tree b -DBUILD_TESTING=ON", 0),
                                 ("install_packages scripts/packages\nbuild_tree b -DBUILD_TESTING=OFF", 0),
                                 ("install_packages scripts/packages\nbuild_tree b -DBUILD_TESTING=ON", 1),
                                 ("install_packages scripts/packages scripts/packages-test", 1)):
            with made_tree({**GOOD_LISTS, "scripts/checks/soak": script, "scripts/common": TEST_LIST}) as root:
                self.assertEqual(len(list(problems(root))), expected, script)

    def test_unknown_names_are_reported(self):
        found = self.problems("if(x)\n  find_package(Foo)\nendif()\nfind_program(BAR bar REQUIRED)\n"
                              "pkg_check_modules(BAZ REQUIRED\n    IMPORTED_TARGET baz>=1.0 baz2)\n")
        self.assertEqual([line.split(";")[0].split()[-1] for line in found], ["Foo", "bar", "baz", "baz2"])

    def test_missing_tool_is_reported(self):
        with made_tree({**GOOD_LISTS, BUILD_LIST: GOOD_LISTS[BUILD_LIST].replace("g++ ", "gcc ")}) as root:
            self.assertEqual(list(problems(root)), [BUILD_LIST + ": g++ is missing"])

    def test_malformed_and_repeated_lines_are_reported(self):
        self.assertEqual(len(self.problems(build="no-reason\n")), 1)
        self.assertEqual(len(self.problems(build="two names # why\n")), 1)
        self.assertEqual(len(self.problems(build="gjs command: # why\n")), 1)
        self.assertEqual(len(self.problems(build="g++ # again\n")), 1)
        self.assertEqual(len(self.problems(test="g++ # in the other list\n")), 1)


class InstallerTest(unittest.TestCase):
    """What scripts/common finds missing, on a system that is made up."""

    def missing(self, lines):
        with made_tree({"list": lines, "bin/dpkg-query": "#!/bin/sh\n[ \"$4\" = there ] && printf installed\n",
                        "bin/apt-get": "#!/bin/sh\n[ \"$1\" = update ] || echo \"$@\" >&2\n"}) as root:
            for name in ("dpkg-query", "apt-get"):
                (root / "bin" / name).chmod(0o755)
            script = '. "$1"; id() { echo 0; }; PATH=$2/bin:$PATH; install_packages "$2/list"'
            result = subprocess.run(["bash", "-euo", "pipefail", "-c", script, "bash", SOURCE / "scripts/common", root],
                                    capture_output=True, text=True, check=True)
            return [word for word in result.stdout.split() if word != "Installing"]

    def test_what_is_installed_is_not_installed_again(self):
        self.assertEqual(self.missing("# comment\n\nthere  # why\n"), [])

    def test_what_is_missing_is_installed(self):
        self.assertEqual(self.missing("there # why\nabsent # why\nlost # why\n"), ["absent", "lost"])

    def test_a_command_counts_wherever_it_comes_from(self):
        self.assertEqual(self.missing("absent command:bash # why\n"), [])
        self.assertEqual(self.missing("there command:no-such-command-anywhere # why\n"), ["there"])


if __name__ == "__main__":
    unittest.main()
