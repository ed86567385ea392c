"""Running and timing programs."""

import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass


@dataclass
class Run:
    seconds: float
    output: str


def run(command, keep_output=False):
    """Runs to the end; stops everything when the program fails."""
    started = time.perf_counter()
    process = subprocess.Popen(list(map(str, command)), stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE if keep_output else subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    output = process.stdout.read().decode() if keep_output else ""
    process.wait()
    seconds = time.perf_counter() - started
    if process.returncode != 0:
        sys.exit(f"bench: failed with status {process.returncode}: {' '.join(map(str, command))}")
    return Run(seconds, output)


def peak_kib(command):
    """The most memory that the program takes. A child of this process would be born with its size."""
    with tempfile.NamedTemporaryFile("r", encoding="utf-8") as result:
        run(["time", "-f", "%M", "-o", result.name, *command])
        return int(result.read())


def alternate(commands, rounds):
    """Times of all commands (name -> command) in turns, so that a slow moment of the machine hits all alike."""
    for command in commands.values():
        run(command)  # warms the caches
    runs = {name: [] for name in commands}
    for _ in range(rounds):
        for name, command in commands.items():
            runs[name].append(run(command))
    return runs
