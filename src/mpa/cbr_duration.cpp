#include "mpa/cbr_stream.h"

#include "mpa/saturate.h"

#include <algorithm>
#include <vector>

namespace trnmpa {

namespace {

constexpr std::int64_t kTailBytes = 512 * 1024;

/// The last bytes of the file.
class Tail {
public:
    Tail(HeaderSource& source, std::int64_t fileLength)
        : bytes_(static_cast<std::size_t>(std::clamp<std::int64_t>(fileLength, 0, kTailBytes))),
          base_(fileLength - static_cast<std::int64_t>(bytes_.size())) {
        if (source.SetPosition(base_))
            source.Read(bytes_);
    }

    /// File position of the first byte.
    std::int64_t Base() const { return base_; }

    bool HasHeaderAt(std::int64_t offset) const {
        FrameHeaderBytes header = {};
        if (offset < 0 || offset + static_cast<std::int64_t>(header.size()) > std::ssize(bytes_))
            return false;
        std::copy_n(bytes_.begin() + offset, header.size(), header.begin());
        return IsValidFrameHeader(header);
    }

private:
    std::vector<std::uint8_t> bytes_;
    std::int64_t base_;
};

/// Steps back from the end in whole frames. From the second step on the first frame's offset is left out, so
/// behind a tag the steps leave the frames; the durations that follow from that are the probe's accepted
/// answers.
std::optional<double> EndByLength(const Tail& tail, const CbrStream& stream, std::int32_t samplesPerFrame) {
    const std::int64_t frames = (stream.fileLength - stream.firstFrameOffset) / stream.info.frameBytes;
    std::int64_t back = 1;
    do {
        const std::int64_t lead = back == 1 ? stream.firstFrameOffset : 0;
        const std::int64_t offset = (frames - back) * stream.info.frameBytes + lead - tail.Base();
        if (offset < 0)
            return std::nullopt;
        if (tail.HasHeaderAt(offset))
            return static_cast<double>(frames - back + 1) * samplesPerFrame / stream.info.sampleRate;
    } while (back++ <= frames);
    return std::nullopt;
}

/// Steps back from the end in frame times, and looks a byte around the place that the bit rate gives.
std::optional<double> EndByRate(const Tail& tail, const CbrStream& stream, std::int32_t samplesPerFrame) {
    constexpr int kTries = 3;
    const MpaFrameInfo& info = stream.info;
    const std::int64_t first = stream.firstFrameOffset;
    const std::int32_t byteRate = info.bitRate / 8;
    const std::int64_t frames = SaturatingInt64(static_cast<double>(stream.fileLength - first) * 8.0 /
                                                info.bitRate * info.sampleRate / samplesPerFrame);
    for (std::int64_t back = 1; back <= frames; ++back) {
        const double bytes =
            static_cast<double>(frames - back) * samplesPerFrame / info.sampleRate * byteRate;
        const std::int64_t offset = SaturatingInt64(bytes + static_cast<double>(first)) - tail.Base() - 1;
        if (offset < 0)
            return std::nullopt;
        for (int i = 0; i < kTries; ++i)
            if (tail.HasHeaderAt(offset + i))
                return static_cast<double>(offset + tail.Base() + i - first) / byteRate +
                       static_cast<double>(samplesPerFrame) / info.sampleRate;
    }
    return std::nullopt;
}

} // namespace

std::optional<double> FindCbrEnd(HeaderSource& source, const CbrStream& stream, CbrKind kind) {
    const std::int32_t samplesPerFrame = SamplesPerFrame(stream.info.layer, stream.info.version);
    const Tail tail(source, stream.fileLength);
    switch (kind) {
    case CbrKind::kFixedLength:
        return EndByLength(tail, stream, samplesPerFrame);
    case CbrKind::kByRate:
        return EndByRate(tail, stream, samplesPerFrame);
    case CbrKind::kUnknown:
        break;
    }
    return std::nullopt;
}

} // namespace trnmpa
