#pragma once

#include <span>

namespace trnmpa {

/// Eight butterflies at each of the first `boundaries` (0 to 31) boundaries between adjacent subbands of 18
/// lines (ISO/IEC 11172-3, 2.4.3.4.10.1), in double precision.
void ReduceAliases(std::span<float, 576> spectrum, int boundaries);

} // namespace trnmpa
