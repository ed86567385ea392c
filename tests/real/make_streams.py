#!/usr/bin/env python3
"""Makes real MPEG audio files with Debian's encoders, and what independent programs say of them.

For each stream NAME: the file NAME.mp3 or NAME.mp2, and NAME.pcm, its decode by mpg123 (16 bits, little-endian,
interleaved, nothing trimmed), accepted only when ffmpeg's decode agrees; and NAME.idx, an index of it. manifest.tsv
describes all of them.
A folder that this script filled before, with the same encoders, is left as it is.
"""

import argparse
import array
import fcntl
import hashlib
import json
import os
import shutil
import struct
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from operator import sub
from pathlib import Path

HERE = Path(__file__).resolve().parent
SYNTHESISER = HERE.parent.parent / "scripts" / "synthesise-music"
PROGRAMS = ("lame", "twolame", "mpg123", "ffmpeg", "ffprobe")
RATES = (44100, 48000, 32000, 22050, 24000, 16000, 11025, 12000, 8000)
SECONDS = {44100: 10.0}
OTHER_SECONDS = 7.5


@dataclass
class Stream:
    name: str
    layer: int
    rate: int
    kind: str  # cbr, abr, vbr, free
    kbps: int  # of a constant bit rate, else 0
    encoder: str
    arguments: list
    soft: bool = False  # made from the tune without transients: no short blocks

    @property
    def file(self):
        return f"{self.name}.mp{self.layer}"

    @property
    def channels(self):
        return 1 if {"m", "mono"} & set(self.arguments) else 2

    @property
    def version(self):
        return "1" if self.rate >= 32000 else "2" if self.rate >= 16000 else "2.5"

    @property
    def ffmpeg_reads_it(self):
        """ffmpeg 5.1 knows no free format and cuts the bands of 24000 Hz elsewhere than ISO/IEC 13818-3 does."""
        return self.kind != "free" and not (self.layer == 3 and self.rate == 24000)

    def samples_per_frame(self):
        return 1152 if self.layer == 2 or self.version == "1" else 576


def lame(name, rate, kind, kbps, arguments, tagged=True, soft=False):
    """A Layer III stream; lame must not choose the sample rate."""
    full = ["--quiet", "--resample", str(rate / 1000), "--noreplaygain", *arguments.split()]
    full += [] if tagged else ["-t"]
    return Stream(name, 3, rate, kind, kbps, "lame", full, soft)


def twolame(name, rate, kbps, arguments):
    full = ["--quiet", "-b", str(kbps), *arguments.split()]
    return Stream(name, 2, rate, "cbr", kbps, "twolame", full)


def shine(name, rate, kbps):
    """A Layer III stream of an encoder that knows no short blocks, so that sudden sounds are met in long ones."""
    full = ["-c:a", "libshine", "-b:a", f"{kbps}k", "-write_xing", "0", "-id3v2_version", "0"]
    return Stream(name, 3, rate, "cbr", kbps, "ffmpeg", full)


def constant_bit_rates():
    for kbps in (32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320):
        yield lame(f"cbr-44-{kbps}", 44100, "cbr", kbps, f"-m j -b {kbps}", tagged=kbps % 64 == 0)
    for rate, kbps in ((48000, 64), (48000, 192), (48000, 320), (32000, 48), (32000, 160)):
        yield lame(f"cbr-{rate // 1000}-{kbps}", rate, "cbr", kbps, f"-m j -b {kbps}", tagged=False)
    for rate, kbps in ((44100, 64), (48000, 96), (32000, 56), (22050, 32), (16000, 24), (11025, 16), (8000, 8)):
        yield lame(f"mono-{rate // 1000}-{kbps}", rate, "cbr", kbps, f"-m m -b {kbps}", tagged=rate > 40000)
    for rate, kbps in ((22050, 64), (24000, 80), (16000, 160), (11025, 32), (12000, 40), (8000, 64)):
        yield lame(f"low-{rate // 1000}-{kbps}", rate, "cbr", kbps, f"-m j -b {kbps}", tagged=False)
    yield lame("low-24-64-tag", 24000, "cbr", 64, "-m j -b 64")
    yield lame("mono-22-64-tag", 22050, "cbr", 64, "-m m -b 64")


