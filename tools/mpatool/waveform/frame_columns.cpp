#include "mpatool/waveform/frame_columns.h"

#include "mpa/file_header_sources.h"
#include "mpa/source_window.h"
#include "mpatool/output/tool_error.h"
#include "mpatool/stream/frame_head.h"
#include "mpatool/stream/stream_walk.h"
#include "trcommontoolsr/file_access.h"

#include <algorithm>

namespace mpatool {

namespace {

/// The fronts of frames, read beside the walk that finds them.
class FrameFronts {
public:
    explicit FrameFronts(const std::wstring& file) : source_(access_), window_(source_) {
        if (access_.OpenFile(file.c_str(), TRCT_OPEN_FOR_READING) != 1)
            throw ToolError(file, "cannot be opened");
    }

    std::span<const std::uint8_t> Of(const trnmpa::WalkedFrame& frame) {
        constexpr std::size_t kFront =
            FrameHead::kHeaderBytes + FrameHead::kCrcBytes + trnmpa::SideInfo::kMaximumBytes;
        return window_.At(frame.offset, std::min(kFront, static_cast<std::size_t>(frame.frameBytes)));
    }

private:
    TRCT_FileAccess access_;
    trnmpa::FileAccessHeaderSource source_;
    trnmpa::SourceWindow window_;
};

} // namespace

BlockKind KindOf(const trnmpa::GranuleInfo& granule) {
    if (granule.windowSwitching == 0)
        return BlockKind::kLong;
    if (granule.IsMixedShort())
        return BlockKind::kMixed;
    constexpr std::array kKinds = {BlockKind::kLong, BlockKind::kStart, BlockKind::kShort, BlockKind::kStop};
    return kKinds.at(granule.blockType);
}

void Spread::Add(std::int32_t value, std::int64_t samples) {
    lowest_ = std::min(lowest_, value);
    highest_ = std::max(highest_, value);
    sum_ += static_cast<double>(value) * static_cast<double>(samples);
    samples_ += samples;
}

void FrameColumns::AddBitRate(const SampleRange& samples, std::int32_t kilobits) {
    ForEachColumn(columns_, samples, [&](std::size_t column, std::int64_t count) {
        values_[column].bitRate.Add(kilobits, count);
    });
}

void FrameColumns::AddSideInfo(const SampleRange& samples, const trnmpa::DecoderHeader& header,
                               const trnmpa::SideInfo& sideInfo) {
    // main_data_begin has 9 bits, at the lower sampling frequencies 8.
    reservoirLimit_ = std::max(reservoirLimit_, header.lowSamplingFrequency != 0 ? 255 : 511);
    ForEachColumn(columns_, samples, [&](std::size_t column, std::int64_t count) {
        values_[column].reservoir.Add(static_cast<std::int32_t>(sideInfo.mainDataBegin), count);
    });
    const std::int64_t granuleSamples = samples.Samples() / header.GranuleCount();
    for (int granule = 0; granule < header.GranuleCount(); ++granule) {
        const std::int64_t begin = samples.begin + granule * granuleSamples;
        for (int channel = 0; channel < header.channels; ++channel) {
            const auto kind = static_cast<std::size_t>(KindOf(sideInfo.granule[granule][channel]));
            ForEachColumn(
                columns_, {begin, begin + granuleSamples},
                [&](std::size_t column, std::int64_t count) { values_[column].blocks[kind] += count; });
        }
    }
}

FrameColumns CollectFrames(const std::wstring& file, const Columns& columns, Decoder decoder,
                           bool withBlocks) {
    FrameColumns result(columns);
    StreamWalk walk(file);
    FrameFronts fronts(file);
    SampleRange samples = {0, -std::int64_t{walk.DelaySamples(decoder)}};
    while (samples.end < columns.Range().end) {
        const auto frame = walk.Next();
        if (!frame)
            break;
        samples = {samples.end, samples.end + frame->samplesPerFrame};
        if (samples.end <= columns.Range().begin)
            continue;
        result.AddBitRate(samples, frame->header.bitRate);
        const auto front = fronts.Of(*frame);
        if (!withBlocks || frame->header.layer != 3 || front.size() < FrameHead::kHeaderBytes)
            continue;
        const trnmpa::DecoderHeader header = trnmpa::ParseHeader({front[0], front[1], front[2], front[3]});
        result.AddSideInfo(samples, header, SideInfoOf(header, front));
    }
    return result;
}

} // namespace mpatool
