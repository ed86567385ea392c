#!/usr/bin/env python3
"""Writes the decoder's constant tables as C++ headers: generate.py OUTPUT_FOLDER.

Numbers that the ISO standard tabulates come from the CSV files beside this script; numbers that it gives by
formula are computed here to 60 digits and rounded once.
"""

import csv
from pathlib import Path
import sys

from exact_math import (PI, Decimal, as_double, as_float, cos, four_thirds_power, power_of_two, sin)
import huffman_lookup

HERE = Path(__file__).resolve().parent


def rows(name):
    with open(HERE / (name + '.csv'), newline='') as file:
        return list(csv.DictReader(file))


def nested(values):
    """C++ initialiser of a list of literals or of lists of them."""
    if isinstance(values, (list, tuple)):
        return '{' + ', '.join(nested(v) for v in values) + '}'
    return str(values)


def array(kind, name, shape, values, comment, alignment=0):
    extent = ''.join('[%d]' % n for n in shape)
    body = ',\n    '.join(nested(v) for v in values)
    aligned = 'alignas(%d) ' % alignment if alignment else ''
    return '// %s\n%sinline constexpr %s %s%s = {\n    %s};\n' % (comment, aligned, kind, name, extent, body)


def write(folder, name, parts):
    text = '// Written by generate.py; do not edit.\n#pragma once\n\n#include <cstdint>\n\n'
    text += 'namespace trnmpa::tables {\n\n' + '\n'.join(parts) + '\n}  // namespace trnmpa::tables\n'
    (folder / name).write_text(text)


def header_tables():
    kbps = {(r['version'], r['layer'], int(r['index'])): int(r['kbps']) for r in rows('bitrates')}
    rates = [[[kbps[v, layer, i] for i in range(15)] for layer in ('I', 'II', 'III')] for v in ('1', '2')]
    hz = {int(r['index']): int(r['hz']) for r in rows('samplerates') if r['version'] == '1'}
    return [
        array('std::int32_t', 'kBitRateKbps', (2, 3, 15), rates,
              'kbit/s by lower-sampling-frequency flag, layer - 1 and bit-rate index; index 0 is free format.'),
        array('std::int32_t', 'kMpeg1SampleRate', (3,), [hz[i] for i in range(3)],
              'Hz; halved at the lower sampling frequencies and halved again for MPEG 2.5.'),
    ]


def layer2_tables():
    names = ['B.2a', 'B.2b', 'B.2c', 'B.2d', 'LSF']
    classes = {int(r['levels']): int(r['class']) for r in rows('layer2_quantisation')}
    classes[0] = 0
    counts, widths, maps = [], [], []
    for name in names:
        groups = []
        for r in [r for r in rows('layer2_allocation') if r['table'] == name]:
            key = (int(r['nbal']), tuple(classes[int(n)] for n in r['levels_by_code'].split()))
            if groups and groups[-1][0] == key:
                groups[-1][1] += 1
            else:
                groups.append([key, 1])
        while len(groups) < 4:
            groups.append([(0, (0,)), 0])
        counts.append([g[1] for g in groups])
        widths.append([g[0][0] for g in groups])
        maps.append([list(g[0][1]) for g in groups])
    choice = [[[-1] * 15 for _ in range(3)] for _ in range(2)]
    for r in rows('layer2_table_choice'):
        if r['version'] == '1' and r['table'] != 'forbidden':
            rate = {'44100': 0, '48000': 1, '32000': 2}[r['sample_rate']]
            choice[int(r['channels']) - 1][rate][int(r['bitrate_index'])] = names.index(r['table'])
    levels = [0] + [int(r['levels']) for r in rows('layer2_quantisation')]
    bits = [0] + [int(r['bits_per_code']) for r in rows('layer2_quantisation')]
    factors = ['0.0'] + [as_double(Decimal(65534) / n) for n in levels[1:]]
    multipliers = [as_double(2 * power_of_two(-i, 3)) for i in range(64)]
    return [
        array('std::uint8_t', 'kAllocationGroupSubbands', (5, 4), counts,
              'Tables B.2a to B.2d and LSF: subbands in each of the four groups.'),
        array('std::uint8_t', 'kAllocationGroupBits', (5, 4), widths, 'Width of the allocation field.'),
        array('std::uint8_t', 'kAllocationClass', (5, 4, 16), maps, 'Quantisation class by allocation code.'),
        array('std::int8_t', 'kAllocationTable', (2, 3, 15), choice,
              'MPEG-1: table by channels - 1, sample-rate index and bit-rate index; -1 is forbidden.'),
        array('std::int32_t', 'kClassLevels', (18,), levels, 'Quantisation levels of each class (table B.4).'),
        array('std::uint8_t', 'kClassCodeBits', (18,), bits, 'Bits of one code of each class.'),
        array('double', 'kClassFactor', (18,), factors, '65534 / levels: full scale is 32767.'),
        array('double', 'kScaleFactor', (64,), multipliers, '2 * 2^(-i / 3).'),
    ]


