/// `mpatool waveform`.

#include "support/bitstream/bit_writer.h"
#include "tools/counted_sample.h"
#include "tools/png_reader.h"
#include "tools/svg_boxes.h"
#include "tools/tool_fixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>

namespace {

using mpatool::Box;
using mpatool::Ink;
using test::BoxesOf;
using test::Bytes;
using test::ProcessResult;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

constexpr std::int64_t kFrames = 60;
constexpr std::int64_t kSamples = kFrames * test::kFrameSamples - test::kLayer3Delay;
constexpr std::int32_t kWidth = 1000;
constexpr std::int32_t kHeight = 500;

struct BlockChoice {
    int switching = 0;
    int type = 0;
    int mixed = 0;
};

/// A frame of silence, 128 kbit/s or with half of that, whose side information tells of such blocks in both
/// granules and channels.
Bytes FrameWith(const BlockChoice& block, int mainDataBegin, bool isSmall = false) {
    test::bitstream::BitWriter bits;
    bits.Write(isSmall ? 0xFFFB5000U : 0xFFFB9000U, 32);
    bits.Write(mainDataBegin, 9);
    bits.Write(0, 3 + 8); // private bits, scale-factor selection
    for (int i = 0; i < 4; ++i) {
        bits.Write(0, 12 + 9);
        bits.Write(210, 8);
        bits.Write(0, 4);
        bits.Write(block.switching, 1);
        bits.Write(block.type, block.switching != 0 ? 2 : 0);
        bits.Write(block.mixed, block.switching != 0 ? 1 : 0);
        bits.Write(0, block.switching != 0 ? 19 : 22);
        bits.Write(0, 3);
    }
    Bytes frame = bits.Bytes();
    frame.resize(isSmall ? 208 : test::kSilentFrameBytes);
    return frame;
}

/// The lowest and the highest counted sample of a stretch.
std::pair<int, int> CountedPeaks(std::int64_t begin, std::int64_t end, int channel) {
    std::pair<int, int> peaks = {32767, -32768};
    for (std::int64_t sample = begin; sample < end; ++sample) {
        const int value = test::CountedSample(sample, channel);
        peaks = {std::min(peaks.first, value), std::max(peaks.second, value)};
    }
    return peaks;
}

std::int64_t CountedFullScale() {
    std::int64_t count = 0;
    for (std::int64_t sample = 0; sample < kSamples; ++sample)
        for (const int channel : {0, 1})
            count += std::abs(int{test::CountedSample(sample, channel)}) >= 32767 ? 1 : 0;
    return count;
}

class WaveformTest : public test::ToolTest {
protected:
    void SetUp() override { AddPlanned("a.mp3", test::SilentLayer3(kFrames), {{"end", kSamples}}); }

    /// The picture on standard output, by the counting module.
    std::string Draw(const std::string& file, const std::string& format,
                     const std::vector<std::string>& further = {}) const {
        std::vector<std::string> arguments = {"waveform", file,      "-o",   "-",        "--format",
                                              format,     "--width", "1000", "--height", "500"};
        arguments.insert(arguments.end(), further.begin(), further.end());
        const ProcessResult result = RunCounting(arguments);
        EXPECT_EQ(result.exitStatus, 0) << result.error;
        EXPECT_THAT(result.error, IsEmpty());
        return result.output;
    }

    void ExpectFailure(const std::vector<std::string>& arguments, int status,
                       const std::string& reason) const {
        const ProcessResult result = RunCounting(arguments);
        EXPECT_EQ(result.exitStatus, status) << reason;
        EXPECT_THAT(result.error, HasSubstr(reason));
        EXPECT_THAT(result.output, IsEmpty());
        EXPECT_THAT(NewFiles(), IsEmpty());
    }

