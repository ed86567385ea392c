// What only POSIX systems have: names that are no text, pipes, permissions that a test can set.

#include "os/file.h"

#include "os/paths.h"
#include "os/shared_library.h"
#include "platform/path_samples.h"
#include "platform/posix/ordinary_user.h"
#include "support/test_files.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

TEST(PosixFile, WithoutReadPermission) {
    const test::ScratchFolder scratch;
    const fs::path open = scratch.Add("open.mp3", test::NumberedBytes(10));
    const fs::path closed = scratch.Add("closed.mp3", test::NumberedBytes(10));
    fs::permissions(open, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    fs::permissions(closed, fs::perms::none);
    const test::WithoutRootRights ordinaryUser;
    os::File file;
    if (::geteuid() == 0 || !file.Open(test::Wide(open)))
        GTEST_SKIP() << "no ordinary user can reach " << scratch.Path() << ": permissions are not tried";
    EXPECT_TRUE(os::IsReadable(test::Wide(open)));
    EXPECT_FALSE(file.Open(test::Wide(closed)));
    EXPECT_FALSE(os::IsReadable(test::Wide(closed)));
    EXPECT_TRUE(os::FileExists(test::Wide(closed)));
}

TEST(PosixFile, NamesThatAreNoText) {
    const test::ScratchFolder scratch;
    const test::Bytes content = test::NumberedBytes(10);
    for (const char* name : {"latin1-\xFC.mp3", "\xFF\xFE", "cut-\xE6\x97"}) {
        const fs::path path = scratch.Path() / name;
        test::WriteFile(path, content);
        os::File file;
        ASSERT_TRUE(file.Open(os::WidenUtf8(path.string()))) << path;
        EXPECT_EQ(file.Length(), 10);
    }
}

TEST(PosixFile, PipesAndDevicesAreRefusedAtOnce) {
    const test::ScratchFolder scratch;
    const fs::path pipe = scratch.Path() / "pipe.mp3";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    os::File file;
    EXPECT_FALSE(file.Open(test::Wide(pipe)));
    EXPECT_FALSE(file.Open(L"/dev/zero"));
    EXPECT_FALSE(file.IsOpen());
}

TEST(PosixFile, LinksAreFollowed) {
    const test::ScratchFolder scratch;
    const fs::path target = scratch.Add("target.mp3", test::NumberedBytes(10));
    fs::create_symlink(target, scratch.Path() / "link.mp3");
    fs::create_symlink(scratch.Path() / "nowhere", scratch.Path() / "dangling.mp3");
    os::File file;
    EXPECT_TRUE(file.Open(test::Wide(scratch.Path() / "link.mp3")));
    EXPECT_FALSE(file.Open(test::Wide(scratch.Path() / "dangling.mp3")));
    EXPECT_FALSE(os::FileExists(test::Wide(scratch.Path() / "dangling.mp3")));
}

TEST(PosixModulePath, StaysRightWhenTheCurrentFolderChanges) {
    const fs::path before = fs::current_path();
    const fs::path folder = test::BinaryFolder() / "bin";
    fs::current_path(folder);
    const std::wstring name = os::SharedLibraryFileName(L"module_path_library");
    os::SharedLibrary library;
    const bool loaded = library.Load(L"./" + name);
    fs::current_path("/");
    std::wstring seen;
    if (const auto modulePath = library.FunctionNamed<const wchar_t* (*)()>("TestModulePath"))
        seen = modulePath();
    fs::current_path(before);
    ASSERT_TRUE(loaded) << os::NarrowToUtf8(library.ErrorText());
    EXPECT_EQ(seen, test::Wide(fs::canonical(folder)) + L"/" + name);
}

} // namespace
