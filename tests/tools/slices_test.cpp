/// `mpatool slices`, over slices that tell where they come from and over the built module's.

#include "tools/tool_fixture.h"

#include "index/index_format.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <span>

namespace {

using test::Bytes;
using test::ProcessResult;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::int64_t kSliceSamples = 1764; // 40 ms at 44100 Hz
constexpr std::int64_t kBytesPerSample = 4;

Bytes AsBytes(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

class SlicesTest : public test::ToolTest {
protected:
    void AddSample(const std::string& name) {
        Add(name, test::ReadFile(test::SourceFolder() / "samples" / name));
    }

    /// With an index beside it that claims another sample rate.
    void AddSampleWithIndexAtRate(const std::string& name, std::uint32_t rate) {
        AddSample(name);
        Run({"index", name});
        Bytes index = Read(name + ".idx");
        trnmpa::MpaIndexHeader header =
            trnmpa::ParseIndexHeader(std::span(index).first<trnmpa::kIndexHeaderBytes>());
        header.sampleRate = rate;
        std::ranges::copy(trnmpa::FormatIndexHeader(header), index.begin());
        Add(name + ".idx", index);
    }

    /// A run whose messages do not matter.
    ProcessResult Slices(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"slices"});
        return Run(arguments);
    }

    Bytes Raw(std::vector<std::string> arguments) const {
        arguments.insert(arguments.end(), {"-o", "-", "--format", "raw"});
        const ProcessResult result = Run(arguments);
        EXPECT_EQ(result.exitStatus, 0) << result.error;
        return AsBytes(result.output);
    }
};

