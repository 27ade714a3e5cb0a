# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""Which folder may include headers of which."""

import pathlib
import re

from sources import files

# A room may include its own headers, and those of these others.
ROOMS = {"platform": set(), "src": {"platform"}, "programs": set(), "busserver": set(),
         "desktop": {"platform", "programs", "busserver"}, "kit": {"programs", "busserver"},
         "bench": {"platform", "src", "kit"}}

# Inside the plug-in, a folder may include its own headers and those of the lines below its own.
LAYERS = [{"plugin"}, {"service", "calls"}, {"objectmanager", "audio"}, {"common"}]
RANK = {folder: rank for rank, layer in enumerate(LAYERS) for folder in layer}

# The audio slots are members of the class in calls/.
EXCEPTIONS = {("src/audio/callhandleraudio.cpp", "src/calls")}

# Inside the kit, a folder may include its own headers and these: the client library's, as applications see it.
INTERFACE = "kit/client/RingletClient"

# Inside the checker, a folder may include its own headers and those of the folders named.
CHECKER = {"analysis": set(), "capture": {"analysis"}, "rules": {"analysis"}, "commands": {"analysis", "capture"}}

# Headers that are generated from dbus/, and the folder of the plug-in that each belongs to.
GENERATED = {
    "audiocontrolproxy.h": "src/audio",
    "callproxy.h": "src/calls",
    "callserviceadaptor.h": "src/service",
    "callservicemanageradaptor.h": "src/service",
    "dbusobjectmanagerproxy.h": "src/objectmanager",
    "dtmfproxy.h": "src/calls",
}

INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*([<"])([^>"]+)[>"]', re.MULTILINE)


def folder(path):
    """The room of a file, and inside the plug-in and the kit its folder: 'desktop', 'src/calls', 'kit/simulator'."""
    parts = pathlib.PurePosixPath(path).parts
    if parts[0] == "kit":
        return "/".join(parts[:-1])
    return "/".join(parts[:2]) if parts[0] == "src" else parts[0]


def normalised(path):
    parts = []
    for part in path.parts:
        if part == ".." and parts:
            parts.pop()
        elif part != ".":
            parts.append(part)
    return "/".join(parts)


def targets(source, header, headers):
    """The folders that the header may come from: its own file's first, or wherever a path ends like it."""
    beside = normalised(pathlib.PurePosixPath(source).parent / header)
    if beside in headers:
        return {folder(beside)}
    found = {folder(path) for path in headers if ("/" + path).endswith("/" + header)}
    if source.startswith("src/") and header in GENERATED:
        found.add(GENERATED[header])
    return found


def allowed(source, target):
    own = folder(source)
    if own == target or (source, target) in EXCEPTIONS:
        return True
    room, other = own.split("/")[0], target.split("/")[0]
    if room != other:
        return other in ROOMS[room] and own != INTERFACE
    if own.startswith("kit/checker/") and target.startswith("kit/checker/"):
        return target.split("/")[2] in CHECKER.get(own.split("/")[2], set())
    if room == "kit":
        return target == INTERFACE
    return RANK[target.split("/")[1]] > RANK[own.split("/")[1]]


def is_unplaced(source, quote, header):
    """A header in quotes is one of the tree's; in the plug-in it has to be known whose it is."""
    return source.startswith("src/") and quote == '"' and not header.endswith(".moc")


def violations(root):
    """A line for each include that goes in a forbidden direction."""
    sources = [path for path in files(root, {".h", ".cpp", ".c"}) if path.split("/")[0] in ROOMS]
    headers = {path for path in sources if path.endswith(".h")}
    for source in sources:
        if source.startswith("src/") and folder(source).split("/")[1] not in RANK:
            yield f"{source}: stands in no folder that includes.py knows ({', '.join(sorted(RANK))})"
            continue
        for quote, header in INCLUDE.findall((root / source).read_text(encoding="utf-8")):
            found = targets(source, header, headers)
            if not found and is_unplaced(source, quote, header):
                yield f"{source}: includes {header}, which is neither in the tree nor in GENERATED of includes.py"
            elif found and not any(allowed(source, target) for target in found):
                yield f"{source}: includes {header} of {', '.join(sorted(found))}, which {folder(source)} may not"
