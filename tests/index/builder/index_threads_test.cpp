/// Progress and cancellation from other threads. Meant for the thread sanitizer too.
#include "index/builder/index_run.h"
#include "index/builder/open_files.h"
#include "index/builder/watchdog.h"
#include "mpa/synthetic_stream.h"
#include "support/loaded_module.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using test::Bytes;
using test::ProgressOf;

/// MPEG-2 layer III, 8 kbit/s, 24000 Hz.
constexpr test::FrameSpec kSmallest = {.version = test::kMpeg2, .bitRateIndex = 1, .sampleRateIndex = 1};
constexpr std::size_t kSmallestBytes = 24;
constexpr int kFrames = 1 << 20;
constexpr std::uint32_t kEntries = kFrames - 1;
/// Time for the scan to begin and be met while it runs; it need not work out every time.
constexpr int kAttempts = 20;

/// A file whose scan takes a while, written once.
const fs::path& LongFile() {
    static const test::ScratchFolder scratch;
    static const fs::path path = scratch.Add("long.mp3", test::Frames(kSmallest, kSmallestBytes, kFrames));
    return path;
}

fs::path LongIndex() {
    return test::IndexPathOf(LongFile());
}

std::uintmax_t EntriesOnDisk() {
    const std::uintmax_t bytes = fs::file_size(LongIndex()) - 28;
    EXPECT_EQ(bytes % 8, 0u);
    return bytes / 8;
}

bool IndexIsWhole() {
    const Bytes header = test::HeaderOnDisk(LongIndex());
    const auto count = static_cast<std::uint32_t>(header[0] | header[1] << 8 | header[2] << 16);
    return count == kEntries && EntriesOnDisk() == kEntries;
}

class IndexThreads : public testing::Test {
protected:
    void SetUp() override { OpenAfresh(); }

    void OpenAfresh() {
        ASSERT_EQ(creator_.Initialize(), 1);
        ASSERT_EQ(creator_.SetInputFile(test::Automation(LongFile())), 1);
    }

    /// Starts the run on a thread of its own, on an object of its own.
    std::thread Start() {
        return std::thread([copy = creator_]() mutable { EXPECT_EQ(copy.CreateFileIndex(), 1); });
    }

    void WaitForFrames() {
        while (ProgressOf(creator_).framesIndexed == 0)
            std::this_thread::yield();
    }

    /// After a cancelled run: it either ended with the placeholder, or was complete before it saw the flag.
    /// True when it was stopped.
    bool WasStopped() {
        const std::uint32_t state = ProgressOf(creator_).state;
        if (test::HeaderOnDisk(LongIndex()) != test::kPlaceholder) {
            EXPECT_TRUE(IndexIsWhole());
            EXPECT_TRUE(state == TRN_INDEX_FINISHED || state == TRN_INDEX_CANCELLED) << state;
            return false;
        }
        EXPECT_TRUE(state == TRN_INDEX_RUNNING || state == TRN_INDEX_CANCELLED) << state;
        EXPECT_EQ(EntriesOnDisk(), ProgressOf(creator_).framesIndexed) << "all entries arrived";
        return true;
    }

    void ExpectFilesClosed() {
        EXPECT_FALSE(test::IsHeldOpen(LongFile()));
        EXPECT_FALSE(test::IsHeldOpen(LongIndex()));
    }

    const test::Watchdog watchdog_{std::chrono::seconds(240)};
    TRN_MpaFileIndexCreator creator_;
};

TEST_F(IndexThreads, TheWholeRunCanBeWatched) {
    std::thread run = Start();
    std::uint32_t frames = 0;
    int polls = 0;
    PROGRESS_INFO progress = {};
    do {
        progress = ProgressOf(creator_);
        ASSERT_GE(progress.framesIndexed, frames);
        frames = progress.framesIndexed;
        ASSERT_LE(progress.percent, 100u);
        ++polls;
    } while (progress.state == TRN_INDEX_RUNNING);
    run.join();
    EXPECT_EQ(progress.state, TRN_INDEX_FINISHED);
    EXPECT_EQ(ProgressOf(creator_).framesIndexed, kEntries);
    EXPECT_EQ(ProgressOf(creator_).percent, 100u);
    EXPECT_GT(polls, 1);
    EXPECT_TRUE(IndexIsWhole());
    ExpectFilesClosed();
}

