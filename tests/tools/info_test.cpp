/// `mpatool info`, `--help` and `--version`.

#include "tools/tool_fixture.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::json;
using test::Bytes;
using test::ProcessResult;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// The same as SilentLayer3's frames but with 64 kbit/s.
Bytes SilentLayer3At64(std::size_t frames) {
    constexpr std::size_t kBytes = 208;
    Bytes stream(frames * kBytes);
    for (std::size_t i = 0; i < frames; ++i) {
        const std::uint8_t header[] = {0xFF, 0xFB, 0x50, 0x00};
        std::ranges::copy(header, stream.begin() + static_cast<std::ptrdiff_t>(i * kBytes));
    }
    return stream;
}

class InfoTest : public test::ToolTest {
protected:
    /// The report of the only file.
    Json Report(const std::string& file) const {
        const ProcessResult result = RunCounting({"info", "--json", file});
        EXPECT_EQ(result.exitStatus, 0) << result.error;
        return Json::parse(result.output).at("files").at(0);
    }
    Json Counted(const std::string& file) const { return Report(file).at("counted"); }
};

TEST_F(InfoTest, ScanOfAConstantBitRate) {
    Bytes stream(100, 0);
    const Bytes frames = test::SilentLayer3(50);
    stream.insert(stream.end(), frames.begin(), frames.end());
    stream.resize(stream.size() + 30);
    AddPlanned("a.mp3", stream, {});
    const Json report = Report("a.mp3");
    const Json counted = report.at("counted");
    EXPECT_EQ(counted.at("index"), nullptr);
    EXPECT_EQ(counted.at("infoFrame"), false);
    EXPECT_EQ(counted.at("firstFrameOffset"), 100);
    EXPECT_EQ(counted.at("layer"), 3);
    EXPECT_EQ(counted.at("lowSamplingFrequency"), false);
    EXPECT_EQ(counted.at("sampleRate"), 44100);
    EXPECT_EQ(counted.at("channels"), 2);
    EXPECT_EQ(counted.at("constantBitRate"), true);
    EXPECT_EQ(counted.at("lowestBitRate"), 128000);
    EXPECT_EQ(counted.at("highestBitRate"), 128000);
    // 417 bytes in 1152 samples: no frame is padded.
    EXPECT_EQ(counted.at("averageBitRate"), 127706);
    EXPECT_EQ(counted.at("frames"), 50);
    EXPECT_EQ(counted.at("samplesPerFrame"), 1152);
    const Json delivered = report.at("delivered");
    EXPECT_EQ(delivered.at("delaySamples"), 1100);
    EXPECT_EQ(delivered.at("samples"), 50 * 1152 - 1100);
    EXPECT_DOUBLE_EQ(delivered.at("seconds"), (50 * 1152 - 1100) / 44100.0);
}

TEST_F(InfoTest, OneFrameOfAnotherBitRateMakesItVariable) {
    Bytes stream = test::SilentLayer3(50);
    const Bytes last = SilentLayer3At64(1);
    stream.insert(stream.end(), last.begin(), last.end());
    AddPlanned("a.mp3", stream, {});
    const Json counted = Counted("a.mp3");
    EXPECT_EQ(counted.at("constantBitRate"), false);
    EXPECT_EQ(counted.at("lowestBitRate"), 64000);
    EXPECT_EQ(counted.at("highestBitRate"), 128000);
    EXPECT_EQ(counted.at("frames"), 51);
}

TEST_F(InfoTest, InfoFrameIsNotPartOfTheAudio) {
    Bytes stream = test::SilentLayer3(4);
    std::ranges::copy(std::string("Info"), stream.begin() + 36);
    AddPlanned("a.mp3", stream, {});
    const Json counted = Counted("a.mp3");
    EXPECT_EQ(counted.at("infoFrame"), true);
    EXPECT_EQ(counted.at("firstFrameOffset"), 417);
    EXPECT_EQ(counted.at("frames"), 3);
}

TEST_F(InfoTest, IndexOfTheFrames) {
    AddPlanned("a.mp3", test::SilentLayer3(4), {});
    Add("a.mp3.idx", test::IndexOf({417, 834, 1251}));
    const Json counted = Counted("a.mp3");
    EXPECT_EQ(counted.at("index"), (Json{{"entries", 3}, {"claimedEntries", 3}, {"matchesFrames", true}}));
    EXPECT_EQ(counted.at("frames"), 3);
    const Json delivered = Report("a.mp3").at("delivered");
    EXPECT_EQ(delivered.at("delaySamples"), 0);
    EXPECT_EQ(delivered.at("samples"), 3 * 1152);
}

