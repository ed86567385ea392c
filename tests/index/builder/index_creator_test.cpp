/// The exported class, as a host links it: what its operations give, and what copies share.
#include "trnmpafileread/index_creator.h"

#include "index/builder/index_model.h"
#include "index/builder/index_run.h"
#include "mpa/synthetic_stream.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;
using test::Automation;
using test::Bytes;
using test::IndexPathOf;
using test::ProgressOf;

class IndexCreator : public testing::Test {
protected:
    static void ExpectUninitialised(TRN_MpaFileIndexCreator& creator, const fs::path& media) {
        PROGRESS_INFO progress;
        std::memset(&progress, 0x55, sizeof progress);
        const PROGRESS_INFO before = progress;
        EXPECT_EQ(creator.SetInputFile(Automation(media)), 0);
        EXPECT_EQ(creator.CreateFileIndex(), 0);
        EXPECT_EQ(creator.GetFileIdxingProgress(progress), 0);
        EXPECT_EQ(creator.CancelIndexing(), 0);
        EXPECT_EQ(std::memcmp(&progress, &before, sizeof progress), 0);
        EXPECT_FALSE(fs::exists(IndexPathOf(media)));
    }
    void ExpectNoIndex() const { EXPECT_FALSE(fs::exists(IndexPathOf(media_))); }
    void ExpectWholeIndex() const { EXPECT_EQ(test::ReadFile(IndexPathOf(media_)), model_.index); }

    const test::ScratchFolder scratch_;
    const Bytes bytes_ = test::PaddedFrames(50);
    const test::IndexModel model_ = test::ModelOfIndexing(bytes_);
    const fs::path media_ = scratch_.Add("song.mp3", bytes_);
    TRN_MpaFileIndexCreator creator_;
};

TEST_F(IndexCreator, BeforeInitializeEverythingGivesZero) {
    ExpectUninitialised(creator_, media_);
    TRN_MpaFileIndexCreator copy(creator_);
    ExpectUninitialised(copy, media_);
    TRN_MpaFileIndexCreator assigned;
    ASSERT_EQ(assigned.Initialize(), 1);
    assigned = creator_;
    ExpectUninitialised(assigned, media_);
}

TEST_F(IndexCreator, BuildsTheIndexBesideTheMediaFile) {
    EXPECT_EQ(creator_.Initialize(), 1);
    EXPECT_EQ(creator_.SetInputFile(Automation(media_)), 1);
    EXPECT_EQ(test::ReadFile(IndexPathOf(media_)), test::kPlaceholder);
    EXPECT_EQ(creator_.CreateFileIndex(), 1);
    ExpectWholeIndex();
    EXPECT_EQ(fs::file_size(IndexPathOf(media_)), 28u + 8 * 49);
    EXPECT_EQ(IndexPathOf(media_).filename(), "song.mp3.idx");
    EXPECT_EQ(test::ReadFile(media_), bytes_);
    EXPECT_EQ(std::distance(fs::directory_iterator(scratch_.Path()), fs::directory_iterator()), 2);
}

TEST_F(IndexCreator, TheProgressRecordIsAsLaidOut) {
    ASSERT_EQ(creator_.Initialize(), 1);
    std::uint8_t record[40];
    const auto expectRecord = [&](const Bytes& expected) {
        PROGRESS_INFO progress;
        std::memset(&progress, 0x55, sizeof progress);
        ASSERT_EQ(creator_.GetFileIdxingProgress(progress), 1);
        static_assert(sizeof progress == sizeof record);
        std::memcpy(record, &progress, sizeof record);
        EXPECT_EQ(Bytes(std::begin(record), std::end(record)), expected);
    };
    Bytes expected(40);
    expectRecord(expected);
    ASSERT_EQ(creator_.SetInputFile(Automation(media_)), 1);
    expectRecord(expected);
    ASSERT_EQ(creator_.CreateFileIndex(), 1);
    expected[0] = 100;
    expected[4] = 49;
    expected[32] = 1;
    expectRecord(expected);
    ASSERT_EQ(creator_.CancelIndexing(), 1);
    expected[32] = 3;
    expectRecord(expected);
}

TEST_F(IndexCreator, ALongerIndexOfBeforeIsReplaced) {
    test::WriteFile(IndexPathOf(media_), Bytes(100000, 0x77));
    EXPECT_EQ(test::RunBuilder(media_).index, model_.index);
    EXPECT_EQ(test::RunBuilder(media_).index, model_.index);
}

