#!/usr/bin/env python3
"""Installs a build to an empty folder and builds and runs hosts there, by the CMake package and by pkg-config."""

import argparse
import subprocess
import tempfile
from pathlib import Path

from hosts import by_package, by_pkg_config, run, run_tool


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", type=Path)
    parser.add_argument("--toolchain", type=Path)
    parser.add_argument("--emulator", default="", help="program that runs the host")
    options = parser.parse_args()
    emulator = [options.emulator] if options.emulator else []
    with tempfile.TemporaryDirectory(dir=options.build) as name:
        folder = Path(name)
        prefix = folder / "prefix"
        run("cmake", "--install", options.build, "--prefix", prefix, stdout=subprocess.DEVNULL)
        run_tool(prefix, folder, emulator)
        by_package(prefix, folder, options.toolchain, emulator)
        if not emulator:
            by_pkg_config(prefix, folder, next(prefix.glob("lib*/**/libtrnmpafileread.so")).parent)


main()