def modes():
    yield lame("stereo-44-192", 44100, "cbr", 192, "-m s -b 192", tagged=False)
    yield lame("dual-44-192", 44100, "cbr", 192, "-m d -b 192", tagged=False)
    yield lame("ms-44-128", 44100, "cbr", 128, "-m f -b 128", tagged=False)
    yield lame("crc-44-128", 44100, "cbr", 128, "-m j -p -b 128", tagged=False)
    yield lame("no-reservoir-44-128", 44100, "cbr", 128, "-m j --nores -b 128", tagged=False)
    yield lame("free-44-200", 44100, "free", 0, "-m j --freeformat -b 200", tagged=False)


def variable_bit_rates():
    for quality in (0, 2, 9):
        yield lame(f"vbr-44-v{quality}", 44100, "vbr", 0, f"-m j -V{quality}")
        yield lame(f"vbr-44-v{quality}-untagged", 44100, "vbr", 0, f"-m j -V{quality}", tagged=False)
    yield lame("vbr-48-v2-untagged", 48000, "vbr", 0, "-m j -V2", tagged=False)
    yield lame("vbr-32-v4", 32000, "vbr", 0, "-m j -V4")
    yield lame("vbr-22-v2", 22050, "vbr", 0, "-m j -V2")
    yield lame("vbr-22-mono-v4", 22050, "vbr", 0, "-m m -V4")
    yield lame("vbr-44-mono-v4", 44100, "vbr", 0, "-m m -V4")
    yield lame("vbr-11-v5-untagged", 11025, "vbr", 0, "-m j -V5", tagged=False)
    for kbps in (96, 192):
        yield lame(f"abr-44-{kbps}", 44100, "abr", 0, f"-m j --abr {kbps}")
        yield lame(f"abr-44-{kbps}-untagged", 44100, "abr", 0, f"-m j --abr {kbps}", tagged=False)


def long_blocks_only():
    """What a decoder's PCM is compared with: this decoder and the standard agree on every one of these."""
    for rate, kbps, mode in ((44100, 128, "j"), (44100, 320, "s"), (44100, 64, "m"), (48000, 160, "j"),
                             (32000, 96, "j"), (22050, 64, "j"), (22050, 40, "m"), (22050, 80, "m"), (24000, 96, "s"), (16000, 48, "j"),
                             (11025, 32, "j"), (12000, 24, "m"), (8000, 32, "s")):
        yield lame(f"long-{rate // 1000}-{kbps}-{mode}", rate, "cbr", kbps, f"-m {mode} -b {kbps}",
                   tagged=kbps in (128, 96, 80), soft=True)
    yield lame("long-44-v0-untagged", 44100, "vbr", 0, "-m j -V0", tagged=False, soft=True)
    yield lame("long-44-v5", 44100, "vbr", 0, "-m j -V5", soft=True)
    yield lame("long-24-v4-untagged", 24000, "vbr", 0, "-m j -V4", tagged=False, soft=True)
    yield lame("long-44-abr-128", 44100, "abr", 0, "-m j --abr 128", soft=True)
    for rate, kbps in ((44100, 160), (48000, 256), (32000, 128)):
        yield shine(f"long-shine-{rate // 1000}-{kbps}", rate, kbps)


def layer_two():
    for kbps in (112, 128, 192, 384):
        yield twolame(f"l2-44-{kbps}", 44100, kbps, "-m stereo")
    yield twolame("l2-48-224-joint", 48000, 224, "-m joint")
    yield twolame("l2-48-64-mono", 48000, 64, "-m mono")
    yield twolame("l2-32-96-joint", 32000, 96, "-m joint")
    yield twolame("l2-32-48-mono", 32000, 48, "-m mono")
    yield twolame("l2-44-160-dual", 44100, 160, "-m dual")
    yield twolame("l2-44-160-crc", 44100, 160, "-m joint -p")
    yield twolame("l2-22-64", 22050, 64, "-m stereo")
    yield twolame("l2-24-80-joint", 24000, 80, "-m joint")
    yield twolame("l2-16-32-mono", 16000, 32, "-m mono")


