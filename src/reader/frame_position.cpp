#include "reader/frame_position.h"

#include "mpa/frame_header.h"
#include "mpa/saturate.h"

namespace trnmpa {

namespace {

/// Far beyond any file, and still exact as a double.
constexpr std::int64_t kMostFrames = std::int64_t{1} << 48;

std::optional<std::int64_t> EstimatedFrameOffset(const FrameLayout& layout, std::int64_t frame) {
    const AMPFrameInfo& info = layout.frame;
    const std::int32_t bytesPerValue = info.bitsPerSample / 8;
    if (bytesPerValue <= 0 || info.sampleRate <= 0)
        return std::nullopt;
    const std::int32_t samplesPerFrame = info.pcmBytes / bytesPerValue / (info.stereo != 0 ? 2 : 1);
    const double bytes = static_cast<double>(samplesPerFrame) / info.sampleRate * static_cast<double>(frame) *
                         info.bitRate / 8;
    const double offset = bytes + static_cast<double>(layout.dataStart);
    if (offset >= 9e15)
        return std::nullopt;
    const std::int64_t whole = SaturatingInt64(bytes) + layout.dataStart;
    return whole > 0 ? whole - 1 : whole;
}

} // namespace

std::optional<std::int64_t> ComputedFrameOffset(const FrameLayout& layout, std::int64_t frame) {
    if (frame < 0 || frame > kMostFrames)
        return std::nullopt;
    if (layout.isConstantBitRate)
        return frame * layout.frame.frameBytes + layout.dataStart;
    return EstimatedFrameOffset(layout, frame);
}

bool MiddleFrameMatches(HeaderSource& source, std::int64_t fileLength, const FrameLayout& layout) {
    const std::int32_t frameBytes = layout.frame.frameBytes;
    const FrameHeaderBytes first = ReadFourBytes(source, layout.dataStart);
    const std::int64_t frames = frameBytes > 0 ? (fileLength - layout.dataStart) / frameBytes : 0;
    return SameCbrHeader(first, ReadFourBytes(source, frames / 2 * frameBytes + layout.dataStart));
}

} // namespace trnmpa
