#include "mpatool/check/findings.h"

#include "mpatool/output/count_text.h"

#include <algorithm>

namespace mpatool {

namespace {

struct Name {
    const char* name;
    const char* one;
    const char* many;
};

constexpr std::array<Name, kFindingKinds> kNames = {{
    {"leading tag", "leading tag", "leading tags"},
    {"trailing tag", "trailing tag", "trailing tags"},
    {"positions", "place of doubtful positions", "places of doubtful positions"},
    {"junk", "stretch of junk", "stretches of junk"},
    {"lost sync", "loss of sync", "losses of sync"},
    {"lost sync", "loss of sync", "losses of sync"},
    {"lost sync", "loss of sync", "losses of sync"},
    {"CRC failure", "CRC failure", "CRC failures"},
    {"reservoir underrun", "reservoir underrun", "reservoir underruns"},
    {"reservoir overrun", "reservoir overrun", "reservoir overruns"},
    {"format change", "format change", "format changes"},
    {"truncation", "truncation", "truncations"},
    {"stale index", "stale index", "stale indexes"},
    {"unreadable", "place that cannot be read", "places that cannot be read"},
}};

bool MayMerge(FindingKind kind) {
    switch (kind) {
    case FindingKind::kJunk:
    case FindingKind::kCutFrame:
    case FindingKind::kFramesInTag:
    case FindingKind::kCrc:
    case FindingKind::kUnderrun:
    case FindingKind::kOverrun:
    case FindingKind::kFormatChange:
        return true;
    default:
        return false;
    }
}

bool AreNeighbours(const Finding& last, const Finding& finding) {
    const bool isSame = finding.kind != FindingKind::kFormatChange || last.detail == finding.detail;
    return MayMerge(finding.kind) && isSame && finding.before - last.before <= 1;
}

void Merge(Finding& last, const Finding& finding) {
    last.end = std::max(last.end, finding.end);
    last.bytes += finding.bytes;
    last.frames += finding.frames;
    last.places += finding.places;
    last.before = finding.before;
}

std::string UpTo(const Finding& finding) {
    return ", up to byte " + FormatCount(finding.end);
}

std::string FrameText(const Finding& finding, const std::string& what) {
    if (finding.places == 1)
        return what + finding.detail;
    return what + " in " + CountOf(finding.frames, "frame") + UpTo(finding);
}

} // namespace

const char* FindingName(FindingKind kind) {
    return kNames.at(static_cast<std::size_t>(kind)).name;
}

std::string FindingCountText(FindingKind kind, std::int64_t count) {
    const Name& name = kNames.at(static_cast<std::size_t>(kind));
    return FormatCount(count) + " " + (count == 1 ? name.one : name.many);
}

bool IsDamage(FindingKind kind) {
    return kind != FindingKind::kLeadingTag && kind != FindingKind::kTrailingTag &&
           kind != FindingKind::kPositions;
}

std::string FindingText(const Finding& finding) {
    const std::string name = FindingName(finding.kind);
    switch (finding.kind) {
    case FindingKind::kLeadingTag:
    case FindingKind::kTrailingTag:
        return finding.detail + ", " + CountOf(finding.bytes, "byte");
    case FindingKind::kJunk:
        return name + ": " + CountOf(finding.bytes, "byte") +
               (finding.places > 1 ? " in " + CountOf(finding.places, "place") + UpTo(finding)
                                   : finding.detail);
    case FindingKind::kFramesInTag:
        return name + ": " + CountOf(finding.frames, "frame") + " taken from a tag's bytes";
    case FindingKind::kFormatChange:
        return name + ": " + CountOf(finding.frames, "frame") + " of " + finding.detail + ", not delivered" +
               (finding.places > 1 ? UpTo(finding) : "");
    case FindingKind::kCutFrame:
        return finding.places == 1
                   ? name + ": " + finding.detail
                   : name + ": " + CountOf(finding.frames, "frame") + " cut short" + UpTo(finding);
    case FindingKind::kCrc:
    case FindingKind::kUnderrun:
    case FindingKind::kOverrun:
        return FrameText(finding, name);
    default:
        return name + ": " + finding.detail;
    }
}

void FindingList::Add(const Finding& finding) {
    const auto kind = static_cast<std::size_t>(finding.kind);
    Last& last = last_[kind];
    if (last.exists && AreNeighbours(last.finding, finding)) {
        Merge(last.finding, finding);
        if (last.place < listed_.size())
            listed_[last.place] = last.finding;
        return;
    }
    ++counts_[kind];
    last = {finding, kMostListed, true};
    if (listed_.size() == kMostListed) {
        ++unlisted_;
        return;
    }
    last.place = listed_.size();
    listed_.push_back(finding);
}

std::vector<Finding> FindingList::Sorted() const {
    std::vector<Finding> sorted = listed_;
    std::ranges::stable_sort(sorted, {}, &Finding::offset);
    return sorted;
}

bool FindingList::HasDamage() const {
    for (std::size_t kind = 0; kind < kFindingKinds; ++kind)
        if (counts_[kind] > 0 && IsDamage(static_cast<FindingKind>(kind)))
            return true;
    return false;
}

} // namespace mpatool
