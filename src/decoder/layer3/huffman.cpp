#include "decoder/layer3/huffman.h"

#include "decoder/tables/huffman_tables.h"
#include "decoder/tables/requantise_tables.h"

#include <algorithm>

namespace trnmpa {

namespace {

constexpr std::uint32_t kFirstMagnitudeTable = 13;
constexpr std::uint32_t kLinbitsEscape = 15;

/// The lookup tables of one pair table; huffman_lookup.py tells how they are made.
class PairTable {
public:
    explicit PairTable(std::uint32_t table)
        : root_(tables::kPairEntry + tables::kPairPlace[table][0]),
          longer_(tables::kPairEntry + tables::kPairPlace[table][2]),
          rootShift_(64 - tables::kPairPlace[table][1]), longShift_(64 - tables::kPairPlace[table][3]) {}

    std::uint32_t LookUp(std::uint64_t bits) const {
        const std::uint32_t entry = root_[bits >> rootShift_];
        if (entry != 0) [[likely]]
            return entry;
        return longer_[bits >> longShift_];
    }

private:
    const std::uint16_t* root_;
    const std::uint16_t* longer_;
    int rootShift_;
    int longShift_;
};

/// One pair of tables 1 to 12: at most 13 bits with signs.
inline void ReadSignedPair(BitWindow& window, const PairTable& table, const LineGains& gains,
                           std::size_t pair, float* lines) {
    const std::uint32_t entry = table.LookUp(window.Bits());
    window.Skip(static_cast<int>(entry & 63));
    const double gain = gains.OfPair(pair);
    lines[2 * pair] = static_cast<float>(gain * tables::kSignedPower[entry >> 6 & 31]);
    lines[2 * pair + 1] = static_cast<float>(gain * tables::kSignedPower[entry >> 11]);
}

void ReadSignedPairs(BitWindow& bits, std::uint32_t tableNumber, const LineGains& gains, std::size_t pair,
                     std::size_t endPair, float* lines) {
    static_assert(4 * 13 <= BitWindow::kRefilledBits);
    const PairTable table(tableNumber);
    BitWindow window = bits;
    for (; pair + 4 <= endPair; pair += 4) {
        window.Refill();
        for (std::size_t i = 0; i < 4; ++i)
            ReadSignedPair(window, table, gains, pair + i, lines);
    }
    window.Refill();
    for (; pair < endPair; ++pair)
        ReadSignedPair(window, table, gains, pair, lines);
    bits = window;
}

/// A line from its magnitude, linbits and sign, without branches: all of them are hard to foresee.
template <bool kHasLinbits>
inline float ReadLine(BitWindow& window, std::uint32_t magnitude, std::uint32_t signBits, int linbits,
                      const LineGains& gains, std::size_t pair) {
    if constexpr (kHasLinbits) {
        const int extension = magnitude == kLinbitsEscape ? linbits : 0;
        magnitude += window.PeekOrNothing(extension);
        window.Skip(extension);
    }
    const std::uint32_t isNegative = window.Peek(1) & signBits;
    window.Skip(static_cast<int>(signBits));
    return static_cast<float>(gains.OfPair(pair, isNegative) * tables::kFourThirdsPower[magnitude]);
}

/// One pair of tables 13 to 31.
template <bool kHasLinbits>
inline void ReadMagnitudePair(BitWindow& window, const PairTable& table, int linbits, const LineGains& gains,
                              std::size_t pair, float* lines) {
    const std::uint32_t entry = table.LookUp(window.Bits());
    window.Skip(static_cast<int>(entry & 31));
    lines[2 * pair] = ReadLine<kHasLinbits>(window, entry >> 5 & 15, entry >> 13 & 1, linbits, gains, pair);
    lines[2 * pair + 1] = ReadLine<kHasLinbits>(window, entry >> 9 & 15, entry >> 14, linbits, gains, pair);
}

template <bool kHasLinbits>
void ReadMagnitudePairs(BitWindow& bits, std::uint32_t tableNumber, const LineGains& gains, std::size_t pair,
                        std::size_t endPair, float* lines) {
    // The longest code of the tables with linbits has 17 bits, that of the others 19.
    static_assert(17 + 2 * (13 + 1) <= BitWindow::kRefilledBits && 2 * (19 + 2) <= BitWindow::kRefilledBits);
    constexpr std::size_t kPairsPerRefill = kHasLinbits ? 1 : 2;
    const PairTable table(tableNumber);
    const int linbits = tables::kHuffmanLinbits[tableNumber];
    BitWindow window = bits;
    for (; pair + kPairsPerRefill <= endPair; pair += kPairsPerRefill) {
        window.Refill();
        for (std::size_t i = 0; i < kPairsPerRefill; ++i)
            ReadMagnitudePair<kHasLinbits>(window, table, linbits, gains, pair + i, lines);
    }
    window.Refill();
    if (pair < endPair)
        ReadMagnitudePair<kHasLinbits>(window, table, linbits, gains, pair, lines);
    bits = window;
}

bool HasCodes(std::uint32_t table) {
    return table != 0 && table != 4 && table != 14;
}

} // namespace

void ReadPairs(BitWindow& window, std::uint32_t table, const LineGains& gains, int firstPair, int pairs,
               Spectrum spectrum) {
    const auto first = static_cast<std::size_t>(firstPair);
    const std::size_t end = first + static_cast<std::size_t>(pairs);
    float* lines = spectrum.data();
    if (!HasCodes(table))
        std::fill(lines + 2 * first, lines + 2 * end, 0.0f);
    else if (table < kFirstMagnitudeTable)
        ReadSignedPairs(window, table, gains, first, end, lines);
    else if (tables::kHuffmanLinbits[table] == 0)
        ReadMagnitudePairs<false>(window, table, gains, first, end, lines);
    else
        ReadMagnitudePairs<true>(window, table, gains, first, end, lines);
}

int ReadQuadruples(BitWindow& bits, bool isTableB, const LineGains& gains, int first, int end,
                   Spectrum spectrum) {
    const std::uint16_t* table = isTableB ? tables::kQuadrupleB : tables::kQuadrupleA;
    const int indexBits = isTableB ? 8 : 10;
    BitWindow window = bits;
    int left = end - window.Position();
    auto line = static_cast<std::size_t>(first);
    float* lines = spectrum.data();
    while (line + 4 <= kGranuleLines && left > 0) {
        window.Refill();
        const std::uint32_t entry = table[window.Peek(indexBits)];
        window.Skip(static_cast<int>(entry & 15));
        left -= static_cast<int>(entry & 15);
        const float* values = tables::kQuadrupleValues[entry >> 4];
        const auto low = static_cast<float>(gains.OfPair(line / 2));
        const auto high = static_cast<float>(gains.OfPair(line / 2 + 1));
        lines[line] = values[0] * low;
        lines[line + 1] = values[1] * low;
        lines[line + 2] = values[2] * high;
        lines[line + 3] = values[3] * high;
        line += 4;
    }
    bits = window;
    const auto behind = static_cast<int>(line);
    return left < 0 && behind > first ? behind - 4 : behind;
}

} // namespace trnmpa
