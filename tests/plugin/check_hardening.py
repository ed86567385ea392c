#!/usr/bin/env python3
"""Holds built files to what cmake/Hardening.cmake asks for. Usage: check_hardening.py [--fortified] READER FILE... where READER
is readelf for ELF files, objdump for PE files; --fortified: calls of the C library are checked, in ELF files."""

import re
import subprocess
import sys


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True, errors="replace").stdout


def elf_faults(reader, path, fortified):
    headers = output_of(reader, "-hlW", path)
    dynamic = output_of(reader, "-dW", path)
    symbols = output_of(reader, "--dyn-syms", "-W", path)
    stack = re.search(r"^\s*GNU_STACK\s.*\s([RWE ]{3})\s+0x", headers, re.M)
    loads = re.findall(r"^\s*LOAD\s.*\s([RWE ]{3})\s+0x", headers, re.M)
    is_library = "(SONAME)" in dynamic
    checks = {
        "the stack can be executed": stack is None or "E" in stack.group(1),
        "no part is read-only after loading": "GNU_RELRO" not in headers,
        "addresses are bound lazily": not re.search(r"\(FLAGS\).*BIND_NOW|\(FLAGS_1\).*NOW", dynamic),
        "code needs relocation": "TEXTREL" in dynamic,
        "memory is writable and executable": not loads or any("W" in flags and "E" in flags for flags in loads),
        "the program has a fixed address": not is_library and not re.search(r"\(FLAGS_1\).*PIE", dynamic),
        "no function guards its stack": "__stack_chk_fail" not in symbols,
        "no call of the C library is checked": fortified and not re.search(r"\b__(?!stack)\w+_chk\b", symbols),
    }
    return [text for text, is_fault in checks.items() if is_fault]


def pe_faults(reader, path, _fortified):
    headers = output_of(reader, "-p", path)
    names = output_of(reader, "-t", path) + headers
    wanted = ("HIGH_ENTROPY_VA", "DYNAMIC_BASE", "NX_COMPAT")
    faults = [f"without {name}" for name in wanted if not re.search(rf"^\s+{name}\b", headers, re.M)]
    if not re.search(r"\.reloc\b", output_of(reader, "-h", path)):
        faults.append("cannot be moved: no relocations")
    if "__stack_chk_fail" not in names:
        faults.append("no function guards its stack")
    return faults


def main():
    fortified = sys.argv[1:2] == ["--fortified"]
    reader, *paths = sys.argv[2 if fortified else 1:]
    failed = not paths
    for path in paths:
        with open(path, "rb") as file:
            is_elf = file.read(4) == b"\x7fELF"
        faults = (elf_faults if is_elf else pe_faults)(reader, path, fortified)
        failed |= bool(faults)
        print(f"{path}: {'; '.join(faults) or 'hardened'}")
    return 1 if failed else 0


sys.exit(main())
