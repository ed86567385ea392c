/// Times and slices as places in a stream of PCM.
#pragma once

#include "os/wave_format.h"

#include <cstdint>
#include <optional>

namespace trnmpa {

/// Bytes of PCM before `time` (100 ns, 0 or more), in whole blocks. Nothing when they do not fit 64 bits or
/// the format has no block.
std::optional<std::int64_t> PcmBytesBefore(std::int64_t time, const WAVEFORMATEX& format);

/// Bytes of PCM before slice number `slice` of slices of `sliceTime` (100 ns): a slice is as long as two such
/// places are apart, so that slices do not drift. Nothing for a time that is not positive, and for what does
/// not fit 64 bits.
std::optional<std::int64_t> PcmBytesBeforeSlice(std::int64_t slice, std::int64_t sliceTime,
                                                const WAVEFORMATEX& format);

} // namespace trnmpa
