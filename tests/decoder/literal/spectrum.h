/// A granule's spectrum read code by code and bit by bit, then requantised line by line.
#pragma once

#include "decoder/frame_header.h"
#include "decoder/layer3/scale_factors.h"
#include "decoder/layer3/side_info.h"
#include "decoder/literal/reservoir.h"

#include <array>
#include <cstdint>

namespace test::literal {

struct Lines {
    std::array<std::int32_t, 576> value = {};
    int count = 0; ///< lines that were coded; those behind are 0
};

/// `endBitsRemaining` is where the granule's data ends.
Lines ReadLines(Reservoir& bits, const trnmpa::DecoderHeader& header, const trnmpa::GranuleInfo& info,
                int endBitsRemaining);

struct Spectrum {
    std::array<float, 576> value = {};
    int nonZeroCount = 0;
};

Spectrum Requantise(const Lines& lines, const trnmpa::DecoderHeader& header, const trnmpa::GranuleInfo& info,
                    const trnmpa::ScaleFactors& factors);

} // namespace test::literal
