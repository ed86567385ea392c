#!/usr/bin/env python3
"""Objects that are compiled for more than every processor has define no code that the linker could merge with other
files' or take for theirs: check_kernel_objects.py NM OBJECT..."""

import subprocess
import sys
from pathlib import Path

# Functions: t is private to the file; T and W (weak, which inline functions and templates are) are not.
SHARED_CODE = "TW"
KERNELS = "_ZN6trnmpa4avx2"


def shared_functions(nm, path):
    listed = subprocess.run([nm, "--defined-only", path], capture_output=True, text=True, check=True)
    for line in listed.stdout.splitlines():
        _, kind, name = line.split()
        if kind in SHARED_CODE:
            yield name


def main():
    nm, objects = sys.argv[1], [path for path in sys.argv[2:] if Path(path).name.split(".")[0].endswith("_avx2")]
    if not objects:
        sys.exit("no object to check")
    faults = 0
    for path in objects:
        functions = list(shared_functions(nm, path))
        if not any(name.startswith(KERNELS) for name in functions):
            sys.exit(f"{path}: no kernel")
        for name in functions:
            if not name.startswith(KERNELS):
                print(f"{path}: {name} can be shared with other files")
                faults += 1
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
