/// Indexes that cannot be made or written.
#include "index/builder/index_model.h"
#include "index/builder/index_run.h"
#include "mpa/synthetic_stream.h"
#include "platform/posix/ordinary_user.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;
using test::Bytes;
using test::IndexRun;

/// No file of this process may grow beyond `bytes`, as on a full disk.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        before_ = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &limit_);
        const rlimit lowered = {bytes, limit_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &lowered);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &limit_);
        std::signal(SIGXFSZ, before_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit limit_ = {};
    void (*before_)(int) = SIG_DFL;
};

/// A folder in which nothing can be made as long as this lives.
class ClosedFolder {
public:
    explicit ClosedFolder(const fs::path& path) : path_(path) {
        fs::permissions(path_, fs::perms::all & ~(fs::perms::owner_write | fs::perms::group_write |
                                                  fs::perms::others_write));
    }
    ~ClosedFolder() { fs::permissions(path_, fs::perms::owner_all); }
    ClosedFolder(const ClosedFolder&) = delete;
    ClosedFolder& operator=(const ClosedFolder&) = delete;

private:
    const fs::path path_;
};

class RefusedIndex : public testing::Test {
protected:
    void ExpectRefused() { ExpectRefused(media_); }
    void ExpectRefused(const fs::path& media) {
        const IndexRun run = RunWithoutReading(media);
        EXPECT_EQ(run.opened, 0);
        EXPECT_EQ(run.built, 1);
        EXPECT_EQ(run.progress.state, TRN_INDEX_FAILED);
        EXPECT_EQ(test::ReadFile(media), bytes_);
    }
    /// As RunBuilder, which would want to read what stands there.
    IndexRun RunWithoutReading(const fs::path& media) {
        TRN_MpaFileIndexCreator creator;
        EXPECT_EQ(creator.Initialize(), 1);
        IndexRun run;
        run.opened = creator.SetInputFile(test::Automation(media));
        run.built = creator.CreateFileIndex();
        run.progress = test::ProgressOf(creator);
        return run;
    }

    const test::ScratchFolder scratch_;
    const Bytes bytes_ = test::PaddedFrames(6000);
    const test::IndexModel model_ = test::ModelOfIndexing(bytes_);
    const fs::path media_ = scratch_.Add("song.mp3", bytes_);
    const fs::path index_ = test::IndexPathOf(media_);
};

TEST_F(RefusedIndex, AFullDiskGivesAFailedRun) {
    const auto whole = static_cast<rlim_t>(model_.index.size());
    for (const rlim_t room : {rlim_t{0}, rlim_t{1}, rlim_t{27}, rlim_t{28}, rlim_t{29}, rlim_t{1000},
                              rlim_t{32768 + 28}, rlim_t{32768 + 29}, whole - 8, whole - 1, whole}) {
        IndexRun run;
        {
            const FileSizeLimit limit(room);
            run = test::RunBuilder(media_);
        }
        EXPECT_EQ(run.opened, room >= 28 ? 1 : 0) << room;
        EXPECT_EQ(run.built, 1);
        EXPECT_EQ(run.index.size(), room) << "what there was room for";
        if (room == whole) {
            EXPECT_EQ(run.progress.state, TRN_INDEX_FINISHED);
            EXPECT_EQ(run.index, model_.index);
        } else {
            EXPECT_EQ(run.progress.state, TRN_INDEX_FAILED) << room;
            const Bytes header(run.index.begin(),
                               run.index.begin() + static_cast<std::ptrdiff_t>(std::min<rlim_t>(room, 28)));
            EXPECT_EQ(header, Bytes(header.size())) << room;
        }
    }
}

TEST_F(RefusedIndex, AFolderInItsPlace) {
    fs::create_directory(index_);
    test::WriteFile(index_ / "inside", Bytes{1});
    ExpectRefused();
    EXPECT_EQ(test::ReadFile(index_ / "inside"), Bytes{1});
}

TEST_F(RefusedIndex, APipeInItsPlace) {
    ASSERT_EQ(::mkfifo(index_.c_str(), 0600), 0);
    ExpectRefused();
    EXPECT_TRUE(fs::is_fifo(index_));
}

TEST_F(RefusedIndex, ADeviceBehindALink) {
    fs::create_symlink("/dev/null", index_);
    ExpectRefused();
    EXPECT_TRUE(fs::is_symlink(index_));
}

TEST_F(RefusedIndex, ALinkIntoAMissingFolder) {
    fs::create_symlink(scratch_.Path() / "nowhere" / "song.idx", index_);
    ExpectRefused();
}

TEST_F(RefusedIndex, ANameThatGetsTooLong) {
    // 255 bytes are a file name's limit; the index has four more.
    ExpectRefused(scratch_.Add(std::string(253, 'x'), bytes_));
}

TEST_F(RefusedIndex, AFolderThatMayNotBeWritten) {
    fs::permissions(media_, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    const ClosedFolder closed(scratch_.Path());
    const test::WithoutRootRights ordinaryUser;
    if (::geteuid() == 0 || ::access(media_.c_str(), R_OK) != 0)
        GTEST_SKIP() << "no ordinary user can reach " << scratch_.Path() << ": permissions are not tried";
    ExpectRefused();
    EXPECT_FALSE(fs::exists(index_));
}

TEST_F(RefusedIndex, AnIndexThatMayNotBeWrittenStays) {
    test::WriteFile(index_, model_.index);
    fs::permissions(media_, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    fs::permissions(index_, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    const test::WithoutRootRights ordinaryUser;
    if (::geteuid() == 0 || ::access(media_.c_str(), R_OK) != 0)
        GTEST_SKIP() << "no ordinary user can reach " << scratch_.Path() << ": permissions are not tried";
    ExpectRefused();
    EXPECT_EQ(test::ReadFile(index_), model_.index);
}

} // namespace
