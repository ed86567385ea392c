/// Drawings and what their two writers make of them.

#include "mpatool/waveform/png_writer.h"
#include "mpatool/waveform/svg_writer.h"
#include "tools/png_reader.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace {

using namespace mpatool;
using testing::HasSubstr;

std::string Svg(const Drawing& drawing, std::string_view title = "") {
    std::string file;
    WriteSvg(drawing, title, [&](std::string_view bytes) { file += bytes; });
    return file;
}

test::Picture Png(const Drawing& drawing) {
    std::string file;
    WritePng(drawing, [&](std::string_view bytes) { file += bytes; });
    return test::ReadPng(file);
}

TEST(DrawingTest, CharactersOfText) {
    EXPECT_EQ(Characters("a\u00fc\u97f3\U0001F3B5"), U"a\u00fc\u97f3\U0001F3B5");
    // Cut short, not begun, too long a form, a surrogate, beyond the last one, a control, no character.
    EXPECT_EQ(Characters("\xE9\x9F"), U"\uFFFD\uFFFD");
    EXPECT_EQ(Characters("\x9F"
                         "b"),
              U"\uFFFDb");
    EXPECT_EQ(Characters("\xC0\x80"), U"\uFFFD");
    EXPECT_EQ(Characters("\xED\xA0\x80"), U"\uFFFD");
    EXPECT_EQ(Characters("\xF4\x90\x80\x80"), U"\uFFFD");
    EXPECT_EQ(Characters("\x01\x7F"), U"\uFFFD\uFFFD");
    EXPECT_EQ(Characters("\xEF\xBF\xBE"), U"\uFFFD");
    EXPECT_EQ(Characters("\xE9(\xFF"), U"\uFFFD(\uFFFD");
}

TEST(DrawingTest, SvgHoldsShapesAndText) {
    Drawing drawing(300, 200, 2);
    drawing.Add(Boxes{Ink::kPeaks, {{1, 2, 3, 4}, {5, 6, 0, 8}, {-7, 6, 7, 8}}});
    drawing.Add(Text{10, 20, Anchor::kCentre, "<a> & \"\u00fc\"\x02"});
    const std::string svg = Svg(drawing, "T&T");
    EXPECT_THAT(svg, HasSubstr("width=\"300\" height=\"200\" viewBox=\"0 0 300 200\""));
    EXPECT_THAT(svg, HasSubstr("font-size=\"22\""));
    EXPECT_THAT(svg, HasSubstr("<title>T&#x26;T</title>\n"));
    EXPECT_THAT(svg, HasSubstr("<path class=\"peaks\" fill=\"#56b4e9\" d=\"M1 2h3v4h-3zM-7 6h7v8h-7z\"/>\n"));
    EXPECT_THAT(svg, HasSubstr("<text x=\"10\" y=\"20\" text-anchor=\"middle\">"
                               "&#x3C;a&#x3E; &#x26; \"&#xFC;\"&#xFFFD;</text>\n</svg>\n"));
}

TEST(DrawingTest, PngHoldsTheBoxesOneOverTheOther) {
    Drawing drawing(90, 150, 1);
    drawing.Add(Ink::kPanel, {10, 20, 50, 100});
    drawing.Add(Boxes{Ink::kRms, {{55, 60, 100, 10}, {-5, 140, 20, 100}, {20, 63, 1, 2}}});
    const test::Picture picture = Png(drawing);
    ASSERT_EQ(picture.width, 90);
    ASSERT_EQ(picture.height, 150);
    for (std::int32_t y = 0; y < 150; ++y)
        for (std::int32_t x = 0; x < 90; ++x) {
            const bool isRms =
                (x >= 55 && y >= 60 && y < 70) || (x < 15 && y >= 140) || (x == 20 && (y == 63 || y == 64));
            const bool isPanel = x >= 10 && x < 60 && y >= 20 && y < 120;
            ASSERT_TRUE(picture.Shows(x, y,
                                      isRms     ? Ink::kRms
                                      : isPanel ? Ink::kPanel
                                                : Ink::kPaper))
                << x << ", " << y;
        }
}

/// The letters of a picture as rows of '#' and '.', from a corner on.
std::vector<std::string> Letters(const test::Picture& picture, std::int32_t left, std::int32_t top,
                                 std::int32_t width, std::int32_t height, std::int32_t step = 1) {
    std::vector<std::string> rows;
    for (std::int32_t y = top; y < top + height; y += step) {
        std::string row;
        for (std::int32_t x = left; x < left + width; x += step)
            row += picture.Shows(x, y, Ink::kText) ? '#' : '.';
        rows.push_back(row);
    }
    return rows;
}

TEST(DrawingTest, PngLettersStandOnTheirBaseline) {
    const std::vector<std::string> expected = {".......###..", "......#...#.", "####......#.", "#...#....#..",
                                               "#...#...#...", "#...#..#....", "#...#.#.....", "####..#####.",
                                               "#...........", "#..........."};
    Drawing drawing(40, 140, 1);
    drawing.Add(Text{3, 20, Anchor::kLeft, "p2"});
    // Across the piece that the writer paints at once.
    drawing.Add(Text{20, 68, Anchor::kCentre, "p2"});
    drawing.Add(Text{39, 120, Anchor::kRight, "p2"});
    const test::Picture picture = Png(drawing);
    EXPECT_EQ(Letters(picture, 3, 12, 12, 10), expected);
    EXPECT_EQ(Letters(picture, 15, 60, 12, 10), expected);
    EXPECT_EQ(Letters(picture, 28, 112, 12, 10), expected);
}

TEST(DrawingTest, PngLettersAtTwiceTheSize) {
    Drawing drawing(40, 40, 2);
    drawing.Add(Text{2, 20, Anchor::kLeft, "1"});
    const test::Picture picture = Png(drawing);
    const std::vector<std::string> expected = {"..#..", ".##..", "#.#..", "..#..",
                                               "..#..", "..#..", "..#..", "#####"};
    for (const std::int32_t offset : {0, 1})
        EXPECT_EQ(Letters(picture, 2 + offset, 4 + offset, 10, 16, 2), expected);
}

TEST(DrawingTest, PngShowsOtherCharactersAsABox) {
    Drawing drawing(20, 20, 1);
    drawing.Add(Text{1, 10, Anchor::kLeft, "\u97f3"});
    const auto letters = Letters(Png(drawing), 1, 2, 5, 8);
    EXPECT_EQ(letters.front(), "#####");
    EXPECT_EQ(letters[3], "#...#");
    EXPECT_EQ(letters.back(), "#####");
}

TEST(DrawingTest, FailureOfTheOutputEndsTheWriting) {
    Drawing drawing(500, 500, 1);
    for (int ordinal = 0; ordinal < 3; ++ordinal) {
        int writes = 0;
        const auto fail = [&](std::string_view) {
            if (writes++ == ordinal)
                throw std::runtime_error("full");
        };
        EXPECT_THROW(WritePng(drawing, fail), std::runtime_error);
        EXPECT_EQ(writes, ordinal + 1);
        writes = 0;
        EXPECT_THROW(WriteSvg(drawing, "", fail), std::runtime_error);
        EXPECT_EQ(writes, ordinal + 1);
    }
}

} // namespace
