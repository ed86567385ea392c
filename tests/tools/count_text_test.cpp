#include "mpatool/output/count_text.h"

#include <gtest/gtest.h>

namespace {

using mpatool::CountOf;
using mpatool::FormatCount;

TEST(CountTextTest, CommasBetweenThousands) {
    EXPECT_EQ(FormatCount(0), "0");
    EXPECT_EQ(FormatCount(999), "999");
    EXPECT_EQ(FormatCount(1000), "1,000");
    EXPECT_EQ(FormatCount(4294967295), "4,294,967,295");
    EXPECT_EQ(FormatCount(-100), "-100");
    EXPECT_EQ(FormatCount(-123456), "-123,456");
}

TEST(CountTextTest, PluralOfAllButOne) {
    EXPECT_EQ(CountOf(0, "frame"), "0 frames");
    EXPECT_EQ(CountOf(1, "frame"), "1 frame");
    EXPECT_EQ(CountOf(2498, "frame"), "2,498 frames");
}

} // namespace
