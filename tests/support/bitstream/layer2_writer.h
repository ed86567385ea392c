/// Layer II frames (ISO/IEC 11172-3 clause 2.4.1.6).
#pragma once

#include "support/bitstream/frame_head.h"
#include "support/bitstream/stream.h"

namespace test::bitstream {

void AddLayer2Frame(const StreamOptions& options, const model::Header& header, Random& random,
                    Stream& stream);

} // namespace test::bitstream
