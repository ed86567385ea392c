#include "decoder/layer3/huffman.h"

#include "decoder/tables/huffman_tables.h"
#include "decoder/tables/requantise_tables.h"

#include <algorithm>

namespace trnmpa {

namespace {

constexpr std::uint32_t kFirstMagnitudeTable = 13;
constexpr std::uint32_t kFirstTableOfLargeValues = 24;
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

struct Linbits {
    std::uint32_t count;
    std::uint32_t mask;
};

/// How often a table's values have linbits behind them.
enum class Escapes { kNever, kSeldom, kOften };

/// Takes a line's linbits and sign from the low end of a code. Which lines are zero or have linbits is hard
/// to foresee, so this is arithmetic that compilers do not turn into branches.
template <bool kHasLinbits>
inline float TakeLine(std::uint64_t& code, std::uint32_t magnitude, Linbits linbits, const double* gain) {
    const std::uint32_t signBits = (magnitude + 15) >> 4; // 0 for 0, else 1
    const std::uint64_t isNegative = code & signBits;
    code >>= signBits;
    if constexpr (kHasLinbits) {
        const std::uint32_t ifExtended = 0 - ((magnitude + 1) >> 4); // all ones for 15, else 0
        magnitude += static_cast<std::uint32_t>(code) & linbits.mask & ifExtended;
        code >>= linbits.count & ifExtended;
    }
    return static_cast<float>(gain[isNegative] * tables::kFourThirdsPower[magnitude]);
}

template <bool kHasLinbits>
inline void TakeLines(std::uint64_t code, std::uint32_t magnitudes, Linbits linbits, const double* gain,
                      float* lines) {
    const float second = TakeLine<kHasLinbits>(code, magnitudes >> 4, linbits, gain);
    lines[0] = TakeLine<kHasLinbits>(code, magnitudes & 15, linbits, gain);
    lines[1] = second;
}

bool IsExtended(std::uint32_t magnitudes) {
    return (magnitudes & 15) == kLinbitsEscape || magnitudes >> 4 == kLinbitsEscape;
}

/// Looks up a code in the long table, where linbits are not counted in.
template <Escapes kEscapes>
inline std::uint32_t LongMagnitudeEntry(const BitWindow& window, const PairTable& table, Linbits linbits) {
    const std::uint32_t entry = table.longer[window.Bits() >> table.longShift];
    if constexpr (kEscapes == Escapes::kNever)
        return entry;
    const std::uint32_t extensions =
        ((entry >> 6 & 15) == kLinbitsEscape ? 1 : 0) + (entry >> 10 == kLinbitsEscape ? 1 : 0);
    return entry + extensions * linbits.count;
}

/// One pair of tables 13 to 31. The way from one code's bits to the next one's is a shift, a lookup and a
/// shift; all else may take its time.
template <Escapes kEscapes>
inline void ReadMagnitudePair(BitWindow& window, const PairTable& table, Linbits linbits,
                              const LineGains& gains, std::size_t pair, float* lines) {
    std::uint32_t entry = table.root[window.Bits() >> table.rootShift];
    if (entry == 0) [[unlikely]]
        entry = LongMagnitudeEntry<kEscapes>(window, table, linbits);
    const int length = static_cast<int>(entry & 63);
    const std::uint64_t code = window.Bits() >> (64 - length);
    window.Skip(length);
    const std::uint32_t magnitudes = entry >> 6;
    const double* gain = gains.OfPair(pair);
    if (kEscapes == Escapes::kOften || (kEscapes == Escapes::kSeldom && IsExtended(magnitudes)))
        TakeLines<true>(code, magnitudes, linbits, gain, lines + 2 * pair);
    else
        TakeLines<false>(code, magnitudes, linbits, gain, lines + 2 * pair);
}

template <Escapes kEscapes>
void ReadMagnitudePairs(BitWindow& bits, std::uint32_t tableNumber, const LineGains& gains, std::size_t pair,
                        std::size_t endPair, float* lines) {
    // The longest code of the tables with linbits has 17 bits, that of the others 19.
    static_assert(17 + 2 * (13 + 1) <= BitWindow::kRefilledBits && 2 * (19 + 2) <= BitWindow::kRefilledBits);
    constexpr std::size_t kPairsPerRefill = kEscapes == Escapes::kNever ? 2 : 1;
    const PairTable table(tableNumber);
    const std::uint32_t linbitCount = tables::kHuffmanLinbits[tableNumber];
    const Linbits linbits = {linbitCount, (1u << linbitCount) - 1};
    BitWindow window = bits;
    for (; pair + kPairsPerRefill <= endPair; pair += kPairsPerRefill) {
        window.Refill();
        for (std::size_t i = 0; i < kPairsPerRefill; ++i)
            ReadMagnitudePair<kEscapes>(window, table, linbits, gains, pair + i, lines);
    }
    window.Refill();
    if (pair < endPair)
        ReadMagnitudePair<kEscapes>(window, table, linbits, gains, pair, lines);
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
    else if (tables::kHuffmanLinbits[table] == 0)
        ReadMagnitudePairs<Escapes::kNever>(window, table, gains, first, end, lines);
    else if (table < kFirstTableOfLargeValues)
        ReadMagnitudePairs<Escapes::kSeldom>(window, table, gains, first, end, lines);
    else
        ReadMagnitudePairs<Escapes::kOften>(window, table, gains, first, end, lines);
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
