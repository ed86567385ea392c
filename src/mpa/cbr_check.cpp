#include "mpa/cbr_stream.h"

#include "mpa/saturate.h"

#include <algorithm>

namespace trnmpa {

namespace {

/// Whole frames of the first frame's length that the file has room for.
std::int64_t FramesByLength(const CbrStream& stream) {
    return (stream.fileLength - stream.firstFrameOffset) / stream.info.frameBytes;
}

bool HasFixedLength(HeaderSource& source, const CbrStream& stream, const FrameHeaderBytes& reference) {
    const std::int64_t frames = FramesByLength(stream);
    for (int quarter = 1; quarter <= 3; ++quarter) {
        const std::int64_t position = frames * quarter / 4 * stream.info.frameBytes + stream.firstFrameOffset;
        if (!SameCbrHeader(ReadFourBytes(source, position), reference))
            return false;
    }
    return true;
}

bool HasFrameByRate(HeaderSource& source, const CbrStream& stream, const FrameHeaderBytes& reference,
                    int quarter) {
    constexpr int kTries = 3;
    const MpaFrameInfo& info = stream.info;
    const std::int32_t values = info.pcmBytesPerFrame / (info.bitsPerSample / 8);
    const std::int32_t samples = info.stereo == 1 ? values / 2 : values;
    const std::int64_t frame = FramesByLength(stream) * quarter / 4;
    std::int64_t position =
        SaturatingInt64(static_cast<double>(frame) * samples / info.sampleRate * info.bitRate / 8.0);
    if (position > 0)
        --position;
    // Nothing matches behind the end.
    position = std::min(position, stream.fileLength - stream.firstFrameOffset) + stream.firstFrameOffset;
    for (int i = 0; i < kTries && i < stream.fileLength - position; ++i)
        if (SameCbrHeader(ReadFourBytes(source, position + i), reference))
            return true;
    return false;
}

} // namespace

CbrKind CheckCbr(HeaderSource& source, const CbrStream& stream) {
    const FrameHeaderBytes reference = ReadFourBytes(source, stream.firstFrameOffset);
    if (HasFixedLength(source, stream, reference))
        return CbrKind::kFixedLength;
    if (HasFrameByRate(source, stream, reference, 1) && HasFrameByRate(source, stream, reference, 3))
        return CbrKind::kByRate;
    return CbrKind::kUnknown;
}

} // namespace trnmpa
