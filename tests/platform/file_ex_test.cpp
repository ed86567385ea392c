#include "trcommontoolsr/file_ex.h"

#include "os/paths.h"
#include "platform/path_samples.h"
#include "support/test_files.h"
#include "trcommontoolsr/file_access.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace {

namespace fs = std::filesystem;
using test::Bytes;

class FileEx : public testing::Test {
protected:
    FileEx() { fs::create_directory(storage_); }
    ~FileEx() override { TRCT_FileAccess::SetStorageFolder(L""); }

    static bool Create(TRCT_FileEx& file, const std::wstring& path) {
        return file.Create(os::ToAutomationString(path), 0xC0000000, 3, nullptr, 2, 128, 0) != 0;
    }
    bool Creates(const std::wstring& path) {
        TRCT_FileEx file;
        return Create(file, path);
    }

    const test::ScratchFolder scratch_;
    const fs::path path_ = scratch_.Path() / "file.idx";
    const fs::path storage_ = scratch_.Path() / "storage";
    const Bytes numbers_ = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
};

TEST_F(FileEx, WritesAndMoves) {
    TRCT_FileEx file;
    EXPECT_EQ(file.Initialize(TRCT_FILE_EX_SETTINGS{}), 1);
    ASSERT_TRUE(Create(file, test::Wide(path_)));
    EXPECT_EQ(file.Seek(0, 1), 0);
    EXPECT_EQ(file.Write(numbers_.data(), 10), 10u);
    EXPECT_EQ(file.Seek(0, 1), 10);
    EXPECT_EQ(file.SetPosition(2), 1);
    EXPECT_EQ(file.Seek(0, 1), 2);
    EXPECT_EQ(file.Write(numbers_.data(), 3), 3u);
    EXPECT_EQ(file.Seek(0, 1), 5);
    EXPECT_EQ(file.Write(numbers_.data(), 0), 0u);
    EXPECT_EQ(file.SetPosition(12), 1) << "behind the end";
    EXPECT_EQ(file.Write(numbers_.data(), 1), 1u);
    EXPECT_EQ(file.Close(), 1);
    EXPECT_EQ(test::ReadFile(path_), (Bytes{1, 2, 1, 2, 3, 6, 7, 8, 9, 10, 0, 0, 1}));
}

TEST_F(FileEx, WritesAreThereAtOnce) {
    TRCT_FileEx file;
    ASSERT_TRUE(Create(file, test::Wide(path_)));
    EXPECT_EQ(file.Write(numbers_.data(), 4), 4u);
    EXPECT_EQ(test::ReadFile(path_), (Bytes{1, 2, 3, 4})) << "others may read meanwhile";
}

TEST_F(FileEx, CreateEmptiesWhatIsThere) {
    test::WriteFile(path_, numbers_);
    TRCT_FileEx file;
    ASSERT_TRUE(Create(file, test::Wide(path_)));
    EXPECT_EQ(fs::file_size(path_), 0u);
    EXPECT_EQ(file.Write(numbers_.data(), 2), 2u);
    ASSERT_TRUE(Create(file, test::Wide(path_))) << "its own file, too";
    EXPECT_EQ(fs::file_size(path_), 0u);
    EXPECT_EQ(file.Seek(0, 1), 0);
}

TEST_F(FileEx, OneCombinationOfArgumentsIsServed) {
    test::WriteFile(path_, numbers_);
    TRCT_FileEx file;
    const CComBSTR path = os::ToAutomationString(test::Wide(path_));
    int security = 0;
    EXPECT_EQ(file.Create(path, 0x80000000, 3, nullptr, 2, 128, 0), 0);
    EXPECT_EQ(file.Create(path, 0xC0000000, 0, nullptr, 2, 128, 0), 0);
    EXPECT_EQ(file.Create(path, 0xC0000000, 3, &security, 2, 128, 0), 0);
    EXPECT_EQ(file.Create(path, 0xC0000000, 3, nullptr, 3, 128, 0), 0);
    EXPECT_EQ(file.Create(path, 0xC0000000, 3, nullptr, 2, 0, 0), 0);
    EXPECT_EQ(file.Create(path, 0xC0000000, 3, nullptr, 2, 128, 1), 0);
    EXPECT_EQ(test::ReadFile(path_), numbers_);
    EXPECT_NE(file.Create(path, 0xC0000000, 3, nullptr, 2, 128, 0), 0);
}

