#!/usr/bin/env python3
"""A folder includes itself and what stands before it here; so does a room of a folder."""

import pathlib
import re
import sys

ORDER = {
    "src": "runtime core guard devices locomotives track scripts diagram edit ui",
    "src/devices": ". port railcom ecos liusb tessara",
    "src/ui": "toolkit canvas scripts panels throttle status windows",
    "simulator": "stations trains bus railway soak",
}
TOP = pathlib.Path(sys.argv[1])


def rank(folder, path):
    """The place of `path`, which is relative to TOP, in the order of the folder; None outside."""
    rooms = ORDER[folder].split()
    parts = pathlib.PurePath(path).relative_to(folder).parts
    room = parts[0] if len(parts) > 1 else "."
    if room not in rooms and (folder != "src" or room not in (".", "pch")):
        sys.exit(f"{path}: {room} has no place in {ORDER[folder]!r}")
    return rooms.index(room) if room in rooms else None


wrong = []
seen = 0
for folder in ORDER:
    for file in sorted((TOP / folder).rglob("*")):
        if file.suffix not in (".cc", ".h"):
            continue
        path = file.relative_to(TOP).as_posix()
        own = rank(folder, path)
        for included in re.findall(r'^#include "([^"]+)"', file.read_text(), re.MULTILINE):
            target = included if included.startswith("simulator/") else "src/" + included
            if own is None or not target.startswith(folder + "/"):
                continue
            seen += 1
            other = rank(folder, target)
            if other is None or other > own:
                wrong.append(f"{path} includes {included}, which stands above it")
print("\n".join(wrong))
sys.exit(1 if wrong or seen < 1000 else 0)
