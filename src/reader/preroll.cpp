#include "reader/preroll.h"

#include <algorithm>
#include <limits>

namespace trnmpa {

namespace {

constexpr std::int32_t kHeaderAndCrcBytes = 6;

bool IsLayer3(const AMPFrameInfo& stream) {
    return stream.layer == 3;
}

/// How far main_data_begin points back at most.
std::int32_t ReservoirReach(const AMPFrameInfo& stream) {
    return stream.version == 1 ? 511 : 255;
}

std::int32_t SideInfoBytes(const AMPFrameInfo& stream) {
    if (stream.version == 1)
        return stream.stereo != 0 ? 32 : 17;
    return stream.stereo != 0 ? 17 : 9;
}

std::int32_t Length(const MpaIndexEntry& entry) {
    constexpr std::uint32_t kLargest = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(entry.frameBytes, kLargest));
}

} // namespace

std::int32_t MainDataBytes(const AMPFrameInfo& stream, std::int32_t frameBytes) {
    return std::max(frameBytes, 0) - (SideInfoBytes(stream) + kHeaderAndCrcBytes);
}

Preroll PrerollFor(const AMPFrameInfo& stream, std::int32_t frameBytes) {
    if (!IsLayer3(stream))
        return {0, 1};
    const std::int32_t mainData = std::max(MainDataBytes(stream, frameBytes), 1);
    const std::int32_t reach = ReservoirReach(stream);
    const std::int32_t frames = 1 + (reach - 1) / mainData;
    return {frames, stream.version == 1 ? 1 : 2};
}

std::int64_t PrerollStart(const AMPFrameInfo& stream, const Preroll& preroll, std::int64_t target) {
    std::int64_t back = preroll.Frames();
    if (IsLayer3(stream)) {
        // The first frame may be a padded one and the others a byte shorter.
        const std::int32_t shorter = std::max(MainDataBytes(stream, stream.frameBytes) - 1, 1);
        const std::int64_t needed = 1 + (ReservoirReach(stream) - 1) / shorter;
        back = std::max(back, needed + preroll.decodedFrames);
    }
    return target > back ? target - back : 0;
}

std::int64_t PrerollStart(const AMPFrameInfo& stream, std::span<const MpaIndexEntry> frames,
                          std::int64_t target, Preroll& preroll) {
    const auto lengthOf = [&](std::int64_t frame) { return Length(frames[static_cast<std::size_t>(frame)]); };
    preroll = PrerollFor(stream, lengthOf(target));
    if (target >= preroll.decodedFrames)
        preroll = PrerollFor(stream, lengthOf(target - preroll.decodedFrames));
    if (target <= preroll.Frames())
        return 0;
    std::int64_t start = target - preroll.Frames();
    if (!IsLayer3(stream))
        return start;
    // The frames before the target may be shorter than the one that gave the count.
    const std::int32_t reach = ReservoirReach(stream);
    const std::int64_t firstDecoded = target - preroll.decodedFrames;
    const std::int64_t lowest = std::max<std::int64_t>(start - reach, 0);
    std::int64_t mainData = 0;
    for (std::int64_t frame = start; frame < firstDecoded && mainData < reach; ++frame)
        mainData += std::max(MainDataBytes(stream, lengthOf(frame)), 0);
    while (mainData < reach && start > lowest)
        mainData += std::max(MainDataBytes(stream, lengthOf(--start)), 0);
    return start;
}

} // namespace trnmpa
