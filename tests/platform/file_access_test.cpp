#include "trcommontoolsr/file_access.h"

#include "platform/path_samples.h"
#include "support/test_files.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace {

namespace fs = std::filesystem;
using test::Bytes;

class FileAccess : public testing::Test {
protected:
    FileAccess() {
        fs::create_directories(storage_ / "sub");
        test::WriteFile(storage_ / "clip.mp3", content_);
        test::WriteFile(storage_ / "sub" / "deep.mp3", content_);
    }
    ~FileAccess() override { TRCT_FileAccess::SetStorageFolder(L""); }

    static bool Opens(const std::wstring& path) {
        TRCT_FileAccess file;
        return file.OpenFile(os::ToAutomationString(path), 1) == 1;
    }
    static bool Exists(const std::wstring& path) {
        return TRCT_FileExists(os::ToAutomationString(path)) != 0;
    }

    test::ScratchFolder scratch_;
    const Bytes content_ = test::NumberedBytes(160);
    const fs::path storage_ = scratch_.Path() / "storage";
    const std::wstring secret_ = test::Wide(scratch_.Add("secret.mp3", content_));
};

TEST_F(FileAccess, ReadsAndMoves) {
    TRCT_FileAccess file;
    EXPECT_EQ(file.Initialize(32), 1);
    ASSERT_EQ(file.OpenFile(os::ToAutomationString(secret_), 1), 1);
    Bytes buffer(100);
    EXPECT_EQ(file.GetLength(), 160);
    EXPECT_EQ(file.Read(buffer.data(), 100), 100u);
    EXPECT_EQ(buffer, Bytes(content_.begin(), content_.begin() + 100));
    EXPECT_EQ(file.GetPosition(), 100);
    EXPECT_EQ(file.Read(buffer.data(), 100), 60u);
    EXPECT_EQ(file.Read(buffer.data(), 100), 0u);
    EXPECT_EQ(file.SetPosition(10), 1);
    EXPECT_EQ(file.Read(buffer.data(), 1), 1u);
    EXPECT_EQ(buffer[0], content_[10]);
    EXPECT_EQ(file.SetPosition(-1), 0);
    EXPECT_EQ(file.GetPosition(), 11);
    EXPECT_EQ(file.CloseFile(), 1);
    EXPECT_EQ(file.CloseFile(), 1);
    EXPECT_EQ(file.Read(buffer.data(), 1), 0u);
    EXPECT_EQ(file.SetPosition(0), 0);
    EXPECT_EQ(file.GetPosition(), 0);
    EXPECT_EQ(file.GetLength(), 0);
}

TEST_F(FileAccess, NullsFailCleanly) {
    TRCT_FileAccess file;
    EXPECT_EQ(file.OpenFile(CComBSTR(), 1), 0);
    EXPECT_EQ(TRCT_FileExists(CComBSTR()), 0);
    ASSERT_EQ(file.OpenFile(os::ToAutomationString(secret_), 1), 1);
    EXPECT_EQ(file.Read(nullptr, 10), 0u);
}

TEST_F(FileAccess, FileExistsCountsFilesOnly) {
    EXPECT_TRUE(Exists(secret_));
    EXPECT_FALSE(Exists(test::Wide(storage_)));
    EXPECT_FALSE(Exists(test::Wide(storage_ / "missing")));
    EXPECT_FALSE(Exists(L""));
}

TEST_F(FileAccess, LongAndUnicodePaths) {
    const test::LongPathFile sample(content_);
    EXPECT_TRUE(Opens(sample.Path()));
    EXPECT_TRUE(Exists(sample.Path()));
    for (const fs::path& name : test::UnicodeNames()) {
        const std::wstring path = test::Wide(scratch_.Add(name, content_));
        EXPECT_TRUE(Opens(path)) << name;
        EXPECT_TRUE(Exists(path)) << name;
    }
}

TEST_F(FileAccess, StoragePathsFailWithoutAFolder) {
    EXPECT_FALSE(Opens(L"dqs:\\clip.mp3"));
    EXPECT_FALSE(Exists(L"dqs:\\clip.mp3"));
}

TEST_F(FileAccess, StoragePathsLeadBelowTheFolder) {
    TRCT_FileAccess::SetStorageFolder(test::Wide(storage_));
    for (const wchar_t* path : {L"dqs:\\clip.mp3", L"dqs:\\sub\\deep.mp3", L"dqs:\\sub/deep.mp3",
                                L"dqs:\\\\sub\\\\deep.mp3", L"before/the prefix dqs:\\clip.mp3"}) {
        EXPECT_TRUE(Opens(path)) << test::Bytes(path, path + 1).front();
        EXPECT_TRUE(Exists(path));
    }
    EXPECT_FALSE(Opens(L"dqs:\\missing.mp3"));
    EXPECT_FALSE(Opens(L"dqs:\\"));
    EXPECT_FALSE(Opens(L"dqs:\\sub"));
    EXPECT_FALSE(Exists(L"dqs:\\sub"));
    EXPECT_FALSE(Opens(L"DQS:\\clip.mp3"));
    EXPECT_FALSE(Opens(L"dqs:/clip.mp3"));
}

TEST_F(FileAccess, StoragePathsNeverLeaveTheFolder) {
    TRCT_FileAccess::SetStorageFolder(test::Wide(storage_));
    const std::wstring absolute = test::Wide(fs::absolute(scratch_.Path() / "secret.mp3"));
    for (const std::wstring& rest :
         {std::wstring(L"..\\secret.mp3"), std::wstring(L"sub\\..\\..\\secret.mp3"),
          std::wstring(L"sub/../../secret.mp3"), std::wstring(L".. \\secret.mp3"),
          std::wstring(L"...\\secret.mp3"), std::wstring(L". .\\secret.mp3"), std::wstring(L".\\clip.mp3"),
          std::wstring(L"sub\\.."), absolute, L"dqs:\\" + absolute, L"C:" + absolute}) {
        EXPECT_FALSE(Opens(L"dqs:\\" + rest));
        EXPECT_FALSE(Exists(L"dqs:\\" + rest));
    }
    ASSERT_TRUE(Opens(secret_));
}

TEST_F(FileAccess, StoragePathsWithAZeroAreRefused) {
    TRCT_FileAccess::SetStorageFolder(test::Wide(storage_));
    std::wstring path = L"dqs:\\clip.mp3";
    path += L'\0';
    EXPECT_FALSE(Opens(path));
}

TEST_F(FileAccess, TheFolderMayChangeWhileOthersOpen) {
    const std::wstring folder = test::Wide(storage_);
    TRCT_FileAccess::SetStorageFolder(folder);
    std::thread setter([&folder] {
        for (int round = 0; round < 500; ++round)
            TRCT_FileAccess::SetStorageFolder(folder);
    });
    int opened = 0;
    for (int round = 0; round < 500; ++round)
        opened += Opens(L"dqs:\\clip.mp3") ? 1 : 0;
    setter.join();
    EXPECT_EQ(opened, 500);
}

} // namespace
