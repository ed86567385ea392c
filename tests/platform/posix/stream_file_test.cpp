// What only POSIX systems have: pipes and devices among the files, a full disk, no sharing.

#include "os/stream_file.h"

#include "platform/posix/file_size_limit.h"
#include "support/test_files.h"

#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using os::StreamAccess;
using os::StreamFile;
using os::StreamSharing;
using test::Bytes;
using test::Wide;

constexpr StreamAccess kAccesses[] = {StreamAccess::kRead, StreamAccess::kWrite, StreamAccess::kReadWrite};

TEST(PosixStreamFile, PipesAreRefusedAtOnce) {
    const test::ScratchFolder scratch;
    const fs::path pipe = scratch.Path() / "pipe.mp3";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    StreamFile file;
    const auto refuseAll = [&] {
        for (const StreamAccess access : kAccesses)
            EXPECT_FALSE(file.Open(Wide(pipe), access, StreamSharing::kNone));
        EXPECT_FALSE(file.Create(Wide(pipe)));
    };
    refuseAll();
    const int otherEnd = ::open(pipe.c_str(), O_RDWR | O_NONBLOCK);
    ASSERT_GE(otherEnd, 0);
    refuseAll();
    ::close(otherEnd);
    EXPECT_TRUE(fs::is_fifo(pipe));
}

TEST(PosixStreamFile, DevicesAreRefused) {
    StreamFile file;
    for (const wchar_t* device : {L"/dev/zero", L"/dev/null", L"/dev/tty"}) {
        for (const StreamAccess access : kAccesses)
            EXPECT_FALSE(file.Open(device, access, StreamSharing::kNone));
        EXPECT_FALSE(file.Create(device));
    }
}

TEST(PosixStreamFile, EverybodyShares) {
    const test::ScratchFolder scratch;
    const std::wstring path = Wide(scratch.Add("a.bin", Bytes{1, 2, 3}));
    StreamFile first;
    ASSERT_TRUE(first.Create(path));
    for (const StreamAccess access : kAccesses) {
        StreamFile second;
        EXPECT_TRUE(second.Open(path, access, StreamSharing::kNone));
    }
    StreamFile third;
    EXPECT_TRUE(third.Create(path));
}

TEST(PosixStreamFile, LinksAreFollowed) {
    const test::ScratchFolder scratch;
    fs::create_symlink(scratch.Add("target.mp3", Bytes{1, 2, 3}), scratch.Path() / "link.mp3");
    StreamFile file;
    EXPECT_TRUE(file.Open(Wide(scratch.Path() / "link.mp3"), StreamAccess::kRead, StreamSharing::kNone));
    EXPECT_EQ(file.Seek(0, 2), 3);
}

TEST(PosixStreamFile, AWriteThatStopsHalfWayGivesWhatPassed) {
    const test::ScratchFolder scratch;
    StreamFile file;
    ASSERT_TRUE(file.Create(Wide(scratch.Path() / "a.bin")));
    const test::FileSizeLimit limit(1000);
    EXPECT_EQ(file.Write(Bytes(600, 1)), 600u);
    EXPECT_EQ(file.Write(Bytes(600, 2)), 400u);
    EXPECT_EQ(file.Write(Bytes(600, 3)), std::nullopt);
    EXPECT_EQ(file.Seek(0, 1), 1000);
}

} // namespace
