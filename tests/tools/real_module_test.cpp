/// The tool together with the built module, on real streams.

#include "index/index_format.h"
#include "mpa/file_header_sources.h"
#include "mpa/frame_walk.h"
#include "mpa/stream_start.h"
#include "support/loaded_module.h"
#include "tools/tool_fixture.h"
#include "trcommontoolsr/file_access.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>

namespace {

using Json = nlohmann::json;
using test::Bytes;
using test::ProcessResult;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::int64_t kBytesPerSample = 4;

/// A stream of 44.1 kHz stereo in samples/ and its frames of 1152 samples, the "Info" frame left out.
struct Sample {
    const char* file;
    std::int64_t frames;
    std::int64_t delay;
    int layer;

    std::int64_t Samples() const { return frames * test::kFrameSamples - delay; }
};
constexpr Sample kLayer3 = {"music.mp3", 231, test::kLayer3Delay, 3};
constexpr Sample kLayer2 = {"music.mp2", 154, 0, 2};

Bytes ReadSample(const Sample& sample) {
    return test::ReadFile(test::SourceFolder() / "samples" / sample.file);
}

Bytes AsBytes(const test::Pcm& pcm) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(pcm.data());
    return Bytes(bytes, bytes + pcm.size() * sizeof(std::int16_t));
}

bool IsSilence(const test::Pcm& pcm) {
    return std::ranges::all_of(pcm, [](std::int16_t value) { return value == 0; });
}

/// The stretch of raw PCM from `begin` on.
Bytes Slice(const Bytes& pcm, std::int64_t begin, std::int64_t samples) {
    const auto first = pcm.begin() + begin * kBytesPerSample;
    return Bytes(first, first + samples * kBytesPerSample);
}

class RealModuleTest : public test::ToolTest {
protected:
    /// The raw PCM of a decode of `file` with these further arguments.
    Bytes Decode(const std::string& file, const std::vector<std::string>& further = {}) const {
        std::vector<std::string> arguments = {"decode", file, "-o", "-", "--format", "raw"};
        arguments.insert(arguments.end(), further.begin(), further.end());
        const ProcessResult result = Run(arguments);
        EXPECT_EQ(result.exitStatus, 0) << result.error;
        EXPECT_THAT(result.error, IsEmpty());
        return Bytes(result.output.begin(), result.output.end());
    }

    Json Info(const std::string& file) const {
        const ProcessResult result = Run({"info", "--json", file});
        EXPECT_EQ(result.exitStatus, 0) << result.error;
        EXPECT_TRUE(Json::accept(result.output)) << result.output << result.error;
        return Json::parse(result.output).at("files").at(0);
    }

    /// The positions of the frames behind the first one.
    std::vector<std::uint32_t> IndexOffsets(const std::string& file) const {
        TRCT_FileAccess access;
        EXPECT_EQ(access.OpenFile(test::Wide(Folder() / file).c_str(), 1), 1);
        trnmpa::FileAccessHeaderSource source(access);
        const auto start = trnmpa::LocateAudioStart(source);
        std::vector<std::uint32_t> offsets;
        trnmpa::FrameWalk walk(source, start.value().dataStart, start->firstHeader);
        walk.Next();
        while (const auto frame = walk.Next())
            offsets.push_back(static_cast<std::uint32_t>(frame->offset));
        return offsets;
    }
};

class SampleTest : public RealModuleTest, public testing::WithParamInterface<Sample> {
protected:
    void SetUp() override { Add(GetParam().file, ReadSample(GetParam())); }
};

TEST_P(SampleTest, DeliversWhatTheModuleHoldsToTheLastSample) {
    const Sample& sample = GetParam();
    test::LoadedModule module;
    const auto reader = module.OpenForReading(Folder() / sample.file);
    ASSERT_NE(reader, nullptr);
    const auto samples = static_cast<std::uint32_t>(sample.Samples());
    const auto whole = test::ReadPcm(*reader, 0, samples);
    ASSERT_TRUE(whole && !IsSilence(*whole));
    // One sample more and the module answers with silence: there is none behind.
    const auto beyond = test::ReadPcm(*reader, 0, samples + 1);
    ASSERT_TRUE(beyond && IsSilence(*beyond));
    EXPECT_EQ(Decode(sample.file), AsBytes(*whole));
}

TEST_P(SampleTest, FileAndPipeGetTheSame) {
    const Sample& sample = GetParam();
    ASSERT_EQ(Run({"decode", sample.file, "-o", "out.wav"}).exitStatus, 0);
    const Bytes wave = Read("out.wav");
    EXPECT_EQ(test::PcmOfWave(wave), Decode(sample.file));
    const ProcessResult piped = Run({"decode", sample.file, "-o", "-"});
    EXPECT_EQ(Bytes(piped.output.begin(), piped.output.end()), wave);
}

TEST_P(SampleTest, SlicesAreThoseOfTheWhole) {
    const Sample& sample = GetParam();
    const Bytes whole = Decode(sample.file);
    EXPECT_EQ(Decode(sample.file, {"--start", "1", "--length", "1"}), Slice(whole, 1, 1));
    EXPECT_EQ(Decode(sample.file, {"--start", "1.5s", "--length", "1s"}), Slice(whole, 66150, 44100));
    EXPECT_EQ(Decode(sample.file, {"--start", "100001"}), Slice(whole, 100001, sample.Samples() - 100001));
}

