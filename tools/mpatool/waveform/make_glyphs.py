#!/usr/bin/env python3
"""Makes the C++ header of the bitmap font out of its drawing. Usage: make_glyphs.py glyphs.txt OUTPUT"""

import sys
from pathlib import Path

ROWS, COLUMNS, GLYPHS = 10, 5, 96


def glyphs(drawing):
    """Each glyph's rows as numbers, the leftmost column the highest bit."""
    bands = [band.split("\n") for band in drawing.strip().split("\n\n")[1:]]
    for band in bands:
        if len(band) != ROWS:
            sys.exit(f"make_glyphs: a band of {len(band)} rows")
        cells = [row.split(" ") for row in band]
        for glyph in zip(*cells, strict=True):
            if any(len(row) != COLUMNS or set(row) - {"#", "."} for row in glyph):
                sys.exit(f"make_glyphs: {glyph}")
            yield [int(row.replace("#", "1").replace(".", "0"), 2) for row in glyph]


def main():
    found = list(glyphs(Path(sys.argv[1]).read_text(encoding="ascii")))
    if len(found) != GLYPHS:
        sys.exit(f"make_glyphs: {len(found)} glyphs")
    rows = ",\n".join("    {" + ", ".join(str(row) for row in glyph) + "}" for glyph in found)
    Path(sys.argv[2]).write_text(
        "// Made by make_glyphs.py from glyphs.txt.\n#pragma once\n\n#include <cstdint>\n\nnamespace mpatool {\n\n"
        f"inline constexpr std::uint8_t kGlyphs[{GLYPHS}][{ROWS}] = {{\n{rows}}};\n\n}} // namespace mpatool\n",
        encoding="ascii")


if __name__ == "__main__":
    main()
