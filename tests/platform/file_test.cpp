#include "os/file.h"

#include "os/paths.h"
#include "platform/path_samples.h"
#include "support/test_files.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <utility>

namespace {

namespace fs = std::filesystem;
using test::Bytes;

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();

class FileTest : public testing::Test {
protected:
    Bytes ReadAll(const os::File& file) {
        Bytes bytes(static_cast<std::size_t>(file.Length()) + 10);
        bytes.resize(file.ReadAt(0, bytes));
        return bytes;
    }

    test::ScratchFolder scratch_;
    const Bytes content_ = test::NumberedBytes(1000);
};

TEST_F(FileTest, ClosedFileGivesNothing) {
    os::File file;
    Bytes buffer(10);
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.Length(), 0);
    EXPECT_EQ(file.ReadAt(0, buffer), 0u);
    file.Close();
}

TEST_F(FileTest, ReadsAnywhere) {
    os::File file;
    ASSERT_TRUE(file.Open(test::Wide(scratch_.Add("a.bin", content_))));
    EXPECT_EQ(file.Length(), 1000);
    Bytes buffer(100);
    EXPECT_EQ(file.ReadAt(500, buffer), 100u);
    EXPECT_EQ(buffer, Bytes(content_.begin() + 500, content_.begin() + 600));
    EXPECT_EQ(file.ReadAt(0, buffer), 100u);
    EXPECT_EQ(buffer, Bytes(content_.begin(), content_.begin() + 100));
}

TEST_F(FileTest, ShortAtTheEndAndNothingBehind) {
    os::File file;
    ASSERT_TRUE(file.Open(test::Wide(scratch_.Add("a.bin", content_))));
    Bytes buffer(100);
    EXPECT_EQ(file.ReadAt(940, buffer), 60u);
    EXPECT_EQ(file.ReadAt(1000, buffer), 0u);
    EXPECT_EQ(file.ReadAt(std::int64_t{1} << 40, buffer), 0u);
    EXPECT_EQ(file.ReadAt(kLargest, buffer), 0u);
    EXPECT_EQ(file.ReadAt(-1, buffer), 0u);
    EXPECT_EQ(file.ReadAt(std::numeric_limits<std::int64_t>::min(), buffer), 0u);
    EXPECT_EQ(file.ReadAt(0, {}), 0u);
}

TEST_F(FileTest, EmptyFileOpens) {
    os::File file;
    Bytes buffer(10);
    ASSERT_TRUE(file.Open(test::Wide(scratch_.Add("empty.bin", {}))));
    EXPECT_EQ(file.Length(), 0);
    EXPECT_EQ(file.ReadAt(0, buffer), 0u);
}

TEST_F(FileTest, RefusesFoldersAndWhatIsNotThere) {
    os::File file;
    EXPECT_FALSE(file.Open(test::Wide(scratch_.Path())));
    EXPECT_FALSE(file.Open(test::Wide(scratch_.Path() / "missing.mp3")));
    EXPECT_FALSE(file.Open(L""));
    EXPECT_FALSE(file.IsOpen());
}

TEST_F(FileTest, RefusesAZeroInThePath) {
    std::wstring path = test::Wide(scratch_.Add("a.bin", content_));
    path += L'\0';
    path += L".mp3";
    os::File file;
    EXPECT_FALSE(file.Open(path));
    EXPECT_FALSE(os::FileExists(path));
    EXPECT_FALSE(os::IsReadable(path));
}

TEST_F(FileTest, AFailedOpenClosesTheEarlierFile) {
    os::File file;
    ASSERT_TRUE(file.Open(test::Wide(scratch_.Add("a.bin", content_))));
    EXPECT_FALSE(file.Open(test::Wide(scratch_.Path() / "missing")));
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.Length(), 0);
}

TEST_F(FileTest, MovesOwnership) {
    os::File first;
    ASSERT_TRUE(first.Open(test::Wide(scratch_.Add("a.bin", content_))));
    os::File second = std::move(first);
    // NOLINTNEXTLINE(bugprone-use-after-move,clang-analyzer-cplusplus.Move): that state is the point
    EXPECT_FALSE(first.IsOpen());
    EXPECT_EQ(ReadAll(second), content_);
    os::File third;
    ASSERT_TRUE(third.Open(test::Wide(scratch_.Add("b.bin", {}))));
    third = std::move(second);
    EXPECT_EQ(ReadAll(third), content_);
}

