# SPDX-License-Identifier: Apache-2.0
"""Checks what a built shared library shows and needs.

exports LIBRARY NAME...   it defines exactly these dynamic symbols
needs LIBRARY             it needs no library beyond those of the compiler and the C library
uninitialised LIBRARY     it runs no initialisers of its own when it is loaded
"""

import os
import re
import subprocess
import sys

ALLOWED_LIBRARIES = re.compile(r"(libstdc\+\+|libc\+\+|libc\+\+abi|libm|libgcc_s|libc|ld-linux[\w-]*)\.so\.\d+")


def output_of(*command):
    # Translated output could not be read.
    return subprocess.run(command, check=True, capture_output=True, text=True, env={**os.environ, "LC_ALL": "C"}).stdout


def check_exports(library, *expected):
    names = sorted(line.split()[-1] for line in output_of("nm", "-D", "--defined-only", library).splitlines())
    print("exported:", *names)
    return names == sorted(expected)


def check_needs(library):
    needed = re.findall(r"\(NEEDED\)\s+Shared library: \[([^]]+)\]", output_of("readelf", "-d", "-W", library))
    print("needed:", *needed)
    return bool(needed) and all(ALLOWED_LIBRARIES.fullmatch(name) for name in needed)


def check_uninitialised(library):
    # One entry is the compiler's own start-up code.
    found = re.search(r"\(INIT_ARRAYSZ\)\s+(\d+) \(bytes\)", output_of("readelf", "-d", "-W", library))
    size = int(found.group(1)) if found else 0
    print("bytes of initialisers:", size)
    return size <= 8


CHECKS = {"exports": check_exports, "needs": check_needs, "uninitialised": check_uninitialised}


def main(arguments):
    if len(arguments) < 2 or arguments[0] not in CHECKS:
        print(__doc__, file=sys.stderr)
        return 2
    return 0 if CHECKS[arguments[0]](*arguments[1:]) else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
