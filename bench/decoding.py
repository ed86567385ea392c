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


# A round within one process is short, and the ratios between the decoders hang on it.
ROUNDS_IN_MEMORY = 3


def in_memory(tools, work, rounds):
    rounds *= ROUNDS_IN_MEMORY
    yield "## Whole files to memory"
    yield ""
    yield f"The same files, each opened and decoded to 16-bit samples in memory within one process, {rounds} rounds in turns"
    yield "(`whole_file_bench FILE ROUNDS`): the sample reader in requests of one second, libmpg123 by `mpg123_read`,"
    yield "libavcodec (Layer II: mp2float) behind libavformat on one thread, with libswresample to 16 bits. Another one begins each"
    yield "round. Processor time; a value is a sample of one channel."
    yield ""
    yield "| file | decoder | ns a value, median | spread | times as fast as the fastest peer | as libmpg123, generic |"
    yield "|---|---|---:|---:|---:|---:|"
    for file in streams.short_files(work):
        yield programs.run([tools / "whole_file_bench", file, rounds], keep_output=True).output.rstrip()
    yield ""


def stages(tools, work, _rounds):
    yield "## Where the time goes"
    yield ""
    yield "Cycles a value of each stage of a Layer III decoder, by set of kernels, in a loop over the first ten seconds of a"
    yield "file; the least of 200 rounds (`stage_bench FILE`). [decoder-speed.md](decoder-speed.md) explains them: how it"
    yield "was before, what made it faster, what did not pay."
    yield ""
    for file in streams.short_files(work):
        if file.suffix == ".mp3":
            yield programs.run([tools / "stage_bench", file], keep_output=True).output


def report(tools, work, rounds):
    yield "## Decoding whole files"
    yield ""
    yield f"{streams.SHORT_SECONDS} s a file, {rounds} rounds in turns; whole processes:"
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