def band_tables():
    by_key = {(r['version'], r['sample_rate'], r['kind']): [int(n) for n in r['starts'].split()]
              for r in rows('scalefactor_bands')}
    rates = {'1': ('44100', '48000', '32000'), '2': ('22050', '24000', '16000'), '2.5': ('11025', '12000', '8000')}
    longs = [[by_key[v, r, 'long'] for r in rates[v]] for v in ('1', '2', '2.5')]
    shorts = [[by_key[v, r, 'short'] for r in rates[v]] for v in ('1', '2', '2.5')]
    return [
        array('std::uint16_t', 'kLongBandStart', (3, 3, 23), longs,
              'By lower-sampling-frequency flag + MPEG 2.5 flag and sample-rate index.'),
        array('std::uint16_t', 'kShortBandStart', (3, 3, 14), shorts, 'The same for one window of short blocks.'),
    ]


def scale_factor_tables():
    slen = [[int(r['slen1']), int(r['slen2'])] for r in rows('slen')]
    kinds = ('long', 'short', 'mixed')
    partition = {(int(r['row']), r['kind']): [int(r['n%d' % i]) for i in range(4)] for r in rows('lsf_partition')}
    return [
        array('std::uint8_t', 'kScaleFactorBits', (16, 2), slen, 'slen1 and slen2 by scalefac_compress.'),
        array('std::uint8_t', 'kLsfPartition', (6, 3, 4),
              [[partition[row, kind] for kind in kinds] for row in range(6)],
              'Scale factors in each of the four parts, by row and block kind (long, short, mixed).'),
    ]


def requantise_tables():
    return [
        array('float', 'kGain', (372,), [as_float(16384 * power_of_two(-k, 4)) for k in range(-45, 327)],
              '16384 * 2^(-k / 4) for k = -45..326.'),
        array('double', 'kFourThirdsPower', (8207,), [as_double(four_thirds_power(n)) for n in range(8207)],
              'n^(4/3) for every magnitude that 15 + 13 linbits can give.'),
        array('double', 'kSignedPower', (31,),
              ['%s%s' % ('-' if n >= 0 else '', as_double(four_thirds_power(abs(n)))) for n in range(-15, 16)],
              '-sign(n) |n|^(4/3) for n = -15..15.'),
        array('std::uint8_t', 'kPreEmphasis', (22,), [int(r['value']) for r in rows('pretab')], 'Table B.6.'),
    ]


def stereo_tables():
    def ratios(position):
        if position == 6:
            return [Decimal(1), Decimal(0)]
        k = sin(position * PI / 12) / cos(position * PI / 12)
        return [k / (1 + k), 1 / (1 + k)]

    return [
        array('double', 'kIntensityRatio', (7, 2), [[as_double(v) for v in ratios(p)] for p in range(7)],
              'MPEG-1: left and right factors by intensity position.'),
        array('double', 'kLsfIntensityRatio', (2, 32),
              [[as_double(power_of_two(-i, d)) for i in range(32)] for d in (4, 2)],
              '2^(-i / 4) and 2^(-i / 2), by intensity scale.'),
    ]


def hybrid_tables():
    c = [Decimal(r['c']) for r in rows('alias_coefficients')]
    root = [(1 + v * v).sqrt() for v in c]

    def window(block_type):
        sine = [sin((i + Decimal('0.5')) * PI / 36) for i in range(36)]
        if block_type == 1:
            falling = [sin((i + Decimal('0.5') - 18) * PI / 12) for i in range(24, 30)]
            return sine[:18] + [Decimal(1)] * 6 + falling + [Decimal(0)] * 6
        if block_type == 3:
            rising = [sin((i + Decimal('0.5') - 6) * PI / 12) for i in range(6, 12)]
            return [Decimal(0)] * 6 + rising + [Decimal(1)] * 6 + sine[18:]
        return sine

    def unfolded(block_type):
        return [v if i < 9 else -v for i, v in enumerate(window(block_type))]

    def two_cos(count, divisor):
        return [as_double(2 * cos((2 * i + 1) * PI / divisor)) for i in range(count)]

    def degrees(*angles):
        return [as_double(cos(a * PI / 180)) for a in angles]

    return [
        array('double', 'kAliasCs', (8,), [as_double(1 / r) for r in root], '1 / sqrt(1 + c^2), table B.9.'),
        array('double', 'kAliasCa', (8,), [as_double(v / r) for v, r in zip(c, root)], 'c / sqrt(1 + c^2).'),
        array('double', 'kTwoCos72', (18,), two_cos(18, 72), '2 cos((2i + 1) pi / 72).'),
        array('double', 'kTwoCos36', (9,), two_cos(9, 36), '2 cos((2i + 1) pi / 36).'),
        array('double', 'kTwoCos24', (6,), two_cos(6, 24), '2 cos((2i + 1) pi / 24).'),
        array('double', 'kTwoCos12', (3,), two_cos(3, 12), '2 cos((2i + 1) pi / 12).'),
        array('double', 'kCosDegrees', (5,), degrees(30, 40, 50, 70, 80),
              'cos of 30, 40, 50, 70 and 80 degrees: all that cos(2j (2i + 1) pi / 36) needs.'),
        array('double', 'kLongWindow', (4, 36), [[as_double(v) for v in unfolded(t)] for t in range(4)],
              'Windows by block type (that of type 2 is never used), negated from the tenth value on.'),
        array('double', 'kShortWindow', (12,), [as_double(sin((i + Decimal('0.5')) * PI / 12)) for i in range(12)],
              'sin((2i + 1) pi / 24).'),
    ]


