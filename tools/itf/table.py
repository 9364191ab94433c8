"""Reads the table of the numerical interface (src/numerics/routines.txt).

`read(path)` gives a list of `Family`: a line of the table, with one `Routine` for each precision.
What the columns mean stands at the head of the table.
"""

import dataclasses
import re

LINE = re.compile(r"^(?P<precisions>\S+)\s+(?P<result>\w+(?: \*)?)\s+(?P<name>\w+)\((?P<arguments>[^)]*)\)"
                  r"\s+--\s+(?P<brief>.+)$")
ARGUMENT = re.compile(r"^(?P<kind>\w+) (?P<star>\*?)(?P<name>\w+)$")
REAL = {"s": "float", "d": "double", "c": "float", "z": "double"}
# Kind of option or text, and the expression of its hidden length.
TEXT_LENGTHS = {"char": "1", "char6": "6", "text": "std::strlen({})"}


@dataclasses.dataclass
class Argument:
    kind: str      # int logical R T char char6 text select, or C in section [own]
    pointer: bool
    name: str

    def is_text(self):
        return self.kind in TEXT_LENGTHS and not self.pointer


@dataclasses.dataclass
class Routine:
    name: str      # of the routine, without ITF_
    letter: str    # s d c z, the precision of T
    family: "Family"

    def c_type(self, kind, pointer=False):
        """The C type of a table's kind in this routine's precision."""
        is_complex = self.letter in ("c", "z")
        if kind == "T" and is_complex:
            return "void *"
        plain = {"T": REAL.get(self.letter), "R": REAL.get(self.letter), "logical": "int",
                 "char": "char *", "char6": "char *", "text": "char *",
                 "select": "ITF_Select_" + (self.letter or "")}.get(kind, kind)
        return plain + " *" if pointer and not plain.endswith("*") else plain

    def argument_type(self, argument):
        return self.c_type(argument.kind, argument.pointer)

    def result_type(self):
        return self.c_type(self.family.result)

    def by_value(self, argument):
        """Whether the interface takes a number where the routine takes its address."""
        return (not argument.pointer and not argument.is_text() and argument.kind != "select"
                and not self.argument_type(argument).endswith("*"))


@dataclasses.dataclass
class Family:
    section: str
    result: str
    name: str
    arguments: list
    brief: str
    routines: list


def read(path):
    families, section = [], None
    with open(path, encoding="utf-8") as file:
        for number, line in enumerate(file, 1):
            line = line.strip()
            if not line or line.startswith("#"):
                continue
            if line.startswith("["):
                section = line.strip("[]")
                continue
            families.append(_family(section, line, f"{path}:{number}"))
    return families


def routines(families):
    return [routine for family in families for routine in family.routines]


def _family(section, line, place):
    match = LINE.match(line)
    if not match:
        raise SystemExit(f"{place}: not a line of the table: {line}")
    arguments = [_argument(text.strip(), place) for text in match["arguments"].split(",")]
    family = Family(section, match["result"], match["name"], arguments, match["brief"], [])
    for precision in match["precisions"].split(","):
        name = match["name"] if precision == "-" else precision + match["name"]
        family.routines.append(Routine(name, _letter(precision), family))
    return family


def _argument(text, place):
    match = ARGUMENT.match(text)
    if not match:
        raise SystemExit(f"{place}: not an argument: {text}")
    return Argument(match["kind"], bool(match["star"]), match["name"])


def _letter(precision):
    """The letter of T: of two letters, the complex one."""
    return next((letter for letter in "czsd" if letter in precision), "")