TEST_F(FileEx, WithoutAFileEverythingFails) {
    TRCT_FileEx file;
    EXPECT_EQ(file.Write(numbers_.data(), 1), 0u);
    EXPECT_EQ(file.Seek(0, 1), 0);
    EXPECT_EQ(file.SetPosition(0), 0);
    EXPECT_EQ(file.Close(), 1);
    ASSERT_TRUE(Create(file, test::Wide(path_)));
    EXPECT_EQ(file.Write(numbers_.data(), 4), 4u);
    EXPECT_EQ(file.Close(), 1);
    EXPECT_EQ(file.Close(), 1);
    EXPECT_EQ(file.Write(numbers_.data(), 1), 0u);
    EXPECT_EQ(file.Seek(0, 1), 0);
    EXPECT_EQ(file.SetPosition(0), 0);
    EXPECT_EQ(fs::file_size(path_), 4u);
}

TEST_F(FileEx, AFailedCreateClosesTheFormerFile) {
    TRCT_FileEx file;
    ASSERT_TRUE(Create(file, test::Wide(path_)));
    EXPECT_FALSE(Create(file, test::Wide(scratch_.Path() / "nowhere" / "file.idx")));
    EXPECT_EQ(file.Write(numbers_.data(), 1), 0u);
    EXPECT_EQ(fs::file_size(path_), 0u);
}

TEST_F(FileEx, BadCallsAreRefused) {
    TRCT_FileEx file;
    ASSERT_TRUE(Create(file, test::Wide(path_)));
    EXPECT_EQ(file.Write(numbers_.data(), 5), 5u);
    EXPECT_EQ(file.Write(nullptr, 5), 0u);
    EXPECT_EQ(file.SetPosition(-1), 0);
    EXPECT_EQ(file.Seek(0, 1), 5);
    EXPECT_EQ(file.Seek(1, 1), 0);
    EXPECT_EQ(file.Seek(0, 0), 0);
    EXPECT_EQ(file.Seek(0, 1), 5) << "none of them moved";
}

TEST_F(FileEx, OnlyFilesAreMade) {
    std::wstring withZero = test::Wide(path_);
    withZero += L'\0';
    EXPECT_FALSE(Creates(withZero));
    EXPECT_FALSE(Creates(L""));
    EXPECT_FALSE(Creates(test::Wide(storage_)));
    EXPECT_FALSE(Creates(os::kPathSeparator == L'\\' ? L"NUL" : L"/dev/null"));
    TRCT_FileEx file;
    EXPECT_EQ(file.Create(CComBSTR(), 0xC0000000, 3, nullptr, 2, 128, 0), 0);
    EXPECT_FALSE(fs::exists(path_));
}

TEST_F(FileEx, LongAndUnicodePaths) {
    const test::LongPathFile sample(numbers_);
    TRCT_FileEx file;
    ASSERT_TRUE(Create(file, sample.Path()));
    EXPECT_EQ(file.Write(numbers_.data(), 3), 3u);
    EXPECT_EQ(file.Close(), 1);
    TRCT_FileAccess reader;
    ASSERT_EQ(reader.OpenFile(os::ToAutomationString(sample.Path()), 1), 1);
    EXPECT_EQ(reader.GetLength(), 3);
    for (const fs::path& name : test::UnicodeNames()) {
        EXPECT_TRUE(Creates(test::Wide(scratch_.Path() / name))) << name;
        EXPECT_TRUE(fs::exists(scratch_.Path() / name)) << name;
    }
}

TEST_F(FileEx, StoragePathsLeadWhereTheyAreRead) {
    EXPECT_FALSE(Creates(L"dqs:\\clip.idx")) << "no folder is set";
    TRCT_FileAccess::SetStorageFolder(test::Wide(storage_));
    EXPECT_TRUE(Creates(L"dqs:\\clip.idx"));
    EXPECT_TRUE(fs::exists(storage_ / "clip.idx"));
    EXPECT_NE(TRCT_FileExists(os::ToAutomationString(L"dqs:\\clip.idx")), 0);
    EXPECT_FALSE(Creates(L"dqs:\\..\\file.idx"));
    EXPECT_FALSE(fs::exists(path_));
}

TEST_F(FileEx, TheFileIsClosedWithTheObject) {
    ASSERT_TRUE(Creates(test::Wide(path_)));
    fs::rename(path_, scratch_.Path() / "moved.idx");
    EXPECT_TRUE(fs::exists(scratch_.Path() / "moved.idx"));
}

} // namespace
