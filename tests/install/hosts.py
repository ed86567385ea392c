"""Builds and runs hosts against an installed module, and runs the installed tool."""

import os
import shutil
import subprocess
import sys
from pathlib import Path

SOURCE = Path(__file__).resolve().parent.parent.parent
EXAMPLES = SOURCE / "examples"


def run(*command, **options):
    print("+", *command, flush=True)
    return subprocess.run(list(map(str, command)), check=True, text=True, **options)


# What each host says of the sample.
SAYS = {
    "c_host": ("samples: 265012", "slices: 300", "index: 231 frames"),
    "direct_link": ("index: 231 frames, state 1", "44100 Hz", "of 20 ms"),
}


def run_host(host, name, emulator, folder, library_folder):
    # A file of its own, beside which it builds an index.
    sample = folder / f"{name}.mp3"
    shutil.copyfile(SOURCE / "samples" / "music.mp3", sample)
    environment = dict(os.environ, LD_LIBRARY_PATH=str(library_folder))
    output = run(*emulator, host, sample, capture_output=True, env=environment).stdout
    print(output)
    for wanted in SAYS[name]:
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


# Project of the examples -> the host that it builds to be run.
PROJECTS = {"project": "direct_link", "c_project": "c_host"}


def by_package(prefix, folder, toolchain, emulator, examples=EXAMPLES):
    more = []
    if toolchain:
        # A toolchain file has search folders of its own.
        package = next(prefix.glob("lib*/**/trnmpafileread-config.cmake")).parent
        more = [f"-DCMAKE_TOOLCHAIN_FILE={toolchain}", f"-Dtrnmpafileread_DIR={package}",
                "-DCMAKE_EXE_LINKER_FLAGS=-static"]
    for project, host in PROJECTS.items():
        build = folder / project
        run("cmake", "-G", "Ninja", "-S", examples / project, "-B", build,
            f"-DCMAKE_PREFIX_PATH={prefix}", "-DCMAKE_BUILD_TYPE=Debug", *more)
        run("cmake", "--build", build)
        if emulator:
            for library in (prefix / "bin").glob("*.dll"):
                shutil.copy(library, build)
        run_host(build / (f"{host}.exe" if emulator else host), host, emulator, folder, prefix / "lib")


def by_pkg_config(prefix, folder, library_folder):
    if shutil.which("pkg-config") is None:
        sys.exit("pkg-config is not installed")
    environment = dict(os.environ, PKG_CONFIG_PATH=str(library_folder / "pkgconfig"))
    flags = run("pkg-config", "--cflags", "--libs", "trnmpafileread", capture_output=True, env=environment).stdout.split()
    host = folder / "host"
    run("c++", "-std=c++20", EXAMPLES / "direct_link.cpp", "-o", host, *flags)
    run_host(host, "direct_link", [], folder, library_folder)