TEST_F(FileTest, SharesTheFileWithWritersAndDeletion) {
    const fs::path path = scratch_.Add("a.bin", content_);
    os::File file;
    ASSERT_TRUE(file.Open(test::Wide(path)));
    std::ofstream writer(path, std::ios::binary | std::ios::app);
    writer << "more";
    writer.close();
    ASSERT_TRUE(writer);
    EXPECT_EQ(file.Length(), 1004);
    os::File second;
    EXPECT_TRUE(second.Open(test::Wide(path)));
    EXPECT_TRUE(fs::remove(path));
}

TEST_F(FileTest, UnicodeNames) {
    for (const fs::path& name : test::UnicodeNames()) {
        const std::wstring path = test::Wide(scratch_.Add(name, content_));
        os::File file;
        ASSERT_TRUE(file.Open(path)) << name;
        EXPECT_EQ(ReadAll(file), content_) << name;
        EXPECT_TRUE(os::FileExists(path)) << name;
        EXPECT_TRUE(os::IsReadable(path)) << name;
    }
}

TEST_F(FileTest, PathOfMoreThanFourHundredCharacters) {
    const test::LongPathFile sample(content_);
    ASSERT_GT(sample.Path().size(), 400u);
    os::File file;
    ASSERT_TRUE(file.Open(sample.Path()));
    EXPECT_EQ(ReadAll(file), content_);
    EXPECT_TRUE(os::FileExists(sample.Path()));
    EXPECT_TRUE(os::IsReadable(sample.Path()));
    EXPECT_FALSE(os::FileExists(sample.Path() + L"x"));
    EXPECT_FALSE(os::FileExists(sample.Folder()));
    EXPECT_FALSE(file.Open(sample.Folder()));
}

TEST_F(FileTest, RelativePaths) {
    scratch_.Add("a.bin", content_);
    const fs::path relative = fs::relative(scratch_.Path()) / "a.bin";
    ASSERT_TRUE(relative.is_relative());
    os::File file;
    EXPECT_TRUE(file.Open(test::Wide(relative)));
    EXPECT_TRUE(os::FileExists(test::Wide(relative)));
}

TEST_F(FileTest, PositionsBeyondFourGiB) {
    const fs::path path = scratch_.Add("sparse.bin", content_);
    constexpr std::uintmax_t kLength = (std::uintmax_t{1} << 32) + 4096;
    std::error_code error;
    fs::resize_file(path, kLength, error);
    if (error)
        GTEST_SKIP() << "no file of more than 4 GiB can be made here: " << error.message();
    os::File file;
    ASSERT_TRUE(file.Open(test::Wide(path)));
    EXPECT_EQ(file.Length(), static_cast<std::int64_t>(kLength));
    Bytes buffer(100, 1);
    EXPECT_EQ(file.ReadAt((std::int64_t{1} << 32), buffer), 100u);
    EXPECT_EQ(buffer, Bytes(100, 0));
    EXPECT_EQ(file.ReadAt(static_cast<std::int64_t>(kLength) - 10, buffer), 10u);
}

TEST_F(FileTest, FileExistsCountsFilesOnly) {
    EXPECT_TRUE(os::FileExists(test::Wide(scratch_.Add("a.bin", {}))));
    EXPECT_FALSE(os::FileExists(test::Wide(scratch_.Path())));
    EXPECT_FALSE(os::FileExists(test::Wide(scratch_.Path() / "b.bin")));
    EXPECT_FALSE(os::FileExists(L""));
}

TEST_F(FileTest, IsReadableFindsWhatExists) {
    EXPECT_TRUE(os::IsReadable(test::Wide(scratch_.Add("a.bin", {}))));
    EXPECT_FALSE(os::IsReadable(test::Wide(scratch_.Path() / "b.bin")));
    EXPECT_FALSE(os::IsReadable(L""));
}

} // namespace
