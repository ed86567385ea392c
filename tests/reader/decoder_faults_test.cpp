/// What a read gives when the decoder has no PCM for a frame, reports a failure, throws or ends.

#include "platform/environment.h"
#include "platform/log_lines.h"
#include "reader/reader_streams.h"
#include "reader/scripted_frames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

using namespace trnmpa;
using test::Fault;
using test::Pcm;
using test::Script;
using test::ScriptedEngine;
using test::ScriptedFrames;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t kFrame = ScriptedFrames::kSamplesPerFrame;
constexpr std::int64_t kDelay = ScriptedFrames::kDelay;
/// Tries of a frame before a read goes silent: one, and six more.
constexpr std::int64_t kAllTries = 7;
/// Frames before a wanted one where the decoder starts after a jump: two for the reservoir, one decoded.
constexpr std::int64_t kPreroll = 3;

/// The first sample that frame `frame` gives.
constexpr std::int64_t StartOf(std::int64_t frame) {
    return frame * kFrame - kDelay;
}

std::string LineOf(int frame) {
    return "[trnmpafileread] lame decode error, return mute. frmNo:" + std::to_string(frame);
}

class DecoderFaults : public testing::Test {
protected:
    DecoderFaults() {
        for (std::int64_t frame = 0; frame < script_.frames; ++frame) {
            const Pcm pcm = ScriptedFrames::FramePcm(frame);
            whole_.insert(whole_.end(), pcm.begin(), pcm.end());
        }
    }

    void SetUp() override { ASSERT_EQ(engine_.Open(), kSuccess); }

    /// What a read must bring when the PCM stands from the stream's start to sample `known`.
    Pcm Expected(std::int64_t start, std::uint32_t count, std::int64_t known) const {
        Pcm pcm(2 * std::size_t{count});
        const std::int64_t there = std::clamp<std::int64_t>(known - start, 0, count);
        std::copy_n(whole_.begin() + 2 * (start + delay_), 2 * there, pcm.begin());
        return pcm;
    }

    void ExpectExact(std::int64_t start, std::uint32_t count) {
        ExpectKnown(start, count, StartOf(script_.frames));
    }

    void ExpectKnown(std::int64_t start, std::uint32_t count, std::int64_t known) {
        const ScriptedEngine::Answer answer = engine_.Ask(start, count);
        EXPECT_EQ(answer.result, kSuccess) << start;
        EXPECT_EQ(answer.size, 4 * static_cast<std::int32_t>(count));
        EXPECT_TRUE(answer.pcm == Expected(start, count, known)) << count << " samples at " << start;
    }

    void ExpectFailure(std::int64_t start, std::uint32_t count, std::int32_t result) {
        const ScriptedEngine::Answer answer = engine_.Ask(start, count);
        EXPECT_EQ(answer.result, result);
        EXPECT_EQ(answer.size, 0);
        EXPECT_FALSE(answer.hasData);
    }

    /// Lines of the log since the last call.
    std::vector<std::string> NewLines() {
        std::vector<std::string> lines;
        if (std::filesystem::exists(log_)) {
            const test::Bytes text = test::ReadFile(log_);
            lines = test::LogLines(std::string(text.begin(), text.end()));
        }
        lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(seenLines_));
        seenLines_ += lines.size();
        return lines;
    }

    test::ScratchFolder scratch_;
    const std::filesystem::path log_ = scratch_.Path() / "log.txt";
    const test::ScopedVariable variable_{"TRN_LOG", log_.string()};
    std::size_t seenLines_ = 0;
    Script script_;
    ScriptedEngine engine_{script_};
    Pcm whole_;
    std::int64_t delay_ = kDelay; ///< samples left out before sample 0
};

