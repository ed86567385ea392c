/// Bodies of layer II frames (ISO/IEC 11172-3 clauses 2.4.1.6 and 2.4.3.3, ISO/IEC 13818-3 clause 2.4) and of
/// layer I frames as this decoder reads them.
#pragma once

#include "support/model/header.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace test::model {

/// 32 subband samples of each channel, in 16-bit units.
using SampleRow = std::array<std::array<double, 32>, 2>;

struct Layer2Body {
    std::string table; ///< name of the allocation table, "forbidden" when there is none
    std::array<std::array<int, 32>, 2> levels{};                      ///< [channel][subband], 0: no samples
    std::array<std::array<int, 32>, 2> scfsi{};                       ///< [channel][subband]
    std::array<std::array<std::array<int, 3>, 32>, 2> scaleFactors{}; ///< [channel][subband][part], indices
    std::array<std::array<std::array<int, 32>, 36>, 2> quantised{};   ///< [channel][row][subband], centred
    std::vector<SampleRow> rows;                                      ///< 36
};

/// The standard's choice for this header; "forbidden" when it allows none. Lower sampling frequencies: "LSF".
std::string AllocationTableFor(const Header& header);

/// First subband whose samples both channels share, not counting the table's end.
int JointBound(const Header& header);

/// `body` is the frame without header and CRC word. A combination that the standard forbids gives silence.
Layer2Body DecodeLayer2(const Header& header, std::span<const std::uint8_t> body);

/// Twelve rows. Allocation `a` is scaled by the levels of layer II class `a`, not by 2^(a+1) - 1: this
/// decoder's wanted oddity, out of reach as it accepts no layer I header.
std::vector<SampleRow> DecodeLayer1(const Header& header, std::span<const std::uint8_t> body);

} // namespace test::model
