#include "decoder/literal/spectrum.h"

#include "decoder/layer3/band_layout.h"
#include "decoder/tables/band_tables.h"
#include "decoder/tables/requantise_tables.h"
#include "support/model/tables.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace test::literal {

namespace {

/// A binary tree of codes. Node 0 is the root; a child below 0 is leaf -1 - child.
class CodeTree {
public:
    CodeTree() : nodes_(1) {}

    void Add(std::uint32_t code, int length, int leaf) {
        std::size_t node = 0;
        for (int bit = length - 1; bit > 0; --bit) {
            int& child = nodes_[node][code >> bit & 1];
            if (child == 0) {
                child = static_cast<int>(nodes_.size());
                nodes_.emplace_back(); // the reference above dies here
            }
            node = static_cast<std::size_t>(nodes_[node][code >> bit & 1]);
        }
        nodes_[node][code & 1] = -1 - leaf;
    }

    int Read(Reservoir& bits) const {
        int node = 0;
        do
            node = nodes_[static_cast<std::size_t>(node)][bits.Get(1)];
        while (node > 0);
        if (node == 0)
            throw std::logic_error("bits that are no Huffman code");
        return -1 - node;
    }

private:
    std::vector<std::array<int, 2>> nodes_;
};

struct Trees {
    std::array<CodeTree, 32> pairs; ///< leaf: x << 4 | y
    std::array<CodeTree, 2> quads;  ///< leaf: v << 3 | w << 2 | x << 1 | y
};

Trees MakeTrees() {
    const model::Tables& tables = model::StandardTables();
    Trees trees;
    for (std::size_t table = 1; table < 32; ++table)
        for (const model::PairCode& code : tables.pairs[table].codes)
            trees.pairs[table].Add(code.code, code.length, code.x << 4 | code.y);
    for (std::size_t table = 0; table < 2; ++table)
        for (const model::QuadCode& code : tables.quads[table])
            trees.quads[table].Add(code.code, code.length,
                                   code.values[0] << 3 | code.values[1] << 2 | code.values[2] << 1 |
                                       code.values[3]);
    return trees;
}

const Trees& StandardTrees() {
    static const Trees trees = MakeTrees();
    return trees;
}

int LongBandStart(const trnmpa::DecoderHeader& header, std::uint32_t band) {
    return trnmpa::tables::kLongBandStart[header.BandTableRow()][header.sampleRateIndex][std::min(band, 22u)];
}

/// First lines of the second and the third region, not yet limited to the big values.
std::array<int, 2> RegionStarts(const trnmpa::DecoderHeader& header, const trnmpa::GranuleInfo& info) {
    const bool isSwitched = info.windowSwitching != 0;
    const bool isMpeg25 = header.mpeg25 != 0;
    if (isSwitched && info.IsShort()) {
        const auto& shortStarts =
            trnmpa::tables::kShortBandStart[header.BandTableRow()][header.sampleRateIndex];
        return {isMpeg25 ? 3 * shortStarts[3] : 36, 576};
    }
    if (isSwitched && header.lowSamplingFrequency != 0)
        return {isMpeg25 ? LongBandStart(header, 8) : 54, 576};
    return {LongBandStart(header, info.region0Count + 1),
            LongBandStart(header, info.region0Count + info.region1Count + 2)};
}

std::int32_t ReadExtension(Reservoir& bits, std::int32_t magnitude, int linbits) {
    if (magnitude == 15 && linbits > 0)
        magnitude += static_cast<std::int32_t>(bits.Get(linbits));
    if (magnitude != 0 && bits.Get(1) != 0)
        return -magnitude;
    return magnitude;
}

void ReadPair(Reservoir& bits, std::size_t table, std::int32_t* lines) {
    const model::PairTable& description = model::StandardTables().pairs[table];
    if (table == 0 || description.codes.empty())
        return;
    const int code = StandardTrees().pairs[table].Read(bits);
    lines[0] = ReadExtension(bits, code >> 4, description.linbits);
    lines[1] = ReadExtension(bits, code & 15, description.linbits);
}

void ReadQuadruples(Reservoir& bits, std::size_t table, int endBitsRemaining, Lines& lines) {
    const int first = lines.count;
    while (lines.count <= 572 && bits.BitsRemaining() > endBitsRemaining) {
        const int code = StandardTrees().quads[table].Read(bits);
        for (int shift = 3; shift >= 0; --shift)
            lines.value[static_cast<std::size_t>(lines.count++)] = ReadExtension(bits, code >> shift & 1, 0);
    }
    if (bits.BitsRemaining() < endBitsRemaining && lines.count > first)
        lines.count -= 4;
}

} // namespace

Lines ReadLines(Reservoir& bits, const trnmpa::DecoderHeader& header, const trnmpa::GranuleInfo& info,
                int endBitsRemaining) {
    Lines lines;
    const auto starts = RegionStarts(header, info);
    lines.count = static_cast<int>(2 * info.bigValues);
    for (int line = 0; line < lines.count; line += 2) {
        const std::size_t region = line < starts[0] ? 0 : line < starts[1] ? 1 : 2;
        ReadPair(bits, info.tableSelect[region], &lines.value[static_cast<std::size_t>(line)]);
    }
    ReadQuadruples(bits, info.count1TableSelect, endBitsRemaining, lines);
    return lines;
}

Spectrum Requantise(const Lines& lines, const trnmpa::DecoderHeader& header, const trnmpa::GranuleInfo& info,
                    const trnmpa::ScaleFactors& factors) {
    Spectrum spectrum;
    const int shift = info.scaleFactorScale != 0 ? 2 : 1;
    for (const trnmpa::BandSegment& segment : trnmpa::LayoutOf(header, info).Segments()) {
        const int factor = segment.isShort
                               ? factors.shortBand[segment.window][segment.band]
                               : factors.longBand[segment.band] +
                                     (info.preflag != 0 ? trnmpa::tables::kPreEmphasis[segment.band] : 0);
        const int subblock = segment.isShort ? 8 * static_cast<int>(info.subblockGain[segment.window]) : 0;
        const int exponent = 210 - static_cast<int>(info.globalGain) + (factor << shift) + subblock;
        const double gain = trnmpa::tables::kGain[std::min(exponent + 45, 371)];
        for (int line = segment.start; line < std::min(segment.End(), lines.count); ++line) {
            const std::int32_t value = lines.value[static_cast<std::size_t>(line)];
            const double power = trnmpa::tables::kFourThirdsPower[std::abs(value)];
            spectrum.value[static_cast<std::size_t>(line)] =
                static_cast<float>(gain * (value < 0 ? power : -power));
            if (value != 0)
                spectrum.nonZeroCount = line + 1;
        }
    }
    return spectrum;
}

} // namespace test::literal
