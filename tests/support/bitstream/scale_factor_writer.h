/// Chooses and writes layer III scale factors.
#pragma once

#include "support/bitstream/bit_writer.h"
#include "support/bitstream/options.h"
#include "support/bitstream/random.h"
#include "support/bitstream/stream.h"

namespace test::bitstream {

/// What the choice depends on besides the options.
struct GranulePlace {
    const model::Header& header;
    int granule = 0;
    int channel = 0;
    std::array<bool, 4> scfsi{};           ///< of the channel
    const ScaleFactorSet* first = nullptr; ///< of the channel's first granule, for the second one
};

struct ScaleFactorChoice {
    int compress = 0;
    bool preflag = false; ///< that `compress` brings along at the lower sampling frequencies
    ScaleFactorSet set;
    BitWriter bits;
};

/// Takes at most `budgetBits`; when the drawn lengths do not fit, all scale factors are 0.
ScaleFactorChoice ChooseScaleFactors(const Layer3Options& options, const GranulePlace& place,
                                     const model::GranuleInfo& info, std::size_t budgetBits, Random& random);

} // namespace test::bitstream
