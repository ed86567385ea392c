// What only POSIX systems have: pipes and links among the files, limits that a test can set.

#include "os/output_file.h"

#include "platform/posix/ordinary_user.h"
#include "support/test_files.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using os::WriteResult;
using test::Bytes;
using test::Wide;

TEST(PosixOutputFile, CreateAlwaysRefusesPipesAtOnce) {
    const test::ScratchFolder scratch;
    const fs::path pipe = scratch.Path() / "pipe.idx";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    os::OutputFile file;
    EXPECT_FALSE(file.CreateAlways(Wide(pipe))) << "nobody reads it";
    const int reader = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    EXPECT_FALSE(file.CreateAlways(Wide(pipe))) << "somebody does";
    ::close(reader);
    EXPECT_EQ(file.Write(Bytes{1}), WriteResult::kFailed);
    EXPECT_TRUE(fs::is_fifo(pipe));
}

TEST(PosixOutputFile, CreateAlwaysFollowsLinks) {
    const test::ScratchFolder scratch;
    const fs::path target = scratch.Add("target.idx", Bytes{1, 2, 3});
    const fs::path link = scratch.Path() / "link.idx";
    fs::create_symlink(target, link);
    os::OutputFile file;
    ASSERT_TRUE(file.CreateAlways(Wide(link)));
    EXPECT_EQ(file.Write(Bytes{4}), WriteResult::kDone);
    EXPECT_EQ(test::ReadFile(target), Bytes{4});
    EXPECT_TRUE(fs::is_symlink(link));
}

TEST(PosixOutputFile, CreateAlwaysWithoutPermission) {
    const test::ScratchFolder scratch;
    const fs::path path = scratch.Add("file.idx", Bytes{1, 2, 3});
    fs::permissions(path, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    const test::WithoutRootRights ordinaryUser;
    if (::geteuid() == 0 || ::access(path.c_str(), R_OK) != 0)
        GTEST_SKIP() << "no ordinary user can reach " << scratch.Path() << ": permissions are not tried";
    os::OutputFile file;
    EXPECT_FALSE(file.CreateAlways(Wide(path)));
    EXPECT_FALSE(file.ErrorText().empty());
    EXPECT_EQ(test::ReadFile(path), (Bytes{1, 2, 3}));
}

TEST(PosixOutputFile, AWriteThatDoesNotFitFails) {
    const test::ScratchFolder scratch;
    const fs::path path = scratch.Path() / "file.idx";
    os::OutputFile file;
    ASSERT_TRUE(file.CreateAlways(Wide(path)));
    const auto before = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit = {};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit lowered = {4, limit.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &lowered);
    const WriteResult result = file.Write(Bytes(10, 1));
    ::setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, before);
    EXPECT_EQ(result, WriteResult::kFailed);
    EXPECT_FALSE(file.ErrorText().empty());
    EXPECT_EQ(fs::file_size(path), 4u);
}

} // namespace
