/// The builder on a disk that fails at each of its calls in turn.
#include "index/builder/failing_file.h"
#include "index/builder/index_model.h"
#include "index/builder/index_run.h"
#include "index/builder/watchdog.h"
#include "mpa/synthetic_stream.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using test::Bytes;
using test::Disk;
using test::Fault;

class WriteFaults : public testing::Test {
protected:
    WriteFaults() { Disk() = {}; }
    ~WriteFaults() override { Disk() = {}; }

    Bytes HeaderOfDisk() const {
        const Bytes& content = Disk().content;
        return Bytes(content.begin(), content.begin() + static_cast<std::ptrdiff_t>(
                                                            std::min<std::size_t>(content.size(), 28)));
    }

    /// A header that is the placeholder, as far as it is there.
    bool IsPlaceholder() const {
        const Bytes header = HeaderOfDisk();
        return header == Bytes(header.size());
    }

    /// The whole life of a builder on the disk as it stands.
    void Live() {
        TRN_MpaFileIndexCreator creator;
        ASSERT_EQ(creator.Initialize(), 1);
        opened_ = creator.SetInputFile(test::Automation(media_));
        EXPECT_EQ(creator.CreateFileIndex(), 1);
        state_ = test::ProgressOf(creator).state;
        EXPECT_FALSE(Disk().isOpen) << "closed when the run is over";
        EXPECT_EQ(creator.CancelIndexing(), 1) << "no run to wait for";
    }

    std::string Calls() const { return std::string(Disk().calls.begin(), Disk().calls.end()); }

    const test::ScratchFolder scratch_;
    const Bytes bytes_ = test::PaddedFrames(10000); // several rounds of the writer's buffer
    const test::IndexModel model_ = test::ModelOfIndexing(bytes_);
    const std::filesystem::path media_ = scratch_.Add("song.mp3", bytes_);
    const test::Watchdog watchdog_{std::chrono::seconds(120)};
    std::int32_t opened_ = -1;
    std::uint32_t state_ = 99;
};

TEST_F(WriteFaults, ASoundDiskGetsTheIndex) {
    Live();
    EXPECT_EQ(opened_, 1);
    EXPECT_EQ(state_, TRN_INDEX_FINISHED);
    EXPECT_EQ(Disk().content, model_.index);
    EXPECT_EQ(Disk().path, test::Wide(test::IndexPathOf(media_)));
    const std::string calls = Calls();
    EXPECT_EQ(calls.substr(0, 3), "cww") << calls;
    EXPECT_EQ(calls.substr(calls.size() - 3), "pwx") << calls;
    EXPECT_LT(calls.size(), 20u) << "the entries go in large pieces: " << calls;
}

TEST_F(WriteFaults, NoFaultLeavesAHeaderThatLooksWhole) {
    Live();
    const std::string calls = Calls();
    int refused = 0;
    int failed = 0;
    for (const Fault fault : {Fault::kRefuses, Fault::kShort, Fault::kThrows})
        for (const bool lasts : {false, true})
            // All calls up to the header that makes the index whole; the closing call is another test's.
            for (std::size_t number = 0; number + 1 < calls.size(); ++number) {
                Disk() = {};
                Disk().fault = fault;
                Disk().faultAt = number;
                Disk().lasts = lasts;
                Live();
                SCOPED_TRACE(std::string("call ") + calls[number] + ", number " + std::to_string(number) +
                             ", fault " + std::to_string(static_cast<int>(fault)) +
                             (lasts ? ", lasting" : ""));
                EXPECT_EQ(opened_, number < 2 ? 0 : 1);
                EXPECT_EQ(state_, TRN_INDEX_FAILED);
                // Only a disk that tears the last 28 bytes and takes nothing more can keep a part of them.
                if (!(fault == Fault::kShort && lasts && number + 2 == calls.size())) {
                    EXPECT_TRUE(IsPlaceholder());
                }
                EXPECT_EQ(Disk().exists, number > 0);
                refused += opened_ == 0;
                failed += opened_ == 1;
            }
    EXPECT_EQ(refused, 3 * 2 * 2);
    EXPECT_EQ(failed, 3 * 2 * (static_cast<int>(calls.size()) - 3));
}

TEST_F(WriteFaults, ClosingMayThrow) {
    Live();
    const std::size_t last = Calls().size() - 1;
    Disk() = {};
    Disk().fault = Fault::kThrows;
    Disk().faultAt = last;
    Live();
    EXPECT_EQ(opened_, 1);
    EXPECT_EQ(state_, TRN_INDEX_FAILED);
}

TEST_F(WriteFaults, ABuilderRecoversWithItsNextFile) {
    Disk().faultAt = 2;
    TRN_MpaFileIndexCreator creator;
    ASSERT_EQ(creator.Initialize(), 1);
    ASSERT_EQ(creator.SetInputFile(test::Automation(media_)), 1);
    ASSERT_EQ(creator.CreateFileIndex(), 1);
    ASSERT_EQ(test::ProgressOf(creator).state, TRN_INDEX_FAILED);
    ASSERT_EQ(creator.Initialize(), 1);
    EXPECT_EQ(test::ProgressOf(creator).state, TRN_INDEX_RUNNING);
    ASSERT_EQ(creator.SetInputFile(test::Automation(media_)), 1);
    ASSERT_EQ(creator.CreateFileIndex(), 1);
    EXPECT_EQ(test::ProgressOf(creator).state, TRN_INDEX_FINISHED);
    EXPECT_EQ(Disk().content, model_.index);
}

} // namespace
