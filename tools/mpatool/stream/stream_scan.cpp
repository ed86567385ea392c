#include "mpatool/stream/stream_scan.h"

#include "mpatool/stream/stream_walk.h"

#include <algorithm>

namespace mpatool {

namespace {

/// Takes in the frames one after the other.
class ScanCollector {
public:
    ScanCollector(StreamScan& scan, std::optional<IndexFile>& index) : scan_(scan), index_(index) {}

    void Add(const trnmpa::WalkedFrame& frame) {
        const std::int32_t bitRate = frame.header.bitRate * 1000;
        scan_.lowestBitRate = std::min(scan_.lowestBitRate, bitRate);
        scan_.highestBitRate = std::max(scan_.highestBitRate, bitRate);
        scan_.isGapless = scan_.isGapless && (scan_.frames == 0 || frame.offset == expectedOffset_);
        expectedOffset_ = frame.offset + frame.frameBytes;
        matches_ = matches_ && IsNextEntry(frame.offset);
        scan_.frameBytes += frame.frameBytes;
        ++scan_.frames;
    }

    bool MatchesIndex() const {
        return index_ && matches_ && index_->EntriesPresent() == scan_.frames &&
               index_->Header().frameCount == scan_.frames;
    }

private:
    bool IsNextEntry(std::int64_t offset) {
        const auto entry = index_ ? index_->Next() : std::nullopt;
        return entry && entry->frameOffset == offset;
    }

    StreamScan& scan_;
    std::optional<IndexFile>& index_;
    std::int64_t expectedOffset_ = 0;
    bool matches_ = true;
};

void DescribeStart(StreamWalk& walk, Decoder decoder, StreamScan& scan) {
    const trnmpa::WalkedFrame& first = walk.First();
    scan.fileBytes = walk.FileBytes();
    scan.hasInfoFrame = walk.HasInfoFrame();
    scan.delaySamples = walk.DelaySamples(decoder);
    scan.firstHeader = first.header;
    scan.samplesPerFrame = first.samplesPerFrame;
    scan.lowestBitRate = first.header.bitRate * 1000;
    scan.highestBitRate = scan.lowestBitRate;
    if (walk.Index())
        scan.index = IndexScan{walk.Index()->Header().frameCount, walk.Index()->EntriesPresent(), false};
}

} // namespace

std::int64_t StreamScan::Samples() const {
    return std::max<std::int64_t>(frames * samplesPerFrame - delaySamples, 0);
}

double StreamScan::Seconds() const {
    return static_cast<double>(Samples()) / firstHeader.sampleRate;
}

double StreamScan::AverageBitRate() const {
    const double seconds = static_cast<double>(frames) * samplesPerFrame / firstHeader.sampleRate;
    return static_cast<double>(frameBytes) * 8 / seconds;
}

StreamScan ScanStream(const std::wstring& path, Decoder decoder) {
    StreamWalk walk(path);
    StreamScan scan;
    DescribeStart(walk, decoder, scan);
    ScanCollector collector(scan, walk.Index());
    while (const auto frame = walk.Next())
        collector.Add(*frame);
    if (scan.index)
        scan.index->matchesFrames = collector.MatchesIndex();
    return scan;
}

} // namespace mpatool
