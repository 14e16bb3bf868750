# SPDX-License-Identifier: Apache-2.0
"""Checks who includes whom. Usage: include_rules.py SOURCE_DIR. Prints one line for each broken rule; the exit status is 1 then.

The rooms of the plugin include downwards only. Two exceptions, in .cc files alone: what points back to the plugin object, and the
files that hold member functions of it, include its header. The platform knows host/ and nothing else of the plugin; the plugin
knows nothing of the platform. Between the platform's rooms only the headers made for it are used.
"""

import pathlib
import re
import sys

# The plugin object, and how a thunk finds it.
PLUGIN_HEADERS = {"plugin/av_control_plugin.h", "plugin/live_plugin.h"}
HOST_SHELL_SIDE = "platform/pluginhost/shell.h"
MEDIA_EXTRAS = "platform/mediamgmnt/media_plane.h"
SOUND_EXTRAS = "platform/mediamgmnt/media_sound.h"
REPORT_EXTRAS = "platform/mediamgmnt/media_report.h"

RECORDS = {"components", "parental"}

# Room: the rooms that it may include, beside itself.
PLUGIN_ROOMS = {
    "host": set(),
    "support": set(),
    "components": {"host", "support"},
    "parental": {"host", "support", "components"},
    "player": {"host", "support"} | RECORDS,
    "statemachine": {"host", "support", "player"} | RECORDS,
    "events": {"host", "support", "player", "statemachine"} | RECORDS,
    "plugin": {"host", "support", "player", "statemachine"} | RECORDS,
}
# Rooms below the plugin object that know it all the same, in their .cc files.
ROOMS_WITH_BACK_POINTERS = {"components", "parental", "player", "statemachine", "events"}

# Room: what it may include beside itself and host/. An entry with a suffix is that one file.
PLATFORM_ROOMS = {
    "platform/pluginhost": set(),
    "platform/mediamgmnt": set(),
    "platform/shell": {HOST_SHELL_SIDE, MEDIA_EXTRAS, SOUND_EXTRAS},
    "platform/script": {HOST_SHELL_SIDE},
    "platform/runner": {HOST_SHELL_SIDE, MEDIA_EXTRAS, SOUND_EXTRAS, "platform/script", "platform/shell"},
    "platform/browser": {HOST_SHELL_SIDE, MEDIA_EXTRAS, SOUND_EXTRAS, REPORT_EXTRAS, "platform/script", "platform/shell"},
}
# These need the C++ standard library and POSIX only.
PLAIN_ROOMS = set(PLUGIN_ROOMS) | {"platform/pluginhost", "platform/shell", "examples/minimal-host"}
POSIX_FOLDERS = ("sys/", "netinet/", "arpa/")

SOURCE_SUFFIXES = (".h", ".cc", ".cc.in", ".h.in")
SEARCHED = (*PLUGIN_ROOMS, "platform", "tests", "bench", "fuzz", "examples")
INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]', re.MULTILINE)


def room_of(path):
    """The room of a path relative to the source folder: its first folder, two of them under platform/ and examples/."""
    parts = path.split("/")
    depth = 2 if parts[0] in ("platform", "examples") else 1
    return "/".join(parts[:depth])


def is_header(path):
    return path.endswith((".h", ".h.in"))


def broken_plugin_rule(path, room, included):
    target = room_of(included)
    if target == room or target in PLUGIN_ROOMS[room]:
        return None
    if included in PLUGIN_HEADERS and room in ROOMS_WITH_BACK_POINTERS:
        return "only a .cc may include the plugin's headers from below it" if is_header(path) else None
    return f"{room}/ may not include {target}/"


def broken_platform_rule(room, included):
    target = room_of(included)
    allowed = PLATFORM_ROOMS.get(room)
    if allowed is None:
        return f"{room}/ is not a known room; add its rules here"
    if target in (room, "host") or target in allowed or included in allowed:
        return None
    return f"{room}/ may not include {included}"


def broken_rule(path, kind, included):
    """What is wrong with one include line, or None."""
    room = room_of(path)
    if kind == "<":
        foreign = "/" in included and not included.startswith(POSIX_FOLDERS)
        return f"{room}/ needs the C++ standard library and POSIX only" if foreign and room in PLAIN_ROOMS else None
    if room in PLUGIN_ROOMS:
        return broken_plugin_rule(path, room, included)
    if room.startswith("platform/"):
        return broken_platform_rule(room, included)
    if room == "examples/minimal-host" and room_of(included) not in (room, "host"):
        return "the minimal host stands on host/ alone"
    return None


def source_files(root):
    for folder in SEARCHED:
        for path in sorted((root / folder).rglob("*")):
            if path.name.endswith(SOURCE_SUFFIXES):
                yield path


def violations(root):
    """One line for each include that breaks a rule."""
    found = []
    for file in source_files(root):
        path = file.relative_to(root).as_posix()
        for kind, included in INCLUDE.findall(file.read_text(encoding="utf-8")):
            reason = broken_rule(path, kind, included)
            if reason:
                found.append(f"{path}: includes {included}: {reason}")
    return found


def main(arguments):
    if len(arguments) != 1:
        print("usage: include_rules.py SOURCE_DIR", file=sys.stderr)
        return 2
    root = pathlib.Path(arguments[0])
    count = sum(1 for _ in source_files(root))
    if count == 0:
        print(f"no sources under {root}", file=sys.stderr)
        return 2
    found = violations(root)
    for line in found:
        print(line)
    print(f"{count} files looked at, {len(found)} rules broken")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
