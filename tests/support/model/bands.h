/// The scale factor bands of a granule in the order of the bit stream.
#pragma once

#include "support/model/header.h"
#include "support/model/side_info.h"

#include <vector>

namespace test::model {

inline constexpr int kLines = 576;
inline constexpr int kLongWindow = -1;

/// A run of lines with one scale factor.
struct Band {
    int first = 0; ///< line
    int width = 0;
    int number = 0;
    int window = kLongWindow; ///< 0 to 2 in short blocks
};

/// Long blocks: bands 0 to 21. Short blocks: bands 0 to 12, three windows each. Mixed: the long bands below
/// line 36, then from there the short bands from 3 on. (At 8000 Hz these end at line 540; no band holds the
/// rest.)
std::vector<Band> BandsOf(const Header& header, const GranuleInfo& granule);

} // namespace test::model
