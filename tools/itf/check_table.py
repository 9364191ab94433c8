#!/usr/bin/env python3
"""Checks the table of the numerical interface against independent witnesses.

    tools/itf/check_table.py [--names FILE] [--lapack-h FILE] [--arpack-h FILE] [--sources DIR]

--names     the frozen list of names: the table must hold exactly these, 1220 of them
--lapack-h  the system's lapack.h: kinds, inputs and outputs, results, hidden lengths
--arpack-h  arpack's C interface: kinds and what goes by value
--sources   an unpacked tree of the reference sources (apt-get source lapack): kinds, arrays, and
            inputs and outputs as the sources document them and as the bodies assign them
Prints each difference and how many routines each witness knows; the exit code is 1 on a difference.
"""

import argparse
import pathlib
import sys

import c_reference
import fortran_reference
import table

ROOT = pathlib.Path(__file__).resolve().parents[2]
COUNT = 1220
KINDS = {"int": "integer", "logical": "logical", "char": "character", "char6": "character",
         "text": "character", "select": "function", "R": "real"}
# What is told apart on purpose: the routine reports the number of a wrong argument by address.
BY_ADDRESS = {("xerbla", "info")}
# Slips of lapack.h, where the sources say otherwise: deprecated routines declared with a result or
# without `const`, and a prototype that spells out its hidden lengths.
LAPACK_H_SLIPS = {p + name for p in "sdcz" for name in ("geqpf", "ggsvd", "ggsvp")} | {"lsame"}


def kind(routine, argument_kind):
    if argument_kind == "T":
        return "complex" if routine.letter in ("c", "z") else "real"
    return KINDS.get(argument_kind, argument_kind)


def forwarded(families):
    return [r for r in table.routines(families) if r.family.section != "own"]


def check_names(routines, path):
    frozen = path.read_text(encoding="utf-8").split()
    if len(frozen) != COUNT or len(set(frozen)) != COUNT:
        yield f"{path}: {len(frozen)} names, {len(set(frozen))} different ones, instead of {COUNT}"
    ours = [r.name for r in routines]
    for name in sorted({n for n in ours if ours.count(n) > 1}):
        yield f"{name}: twice in the table"
    for name in sorted(set(frozen) ^ set(ours)):
        yield f"{name}: only in the {'frozen list' if name in frozen else 'table'}"


def check_lapack(routine, prototype):
    result, arguments, lengths = prototype
    ours = routine.family.arguments
    if kind(routine, routine.family.result) != result:
        yield f"result {routine.family.result}, not {result}"
    if len(ours) != len(arguments):
        yield f"{len(ours)} arguments, not {len(arguments)}"
        return
    if lengths and lengths != sum(a.is_text() for a in ours):
        yield f"{sum(a.is_text() for a in ours)} hidden lengths, not {lengths}"
    for a, (c_kind, _, constant) in zip(ours, arguments):
        if kind(routine, a.kind) != c_kind:
            yield f"{a.name}: {a.kind}, not {c_kind}"
        elif not a.pointer and not constant and not a.is_text() and a.kind != "select":
            yield f"{a.name}: an input in the table, written by the routine"


def check_arpack(routine, prototype):
    _, arguments, _ = prototype
    ours = routine.family.arguments
    if len(ours) != len(arguments):
        yield f"{len(ours)} arguments, not {len(arguments)}"
        return
    for a, (c_kind, pointer, _) in zip(ours, arguments):
        # In C the logical words of Fortran are integers.
        if kind(routine, a.kind).replace("logical", "integer") != c_kind:
            yield f"{a.name}: {a.kind}, not {c_kind}"
        elif (a.pointer or a.is_text()) != pointer:
            yield f"{a.name}: by {'value' if pointer else 'address'} in the table"


def check_source(routine, reference):
    ours = routine.family.arguments
    if kind(routine, routine.family.result) != reference.result:
        yield f"result {routine.family.result}, not {reference.result}"
    if len(ours) != len(reference.arguments):
        yield f"{len(ours)} arguments, not {len(reference.arguments)}"
        return
    for a, theirs in zip(ours, reference.arguments):
        if kind(routine, a.kind) != theirs.type:
            yield f"{a.name}: {a.kind}, not {theirs.type}"
        elif a.is_text() or a.kind == "select" or (routine.name, a.name) in BY_ADDRESS:
            continue
        # An argument that the sources document under another name is known by its assignments.
        written = theirs.array or theirs.assigned or theirs.intent in ("out", "in,out")
        if a.pointer != written:
            yield f"{a.name}: {'address' if a.pointer else 'value'}, documented as {theirs.intent}"


def compare(routines, known, check, witness, problems):
    count = 0
    for routine in routines:
        reference = known(routine.name)
        if reference is None:
            continue
        count += 1
        problems += [f"{witness}: {routine.name}: {text}" for text in check(routine, reference)]
    print(f"{witness}: {count} of {len(routines)} routines compared")
    if count == 0:
        problems.append(f"{witness}: knows none of the routines")


def source_of(root):
    def known(name):
        path = fortran_reference.find(root, name)
        return fortran_reference.routine(path) if path else None
    return known


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--table", type=pathlib.Path, default=ROOT / "src/numerics/routines.txt")
    parser.add_argument("--names", type=pathlib.Path, default=ROOT / "tests/numerics/itf_names.txt")
    for option in ("--lapack-h", "--arpack-h", "--sources"):
        parser.add_argument(option, type=pathlib.Path)
    options = parser.parse_args()
    families = table.read(options.table)
    problems = list(check_names(table.routines(families), options.names))
    routines = forwarded(families)
    if options.lapack_h:
        prototypes = c_reference.lapack(options.lapack_h)
        reliable = {name: p for name, p in prototypes.items() if name not in LAPACK_H_SLIPS}
        compare(routines, reliable.get, check_lapack, "lapack.h", problems)
    if options.arpack_h:
        compare(routines, c_reference.arpack(options.arpack_h).get, check_arpack, "arpack.h", problems)
    if options.sources:
        compare(routines, source_of(options.sources), check_source, "sources", problems)
    print("\n".join(problems) or "the table agrees")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
