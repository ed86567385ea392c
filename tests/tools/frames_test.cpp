/// `mpatool frames`.

#include "tools/tool_fixture.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>

namespace {

using Json = nlohmann::json;
using test::Bytes;
using test::ProcessResult;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* kCsvHeading =
    "number,offset,bytes,firstSample,seconds,version,layer,bitRate,sampleRate,mode,padding,crc\n";

void Append(Bytes& stream, const Bytes& more) {
    stream.insert(stream.end(), more.begin(), more.end());
}

class FramesTest : public test::ToolTest {
protected:
    std::string Output(const std::vector<std::string>& arguments) const {
        const ProcessResult result = Run(arguments);
        EXPECT_EQ(result.exitStatus, 0);
        EXPECT_THAT(result.error, IsEmpty());
        EXPECT_THAT(NewFiles(), IsEmpty());
        return result.output;
    }

    /// The rows of a stream of such frames.
    std::string Csv(const Bytes& stream) const {
        Add("a.mp3", stream);
        return Output({"frames", "--csv", "a.mp3"});
    }
};

TEST_F(FramesTest, ColumnsOfAConstantBitRate) {
    Bytes stream(50, 0);
    Append(stream, test::SilentLayer3(3));
    EXPECT_EQ(Csv(stream), std::string(kCsvHeading) +
                               "0,50,417,-1100,-0.024943,1,3,128000,44100,stereo,0,0\n"
                               "1,467,417,52,0.001179,1,3,128000,44100,stereo,0,0\n"
                               "2,884,417,1204,0.027302,1,3,128000,44100,stereo,0,0\n");
}

TEST_F(FramesTest, EveryFrameSpeaksForItself) {
    Bytes stream = test::FramesOf({0xFF, 0xFB, 0x92, 0x40}, 418, 1);  // padded, joint stereo
    Append(stream, test::FramesOf({0xFF, 0xFA, 0x50, 0x80}, 208, 1)); // CRC, 64 kbit/s, dual channel
    stream.resize(stream.size() + 40);
    Append(stream, test::SilentLayer3(1));
    stream.resize(stream.size() + 100);
    EXPECT_EQ(Csv(stream), std::string(kCsvHeading) +
                               "0,0,418,-1100,-0.024943,1,3,128000,44100,joint stereo,1,0\n"
                               "1,418,208,52,0.001179,1,3,64000,44100,dual channel,0,1\n"
                               "2,666,417,1204,0.027302,1,3,128000,44100,stereo,0,0\n");
}

TEST_F(FramesTest, VersionsAndLayers) {
    EXPECT_THAT(Csv(test::FramesOf({0xFF, 0xFD, 0x80, 0xC0}, 417, 3)),
                HasSubstr("\n1,417,417,1152,0.026122,1,2,128000,44100,single channel,0,0\n"));
    EXPECT_THAT(Csv(test::FramesOf({0xFF, 0xF3, 0x40, 0xC0}, 104, 4)),
                HasSubstr("\n2,208,104,52,0.002358,2,3,32000,22050,single channel,0,0\n"));
    EXPECT_THAT(Csv(test::FramesOf({0xFF, 0xE3, 0x40, 0x00}, 208, 4)),
                HasSubstr("\n2,416,208,52,0.004717,2.5,3,32000,11025,stereo,0,0\n"));
}

TEST_F(FramesTest, WithAnIndexFromItsFirstEntryOn) {
    Add("a.mp3.idx", test::IndexOfSilence(4));
    EXPECT_EQ(Csv(test::SilentLayer3(4)), std::string(kCsvHeading) +
                                              "0,417,417,0,0.000000,1,3,128000,44100,stereo,0,0\n"
                                              "1,834,417,1152,0.026122,1,3,128000,44100,stereo,0,0\n"
                                              "2,1251,417,2304,0.052245,1,3,128000,44100,stereo,0,0\n");
    EXPECT_EQ(Json::parse(Output({"frames", "--json", "a.mp3"})).at("files").at(0).at("index"), true);
}

TEST_F(FramesTest, InfoFrameIsNotListed) {
    Bytes stream = test::SilentLayer3(3);
    std::ranges::copy(std::string("Info"), stream.begin() + 36);
    EXPECT_THAT(Csv(stream), StartsWith(std::string(kCsvHeading) + "0,417,417,-1100,"));
}

TEST_F(FramesTest, TableForPeople) {
    Add("a.mp3", test::SilentLayer3(2));
    EXPECT_EQ(
        Output({"frames", "a.mp3"}),
        "  frame        byte  bytes        sample          time  MPEG  layer  kbit/s     Hz  mode            "
        "padding  CRC\n"
        "      0           0    417         -1100     -0:00.025  1     III       128  44100  stereo          "
        "no       no\n"
        "      1         417    417            52      0:00.001  1     III       128  44100  stereo          "
        "no       no\n");
}

TEST_F(FramesTest, Json) {
    const std::string name = "\"ü\" 音.mp3";
    const bool quotesAreNames = std::filesystem::path::preferred_separator == '/';
    const std::string file = quotesAreNames ? name : "ü 音.mp3";
    Add(file, test::SilentLayer3(3));
    const Json table = Json::parse(Output({"frames", "--json", file})).at("files").at(0);
    EXPECT_EQ(table.at("file"), file);
    EXPECT_EQ(table.at("index"), false);
    EXPECT_EQ(table.at("delaySamples"), 1100);
    ASSERT_EQ(table.at("frames").size(), 3u);
    EXPECT_EQ(table.at("frames").at(2), (Json{{"number", 2},
                                              {"offset", 834},
                                              {"bytes", 417},
                                              {"firstSample", 1204},
                                              {"seconds", 0.027302},
                                              {"version", "1"},
                                              {"layer", 3},
                                              {"bitRate", 128000},
                                              {"sampleRate", 44100},
                                              {"mode", "stereo"},
                                              {"padding", false},
                                              {"crc", false}}));
}

TEST_F(FramesTest, ManyFramesComeInOrder) {
    constexpr std::size_t kFrames = 20000;
    const std::string csv = Csv(test::SilentLayer3(kFrames));
    EXPECT_EQ(static_cast<std::size_t>(std::ranges::count(csv, '\n')), kFrames + 1);
    EXPECT_THAT(csv, HasSubstr("\n19999,8339583,417,23037748,522.397914,"));
}

TEST_F(FramesTest, ReaderThatHasSeenEnough) {
    Add("a.mp3", test::SilentLayer3(20000));
    test::RunningProcess process(test::ToolPath(), {"frames", "--csv", "a.mp3"}, Folder());
    EXPECT_EQ(process.ReadOutput(6), "number");
    process.CloseOutput();
    const ProcessResult result = process.Finish();
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_THAT(result.error, IsEmpty());
}

TEST_F(FramesTest, JsonOfAnUnusableFile) {
    Add("noise.mp3", Bytes(5000, 0x55));
    const ProcessResult result = Run({"frames", "noise.mp3", "--json"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.error, "mpatool: noise.mp3: no MPEG audio frames found\n");
    EXPECT_EQ(Json::parse(result.output).at("files"),
              Json::array({{{"file", "noise.mp3"}, {"error", "noise.mp3: no MPEG audio frames found"}}}));
}

TEST_F(FramesTest, UnusableFilesAndArguments) {
    Add("noise.mp3", Bytes(5000, 0x55));
    Add("a.mp3", test::SilentLayer3(3));
    for (const auto& [arguments, status, reason] :
         std::vector<std::tuple<std::vector<std::string>, int, std::string>>{
             {{"frames", "none.mp3"}, 1, "mpatool: none.mp3: "},
             {{"frames", "."}, 1, "mpatool: .: Is a directory\n"},
             {{"frames", "noise.mp3", "--csv"}, 1, "mpatool: noise.mp3: no MPEG audio frames found\n"},
             {{"frames", "a.mp3", "--json", "--csv"}, 2, "--csv"},
             {{"frames", "a.mp3", "a.mp3"}, 2, "a.mp3"},
             {{"frames"}, 2, "FILE"}}) {
        const ProcessResult result = Run(arguments);
        EXPECT_EQ(result.exitStatus, status);
        EXPECT_THAT(result.error, HasSubstr(reason));
        EXPECT_THAT(result.output, IsEmpty());
    }
}

} // namespace
