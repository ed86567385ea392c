/// One engine for one file after another.
#include "reader/engine.h"
#include "reader/reader_streams.h"

#include <gtest/gtest.h>

using namespace trnmpa;
using test::Engine;

namespace {

constexpr std::uint32_t kSomeSamples = 5000;

test::Pcm First(test::Pcm pcm, int channels = 2) {
    pcm.resize(kSomeSamples * static_cast<std::size_t>(channels));
    return pcm;
}

class Reopen : public testing::Test {
protected:
    test::ScratchFolder folder_;
    const test::bitstream::Stream steady_ = test::SteadyStream();
    const test::bitstream::Stream layer2_ = test::Layer2Stream();
    const std::filesystem::path steadyPath_ = folder_.Add("steady.mp3", steady_.bytes);
    const std::filesystem::path layer2Path_ = folder_.Add("layer2.mp2", layer2_.bytes);
    const test::Pcm steadyPcm_ = First(test::DeliveredFrom(steady_, 0, test::kDecoderDelay));
    const test::Pcm layer2Pcm_ = First(test::DeliveredFrom(layer2_, 0, 0));
    KW_MEDIA_BASE_INFO_ST info_;
};

} // namespace

TEST_F(Reopen, CloseForgetsTheFile) {
    Engine engine(steadyPath_);
    ASSERT_EQ(engine.Read(0, kSomeSamples), steadyPcm_);
    EXPECT_EQ(engine->Close(), kSuccess);
    EXPECT_EQ(engine.Ask(0, 10).result, kNotOpen);
    EXPECT_EQ(engine->GetStreamInfo(&info_), kNoDecoder);
    EXPECT_EQ(engine->SetInputFile(test::Wide(steadyPath_)), kNoDecoder);
    EXPECT_EQ(engine->Close(), kSuccess);
    ASSERT_EQ(engine.Open(steadyPath_), kSuccess);
    EXPECT_EQ(engine.Read(0, kSomeSamples), steadyPcm_);
}

TEST_F(Reopen, InitializeCloses) {
    Engine engine(steadyPath_);
    ASSERT_EQ(engine->Initialize(), kSuccess);
    EXPECT_EQ(engine.Ask(0, 10).result, kNotOpen);
    EXPECT_EQ(engine->GetStreamInfo(&info_), kMediaNotOpened) << "the path is forgotten too";
    ASSERT_EQ(engine.Open(layer2Path_), kSuccess);
    EXPECT_EQ(engine.Read(0, kSomeSamples), layer2Pcm_);
}

TEST_F(Reopen, ASecondFileOfAnotherFormat) {
    Engine engine(steadyPath_);
    ASSERT_EQ(engine.Read(0, kSomeSamples), steadyPcm_);
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(engine->SetInputFile(test::Wide(layer2Path_)), kSuccess);
        EXPECT_EQ(engine.Ask(0, 10).result, kNotOpen);
        ASSERT_EQ(engine->GetStreamInfo(&info_), kSuccess);
        EXPECT_EQ(info_.audioFormat.nSamplesPerSec, 48000u);
        EXPECT_EQ(engine.Read(0, kSomeSamples), layer2Pcm_);
        ASSERT_EQ(engine->SetInputFile(test::Wide(steadyPath_)), kSuccess);
        ASSERT_EQ(engine->GetStreamInfo(&info_), kSuccess);
        EXPECT_EQ(info_.audioFormat.nSamplesPerSec, 44100u);
        EXPECT_EQ(engine.Read(0, kSomeSamples), steadyPcm_);
    }
}

TEST_F(Reopen, TheLastOfTwoNamesCounts) {
    Engine engine;
    ASSERT_EQ(engine->Initialize(), kSuccess);
    ASSERT_EQ(engine->SetInputFile(test::Wide(steadyPath_)), kSuccess);
    ASSERT_EQ(engine->SetInputFile(test::Wide(layer2Path_)), kSuccess);
    ASSERT_EQ(engine->GetStreamInfo(&info_), kSuccess);
    EXPECT_EQ(engine.Read(0, kSomeSamples), layer2Pcm_);
}

TEST_F(Reopen, AfterAFailure) {
    Engine engine;
    EXPECT_EQ(engine.Open(folder_.Path() / "missing.mp3"), kAnalysisFailed);
    ASSERT_EQ(engine->SetInputFile(test::Wide(steadyPath_)), kSuccess);
    ASSERT_EQ(engine->GetStreamInfo(&info_), kSuccess);
    EXPECT_EQ(engine.Read(0, kSomeSamples), steadyPcm_);
}

TEST_F(Reopen, AnIndexBelongsToItsFile) {
    const auto indexed = folder_.Add("indexed.mp3", steady_.bytes);
    folder_.Add("indexed.mp3.idx", test::IndexOf(steady_).ToBytes());
    const test::Pcm indexedPcm = First(test::DeliveredFrom(steady_, 1, 0));
    ASSERT_NE(indexedPcm, steadyPcm_);
    Engine engine(indexed);
    EXPECT_EQ(engine.Read(0, kSomeSamples), indexedPcm);
    ASSERT_EQ(engine->SetInputFile(test::Wide(steadyPath_)), kSuccess);
    ASSERT_EQ(engine->GetStreamInfo(&info_), kSuccess);
    EXPECT_EQ(info_.audioFormat.cbSize, 0);
    EXPECT_EQ(engine.Read(0, kSomeSamples), steadyPcm_);
    ASSERT_EQ(engine.Open(indexed), kSuccess);
    EXPECT_EQ(engine.Format().cbSize, 18);
    EXPECT_EQ(engine.Read(0, kSomeSamples), indexedPcm);
}

TEST_F(Reopen, ARepeatedStreamInfoKeepsThePosition) {
    Engine engine(steadyPath_);
    ASSERT_EQ(engine.Read(0, kSomeSamples), steadyPcm_);
    const test::Pcm whole = test::DeliveredFrom(steady_, 0, test::kDecoderDelay);
    ASSERT_EQ(engine->GetStreamInfo(&info_), kSuccess);
    EXPECT_EQ(engine.Read(kSomeSamples, 10),
              test::Pcm(whole.begin() + 2 * kSomeSamples, whole.begin() + 2 * kSomeSamples + 20));
}