def all_streams():
    return [*constant_bit_rates(), *modes(), *variable_bit_rates(), *long_blocks_only(), *layer_two()]


def run(*command):
    result = subprocess.run([str(part) for part in command], stdin=subprocess.DEVNULL, capture_output=True)
    if result.returncode != 0:
        reason = result.stderr.decode(errors="replace").strip()[:500]
        raise RuntimeError(f"{' '.join(map(str, command))}: {reason}")
    return result.stdout


def wav_name(rate, soft):
    return f"{rate}-soft.wav" if soft else f"{rate}.wav"


def synthesise(folder, rate, soft):
    run(SYNTHESISER, "--rate", rate, "--seconds", SECONDS.get(rate, OTHER_SECONDS), "--seed", 1,
        *(["--soft"] if soft else []), folder / wav_name(rate, soft))


def encode(folder, stream):
    source, target = folder / wav_name(stream.rate, stream.soft), folder / stream.file
    if stream.encoder == "ffmpeg":
        run("ffmpeg", "-v", "error", "-i", source, "-bitexact", *stream.arguments, target)
    else:
        run(stream.encoder, *stream.arguments, source, target)


def frame_sizes(path, stream):
    """The frames' sizes as ffprobe sees them, without an encoder's tag frame."""
    report = json.loads(run("ffprobe", "-v", "error", "-of", "json", "-select_streams", "a:0",
                            "-show_entries", "stream=sample_rate:packet=size", path))
    rate = int(report["streams"][0]["sample_rate"])
    if rate != stream.rate:
        raise RuntimeError(f"{stream.file}: {rate} Hz instead of {stream.rate}")
    return [int(packet["size"]) for packet in report["packets"]]


def decode(path, stream):
    """mpg123's PCM, once ffmpeg's has been found equal but for rounding."""
    pcm = run("mpg123", "-q", "--no-gapless", "-e", "s16", "-s", path)
    if stream.ffmpeg_reads_it:
        other = run("ffmpeg", "-v", "error", "-flags2", "+skip_manual", "-i", path, "-f", "s16le", "-")
        apart = max(map(abs, map(sub, array.array("h", pcm), array.array("h", other))), default=0)
        if len(pcm) != len(other) or apart > 1:
            raise RuntimeError(f"{path.name}: mpg123 and ffmpeg differ: {len(pcm)} and {len(other)} bytes, "
                               f"{apart} units apart")
    return pcm


def count_short_blocks(path, stream, sizes):
    """Granules with short blocks, read from the side information of ISO/IEC 11172-3, 2.4.1.7, and 13818-3."""
    data = path.read_bytes()
    position = len(data) - sum(sizes)  # behind an encoder's tag frame
    lsf = stream.version != "1"
    mono = stream.channels == 1
    first_granule = (9 if mono else 10) if lsf else (18 if mono else 20)
    count = 0
    for size in sizes:
        start = position + (4 if data[position + 1] & 1 else 6)
        bits = int.from_bytes(data[start : start + 32], "big")
        at = first_granule
        for _ in range(stream.channels * (1 if lsf else 2)):
            scale_factor_bits = 9 if lsf else 4
            at += 12 + 9 + 8 + scale_factor_bits
            switched, block_type = bits >> (255 - at) & 1, bits >> (253 - at) & 3
            count += switched and block_type == 2
            at += 1 + 22 + (2 if lsf else 3)
        position += size
    return count


def tag_in_front(path, stream, sizes):
    """The name of the encoder's frame before the sound: Info or Xing; lame leaves it out where it does not fit."""
    data = path.read_bytes()[:64]
    if path.stat().st_size == sum(sizes):
        return "none"
    mono = stream.channels == 1
    side_information = (17 if mono else 32) if stream.version == "1" else (9 if mono else 17)
    return data[4 + side_information : 8 + side_information].decode("ascii")


