"""Reads argument lists out of C headers: the system's lapack.h and arpack's C interface.

Both functions give a dictionary from routine name to (result, [(type, pointer, constant)], hidden
lengths), with types in the words of fortran_reference.py.
"""

import re

WORDS = {"char": "character", "lapack_int": "integer", "a_int": "integer", "int": "integer",
         "lapack_logical": "logical", "float": "real", "double": "real", "lapack_float_return": "real",
         "lapack_complex_float": "complex", "lapack_complex_double": "complex", "void": "void"}
LAPACK = re.compile(r"^(\w+)\s+LAPACK_(\w+?)(?:_base)?\(([^;#]*?)(#ifdef LAPACK_FORTRAN_STRLEN_END(.*?)#endif)?\s*\);",
                    re.MULTILINE | re.DOTALL)
ARPACK = re.compile(r"^(void) (\w+)_c\(([^;]*)\);", re.MULTILINE)


def lapack(path):
    with open(path, encoding="utf-8") as file:
        text = file.read()
    return {m[2]: (WORDS[m[1]], [_argument(a) for a in m[3].split(",")], (m[4] or "").count("size_t"))
            for m in LAPACK.finditer(text)}


def arpack(path):
    with open(path, encoding="utf-8") as file:
        text = file.read()
    return {m[2]: (m[1], [_argument(a) for a in m[3].split(",")], None) for m in ARPACK.finditer(text)}


def _argument(text):
    text = " ".join(text.split())
    if "SELECT" in text:
        return "function", False, False
    word = next(w for w in re.findall(r"\w+", text) if w != "const")
    kind = "complex" if "_Complex" in text else WORDS[word]
    return kind, "*" in text, "const" in text
