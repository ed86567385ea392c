/// Chooses quantised lines and writes their Huffman codes.
#pragma once

#include "support/bitstream/bit_writer.h"
#include "support/bitstream/options.h"
#include "support/bitstream/random.h"
#include "support/model/header.h"
#include "support/model/side_info.h"

#include <array>

namespace test::bitstream {

/// Lines that must stay 0.
using LineMask = std::array<bool, 576>;

struct SpectrumChoice {
    std::array<int, 576> lines{};
    BitWriter bits;
};

/// Draws lines that the tables, regions and count1 table of `info` can code, as many as fit into
/// `budgetBits`, and sets info.bigValues. No code stands behind the last one, so the granule ends exactly
/// there.
SpectrumChoice ChooseSpectrum(const model::Header& header, model::GranuleInfo& info, const LineMask& silent,
                              std::size_t budgetBits, Random& random);

} // namespace test::bitstream
