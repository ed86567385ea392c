#!/usr/bin/env python3
"""Installs a build to an empty folder and builds and runs a host there, by the CMake package and by pkg-config."""

import argparse
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

SOURCE = Path(__file__).resolve().parent.parent.parent
EXAMPLE = SOURCE / "examples" / "direct_link.cpp"


def run(*command, **options):
    print("+", *command, flush=True)
    return subprocess.run(list(map(str, command)), check=True, text=True, **options)


def run_host(host, emulator, folder, library_folder):
    sample = folder / "music.mp3"
    shutil.copyfile(SOURCE / "samples" / "music.mp3", sample)
    environment = dict(os.environ, LD_LIBRARY_PATH=str(library_folder))
    output = run(*emulator, host, sample, capture_output=True, env=environment).stdout
    print(output)
    for wanted in ("index: 231 frames, state 1", "44100 Hz", "of 20 ms"):
        if wanted not in output:
            sys.exit(f"the host did not say {wanted!r}")


def run_tool(prefix, folder, emulator):
    """The installed tool finds the installed module."""
    sample = folder / "tool.mp3"
    shutil.copyfile(SOURCE / "samples" / "music.mp3", sample)
    tool = prefix / "bin" / ("mpatool.exe" if emulator else "mpatool")
    output = run(*emulator, tool, "info", sample.name, capture_output=True, cwd=folder).stdout
    print(output)
    if "2323 (layer III)" not in output:
        sys.exit("the installed tool did not describe the file")


def by_package(prefix, folder, toolchain, emulator):
    build = folder / "consumer"
    more = []
    if toolchain:
        # A toolchain file has search folders of its own.
        package = next(prefix.glob("lib*/**/trnmpafileread-config.cmake")).parent
        more = [f"-DCMAKE_TOOLCHAIN_FILE={toolchain}", f"-Dtrnmpafileread_DIR={package}",
                "-DCMAKE_EXE_LINKER_FLAGS=-static"]
    run("cmake", "-G", "Ninja", "-S", SOURCE / "tests" / "install" / "consumer", "-B", build,
        f"-DCMAKE_PREFIX_PATH={prefix}", f"-DEXAMPLE={EXAMPLE}", "-DCMAKE_BUILD_TYPE=Debug", *more)
    run("cmake", "--build", build)
    host = build / ("consumer.exe" if emulator else "consumer")
    if emulator:
        for library in (prefix / "bin").glob("*.dll"):
            shutil.copy(library, build)
    run_host(host, emulator, folder, prefix / "lib")


def by_pkg_config(prefix, folder, library_folder):
    if shutil.which("pkg-config") is None:
        sys.exit("pkg-config is not installed")
    environment = dict(os.environ, PKG_CONFIG_PATH=str(library_folder / "pkgconfig"))
    flags = run("pkg-config", "--cflags", "--libs", "trnmpafileread", capture_output=True, env=environment).stdout.split()
    host = folder / "host"
    run("c++", "-std=c++20", EXAMPLE, "-o", host, *flags)
    run_host(host, [], folder, library_folder)


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
