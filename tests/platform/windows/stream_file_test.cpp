// What only Windows has: sharing that is enforced, pipes and devices under names of their own.

#include "os/stream_file.h"

#include "support/test_files.h"

#include <gtest/gtest.h>
#include <windows.h>

namespace {

using os::StreamAccess;
using os::StreamFile;
using os::StreamSharing;
using test::Bytes;
using test::Wide;

class StreamSharingTest : public testing::Test {
protected:
    /// Whether somebody else, who shares everything, can open the file.
    bool OthersMay(StreamAccess access) const {
        return StreamFile().Open(path_, access, StreamSharing::kReadersAndWriters);
    }

    const test::ScratchFolder scratch_;
    const std::wstring path_ = Wide(scratch_.Add("a.bin", Bytes{1, 2, 3}));
    StreamFile file_;
};

TEST_F(StreamSharingTest, SaysWhatOthersMay) {
    const struct {
        StreamSharing sharing;
        bool readers;
        bool writers;
    } cases[] = {{StreamSharing::kNone, false, false},
                 {StreamSharing::kReaders, true, false},
                 {StreamSharing::kWriters, false, true},
                 {StreamSharing::kReadersAndWriters, true, true}};
    for (const auto& [sharing, readers, writers] : cases) {
        ASSERT_TRUE(file_.Open(path_, StreamAccess::kReadWrite, sharing));
        EXPECT_EQ(OthersMay(StreamAccess::kRead), readers);
        EXPECT_EQ(OthersMay(StreamAccess::kWrite), writers);
        EXPECT_EQ(OthersMay(StreamAccess::kReadWrite), readers && writers);
    }
}

TEST_F(StreamSharingTest, HasToAllowWhatOthersDo) {
    StreamFile other;
    ASSERT_TRUE(other.Open(path_, StreamAccess::kWrite, StreamSharing::kReadersAndWriters));
    EXPECT_FALSE(file_.Open(path_, StreamAccess::kRead, StreamSharing::kNone));
    EXPECT_FALSE(file_.Open(path_, StreamAccess::kRead, StreamSharing::kReaders));
    EXPECT_TRUE(file_.Open(path_, StreamAccess::kRead, StreamSharing::kWriters));
    EXPECT_FALSE(file_.Create(path_));
}

TEST_F(StreamSharingTest, ACreatedFileIsSharedWithNobody) {
    ASSERT_TRUE(file_.Create(path_));
    for (const auto access : {StreamAccess::kRead, StreamAccess::kWrite, StreamAccess::kReadWrite})
        EXPECT_FALSE(OthersMay(access));
    EXPECT_TRUE(file_.Close());
    EXPECT_TRUE(OthersMay(StreamAccess::kReadWrite));
}

TEST(WindowsStreamFile, PipesAreRefusedAtOnce) {
    const wchar_t* name = L"\\\\.\\pipe\\trnmpafileread stream test";
    const HANDLE pipe = CreateNamedPipeW(name, PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE | PIPE_WAIT,
                                         PIPE_UNLIMITED_INSTANCES, 512, 512, 0, nullptr);
    ASSERT_NE(pipe, INVALID_HANDLE_VALUE);
    StreamFile file;
    EXPECT_FALSE(file.Open(name, StreamAccess::kRead, StreamSharing::kNone));
    EXPECT_FALSE(file.Open(name, StreamAccess::kReadWrite, StreamSharing::kNone));
    EXPECT_FALSE(file.IsOpen());
    CloseHandle(pipe);
}

TEST(WindowsStreamFile, DevicesAreRefused) {
    StreamFile file;
    for (const wchar_t* device : {L"NUL", L"\\\\.\\NUL"}) {
        EXPECT_FALSE(file.Open(device, StreamAccess::kReadWrite, StreamSharing::kReadersAndWriters));
        EXPECT_FALSE(file.Create(device));
    }
}

} // namespace
