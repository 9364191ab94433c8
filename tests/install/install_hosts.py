#!/usr/bin/env python3
"""Installs the package to a temporary prefix and uses it as its users will.

Every installed header compiles alone, the C families' headers also as C11; the host program that
the README prints builds with find_package(zarel), shared and static, and with pkg-config; a host
in C builds and runs.
"""

import argparse
import os
import pathlib
import re
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
# Every header but these and the classes' own (C_*.h) belongs to a C family.
CXX_HEADERS = {"Kriging.h", "KrigingList.h", "MessageToolEnums.h", "scalars.h", "zarel.h"}


def run(*command, **options):
    done = subprocess.run([str(word) for word in command], text=True, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, **options)
    if done.returncode != 0:
        sys.exit(f"failed: {' '.join(str(word) for word in command)}\n{done.stdout}")
    return done.stdout


def readme_program(readme):
    """The first C++ block of the README, which is a whole program."""
    block = re.search(r"```cpp\n(.*?)```", readme.read_text(encoding="utf-8"), re.S)
    if not block or "int main" not in block[1]:
        sys.exit("the README prints no host program")
    return block[1]


def check_headers(prefix, cxx, cc):
    headers = sorted((prefix / "include/zarel").glob("*.h"))
    if len(headers) < 20:
        sys.exit(f"only {len(headers)} headers were installed")
    warnings = ["-Wall", "-Wextra", "-Wpedantic", "-Wno-long-long", "-Werror", "-fsyntax-only",
                f"-I{prefix / 'include'}"]
    for header in headers:
        run(cxx, "-std=c++17", *warnings, "-x", "c++", "-", input=f"#include <zarel/{header.name}>\n")
    names = {header.name for header in headers if not header.name.startswith("C_")} - CXX_HEADERS
    if not {"itf.h", "bf.h", "zarelmem.h", "erreur.h", "version.h"} <= names:
        sys.exit(f"headers of C families are missing: {sorted(names)}")
    for name in sorted(names):
        run(cc, "-std=c11", *warnings, "-x", "c", "-", input=f"#include <zarel/{name}>\nint unused;\n")


def check_hosts(prefix, work, sources, arguments):
    flags = f"-fsanitize={arguments.sanitize}" if arguments.sanitize else ""
    run("cmake", "-S", sources, "-B", work / "host", f"-DCMAKE_PREFIX_PATH={prefix}",
        f"-DCMAKE_CXX_COMPILER={arguments.cxx}", f"-DCMAKE_C_COMPILER={arguments.cc}",
        f"-DCMAKE_CXX_FLAGS={flags}", f"-DCMAKE_C_FLAGS={flags}", "-DCMAKE_BUILD_TYPE=Release")
    run("cmake", "--build", work / "host")
    for host in ("readme_host", "readme_host_static", "c_host"):
        print(run(work / "host" / host, cwd=work), end="")


def check_pkg_config(prefix, work, sources, arguments):
    environment = {**os.environ, "PKG_CONFIG_PATH": ":".join(map(str, prefix.glob("**/pkgconfig")))}
    flags = run("pkg-config", "--cflags", "--libs", "zarel", env=environment).split()
    extra = [f"-fsanitize={arguments.sanitize}"] if arguments.sanitize else []
    run(arguments.cxx, "-std=c++17", *extra, sources / "readme_host.cpp", "-o", work / "pc_host", *flags,
        f"-Wl,-rpath,{prefix / 'lib'}")
    run(work / "pc_host", cwd=work)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--source", type=pathlib.Path, required=True)
    parser.add_argument("--cxx", required=True)
    parser.add_argument("--cc", required=True)
    parser.add_argument("--sanitize", default="")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        work = pathlib.Path(folder)
        prefix = work / "prefix"
        run("cmake", "--install", arguments.build, "--prefix", prefix)
        sources = work / "sources"
        sources.mkdir()
        for name in ("CMakeLists.txt", "c_host.c"):
            (sources / name).write_text((HERE / "host" / name).read_text())
        (sources / "readme_host.cpp").write_text(readme_program(arguments.source / "README.md"))
        check_headers(prefix, arguments.cxx, arguments.cc)
        check_hosts(prefix, work, sources, arguments)
        check_pkg_config(prefix, work, sources, arguments)


if __name__ == "__main__":
    main()
