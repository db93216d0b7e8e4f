#!/usr/bin/env python3
"""Fails on an include that climbs the house, on the toolkit in the core, and on an event that
another than its owner raises."""
import pathlib
import re
import sys

FLOORS = [
    {"base"},
    {"controls", "kolib", "system", "bench"},
    {"link", "history"},
    {"light", "relay", "eeprom", "pwm", "update"},
    {"shell"},
    {"desktop"},
    {"apps"},
]
# Doors between rooms that do not simply lie above one another.
DOORS = {("bench", "kolib/wire"), ("light", "eeprom"), ("relay", "eeprom")}
# Rooms that stand apart: what they may use is named in full.
ONLY = {"bench": {"base", "kolib/wire"}}
# Where the toolkit may be included. Of the rooms that wrap it no header but one named for it says so.
TOOLKIT_PLACES = (
    "desktop/", "kolib/images/", "kolib/update/", "apps/corvane", "apps/install-drivers",
    "apps/share-files", "apps/support/FileTypes", "apps/support/UpdateSettings",
)
WITHOUT_TOOLKIT = ("apps/corvane-bench", "apps/corvane-install-update", "apps/corvanectl")
TOOLKIT_HEADER = re.compile(r"desktop/|kolib/\w+/Qt\w+\.h")

FLOOR_OF = {room: floor for floor, rooms in enumerate(FLOORS) for room in rooms}
OWN_INCLUDE = re.compile(r'\s*#\s*include\s+"([^"]+)"')
# An event of another object; its own are raised without a name before them.
FOREIGN_RAISE = re.compile(r"(?!this)\b\w+[)\]]*(?:\.|->)\*?\w+\)?\.(?:raise|tell)\(")
TOOLKIT_INCLUDE = re.compile(r"\s*#\s*include\s+<Q\w*")


def allowed(room: str, target: str) -> bool:
    target_room = target.split("/")[0]
    if target_room == room:
        return True
    place = "/".join(target.split("/")[:-1])
    if room in ONLY:
        return any(place == p or place.startswith(p + "/") for p in ONLY[room])
    if any(room == a and (place == b or place.startswith(b + "/")) for a, b in DOORS):
        return True
    return FLOOR_OF[target_room] < FLOOR_OF[room]


def main() -> int:
    src = pathlib.Path(__file__).resolve().parent.parent / "src"
    faults = []
    for path in sorted(src.rglob("*")):
        if path.suffix not in {".h", ".cpp"}:
            continue
        inside = path.relative_to(src).as_posix()
        room = inside.split("/")[0]
        if room not in FLOOR_OF:
            faults.append(f"{inside}: the folder {room} is on no floor")
            continue
        has_toolkit = inside.startswith(TOOLKIT_PLACES) and not inside.startswith(WITHOUT_TOOLKIT)
        if room == "kolib" and inside.endswith(".h"):
            has_toolkit = TOOLKIT_HEADER.match(inside) is not None
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            own = OWN_INCLUDE.match(line)
            if own:
                target = own.group(1)
                if target.split("/")[0] not in FLOOR_OF:
                    faults.append(f"{inside}:{number}: '{target}' is not written from src/")
                elif not allowed(room, target):
                    faults.append(f"{inside}:{number}: {room} must not use {target}")
            if FOREIGN_RAISE.search(line):
                faults.append(f"{inside}:{number}: an event is raised by its owner alone")
            if not has_toolkit and (TOOLKIT_INCLUDE.match(line)
                                    or own and TOOLKIT_HEADER.match(own.group(1))):
                faults.append(f"{inside}:{number}: the toolkit in the core")
    print("\n".join(faults) if faults else "The floors hold.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
