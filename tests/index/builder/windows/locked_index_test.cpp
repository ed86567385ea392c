/// Indexes that cannot be made or written.
#include "index/builder/index_model.h"
#include "index/builder/index_run.h"
#include "mpa/synthetic_stream.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace {

namespace fs = std::filesystem;
using test::Bytes;
using test::IndexRun;

class Locked {
public:
    Locked(const fs::path& path, DWORD sharing)
        : handle_(CreateFileW(path.c_str(), GENERIC_READ, sharing, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr)) {
        EXPECT_NE(handle_, INVALID_HANDLE_VALUE);
    }
    ~Locked() { CloseHandle(handle_); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

private:
    HANDLE handle_;
};

class LockedIndex : public testing::Test {
protected:
    IndexRun Run(const fs::path& media) {
        TRN_MpaFileIndexCreator creator;
        EXPECT_EQ(creator.Initialize(), 1);
        IndexRun run;
        run.opened = creator.SetInputFile(test::Automation(media));
        run.built = creator.CreateFileIndex();
        run.progress = test::ProgressOf(creator);
        return run;
    }
    void ExpectRefused() {
        const IndexRun run = Run(media_);
        EXPECT_EQ(run.opened, 0);
        EXPECT_EQ(run.built, 1);
        EXPECT_EQ(run.progress.state, TRN_INDEX_FAILED);
    }

    const test::ScratchFolder scratch_;
    const Bytes bytes_ = test::PaddedFrames(100);
    const test::IndexModel model_ = test::ModelOfIndexing(bytes_);
    const fs::path media_ = scratch_.Add("song.mp3", bytes_);
    const fs::path index_ = test::IndexPathOf(media_);
};

TEST_F(LockedIndex, OneThatIsSharedWithNobodyStays) {
    test::WriteFile(index_, Bytes{1, 2, 3});
    {
        const Locked lock(index_, 0);
        ExpectRefused();
    }
    EXPECT_EQ(test::ReadFile(index_), (Bytes{1, 2, 3}));
    {
        const Locked lock(index_, FILE_SHARE_READ);
        ExpectRefused();
    }
    EXPECT_EQ(test::ReadFile(index_), (Bytes{1, 2, 3}));
    EXPECT_EQ(test::RunBuilder(media_).index, model_.index);
}

TEST_F(LockedIndex, OneThatOthersReadIsReplaced) {
    test::WriteFile(index_, Bytes{1, 2, 3});
    {
        const Locked reader(index_, FILE_SHARE_READ | FILE_SHARE_WRITE);
        EXPECT_EQ(Run(media_).progress.state, TRN_INDEX_FINISHED);
    }
    EXPECT_EQ(test::ReadFile(index_), model_.index);
}

TEST_F(LockedIndex, AMediaFileThatIsLockedCostsNoIndex) {
    test::WriteFile(index_, Bytes{1, 2, 3});
    const Locked lock(media_, 0);
    ExpectRefused();
    EXPECT_EQ(test::ReadFile(index_), (Bytes{1, 2, 3}));
}

TEST_F(LockedIndex, AReadOnlyIndexStays) {
    test::WriteFile(index_, Bytes{1, 2, 3});
    ASSERT_NE(SetFileAttributesW(index_.c_str(), FILE_ATTRIBUTE_READONLY), 0);
    const HANDLE writer = CreateFileW(index_.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (writer != INVALID_HANDLE_VALUE) {
        CloseHandle(writer);
        GTEST_SKIP() << "Wine lets root write to read-only files: not tried";
    }
    ExpectRefused();
    EXPECT_EQ(test::ReadFile(index_), (Bytes{1, 2, 3}));
    SetFileAttributesW(index_.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(LockedIndex, AFolderInItsPlace) {
    fs::create_directory(index_);
    ExpectRefused();
}

} // namespace
