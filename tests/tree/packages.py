# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""What the build looks for on the system, and the Debian packages that have it."""

import re

from sources import files, text_of

LIST = "scripts/packages"

# By the name that CMake's find_package(), find_program() or pkg_check_modules() is given. What is looked
# for on the device only is in no package.
PACKAGES = {
    "GTest": ["libgtest-dev", "libgmock-dev"],
    "PkgConfig": ["pkg-config"],
    "Python3": ["python3"],
    "Qt5": ["qtbase5-dev", "qtbase5-dev-tools"],
    "appruntime": [],
    "dbus-daemon": ["dbus"],
    "dbus-run-session": ["dbus"],
    "gdbus-codegen": ["libglib2.0-dev-bin"],
    "gio-2.0": ["libglib2.0-dev"],
    "gio-unix-2.0": ["libglib2.0-dev"],
    "pkg-config": ["pkg-config"],
    "voicecall": [],
}

# What the build and the scripts start without looking for it first.
ALWAYS = {"binutils", "cmake", "g++", "ninja-build"}

COMMAND = re.compile(r"^[^#\n]*\b(find_package|find_program|pkg_check_modules)\(([^)]*)\)", re.MULTILINE)
WORDS_OF_CMAKE = {"REQUIRED", "IMPORTED_TARGET", "GLOBAL", "QUIET", "NAMES"}
PACKAGE_LINE = re.compile(r"([a-z0-9][a-z0-9.+-]+) +# \S.*")


def looked_for(command, arguments):
    """Names of what one command of CMake looks for."""
    words = [word for word in arguments.split() if word not in WORDS_OF_CMAKE]
    if command == "find_package":
        return words[:1]
    if command == "find_program":
        return words[1:2]
    return [re.split("[<>=]", word)[0] for word in words[1:]]


def listed(root):
    """Packages of the list."""
    lines = text_of(root, LIST).splitlines()
    return [PACKAGE_LINE.fullmatch(line).group(1) for line in lines if PACKAGE_LINE.fullmatch(line)]


def problems(root):
    """A line for each thing looked for that no listed package has, and for each bad line of the list."""
    for number, line in enumerate(text_of(root, LIST).splitlines(), 1):
        if line and not line.startswith("#") and not PACKAGE_LINE.fullmatch(line):
            yield f"{LIST}:{number}: '{line}' is not a package name, spaces, and '# what it is for'"
    packages = listed(root)
    for name in sorted({name for name in packages if packages.count(name) > 1}):
        yield f"{LIST}: {name} is there more than once"
    for name in sorted(ALWAYS - set(packages)):
        yield f"{LIST}: {name} is missing"
    for path in files(root):
        if path.endswith((".cmake", "CMakeLists.txt")):
            for command, arguments in COMMAND.findall(text_of(root, path)):
                yield from missing(path, looked_for(command, arguments), packages)


def missing(path, names, packages):
    for name in names:
        if name not in PACKAGES:
            yield f"{path}: looks for {name}; PACKAGES of packages.py does not say which package has it"
        for package in PACKAGES.get(name, []):
            if package not in packages:
                yield f"{path}: looks for {name}, but {package} is missing in {LIST}"
