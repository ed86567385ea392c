#include "mpatool/check/gap_check.h"

#include "mpa/frame_walk.h"
#include "mpatool/output/count_text.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace mpatool {

namespace {

/// Files that were joined with their tags have these between frames.
std::string TagText(trnmpa::SourceWindow& window, std::int64_t offset) {
    constexpr struct {
        std::string_view mark;
        const char* name;
    } kTags[] = {
        {"ID3", "an ID3v2"}, {"TAG", "an ID3v1"}, {"APETAGEX", "an APE"}, {"LYRICSBEGIN", "a Lyrics3"}};
    for (const auto& tag : kTags) {
        const auto bytes = window.At(offset, tag.mark.size());
        if (std::equal(bytes.begin(), bytes.end(), tag.mark.begin(), tag.mark.end()))
            return std::string(", which begin like ") + tag.name + " tag";
    }
    return {};
}

} // namespace

void GapCheck::Look(const std::optional<trnmpa::MpaFrameHeader>& last, std::int64_t from, std::int64_t to) {
    if (from >= to)
        return;
    if (last) {
        const auto hidden = FindChainWithin(window_, *last, to);
        if (hidden)
            return AddCutFrame(*last, *hidden);
    }
    while (from < to) {
        const auto chain = FindChain(window_, from, to);
        AddJunk(from, chain ? chain->offset : to);
        if (!chain)
            return;
        AddForeignFrames(*chain);
        from = chain->end;
    }
}

void GapCheck::AddCutFrame(const trnmpa::MpaFrameHeader& last, const FrameChain& hidden) {
    const std::int64_t offset = last.firstFrameOffset;
    Finding finding = result_.At(FindingKind::kCutFrame, offset, hidden.end, result_.frames - 1);
    finding.bytes = hidden.end - offset;
    finding.frames = 1;
    finding.detail = "a frame is cut short, " + FormatCount(hidden.offset - offset) + " of its " +
                     CountOf(trnmpa::DecoderFrameBytes(last), "byte") + " are there; it hides " +
                     CountOf(hidden.frames, "frame");
    result_.findings.Add(finding);
}

void GapCheck::AddForeignFrames(const FrameChain& chain) {
    Finding finding = result_.At(FindingKind::kFormatChange, chain.offset, chain.end);
    finding.bytes = chain.end - chain.offset;
    finding.frames = chain.frames;
    finding.detail = FormatText(chain.first);
    result_.findings.Add(finding);
}

void GapCheck::AddJunk(std::int64_t from, std::int64_t to) {
    if (from >= to)
        return;
    Finding finding = result_.At(FindingKind::kJunk, from, to);
    finding.bytes = to - from;
    finding.detail = TagText(window_, from);
    result_.findings.Add(finding);
}

} // namespace mpatool
