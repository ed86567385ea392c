/// `mpatool decode`: positions that are estimates, and --index.

#include "tools/tool_fixture.h"

#include <gmock/gmock.h>

namespace {

using test::Bytes;
using test::ProcessResult;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

Bytes operator+(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Bytes At64(std::size_t frames) {
    return test::FramesOf({0xFF, 0xFB, 0x50, 0x00}, 208, frames);
}

std::string Note(const std::string& file, const std::string& why) {
    return "mpatool: " + file + ": positions are estimates (" + why +
           ", no index); to be exact, everything before --start is decoded first; --index builds an index\n";
}

class DecodeIndexTest : public test::ToolTest {
protected:
    /// A decode of a.mp3 to raw standard output.
    ProcessResult Decode(const std::vector<std::string>& further) const {
        std::vector<std::string> arguments = {"decode", "a.mp3", "-o", "-", "--format", "raw"};
        arguments.insert(arguments.end(), further.begin(), further.end());
        return RunCounting(arguments);
    }

    static Bytes Pcm(const ProcessResult& result) {
        return Bytes(result.output.begin(), result.output.end());
    }
};

TEST_F(DecodeIndexTest, VariableBitRateWithoutAnIndexIsSaid) {
    AddPlanned("a.mp3", test::SilentLayer3(50) + At64(50), {});
    const ProcessResult result = Decode({"--start", "50000", "--length", "1000"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.error, Note("a.mp3", "variable bit rate"));
    EXPECT_EQ(Pcm(result), test::CountedPcm(50000, 51000));
}

TEST_F(DecodeIndexTest, AtRatesWhereTheModuleTakesAllForConstantAsWell) {
    AddPlanned("a.mp3",
               test::FramesOf({0xFF, 0xFB, 0x94, 0x00}, 384, 50) +
                   test::FramesOf({0xFF, 0xFB, 0x54, 0x00}, 192, 1),
               {{"rate", 48000}});
    EXPECT_EQ(Decode({"--start", "10"}).error, Note("a.mp3", "variable bit rate"));
}

TEST_F(DecodeIndexTest, ForeignBytesBetweenFramesAreSaid) {
    AddPlanned("a.mp3", test::SilentLayer3(5) + Bytes(30) + test::SilentLayer3(5), {});
    EXPECT_EQ(Decode({"--start", "10"}).error, Note("a.mp3", "foreign bytes between frames"));
}

TEST_F(DecodeIndexTest, NothingIsSaidWhereNothingIsEstimated) {
    AddPlanned("a.mp3", test::SilentLayer3(50) + At64(50), {});
    EXPECT_THAT(Decode({}).error, IsEmpty());
    EXPECT_THAT(Decode({"--start", "0"}).error, IsEmpty());
    EXPECT_THAT(Decode({"--length", "10"}).error, IsEmpty());
    Add("a.mp3.idx", test::IndexOf({417}));
    EXPECT_THAT(Decode({"--start", "10"}).error, IsEmpty());
    AddPlanned("a.mp3", Bytes(30) + test::SilentLayer3(50) + Bytes(30), {});
    std::filesystem::remove(InFolder("a.mp3.idx"));
    EXPECT_THAT(Decode({"--start", "10"}).error, IsEmpty());
}

TEST_F(DecodeIndexTest, IndexIsBuiltFirstAndUsed) {
    AddPlanned("a.mp3", test::SilentLayer3(120), {{"indexEntries", 119}});
    const ProcessResult result = Decode({"--index", "--start", "100000"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_THAT(result.error, IsEmpty());
    EXPECT_EQ(Pcm(result), test::CountedPcm(100000, 119 * test::kFrameSamples));
    EXPECT_EQ(Requests("a.mp3").front().first, 100000);
    EXPECT_THAT(NewFiles(), ElementsAre("a.mp3.idx"));
}

TEST_F(DecodeIndexTest, WithTheRealModule) {
    Add("a.mp3", test::ReadFile(test::SourceFolder() / "samples" / "music.mp3"));
    const ProcessResult slice = Run(
        {"decode", "a.mp3", "-o", "-", "--format", "raw", "--index", "--start", "50000", "--length", "1000"});
    EXPECT_EQ(slice.exitStatus, 0) << slice.error;
    EXPECT_THAT(NewFiles(), ElementsAre("a.mp3.idx"));
    EXPECT_EQ(Run({"index", "--verify", "a.mp3"}).output, "a.mp3: good (231 frames)\n");
    const ProcessResult whole = Run({"decode", "a.mp3", "-o", "-", "--format", "raw"});
    EXPECT_EQ(slice.output, whole.output.substr(50000 * 4, 1000 * 4));
}

TEST_F(DecodeIndexTest, ExistingIndexIsLeftAlone) {
    AddPlanned("a.mp3", test::SilentLayer3(20), {});
    const Bytes index = test::IndexOf({834, 1251});
    Add("a.mp3.idx", index);
    EXPECT_EQ(Decode({"--index", "--length", "10"}).exitStatus, 0);
    EXPECT_EQ(Read("a.mp3.idx"), index);
    EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(DecodeIndexTest, WithoutItsIndexNothingIsDecoded) {
    AddPlanned("a.mp3", test::SilentLayer3(20), {{"indexState", 2}});
    const ProcessResult result = Decode({"--index"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_THAT(result.error, HasSubstr("mpatool: a.mp3: the module failed"));
    EXPECT_THAT(result.output, IsEmpty());
    EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(DecodeIndexTest, InterruptWhileTheIndexIsBuilt) {
    AddPlanned("a.mp3", test::SilentLayer3(20), {{"indexEntries", 6000}, {"indexDelay", 10}});
    test::RunningProcess process = StartCounting({"decode", "a.mp3", "-o", "out.wav", "--index"});
    ASSERT_TRUE(WaitForNewFiles(".idx"));
    if (!process.Interrupt())
        GTEST_SKIP() << "no console to send the interrupt through";
    const ProcessResult result = process.Finish();
    EXPECT_EQ(result.exitStatus, 130);
    EXPECT_EQ(result.error, "mpatool: a.mp3: cancelled; no index was left\n");
    EXPECT_THAT(NewFiles(), IsEmpty());
}

} // namespace