def write_index(folder, stream, sizes):
    """An index: a header that describes the first frame, then offset and length of each frame behind that."""
    path = folder / stream.file
    file_size = path.stat().st_size
    tag_frame = file_size - sum(sizes)
    lengths = [tag_frame, *sizes] if tag_frame else sizes
    kbps = round(lengths[0] * stream.rate * 8 / stream.samples_per_frame() / 1000)
    header = struct.pack("<IIBBHIIHHI", len(lengths) - 1, file_size, stream.layer, 1 if stream.version == "1" else 2,
                         stream.channels, kbps * 1000, stream.rate, 16, lengths[0], stream.samples_per_frame())
    entries, offset = [], 0
    for length, following in zip(lengths, lengths[1:]):
        offset += length
        entries.append(struct.pack("<II", offset, following))
    (folder / f"{stream.name}.idx").write_bytes(header + b"".join(entries))


def make(folder, stream):
    """Makes one stream and its reference; gives its line of the manifest."""
    encode(folder, stream)
    path = folder / stream.file
    pcm = decode(path, stream)
    (folder / f"{stream.name}.pcm").write_bytes(pcm)
    frames, rest = divmod(len(pcm), 2 * stream.channels * stream.samples_per_frame())
    sizes = frame_sizes(path, stream) if stream.kind != "free" else [0] * frames
    if rest or frames != len(sizes):
        raise RuntimeError(f"{stream.file}: mpg123 decodes {frames} frames, ffprobe sees {len(sizes)}")
    if stream.kind != "free":
        write_index(folder, stream, sizes)
    short_blocks, tag = 0, "none"
    if stream.layer == 3 and stream.kind != "free":
        short_blocks, tag = count_short_blocks(path, stream, sizes), tag_in_front(path, stream, sizes)
    if short_blocks and (stream.soft or stream.encoder == "ffmpeg"):
        raise RuntimeError(f"{stream.file}: {short_blocks} short blocks where none should be")
    return (stream.file, stream.layer, stream.version, stream.rate, stream.channels, stream.kind, stream.kbps,
            tag, short_blocks, frames, min(sizes), max(sizes), sum(sizes))


COLUMNS = ("file", "layer", "version", "rate", "channels", "kind", "kbps", "tag", "short_blocks", "frames",
           "smallest_frame", "largest_frame", "frame_bytes")


def fill(folder):
    streams = all_streams()
    tunes = [(rate, soft) for rate in RATES for soft in (False, True)]
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        list(pool.map(lambda tune: synthesise(folder, *tune), tunes))
        rows = list(pool.map(lambda stream: make(folder, stream), streams))
    for tune in tunes:
        (folder / wav_name(*tune)).unlink()
    lines = ["\t".join(map(str, row)) for row in (COLUMNS, *rows)]
    (folder / "manifest.tsv").write_text("\n".join(lines) + "\n", encoding="utf-8")


def fingerprint():
    """Changes with this script, the synthesiser and the programs."""
    digest = hashlib.sha256()
    for path in (Path(__file__), SYNTHESISER, *(Path(shutil.which(program)) for program in PROGRAMS)):
        digest.update(path.read_bytes())
    return digest.hexdigest()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("folder", type=Path, help="where the streams go; replaced as a whole when out of date")
    folder = parser.parse_args().folder.resolve()

    missing = [program for program in PROGRAMS if shutil.which(program) is None]
    if missing:
        sys.exit(f"make_streams: not installed: {', '.join(missing)} (scripts/setup test installs them)")
    folder.parent.mkdir(parents=True, exist_ok=True)
    with open(folder.with_suffix(".lock"), "w", encoding="utf-8") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        stamp = folder / "made-by"
        wanted = fingerprint()
        if stamp.is_file() and stamp.read_text(encoding="utf-8") == wanted:
            return
        work = folder.with_suffix(".work")
        for old in (work, folder):
            shutil.rmtree(old, ignore_errors=True)
        work.mkdir()
        try:
            fill(work)
        except RuntimeError as error:
            sys.exit(f"make_streams: {error}")
        (work / "made-by").write_text(wanted, encoding="utf-8")
        work.rename(folder)


if __name__ == "__main__":
    main()
