#!/usr/bin/env python3
"""Checks what a shared library exports: tools/check_exports.py libzarel.so

Every exported symbol belongs to the library: a C family by its prefix, or a C++ name of ours.
Symbols of the standard library or of a private namespace must stay hidden.
"""

import re
import subprocess
import sys

C_FAMILIES = re.compile(r"^(ITF_|zarel|BF_|CBF_|LM_|LIS_|LTE_|hash|MSG_|Msg_|is_|switch_|set(Err|Msg|Warn)Aff|"
                        r"Erreur|Warning|fct_Trace|cTimeManager|Swap|AddFile|RemFile|IsFile|TPrintStr|"
                        r"getGlobal|ReleaseGlobal|free_variables_zarel|SetXternal|BegFunc|EndFunc|F_Chunks|GlobalCallstack|"
                        # the matrix kernel
                        r"(v|zv|m|zm|px|iv|lv|vec(m|mp|mw))_[a-zA-Z]|_z?[a-z]+__$|mem_(info|stat|bytes|numvar|attach|"
                        r"detach)|BT_fill|s?mrand|skipjunk$|init_kernel$|"
                        r"z(abs|add|sub|mlt|div|conj|neg|inv|smlt|sqrt|exp|log|make)$)")
CLASS_DATA = re.compile(r"^(typeinfo( name)?|vtable|VTT|construction vtable|guard variable) for (C_|Zarel::|Kriging)")
HIDDEN = re.compile(r"^((typeinfo (name )?|vtable )?for )?(std::|testing::|nlohmann::|CLI::)"
                    r"|\b(detail|internal)::|\(anonymous namespace\)")
# The standard library's templates over our types and over plain types are weak and harmless.
WEAK = {"W", "V", "u"}


def exported(library):
    out = subprocess.run(["nm", "-D", "--defined-only", "-C", library], check=True,
                         stdout=subprocess.PIPE, text=True).stdout
    for line in out.splitlines():
        _, kind, name = line.split(maxsplit=2)
        yield kind, name


def foreign(kind, name):
    if HIDDEN.search(name):
        return kind not in WEAK
    return not (C_FAMILIES.match(name) or CLASS_DATA.match(name) or "::" in name or "(" in name)


def main():
    wrong = sorted(name for kind, name in exported(sys.argv[1]) if foreign(kind, name))
    print("\n".join(f"exported but not ours: {name}" for name in wrong) or "all exports are ours")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
