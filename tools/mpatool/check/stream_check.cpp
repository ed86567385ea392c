#include "mpatool/check/stream_check.h"

#include "mpa/file_header_sources.h"
#include "mpa/frame_walk.h"
#include "mpa/header_search.h"
#include "mpa/stream_start.h"
#include "mpatool/check/end_check.h"
#include "mpatool/check/frame_check.h"
#include "mpatool/check/gap_check.h"
#include "mpatool/index/index_compare.h"
#include "mpatool/index/index_verify.h"
#include "mpatool/info/file_tags.h"
#include "mpatool/output/count_text.h"
#include "mpatool/output/tool_error.h"
#include "mpatool/stream/interruptible_source.h"
#include "trcommontoolsr/file_access.h"

#include <algorithm>
#include <utility>

namespace mpatool {

namespace {

using trnmpa::MpaFrameHeader;
using trnmpa::WalkedFrame;

class Checker {
public:
    explicit Checker(const std::wstring& path)
        : path_(path), fileSource_(file_), source_(fileSource_), window_(source_), gaps_(window_, result_) {}

    StreamCheckResult Run() {
        RequireReadable(path_);
        if (file_.OpenFile(path_.c_str(), TRCT_OPEN_FOR_READING) != 1)
            throw ToolError(path_, "cannot be opened");
        result_.fileBytes = file_.GetLength();
        tags_ = FindTags(window_, result_.fileBytes);
        begin_ = tags_.Begin();
        end_ = tags_.End(result_.fileBytes);
        FindStart();
        AddTags(FindingKind::kLeadingTag, tags_.leading);
        LookBetween(begin_, result_.format.firstFrameOffset);
        Walk();
        LookAtEnd();
        AddTags(FindingKind::kTrailingTag, tags_.trailing);
        LookAtIndex();
        return std::move(result_);
    }

private:
    /// Where the module begins, or where frames begin that it does not find by itself.
    void FindStart() {
        const auto chain = FindStream();
        const auto start = trnmpa::LocateAudioStart(source_);
        const bool beginsWithHeader = start && start->firstHeader.firstFrameOffset == begin_;
        // A single header somewhere is chance, though the module takes it for a frame.
        if (!chain && !beginsWithHeader)
            throw ToolError(path_, "no MPEG audio frames found");
        // The analysis measures Layer II at half its length there: what it finds is chance.
        const bool needsIndex = chain && chain->first.layer == 2 && chain->first.lsf != 0;
        const bool opens = start && !needsIndex;
        result_.format = opens ? start->firstHeader : chain->first;
        position_ = opens ? start->dataStart : chain->offset;
        const MpaFrameHeader& format = result_.format;
        result_.samplesPerFrame = trnmpa::SamplesPerFrame(format.layer, format.lsf != 0 ? 2 : 1);
        result_.delaySamples = trnmpa::BuiltInDecoderDelay(format.layer);
        result_.opens = opens;
        if (needsIndex)
            AddAt(FindingKind::kPositions, {position_, 0},
                  "Layer II at such a sampling frequency is read right with an index only");
        else if (!opens)
            AddAt(FindingKind::kUnreadable, {position_, 0},
                  "the module does not find the first frame, which begins here");
        else if (chain && !HaveOneFormat(chain->first, format))
            AddAt(FindingKind::kUnreadable, {format.firstFrameOffset, 0},
                  "by the header here the module takes the stream for " + FormatText(format) + ", it is " +
                      FormatText(chain->first));
    }

    std::optional<FrameChain> FindStream() {
        constexpr std::int64_t kCertainFrames = 3;
        const auto chain = FindChain(window_, begin_, end_, kCertainFrames);
        return chain ? chain : FindChain(window_, begin_, end_);
    }

    void AddAt(FindingKind kind, IndexCompare::Place place, const std::string& detail) {
        Finding finding = result_.At(kind, place.offset, place.offset, place.framesBefore);
        finding.detail = detail;
        result_.findings.Add(finding);
    }

    void AddTags(FindingKind kind, const std::vector<FileTag>& tags) {
        for (const FileTag& tag : tags) {
            Finding finding = result_.At(kind, tag.offset, tag.End());
            finding.detail = tag.name + " tag";
            finding.bytes = tag.bytes;
            result_.findings.Add(finding);
        }
    }

    void Walk() {
        trnmpa::FrameWalk walk(source_, position_, result_.format);
        compare_.emplace(path_);
        while (const auto frame = walk.Next()) {
            compare_->AddDelivered(frame->offset);
            const bool isInTag = frame->offset < begin_ || frame->offset >= end_;
            if (isInTag)
                AddFaulty(FindingKind::kFramesInTag, *frame, "");
            else
                LookAt(*frame);
            ++result_.frames;
        }
        compare_->Finish();
    }

