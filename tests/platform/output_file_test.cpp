#include "os/output_file.h"

#include "os/error_text.h"
#include "os/paths.h"
#include "platform/path_samples.h"
#include "support/test_files.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

using os::PathKind;
using os::WriteResult;
using test::Bytes;
using test::Wide;

class OutputFileTest : public testing::Test {
protected:
    fs::path In(const fs::path& name) const { return scratch_.Path() / name; }

    const test::ScratchFolder scratch_;
};

TEST_F(OutputFileTest, CreateMakesANewFile) {
    const fs::path path = In(u8"Ünï 日本.raw");
    os::OutputFile file;
    ASSERT_TRUE(file.Create(Wide(path))) << os::NarrowToUtf8(file.ErrorText());
    EXPECT_EQ(file.Write(Bytes{1, 2}), WriteResult::kDone);
    EXPECT_EQ(file.Write({}), WriteResult::kDone);
    EXPECT_EQ(file.Write(Bytes{3}), WriteResult::kDone);
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(test::ReadFile(path), (Bytes{1, 2, 3}));
}

TEST_F(OutputFileTest, CreateRefusesATakenName) {
    const fs::path path = scratch_.Add("taken", Bytes{1});
    os::OutputFile file;
    EXPECT_FALSE(file.Create(Wide(path)));
    EXPECT_FALSE(file.ErrorText().empty());
    EXPECT_EQ(test::ReadFile(path), Bytes{1});
}

TEST_F(OutputFileTest, CreateNeedsTheFolder) {
    os::OutputFile file;
    EXPECT_FALSE(file.Create(Wide(In("nowhere") / "file")));
    EXPECT_FALSE(file.ErrorText().empty());
}

TEST_F(OutputFileTest, CreateAlwaysMakesOrEmptiesAFile) {
    const fs::path path = In(u8"Ünï 日本.idx");
    os::OutputFile file;
    ASSERT_TRUE(file.CreateAlways(Wide(path))) << os::NarrowToUtf8(file.ErrorText());
    EXPECT_EQ(file.Write(Bytes{1, 2, 3}), WriteResult::kDone);
    EXPECT_EQ(test::ReadFile(path), (Bytes{1, 2, 3})) << "readers may share it";
    os::OutputFile second;
    ASSERT_TRUE(second.CreateAlways(Wide(path))) << "and so may writers";
    EXPECT_EQ(fs::file_size(path), 0u);
    EXPECT_EQ(second.Write(Bytes{4}), WriteResult::kDone);
    EXPECT_TRUE(second.Close());
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(test::ReadFile(path), Bytes{4});
}

TEST_F(OutputFileTest, CreateAlwaysRefusesWhatIsNoFile) {
    os::OutputFile file;
    EXPECT_FALSE(file.CreateAlways(Wide(scratch_.Path())));
    EXPECT_FALSE(file.CreateAlways(Wide(In("nowhere") / "file")));
    EXPECT_FALSE(file.ErrorText().empty());
    EXPECT_FALSE(file.CreateAlways(L""));
    EXPECT_FALSE(file.CreateAlways(os::kPathSeparator == L'\\' ? L"NUL" : L"/dev/null"));
    EXPECT_FALSE(file.CreateAlways(Wide(In("file")) + L'\0'));
    EXPECT_EQ(file.Write(Bytes{1}), WriteResult::kFailed);
    EXPECT_FALSE(fs::exists(In("file")));
}

TEST_F(OutputFileTest, SetPositionMovesTheNextWrite) {
    os::OutputFile file;
    EXPECT_FALSE(file.SetPosition(0)) << "nothing is open";
    ASSERT_TRUE(file.CreateAlways(Wide(In("file"))));
    EXPECT_EQ(file.Write(Bytes{1, 2, 3, 4}), WriteResult::kDone);
    EXPECT_TRUE(file.SetPosition(1));
    EXPECT_EQ(file.Write(Bytes{7, 8}), WriteResult::kDone);
    EXPECT_FALSE(file.SetPosition(-1));
    EXPECT_TRUE(file.SetPosition(6));
    EXPECT_EQ(file.Write(Bytes{9}), WriteResult::kDone);
    EXPECT_TRUE(file.Close());
    EXPECT_FALSE(file.SetPosition(0));
    EXPECT_EQ(test::ReadFile(In("file")), (Bytes{1, 7, 8, 4, 0, 0, 9}));
}

TEST_F(OutputFileTest, SetPositionReachesBeyondFourGiB) {
    constexpr std::int64_t kFar = (std::int64_t{1} << 32) + 5;
    os::OutputFile file;
    ASSERT_TRUE(file.CreateAlways(Wide(In("file"))));
    EXPECT_TRUE(file.SetPosition(kFar));
    EXPECT_EQ(file.Write(Bytes{9}), WriteResult::kDone);
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(fs::file_size(In("file")), static_cast<std::uintmax_t>(kFar) + 1);
}