    /// The peaks in a picture of the counted samples from `begin` up to `end`, to the row.
    static void ExpectPeaks(const std::string& svg, std::int64_t begin, std::int64_t end) {
        std::vector<Box> plots = BoxesOf(svg, Ink::kPanel);
        std::vector<Box> peaks = BoxesOf(svg, Ink::kPeaks);
        ASSERT_GE(plots.size(), 2u);
        const std::int32_t columns = plots[0].width;
        ASSERT_THAT(peaks, SizeIs(2 * static_cast<std::size_t>(columns) + 1)); // one in the legend
        for (const int channel : {0, 1})
            for (std::int32_t column = 0; column < columns; ++column) {
                const Box& plot = plots[static_cast<std::size_t>(channel)];
                const Box& box = peaks[static_cast<std::size_t>(channel * columns + column)];
                const auto [lowest, highest] =
                    CountedPeaks(begin + (end - begin) * column / columns,
                                 begin + (end - begin) * (column + 1) / columns, channel);
                ASSERT_EQ(box.left, plot.left + column);
                ASSERT_EQ(box.width, 1);
                ASSERT_NEAR(box.top - plot.top, (32768 - highest) / 65536.0 * plot.height, 1);
                ASSERT_NEAR(box.Bottom() - plot.top, (32768 - lowest) / 65536.0 * plot.height, 1);
            }
    }

