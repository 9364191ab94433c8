#!/usr/bin/env python3
"""Checks the order of the rooms, or draws it.

    tools/check_rooms.py [--root DIR]         every #include against tools/rooms.toml
    tools/check_rooms.py --draw FILE.svg      the picture of docs/architecture.md

A source or private header of a room, and a public header of a room, may include headers of that
room and of rooms above it in the table. Programs, examples and bindings include public headers
only. Each violation is printed as file:line: reason; the exit code is then 1.
"""

import argparse
import html
import pathlib
import re
import sys
import tomllib

INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]')
SOURCES = {".h", ".hpp", ".c", ".cpp", ".tpp", ".inc"}
GENERATED = {"version.h", "zarel.h"}


def load(root):
    with open(root / "tools/rooms.toml", "rb") as file:
        return tomllib.load(file)["room"]


def includes(path):
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        match = INCLUDE.match(line)
        if match:
            yield number, match[1]


class House:
    def __init__(self, root):
        self.root = root
        self.rooms = load(root)
        self.rank = {room["name"]: i for i, room in enumerate(self.rooms)}
        self.room_of_header = {h: room["name"] for room in self.rooms for h in room["headers"]}

    def room_of_include(self, name):
        """The room an include leads into; None for what is not ours, "" for an unknown header."""
        if name.startswith("zarel/"):
            header = name.removeprefix("zarel/")
            return None if header in GENERATED else self.room_of_header.get(header, "")
        first = name.split("/")[0]
        return first if "/" in name and first in self.rank else None

    def files(self, folder):
        return sorted(p for p in (self.root / folder).rglob("*") if p.suffix in SOURCES)

    def check_room(self, path, room):
        for line, name in includes(path):
            target = self.room_of_include(name)
            if target == "":
                yield f"{path}:{line}: {name} stands in no room of tools/rooms.toml"
            elif target is not None and self.rank[target] > self.rank[room]:
                yield f"{path}:{line}: room {room} must not include {name} of room {target}"

    def check_client(self, path):
        for line, name in includes(path):
            if self.room_of_include(name) and not name.startswith("zarel/"):
                yield f"{path}:{line}: a client includes public headers only, not {name}"

    def violations(self):
        for header in self.files("include/zarel"):
            room = self.room_of_header.get(header.name)
            if room is None:
                yield f"{header}: public header without a room in tools/rooms.toml"
            else:
                yield from self.check_room(header, room)
        for folder in sorted((self.root / "src").iterdir()):
            if folder.is_dir() and folder.name not in self.rank:
                yield f"{folder}: room without an entry in tools/rooms.toml"
            elif folder.is_dir():
                for path in self.files(folder.relative_to(self.root)):
                    yield from self.check_room(path, folder.name)
        for client in ("apps", "examples", "bindings"):
            if (self.root / client).is_dir():
                for path in self.files(client):
                    yield from self.check_client(path)


def draw(rooms):
    """Floors from the top down, a box a room; no arrows: a room may use all that is below it."""
    floors = sorted({room["floor"] for room in rooms}, reverse=True)
    width, height, gap, left = 960, 86, 14, 70
    parts = []
    for row, floor in enumerate(floors):
        inside = [room for room in rooms if room["floor"] == floor]
        y = gap + row * (height + gap)
        box = (width - left - gap * len(inside)) / len(inside)
        parts.append(f'<text class="floor" x="12" y="{y + height / 2 + 5}">{floor}</text>')
        for i, room in enumerate(inside):
            x = left + i * (box + gap)
            parts.append(f'<rect x="{x:.0f}" y="{y}" width="{box:.0f}" height="{height}" rx="8"/>')
            parts.append(f'<text class="name" x="{x + 14:.0f}" y="{y + 26}">{room["name"]}</text>')
            for n, line in enumerate(wrap(room["holds"], int(box / 6.7))):
                parts.append(f'<text x="{x + 14:.0f}" y="{y + 46 + 16 * n}">{html.escape(line)}</text>')
    total = gap + len(floors) * (height + gap)
    style = ("svg{background:#fff}rect{fill:#eef3f8;stroke:#5b7c99}text{font:12px sans-serif;fill:#333}"
             ".name{font:bold 15px sans-serif;fill:#123}.floor{font:bold 18px sans-serif;fill:#5b7c99}")
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {total}" role="img" '
            f'aria-label="The rooms by floor"><style>{style}</style>\n' + "\n".join(parts) + "\n</svg>\n")


def wrap(text, columns):
    lines = [""]
    for word in text.split():
        if len(lines[-1]) + len(word) + 1 > columns:
            lines.append("")
        lines[-1] = (lines[-1] + " " + word).strip()
    return lines[:3]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--root", type=pathlib.Path, default=pathlib.Path(__file__).resolve().parent.parent)
    parser.add_argument("--draw", type=pathlib.Path, help="write the picture instead of checking")
    arguments = parser.parse_args()
    house = House(arguments.root)
    if arguments.draw:
        arguments.draw.write_text(draw(house.rooms), encoding="utf-8")
        return 0
    found = list(house.violations())
    print("\n".join(found) or f"{len(house.rooms)} rooms in order")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
