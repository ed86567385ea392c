"""Turns the Huffman codes of table B.7 into lookup tables.

Every table has a root, indexed by the next ROOT_BITS bits at most; an entry of 0 there means that the code is longer.
Then the long table is indexed by as many bits as the longest code has. The longer codes all begin with zeros, so of the
long table only its first part exists.

Tables of small values (up to 12) hold values and signs together. Entry: (y + 15) << 11 | (x + 15) << 6 | length, the
length with the sign bits. The other tables hold magnitudes: y << 10 | x << 6 | length, the length with sign bits and,
in the root, with linbits. Tables that differ in linbits alone share the long table.
"""

from itertools import product

ROOT_BITS = 10
LAST_SIGNED_TABLE = 12


def _with_signs(codes):
    """The sign bits drawn into the codes: (bits, entry)."""
    for code, x, y in codes:
        for sign_x, sign_y in product('01' if x else ('',), '01' if y else ('',)):
            bits = code + sign_x + sign_y
            values = [-v if sign == '1' else v for v, sign in ((x, sign_x), (y, sign_y))]
            yield bits, values[1] + 15 << 11 | values[0] + 15 << 6 | len(bits)


def _magnitudes(codes, linbits):
    for code, x, y in codes:
        extensions = (x == 15) + (y == 15) if linbits else 0
        length = len(code) + (x != 0) + (y != 0) + extensions * linbits
        yield code, y << 10 | x << 6 | length


def _fill(codes, index_bits, size):
    """The first `size` entries of a table that is indexed by `index_bits` bits."""
    entries = [0] * size
    for code, entry in codes:
        if len(code) <= index_bits:
            first = int(code, 2) << (index_bits - len(code))
            last = first + (1 << (index_bits - len(code)))
            entries[first:last] = [entry] * (min(last, size) - min(first, size))
    return entries


def _check_complete(root, root_bits, long, long_bits):
    """Whatever bits come, a root's or a long table's entry must stand for them: readers do not look for gaps."""
    suffixes = 1 << (long_bits - root_bits)
    for prefix, entry in enumerate(root):
        if entry == 0:
            behind = long[prefix * suffixes:(prefix + 1) * suffixes]
            assert long_bits > root_bits and len(behind) == suffixes and all(behind), 'codes leave a gap'


def pair_lookup(pairs, linbits):
    """All pair tables in one list of entries, and for each table (first of root, root bits, first of long, long bits)."""
    entries, places, long_places = [], [(0, 1, 0, 1)] * 32, {}
    for table, codes in sorted(pairs.items()):
        if table <= LAST_SIGNED_TABLE:
            in_root = in_long = list(_with_signs(codes))
        else:
            in_root, in_long = list(_magnitudes(codes, linbits[table])), list(_magnitudes(codes, 0))
        longest = max(len(code) for code, _ in in_root)
        root_bits = min(longest, ROOT_BITS)
        root = _fill(in_root, root_bits, 1 << root_bits)
        place = len(entries)
        entries += root
        prefixes = 1 + max((i for i, entry in enumerate(root) if entry == 0), default=-1)
        long = _fill(in_long, longest, prefixes << (longest - root_bits))
        _check_complete(root, root_bits, long, longest)
        if tuple(codes) not in long_places:
            long_places[tuple(codes)] = len(entries)
            entries += long
        places[table] = place, root_bits, long_places[tuple(codes)], longest
    return entries, places


def quad_lookup(quads, index_bits):
    """Codes with their signs by an `index_bits` peek: length in the low nibble, above it the values as digits to the
    base 3, the first one most significant: 0, 1 and 2 for -1."""
    entries = [0] * (1 << index_bits)
    for code, values in quads:
        for signs in product(*('01' if value else ('',) for value in values)):
            bits = code + ''.join(signs)
            pattern = 0
            for sign in signs:
                pattern = 3 * pattern + {'': 0, '0': 1, '1': 2}[sign]
            first = int(bits, 2) << (index_bits - len(bits))
            for i in range(first, first + (1 << (index_bits - len(bits)))):
                entries[i] = pattern << 4 | len(bits)
    assert all(entries), 'codes leave a gap'
    return entries
