#!/usr/bin/env python3
"""Draws a sample as SVG and as PNG with the built tool, reads both with other means than the tool's, and compares them:
the SVG is well-formed and holds nothing but what the tool draws, and its boxes, painted here, are the PNG's pixels.
Usage: check_pictures.py SAMPLE [EMULATOR] MPATOOL"""

import re
import struct
import subprocess
import sys
import xml.etree.ElementTree
import zlib
from pathlib import Path

SVG = "{http://www.w3.org/2000/svg}"
BOX = re.compile(r"M(-?\d+) (-?\d+)h(\d+)v(\d+)h-(\d+)z")


def draw(tool, sample, *options):
    # By its bare name: on Windows a slash at the front begins an option.
    command = [*tool, "waveform", sample.name, "-o", "-", "--bitrate", "--frames", *options]
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, cwd=sample.parent).stdout


def color_of(text):
    return tuple(bytes.fromhex(text.removeprefix("#")))


def paint(svg):
    """The boxes as rows of colours; text is left out."""
    root = xml.etree.ElementTree.fromstring(svg)
    width, height = int(root.get("width")), int(root.get("height"))
    rows = [[color_of(root.find(f"{SVG}rect").get("fill"))] * width for _ in range(height)]
    kinds = {element.tag.removeprefix(SVG) for element in root}
    if kinds != {"title", "rect", "path", "text"}:
        sys.exit(f"elements: {kinds}")
    for path in root.iter(f"{SVG}path"):
        color, drawn = color_of(path.get("fill")), path.get("d")
        if BOX.sub("", drawn):
            sys.exit(f"no boxes: {BOX.sub('', drawn)[:80]}")
        for left, top, across, down, back in (map(int, box) for box in BOX.findall(drawn)):
            if across != back or left < 0 or top < 0 or left + across > width or top + down > height:
                sys.exit(f"a box beyond the picture: {left}, {top}, {across}, {down}")
            for row in rows[top:top + down]:
                row[left:left + across] = [color] * across
    return rows, color_of(root.get("fill"))


def read_png(data):
    """The rows of a picture with a palette of one byte a pixel, whose rows are stored as they are."""
    if data[:8] != b"\x89PNG\r\n\x1a\n":
        sys.exit("no PNG")
    chunks, at = {}, 8
    while at < len(data):
        length, kind = struct.unpack_from(">I4s", data, at)
        body = data[at + 8:at + 8 + length]
        if struct.unpack_from(">I", data, at + 8 + length)[0] != zlib.crc32(kind + body):
            sys.exit(f"{kind}: wrong CRC")
        chunks[kind] = chunks.get(kind, b"") + body
        at += length + 12
    width, height, *form = struct.unpack(">IIBBBBB", chunks[b"IHDR"])
    if form != [8, 3, 0, 0, 0] or b"IEND" not in chunks:
        sys.exit(f"form {form}")
    palette = [tuple(chunks[b"PLTE"][i:i + 3]) for i in range(0, len(chunks[b"PLTE"]), 3)]
    pixels = zlib.decompress(chunks[b"IDAT"])
    if len(pixels) != height * (width + 1) or any(pixels[::width + 1]):
        sys.exit("rows of another length or with a filter")
    return [[palette[i] for i in pixels[y * (width + 1) + 1:(y + 1) * (width + 1)]] for y in range(height)]


def compare(tool, sample, *options):
    rows, letters = paint(draw(tool, sample, "--format", "svg", *options))
    picture = read_png(draw(tool, sample, "--format", "png", *options))
    if (len(rows), len(rows[0])) != (len(picture), len(picture[0])):
        sys.exit("the pictures are not of one size")
    other, text = 0, 0
    for row, line in zip(rows, picture):
        for painted, shown in zip(row, line):
            text += shown == letters
            other += shown not in (painted, letters)
    if other or not text:
        sys.exit(f"{options}: {other} pixels differ, {text} are text")
    print(f"{options}: equal, {text} pixels of text")


def main():
    sample, *tool = (Path(argument).resolve() for argument in sys.argv[1:])
    compare(tool, sample)
    compare(tool, sample, "--width", "901", "--height", "333", "--start", "1s", "--length", "5000")
    compare(tool, sample, "--width", "3300", "--height", "1000", "--start", "100", "--length", "300")


if __name__ == "__main__":
    main()