TEST_F(IndexThreads, CancellingStopsTheRunAndWaitsUntilTheFilesAreClosed) {
    bool stopped = false;
    for (int attempt = 0; attempt < kAttempts && !stopped; ++attempt) {
        OpenAfresh();
        EXPECT_TRUE(test::IsHeldOpen(LongFile()));
        EXPECT_TRUE(test::IsHeldOpen(LongIndex()));
        std::thread run = Start();
        WaitForFrames();
        EXPECT_EQ(creator_.CancelIndexing(), 1);
        ExpectFilesClosed();
        stopped = WasStopped();
        run.join();
    }
    EXPECT_TRUE(stopped);
}

TEST_F(IndexThreads, CancellingTwiceAndAfterTheEnd) {
    bool stopped = false;
    for (int attempt = 0; attempt < kAttempts && !stopped; ++attempt) {
        OpenAfresh();
        std::thread run = Start();
        WaitForFrames();
        EXPECT_EQ(creator_.CancelIndexing(), 1);
        EXPECT_EQ(creator_.CancelIndexing(), 1);
        stopped = WasStopped();
        run.join();
        EXPECT_EQ(creator_.CancelIndexing(), 1);
        EXPECT_EQ(ProgressOf(creator_).state, TRN_INDEX_CANCELLED);
    }
    EXPECT_TRUE(stopped);
}

TEST_F(IndexThreads, SeveralCancelAtOnceWhileOthersPoll) {
    bool stopped = false;
    for (int attempt = 0; attempt < kAttempts && !stopped; ++attempt) {
        OpenAfresh();
        std::thread run = Start();
        std::atomic<bool> over = false;
        std::vector<std::thread> others;
        for (int i = 0; i < 2; ++i)
            others.emplace_back([copy = creator_, &over]() mutable {
                while (!over)
                    EXPECT_LE(ProgressOf(copy).framesIndexed, kEntries);
            });
        WaitForFrames();
        std::vector<std::thread> cancellers;
        for (int i = 0; i < 4; ++i)
            cancellers.emplace_back([copy = creator_]() mutable { EXPECT_EQ(copy.CancelIndexing(), 1); });
        for (std::thread& canceller : cancellers)
            canceller.join();
        run.join();
        ExpectFilesClosed();
        stopped = WasStopped();
        over = true;
        for (std::thread& other : others)
            other.join();
    }
    EXPECT_TRUE(stopped);
}

TEST_F(IndexThreads, CancellingThroughACopyWhoseOriginalIsGone) {
    bool stopped = false;
    for (int attempt = 0; attempt < kAttempts && !stopped; ++attempt) {
        OpenAfresh();
        std::thread run = Start();
        WaitForFrames();
        const auto copy = std::make_unique<TRN_MpaFileIndexCreator>(creator_);
        creator_ = TRN_MpaFileIndexCreator();
        EXPECT_EQ(copy->CancelIndexing(), 1);
        ExpectFilesClosed();
        creator_ = *copy;
        stopped = WasStopped();
        run.join();
    }
    EXPECT_TRUE(stopped);
}

TEST_F(IndexThreads, CancellingAtAnyMoment) {
    // From before the run's beginning to behind its end; every outcome must be one of the two.
    for (int round = 0; round < 60; ++round) {
        OpenAfresh();
        std::thread run = Start();
        std::this_thread::sleep_for(std::chrono::microseconds(300 * (round % 20)));
        EXPECT_EQ(creator_.CancelIndexing(), 1);
        const bool early = ProgressOf(creator_).framesIndexed == 0;
        if (early) {
            // The cancellation may have come before the run, which then goes its way.
            EXPECT_EQ(creator_.CancelIndexing(), 1);
        }
        run.join();
        ExpectFilesClosed();
        WasStopped();
    }
}