TEST_F(DecoderFaults, WithoutFaultsEverythingIsExact) {
    std::mt19937 random(5);
    for (int i = 0; i < 200; ++i) {
        const auto start = static_cast<std::int64_t>(random() % 40'000);
        ExpectExact(start, static_cast<std::uint32_t>(1 + random() % 5000));
    }
    EXPECT_THAT(NewLines(), IsEmpty());
}

TEST_F(DecoderFaults, ADecoderThatYieldsNothingGivesSilenceAndALineForEachRead) {
    for (std::int64_t frame = 0; frame < script_.frames; ++frame)
        script_.faults[frame] = {Fault::kNothing, Script::kForEver};
    ExpectKnown(0, 5000, 0);
    EXPECT_EQ(script_.TriesOf(0), kAllTries);
    EXPECT_EQ(script_.decodes.size(), static_cast<std::size_t>(kAllTries));
    EXPECT_EQ(script_.jumps, std::vector<Script::Jump>(6));
    EXPECT_THAT(NewLines(), ElementsAre(LineOf(0)));
    ExpectKnown(20'000, 1, 0);
    ExpectKnown(20'001, 1, 0);
    const int frame = (20'000 + kDelay) / kFrame;
    EXPECT_THAT(NewLines(), ElementsAre(LineOf(frame), LineOf(frame)));
}

TEST_F(DecoderFaults, WhatWasDecodedBeforeAFailingFrameIsDelivered) {
    for (const std::int64_t failing : {1, 4, 9}) {
        SCOPED_TRACE(failing);
        script_.faults = {{failing, {Fault::kNothing, Script::kForEver}}};
        script_.ForgetCalls();
        ExpectKnown(0, 12'000, StartOf(failing));
        EXPECT_EQ(script_.TriesOf(failing), kAllTries);
        EXPECT_THAT(NewLines(), ElementsAre(LineOf(0)));
        // Each retry goes back to the frame that failed, not to the one that the read began with.
        const std::int64_t from = std::max<std::int64_t>(failing - kPreroll, 0);
        const Script::Jump back{from * ScriptedFrames::kFrameBytes, from};
        ASSERT_GE(script_.jumps.size(), 6u);
        EXPECT_EQ(std::vector(script_.jumps.end() - 6, script_.jumps.end()), std::vector(6, back));
    }
}

TEST_F(DecoderFaults, TheLineNamesTheFrameThatTheReadBeganWith) {
    script_.faults[9] = {};
    ExpectKnown(StartOf(5) + 100, 8000, StartOf(9));
    EXPECT_THAT(NewLines(), ElementsAre(LineOf(5)));
}

TEST_F(DecoderFaults, NothingIsHeldAfterSilence) {
    script_.faults[6] = {};
    ExpectKnown(0, 10'000, StartOf(6));
    script_.faults.clear();
    for (const std::int64_t start : {StartOf(5) + 10, StartOf(6), StartOf(6) + 7, std::int64_t{10'000}}) {
        SCOPED_TRACE(start);
        script_.faults[6] = {};
        engine_.Ask(StartOf(4), 4000);
        script_.faults.clear();
        script_.ForgetCalls();
        ExpectExact(start, 3000);
        EXPECT_EQ(script_.jumps.size(), 1u);
        ExpectExact(start + 3000, 3000);
        EXPECT_EQ(script_.jumps.size(), 1u) << "what follows is read on";
    }
}

TEST_F(DecoderFaults, AFrameThatComesAtTheThirdRetryIsDelivered) {
    script_.faults[5] = {Fault::kNothing, 3};
    ExpectExact(0, 12'000);
    EXPECT_EQ(script_.TriesOf(5), 4);
    EXPECT_EQ(script_.jumps, std::vector(3, Script::Jump{2 * ScriptedFrames::kFrameBytes, 2}));
    EXPECT_THAT(NewLines(), IsEmpty());
    ExpectExact(12'000, 5000);
    EXPECT_EQ(script_.jumps.size(), 3u);
}

TEST_F(DecoderFaults, SixRetriesAreMadeAndNotSeven) {
    script_.faults[5] = {Fault::kNothing, 6};
    ExpectExact(0, 12'000);
    script_.faults[5] = {Fault::kNothing, 7};
    ExpectKnown(0, 12'000, StartOf(5));
    EXPECT_THAT(NewLines(), ElementsAre(LineOf(0)));
    ExpectExact(0, 12'000);
}

TEST_F(DecoderFaults, EachFrameOfAReadHasItsOwnRetries) {
    for (std::int64_t frame = 2; frame < 20; ++frame)
        script_.faults[frame] = {Fault::kNothing, 1};
    ExpectExact(0, 22'000);
    EXPECT_THAT(NewLines(), IsEmpty());
}

TEST_F(DecoderFaults, AFaultOnTheWayToAFrameIsTriedAgainToo) {
    // The frame before the wanted one is decoded to prime it.
    for (const int times : {1, 5}) {
        script_.faults[20] = {Fault::kNothing, times};
        ExpectExact(StartOf(21) + 50, 3000);
        ExpectExact(0, 100);
    }
    EXPECT_THAT(NewLines(), IsEmpty());
}

TEST_F(DecoderFaults, TheEndOfTheStreamIsSilenceInsideARead) {
    const std::int64_t end = StartOf(script_.frames);
    ExpectKnown(end - 2000, 5000, end);
    ExpectKnown(end - 1, 1, end);
    ExpectKnown(end, 10, end);
    EXPECT_EQ(NewLines().size(), 2u);
    ExpectExact(end - 3000, 3000);
    ExpectExact(100, 3000);
    EXPECT_THAT(NewLines(), IsEmpty());
}

TEST_F(DecoderFaults, FarBehindTheEndNothingIsDecoded) {
    script_.ForgetCalls();
    ExpectKnown(1'000'000'000, 10, 0);
    EXPECT_THAT(script_.decodes, IsEmpty());
    ExpectExact(1000, 10);
}

TEST_F(DecoderFaults, AFailureThatIsReportedIsTheResult) {
    script_.faults[5] = {Fault::kBad, 1};
    ExpectFailure(0, static_cast<std::uint32_t>(StartOf(5) + 100), kDecodeFailed);
    script_.ForgetCalls();
    ExpectExact(StartOf(5), 3000);
    EXPECT_EQ(script_.jumps.size(), 1u) << "nothing is held";
    // On the way to a frame it shows in the frame alone, since that can be tried again.
    script_.faults[20] = {Fault::kBad, 1};
    ExpectExact(StartOf(21), 3000);
}

TEST_F(DecoderFaults, WhatIsThrownIsTheResult) {
    for (const Fault fault : {Fault::kCode, Fault::kOther}) {
        script_.faults[5] = {fault, 1};
        ExpectFailure(0, 12'000, kUnexpectedException);
        script_.ForgetCalls();
        ExpectExact(StartOf(5), 9000);
        EXPECT_EQ(script_.jumps.size(), 1u) << "the place is forgotten";
        script_.faults[20] = {fault, 1};
        ExpectFailure(StartOf(21), 10, kUnexpectedException);
        ExpectExact(StartOf(21), 10);
    }
    script_.faults[5] = {Fault::kEnd, 1};
    ExpectKnown(0, 12'000, 0);
    ExpectExact(0, 12'000);
    EXPECT_THAT(NewLines(), IsEmpty());
}

TEST_F(DecoderFaults, PassingFaultsAnywhereChangeNothing) {
    std::mt19937 random(11);
    for (int i = 0; i < 150; ++i) {
        script_.faults.clear();
        for (int k = 0; k < 5; ++k)
            script_.faults[random() % 40] = {Fault::kNothing, static_cast<int>(1 + random() % 3)};
        const auto start = static_cast<std::int64_t>(random() % 30'000);
        ExpectExact(start, static_cast<std::uint32_t>(1 + random() % 9000));
    }
    EXPECT_THAT(NewLines(), IsEmpty());
}

TEST_F(DecoderFaults, ARequestThatMakesNoSenseIsRefusedAndChangesNothing) {
    ExpectExact(0, 1000);
    ExpectFailure(-1, 10, kBadRequest);
    ExpectFailure(0, 0, kBadRequest);
    ExpectFailure(0, 0xFFFFFFFF, kUnexpectedException);
    script_.ForgetCalls();
    ExpectExact(1000, 1000);
    EXPECT_THAT(script_.jumps, IsEmpty());
}

/// A decoder that throws at its end and has nothing to try again, as the built-in one.
class BuiltInFaults : public DecoderFaults {
protected:
    void SetUp() override {
        script_.isExternal = false;
        ASSERT_EQ(engine_.Open(), kSuccess);
    }
};

TEST_F(BuiltInFaults, AReadThatTouchesTheEndIsSilenceAltogether) {
    const std::int64_t end = StartOf(script_.frames);
    ExpectKnown(end - 2000, 2001, 0);
    ExpectKnown(end - 2000, 2000, end);
    ExpectKnown(end - 100, 101, 0);
    ExpectExact(end - 100, 100);
    EXPECT_THAT(NewLines(), IsEmpty());
}

TEST_F(BuiltInFaults, AFailureOnTheWayToAFrameIsTheResult) {
    script_.faults[20] = {Fault::kBad, 1};
    ExpectFailure(StartOf(21), 10, kDecodeFailed);
    ExpectExact(StartOf(21), 10);
    script_.faults[5] = {Fault::kBad, 1};
    ExpectFailure(0, 12'000, kDecodeFailed);
    ExpectExact(0, 12'000);
}

class Layer2Faults : public DecoderFaults {
protected:
    void SetUp() override {
        script_.layer = 2;
        delay_ = 0;
        ASSERT_EQ(engine_.Open(), kSuccess);
    }
};

TEST_F(Layer2Faults, HaveNoDelayAndOneFrameOfPreroll) {
    ExpectKnown(10 * kFrame, 2000, 40 * kFrame);
    EXPECT_EQ(script_.jumps, std::vector({Script::Jump{9 * ScriptedFrames::kFrameBytes, 9}}));
    script_.faults[13] = {};
    ExpectKnown(12 * kFrame + 2, 4000, 13 * kFrame);
    EXPECT_THAT(NewLines(), ElementsAre(LineOf(12)));
}

/// Jumps go where the index says, and it says where the frames end.
TEST_F(DecoderFaults, AnIndexTellsThePlaces) {
    test::Index index;
    index.header = {.frameCount = 30,
                    .layer = 3,
                    .version = 1,
                    .channels = 2,
                    .bitRate = 128'000,
                    .sampleRate = 44'100,
                    .bitsPerSample = 16,
                    .frameBytes = 417,
                    .samplesPerFrame = 1152};
    for (std::uint32_t frame = 0; frame < 30; ++frame)
        index.entries.push_back({417 * frame, 417});
    scratch_.Add("a.mp3.idx", index.ToBytes());
    ASSERT_EQ(engine_.Open(test::Wide(scratch_.Path() / "a.mp3")), kSuccess);
    delay_ = 0;
    script_.ForgetCalls();
    ExpectKnown(10 * kFrame + 5, 2000, 30 * kFrame);
    EXPECT_EQ(script_.jumps, std::vector({Script::Jump{7 * ScriptedFrames::kFrameBytes, 7}}));
    script_.faults[20] = {};
    ExpectKnown(18 * kFrame, 4000, 20 * kFrame);
    script_.faults.clear();
    ExpectKnown(30 * kFrame + kPreroll * kFrame, 10, 0);
    ExpectKnown(28 * kFrame, 1000, 30 * kFrame);
    EXPECT_THAT(NewLines(), ElementsAre(LineOf(18)));
}

TEST(DecoderCreation, EachStepOfTheOpenHasItsCode) {
    Script script;
    script.opens = false;
    EXPECT_EQ(ScriptedEngine(script).Open(), kMediaNotOpened);
    script.opens = true;
    script.hasFirstFrame = false;
    EXPECT_EQ(ScriptedEngine(script).Open(), kAnalysisFailed);
    script.firstFrameThrows = true;
    EXPECT_EQ(ScriptedEngine(script).Open(), kOpenFailed);
    script = {};
    ScriptedEngine engine(script);
    EXPECT_EQ(engine.Ask(0, 10).result, kNotOpen);
    EXPECT_EQ(engine->GetStreamInfo(nullptr), kNoDecoder);
    ASSERT_EQ(engine->Initialize(), kSuccess);
    ASSERT_EQ(engine->SetInputFile(L"no such folder/a.mp3"), kSuccess);
    EXPECT_EQ(engine.Ask(0, 10).result, kNotOpen);
    EXPECT_EQ(engine->GetStreamInfo(nullptr), kOpenFailed) << "opened, and nothing to fill";
    EXPECT_EQ(engine.Ask(0, 10).result, kSuccess);
    EXPECT_EQ(engine->Close(), kSuccess);
    EXPECT_EQ(engine.Ask(0, 10).result, kNotOpen);
}

/// An engine whose decoder cannot be made.
class FailingEngine final : public KwMpAudioReader2 {
public:
    explicit FailingEngine(int failure) : failure_(failure) {}

protected:
    std::unique_ptr<FrameSource> CreateFrames(std::int32_t) override {
        switch (failure_) {
        case 0:
            return nullptr;
        case 1:
            throw std::bad_alloc();
        case 2:
            throw static_cast<int>(AMP_ERR_INTERNAL);
        default:
            throw std::runtime_error("a fault");
        }
    }

private:
    int failure_;
};

TEST(DecoderCreation, ADecoderThatCannotBeMadeHasItsCode) {
    const std::int32_t results[] = {kNoDecoder, kNoFrameBufferReader, kNoDecoder, kUnexpectedException};
    for (int failure = 0; failure < 4; ++failure) {
        FailingEngine engine(failure);
        EXPECT_EQ(engine.Initialize(), results[failure]);
        EXPECT_EQ(engine.SetInputFile(L"a.mp3"), kNoDecoder);
        EXPECT_EQ(engine.GetStreamInfo(nullptr), kNoDecoder);
    }
}

} // namespace
