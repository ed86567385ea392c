#include "decoder/layer3/huffman.h"

#include "decoder/tables/huffman_tables.h"
#include "decoder/tables/requantise_tables.h"

#include <algorithm>
#include <array>

namespace trnmpa {

namespace {

constexpr std::uint32_t kFirstMagnitudeTable = 13;
constexpr std::uint32_t kLinbitsEscape = 15;

/// The lookup tables of one pair table; huffman_lookup.py tells how they are made.
struct PairTable {
    explicit PairTable(std::uint32_t table)
        : root(tables::kPairEntry + tables::kPairPlace[table][0]),
          longer(tables::kPairEntry + tables::kPairPlace[table][2]),
          rootShift(64 - static_cast<int>(tables::kPairPlace[table][1])),
          longShift(64 - static_cast<int>(tables::kPairPlace[table][3])) {}

    const std::uint16_t* root;
    const std::uint16_t* longer;
    int rootShift;
    int longShift;
};

/// One pair of tables 1 to 12: at most 13 bits with signs.
inline void ReadSignedPair(BitWindow& window, const PairTable& table, const LineGains& gains,
                           std::size_t pair, float* lines) {
    std::uint32_t entry = table.root[window.Bits() >> table.rootShift];
    if (entry == 0) [[unlikely]]
        entry = table.longer[window.Bits() >> table.longShift];
    window.Skip(static_cast<int>(entry & 63));
    const double gain = gains.OfPair(pair)[1];
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

/// What stands behind a code for one of its lines, by magnitude.
struct LineFields {
    std::uint32_t linbitsMask = 0;
    std::uint8_t linbits = 0;
    std::uint8_t signBits = 0;
};

constexpr std::size_t kMaximumLinbits = 13;
using LineFieldsTable = std::array<std::array<LineFields, 16>, kMaximumLinbits + 1>;

constexpr LineFieldsTable MakeLineFields() {
    LineFieldsTable fields = {};
    for (std::size_t linbits = 0; linbits <= kMaximumLinbits; ++linbits) {
        for (std::size_t magnitude = 1; magnitude < 16; ++magnitude)
            fields[linbits][magnitude].signBits = 1;
        fields[linbits][kLinbitsEscape].linbitsMask = (1u << linbits) - 1;
        fields[linbits][kLinbitsEscape].linbits = static_cast<std::uint8_t>(linbits);
    }
    return fields;
}

/// By linbits of the table.
constexpr LineFieldsTable kLineFields = MakeLineFields();

/// Takes a line's linbits and sign from the low end of a code. Which lines are zero or have linbits is hard
/// to foresee, so there are no branches.
inline float TakeLine(std::uint64_t& code, std::uint32_t magnitude, const LineFields* fields,
                      const double* gain) {
    const LineFields& field = fields[magnitude];
    const std::uint64_t isNegative = code & field.signBits;
    code >>= field.signBits;
    magnitude += static_cast<std::uint32_t>(code) & field.linbitsMask;
    code >>= field.linbits;
    return static_cast<float>(gain[isNegative] * tables::kFourThirdsPower[magnitude]);
}

/// Looks up a code in the long table, where linbits are not counted in.
inline std::uint32_t LongMagnitudeEntry(const BitWindow& window, const PairTable& table,
                                        const LineFields* fields) {
    const std::uint32_t entry = table.longer[window.Bits() >> table.longShift];
    return entry + fields[entry >> 6 & 15].linbits + fields[entry >> 10].linbits;
}

/// One pair of tables 13 to 31. The way from one code's bits to the next one's is a shift, a lookup and a
/// shift; all else may take its time.
inline void ReadMagnitudePair(BitWindow& window, const PairTable& table, const LineFields* fields,
                              const LineGains& gains, std::size_t pair, float* lines) {
    std::uint32_t entry = table.root[window.Bits() >> table.rootShift];
    if (entry == 0) [[unlikely]]
        entry = LongMagnitudeEntry(window, table, fields);
    const int length = static_cast<int>(entry & 63);
    std::uint64_t code = window.Bits() >> (64 - length);
    window.Skip(length);
    const double* gain = gains.OfPair(pair);
    const float second = TakeLine(code, entry >> 10, fields, gain);
    lines[2 * pair] = TakeLine(code, entry >> 6 & 15, fields, gain);
    lines[2 * pair + 1] = second;
}

void ReadMagnitudePairs(BitWindow& bits, std::uint32_t tableNumber, const LineGains& gains, std::size_t pair,
                        std::size_t endPair, float* lines) {
    // The longest code of the tables with linbits has 17 bits.
    static_assert(17 + 2 * (kMaximumLinbits + 1) <= BitWindow::kRefilledBits);
    const PairTable table(tableNumber);
    const LineFields* fields = kLineFields[tables::kHuffmanLinbits[tableNumber]].data();
    BitWindow window = bits;
    for (; pair < endPair; ++pair) {
        window.Refill();
        ReadMagnitudePair(window, table, fields, gains, pair, lines);
    }
    bits = window;
}

bool HasCodes(std::uint32_t table) {
    return table != 0 && table != 4 && table != 14;
}

inline void ScaleQuadruple(const float (&values)[4], const LineGains& gains, std::size_t pair, float* lines) {
    const float low = gains.SingleOfPair(pair);
    const float high = gains.SingleOfPair(pair + 1);
    const float gain[4] = {low, low, high, high};
    for (int i = 0; i < 4; ++i)
        lines[i] = values[i] * gain[i];
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
    else
        ReadMagnitudePairs(window, table, gains, first, end, lines);
}

int ReadQuadruples(BitWindow& bits, bool isTableB, const LineGains& gains, int first, int end,
                   Spectrum spectrum) {
    const std::uint16_t* table = isTableB ? tables::kQuadrupleB : tables::kQuadrupleA;
    const int shift = 64 - (isTableB ? 8 : 10);
    BitWindow window = bits;
    int left = end - window.Position();
    auto line = static_cast<std::size_t>(first);
    while (line + 4 <= kGranuleLines && left > 0) {
        window.Refill();
        const std::uint32_t entry = table[window.Bits() >> shift];
        const int length = static_cast<int>(entry & 15);
        window.Skip(length);
        left -= length;
        ScaleQuadruple(tables::kQuadrupleValues[entry >> 4], gains, line / 2, spectrum.data() + line);
        line += 4;
    }
    bits = window;
    const auto behind = static_cast<int>(line);
    return left < 0 && behind > first ? behind - 4 : behind;
}

} // namespace trnmpa
