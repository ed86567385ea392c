/// The standard's numbers, read at run time from the CSV files of the decoder's source folder.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <vector>

namespace test::model {

/// One code of tables B.7: `length` bits, the value right-aligned.
struct PairCode {
    int x = 0;
    int y = 0;
    int length = 0;
    std::uint32_t code = 0;
};

struct PairTable {
    int linbits = 0;
    std::vector<PairCode> codes; ///< empty for tables 4 and 14; table 0 has one code of no bits
};

struct QuadCode {
    std::array<int, 4> values{}; ///< v, w, x, y
    int length = 0;
    std::uint32_t code = 0;
};

/// Table B.8: first line of each band and the end. Short starts count the lines of one window.
struct BandStarts {
    std::vector<int> longStarts;  ///< 23 numbers
    std::vector<int> shortStarts; ///< 14 numbers
};

/// One subband of a layer II allocation table.
struct AllocationRow {
    int bits = 0;            ///< width of the allocation field
    std::vector<int> levels; ///< by allocation code; 0 is no samples
};

/// Table B.4.
struct QuantisationClass {
    int levels = 0;
    bool grouped = false;
    int bits = 0; ///< bits of one code (of three samples when grouped)
};

struct Tables {
    std::array<PairTable, 32> pairs;
    std::array<std::vector<QuadCode>, 2> quads;              ///< A, B
    std::array<double, 512> window{};                        ///< D[i]
    std::array<std::array<BandStarts, 3>, 3> bands;          ///< [version: 1, 2, 2.5][sample rate index]
    std::array<std::array<int, 15>, 2> kbpsLayer2{};         ///< [lower sampling frequency][index]
    std::array<std::array<int, 15>, 2> kbpsLayer3{};         ///< [lower sampling frequency][index]
    std::array<std::array<int, 3>, 3> sampleRates{};         ///< Hz [version: 1, 2, 2.5][index]
    std::array<std::array<int, 2>, 16> scaleFactorLengths{}; ///< slen1, slen2 by scalefac_compress
    std::array<std::array<std::array<int, 4>, 3>, 6> partitions{}; ///< [row][long, short, mixed][part]
    std::array<int, 22> preemphasis{};
    std::array<double, 8> aliasCs{};
    std::array<double, 8> aliasCa{};
    std::map<int, QuantisationClass> quantisation;                ///< by number of levels
    std::array<QuantisationClass, 18> classes;                    ///< by class, 0 empty
    std::map<std::string, std::vector<AllocationRow>> allocation; ///< B.2a to B.2d, LSF

    /// Name of the allocation table, or "forbidden", by (version 1 or 2, Hz, channels, bit rate index).
    std::map<std::tuple<int, int, int, int>, std::string> allocationChoice;
};

/// Loaded on first use; throws std::runtime_error when a file is missing or broken.
const Tables& StandardTables();

} // namespace test::model
