#include "mpatool/check/check_report.h"
#include "mpatool/check/findings.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <string>

namespace {

using mpatool::Finding;
using mpatool::FindingKind;
using mpatool::FindingList;

Finding At(FindingKind kind, std::int64_t offset, std::int64_t framesBefore, const std::string& detail = "") {
    Finding finding;
    finding.kind = kind;
    finding.offset = offset;
    finding.end = offset + 10;
    finding.bytes = 10;
    finding.frames = 1;
    finding.before = framesBefore;
    finding.detail = detail;
    return finding;
}

TEST(FindingListTest, NeighboursOfOneKindAreOne) {
    FindingList list;
    list.Add(At(FindingKind::kJunk, 0, 5));
    list.Add(At(FindingKind::kCrc, 50, 5));
    list.Add(At(FindingKind::kJunk, 100, 6));
    list.Add(At(FindingKind::kJunk, 300, 8));
    const auto sorted = list.Sorted();
    ASSERT_EQ(sorted.size(), 3u);
    EXPECT_EQ(FindingText(sorted[0]), "junk: 20 bytes in 2 places, up to byte 110");
    EXPECT_EQ(FindingText(sorted[1]), "CRC failure");
    EXPECT_EQ(FindingText(sorted[2]), "junk: 10 bytes");
    EXPECT_EQ(list.Count(FindingKind::kJunk), 2);
}

TEST(FindingListTest, FormatsOfTwoKindsStayApart) {
    FindingList list;
    for (const char* format : {"A", "A", "B", "A"})
        list.Add(At(FindingKind::kFormatChange, 0, 3, format));
    EXPECT_EQ(list.Count(FindingKind::kFormatChange), 3);
    EXPECT_EQ(FindingText(list.Sorted()[0]), "format change: 2 frames of A, not delivered, up to byte 10");
}

TEST(FindingListTest, TagsAreNoDamage) {
    FindingList list;
    list.Add(At(FindingKind::kTrailingTag, 0, 0));
    list.Add(At(FindingKind::kPositions, 0, 0));
    EXPECT_FALSE(list.HasDamage());
    list.Add(At(FindingKind::kTruncated, 0, 0));
    EXPECT_TRUE(list.HasDamage());
}

TEST(FindingListTest, KeepsALimitedNumberAndCountsAll) {
    constexpr std::int64_t kFindings = 1'000'000;
    mpatool::StreamCheckResult result;
    result.format.sampleRate = 44100;
    for (std::int64_t i = 0; i < kFindings; ++i)
        result.findings.Add(At(FindingKind::kCrc, 20 * i, 2 * i));
    // A neighbour of one that is not kept.
    result.findings.Add(At(FindingKind::kCrc, 20 * kFindings, 2 * kFindings - 1));
    EXPECT_EQ(result.findings.Sorted().size(), FindingList::kMostListed);
    EXPECT_EQ(result.findings.Count(FindingKind::kCrc), kFindings);
    EXPECT_EQ(result.findings.Unlisted(), 999'000);
    EXPECT_EQ(FindingText(result.findings.Sorted().back()), "CRC failure") << "nothing is added to the last";
    EXPECT_TRUE(ReadableCheck(L"a", result).ends_with("  and 999,000 more, which are not listed\n"));
    EXPECT_EQ(JsonCheck(L"a", result).at("unlisted"), 999'000);
    EXPECT_EQ(JsonCheck(L"a", result).at("findings").size(), 1000u);
}

} // namespace
