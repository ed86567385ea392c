#include "mpatool/index/index_progress.h"

#include "support/test_files.h"
#include "tools/tool_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using mpatool::FormatIndexProgress;
using mpatool::IndexedBytes;
using mpatool::IndexProgress;

TEST(IndexProgressTest, BarAndFigures) {
    EXPECT_EQ(
        FormatIndexProgress(
            {.doneBytes = 40'000'000, .totalBytes = 80'000'000, .frames = 95'693, .elapsedSeconds = 0.5}, 99),
        "[====================>                   ]   50%  95,693 frames  80.0 MB/s");
    EXPECT_EQ(FormatIndexProgress({.totalBytes = 100}, 99),
              "[>                                       ]    0%  0 frames");
    EXPECT_EQ(FormatIndexProgress(
                  {.doneBytes = 100, .totalBytes = 100, .frames = 1, .doneFiles = 12, .totalFiles = 12}, 99),
              "[========================================]  100%  1 frame  12/12 files");
}

TEST(IndexProgressTest, PercentageIsTrueForLargeFiles) {
    // A product of 32 bits wraps at 42,949,673.
    const std::string line =
        FormatIndexProgress({.doneBytes = 3'000'000'000, .totalBytes = 4'000'000'000}, 99);
    EXPECT_NE(line.find("  75%  "), std::string::npos) << line;
}

TEST(IndexProgressTest, FitsTheColumns) {
    const IndexProgress progress = {.doneBytes = 50,
                                    .totalBytes = 100,
                                    .frames = 123'456,
                                    .doneFiles = 3,
                                    .totalFiles = 40,
                                    .elapsedSeconds = 0.001};
    for (int columns = -1; columns < 120; ++columns)
        EXPECT_LE(static_cast<int>(FormatIndexProgress(progress, columns).size()), std::max(columns, 0));
}

TEST(IndexProgressTest, OddFiguresDoNoHarm) {
    EXPECT_NE(FormatIndexProgress({.totalBytes = 0, .elapsedSeconds = 1}, 79), "");
    EXPECT_NE(FormatIndexProgress({.doneBytes = 10, .totalBytes = 5}, 79).find("100%"), std::string::npos);
}

TEST(IndexedBytesTest, EndOfTheLastWholeEntry) {
    const test::ScratchFolder scratch;
    test::Bytes index = test::IndexOfSilence(4);
    const std::wstring path = test::Wide(scratch.Add("a.idx", index));
    EXPECT_EQ(IndexedBytes(path), 4 * test::kSilentFrameBytes);
    // A part of the next entry has arrived.
    index.insert(index.end(), {1, 2, 3, 4, 5, 6, 7});
    scratch.Add("a.idx", index);
    EXPECT_EQ(IndexedBytes(path), 4 * test::kSilentFrameBytes);
}

TEST(IndexedBytesTest, BeyondTwoGibibytes) {
    const test::ScratchFolder scratch;
    EXPECT_EQ(IndexedBytes(test::Wide(scratch.Add("a.idx", test::IndexOf({4'294'967'000})))),
              4'294'967'000 + test::kSilentFrameBytes);
}

TEST(IndexedBytesTest, NothingYet) {
    const test::ScratchFolder scratch;
    EXPECT_EQ(IndexedBytes(test::Wide(scratch.Path() / "none.idx")), 0);
    EXPECT_EQ(IndexedBytes(test::Wide(scratch.Path())), 0);
    for (const std::size_t size : {0u, 1u, 27u, 28u, 35u})
        EXPECT_EQ(IndexedBytes(test::Wide(scratch.Add("a.idx", test::Bytes(size, 0xFF)))), 0) << size;
}

} // namespace
