#!/usr/bin/env python3
"""Writes a header with the first frames of the samples as arrays. Usage: embed_streams.py SAMPLES OUTPUT"""

import sys
from pathlib import Path

# File, name and bytes: 40 frames of 128 kbit/s behind the "Info" frame; 25 of 160 kbit/s. Whole frames, so that no
# stream ends in the middle of one.
STREAMS = [("music.mp3", "kMusicLayer3", 41), ("music.mp2", "kMusicLayer2", 25)]
KILOBITS = {1: [0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320],
            2: [0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384]}


def frames(data, count):
    """The bytes of the first frames, MPEG-1 at 44100 Hz."""
    end = 0
    for _ in range(count):
        layer_bits = data[end + 1] >> 1 & 3
        rate = KILOBITS[layer_bits][data[end + 2] >> 4]
        end += 144000 * rate // 44100 + (data[end + 2] >> 1 & 1)
    return data[:end]


def array(name, data):
    rows = [", ".join(str(byte) for byte in data[i:i + 24]) for i in range(0, len(data), 24)]
    return f"inline constexpr std::uint8_t {name}[] = {{\n    " + ",\n    ".join(rows) + "};\n"


def main():
    samples, output = Path(sys.argv[1]), Path(sys.argv[2])
    text = "// The first frames of the samples.\n#pragma once\n\n#include <cstdint>\n\nnamespace mpatool {\n\n"
    text += "\n".join(array(name, frames((samples / file).read_bytes(), count)) for file, name, count in STREAMS)
    output.parent.mkdir(parents=True, exist_ok=True)
    output.write_text(text + "\n} // namespace mpatool\n")


main()
