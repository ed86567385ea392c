#include "mpatool/index/index_end.h"

#include "mpatool/output/tool_error.h"
#include "support/test_files.h"

#include <gtest/gtest.h>

using mpatool::RequireReadableBehind;
using mpatool::ToolError;

namespace {

class IndexEnd : public testing::Test {
protected:
    static constexpr std::int64_t kBytes = 10'000;

    void Check(std::int64_t end, std::int64_t mediaBytes = kBytes) const {
        RequireReadableBehind(media_, end, mediaBytes);
    }

    const test::ScratchFolder scratch_;
    const std::wstring media_ = test::Wide(scratch_.Add("media", test::Bytes(kBytes)));
};

} // namespace

TEST_F(IndexEnd, WhatCanBeReadIsTheEnd) {
    EXPECT_NO_THROW(Check(0));
    EXPECT_NO_THROW(Check(9'000));
    EXPECT_NO_THROW(Check(kBytes));
    EXPECT_NO_THROW(Check(kBytes + 400)) << "of a last frame that is cut off";
}

TEST_F(IndexEnd, AFileThatCannotBeReadOnIsNoneSuch) {
    EXPECT_THROW(Check(kBytes, kBytes + 1), ToolError);
    EXPECT_THROW(Check(9'000, kBytes + 4'000), ToolError);
    EXPECT_THROW(RequireReadableBehind(media_ + L"x", 0, 1), ToolError);
}

TEST_F(IndexEnd, OnlyTheReachOfTheSearchCounts) {
    EXPECT_NO_THROW(Check(5'000, kBytes + 4'000));
}
