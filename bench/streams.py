"""The files that are measured: made once from the repository's own music by encoders of Debian's packages."""

import subprocess
import wave
from pathlib import Path

SYNTHESISER = Path(__file__).resolve().parent.parent / "scripts" / "synthesise-music"
RATE = 44100
TUNE_SECONDS = 30
SHORT_REPEATS = 10
LONG_REPEATS = 120
LARGE_BYTES = 1_000_000_000

SHORT_SECONDS = TUNE_SECONDS * SHORT_REPEATS
ENCODERS = {
    "lame-cbr128.mp3": ("lame", "--quiet", "-b", "128"),
    "lame-v2.mp3": ("lame", "--quiet", "-V2"),
    "lame-cbr320.mp3": ("lame", "--quiet", "-b", "320"),
    "twolame-192.mp2": ("twolame", "--quiet", "-b", "192"),
    "lame-mono64.mp3": ("lame", "--quiet", "-m", "m", "--resample", "22.05", "-b", "64"),
}


def _write_tune(path, repeats):
    tune = path.with_name("tune.wav")
    if not tune.is_file():
        subprocess.run([SYNTHESISER, "--rate", str(RATE), "--seconds", str(TUNE_SECONDS), tune], check=True)
    with wave.open(str(tune), "rb") as source, wave.open(str(path), "wb") as target:
        target.setparams(source.getparams())
        frames = source.readframes(source.getnframes())
        for _ in range(repeats):
            target.writeframes(frames)


def _encode(command, source, target):
    part = target.with_name("part-" + target.name)
    subprocess.run([*command, source, part], check=True, stdin=subprocess.DEVNULL)
    part.rename(target)


def short_files(work):
    """Five minutes in each of the usual forms."""
    work.mkdir(parents=True, exist_ok=True)
    missing = [name for name in ENCODERS if not (work / name).is_file()]
    if missing:
        music = work / "short.wav"
        _write_tune(music, SHORT_REPEATS)
        for name in missing:
            _encode(ENCODERS[name], music, work / name)
        music.unlink()
    return [work / name for name in ENCODERS]


def hour_file(work):
    """One hour of variable bit rate."""
    target = work / "hour-v2.mp3"
    if not target.is_file():
        music = work / "hour.wav"
        _write_tune(music, LONG_REPEATS)
        _encode(("lame", "--quiet", "-V2"), music, target)
        music.unlink()
    return target


def large_file(work):
    """1 GB of frames at a constant bit rate: the five minutes again and again."""
    target = work / "large-cbr128.mp3"
    if not target.is_file():
        piece = short_files(work)[0].read_bytes()
        part = work / "part-large"
        with part.open("wb") as file:
            for _ in range(LARGE_BYTES // len(piece) + 1):
                file.write(piece)
        part.rename(target)
    return target
