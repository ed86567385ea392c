#include "decoder/layer3/stereo.h"

#include "decoder/kernels/kernel_table.h"
#include "decoder/layer3/spread_intensity.h"
#include "decoder/tables/stereo_tables.h"

#include <algorithm>
#include <utility>

namespace trnmpa {

namespace {

constexpr int kLastLongBand = 21;
constexpr int kLastShortBand = 12;

using Positions = std::span<std::uint8_t, kGranuleLines>;

bool IsZero(std::span<const float, kGranuleLines> lines, const BandSegment& segment) {
    const auto part = lines.subspan(segment.start, segment.width);
    return std::ranges::all_of(part, [](float value) { return value == 0.0f; });
}

/// The right channel's scale factor of a band as intensity position. The largest value of its field means
/// none at the lower sampling frequencies.
std::uint8_t PositionOf(const DecoderHeader& header, const ScaleFactors& factors,
                        const BandSegment& segment) {
    const std::uint8_t value =
        segment.isShort ? factors.shortBand[segment.window][segment.band] : factors.longBand[segment.band];
    if (header.lowSamplingFrequency == 0)
        return std::min(value, kNoIntensity);
    const int bits =
        segment.isShort ? factors.shortBits[segment.window][segment.band] : factors.longBits[segment.band];
    return bits > 0 && value == (1 << bits) - 1 ? kNoIntensity : value;
}

/// Walks one chain of segments (the long bands, or one window of the short bands) from the top to the first
/// that is not zero. True when all were zero.
class IntensityChain {
public:
    IntensityChain(const DecoderHeader& header, const RightChannel& channel,
                   std::span<const float, kGranuleLines> right, Positions positions)
        : header_(header), channel_(channel), right_(right), positions_(positions) {}

    bool Walk(bool isShort, int window) {
        const auto segments = channel_.layout.Segments();
        const BandSegment* pendingLast = nullptr;
        for (auto segment = segments.rbegin(); segment != segments.rend(); ++segment) {
            if (segment->isShort != isShort || segment->window != window)
                continue;
            const bool isZero = IsZero(right_, *segment);
            const std::uint8_t position =
                isZero ? PositionOf(header_, channel_.factors, *segment) : LastBandDefault();
            if (pendingLast != nullptr)
                Mark(*std::exchange(pendingLast, nullptr), position);
            if (!isZero)
                return false;
            if (segment->band == (isShort ? kLastShortBand : kLastLongBand))
                pendingLast = &*segment;
            else
                Mark(*segment, position);
        }
        return true;
    }

private:
    // The last band has no scale factor: it takes the position of the band below it, or this one when that
    // band is not zero.
    std::uint8_t LastBandDefault() const { return header_.lowSamplingFrequency != 0 ? 0 : 3; }

    void Mark(const BandSegment& segment, std::uint8_t position) {
        std::ranges::fill(positions_.subspan(segment.start, segment.width), position);
    }

    const DecoderHeader& header_;
    const RightChannel& channel_;
    std::span<const float, kGranuleLines> right_;
    Positions positions_;
};

IntensityRatio RatioOf(const DecoderHeader& header, const GranuleInfo& rightInfo, int position) {
    if (header.lowSamplingFrequency == 0)
        return {tables::kIntensityRatio[position][0], tables::kIntensityRatio[position][1]};
    const auto& ratio = tables::kLsfIntensityRatio[rightInfo.scaleFactorCompress & 1];
    if (position % 2 != 0)
        return {ratio[(position + 1) / 2], 1.0};
    return {1.0, ratio[position / 2]};
}

/// Applies runs of equal positions.
void ApplyPositions(const DecoderHeader& header, const GranuleInfo& rightInfo, bool isMidSide,
                    std::span<const std::uint8_t> positions, Spectrum left, Spectrum right) {
    for (std::size_t first = 0; first < positions.size();) {
        const std::uint8_t position = positions[first];
        std::size_t last = first + 1;
        while (last < positions.size() && positions[last] == position)
            ++last;
        const auto leftRun = left.subspan(first, last - first);
        const auto rightRun = right.subspan(first, last - first);
        if (position != kNoIntensity)
            SpreadIntensity(leftRun, rightRun, RatioOf(header, rightInfo, position));
        else if (isMidSide)
            Kernels().undoMidSide(leftRun.data(), rightRun.data(), leftRun.size());
        first = last;
    }
}

} // namespace

void FindIntensityPositions(const DecoderHeader& header, const RightChannel& channel,
                            std::span<const float, kGranuleLines> right, Positions positions) {
    std::ranges::fill(positions, kNoIntensity);
    IntensityChain chain(header, channel, right, positions);
    bool reachesLongBands = true;
    if (channel.info.IsShort()) {
        for (int window = 0; window < 3; ++window)
            reachesLongBands &= chain.Walk(true, window);
    }
    // A mixed block's long bands follow only where every window was zero down to them.
    if (reachesLongBands && (!channel.info.IsShort() || channel.info.mixedBlock != 0))
        chain.Walk(false, 0);
}

void ProcessStereo(const DecoderHeader& header, const RightChannel& channel, Spectrum left, Spectrum right,
                   int (&nonZeroCount)[2]) {
    const bool isMidSide = header.IsJointStereo() && (header.modeExtension & 2) != 0;
    const bool isIntensity = header.IsJointStereo() && (header.modeExtension & 1) != 0;
    if (!isMidSide && !isIntensity)
        return;
    const int larger = std::max(nonZeroCount[0], nonZeroCount[1]);
    const auto lines = static_cast<std::size_t>(larger);
    if (isIntensity) {
        std::uint8_t positions[kGranuleLines];
        FindIntensityPositions(header, channel, right, positions);
        ApplyPositions(header, channel.info, isMidSide, std::span(positions).first(lines), left, right);
    } else {
        Kernels().undoMidSide(left.data(), right.data(), lines);
    }
    nonZeroCount[0] = larger;
    nonZeroCount[1] = larger;
}

} // namespace trnmpa