def synthesis_tables():
    numerators = [int(r['numerator']) for r in rows('synthesis_window')]

    # D[32k + n] of table B.3.
    def tap(k, n, sign=1):
        return as_float(Decimal(sign * numerators[32 * k + n]) / 65536)

    def folded(k):
        return ([tap(k, n, 1 if k % 2 == 0 else -1) for n in range(16)] + ['0.0f'] +
                [tap(k, 32 - n, -1) for n in range(1, 16)])

    def half_secants(n):
        return [as_float(1 / (2 * cos((2 * i + 1) * PI / (2 * n)))) for i in range(n // 2)]

    return [
        array('float', 'kFoldedWindow', (16, 32), [folded(k) for k in range(16)],
              'D[32k + n] for even k, -D[32k + n] for odd k, n = 0..15; a zero; -D[32k + 32 - n], n = 1..15.',
              alignment=32),
        array('float', 'kCentreWindow', (8,), [tap(k, 16, -1) for k in range(1, 16, 2)], '-D[32k + 16] for odd k.'),
    ] + [
        array('float', 'kHalfSecant%d' % n, (n // 2,), half_secants(n),
              '1 / (2 cos((2i + 1) pi / %d)).' % (2 * n)) for n in (32, 16, 8, 4, 2)]


def huffman_tables():
    pairs = {}
    for r in rows('huffman'):
        if r['code']:
            pairs.setdefault(int(r['table']), []).append((r['code'], int(r['x']), int(r['y'])))
    linbits = {int(r['table']): int(r['linbits']) for r in rows('huffman')}
    quads = {table: [(r['code'], [int(r[n]) for n in 'vwxy']) for r in rows('huffman_count1') if r['table'] == table]
             for table in 'AB'}
    entries, places = huffman_lookup.pair_lookup(pairs, linbits)
    patterns = [[{0: '-0.0f', 1: '-1.0f', 2: '1.0f'}[p // d % 3] for d in (27, 9, 3, 1)] for p in range(81)]
    return [
        array('std::uint16_t', 'kPairEntry', (len(entries),), entries,
              'Lookup entries of all pair tables; see huffman_lookup.py for their layout.'),
        array('std::uint32_t', 'kPairPlace', (32, 4), places,
              'First entry and index bits of the root, then of the long table; nothing at tables 0, 4 and 14.'),
        array('std::uint8_t', 'kHuffmanLinbits', (32,), [linbits.get(t, 0) for t in range(32)], 'Table B.7.'),
        array('std::uint16_t', 'kQuadrupleA', (1024,), huffman_lookup.quad_lookup(quads['A'], 10),
              'Table A with signs by a 10-bit peek: length in the low nibble, pattern above it.'),
        array('std::uint16_t', 'kQuadrupleB', (256,), huffman_lookup.quad_lookup(quads['B'], 8),
              'Table B by an 8-bit peek.'),
        array('float', 'kQuadrupleValues', (81, 4), patterns, 'Values of each pattern, with inverted sign.'),
    ]


def main():
    folder = Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    for name, make in (('header_tables.h', header_tables), ('layer2_tables.h', layer2_tables),
                       ('band_tables.h', band_tables), ('scale_factor_tables.h', scale_factor_tables),
                       ('requantise_tables.h', requantise_tables), ('stereo_tables.h', stereo_tables),
                       ('hybrid_tables.h', hybrid_tables), ('synthesis_tables.h', synthesis_tables),
                       ('huffman_tables.h', huffman_tables)):
        write(folder, name, make())


if __name__ == '__main__':
    main()
