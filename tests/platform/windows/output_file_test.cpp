// Sharing, which only this system has.

#include "os/output_file.h"

#include "support/test_files.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <windows.h>

namespace {

namespace fs = std::filesystem;
using test::Bytes;
using test::Wide;

HANDLE Open(const fs::path& path, DWORD access, DWORD sharing) {
    return CreateFileW(path.c_str(), access, sharing, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
}

TEST(WindowsOutputFile, CreateAlwaysNeedsTheSharingOfOthers) {
    const test::ScratchFolder scratch;
    const fs::path path = scratch.Add("file.idx", Bytes{1, 2, 3});
    os::OutputFile file;
    for (const DWORD sharing : {DWORD{0}, DWORD{FILE_SHARE_READ}}) {
        const HANDLE other = Open(path, GENERIC_READ, sharing);
        ASSERT_NE(other, INVALID_HANDLE_VALUE);
        EXPECT_FALSE(file.CreateAlways(Wide(path)));
        EXPECT_FALSE(file.ErrorText().empty());
        CloseHandle(other);
    }
    EXPECT_EQ(test::ReadFile(path), (Bytes{1, 2, 3}));
    const HANDLE other = Open(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
    ASSERT_NE(other, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(file.CreateAlways(Wide(path)));
    CloseHandle(other);
    EXPECT_EQ(fs::file_size(path), 0u);
}

TEST(WindowsOutputFile, CreateAlwaysSharesForReadingAndWritingOnly) {
    const test::ScratchFolder scratch;
    const fs::path path = scratch.Path() / "file.idx";
    os::OutputFile file;
    ASSERT_TRUE(file.CreateAlways(Wide(path)));
    const HANDLE writer = Open(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE);
    EXPECT_NE(writer, INVALID_HANDLE_VALUE);
    CloseHandle(writer);
    EXPECT_EQ(DeleteFileW(path.c_str()), 0);
    EXPECT_TRUE(file.Close());
    EXPECT_NE(DeleteFileW(path.c_str()), 0);
}

} // namespace