TEST_F(IndexThreads, ACancellationBeforeTheRunIsForgotten) {
    EXPECT_EQ(creator_.CancelIndexing(), 1);
    std::thread run = Start();
    run.join();
    EXPECT_EQ(ProgressOf(creator_).state, TRN_INDEX_FINISHED);
    EXPECT_TRUE(IndexIsWhole());
}

TEST_F(IndexThreads, WithAClosedEventCancellingOnlyAsks) {
    // The event goes with the first call; the run that follows can be asked, not waited for.
    EXPECT_EQ(creator_.CancelIndexing(), 1);
    std::thread run = Start();
    WaitForFrames();
    EXPECT_EQ(creator_.CancelIndexing(), 1);
    run.join();
    ExpectFilesClosed();
    WasStopped();
}

TEST_F(IndexThreads, AFailedRunIsNotWaitedFor) {
    ASSERT_EQ(creator_.Initialize(), 1);
    std::thread run = Start();
    EXPECT_EQ(creator_.CancelIndexing(), 1);
    run.join();
    EXPECT_EQ(creator_.CancelIndexing(), 1);
}

TEST_F(IndexThreads, TheLastHolderMayBeAnotherThread) {
    auto copy = std::make_unique<TRN_MpaFileIndexCreator>(creator_);
    std::thread run = Start();
    creator_ = TRN_MpaFileIndexCreator();
    std::thread poller([holder = std::move(copy)]() mutable {
        while (ProgressOf(*holder).framesIndexed == 0)
            std::this_thread::yield();
        holder.reset();
    });
    poller.join();
    run.join();
    ExpectFilesClosed();
    EXPECT_TRUE(IndexIsWhole());
}

TEST_F(IndexThreads, ThroughTheReaderObject) {
    test::LoadedModule module;
    bool stopped = false;
    for (int attempt = 0; attempt < kAttempts && !stopped; ++attempt) {
        const auto reader = module.CreateReader();
        ASSERT_EQ(reader->OpenFile(test::Wide(LongFile()), TRN_OPEN_INDEX_BUILDER), 1);
        std::thread run([&] { EXPECT_EQ(reader->CreateFileIndex(), 1); });
        PLUGIN_INDEX_PROGRESS progress = {};
        do
            ASSERT_EQ(reader->GetIndexProgress(TRN_INDEX_PROGRESS_RECORD, &progress), 1);
        while (progress.framesIndexed == 0);
        EXPECT_EQ(reader->CancelIndexing(), 1);
        EXPECT_EQ(reader->CancelIndexing(), 1);
        stopped = test::HeaderOnDisk(LongIndex()) == test::kPlaceholder;
        run.join();
        ASSERT_EQ(reader->GetIndexProgress(TRN_INDEX_PROGRESS_RECORD, &progress), 1);
        EXPECT_EQ(progress.framesIndexed, EntriesOnDisk());
    }
    EXPECT_TRUE(stopped);
}

TEST_F(IndexThreads, BuildersOfDifferentFilesRunSideBySide) {
    const test::ScratchFolder scratch;
    const Bytes bytes = test::PaddedFrames(3000);
    std::vector<fs::path> files;
    for (int i = 0; i < 4; ++i)
        files.push_back(scratch.Add(std::to_string(i) + ".mp3", bytes));
    std::vector<Bytes> indexes(files.size());
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < files.size(); ++i)
        threads.emplace_back([&, i] { indexes[i] = test::RunBuilder(files[i]).index; });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(indexes[0].size(), 28u + 8 * 2999);
    for (const Bytes& index : indexes)
        EXPECT_EQ(index, indexes[0]);
}

} // namespace
