"""Whole files to PCM, beside other decoders, one thread each, PCM to the null device."""

import statistics

import programs
import streams


def commands(mpatool, file):
    return {
        "mpatool": [mpatool, "decode", file, "-o", "-"],
        "mpg123": ["mpg123", "-q", "-s", file],
        "ffmpeg": ["ffmpeg", "-v", "error", "-threads", "1", "-i", file, "-f", "s16le", "-"],
    }


def report(tools, work, rounds):
    yield "## Decoding whole files"
    yield ""
    yield f"{streams.SHORT_SECONDS} s of {streams.RATE} Hz stereo a file, {rounds} rounds in turns; whole processes:"
    yield "`mpatool decode FILE -o -`, `mpg123 -q -s FILE`, `ffmpeg -threads 1 -i FILE -f s16le -`, to /dev/null."
    yield ""
    yield "| file | decoder | best s | median s | times real time |"
    yield "|---|---|---:|---:|---:|"
    for file in streams.short_files(work):
        for name, runs in programs.alternate(commands(tools / "mpatool", file), rounds).items():
            seconds = [run.seconds for run in runs]
            median = statistics.median(seconds)
            yield f"| {file.name} | {name} | {min(seconds):.3f} | {median:.3f} | {streams.SHORT_SECONDS / median:.0f} |"
    yield ""