    void LookAt(const WalkedFrame& frame) {
        LookBetween(position_, frame.offset);
        const auto bytes = window_.At(frame.offset, static_cast<std::size_t>(frame.frameBytes));
        const FrameFaults faults = frameCheck_.Check(bytes);
        if (faults.hasWrongCrc)
            AddFaulty(FindingKind::kCrc, frame, "");
        if (faults.missingBytes > 0)
            AddFaulty(FindingKind::kUnderrun, frame,
                      ": the frame lacks " + CountOf(faults.missingBytes, "byte") +
                          " of main data from before it");
        if (faults.excessBytes > 0)
            AddFaulty(FindingKind::kOverrun, frame,
                      ": the frame's main data would end " + CountOf(faults.excessBytes, "byte") +
                          " behind it");
        last_ = frame.header;
        position_ = frame.offset + frame.frameBytes;
    }

    void AddFaulty(FindingKind kind, const WalkedFrame& frame, const std::string& detail) {
        Finding finding = result_.At(kind, frame.offset, frame.offset + frame.frameBytes);
        finding.bytes = frame.frameBytes;
        finding.frames = 1;
        finding.detail = detail;
        result_.findings.Add(finding);
    }

    void LookAtEnd() {
        const std::int64_t cut = FindCutFrame(window_, last_.value_or(result_.format), position_, end_);
        LookBetween(position_, cut);
        if (position_ > end_ && last_)
            AddCutEnd(window_, last_->firstFrameOffset, end_, result_);
        else if (cut < end_)
            AddCutEnd(window_, cut, end_, result_);
        else
            CompareWithEncoder(window_, end_, result_);
    }

    /// One that would be built, and the one beside the file.
    void LookAtIndex() {
        const auto end = compare_->End();
        if (!end)
            AddAt(FindingKind::kPositions, {begin_, 0}, "no index can be built of this file");
        else if (end->offset < end_ - trnmpa::kHeaderSearchBytes)
            AddIndexEnd(*end);
        const auto difference = compare_->FirstDifference();
        if (difference && difference->offset < end_)
            AddAt(FindingKind::kPositions, *difference,
                  "from here on jumps through an index may miss; it lists " +
                      CountOf(compare_->ListedOnly(), "frame") +
                      " that reading in order does not bring, and lacks " +
                      FormatCount(compare_->DeliveredOnly()));
        const IndexVerdict verdict = VerifyIndex(path_, [](std::int64_t, std::int64_t) {});
        result_.hasIndex = verdict.kind != IndexVerdict::Kind::kMissing;
        if (verdict.kind == IndexVerdict::Kind::kStale)
            AddAt(FindingKind::kIndex, {0, 0}, verdict.difference);
    }

    /// The search of an index can step over headers of MPEG 2.5 where nothing is wrong.
    void AddIndexEnd(IndexCompare::Place place) {
        const std::string limit = FormatCount(trnmpa::kHeaderSearchBytes);
        if (longestGap_ >= trnmpa::kHeaderSearchBytes)
            AddAt(FindingKind::kSearchEnds, place,
                  "no frame header in " + limit + " bytes; an index ends here");
        else
            AddAt(FindingKind::kPositions, place,
                  "an index ends here, its search finds no header in " + limit + " bytes");
    }

    void LookBetween(std::int64_t from, std::int64_t to) {
        longestGap_ = std::max(longestGap_, to - from);
        gaps_.Look(last_, from, to);
    }

    const std::wstring path_;
    StreamCheckResult result_;
    TRCT_FileAccess file_;
    trnmpa::FileAccessHeaderSource fileSource_;
    InterruptibleSource source_;
    trnmpa::SourceWindow window_;
    GapCheck gaps_;
    FrameCheck frameCheck_;
    FileTags tags_;
    std::int64_t begin_ = 0; ///< of what lies between the tags
    std::int64_t end_ = 0;
    std::int64_t position_ = 0; ///< the end of the last frame
    std::int64_t longestGap_ = 0;
    std::optional<MpaFrameHeader> last_;
    std::optional<IndexCompare> compare_;
};

} // namespace

std::int64_t StreamCheckResult::SamplesOf(std::int64_t frameCount) const {
    return std::max<std::int64_t>(frameCount * samplesPerFrame - delaySamples, 0);
}

double StreamCheckResult::SecondsOf(std::int64_t frameCount) const {
    return static_cast<double>(SamplesOf(frameCount)) / format.sampleRate;
}

Finding StreamCheckResult::At(FindingKind kind, std::int64_t offset, std::int64_t end) const {
    return At(kind, offset, end, frames);
}

Finding StreamCheckResult::At(FindingKind kind, std::int64_t offset, std::int64_t end,
                              std::int64_t framesBefore) const {
    Finding finding;
    finding.kind = kind;
    finding.offset = offset;
    finding.end = end;
    finding.before = framesBefore;
    finding.seconds = SecondsOf(framesBefore);
    return finding;
}

StreamCheckResult CheckStream(const std::wstring& path) {
    return Checker(path).Run();
}

} // namespace mpatool
