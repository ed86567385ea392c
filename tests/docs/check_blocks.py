#!/usr/bin/env python3
"""Compiles and runs what stands in code blocks of README and docs, so that no example rots.

Blocks by language: cpp, c and python are whole programs, run with the module's path and a file's path; cmake is a host's project, built
against an installed package; sh is run line by line, programs of the build standing in for installed ones; ini is a
settings file that mpatool runs with; text that begins with a file of the repository is what mpatool tells of it; other
text, mermaid and json show, and are not run. Any other language fails.
"""

import argparse
import os
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

SOURCE = Path(__file__).resolve().parent.parent.parent
BLOCK = re.compile(r"^```(\w*)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
SHOWN = {"text", "mermaid", "json"}


class Bench:
    """A folder with a copy of a sample as song.mp3 and an installation of the build."""

    def __init__(self, build, folder):
        self.build, self.folder = build, folder
        self.prefix = folder / "trn"
        self.run(["cmake", "--install", build, "--prefix", self.prefix])
        self.library = next(self.prefix.glob("lib*/**/libtrnmpafileread.so"))
        self.environment = dict(
            os.environ,
            PATH=f"{self.prefix / 'bin'}{os.pathsep}{os.environ['PATH']}",
            LD_LIBRARY_PATH=str(self.library.parent),
            PKG_CONFIG_PATH=str(self.library.parent / "pkgconfig"),
            CMAKE_PREFIX_PATH=str(self.prefix))

    def run(self, command, **options):
        print("+", *command, flush=True)
        return subprocess.run([str(part) for part in command], check=True, text=True, errors="replace",
                              capture_output=True, **options)

    def place(self, name):
        """A folder of its own for a block, with files to work on."""
        folder = self.folder / name
        (folder / "music").mkdir(parents=True)
        for sample in ("song.mp3", "music/other.mp3"):
            # Two minutes: pages name times behind the sample's six seconds.
            (folder / sample).write_bytes((SOURCE / "samples" / "music.mp3").read_bytes() * 20)
        return folder

    def program(self, folder, text):
        self.compiled(["c++", "-std=c++20", "-Wall", "-Wextra", "-Werror"], folder, "player.cpp", text)

    def c_program(self, folder, text):
        self.compiled(["cc", "-std=c99", "-Wall", "-Wextra", "-pedantic", "-Werror"], folder, "player.c", text)

    def compiled(self, compiler, folder, name, text):
        (folder / name).write_text(text)
        flags = self.run(["pkg-config", "--cflags", "--libs", "trnmpafileread"],
                         env=self.environment).stdout.split()
        self.run([*compiler, folder / name, "-o", folder / "player", *flags])
        self.host([folder / "player"], folder)

    def script(self, folder, text):
        (folder / "player.py").write_text(text)
        self.host([sys.executable, folder / "player.py"], folder)

    def host(self, command, folder):
        said = self.run([*command, self.library, folder / "song.mp3"], env=self.environment).stdout
        print(said)
        if not said:
            sys.exit("the program said nothing")

    def project(self, folder, text):
        (folder / "CMakeLists.txt").write_text(text)
        programs = re.findall(r"add_executable\((\w+) (\w+\.cpp)\)", text)
        if not programs:
            sys.exit("the project builds no program")
        for _, source in programs:
            shutil.copyfile(SOURCE / "examples" / "direct_link.cpp", folder / source)
        self.run(["cmake", "-G", "Ninja", "-S", folder, "-B", folder / "build"], env=self.environment)
        self.run(["cmake", "--build", folder / "build"], env=self.environment)
        for program, _ in programs:
            self.run([folder / "build" / program, folder / "song.mp3"], env=self.environment)

    def settings(self, folder, text):
        shutil.copytree(self.prefix, folder / "trn", symlinks=True)
        (folder / "trn" / "bin" / "trnfsdk.ini").write_text(text)
        self.run([folder / "trn" / "bin" / "mpatool", "decode", folder / "song.mp3", "-o", folder / "song.wav"])

    def report(self, text):
        name = text.splitlines()[0]
        said = self.run([self.prefix / "bin" / "mpatool", "info", name], cwd=SOURCE).stdout
        if not text.startswith(said):
            sys.exit(f"mpatool tells another story of {name}:\n{said}")

    def commands(self, folder, text):
        for line in text.replace("\\\n", " ").splitlines():
            command = line.split("#")[0].strip()
            if not command:
                continue
            if command.startswith("make "):
                # The targets build whole trees; that they exist is what is checked here.
                self.run(["make", "-n", *command.split()[1:]], cwd=SOURCE)
            elif command.startswith("scripts/"):
                # What they do is for a developer's patience; the script is there.
                self.run(["test", "-x", SOURCE / command.split()[0]])
            elif command.startswith("ctest "):
                listed = self.run(["ctest", "--test-dir", self.build, "-N", *shlex.split(command)[3:]]).stdout
                if not re.search(r"Total Tests: [1-9]", listed):
                    sys.exit(f"no such test: {command}")
            elif command.startswith("cmake --install "):
                self.run(["cmake", "--install", self.build, "--prefix", folder / "trn"])
            elif command.startswith("mpatool "):
                self.run(["bash", "-c", "rm -f song.wav; " + command], cwd=folder, env=self.environment)
            else:
                self.run(["bash", "-c", command], cwd=folder, env=self.environment)


def check(bench, page, number, language, text):
    print(f"== {page.relative_to(SOURCE)}, block {number}: {language}", flush=True)
    runners = {"cpp": bench.program, "c": bench.c_program, "python": bench.script, "cmake": bench.project,
               "ini": bench.settings, "sh": bench.commands}
    if language == "text" and (SOURCE / text.splitlines()[0]).is_file():
        bench.report(text)
        return 1
    if language in SHOWN:
        return 0
    if language not in runners:
        sys.exit(f"no way to check a block of language '{language}'")
    runners[language](bench.place(f"{page.stem}-{number}"), text)
    return 1


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", type=Path)
    parser.add_argument("page", type=Path, nargs="*",
                        default=[SOURCE / "README.md", *sorted((SOURCE / "docs").glob("*.md"))])
    options = parser.parse_args()
    checked = 0
    with tempfile.TemporaryDirectory(dir=options.build) as name:
        bench = Bench(options.build.resolve(), Path(name).resolve())
        for page in options.page:
            for number, block in enumerate(BLOCK.finditer(page.read_text()), 1):
                try:
                    checked += check(bench, page.resolve(), number, block[1], block[2])
                except subprocess.CalledProcessError as error:
                    sys.exit(f"{error}\n{error.stdout}{error.stderr}")
    if checked < len(options.page) / 3:
        sys.exit(f"only {checked} blocks in {len(options.page)} pages: are they still found?")
    print(f"{checked} blocks compiled or run")


main()
