#include "mpatool/waveform/layout.h"
#include "mpatool/waveform/lettering.h"
#include "mpatool/waveform/time_axis.h"

#include <gmock/gmock.h>

namespace {

using namespace mpatool;
using testing::ElementsAre;

std::vector<std::string> Labels(const std::vector<TimeMark>& marks) {
    std::vector<std::string> labels;
    for (const TimeMark& mark : marks)
        if (mark.isMajor)
            labels.push_back(mark.label);
    return labels;
}

std::vector<std::int32_t> MajorPixels(const std::vector<TimeMark>& marks) {
    std::vector<std::int32_t> pixels;
    for (const TimeMark& mark : marks)
        if (mark.isMajor)
            pixels.push_back(mark.pixel);
    return pixels;
}

TEST(TimeMarksTest, AnHour) {
    const auto marks = TimeMarks({0, 3600, 900}, 90, 9);
    EXPECT_THAT(Labels(marks), ElementsAre("0:00", "10:00", "20:00", "30:00", "40:00", "50:00", "1:00:00"));
    EXPECT_THAT(MajorPixels(marks), ElementsAre(0, 150, 300, 450, 600, 750, 900));
    // One a minute.
    ASSERT_EQ(marks.size(), 61u);
    EXPECT_EQ(marks[1].pixel, 15);
    EXPECT_FALSE(marks[1].isMajor);
}

TEST(TimeMarksTest, AStretchBeginsAnywhere) {
    const auto marks = TimeMarks({61.53, 61.78, 500}, 90, 9);
    EXPECT_THAT(Labels(marks), ElementsAre("1:01.55", "1:01.60", "1:01.65", "1:01.70", "1:01.75"));
    EXPECT_THAT(MajorPixels(marks), ElementsAre(40, 140, 240, 340, 440));
}

TEST(TimeMarksTest, StepsAreRoundTimes) {
    for (const auto& [seconds, second] :
         std::vector<std::pair<double, std::string>>{{0.00002, "0:00.000005"},
                                                     {0.005, "0:00.001"},
                                                     {1.7, "0:00.5"},
                                                     {4, "0:01"},
                                                     {20, "0:05"},
                                                     {40, "0:10"},
                                                     {80, "0:20"},
                                                     {130, "1:00"},
                                                     {400, "2:00"},
                                                     {2000, "10:00"},
                                                     {7000, "1:00:00"},
                                                     {100'000, "10:00:00"},
                                                     {1'000'000, "100:00:00"}}) {
        const auto labels = Labels(TimeMarks({0, seconds, 400}, 80, 8));
        ASSERT_GE(labels.size(), 2u) << seconds;
        EXPECT_EQ(labels[0].substr(0, 4), "0:00");
        EXPECT_EQ(labels[1], second) << seconds;
    }
}

TEST(TimeMarksTest, MarksKeepTheirDistanceAtAnyScale) {
    for (double seconds = 1e-5; seconds < 1e9; seconds *= 1.7) {
        const auto marks = TimeMarks({seconds / 3, seconds * 4 / 3, 1000}, 90, 9);
        const auto major = MajorPixels(marks);
        for (std::size_t i = 1; i < major.size(); ++i)
            EXPECT_GE(major[i] - major[i - 1], 89) << seconds;
        for (std::size_t i = 1; i < marks.size(); ++i)
            EXPECT_GE(marks[i].pixel - marks[i - 1].pixel, 8) << seconds;
        for (const TimeMark& mark : marks)
            EXPECT_TRUE(mark.pixel >= 0 && mark.pixel <= 1000) << mark.pixel;
    }
}

TEST(LayoutTest, PlotsFillEverySizeInOrder) {
    for (const std::int32_t width : {kSmallestWidth, 319, 320, kUsualWidth, 3 * kUsualWidth, kLargestWidth})
        for (const std::int32_t height :
             {kSmallestHeight, 89, 90, 140, kUsualHeight, 3 * kUsualHeight, kLargestHeight})
            for (const Contents& contents : {Contents{1, false, false}, Contents{2, true, true}}) {
                SCOPED_TRACE(testing::Message() << width << "x" << height);
                const Layout layout = LayOut(width, height, contents);
                std::vector<Box> plots = layout.channels;
                for (const auto& lane : {layout.bitRate, layout.blocks, layout.reservoir})
                    if (lane)
                        plots.push_back(*lane);
                ASSERT_EQ(plots.size(), contents.channels == 1 ? 1u : 5u);
                std::int32_t bottom = 0;
                for (const Box& plot : plots) {
                    EXPECT_GT(plot.top, bottom);
                    EXPECT_GE(plot.height, 2);
                    EXPECT_EQ(plot.left, layout.Left());
                    EXPECT_EQ(plot.width, layout.PlotWidth());
                    bottom = plot.Bottom();
                }
                EXPECT_EQ(bottom, layout.Bottom());
                EXPECT_LT(bottom, height);
                EXPECT_GE(layout.PlotWidth(), width / 2);
                EXPECT_LT(layout.Left() + layout.PlotWidth(), width);
            }
}

TEST(LayoutTest, LargePicturesGetLargeLetters) {
    EXPECT_EQ(LayOut(kUsualWidth, kUsualHeight, {}).scale, 1);
    EXPECT_EQ(LayOut(3200, 960, {}).scale, 2);
    EXPECT_EQ(LayOut(kLargestWidth, kSmallestHeight, {}).scale, 1);
    EXPECT_EQ(LayOut(kLargestWidth, kLargestHeight, {}).scale, 4);
}

TEST(LetteringTest, TextIsCutBetweenCharacters) {
    EXPECT_EQ(CutTo("music.mp3", 63, 1), "music.mp3");
    EXPECT_EQ(CutTo("music.mp3", 62, 1), "music...");
    EXPECT_EQ(CutTo("\u97f3\u97f3\u97f3\u97f3\u97f3", 28, 1), "\u97f3...");
    EXPECT_EQ(CutTo("music.mp3", 40, 2), "");
    EXPECT_EQ(CutTo("music.mp3", -5, 1), "");
}

} // namespace
