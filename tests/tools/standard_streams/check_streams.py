#!/usr/bin/env python3
"""What mpatool reads from standard input, and that its data stand on standard output, its messages on standard error.
The arguments are the tool, with the program that runs it in front where it needs one."""

import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

SOURCE = Path(__file__).resolve().parent.parent.parent.parent
MUSIC = SOURCE / "samples" / "music.mp3"


def require(good, message, *what):
    if not good:
        sys.exit(": ".join([message, *(str(part) for part in what)]))


class Tool:
    def __init__(self, command, folder):
        self.command, self.folder = command, folder
        self.temporary = folder / "temporary"
        self.temporary.mkdir()
        self.environment = dict(os.environ)
        # An emulator has temporary files of its own, and shows its programs others.
        if len(command) == 1:
            self.environment["TMPDIR"] = str(self.temporary)

    def run(self, *arguments, data=b"", status=0):
        print("+ mpatool", *arguments, flush=True)
        done = subprocess.run([*self.command, *arguments], input=data, cwd=self.folder, capture_output=True, check=False,
                              env=self.environment)
        require(done.returncode == status, f"exit status {done.returncode}", done.stderr.decode())
        require(not list(self.temporary.iterdir()), "temporary files are left")
        return done.stdout.decode("utf-8", "replace"), done.stderr.decode("utf-8", "replace")


def check_input(tool):
    music = MUSIC.read_bytes()
    (tool.folder / "song").write_bytes(music)
    for command in ("info", "frames", "check"):
        for more in ([], ["--json"]):
            by_name, _ = tool.run(command, "song", *more)
            by_input, said = tool.run(command, "-", *more, data=music)
            require(said == "", f"{command} -", said)
            named = by_name.replace('"file": "song"', '"file": "-"')
            if not more and command != "frames":
                named = "-" + by_name[len("song"):]
            require(by_input == named, f"{command} - tells another story", by_input)
    both, _ = tool.run("info", "song", "-", "--json", data=music)
    require([file["file"] for file in json.loads(both)["files"]] == ["song", "-"], "a file beside standard input")
    for command in ("info", "frames", "check"):
        for data in (b"", b"noise" * 1000):
            told, said = tool.run(command, "-", data=data, status=1)
            require(told == "" and said.startswith("mpatool: -: ") and said.count("\n") == 1, "no MPEG audio", said)
    damaged, _ = tool.run("check", "-", data=music[:-100], status=3)
    require(damaged.startswith("-: damaged: 1 truncation"), "damage", damaged)
    told, said = tool.run("info", "-", "-", data=music, status=2)
    require(told == "" and "once" in said, "standard input twice", said)


def check_interrupt(tool):
    """A run that is ended while it waits takes its temporary file with it."""
    with subprocess.Popen([*tool.command, "info", "-"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, cwd=tool.folder,
                          stderr=subprocess.PIPE, env=tool.environment) as run:
        run.stdin.write(bytes(100000))
        run.stdin.flush()
        for _ in range(500):
            if any(path.stat().st_size >= 100000 for path in tool.temporary.glob("*/standard-input")):
                break
            time.sleep(0.02)
        else:
            sys.exit("no temporary file appears")
        folder = next(tool.temporary.iterdir())
        require(folder.stat().st_mode & 0o77 == 0, "others can look into the temporary folder")
        run.send_signal(signal.SIGINT)
        told, said = run.communicate()
    require(run.returncode == -signal.SIGINT and told == said == b"", "interrupted", run.returncode, said)
    require(not list(tool.temporary.iterdir()), "temporary files are left")


def check_streams(tool):
    """For each command: where things go when all is well, and when they are not."""
    shutil.copyfile(MUSIC, tool.folder / "song.mp3")
    for well in (["info", "song.mp3"], ["info", "song.mp3", "--json"], ["frames", "song.mp3"], ["frames", "song.mp3", "--csv"],
                 ["check", "song.mp3"], ["index", "song.mp3"], ["index", "--verify", "song.mp3", "--json"],
                 ["decode", "song.mp3", "-o", "-"], ["waveform", "song.mp3", "-o", "-", "--format", "svg"], ["selftest"],
                 ["selftest", "--json"], ["--help"], ["--version"], ["decode", "--help"]):
        told, said = tool.run(*well)
        require(told != "" and said == "", "messages in a good run", said)
        if "--json" in well:
            json.loads(told)
    for quiet in (["decode", "song.mp3", "-o", "song.wav"], ["waveform", "song.mp3", "-o", "song.svg"]):
        require(tool.run(*quiet) == ("", ""), "something was printed")
    # What is left over of the last slice is a message.
    told, said = tool.run("slices", "song.mp3", "--time", "40", "-o", "-", "--format", "raw")
    require(told != "" and said.startswith("mpatool: "), "slices", said)
    needs = {"slices": ["--time", "40", "-o", "-"], "decode": ["-o", "-"], "waveform": ["-o", "-", "--format", "png"]}
    for command in ("info", "frames", "check", "index", "decode", "slices", "waveform"):
        more = needs.get(command, [])
        told, said = tool.run(command, "missing.mp3", *more, status=1)
        require(told == "" and said.startswith("mpatool: missing.mp3: "), "a missing file", told, said)
    for wrong in ([], ["info"], ["play", "song.mp3"], ["decode", "song.mp3", "--bits", "7"]):
        told, said = tool.run(*wrong, status=2)
        require(told == "" and said.startswith("mpatool: "), "a wrong command line", told, said)
    for command in ("info", "frames", "check", "index"):
        told, said = tool.run(command, "missing.mp3", "--json", status=1)
        require(said.startswith("mpatool: ") and "error" in json.loads(told)["files"][0], "a missing file in JSON", said)


def main():
    command = sys.argv[1:]
    with tempfile.TemporaryDirectory() as name:
        tool = Tool([str(Path(part).resolve()) for part in command], Path(name))
        check_input(tool)
        check_streams(tool)
        # There is no such signal for a program under an emulator.
        if len(command) == 1:
            check_interrupt(tool)
    print("data and messages go their ways")


main()