TEST_F(SlicesTest, AreWrittenOneAfterAnother) {
    // 40 frames without the delay are 25 slices and 880 samples.
    AddPlanned("a.mp3", test::SilentLayer3(40), {{"slices", 25}});
    const ProcessResult result = RunCounting({"slices", "a.mp3", "--time", "40", "-o", "out.wav"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(test::PcmOfWave(Read("out.wav")), test::CountedPcm(0, 25 * kSliceSamples));
    EXPECT_EQ(result.error,
              "mpatool: a.mp3: the last 19.955 ms (880 samples) do not fill a slice and are lost\n");
    EXPECT_THAT(NewFiles(), ElementsAre("out.wav"));
}

TEST_F(SlicesTest, SomeOfThem) {
    AddPlanned("a.mp3", test::SilentLayer3(40), {{"slices", 25}});
    const ProcessResult result =
        RunCounting({"slices", "a.mp3", "--time", "40", "--start", "5", "--count", "3", "-o", "out.wav"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(test::PcmOfWave(Read("out.wav")), test::CountedPcm(5 * kSliceSamples, 8 * kSliceSamples));
    EXPECT_THAT(result.error, IsEmpty()) << "the end was not reached";
}

TEST_F(SlicesTest, FractionsOfAMillisecond) {
    AddPlanned("a.mp3", test::SilentLayer3(40), {{"slices", 3}});
    EXPECT_EQ(RunCounting({"slices", "a.mp3", "--time", "26.1224", "-o", "out.wav"}).exitStatus, 0);
    // 3 * 26.1224 ms are 3455.99 samples.
    EXPECT_EQ(test::PcmOfWave(Read("out.wav")), test::CountedPcm(0, 3455));
}

TEST_F(SlicesTest, ReaderThatEndsElsewhereThanTheFrames) {
    AddPlanned("a.mp3", test::SilentLayer3(40), {{"slices", 2}});
    const ProcessResult result = RunCounting({"slices", "a.mp3", "--time", "40", "-o", "out.wav"});
    EXPECT_EQ(result.error, "mpatool: a.mp3: what follows the last slice, less than 40.000 ms, is lost\n");
}

TEST_F(SlicesTest, WithoutASampleAreNotReadForEver) {
    AddSampleWithIndexAtRate("music.mp3", 1);
    const ProcessResult result = Slices({"music.mp3", "--time", "1", "-o", "out.wav"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.error, "mpatool: music.mp3: slices of that time hold no sample at 1 Hz\n");
}

TEST_F(SlicesTest, FarBehindTheEndAtTheHighestRateOfAnIndex) {
    AddSampleWithIndexAtRate("music.mp3", 0xFFFFFFFF);
    const ProcessResult result =
        Slices({"music.mp3", "--time", "10000", "--start", "4294967295", "-o", "out.wav"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.error, "mpatool: music.mp3: the module cannot read slice 4294967295\n");
}

TEST_F(SlicesTest, FailureLeavesNoHalfFile) {
    AddPlanned("bad.mp3", test::SilentLayer3(40), {{"sliceFail", 3}});
    Add("kept.wav", {1, 2, 3});
    const ProcessResult result =
        RunCounting({"slices", "bad.mp3", "--time", "40", "-o", "kept.wav", "--force"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.error, "mpatool: bad.mp3: the module cannot read slice 3\n");
    EXPECT_EQ(Read("kept.wav"), (Bytes{1, 2, 3}));
    EXPECT_THAT(NewFiles(), IsEmpty());
    EXPECT_THAT(RunCounting({"slices", "bad.mp3", "--time", "40", "-o", "kept.wav"}).error,
                HasSubstr("kept.wav: exists already"));
}

TEST_F(SlicesTest, NothingToWrite) {
    AddPlanned("a.mp3", test::SilentLayer3(40), {{"slices", 0}});
    const auto error = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"slices", "a.mp3", "-o", "out.wav"});
        const ProcessResult result = RunCounting(arguments);
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_THAT(NewFiles(), IsEmpty());
        return result.error;
    };
    EXPECT_EQ(error({"--time", "40"}), "mpatool: a.mp3: holds less than one slice\n");
    EXPECT_EQ(error({"--time", "40", "--start", "9"}),
              "mpatool: a.mp3: --start (slice 9) lies behind the end\n");
    AddPlanned("a.mp3", test::SilentLayer3(40), {{"open", 0}});
    EXPECT_EQ(error({"--time", "40"}), "mpatool: a.mp3: the module cannot open it\n");
}

TEST_F(SlicesTest, UnusableArguments) {
    AddPlanned("a.mp3", test::SilentLayer3(4), {});
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{}, "--time"},
        {{"--time", "0.9999"}, "--time: '0.9999'"},
        {{"--time", "10000.0001"}, "--time: '10000.0001'"},
        {{"--time", "40ms"}, "--time: '40ms'"},
        {{"--time", "40", "--start", "4294967296"}, "--start"},
        {{"--time", "40", "--count", "0"}, "--count"},
    };
    for (const auto& [further, reason] : cases) {
        std::vector<std::string> arguments = {"slices", "a.mp3", "-o", "out.wav"};
        arguments.insert(arguments.end(), further.begin(), further.end());
        const ProcessResult result = RunCounting(arguments);
        EXPECT_EQ(result.exitStatus, 2);
        EXPECT_THAT(result.error, HasSubstr(reason));
        EXPECT_THAT(NewFiles(), IsEmpty());
    }
}

TEST_F(SlicesTest, OfTheBuiltModuleAreItsStream) {
    AddSample("music.mp3");
    const Bytes whole = Raw({"decode", "music.mp3"});
    const ProcessResult result = Slices({"music.mp3", "--time", "40", "-o", "-"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(test::PcmOfWave(AsBytes(result.output)),
              Bytes(whole.begin(), whole.begin() + 150 * kSliceSamples * kBytesPerSample));
    EXPECT_EQ(result.error,
              "mpatool: music.mp3: the last 9.342 ms (412 samples) do not fill a slice and are lost\n");
    EXPECT_EQ(Raw({"slices", "music.mp3", "--time", "40", "--start", "70", "--count", "2"}),
              Bytes(whole.begin() + 70 * kSliceSamples * kBytesPerSample,
                    whole.begin() + 72 * kSliceSamples * kBytesPerSample));
}

TEST_F(SlicesTest, ConvertedSlicesAreTheConvertedStream) {
    // Layer II: nothing is doubled, so that both ways round once.
    AddSample("music.mp2");
    const std::vector<std::string> format = {"--rate", "48000", "--channels", "1", "--bits", "24"};
    std::vector<std::string> decode = {"decode", "music.mp2"};
    std::vector<std::string> slices = {"slices", "music.mp2", "--time", "33.3333"};
    decode.insert(decode.end(), format.begin(), format.end());
    slices.insert(slices.end(), format.begin(), format.end());
    const Bytes sliced = Raw(slices);
    Bytes whole = Raw(decode);
    ASSERT_LT(sliced.size(), whole.size());
    ASSERT_GT(sliced.size() + 1600 * 3, whole.size());
    // The stretch ends where a slice does; what the converter sees behind it is the same.
    whole.resize(sliced.size());
    EXPECT_EQ(sliced, whole);
}

TEST_F(SlicesTest, BeginAtTheFirstEntryOfAnIndex) {
    AddSample("music.mp3");
    ASSERT_EQ(Run({"index", "music.mp3"}).exitStatus, 0);
    const Bytes whole = Raw({"decode", "music.mp3", "--length", "1764"});
    EXPECT_EQ(Raw({"slices", "music.mp3", "--time", "40", "--count", "1"}), whole);
}

TEST_F(SlicesTest, LowerRatesLeaveOutHalfOfTheDelayUnlessTheyJump) {
    // MPEG-2 layer III, 64 kbit/s, 22050 Hz, stereo: 20 frames of 576 samples are 11520, of 100 ms 2205.
    Add("low.mp3", test::FramesOf({0xFF, 0xF3, 0x80, 0x00}, 208, 20));
    const auto lost = [&](const char* start) {
        return Slices({"low.mp3", "--time", "100", "--start", start, "-o", "-"}).error;
    };
    EXPECT_THAT(lost("0"), HasSubstr("(2150 samples)"));
    EXPECT_THAT(lost("1"), HasSubstr("(1600 samples)"));
}

} // namespace
