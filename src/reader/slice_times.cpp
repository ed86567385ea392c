#include "reader/slice_times.h"

#include <limits>

namespace trnmpa {

namespace {

constexpr std::int64_t kUnitsPerSecond = 10'000'000;
constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();

} // namespace

std::optional<std::int64_t> PcmBytesBefore(std::int64_t time, const WAVEFORMATEX& format) {
    const std::int64_t bytesPerSecond = format.nAvgBytesPerSec;
    if (time < 0 || format.nBlockAlign == 0 || bytesPerSecond == 0)
        return std::nullopt;
    const std::int64_t seconds = time / kUnitsPerSecond;
    // A part of a second times 2^32 fits.
    const std::int64_t rest = time % kUnitsPerSecond * bytesPerSecond / kUnitsPerSecond;
    if (seconds > (kLargest - rest) / bytesPerSecond)
        return std::nullopt;
    const std::int64_t bytes = seconds * bytesPerSecond + rest;
    return bytes - bytes % format.nBlockAlign;
}

std::optional<std::int64_t> PcmBytesBeforeSlice(std::int64_t slice, std::int64_t sliceTime,
                                                const WAVEFORMATEX& format) {
    if (slice < 0 || sliceTime <= 0 || slice > kLargest / sliceTime)
        return std::nullopt;
    return PcmBytesBefore(slice * sliceTime, format);
}

} // namespace trnmpa
