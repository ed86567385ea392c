#include "os/windows/extended_path.h"

#include "os/profile.h"
#include "platform/path_samples.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace {

const std::wstring kLong(300, L'x');

TEST(ExtendedPath, ShortPathsStayAsTheyAre) {
    for (const wchar_t* path :
         {L"C:\\a.mp3", L"a.mp3", L"..\\a.mp3", L"C:/a/b.mp3", L"\\\\server\\share\\a.mp3"})
        EXPECT_EQ(os::ExtendedPath(path), path);
}

TEST(ExtendedPath, LongPathsGetThePrefix) {
    EXPECT_EQ(os::ExtendedPath(L"C:\\a\\" + kLong), L"\\\\?\\C:\\a\\" + kLong);
    EXPECT_EQ(os::ExtendedPath(L"C:/a/../b/./" + kLong), L"\\\\?\\C:\\b\\" + kLong);
}

TEST(ExtendedPath, LongSharesGetTheirOwnPrefix) {
    EXPECT_EQ(os::ExtendedPath(L"\\\\server\\share\\" + kLong), L"\\\\?\\UNC\\server\\share\\" + kLong);
    EXPECT_EQ(os::ExtendedPath(L"//server/share/" + kLong), L"\\\\?\\UNC\\server\\share\\" + kLong);
}

TEST(ExtendedPath, LongRelativePathsBecomeAbsolute) {
    const std::wstring here = std::filesystem::current_path().wstring();
    EXPECT_EQ(os::ExtendedPath(kLong), L"\\\\?\\" + here + L"\\" + kLong);
}

TEST(ExtendedPath, PrefixedPathsStayAsTheyAre) {
    EXPECT_EQ(os::ExtendedPath(L"\\\\?\\C:\\" + kLong), L"\\\\?\\C:\\" + kLong);
    EXPECT_EQ(os::ExtendedPath(L"\\\\.\\C:"), L"\\\\.\\C:");
}

TEST(ExtendedPath, NothingForWhatIsNoPath) {
    EXPECT_EQ(os::ExtendedPath(L""), L"");
    EXPECT_EQ(os::ExtendedPath(std::wstring(L"a\0b", 3)), L"");
}

} // namespace