TEST_F(IndexCreator, NamesOfEveryScript) {
    for (const char8_t* name :
         {u8"Ünï 日本 \U0001F3B5.mp3", u8"no extension", u8"two.dots.mp2", u8"a b.mp3.idx"}) {
        const fs::path media = scratch_.Add(name, bytes_);
        EXPECT_EQ(test::RunBuilder(media).index, model_.index) << media;
    }
}

TEST_F(IndexCreator, WithoutAnInputFileNothingIsMade) {
    ASSERT_EQ(creator_.Initialize(), 1);
    EXPECT_EQ(creator_.CreateFileIndex(), 1);
    EXPECT_EQ(ProgressOf(creator_).state, TRN_INDEX_FAILED);
    EXPECT_EQ(creator_.CreateFileIndex(), 1);
    ExpectNoIndex();
}

TEST_F(IndexCreator, AMissingMediaFileMakesNothing) {
    ASSERT_EQ(creator_.Initialize(), 1);
    const fs::path missing = scratch_.Path() / "missing.mp3";
    const fs::path folder = scratch_.Path() / "folder.mp3";
    fs::create_directory(folder);
    for (const fs::path& path : {missing, folder, fs::path(), scratch_.Path() / "nowhere" / "song.mp3"}) {
        EXPECT_EQ(creator_.SetInputFile(Automation(path)), 0);
        EXPECT_EQ(creator_.CreateFileIndex(), 1);
        EXPECT_EQ(ProgressOf(creator_).state, TRN_INDEX_FAILED);
        EXPECT_FALSE(fs::exists(IndexPathOf(path)));
    }
    EXPECT_EQ(creator_.SetInputFile(CComBSTR()), 0);
    EXPECT_EQ(creator_.SetInputFile(os::ToAutomationString(L"dqs:\\song.mp3")), 0);
}

TEST_F(IndexCreator, AFileWithoutFramesKeepsThePlaceholder) {
    const fs::path noise = scratch_.Add("noise.mp3", Bytes(10000, 0));
    test::WriteFile(IndexPathOf(noise), model_.index);
    const test::IndexRun run = test::RunBuilder(noise);
    EXPECT_EQ(run.opened, 0);
    EXPECT_EQ(run.built, 1);
    EXPECT_EQ(run.progress.state, TRN_INDEX_FAILED);
    EXPECT_EQ(run.index, test::kPlaceholder);
}

TEST_F(IndexCreator, AFailedFileAfterAGoodOneDoesNoHarm) {
    ASSERT_EQ(creator_.Initialize(), 1);
    ASSERT_EQ(creator_.SetInputFile(Automation(media_)), 1);
    EXPECT_EQ(creator_.SetInputFile(Automation(scratch_.Path() / "missing.mp3")), 0);
    EXPECT_EQ(creator_.CreateFileIndex(), 1);
    EXPECT_EQ(ProgressOf(creator_).state, TRN_INDEX_FAILED);
    EXPECT_EQ(test::ReadFile(IndexPathOf(media_)), test::kPlaceholder);
    EXPECT_EQ(test::ReadFile(media_), bytes_);
}

TEST_F(IndexCreator, ASecondRunLeavesTheIndexAsItIs) {
    ASSERT_EQ(creator_.Initialize(), 1);
    ASSERT_EQ(creator_.SetInputFile(Automation(media_)), 1);
    ASSERT_EQ(creator_.CreateFileIndex(), 1);
    for (int again = 0; again < 3; ++again) {
        EXPECT_EQ(creator_.CreateFileIndex(), 1);
        EXPECT_EQ(ProgressOf(creator_).state, TRN_INDEX_FAILED);
        ExpectWholeIndex();
    }
}

TEST_F(IndexCreator, AFreshBuilderForEachFile) {
    const Bytes others = test::PaddedFrames(7);
    const fs::path other = scratch_.Add("other.mp3", others);
    for (int round = 0; round < 3; ++round)
        for (const auto& [path, expected] :
             {std::pair(media_, model_.index), std::pair(other, test::ModelOfIndexing(others).index)}) {
            ASSERT_EQ(creator_.Initialize(), 1);
            ASSERT_EQ(creator_.SetInputFile(Automation(path)), 1);
            ASSERT_EQ(creator_.CreateFileIndex(), 1);
            EXPECT_EQ(test::ReadFile(IndexPathOf(path)), expected);
        }
}

