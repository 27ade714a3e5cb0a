# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""What the build looks for on the system, and the Debian packages that have it."""

import re

from sources import files, text_of

BUILD_LIST = "scripts/packages"
TEST_LIST = "scripts/packages-test"
SIP_LIST = "scripts/packages-sip"
BENCH_LIST = "scripts/packages-bench"
EXAMPLES_LIST = "scripts/packages-examples"
COMMON = "scripts/common"
LISTS = [BUILD_LIST, TEST_LIST, SIP_LIST, BENCH_LIST, EXAMPLES_LIST]

# By the name that CMake's find_package(), find_program() or pkg_check_modules() is given. What is looked
# for on the device only is in no package.
PACKAGES = {
    "GTest": ["libgtest-dev", "libgmock-dev"],
    "PkgConfig": ["pkg-config"],
    "Python3": ["python3"],
    "Qt5": ["qtbase5-dev", "qtbase5-dev-tools"],
    "Threads": ["g++"],
    "appruntime": [],
    "baresip": ["baresip-core"],
    "benchmark": ["libbenchmark-dev"],
    "dbus-1": ["libdbus-1-dev"],
    "dbus-daemon": ["dbus"],
    "dbus-run-session": ["dbus"],
    "gio-2.0": ["libglib2.0-dev"],
    "gio-unix-2.0": ["libglib2.0-dev"],
    "gjs": ["gjs"],
    "libsystemd": ["libsystemd-dev"],
    # Where an interpreter is looked for, it is for the modules of the example.
    "perl": ["libnet-dbus-perl"],
    "pkg-config": ["pkg-config"],
    "python3": ["python3", "python3-dasbus", "python3-gi"],
    "rapidcheck": ["librapidcheck-dev"],
    "sdbus-c++": ["libsdbus-c++-dev"],
    "sipp": ["sip-tester"],
    "voicecall": [],
}

# What the build, the scripts and the tests start without looking for it first.
ALWAYS = {BUILD_LIST: {"cmake", "dbus", "g++", "ninja-build", "python3"},
          TEST_LIST: {"binutils", "libc-bin", "qtbase5-private-dev", "systemd"},
          SIP_LIST: set(),
          EXAMPLES_LIST: {"cargo", "golang-dbus-dev", "golang-go", "librust-zbus-dev", "nodejs", "npm", "rustc"},
          BENCH_LIST: {"gnuplot-nox", "libc6-dbg", "valgrind"}}

# Folders that are built for the tests only, and with what is built for the demo too in them.
TESTED = re.compile(r"tests/|kit/examples/(?!CMakeLists\.txt|qt/)")

COMMAND = re.compile(r"^[^#\n]*\b(find_package|find_program|pkg_check_modules)\(([^)]*)\)", re.MULTILINE)
WORDS_OF_CMAKE = {"REQUIRED", "IMPORTED_TARGET", "GLOBAL", "QUIET", "NAMES"}
PACKAGE_LINE = re.compile(r"([a-z0-9][a-z0-9.+-]+)(?: +command:[\w.+-]+)? +# \S.*")


def looked_for(command, arguments):
    """Names of what one command of CMake looks for."""
    words = [word for word in arguments.split() if word not in WORDS_OF_CMAKE]
    if command == "find_package":
        return words[:1]
    if command == "find_program":
        return words[1:2]
    return [re.split("[<>=]", word)[0] for word in words[1:]]


def listed(root, list_name):
    """Packages of a list."""
    lines = text_of(root, list_name).splitlines()
    return [PACKAGE_LINE.fullmatch(line).group(1) for line in lines if PACKAGE_LINE.fullmatch(line)]


def lists_for(path):
    """The lists whose packages are there when the file is used."""
    if path.startswith("bench/"):
        return [BUILD_LIST, TEST_LIST, BENCH_LIST]
    return [BUILD_LIST, TEST_LIST, SIP_LIST] if TESTED.match(path) else [BUILD_LIST]


def problems(root):
    """A line for each thing looked for that no listed package has, and for each bad line of a list."""
    packages = {name: listed(root, name) for name in LISTS}
    for name in LISTS:
        yield from bad_lines(root, name)
        yield from (f"{name}: {package} is missing" for package in sorted(ALWAYS[name] - set(packages[name])))
    everything = sum(packages.values(), [])
    for package in sorted({package for package in everything if everything.count(package) > 1}):
        yield f"{', '.join(LISTS)}: {package} is there more than once"
    for path in files(root):
        if path.endswith((".cmake", "CMakeLists.txt")):
            lists = lists_for(path)
            available = sum((packages[name] for name in lists), [])
            for command, arguments in COMMAND.findall(text_of(root, path)):
                yield from missing(path, looked_for(command, arguments), available, lists)
        if path.startswith("scripts/") and path != COMMON:
            yield from incomplete(path, text_of(root, path))


def incomplete(path, script):
    """A tree with the tests looks for what all of them need, also if only one target of it is built."""
    if "-DBUILD_TESTING=ON" in script and "test_packages" not in script:
        yield f"{path}: configures the tests and does not install the test_packages of {COMMON}"
    if TEST_LIST in script:
        yield f"{path}: installs {TEST_LIST} alone; test_packages of {COMMON} has what goes with it"


def bad_lines(root, list_name):
    for number, line in enumerate(text_of(root, list_name).splitlines(), 1):
        if line and not line.startswith("#") and not PACKAGE_LINE.fullmatch(line):
            yield (f"{list_name}:{number}: '{line}' is not a package name, perhaps 'command:NAME', and "
                   "'# what it is for', with spaces between")


def missing(path, names, available, lists):
    for name in names:
        if name not in PACKAGES:
            yield f"{path}: looks for {name}; PACKAGES of packages.py does not say which package has it"
        for package in PACKAGES.get(name, []):
            if package not in available:
                yield f"{path}: looks for {name}, but {package} is missing in {', '.join(lists)}"
