"""Running and timing programs."""

import os
import subprocess
import sys
import time
from dataclasses import dataclass


@dataclass
class Run:
    seconds: float
    peak_kib: int
    output: str


def run(command, keep_output=False):
    """Runs to the end; stops everything when the program fails."""
    started = time.perf_counter()
    process = subprocess.Popen(list(map(str, command)), stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE if keep_output else subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    output = process.stdout.read().decode() if keep_output else ""
    _, status, usage = os.wait4(process.pid, 0)
    seconds = time.perf_counter() - started
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"bench: failed with status {process.returncode}: {' '.join(map(str, command))}")
    return Run(seconds, usage.ru_maxrss, output)


def alternate(commands, rounds):
    """Times of all commands (name -> command) in turns, so that a slow moment of the machine hits all alike."""
    for command in commands.values():
        run(command)  # warms the caches
    runs = {name: [] for name in commands}
    for _ in range(rounds):
        for name, command in commands.items():
            runs[name].append(run(command))
    return runs
