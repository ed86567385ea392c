"""Building an index and opening with it."""

import statistics
from pathlib import Path

import programs
import streams

MIB = 1024
ENTRY_BYTES = 8


def building(tools, work, rounds):
    large = streams.large_file(work)
    size = large.stat().st_size
    commands = {
        "index builder": [tools / "index_bench", "build", large],
        "mp3val": ["mp3val", "-si", large],
        "ffprobe": ["ffprobe", "-v", "error", "-count_packets", "-show_entries", "stream=nb_read_packets", large],
        "cat": ["cat", large],
    }
    yield "## Building an index"
    yield ""
    yield f"One pass over an MP3 file of {size:,} bytes in the page cache, {rounds} rounds in turns; whole processes:"
    yield "`index_bench build FILE` (`TRN_MpaFileIndexCreator`, index included), `mp3val -si FILE` (checks only),"
    yield "`ffprobe -count_packets FILE`, `cat FILE >/dev/null` (reads only)."
    yield ""
    yield "| program | best s | median s | MB/s | peak memory MiB |"
    yield "|---|---:|---:|---:|---:|"
    for name, runs in programs.alternate(commands, rounds).items():
        seconds = [run.seconds for run in runs]
        median = statistics.median(seconds)
        peak = programs.peak_kib(commands[name]) / MIB
        yield f"| {name} | {min(seconds):.3f} | {median:.3f} | {size / median / 1e6:.0f} | {peak:.1f} |"
    yield ""


def opening(tools, work, rounds):
    large, small = streams.large_file(work), streams.short_files(work)[0]
    entries = {file: (Path(f"{file}.idx").stat().st_size - 28) // 8 for file in (large,)}
    programs.run([tools / "index_bench", "build", small])
    runs = [programs.run([tools / "index_bench", "open", large], keep_output=True) for _ in range(rounds)]
    base = programs.peak_kib([tools / "index_bench", "open", small])
    peak = programs.peak_kib([tools / "index_bench", "open", large])
    best, median = (statistics.median(float(run.output.split()[i]) for run in runs) for i in (0, 1))
    decoded = programs.peak_kib([tools / "mpatool", "decode", large, "-o", "-"])
    table = entries[large] * ENTRY_BYTES / 1024
    yield "## Opening with an index"
    yield ""
    yield f"`Initialize`, `SetInputFile` and `GetStreamInfo` of the sample reader on that file with its index of"
    yield f"{entries[large]:,} entries (`index_bench open FILE`: 20 opens a run, {rounds} runs): best {best:.1f} ms, median"
    yield f"{median:.1f} ms. Peak memory of the process {peak / MIB:.1f} MiB: {ENTRY_BYTES} bytes an entry,"
    yield f"{table / MIB:.1f} MiB, and {(peak - table) / MIB:.1f} MiB besides; on a short file {base / MIB:.1f} MiB."
    yield f"Decoding it whole with that index (`mpatool decode FILE -o -`): {decoded / MIB:.1f} MiB."
    yield ""


def random_access(tools, work, _rounds):
    hour = streams.hour_file(work)
    programs.run([tools / "index_bench", "build", hour])
    yield "## Random access"
    yield ""
    yield "1,000 requests of 1,000 samples at random places of one hour of variable bit rate with its index, each on an"
    yield "opened file, all three in turns of 100 (`random_access_bench FILE`). \"Decoder calls\" are the"
    yield "same header reads, skips and decodes on a bare decoder; libmpg123 seeks sample-accurately with its own full"
    yield "frame index (`mpg123_scan` before)."
    yield ""
    yield programs.run([tools / "random_access_bench", hour], keep_output=True).output
