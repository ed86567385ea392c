#!/usr/bin/env python3
"""Installs the packages in clean places and uses them there: the Debian package in a root of its own (where this may
be made: by root, with debootstrap), the Windows archive in an empty folder with a fresh Wine prefix."""

import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile
import zipfile
from pathlib import Path

from hosts import SOURCE, by_package, run, run_tool

TOOLCHAIN = SOURCE / "cmake" / "toolchain-mingw-w64.cmake"
EMULATOR = SOURCE / "scripts" / "run-under-wine"


def output_of(*command, **options):
    return run(*command, capture_output=True, **options).stdout


def only(folder, pattern):
    found = sorted(folder.glob(pattern))
    if len(found) != 1:
        sys.exit(f"{folder} has {len(found)} files {pattern}, not one")
    return found[0]


def require(folder, names):
    missing = [name for name in names if not list(folder.glob(name))]
    if missing:
        sys.exit(f"not in the package: {', '.join(missing)}")


def debian_mirror():
    """Where this machine's packages come from, and the name of its release."""
    release = re.search(r"VERSION_CODENAME=(\w+)", Path("/etc/os-release").read_text())[1]
    places = output_of("apt-get", "indextargets", "--format", "$(REPO_URI)", "Created-By: Packages",
                       "Origin: Debian", f"Codename: {release}").split()
    if not places:
        sys.exit("apt knows no Debian archive")
    return places[0], release


def make_root(root, package):
    """A minimal system with what the package depends on, and nothing more."""
    depends = output_of("dpkg-deb", "--field", package, "Depends")
    names = ",".join(re.sub(r"\(.*?\)| ", "", part) for part in depends.strip().split(","))
    mirror, release = debian_mirror()
    run("debootstrap", "--variant=minbase", f"--include={names}", release, root, mirror, stdout=subprocess.DEVNULL)


def check_debian(package, folder):
    root = folder / "root"
    make_root(root, package)
    shutil.copy(package, root / "tmp")
    shutil.copyfile(SOURCE / "samples" / "music.mp3", root / "tmp" / "song.mp3")
    inside = ["chroot", str(root)]
    run(*inside, "dpkg", "--install", f"/tmp/{package.name}")
    require(root, ["usr/bin/mpatool", "usr/share/man/man1/mpatool.1",
                   "usr/share/bash-completion/completions/mpatool", "usr/share/zsh/site-functions/_mpatool",
                   "usr/share/doc/trnmpafileread/docs/schema/mpatool-info-1.json", "usr/lib/*/libtrnmpafileread.so.0",
                   "usr/include/trnmpafileread/trnmpafileread/plugin.h",
                   "usr/share/doc/trnmpafileread/licences/libcli11-dev.txt"])
    print(output_of(*inside, "mpatool", "info", "/tmp/song.mp3"))
    run(*inside, "mpatool", "decode", "/tmp/song.mp3", "-o", "/tmp/song.wav")
    if (root / "tmp" / "song.wav").stat().st_size != 44 + 265012 * 4:
        sys.exit("the installed tool decoded another length")
    # The compiler stays outside; header files and library are those of the root, and the host runs within.
    library = next(root.glob("usr/lib/*/libtrnmpafileread.so"))
    run("c++", "-std=c++20", f"-I{root / 'usr/include/trnmpafileread'}",
        root / "usr/share/doc/trnmpafileread/examples/direct_link.cpp",
        "-o", root / "tmp" / "host", library)
    said = output_of(*inside, "/tmp/host", "/tmp/song.mp3")
    print(said)
    if "index: 231 frames, state 1" not in said:
        sys.exit("the host in the clean root failed")
    run(*inside, "dpkg", "--purge", "trnmpafileread")
    if list(root.glob("usr/**/*trnmpafileread*")):
        sys.exit("the package left something behind")


def check_windows(archive, folder):
    with zipfile.ZipFile(archive) as packed:
        packed.extractall(folder)
    prefix = only(folder, "trnmpafileread-*-windows-x64")
    require(prefix, ["bin/trnmpafileread.dll", "bin/mpatool.exe", "bin/*mpg123*.dll", "lib/*trnmpafileread*.a",
                     "include/trnmpafileread/trnmpafileread/plugin.h", "share/doc/trnmpafileread/docs/ABI.md",
                     "share/doc/trnmpafileread/examples/plugin_host.cpp",
                     "share/doc/trnmpafileread/examples/python_host.py",
                     "share/doc/trnmpafileread/licences/libmpg123-dev.txt",
                     "share/doc/trnmpafileread/licences/libpng-dev.txt",
                     "share/doc/trnmpafileread/licences/libz-mingw-w64-dev.txt",
                     "share/doc/trnmpafileread/licences/gcc-mingw-w64-base.txt"])
    os.environ["WINEPREFIX"] = str(folder / "wine")
    run(SOURCE / "scripts" / "prepare-wine")
    run_tool(prefix, folder, [str(EMULATOR)])
    by_package(prefix, folder, TOOLCHAIN, [str(EMULATOR)], prefix / "share/doc/trnmpafileread/examples")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("packages", type=Path)
    packages = parser.parse_args().packages.resolve()
    # Not below the checkout: a root with its devices has no place there.
    with tempfile.TemporaryDirectory() as name:
        check_windows(only(packages, "*.zip"), Path(name))
    if os.geteuid() != 0 or shutil.which("debootstrap") is None:
        print("SKIPPED: the Debian package in a clean root (needs root and debootstrap)", file=sys.stderr)
        return
    with tempfile.TemporaryDirectory() as name:
        check_debian(only(packages, "*.deb"), Path(name))
    print("both packages were installed and used")


main()