    /// The columns in which an ink is, below the title: first and behind the last.
    static std::pair<std::int32_t, std::int32_t> Columns(const std::string& svg, Ink ink) {
        std::pair<std::int32_t, std::int32_t> columns = {kWidth, 0};
        const Box plot = BoxesOf(svg, Ink::kPanel).at(0);
        for (const Box& box : BoxesOf(svg, ink))
            if (box.top >= plot.top)
                columns = {std::min(columns.first, box.left - plot.left),
                           std::max(columns.second, box.Right() - plot.left)};
        return columns;
    }
};

TEST_F(WaveformTest, PeaksOfTheWholeStream) {
    const std::string svg = Draw("a.mp3", "svg");
    ExpectPeaks(svg, 0, kSamples);
    EXPECT_THAT(BoxesOf(svg, Ink::kPanel), SizeIs(2));
    EXPECT_THAT(Requests("a.mp3"), ElementsAre(Pair(0, 44100), Pair(44100, kSamples - 44100)));
}

TEST_F(WaveformTest, PeaksOfAStretch) {
    const std::string svg = Draw("a.mp3", "svg", {"--start", "10000", "--length", "0.5s"});
    ExpectPeaks(svg, 10000, 10000 + 22050);
    EXPECT_THAT(test::TextsOf(svg),
                Contains("a.mp3  MPEG-1 layer III, 44100 Hz, stereo, 0:00.227 to 0:00.727"));
    EXPECT_THAT(test::TextsOf(svg), Contains("0:00.3"));
}

TEST_F(WaveformTest, LengthBeyondTheEndIsCut) {
    ExpectPeaks(Draw("a.mp3", "svg", {"--start", "2000", "--length", "99h"}), 2000, kSamples);
}

TEST_F(WaveformTest, FullScaleIsCountedAndMarked) {
    const std::string svg = Draw("a.mp3", "svg");
    const std::int64_t count = CountedFullScale();
    ASSERT_GT(count, 0);
    EXPECT_THAT(test::TextsOf(svg), Contains("full scale: " + std::to_string(count)));
    std::size_t marks = 0;
    const std::int32_t columns = BoxesOf(svg, Ink::kPanel).at(0).width;
    for (const int channel : {0, 1})
        for (std::int32_t column = 0; column < columns; ++column) {
            const auto [lowest, highest] =
                CountedPeaks(kSamples * column / columns, kSamples * (column + 1) / columns, channel);
            marks += (highest == 32767 ? 1U : 0U) + (lowest <= -32767 ? 1U : 0U);
        }
    EXPECT_THAT(BoxesOf(svg, Ink::kFullScale), SizeIs(marks + 1)); // one in the legend
}

TEST_F(WaveformTest, MonoHasOneChannel) {
    AddPlanned("mono.mp3", test::FramesOf({0xFF, 0xFB, 0x90, 0xC0}, 417, 20), {{"channels", 1}});
    const std::string svg = Draw("mono.mp3", "svg");
    EXPECT_THAT(BoxesOf(svg, Ink::kPanel), SizeIs(1));
    EXPECT_THAT(test::TextsOf(svg), Contains("mono"));
}

TEST_F(WaveformTest, PngShowsWhatSvgShows) {
    const std::string svg = Draw("a.mp3", "svg", {"--bitrate", "--frames"});
    const test::Picture picture = test::ReadPng(Draw("a.mp3", "png", {"--bitrate", "--frames"}));
    ASSERT_EQ(picture.width, kWidth);
    ASSERT_EQ(picture.height, kHeight);
    EXPECT_TRUE(picture.Shows(0, 0, Ink::kPaper));
    for (const Ink ink : {Ink::kRms, Ink::kFullScale, Ink::kRate, Ink::kReservoir}) {
        ASSERT_THAT(BoxesOf(svg, ink), testing::Not(IsEmpty()));
        for (const Box& box : BoxesOf(svg, ink)) {
            ASSERT_TRUE(picture.Shows(box.left, box.top, ink) ||
                        picture.Shows(box.left, box.top, Ink::kFullScale));
            ASSERT_TRUE(picture.Shows(box.Right() - 1, box.Bottom() - 1, ink) ||
                        picture.Shows(box.Right() - 1, box.Bottom() - 1, Ink::kFullScale));
        }
    }
}

TEST_F(WaveformTest, LanesTellOfTheFrames) {
    Bytes stream;
    // Five frames of each kind, 5760 samples.
    int mainDataBegin = 0;
    for (const BlockChoice& block : {BlockChoice{}, BlockChoice{1, 1, 0}, BlockChoice{1, 2, 0},
                                     BlockChoice{1, 2, 1}, BlockChoice{1, 3, 0}}) {
        for (int i = 0; i < 5; ++i) {
            const Bytes frame = FrameWith(block, mainDataBegin, block.mixed != 0);
            stream.insert(stream.end(), frame.begin(), frame.end());
        }
        mainDataBegin += 100;
    }
    AddPlanned("kinds.mp3", stream, {});
    const std::string svg = Draw("kinds.mp3", "svg", {"--bitrate", "--frames"});
    EXPECT_THAT(BoxesOf(svg, Ink::kPanel), SizeIs(5));
    const double columns = BoxesOf(svg, Ink::kPanel).at(0).width;
    const double samples = 25 * test::kFrameSamples - test::kLayer3Delay;
    const auto columnOf = [&](int kind) {
        return std::max(0.0, (kind * 5.0 * test::kFrameSamples - test::kLayer3Delay) / samples * columns);
    };
    int kind = 1;
    for (const Ink ink : {Ink::kStart, Ink::kShort, Ink::kMixed, Ink::kStop}) {
        const auto [first, end] = Columns(svg, ink);
        EXPECT_NEAR(first, columnOf(kind), 1.01) << mpatool::NameOf(ink);
        EXPECT_NEAR(end, columnOf(kind + 1), 1.01) << mpatool::NameOf(ink);
        ++kind;
    }
    EXPECT_THAT(test::TextsOf(svg), testing::IsSupersetOf({"128", "64", "kbit/s", "blocks", "reservoir",
                                                           "511 B", "long", "mixed"}));
    const Box reservoir = BoxesOf(svg, Ink::kPanel).at(4);
    const Box fill = BoxesOf(svg, Ink::kReservoir).back();
    EXPECT_NEAR(reservoir.Bottom() - fill.top, reservoir.height * 400.0 / 511, 1.5);
}

TEST_F(WaveformTest, Layer2HasNoBlocks) {
    AddPlanned("b.mp2", test::FramesOf({0xFF, 0xFD, 0x80, 0x00}, 417, 20), {});
    const ProcessResult result =
        RunCounting({"waveform", "b.mp2", "-o", "-", "--format", "svg", "--bitrate", "--frames"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.error, "mpatool: b.mp2: Layer II has neither block types nor a bit reservoir; drawn "
                            "without --frames\n");
    EXPECT_THAT(BoxesOf(result.output, Ink::kPanel), SizeIs(3));
}

TEST_F(WaveformTest, FilesGetTheirNameAndFormat) {
    EXPECT_EQ(RunCounting({"waveform", "a.mp3"}).exitStatus, 0);
    EXPECT_EQ(RunCounting({"waveform", "a.mp3", "--format", "svg"}).exitStatus, 0);
    EXPECT_EQ(RunCounting({"waveform", "a.mp3", "-o", "B.PNG", "--bitrate"}).exitStatus, 0);
    EXPECT_THAT(NewFiles(), ElementsAre("B.PNG", "a.png", "a.svg"));
    const auto sizeOf = [&](const std::string& name) {
        const Bytes bytes = Read(name);
        const test::Picture picture = test::ReadPng(std::string(bytes.begin(), bytes.end()));
        return std::pair(picture.width, picture.height);
    };
    EXPECT_EQ(sizeOf("a.png"), std::pair(1600, 480));
    EXPECT_EQ(sizeOf("B.PNG"), std::pair(1600, 560));
}

TEST_F(WaveformTest, ExistingFilesStayWithoutForce) {
    Add("out.svg", {1, 2, 3});
    ExpectFailure({"waveform", "a.mp3", "-o", "out.svg"}, 1, "out.svg: exists already; use --force");
    EXPECT_EQ(Read("out.svg"), (Bytes{1, 2, 3}));
    EXPECT_EQ(RunCounting({"waveform", "a.mp3", "-o", "out.svg", "--force"}).exitStatus, 0);
    EXPECT_EQ(Read("out.svg").front(), '<');
    ExpectFailure({"waveform", "a.mp3", "-o", "a.mp3", "--format", "png", "--force"}, 1, "is the input file");
}

TEST_F(WaveformTest, UnusableArgumentsAndFiles) {
    Add("noise.mp3", Bytes(5000, 0x55));
    AddPlanned("fails.mp3", test::SilentLayer3(kFrames), {{"fail", 44100}});
    const std::vector<std::string> whole = {"waveform", "a.mp3", "-o", "out.png"};
    const auto with = [&](const std::vector<std::string>& further) {
        std::vector<std::string> arguments = whole;
        arguments.insert(arguments.end(), further.begin(), further.end());
        return arguments;
    };
    ExpectFailure({"waveform", "a.mp3", "-o", "out.gif"}, 2,
                  "-o out.gif: the name ends neither in .svg nor in .png");
    ExpectFailure({"waveform", "a.mp3", "-o", "-"}, 2, "say --format");
    ExpectFailure(with({"--format", "gif"}), 2, "--format");
    ExpectFailure(with({"--width", "99"}), 2, "--width");
    ExpectFailure(with({"--width", "20001"}), 2, "--width");
    ExpectFailure(with({"--height", "49"}), 2, "--height");
    ExpectFailure(with({"--height", "5001"}), 2, "--height");
    ExpectFailure(with({"--width", "-1"}), 2, "--width");
    ExpectFailure(with({"--length", "0"}), 2, "--length must be greater than 0");
    ExpectFailure(with({"--start", "x"}), 2, "--start");
    ExpectFailure(with({"--start", "1h"}), 1, "lies behind the end");
    ExpectFailure({"waveform"}, 2, "FILE");
    ExpectFailure({"waveform", "none.mp3", "-o", "out.png"}, 1, "none.mp3: ");
    ExpectFailure({"waveform", "noise.mp3", "-o", "out.png"}, 1, "no MPEG audio frames found");
    ExpectFailure({"waveform", "fails.mp3", "-o", "out.png"}, 1, "cannot decode from sample 44100 on");
}

TEST_F(WaveformTest, SmallestAndLargest) {
    for (const auto& [width, height] : {std::pair{"100", "50"}, {"20000", "50"}, {"100", "5000"}}) {
        const ProcessResult result =
            RunCounting({"waveform", "a.mp3", "-o", "-", "--format", "png", "--width", width, "--height",
                         height, "--bitrate", "--frames"});
        ASSERT_EQ(result.exitStatus, 0) << result.error;
        const test::Picture picture = test::ReadPng(result.output);
        EXPECT_EQ(std::to_string(picture.width), width);
        EXPECT_EQ(std::to_string(picture.height), height);
    }
}

TEST_F(WaveformTest, OneSample) {
    const std::string svg = Draw("a.mp3", "svg", {"--start", "5", "--length", "1", "--bitrate", "--frames"});
    EXPECT_THAT(BoxesOf(svg, Ink::kPeaks), SizeIs(2 + 1));
    EXPECT_EQ(BoxesOf(svg, Ink::kPeaks).front().width, BoxesOf(svg, Ink::kPanel).front().width);
}

TEST_F(WaveformTest, NamesOfAnyKind) {
    const std::string name = "r\u00f6ck & r\u00f6ll \u97f3.mp3";
    AddPlanned(name, test::SilentLayer3(10), {});
    EXPECT_THAT(Draw(name, "svg"), HasSubstr("<title>r&#xF6;ck &#x26; r&#xF6;ll &#x97F3;.mp3  MPEG-1"));
    EXPECT_EQ(test::ReadPng(Draw(name, "png")).width, kWidth);
}

/// The real module: the picture is that of the PCM that decode delivers.
TEST_F(WaveformTest, PictureOfARealStream) {
    Add("music.mp3", test::ReadFile(test::SourceFolder() / "samples" / "music.mp3"));
    const ProcessResult drawn = Run({"waveform", "music.mp3", "-o", "-", "--format", "svg", "--frames"});
    ASSERT_EQ(drawn.exitStatus, 0) << drawn.error;
    const ProcessResult decoded = Run({"decode", "music.mp3", "-o", "-", "--format", "raw"});
    ASSERT_EQ(decoded.exitStatus, 0) << decoded.error;
    const auto samples = static_cast<std::int64_t>(decoded.output.size() / 4);
    const auto sampleAt = [&](std::int64_t sample, int channel) {
        const auto at = static_cast<std::size_t>(4 * sample + 2 * channel);
        const auto low = static_cast<unsigned char>(decoded.output[at]);
        const auto high = static_cast<unsigned char>(decoded.output[at + 1]);
        return int{static_cast<std::int16_t>(static_cast<std::uint16_t>(high << 8 | low))};
    };
    const std::vector<Box> plots = BoxesOf(drawn.output, Ink::kPanel);
    const std::vector<Box> peaks = BoxesOf(drawn.output, Ink::kPeaks);
    ASSERT_THAT(plots, SizeIs(4));
    for (const int channel : {0, 1})
        for (std::int32_t column = 0; column < plots[0].width; ++column) {
            const Box& plot = plots[static_cast<std::size_t>(channel)];
            const Box& box = peaks[static_cast<std::size_t>(channel * plot.width + column)];
            int highest = -32768;
            for (std::int64_t i = samples * column / plot.width; i < samples * (column + 1) / plot.width; ++i)
                highest = std::max(highest, sampleAt(i, channel));
            // Or higher, where it reaches to the column before.
            ASSERT_LE(box.top - plot.top, (32768 - highest) / 65536.0 * plot.height + 1);
            ASSERT_TRUE(box.top - plot.top >= (32768 - highest) / 65536.0 * plot.height - 1 || column > 0);
        }
    EXPECT_THAT(BoxesOf(drawn.output, Ink::kShort), SizeIs(testing::Gt(10u)));
    EXPECT_THAT(test::TextsOf(drawn.output), Contains("full scale: none"));
}

} // namespace
