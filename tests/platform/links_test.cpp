#include "os/links.h"

#include "os/output_file.h"
#include "platform/path_samples.h"
#include "support/test_files.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

using test::Bytes;
using test::Wide;

class LinksTest : public testing::Test {
protected:
    void SetUp() override {
        scratch_.Add("file", Bytes{1, 2});
        if (!os::LinkBeside(Wide(In("file")), Wide(In("link"))))
            GTEST_SKIP() << "the file system of " << scratch_.Path() << " has no links";
    }

    fs::path In(const fs::path& name) const { return scratch_.Path() / name; }

    const test::ScratchFolder scratch_;
};

TEST_F(LinksTest, LinkIsTheFile) {
    EXPECT_EQ(test::ReadFile(In("link")), (Bytes{1, 2}));
    EXPECT_TRUE(os::IsSameFile(Wide(In("link")), Wide(In("file"))));
}

TEST_F(LinksTest, DeletingTheLinkLeavesTheFile) {
    EXPECT_TRUE(os::DeleteFileAt(Wide(In("link"))));
    EXPECT_FALSE(fs::exists(In("link")));
    EXPECT_EQ(test::ReadFile(In("file")), (Bytes{1, 2}));
}

TEST_F(LinksTest, TakenNamesStay) {
    scratch_.Add("taken", Bytes{3});
    EXPECT_FALSE(os::LinkBeside(Wide(In("file")), Wide(In("taken"))));
    EXPECT_EQ(test::ReadFile(In("taken")), Bytes{3});
}

TEST_F(LinksTest, MissingFileAndFolderLeaveNothing) {
    EXPECT_FALSE(os::LinkBeside(Wide(In("missing")), Wide(In("other"))));
    EXPECT_FALSE(os::LinkBeside(Wide(scratch_.Path()), Wide(In("other"))));
    EXPECT_FALSE(os::LinkBeside(Wide(In("file")), Wide(In("nowhere") / "other")));
    EXPECT_EQ(os::KindOfPath(Wide(In("other"))), os::PathKind::kMissing);
}

TEST_F(LinksTest, PathsWithAZero) {
    EXPECT_FALSE(os::LinkBeside(Wide(In("file")), Wide(In("zero")) + L'\0'));
    EXPECT_FALSE(os::LinkBeside(Wide(In("file")) + L'\0', Wide(In("zero"))));
    EXPECT_FALSE(fs::exists(In("zero")));
}

TEST_F(LinksTest, AnyName) {
    for (const fs::path& name : test::UnicodeNames()) {
        scratch_.Add(name, Bytes{4});
        const std::wstring link = os::TemporaryNameBeside(Wide(In(name)));
        ASSERT_TRUE(os::LinkBeside(Wide(In(name)), link)) << name;
        EXPECT_TRUE(os::IsSameFile(link, Wide(In(name))));
    }
}

TEST_F(LinksTest, LongPaths) {
    const test::LongPathFile file(Bytes{5});
    const std::wstring link = os::TemporaryNameBeside(file.Path());
    ASSERT_TRUE(os::LinkBeside(file.Path(), link));
    EXPECT_TRUE(os::IsSameFile(link, file.Path()));
    EXPECT_TRUE(os::DeleteFileAt(link));
}

TEST_F(LinksTest, FileThatIsALinkItself) {
    std::error_code noLinks;
    fs::create_directory(In("folder"));
    fs::create_symlink(fs::path("..") / "file", In("folder") / "symbolic", noLinks);
    if (noLinks)
        GTEST_SKIP() << "no symbolic links: " << noLinks.message();
    const fs::path link = In("folder") / "link";
    ASSERT_TRUE(os::LinkBeside(Wide(In("folder") / "symbolic"), Wide(link)));
    EXPECT_EQ(test::ReadFile(link), (Bytes{1, 2}));
    EXPECT_TRUE(os::DeleteFileAt(Wide(link)));
    EXPECT_EQ(test::ReadFile(In("file")), (Bytes{1, 2}));
}

/// Where the attribute forbids deleting, a link could not be taken away again.
TEST_F(LinksTest, ReadOnlyFile) {
    fs::permissions(In("file"), fs::perms::owner_read);
    const std::wstring link = Wide(In("of-read-only"));
    if (os::LinkBeside(Wide(In("file")), link)) {
        EXPECT_TRUE(os::DeleteFileAt(link));
    }
    EXPECT_EQ(os::KindOfPath(link), os::PathKind::kMissing);
    fs::permissions(In("file"), fs::perms::owner_all);
}

} // namespace
