"""Turns the Huffman codes of table B.7 into lookup tables.

A pair table is a root of 256 entries, indexed by the next 8 bits, and subtables behind it for longer codes. An
entry is either a leaf, (length << 8) | (x << 4) | y, with the code's whole length, or a link,
LINK | (index bits << 24) | first entry of the subtable.
"""

ROOT_BITS = 8
LINK = 1 << 31


def _fill(entries, first, index_bits, codes, consumed):
    """Fills a table of 2^index_bits entries at `first` with codes whose first `consumed` bits are dropped."""
    longer = {}
    for code, x, y in codes:
        rest = code[consumed:]
        if len(rest) <= index_bits:
            low = int(rest or '0', 2) << (index_bits - len(rest))
            for i in range(1 << (index_bits - len(rest))):
                entries[first + low + i] = len(code) << 8 | x << 4 | y
        else:
            longer.setdefault(rest[:index_bits], []).append((code, x, y))
    for prefix, group in sorted(longer.items()):
        bits = max(len(code) for code, _, _ in group) - consumed - index_bits
        start = len(entries)
        entries.extend([0] * (1 << bits))
        entries[first + int(prefix, 2)] = LINK | bits << 24 | start
        _fill(entries, start, bits, group, consumed + index_bits)


def pair_lookup(pairs):
    """All pair tables in one list; tables with the same codes share their entries."""
    entries, roots, known = [0], [0] * 32, {}
    for table, codes in sorted(pairs.items()):
        key = tuple(codes)
        if key not in known:
            known[key] = len(entries)
            entries.extend([0] * (1 << ROOT_BITS))
            _fill(entries, known[key], ROOT_BITS, codes, 0)
        roots[table] = known[key]
    return entries, roots


def quad_lookup(quads):
    lookup = [0] * 64
    for code, values in quads:
        low = int(code, 2) << (6 - len(code))
        for i in range(1 << (6 - len(code))):
            lookup[low + i] = len(code) << 4 | values
    return lookup
