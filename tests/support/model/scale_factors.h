/// Layer III scale factors (ISO/IEC 11172-3 clause 2.4.2.7, ISO/IEC 13818-3 clause 2.4.3.2).
#pragma once

#include "support/model/bit_reader.h"
#include "support/model/header.h"
#include "support/model/side_info.h"

#include <array>

namespace test::model {

/// Scale factors of one channel of one granule. The lengths say with how many bits each was read; they matter
/// to intensity stereo at the lower sampling frequencies alone and are 0 in MPEG-1.
struct ScaleFactors {
    std::array<int, 22> longBand{};
    std::array<int, 22> longLength{};
    std::array<std::array<int, 3>, 13> shortBand{}; ///< [band][window]
    std::array<int, 13> shortLength{};
    bool preflag = false;
};

/// MPEG-1. `first` holds what the channel's first granule left (all zero for the first granule itself); the
/// groups of long bands that scfsi marks are kept from there.
ScaleFactors ReadScaleFactors(BitReader& bits, const SideInfo& info, int granule, int channel,
                              const ScaleFactors& first);

/// Lower sampling frequencies.
ScaleFactors ReadScaleFactorsLsf(BitReader& bits, const Header& header, const GranuleInfo& granule,
                                 int channel);

} // namespace test::model
