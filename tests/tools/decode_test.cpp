/// `mpatool decode` over a module whose samples tell where they come from.

#include "tools/tool_fixture.h"

#include <gmock/gmock.h>

#include <chrono>
#include <thread>

namespace {

using test::Bytes;
using test::ProcessResult;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

constexpr std::int64_t kFrames = 120;
constexpr std::int64_t kSamples = kFrames * test::kFrameSamples - test::kLayer3Delay;
constexpr std::int64_t kRate = 44100;

std::vector<std::uint32_t> OffsetsFromSecondFrame(std::int64_t frames) {
    std::vector<std::uint32_t> offsets;
    for (std::int64_t i = 1; i < frames; ++i)
        offsets.push_back(static_cast<std::uint32_t>(i * test::kSilentFrameBytes));
    return offsets;
}

Bytes AsBytes(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

class DecodeTest : public test::ToolTest {
protected:
    void SetUp() override { AddPlanned("a.mp3", test::SilentLayer3(kFrames), {{"end", kSamples}}); }

    /// The run failed for the reason and left nothing behind.
    void ExpectFailure(const ProcessResult& result, int status, const std::string& reason) const {
        EXPECT_EQ(result.exitStatus, status);
        EXPECT_THAT(result.error, HasSubstr(reason));
        EXPECT_THAT(result.output, IsEmpty());
        EXPECT_THAT(NewFiles(), IsEmpty());
    }

    /// The raw output of a decode with these further arguments.
    Bytes RawOutput(const std::vector<std::string>& further) const {
        std::vector<std::string> arguments = {"decode", "a.mp3", "-o", "-", "--format", "raw"};
        arguments.insert(arguments.end(), further.begin(), further.end());
        const ProcessResult result = RunCounting(arguments);
        EXPECT_EQ(result.exitStatus, 0) << result.error;
        EXPECT_THAT(result.error, IsEmpty());
        return AsBytes(result.output);
    }
};

TEST_F(DecodeTest, DeliversEverySampleAndAsksForNoneBehindTheEnd) {
    const ProcessResult result = RunCounting({"decode", "a.mp3", "-o", "out.wav"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_THAT(result.error, IsEmpty());
    EXPECT_EQ(test::PcmOfWave(Read("out.wav")), test::CountedPcm(0, kSamples));
    EXPECT_THAT(Requests("a.mp3"), ElementsAre(Pair(0, kRate), Pair(kRate, kRate), Pair(2 * kRate, kRate),
                                               Pair(3 * kRate, kSamples - 3 * kRate)));
    EXPECT_THAT(NewFiles(), ElementsAre("out.wav"));
}

TEST_F(DecodeTest, TruncatedLastFrameIsNotAskedFor) {
    Bytes stream = test::SilentLayer3(3);
    stream.pop_back();
    AddPlanned("cut.mp3", stream, {});
    EXPECT_EQ(RunCounting({"decode", "cut.mp3", "-o", "out.raw"}).exitStatus, 0);
    EXPECT_EQ(Read("out.raw"), test::CountedPcm(0, 2 * test::kFrameSamples - test::kLayer3Delay));
}

TEST_F(DecodeTest, BytesBehindTheLastFrameAreNotAskedFor) {
    Bytes stream = test::SilentLayer3(3);
    stream.insert(stream.end(), 128, std::uint8_t{'T'});
    AddPlanned("tagged.mp3", stream, {});
    EXPECT_EQ(RunCounting({"decode", "tagged.mp3", "-o", "out.raw"}).exitStatus, 0);
    EXPECT_EQ(Read("out.raw"), test::CountedPcm(0, 3 * test::kFrameSamples - test::kLayer3Delay));
}

TEST_F(DecodeTest, SliceInSamples) {
    EXPECT_EQ(RawOutput({"--start", "50000", "--length", "1000"}), test::CountedPcm(50000, 51000));
    // Without an index only reading through from the start is exact.
    EXPECT_THAT(Requests("a.mp3"),
                ElementsAre(Pair(0, kRate), Pair(kRate, 50000 - kRate), Pair(50000, 1000)));
}

TEST_F(DecodeTest, SliceInTime) {
    EXPECT_EQ(RawOutput({"--start", "1.5s", "--length", "250ms"}),
              test::CountedPcm(kRate * 3 / 2, kRate * 3 / 2 + kRate / 4));
    EXPECT_EQ(RawOutput({"--start", "0:02"}), test::CountedPcm(2 * kRate, kSamples));
}

TEST_F(DecodeTest, LengthBeyondTheEndIsCut) {
    EXPECT_EQ(RawOutput({"--start", std::to_string(kSamples - 1), "--length", "99h"}),
              test::CountedPcm(kSamples - 1, kSamples));
}

TEST_F(DecodeTest, WithAnIndexSampleZeroIsTheFirstEntryAndStartJumps) {
    Add("a.mp3.idx", test::IndexOf(OffsetsFromSecondFrame(kFrames)));
    EXPECT_EQ(RawOutput({"--start", "100000"}),
              test::CountedPcm(100000, (kFrames - 1) * test::kFrameSamples));
    EXPECT_EQ(Requests("a.mp3").front().first, 100000);
}

TEST_F(DecodeTest, IndexOfOtherFramesIsNotJumpedBy) {
    Add("a.mp3.idx", test::IndexOf(OffsetsFromSecondFrame(kFrames - 1)));
    EXPECT_EQ(RawOutput({"--start", "100000", "--length", "10"}), test::CountedPcm(100000, 100010));
    EXPECT_THAT(Requests("a.mp3").front(), Pair(0, kRate));
}

TEST_F(DecodeTest, IndexWithoutEntriesIsAFailure) {
    Add("a.mp3.idx", test::IndexOf({}));
    ExpectFailure(RunCounting({"decode", "a.mp3", "-o", "out.wav"}), 1,
                  "a.mp3: the index beside it lists no frames (mpatool index --force builds it anew)");
}

TEST_F(DecodeTest, StandardOutputGetsTheBytesOfTheFile) {
    ASSERT_EQ(RunCounting({"decode", "a.mp3", "-o", "out.wav"}).exitStatus, 0);
    const ProcessResult piped = RunCounting({"decode", "a.mp3", "-o", "-"});
    EXPECT_EQ(piped.exitStatus, 0);
    EXPECT_THAT(piped.error, IsEmpty());
    EXPECT_EQ(AsBytes(piped.output), Read("out.wav"));
}

TEST_F(DecodeTest, DefaultOutputLiesInTheCurrentFolder) {
    std::filesystem::create_directory(Folder() / "music");
    AddPlanned("music/b.c.mp3", test::SilentLayer3(2), {});
    EXPECT_EQ(RunCounting({"decode", "music/b.c.mp3"}).exitStatus, 0);
    EXPECT_EQ(RunCounting({"decode", "music/b.c.mp3", "--format", "raw"}).exitStatus, 0);
    EXPECT_TRUE(Exists("b.c.wav"));
    EXPECT_EQ(Read("b.c.raw"), test::CountedPcm(0, 2 * test::kFrameSamples - test::kLayer3Delay));
}

TEST_F(DecodeTest, ExistingOutputStaysWithoutForce) {
    Add("out.wav", {1, 2, 3});
    ExpectFailure(RunCounting({"decode", "a.mp3", "-o", "out.wav"}), 1, "out.wav: exists already");
    EXPECT_EQ(Read("out.wav"), (Bytes{1, 2, 3}));
    EXPECT_THAT(Requests("a.mp3"), IsEmpty());

    EXPECT_EQ(RunCounting({"decode", "a.mp3", "-o", "out.wav", "--force"}).exitStatus, 0);
    EXPECT_EQ(test::PcmOfWave(Read("out.wav")), test::CountedPcm(0, kSamples));
    EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(DecodeTest, InputIsNeverTheOutput) {
    const Bytes before = Read("a.mp3");
    ExpectFailure(RunCounting({"decode", "a.mp3", "-o", "./a.mp3", "--format", "raw", "--force"}), 1,
                  "is the input file");
    EXPECT_EQ(Read("a.mp3"), before);
}

TEST_F(DecodeTest, FailureInTheMiddleLeavesNoHalfFile) {
    AddPlanned("bad.mp3", test::SilentLayer3(kFrames), {{"fail", 3 * kRate - 1}});
    ExpectFailure(RunCounting({"decode", "bad.mp3", "-o", "out.wav"}), 1,
                  "bad.mp3: the module cannot decode from sample 88200 on");
    EXPECT_EQ(Requests("bad.mp3").size(), 3u);

    Add("kept.wav", {1, 2, 3});
    EXPECT_EQ(RunCounting({"decode", "bad.mp3", "-o", "kept.wav", "--force"}).exitStatus, 1);
    EXPECT_EQ(Read("kept.wav"), (Bytes{1, 2, 3}));
}

TEST_F(DecodeTest, ClosedPipeEndsQuietly) {
    AddPlanned("long.mp3", test::SilentLayer3(2000), {});
    test::RunningProcess process = StartCounting({"decode", "long.mp3", "-o", "-"});
    EXPECT_EQ(process.ReadOutput(4), "RIFF");
    process.CloseOutput();
    const ProcessResult result = process.Finish();
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_THAT(result.error, IsEmpty());
}

TEST_F(DecodeTest, InterruptLeavesNoHalfFile) {
    AddPlanned("slow.mp3", test::SilentLayer3(kFrames), {{"delay", 300}});
    test::RunningProcess process = StartCounting({"decode", "slow.mp3", "-o", "out.wav"});
    for (int i = 0; i < 4000 && NewFiles().empty(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    ASSERT_FALSE(NewFiles().empty());
    if (!process.Interrupt())
        GTEST_SKIP() << "no console to send the interrupt through";
    const ProcessResult result = process.Finish();
    EXPECT_EQ(result.exitStatus, 130);
    EXPECT_LT(Requests("slow.mp3").size(), 4u);
    EXPECT_THAT(result.error, IsEmpty());
    EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(DecodeTest, DevicesAreWrittenToDirectly) {
    const bool isWindows = std::filesystem::path::preferred_separator == '\\';
    const ProcessResult result = RunCounting({"decode", "a.mp3", "-o", isWindows ? "NUL" : "/dev/null"});
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(DecodeTest, UnusableArguments) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"--start", "soon"}, "--start: 'soon'"},
        {{"--length", "1.5"}, "--length: '1.5'"},
        {{"--length", "0"}, "--length must be greater than 0"},
        {{"--format", "flac"}, "--format"},
        {{"--loud"}, "--loud"},
        {{"b.mp3"}, "b.mp3"},
    };
    for (const auto& [further, reason] : cases) {
        std::vector<std::string> arguments = {"decode", "a.mp3", "-o", "out.wav"};
        arguments.insert(arguments.end(), further.begin(), further.end());
        ExpectFailure(RunCounting(arguments), 2, reason);
    }
    ExpectFailure(RunCounting({"decode", "a.mp3", "-o", "out.flac"}), 2, "out.flac");
    ExpectFailure(RunCounting({"decode"}), 2, "FILE");
    ExpectFailure(RunCounting({}), 2, "subcommand");
}

TEST_F(DecodeTest, StartBehindTheEnd) {
    ExpectFailure(RunCounting({"decode", "a.mp3", "-o", "out.wav", "--start", std::to_string(kSamples)}), 1,
                  "a.mp3: --start (137140 samples, 0:03.110) lies behind the end (137140 samples, 0:03.110)");
}

TEST_F(DecodeTest, UnusableFiles) {
    ExpectFailure(RunCounting({"decode", "none.mp3", "-o", "out.wav"}), 1, "none.mp3: ");
    Add("empty.mp3", {});
    ExpectFailure(RunCounting({"decode", "empty.mp3", "-o", "out.wav"}), 1,
                  "empty.mp3: no MPEG audio frames found");
    Add("noise.mp3", Bytes(5000, 0x55));
    ExpectFailure(RunCounting({"decode", "noise.mp3", "-o", "out.wav"}), 1,
                  "noise.mp3: no MPEG audio frames found");
    ExpectFailure(RunCounting({"decode", "a.mp3", "-o", "nowhere/out.wav"}), 1, "nowhere/out.wav: ");
    ExpectFailure(RunCounting({"decode", ".", "-o", "out.wav"}), 1, ".: Is a directory");
}

TEST_F(DecodeTest, FolderAsOutput) {
    std::filesystem::create_directory(Folder() / "out.wav");
    const ProcessResult result = RunCounting({"decode", "a.mp3", "-o", "out.wav", "--force"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_THAT(result.error, HasSubstr("out.wav: Is a directory"));
}

TEST_F(DecodeTest, ModuleThatDoesNotOpenTheFile) {
    AddPlanned("shut.mp3", test::SilentLayer3(4), {{"open", 0}});
    ExpectFailure(RunCounting({"decode", "shut.mp3", "-o", "out.wav"}), 1,
                  "shut.mp3: the module cannot open it");
}

TEST_F(DecodeTest, ModuleThatDescribesAnotherStream) {
    AddPlanned("other.mp3", test::SilentLayer3(4), {{"channels", 1}});
    ExpectFailure(RunCounting({"decode", "other.mp3", "-o", "out.wav"}), 1, "describes another stream");
}

TEST_F(DecodeTest, ModuleThatIsNone) {
    ExpectFailure(Run({"decode", "a.mp3", "-o", "out.wav", "--module", "a.mp3"}), 1,
                  "a.mp3: the module cannot be loaded");
    ExpectFailure(Run({"decode", "a.mp3", "-o", "out.wav", "--module", "none.so"}), 1,
                  "none.so: the module cannot be loaded");
}

TEST_F(DecodeTest, NamesInAnyScript) {
    const std::string name = "пісня 音楽 \u00fc";
    AddPlanned(name + ".mp3", test::SilentLayer3(2), {});
    const ProcessResult result = RunCounting({"decode", name + ".mp3", "-o", name + " 2.raw"});
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    EXPECT_EQ(Read(name + " 2.raw"), test::CountedPcm(0, 2 * test::kFrameSamples - test::kLayer3Delay));
    EXPECT_THAT(RunCounting({"decode", name + ".mp2"}).error, HasSubstr(name + ".mp2: "));
}

} // namespace
