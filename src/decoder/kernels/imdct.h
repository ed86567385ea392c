#pragma once

#include <span>

namespace trnmpa {

/// The inverse MDCT of one subband with window and overlap (ISO/IEC 11172-3, 2.4.3.4.10.2): `lines` holds the
/// subband's 18 lines with inverted sign, for block type 2 the three windows interleaved. Writes 18 time
/// samples to output[0], output[stride], ... and leaves the second half of the window in `overlap`, whose old
/// content it adds. Double precision inside.
void InverseMdct(std::span<const float, 18> lines, int blockType, std::span<float, 18> overlap, float* output,
                 int stride);

/// The same for a subband of zeros: the old overlap comes out and none remains.
void FlushOverlap(std::span<float, 18> overlap, float* output, int stride);

} // namespace trnmpa
