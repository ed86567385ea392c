#include "decoder/layer3/huffman.h"

#include "decoder/tables/band_tables.h"
#include "decoder/tables/huffman_tables.h"

#include <algorithm>

namespace trnmpa {

namespace {

constexpr int kRootBits = 8;
constexpr std::uint32_t kLink = 0x80000000u;
constexpr int kLinbitsEscape = 15;

struct RegionStarts {
    int region1 = 0;
    int region2 = 0;
};

int LongBandStart(const DecoderHeader& header, std::uint32_t band) {
    constexpr std::uint32_t kLastIndex = 22;
    return tables::kLongBandStart[header.BandTableRow()][header.sampleRateIndex][std::min(band, kLastIndex)];
}

/// Where the second and third big-value regions begin, in lines. With window switching the lower sampling
/// frequencies have fixed starts.
RegionStarts FindRegionStarts(const DecoderHeader& header, const GranuleInfo& info, int bigValueLines) {
    const bool isSwitched = info.windowSwitching != 0;
    const bool isMpeg25 = header.mpeg25 != 0;
    RegionStarts starts;
    if (isSwitched && info.IsShort()) {
        const int shortBand3 = tables::kShortBandStart[header.BandTableRow()][header.sampleRateIndex][3];
        starts = isMpeg25 ? RegionStarts{3 * shortBand3, bigValueLines} : RegionStarts{36, kGranuleLines};
    } else if (isSwitched && header.lowSamplingFrequency != 0) {
        starts = isMpeg25 ? RegionStarts{LongBandStart(header, 8), bigValueLines}
                          : RegionStarts{54, kGranuleLines};
    } else {
        starts = {LongBandStart(header, info.region0Count + 1),
                  LongBandStart(header, info.region0Count + info.region1Count + 2)};
    }
    return {std::min(starts.region1, bigValueLines), std::min(starts.region2, bigValueLines)};
}

/// A magnitude from the code, extended by linbits and given its sign.
std::int32_t ReadExtension(AMPBitstream& bits, std::int32_t magnitude, int linbits) {
    if (magnitude == kLinbitsEscape && linbits > 0)
        magnitude += static_cast<std::int32_t>(bits.Get(linbits));
    if (magnitude != 0 && bits.Get(1) != 0)
        return -magnitude;
    return magnitude;
}

std::uint32_t ReadPairCode(AMPBitstream& bits, std::uint32_t root) {
    int consumed = 0;
    int indexBits = kRootBits;
    std::uint32_t entry = tables::kHuffmanEntry[root + bits.Peek(kRootBits)];
    while ((entry & kLink) != 0) {
        consumed += indexBits;
        indexBits = static_cast<int>(entry >> 24 & 0x7F);
        const std::uint32_t peeked = bits.Peek(consumed + indexBits) & ((1u << indexBits) - 1);
        entry = tables::kHuffmanEntry[(entry & 0xFFFFFF) + peeked];
    }
    bits.Skip(static_cast<int>(entry >> 8 & 0x1F));
    return entry;
}

void ReadPairs(AMPBitstream& bits, std::uint32_t table, std::span<std::int32_t> lines) {
    const std::uint32_t root = tables::kHuffmanRoot[table];
    if (root == 0) {
        std::ranges::fill(lines, 0);
        return;
    }
    const int linbits = tables::kHuffmanLinbits[table];
    for (std::size_t i = 0; i + 1 < lines.size(); i += 2) {
        const std::uint32_t entry = ReadPairCode(bits, root);
        lines[i] = ReadExtension(bits, static_cast<std::int32_t>(entry >> 4 & 15), linbits);
        lines[i + 1] = ReadExtension(bits, static_cast<std::int32_t>(entry & 15), linbits);
    }
}

/// Bits v, w, x, y of the next quadruple, v the most significant.
std::uint32_t ReadQuadrupleCode(AMPBitstream& bits, bool isTableB) {
    if (isTableB)
        return bits.Get(4) ^ 15;
    const std::uint8_t entry = tables::kQuadrupleA[bits.Peek(6)];
    bits.Skip(entry >> 4);
    return entry & 15;
}

int ReadQuadruples(AMPBitstream& bits, bool isTableB, int endBitsRemaining, int first,
                   std::span<std::int32_t, kGranuleLines> lines) {
    int index = first;
    while (index <= kGranuleLines - 4 && bits.BitsRemaining() > endBitsRemaining) {
        const std::uint32_t code = ReadQuadrupleCode(bits, isTableB);
        for (std::uint32_t mask = 8; mask != 0; mask >>= 1, ++index) {
            std::int32_t value = 0;
            if ((code & mask) != 0)
                value = bits.Get(1) != 0 ? -1 : 1;
            lines[static_cast<std::size_t>(index)] = value;
        }
    }
    const bool overran = bits.BitsRemaining() < endBitsRemaining;
    return overran && index > first ? index - 4 : index;
}

} // namespace

int DecodeSpectrum(AMPBitstream& bits, const DecoderHeader& header, const GranuleInfo& info,
                   int endBitsRemaining, std::span<std::int32_t, kGranuleLines> lines) {
    const int bigValueLines = static_cast<int>(2 * info.bigValues);
    const RegionStarts starts = FindRegionStarts(header, info, bigValueLines);
    const int edges[4] = {0, starts.region1, std::max(starts.region1, starts.region2), bigValueLines};
    for (int region = 0; region < 3; ++region) {
        const auto first = static_cast<std::size_t>(edges[region]);
        const auto count = static_cast<std::size_t>(edges[region + 1] - edges[region]);
        ReadPairs(bits, info.tableSelect[region], lines.subspan(first, count));
    }
    return ReadQuadruples(bits, info.count1TableSelect != 0, endBitsRemaining, bigValueLines, lines);
}

} // namespace trnmpa
