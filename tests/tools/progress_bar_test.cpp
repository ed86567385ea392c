#include "mpatool/output/progress_bar.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using mpatool::FormatProgress;
using mpatool::Progress;

TEST(ProgressBarTest, BarAndFigures) {
    EXPECT_EQ(FormatProgress({44100 * 60, 44100 * 120, 44100, 0.5}, 79),
              "[====================>                   ]   50%  1:00 / 2:00  120x");
    EXPECT_EQ(FormatProgress({0, 44100, 44100, 0}, 79),
              "[>                                       ]    0%  0:00 / 0:01");
    EXPECT_EQ(FormatProgress({44100, 44100, 44100, 2}, 79),
              "[========================================]  100%  0:01 / 0:01  0.5x");
}

TEST(ProgressBarTest, FitsTheColumns) {
    const Progress progress = {44100, 44100 * 4, 44100, 0.01};
    EXPECT_EQ(FormatProgress(progress, 50), "[=====>                 ]   25%  0:01 / 0:04  100x");
    EXPECT_EQ(FormatProgress(progress, 30), " 25%  0:01 / 0:04  100x");
    EXPECT_EQ(FormatProgress(progress, 10), " 25%  0:01");
    for (int columns = -1; columns < 120; ++columns)
        EXPECT_LE(static_cast<int>(FormatProgress(progress, columns).size()), std::max(columns, 0));
}

TEST(ProgressBarTest, OddFiguresDoNoHarm) {
    EXPECT_NE(FormatProgress({0, 0, 0, 0}, 79), "");
    EXPECT_NE(FormatProgress({10, 5, 44100, 1}, 79).find("100%"), std::string::npos);
}

} // namespace
