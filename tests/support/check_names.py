#!/usr/bin/env python3
"""Checks that a library exports every name of a list: check_names.py libzarel.so names.txt"""

import subprocess
import sys


def exported(library):
    out = subprocess.run(["nm", "-D", "--defined-only", library], check=True,
                         stdout=subprocess.PIPE, text=True).stdout
    return {line.split()[-1] for line in out.splitlines()}


def wanted(path):
    with open(path, encoding="utf-8") as file:
        return {line.strip() for line in file if line.strip() and not line.startswith("#")}


def main():
    names = wanted(sys.argv[2])
    missing = sorted(names - exported(sys.argv[1]))
    print("\n".join(f"not exported: {name}" for name in missing) or f"all {len(names)} exported")
    return 1 if missing or not names else 0


if __name__ == "__main__":
    sys.exit(main())