TEST_F(IndexCreator, ASecondFileOnOneBuilderCountsOn) {
    const Bytes others = test::PaddedFrames(7);
    const fs::path other = scratch_.Add("other.mp3", others);
    ASSERT_EQ(creator_.Initialize(), 1);
    ASSERT_EQ(creator_.SetInputFile(Automation(media_)), 1);
    ASSERT_EQ(creator_.CreateFileIndex(), 1);
    ASSERT_EQ(creator_.SetInputFile(Automation(other)), 1);
    EXPECT_EQ(test::ReadFile(IndexPathOf(other)), Bytes(model_.index.begin(), model_.index.begin() + 28))
        << "the first file's header";
    ASSERT_EQ(creator_.CreateFileIndex(), 1);
    Bytes expected = test::ModelOfIndexing(others).index;
    expected[0] = 49 + 6;
    EXPECT_EQ(test::ReadFile(IndexPathOf(other)), expected);
    EXPECT_EQ(ProgressOf(creator_).framesIndexed, 55u);
    EXPECT_EQ(ProgressOf(creator_).state, TRN_INDEX_FINISHED);
    ExpectWholeIndex();
}

TEST_F(IndexCreator, OneFileOpenedTwiceStartsAfresh) {
    ASSERT_EQ(creator_.Initialize(), 1);
    ASSERT_EQ(creator_.SetInputFile(Automation(media_)), 1);
    ASSERT_EQ(creator_.SetInputFile(Automation(media_)), 1);
    ASSERT_EQ(creator_.CreateFileIndex(), 1);
    ExpectWholeIndex();
}

TEST_F(IndexCreator, CancellingAnIdleBuilderReturnsAtOnce) {
    ASSERT_EQ(creator_.Initialize(), 1);
    for (int again = 0; again < 3; ++again) {
        EXPECT_EQ(creator_.CancelIndexing(), 1);
        EXPECT_EQ(ProgressOf(creator_).state, TRN_INDEX_CANCELLED);
    }
    // The next run has no event to wait on any more, and forgets the flag.
    ASSERT_EQ(creator_.SetInputFile(Automation(media_)), 1);
    EXPECT_EQ(creator_.CancelIndexing(), 1);
    ASSERT_EQ(creator_.CreateFileIndex(), 1);
    EXPECT_EQ(ProgressOf(creator_).state, TRN_INDEX_FINISHED);
    ExpectWholeIndex();
    EXPECT_EQ(creator_.CancelIndexing(), 1);
    EXPECT_EQ(ProgressOf(creator_).state, TRN_INDEX_CANCELLED);
    ExpectWholeIndex();
}

TEST_F(IndexCreator, CopiesShareOneBuilder) {
    ASSERT_EQ(creator_.Initialize(), 1);
    TRN_MpaFileIndexCreator copy(creator_);
    TRN_MpaFileIndexCreator assigned;
    assigned = copy;
    EXPECT_EQ(copy.SetInputFile(Automation(media_)), 1);
    EXPECT_EQ(assigned.CreateFileIndex(), 1);
    ExpectWholeIndex();
    for (TRN_MpaFileIndexCreator* each : {&creator_, &copy, &assigned})
        EXPECT_EQ(ProgressOf(*each).framesIndexed, 49u);
    EXPECT_EQ(creator_.CancelIndexing(), 1);
    EXPECT_EQ(ProgressOf(assigned).state, TRN_INDEX_CANCELLED);
}

TEST_F(IndexCreator, TheLastCopyKeepsTheBuilder) {
    auto original = std::make_unique<TRN_MpaFileIndexCreator>();
    ASSERT_EQ(original->Initialize(), 1);
    ASSERT_EQ(original->SetInputFile(Automation(media_)), 1);
    auto copy = std::make_unique<TRN_MpaFileIndexCreator>(*original);
    original.reset();
    auto second = std::make_unique<TRN_MpaFileIndexCreator>(*copy);
    copy.reset();
    EXPECT_EQ(second->CreateFileIndex(), 1);
    EXPECT_EQ(ProgressOf(*second).state, TRN_INDEX_FINISHED);
    ExpectWholeIndex();
}

