/// `mpatool decode` to other formats of PCM.

#include "tools/tool_fixture.h"

#include <gmock/gmock.h>

namespace {

using test::Bytes;
using test::ProcessResult;
using testing::HasSubstr;
using testing::IsEmpty;

class DecodeFormatTest : public test::ToolTest {
protected:
    void AddSample(const std::string& name) {
        Add(name, test::ReadFile(test::SourceFolder() / "samples" / name));
    }

    /// What the built module gives with these further arguments.
    Bytes Decode(const std::string& file, const std::vector<std::string>& further) const {
        std::vector<std::string> arguments = {"decode", file, "-o", "-"};
        arguments.insert(arguments.end(), further.begin(), further.end());
        const ProcessResult result = Run(arguments);
        EXPECT_EQ(result.exitStatus, 0) << result.error;
        EXPECT_THAT(result.error, IsEmpty());
        return Bytes(result.output.begin(), result.output.end());
    }
};

/// The bytes of the samples [begin, end).
Bytes Stretch(const Bytes& pcm, std::int64_t begin, std::int64_t end, std::int64_t bytesPerSample) {
    return Bytes(pcm.begin() + begin * bytesPerSample, pcm.begin() + end * bytesPerSample);
}

std::uint32_t Number(const Bytes& bytes, std::size_t offset, int count) {
    std::uint32_t value = 0;
    for (int i = 0; i < count; ++i)
        value |= std::uint32_t{bytes.at(offset + static_cast<std::size_t>(i))} << (8 * i);
    return value;
}

TEST_F(DecodeFormatTest, WiderSamplesHaveTheSameValues) {
    AddPlanned("a.mp3", test::SilentLayer3(40), {});
    const ProcessResult result = RunCounting(
        {"decode", "a.mp3", "-o", "-", "--format", "raw", "--bits", "24", "--start", "50", "--length", "9"});
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    Bytes expected;
    const Bytes pcm = test::CountedPcm(50, 59);
    for (std::size_t i = 0; i < pcm.size(); i += 2)
        expected.insert(expected.end(), {0, pcm[i], pcm[i + 1]});
    EXPECT_EQ(Bytes(result.output.begin(), result.output.end()), expected);
}

TEST_F(DecodeFormatTest, HeaderTellsTheFormat) {
    AddSample("music.mp2");
    const Bytes wave =
        Decode("music.mp2", {"--rate", "22050", "--channels", "1", "--bits", "8", "--length", "22049"});
    EXPECT_EQ(Number(wave, 22, 2), 1u);
    EXPECT_EQ(Number(wave, 24, 4), 22050u);
    EXPECT_EQ(Number(wave, 34, 2), 8u);
    // Every second of 22049 samples, the first included; a byte makes their number even.
    EXPECT_EQ(Number(wave, 40, 4), 11025u);
    EXPECT_EQ(wave.size(), 44u + 11025u + 1u);
    EXPECT_EQ(Number(wave, 4, 4), wave.size() - 8);
}

TEST_F(DecodeFormatTest, StretchOfAConvertedStreamIsThatOfTheWhole) {
    AddSample("music.mp3");
    const std::vector<std::string> format = {"--format", "raw", "--rate", "48000", "--bits", "24"};
    const Bytes whole = Decode("music.mp3", format);
    constexpr std::int64_t kBytes = 6;
    // Those of 265012 samples at 44100 Hz.
    ASSERT_EQ(whole.size(), 288449u * kBytes);
    const auto stretch = [&](const char* start, const char* length) {
        std::vector<std::string> further = format;
        further.insert(further.end(), {"--start", start, "--length", length});
        return Decode("music.mp3", further);
    };
    // Output sample n stands at n * 44100 / 48000 of the input.
    EXPECT_EQ(stretch("44100", "441"), Stretch(whole, 48000, 48480, kBytes));
    EXPECT_EQ(stretch("1", "100000"), Stretch(whole, 2, 108845, kBytes));
    EXPECT_EQ(stretch("265000", "99h"), Stretch(whole, 288436, 288449, kBytes));
    EXPECT_EQ(stretch("1", "1"), Stretch(whole, 2, 3, kBytes));
}

TEST_F(DecodeFormatTest, JumpByAnIndexFindsTheSameConvertedSamples) {
    AddSample("music.mp2");
    ASSERT_EQ(Run({"index", "music.mp2"}).exitStatus, 0);
    const std::vector<std::string> format = {"--format", "raw", "--rate", "32000"};
    const Bytes whole = Decode("music.mp2", format);
    std::vector<std::string> further = format;
    further.insert(further.end(), {"--start", "88200", "--length", "44100"});
    EXPECT_EQ(Decode("music.mp2", further), Stretch(whole, 64000, 96000, 4));
}

TEST_F(DecodeFormatTest, FormatsThatAreNotServed) {
    AddPlanned("a.mp3", test::SilentLayer3(4), {});
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"--rate", "3999"},  {"--rate", "384001"}, {"--rate", "fast"},
        {"--channels", "3"}, {"--channels", "0"},  {"--bits", "12"},
    };
    for (const auto& [option, value] : cases) {
        const ProcessResult result = RunCounting({"decode", "a.mp3", "-o", "out.wav", option, value});
        EXPECT_EQ(result.exitStatus, 2) << option << value;
        EXPECT_THAT(result.error, HasSubstr(option));
        EXPECT_THAT(NewFiles(), IsEmpty());
    }
}

} // namespace
