// Folders in which this user may not write.

#include "mpatool/index/unfinished_index.h"
#include "mpatool/output/tool_error.h"
#include "platform/posix/ordinary_user.h"
#include "support/test_files.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

using mpatool::UnfinishedIndex;
using test::Bytes;
using testing::HasSubstr;

/// A folder without the right to write, which its end gives back.
class UnwritableFolder : public testing::Test {
protected:
    void Close() const {
        fs::permissions(scratch_.Path(), fs::perms::owner_read | fs::perms::owner_exec |
                                             fs::perms::others_read | fs::perms::others_exec);
    }
    void TearDown() override { fs::permissions(scratch_.Path(), fs::perms::owner_all); }

    const test::ScratchFolder scratch_;
};

TEST_F(UnwritableFolder, HasNoPlaceForAnIndex) {
    const fs::path media = scratch_.Add("a.mp3", Bytes{1});
    scratch_.Add("a.mp3.idx", Bytes{2});
    Close();
    const test::WithoutRootRights ordinaryUser;
    if (::geteuid() == 0 || ::access(media.c_str(), R_OK) != 0)
        GTEST_SKIP() << "no ordinary user can reach " << scratch_.Path() << ": permissions are not tried";
    try {
        const UnfinishedIndex place(test::Wide(media), true);
        FAIL() << "the folder can be written";
    } catch (const mpatool::ToolError& error) {
        EXPECT_THAT(error.what(), HasSubstr("a.mp3: no index can be written beside it: Permission denied"));
    }
    EXPECT_EQ(test::ReadFile(scratch_.Path() / "a.mp3.idx"), Bytes{2});
}

} // namespace