TEST_P(SampleTest, SlicesByIndexAreThoseOfTheWhole) {
    const Sample& sample = GetParam();
    const std::vector<std::uint32_t> offsets = IndexOffsets(sample.file);
    ASSERT_EQ(static_cast<std::int64_t>(offsets.size()), sample.frames - 1);
    Bytes index = test::IndexOf(offsets);
    index.at(8) = static_cast<std::uint8_t>(sample.layer);
    Add(std::string(sample.file) + ".idx", index);

    EXPECT_EQ(Info(sample.file).at("counted").at("index").at("matchesFrames"), true);
    const Bytes whole = Decode(sample.file);
    const std::int64_t samples = (sample.frames - 1) * test::kFrameSamples;
    ASSERT_EQ(static_cast<std::int64_t>(whole.size()), samples * kBytesPerSample);
    for (const std::int64_t start :
         {std::int64_t{1}, std::int64_t{1152}, std::int64_t{50000}, samples - 1153})
        EXPECT_EQ(Decode(sample.file, {"--start", std::to_string(start)}),
                  Slice(whole, start, samples - start));
}

TEST_P(SampleTest, CutLastFrameIsLeftOut) {
    const Sample& sample = GetParam();
    const Bytes whole = Decode(sample.file);
    Bytes stream = ReadSample(sample);
    stream.resize(stream.size() - 100);
    Add("cut.mp3", stream);
    EXPECT_EQ(Decode("cut.mp3"), Slice(whole, 0, sample.Samples() - test::kFrameSamples));
}

TEST_P(SampleTest, InfoShowsCountsAndWhatTheModuleReports) {
    const Sample& sample = GetParam();
    const Json info = Info(sample.file);
    EXPECT_EQ(info.at("bytes"), ReadSample(sample).size());
    EXPECT_EQ(info.at("module").at("classByName"), 2320 + sample.layer);

    const Json& probe = info.at("module").at("probe");
    EXPECT_EQ(probe.at("result"), 1);
    EXPECT_EQ(probe.at("classIdentifier"), 2320 + sample.layer);
    EXPECT_EQ(probe.at("audioCodec"), 1040 + sample.layer);
    EXPECT_EQ(probe.at("sampleRate"), 44100);
    EXPECT_EQ(probe.at("channels"), 2);
    EXPECT_NEAR(probe.at("duration100ns").get<double>() / 1e7, static_cast<double>(sample.Samples()) / 44100,
                0.03);

    const Json& reader = info.at("module").at("sampleReader");
    EXPECT_EQ(reader.at("formatTag"), 1);
    EXPECT_EQ(reader.at("sampleRate"), 44100);
    EXPECT_EQ(reader.at("channels"), 2);
    EXPECT_EQ(reader.at("bitsPerSample"), 16);

    const Json& counted = info.at("counted");
    EXPECT_EQ(counted.at("layer"), sample.layer);
    EXPECT_EQ(counted.at("constantBitRate"), true);
    EXPECT_EQ(counted.at("frames"), sample.frames);
    EXPECT_EQ(info.at("delivered").at("samples"), sample.Samples());
    EXPECT_EQ(counted.at("infoFrame"), sample.layer == 3);
}

std::string SampleName(const testing::TestParamInfo<Sample>& info) {
    return "Layer" + std::to_string(info.param.layer);
}

INSTANTIATE_TEST_SUITE_P(Samples, SampleTest, testing::Values(kLayer3, kLayer2), SampleName);

TEST_F(RealModuleTest, VariableBitRateIsShownAndDecoded) {
    Bytes stream = test::SilentLayer3(80);
    std::ranges::copy(std::string("Xing"), stream.begin() + 36);
    Add("xing.mp3", stream);
    const Json info = Info("xing.mp3");
    EXPECT_EQ(info.at("module").at("probe").at("result"), 2);
    EXPECT_EQ(info.at("module").at("probe").at("variableBitRate"), true);
    EXPECT_FALSE(info.at("module").at("probe").contains("duration100ns"));
    EXPECT_EQ(info.at("module").at("sampleReader").at("opened"), true);
    EXPECT_THAT(Run({"info", "xing.mp3"}).output,
                AllOf(HasSubstr("    result            2 (variable bit rate, not described)\n"),
                      HasSubstr("    format            44100 Hz, 2 channels, 16 bits\n")));
    EXPECT_EQ(Decode("xing.mp3"), Bytes((80 * test::kFrameSamples - test::kLayer3Delay) * kBytesPerSample));
}

TEST_F(RealModuleTest, NameOutsideTheModulesListIsDecodedAllTheSame) {
    Add("music.bin", ReadSample(kLayer2));
    EXPECT_EQ(Info("music.bin").at("module").at("classByName"), 0);
    EXPECT_EQ(static_cast<std::int64_t>(Decode("music.bin").size()), kLayer2.Samples() * kBytesPerSample);
}

TEST_F(RealModuleTest, NamesInAnyScript) {
    const std::string name = "пісня 音楽 ü.mp2";
    Add(name, ReadSample(kLayer2));
    EXPECT_EQ(Info(name).at("file"), name);
    EXPECT_EQ(static_cast<std::int64_t>(Decode(name).size()), kLayer2.Samples() * kBytesPerSample);
}

TEST_F(RealModuleTest, FilesWithoutFrames) {
    Add("empty.mp3", {});
    Add("byte.mp3", {0xFF});
    Add("text.mp3", Bytes(3000, 'a'));
    for (const char* file : {"empty.mp3", "byte.mp3", "text.mp3"}) {
        const ProcessResult info = Run({"info", file});
        EXPECT_EQ(info.exitStatus, 1);
        EXPECT_EQ(info.error, "mpatool: " + std::string(file) + ": no MPEG audio frames found\n");
        EXPECT_THAT(info.output, IsEmpty());
    }
}

} // namespace