TEST_F(IndexCreator, AssignmentLetsGoOfTheFormerBuilder) {
    ASSERT_EQ(creator_.Initialize(), 1);
    ASSERT_EQ(creator_.SetInputFile(Automation(media_)), 1);
    TRN_MpaFileIndexCreator other;
    ASSERT_EQ(other.Initialize(), 1);
    EXPECT_EQ(&(creator_ = other), &creator_);
    EXPECT_EQ(creator_.CreateFileIndex(), 1);
    EXPECT_EQ(ProgressOf(other).state, TRN_INDEX_FAILED) << "one without a file";
    EXPECT_EQ(test::ReadFile(IndexPathOf(media_)), test::kPlaceholder);
    fs::remove(IndexPathOf(media_));
    ExpectNoIndex();
}

TEST_F(IndexCreator, SelfAssignmentChangesNothing) {
    TRN_MpaFileIndexCreator& itself = creator_;
    creator_ = itself;
    ExpectUninitialised(creator_, media_);
    ASSERT_EQ(creator_.Initialize(), 1);
    ASSERT_EQ(creator_.SetInputFile(Automation(media_)), 1);
    creator_ = itself;
    EXPECT_EQ(creator_.CreateFileIndex(), 1);
    ExpectWholeIndex();
}

TEST_F(IndexCreator, InitializeOnACopyParts) {
    ASSERT_EQ(creator_.Initialize(), 1);
    ASSERT_EQ(creator_.SetInputFile(Automation(media_)), 1);
    TRN_MpaFileIndexCreator copy(creator_);
    ASSERT_EQ(copy.Initialize(), 1);
    EXPECT_EQ(copy.CancelIndexing(), 1);
    EXPECT_EQ(ProgressOf(creator_).state, TRN_INDEX_RUNNING);
    EXPECT_EQ(creator_.CreateFileIndex(), 1);
    ExpectWholeIndex();
    EXPECT_EQ(ProgressOf(copy).framesIndexed, 0u);
}

TEST_F(IndexCreator, DestructionLeavesThePlaceholderAndClosesTheFiles) {
    {
        TRN_MpaFileIndexCreator creator;
        ASSERT_EQ(creator.Initialize(), 1);
        ASSERT_EQ(creator.SetInputFile(Automation(media_)), 1);
    }
    EXPECT_EQ(test::ReadFile(IndexPathOf(media_)), test::kPlaceholder);
    fs::rename(IndexPathOf(media_), scratch_.Path() / "moved.idx");
    fs::rename(media_, scratch_.Path() / "moved.mp3");
}

TEST_F(IndexCreator, ManyBuildersAtOnce) {
    std::vector<TRN_MpaFileIndexCreator> creators;
    for (int i = 0; i < 20; ++i) {
        TRN_MpaFileIndexCreator creator;
        ASSERT_EQ(creator.Initialize(), 1);
        ASSERT_EQ(creator.SetInputFile(Automation(scratch_.Add(std::to_string(i) + ".mp3", bytes_))), 1);
        creators.push_back(creator);
    }
    for (auto creator = creators.rbegin(); creator != creators.rend(); ++creator)
        ASSERT_EQ(creator->CreateFileIndex(), 1);
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(test::ReadFile(scratch_.Path() / (std::to_string(i) + ".mp3.idx")), model_.index);
}

TEST_F(IndexCreator, AnObjectIsAVirtualTableAndAPointer) {
    EXPECT_EQ(sizeof(TRN_MpaFileIndexCreator), 2 * sizeof(void*));
    const std::unique_ptr<TRN_MpaFileIndexCreator> heap(new TRN_MpaFileIndexCreator(creator_));
    ExpectUninitialised(*heap, media_);
}

/// Archives may bring links.
TEST_F(IndexCreator, AnIndexThatIsTheMediaFileIsRefused) {
    fs::create_hard_link(media_, IndexPathOf(media_));
    ASSERT_EQ(creator_.Initialize(), 1);
    EXPECT_EQ(creator_.SetInputFile(Automation(media_)), 0);
    EXPECT_EQ(creator_.CreateFileIndex(), 1);
    EXPECT_EQ(ProgressOf(creator_).state, 2U);
    EXPECT_EQ(test::ReadFile(media_), bytes_);
    EXPECT_EQ(test::ReadFile(IndexPathOf(media_)), bytes_);
    fs::remove(IndexPathOf(media_));
    EXPECT_EQ(creator_.SetInputFile(Automation(media_)), 1);
}

} // namespace
