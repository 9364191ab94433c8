#!/usr/bin/env python3
"""Writes the numerical interface from its table.

    tools/itf/generate.py src/numerics/routines.txt --header zarel/itf.h --bodies DIR

The header declares every function; DIR receives itf_<section>.cpp with the bodies of each section
of forwarded routines. Runs in every build; what it writes is never committed.
"""

import argparse
import pathlib
import textwrap

import table

TITLES = {"blas1": "BLAS level 1: vectors", "blas2": "BLAS level 2: matrix and vector",
          "blas3": "BLAS level 3: matrices", "lapack": "LAPACK", "arpack": "ARPACK, by reverse communication",
          "own": "Complex dot products, smallest elements, products of real and complex"}

HEADER_START = """\
/**
 * @file itf.h
 * BLAS, LAPACK and ARPACK with plain C signatures: `ITF_` and the routine's name. C and C++.
 *
 * `ITF_xyz` calls the routine `xyz` with the same arguments in the same order and gives back its
 * result. From the reference's list of addresses a C list is made so:
 *
 * | kind of argument       | here                                                              |
 * |------------------------|-------------------------------------------------------------------|
 * | integer input          | `int`                                                             |
 * | logical input          | `int`, 0 is false                                                 |
 * | real input             | `float`, `double`                                                 |
 * | complex input          | `void *`, the address of real and imaginary part                  |
 * | character option       | `char *`, the first character counts                              |
 * | array, number written  | its address; complex ones are `void *`, logicals `int *`          |
 * | function result        | the result                                                        |
 *
 * Matrices lie by columns, `lda` and the like are the distance between columns. Pivots and the
 * indices of `i...max`, `i...min` count from 1; an empty vector has the index 0. Shapes and the
 * meaning of each argument are those of the reference documentation of the routine.
 *
 * Failures: nothing is checked here. Wrong arguments are reported by the routine, through `info` or
 * its `xerbla`. Inputs are not changed unless the routine says so, though they are not `const`.
 *
 * Threads: the layer has no state. Routines that keep state of their own (ARPACK) are for one
 * thread at a time.
 *
 * Made from src/numerics/routines.txt; do not edit.
 */
#ifndef ZAREL_ITF_H
#define ZAREL_ITF_H

#include <zarel/export.h>

ZAREL_BEGIN_C

/** A complex number of single precision, as a result. */
typedef struct ITF_Complex {
  float re; /**< real part */
  float im; /**< imaginary part */
} ITF_Complex;

/** @name Functions that pick eigenvalues
 * Not 0 for the ones that come first: of (real part, imaginary part), or of one complex number. */
/**@{*/
typedef int (*ITF_Select_s)(float *, float *);
typedef int (*ITF_Select_d)(double *, double *);
typedef int (*ITF_Select_c)(void *);
typedef int (*ITF_Select_z)(void *);
/**@}*/
"""

HEADER_END = """
ZAREL_END_C

#endif
"""

BODIES_START = """\
// Made from src/numerics/routines.txt; do not edit.
#include <cstddef>
#include <cstring>

#include <zarel/itf.h>

#include "numerics/keep_blas_core.h"

"""


def spell(c_type, name):
    return c_type + name if c_type.endswith("*") else f"{c_type} {name}"


def wrapped(text, end):
    return textwrap.fill(text + end, 100, subsequent_indent="    ", break_long_words=False)


def prototype(routine):
    arguments = ", ".join(spell(routine.argument_type(a), a.name) for a in routine.family.arguments)
    return spell(routine.result_type(), f"ITF_{routine.name}({arguments})")


def declaration(routine):
    brief = routine.family.brief[0].upper() + routine.family.brief[1:]
    if ":=" in brief:
        brief = routine.family.brief
    comment = textwrap.fill(f"/** {brief}. */", 100, subsequent_indent=" * ")
    return f"{comment}\n{wrapped('ZAREL_API ' + prototype(routine), ';')}"


def header(families):
    parts = [HEADER_START]
    for section, title in TITLES.items():
        parts.append(f"\n/** @name {title} */\n/**@{{*/")
        parts += [declaration(routine)
                  for routine in table.routines(f for f in families if f.section == section)]
        parts.append("/**@}*/")
    parts.append(HEADER_END)
    return "\n".join(parts)


def foreign(routine):
    """The routine's own declaration: everything by address, then the hidden lengths."""
    types = []
    for a in routine.family.arguments:
        c_type = routine.argument_type(a)
        types.append(c_type + " *" if routine.by_value(a) else c_type)
    types += ["std::size_t" for a in routine.family.arguments if a.is_text()]
    return wrapped(spell(routine.result_type(), f"{routine.name}_({', '.join(types)})"), ";")


def body(routine):
    passed = ["&" + a.name if routine.by_value(a) else a.name for a in routine.family.arguments]
    passed += [table.TEXT_LENGTHS[a.kind].format(a.name) for a in routine.family.arguments if a.is_text()]
    call = wrapped(f"  return {routine.name}_({', '.join(passed)})", ";")
    return f"{wrapped(prototype(routine), ' {')}\n{call}\n}}\n"


def bodies(routines):
    return "\n".join([BODIES_START + 'extern "C" {', *map(foreign, routines), "", *map(body, routines),
                      '} // extern "C"', ""])


def write(path, text):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text, encoding="utf-8")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("table", type=pathlib.Path)
    parser.add_argument("--header", type=pathlib.Path, required=True)
    parser.add_argument("--bodies", type=pathlib.Path, required=True)
    options = parser.parse_args()
    families = table.read(options.table)
    write(options.header, header(families))
    for section in TITLES.keys() - {"own"}:
        chosen = [f for f in families if f.section == section]
        write(options.bodies / f"itf_{section}.cpp", bodies(table.routines(chosen)))


if __name__ == "__main__":
    main()
