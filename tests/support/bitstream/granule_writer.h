/// Chooses one channel of one layer III granule.
#pragma once

#include "support/bitstream/scale_factor_writer.h"

namespace test::bitstream {

struct GranuleChoice {
    model::GranuleInfo info;
    GranuleContent content;
    BitWriter bits; ///< scale factors and Huffman codes
};

/// Takes at most `budgetBits`, and 4095.
GranuleChoice ChooseGranule(const Layer3Options& options, const GranulePlace& place, const BlockChoice& block,
                            std::size_t budgetBits, Random& random);

} // namespace test::bitstream
