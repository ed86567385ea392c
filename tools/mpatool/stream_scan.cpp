#include "mpatool/stream_scan.h"

#include "fileio/frame_buffer_reader.h"
#include "index/index_format.h"
#include "mpa/file_header_sources.h"
#include "mpa/frame_walk.h"
#include "mpa/stream_start.h"
#include "mpatool/tool_error.h"
#include "os/error_text.h"
#include "os/file.h"
#include "trcommontoolsr/file_access.h"

#include <algorithm>
#include <vector>

namespace mpatool {

namespace {

struct LoadedIndex {
    std::uint32_t claimedEntries = 0;
    std::vector<trnmpa::MpaIndexEntry> entries;
};

void RequireReadable(const std::wstring& path) {
    const std::wstring reason = os::WhyUnreadable(path);
    if (!reason.empty())
        throw ToolError(path, reason);
}

std::optional<LoadedIndex> LoadIndex(const std::wstring& mediaPath) {
    const std::wstring path = trnmpa::IndexPathFor(mediaPath);
    if (!os::FileExists(path))
        return std::nullopt;
    RequireReadable(path);
    trnmpa::CMpAudioFrameBufferReader file;
    if (file.Open(path) != 1)
        throw ToolError(path, "cannot be opened");
    LoadedIndex index;
    index.claimedEntries = trnmpa::ReadIndexHeader(file).frameCount;
    index.entries = trnmpa::ReadIndexEntries(file, index.claimedEntries);
    return index;
}

/// Takes in the frames one after the other.
class ScanCollector {
public:
    ScanCollector(StreamScan& scan, const LoadedIndex* index) : scan_(scan), index_(index) {}

    void Add(const trnmpa::WalkedFrame& frame) {
        const std::int32_t bitRate = frame.header.bitRate * 1000;
        if (scan_.frames == 0) {
            scan_.firstHeader = frame.header;
            scan_.samplesPerFrame = frame.samplesPerFrame;
            scan_.lowestBitRate = bitRate;
            scan_.highestBitRate = bitRate;
        }
        scan_.lowestBitRate = std::min(scan_.lowestBitRate, bitRate);
        scan_.highestBitRate = std::max(scan_.highestBitRate, bitRate);
        matches_ = matches_ && IsNextEntry(frame.offset);
        scan_.frameBytes += frame.frameBytes;
        ++scan_.frames;
    }

    bool MatchesIndex() const {
        return index_ != nullptr && matches_ &&
               index_->entries.size() == static_cast<std::size_t>(scan_.frames) &&
               index_->entries.size() == index_->claimedEntries;
    }

private:
    bool IsNextEntry(std::int64_t offset) const {
        const auto number = static_cast<std::size_t>(scan_.frames);
        return index_ != nullptr && number < index_->entries.size() &&
               index_->entries[number].frameOffset == offset;
    }

    StreamScan& scan_;
    const LoadedIndex* index_;
    bool matches_ = true;
};

void Walk(trnmpa::FrameWalk walk, StreamScan& scan, const LoadedIndex* index) {
    ScanCollector collector(scan, index);
    while (const auto frame = walk.Next())
        collector.Add(*frame);
    if (scan.index)
        scan.index->matchesFrames = collector.MatchesIndex();
}

void WalkFromIndex(trnmpa::HeaderSource& source, const LoadedIndex& index, const std::wstring& path,
                   StreamScan& scan) {
    scan.index = IndexScan{index.claimedEntries, static_cast<std::int64_t>(index.entries.size()), false};
    if (index.entries.empty())
        throw ToolError(path, "the index beside it lists no frames");
    Walk(trnmpa::FrameWalk(source, index.entries.front().frameOffset), scan, &index);
    if (scan.frames == 0)
        throw ToolError(path, "no MPEG audio frames from the first entry of the index beside it on");
}

void WalkFromStart(trnmpa::HeaderSource& source, const std::wstring& path, StreamScan& scan) {
    const auto start = trnmpa::LocateAudioStart(source);
    if (!start)
        throw ToolError(path, "no MPEG audio frames found");
    scan.hasInfoFrame = start->hasInfoFrame;
    Walk(trnmpa::FrameWalk(source, start->dataStart, start->firstHeader), scan, nullptr);
    if (scan.frames == 0)
        throw ToolError(path, "no whole MPEG audio frame found");
    scan.delaySamples = trnmpa::BuiltInDecoderDelay(scan.firstHeader.layer);
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

StreamScan ScanStream(const std::wstring& path) {
    RequireReadable(path);
    TRCT_FileAccess file;
    if (file.OpenFile(path.c_str(), TRCT_OPEN_FOR_READING) != 1)
        throw ToolError(path, "cannot be opened");
    trnmpa::FileAccessHeaderSource source(file);
    StreamScan scan;
    scan.fileBytes = file.GetLength();
    if (const auto index = LoadIndex(path))
        WalkFromIndex(source, *index, path, scan);
    else
        WalkFromStart(source, path, scan);
    return scan;
}

} // namespace mpatool