TEST_F(InfoTest, IndexThatClaimsMoreThanItHolds) {
    AddPlanned("a.mp3", test::SilentLayer3(4), {});
    Bytes index = test::IndexOf({417, 834, 1251});
    index.at(3) = 0x7F;
    Add("a.mp3.idx", index);
    EXPECT_EQ(Counted("a.mp3").at("index"),
              (Json{{"entries", 3}, {"claimedEntries", 0x7F000003}, {"matchesFrames", false}}));
}

TEST_F(InfoTest, FilesThatCannotBeShownDoNotHideTheOthers) {
    AddPlanned("a.mp3", test::SilentLayer3(4), {});
    Add("noise.mp3", Bytes(100, 0x55));
    const ProcessResult readable = RunCounting({"info", "none.mp3", "a.mp3", "noise.mp3"});
    EXPECT_EQ(readable.exitStatus, 1);
    EXPECT_THAT(readable.error, AllOf(HasSubstr("mpatool: none.mp3: "),
                                      HasSubstr("mpatool: noise.mp3: no MPEG audio frames found\n")));
    EXPECT_THAT(readable.output, AllOf(HasSubstr("a.mp3\n"), Not(HasSubstr("noise"))));

    const ProcessResult json = RunCounting({"info", "none.mp3", "a.mp3", "noise.mp3", "--json"});
    EXPECT_EQ(json.exitStatus, 1);
    EXPECT_THAT(json.error, HasSubstr("mpatool: none.mp3: "));
    const Json files = Json::parse(json.output).at("files");
    ASSERT_EQ(files.size(), 3u);
    EXPECT_EQ(files.at(0).at("file"), "none.mp3");
    EXPECT_TRUE(files.at(0).contains("error"));
    EXPECT_EQ(files.at(1).at("counted").at("frames"), 4);
    EXPECT_EQ(files.at(2).at("error"), "noise.mp3: no MPEG audio frames found");
}

TEST_F(InfoTest, ReadableTextNamesItsSources) {
    AddPlanned("a.mp3", test::SilentLayer3(4), {});
    const ProcessResult result = RunCounting({"info", "a.mp3"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_THAT(result.error, IsEmpty());
    EXPECT_THAT(result.output, AllOf(HasSubstr("  claimed by the file\n"), HasSubstr("  counted\n"),
                                     HasSubstr("  delivered, by these counts\n"),
                                     HasSubstr("  reported by the module: probe\n"),
                                     HasSubstr("  reported by the module: sample reader\n"),
                                     HasSubstr("    frames            4 of 1152 samples\n"),
                                     HasSubstr("    bit rate          constant, 128 kbit/s\n")));
}

// On Windows, too, where other programs take a slash for an option's mark.
TEST_F(InfoTest, APathMayBeginWithASlash) {
    const ProcessResult result = RunCounting({"info", "/no such folder/song.mp3"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_THAT(result.error, HasSubstr("/no such folder/song.mp3: "));
}

TEST_F(InfoTest, NamesCannotForgeLines) {
    const ProcessResult result = RunCounting({"info", "no\nsuch\x1b.mp3"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_THAT(result.error, testing::StartsWith("mpatool: no\\x0asuch\\x1b.mp3: "));
}

TEST_F(InfoTest, NeedsAFile) {
    const ProcessResult result = RunCounting({"info", "--json"});
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_THAT(result.error, HasSubstr("FILE"));
}

TEST_F(InfoTest, HelpAndVersion) {
    const ProcessResult help = Run({"--help"});
    EXPECT_EQ(help.exitStatus, 0);
    EXPECT_THAT(help.output, AllOf(HasSubstr("info"), HasSubstr("decode"), HasSubstr("Exit status:")));
    const ProcessResult decodeHelp = Run({"decode", "--help"});
    EXPECT_EQ(decodeHelp.exitStatus, 0);
    EXPECT_THAT(decodeHelp.output,
                AllOf(HasSubstr("--start"), HasSubstr("--force"), HasSubstr("Exit status:")));
    const ProcessResult version = Run({"--version"});
    EXPECT_EQ(version.exitStatus, 0);
    EXPECT_EQ(version.output.substr(0, 8), "mpatool ");
    EXPECT_THAT(version.error, IsEmpty());
}

} // namespace