TEST_F(OutputFileTest, WritingWithoutAFileFails) {
    os::OutputFile file;
    EXPECT_EQ(file.Write(Bytes{1}), WriteResult::kFailed);
    EXPECT_FALSE(file.ErrorText().empty());
    EXPECT_TRUE(file.Close());
}

TEST_F(OutputFileTest, MovingTakesTheFileAlong) {
    os::OutputFile first;
    ASSERT_TRUE(first.Create(Wide(In("file"))));
    os::OutputFile second = std::move(first);
    EXPECT_EQ(second.Write(Bytes{7}), WriteResult::kDone);
    EXPECT_TRUE(second.Close());
    EXPECT_EQ(test::ReadFile(In("file")), Bytes{7});
}

TEST_F(OutputFileTest, MoveFileToGivesTheName) {
    const fs::path from = scratch_.Add("from", Bytes{1});
    EXPECT_EQ(os::MoveFileTo(Wide(from), Wide(In("to")), false), L"");
    EXPECT_FALSE(fs::exists(from));
    EXPECT_EQ(test::ReadFile(In("to")), Bytes{1});
}

TEST_F(OutputFileTest, MoveFileToReplacesOnlyWhenTold) {
    const fs::path from = scratch_.Add("from", Bytes{1});
    const fs::path to = scratch_.Add("to", Bytes{2});
    EXPECT_NE(os::MoveFileTo(Wide(from), Wide(to), false), L"");
    EXPECT_EQ(test::ReadFile(from), Bytes{1});
    EXPECT_EQ(test::ReadFile(to), Bytes{2});
    EXPECT_EQ(os::MoveFileTo(Wide(from), Wide(to), true), L"");
    EXPECT_FALSE(fs::exists(from));
    EXPECT_EQ(test::ReadFile(to), Bytes{1});
}

TEST_F(OutputFileTest, KindOfPath) {
    const fs::path file = scratch_.Add("file", Bytes{1});
    EXPECT_EQ(os::KindOfPath(Wide(file)), PathKind::kFile);
    EXPECT_EQ(os::KindOfPath(Wide(scratch_.Path())), PathKind::kFolder);
    EXPECT_EQ(os::KindOfPath(Wide(In("missing"))), PathKind::kMissing);
    EXPECT_EQ(os::KindOfPath(Wide(In("nowhere") / "missing")), PathKind::kMissing);
    EXPECT_EQ(os::KindOfPath(os::kPathSeparator == L'\\' ? L"NUL" : L"/dev/null"), PathKind::kDevice);
}

TEST_F(OutputFileTest, IsSameFile) {
    const fs::path file = scratch_.Add("file", Bytes{1});
    const fs::path other = scratch_.Add("other", Bytes{1});
    fs::create_directory(In("folder"));
    EXPECT_TRUE(os::IsSameFile(Wide(file), Wide(In("folder") / ".." / "file")));
    EXPECT_FALSE(os::IsSameFile(Wide(file), Wide(other)));
    EXPECT_FALSE(os::IsSameFile(Wide(file), Wide(In("missing"))));
}

TEST_F(OutputFileTest, TemporaryNamesLieBesideAndDiffer) {
    const fs::path path = In("file");
    const std::wstring first = os::TemporaryNameBeside(Wide(path));
    const std::wstring second = os::TemporaryNameBeside(Wide(path));
    EXPECT_NE(first, second);
    EXPECT_EQ(test::Plain(first).parent_path(), scratch_.Path());
    EXPECT_EQ(os::TemporaryNameBeside(L"file").find(os::kPathSeparator), std::wstring::npos);
}

TEST_F(OutputFileTest, DeleteFileAt) {
    const fs::path file = scratch_.Add("file", Bytes{1});
    EXPECT_TRUE(os::DeleteFileAt(Wide(file)));
    EXPECT_FALSE(os::DeleteFileAt(Wide(file)));
}

TEST_F(OutputFileTest, LongPaths) {
    const test::LongPathFile neighbour(Bytes{1});
    const std::wstring path = neighbour.Folder() + os::kPathSeparator + L"output";
    const std::wstring temporary = os::TemporaryNameBeside(path);
    os::OutputFile file;
    ASSERT_TRUE(file.Create(temporary)) << os::NarrowToUtf8(file.ErrorText());
    EXPECT_EQ(file.Write(Bytes{1, 2}), WriteResult::kDone);
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(os::MoveFileTo(temporary, path, false), L"");
    EXPECT_EQ(os::KindOfPath(path), PathKind::kFile);
    EXPECT_EQ(os::WhyUnreadable(path), L"");
    EXPECT_FALSE(os::IsSameFile(path, neighbour.Path()));
    EXPECT_TRUE(os::DeleteFileAt(path));
}

TEST_F(OutputFileTest, WhyUnreadable) {
    EXPECT_EQ(os::WhyUnreadable(Wide(scratch_.Add("file", Bytes{1}))), L"");
    EXPECT_EQ(os::WhyUnreadable(Wide(scratch_.Path())), L"Is a directory");
    EXPECT_NE(os::WhyUnreadable(Wide(In("missing"))), L"");
}

} // namespace
