#include "support/model/huffman.h"

#include "support/model/bands.h"
#include "support/model/tables.h"

#include <algorithm>
#include <stdexcept>
#include <unordered_map>

namespace test::model {

namespace {

/// Codes by their bits with a 1 put before, so that leading zeros count.
template <class Entry>
class CodeBook {
public:
    void Add(const Entry& entry) { entries_.emplace((1U << entry.length) | entry.code, entry); }

    /// Adds bit after bit until the bits are a code.
    const Entry& Read(BitReader& bits) const {
        std::uint32_t key = 1;
        for (int length = 0; length < 24; ++length) {
            if (const auto found = entries_.find(key); found != entries_.end())
                return found->second;
            key = (key << 1) | bits.ReadBit();
        }
        throw std::logic_error("bits that are no Huffman code");
    }

private:
    std::unordered_map<std::uint32_t, Entry> entries_;
};

struct CodeBooks {
    std::array<CodeBook<PairCode>, 32> pairs;
    std::array<CodeBook<QuadCode>, 2> quads;
};

CodeBooks MakeCodeBooks() {
    const Tables& tables = StandardTables();
    CodeBooks books;
    for (std::size_t table = 0; table < 32; ++table)
        for (const PairCode& entry : tables.pairs[table].codes)
            books.pairs[table].Add(entry);
    for (std::size_t table = 0; table < 2; ++table)
        for (const QuadCode& entry : tables.quads[table])
            books.quads[table].Add(entry);
    return books;
}

const CodeBooks& Books() {
    static const CodeBooks books = MakeCodeBooks();
    return books;
}

int Signed(BitReader& bits, int magnitude) {
    return magnitude != 0 && bits.ReadBit() != 0 ? -magnitude : magnitude;
}

int Extended(BitReader& bits, int magnitude, int linbits) {
    return magnitude == 15 && linbits > 0 ? 15 + bits.ReadInt(linbits) : magnitude;
}

void ReadPair(BitReader& bits, std::size_t table, int& first, int& second) {
    const PairTable& description = StandardTables().pairs[table];
    if (description.codes.empty())
        return;
    const PairCode& code = Books().pairs[table].Read(bits);
    first = Signed(bits, Extended(bits, code.x, description.linbits));
    second = Signed(bits, Extended(bits, code.y, description.linbits));
}

int RegionStart(const std::vector<int>& starts, int index) {
    return index > 22 ? kLines : starts[static_cast<std::size_t>(index)];
}

Regions UnclampedRegions(const Header& header, const GranuleInfo& granule) {
    const BandStarts& starts = StandardTables().bands[static_cast<std::size_t>(header.VersionIndex())]
                                                     [static_cast<std::size_t>(header.sampleRateIndex)];
    if (granule.ShortBlocks())
        return header.mpeg25 ? Regions{3 * starts.shortStarts[3], kLines} : Regions{36, kLines};
    if (granule.windowSwitching && header.lsf)
        return header.mpeg25 ? Regions{starts.longStarts[8], kLines} : Regions{54, kLines};
    return {RegionStart(starts.longStarts, granule.region0Count + 1),
            RegionStart(starts.longStarts, granule.region0Count + granule.region1Count + 2)};
}

} // namespace

Regions RegionsOf(const Header& header, const GranuleInfo& granule) {
    const Regions regions = UnclampedRegions(header, granule);
    const int end = 2 * granule.bigValues;
    return {std::min(regions.first, end), std::min(regions.second, end)};
}

QuantisedLines ReadLines(BitReader& bits, const Header& header, const GranuleInfo& granule,
                         std::size_t endBit) {
    QuantisedLines lines;
    const Regions regions = RegionsOf(header, granule);
    const int bigEnd = 2 * granule.bigValues;
    for (int line = 0; line < bigEnd; line += 2) {
        const std::size_t region = line < regions.first ? 0 : line < regions.second ? 1 : 2;
        const auto table = static_cast<std::size_t>(granule.tableSelect[region]);
        const auto at = static_cast<std::size_t>(line);
        ReadPair(bits, table, lines.values[at], lines.values[at + 1]);
    }
    lines.end = bigEnd;
    const CodeBook<QuadCode>& quads = Books().quads[static_cast<std::size_t>(granule.count1Table)];
    while (lines.end <= kLines - 4 && bits.Position() < endBit) {
        const QuadCode& code = quads.Read(bits);
        for (const int magnitude : code.values)
            lines.values[static_cast<std::size_t>(lines.end++)] = Signed(bits, magnitude);
    }
    if (lines.end > bigEnd && bits.Position() > endBit) {
        lines.end -= 4;
        std::fill(lines.values.begin() + lines.end, lines.values.end(), 0);
    }
    return lines;
}

} // namespace test::model
