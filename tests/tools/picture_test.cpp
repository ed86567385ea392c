/// The picture of samples and frames that are known.

#include "mpatool/waveform/picture.h"
#include "tools/svg_boxes.h"

#include <gmock/gmock.h>

#include <cstring>

namespace {

using namespace mpatool;
using test::BoxesOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::int32_t kWidth = 504;
constexpr std::int32_t kHeight = 458;
constexpr std::int64_t kPerColumn = 10;

/// A picture of 400 columns by 400 rows of `kPerColumn` samples each, all zeros but
/// for some.
class PictureTest : public testing::Test {
protected:
    void Set(std::size_t column, std::int16_t value, std::size_t from = 0, std::size_t count = 1) {
        for (std::size_t i = from; i < from + count; ++i)
            samples_.at(column * kPerColumn + i) = value;
    }

    Drawing Draw() {
        std::vector<std::uint8_t> bytes(samples_.size() * sizeof(std::int16_t));
        std::memcpy(bytes.data(), samples_.data(), bytes.size());
        PeakColumns peaks(columns_, 1);
        peaks.Add(bytes);
        return DrawPicture(kWidth, kHeight, layout_,
                           {"title", 8000, columns_, peaks, layout_.bitRate ? &frames_ : nullptr});
    }

    void AddLanes() { layout_ = LayOut(kWidth, kHeight, {1, true, true}); }

    /// Without the legend's.
    std::vector<Box> InPlots(const Drawing& drawing, Ink ink) const {
        std::vector<Box> boxes = BoxesOf(drawing, ink);
        std::erase_if(boxes, [this](const Box& box) { return box.top < Plot().top; });
        return boxes;
    }

    Box Peak(const Drawing& drawing, std::int32_t column) const {
        for (const Box& box : InPlots(drawing, Ink::kPeaks))
            if (box.left == layout_.Left() + column)
                return box;
        ADD_FAILURE() << "no column " << column;
        return {};
    }

    const Box& Plot() const { return layout_.channels.front(); }
    std::int32_t Middle() const { return Plot().top + Plot().height / 2; }
    std::int32_t At(std::int32_t column) const { return layout_.Left() + column; }

    Layout layout_ = LayOut(kWidth, kHeight, {1, false, false});
    Columns columns_{{0, layout_.PlotWidth() * kPerColumn}, layout_.PlotWidth()};
    FrameColumns frames_{columns_};

private:
    std::vector<std::int16_t> samples_ =
        std::vector<std::int16_t>(static_cast<std::size_t>(layout_.PlotWidth() * kPerColumn));
};

TEST_F(PictureTest, PlotIsOfRoundSize) {
    EXPECT_EQ(Plot(), (Box{88, 30, 400, 400}));
}

TEST_F(PictureTest, PeaksReachTheirRows) {
    Set(100, 16384);
    Set(200, -8192);
    Set(300, 32767);
    Set(300, -32767, 5);
    const Drawing drawing = Draw();
    EXPECT_THAT(InPlots(drawing, Ink::kPeaks), SizeIs(400));
    EXPECT_EQ(Peak(drawing, 99), (Box{At(99), Middle(), 1, 1}));
    EXPECT_EQ(Peak(drawing, 100), (Box{At(100), Middle() - 100, 1, 101}));
    EXPECT_EQ(Peak(drawing, 200), (Box{At(200), Middle(), 1, 51}));
    EXPECT_EQ(Peak(drawing, 300), (Box{At(300), Plot().top, 1, 400}));
}

TEST_F(PictureTest, ColumnsOfASlopeHaveNoGap) {
    Set(50, 16384, 0, kPerColumn);
    Set(51, -16384, 0, kPerColumn);
    const Drawing drawing = Draw();
    EXPECT_EQ(Peak(drawing, 51), (Box{At(51), Middle() - 100, 1, 201}));
    EXPECT_EQ(Peak(drawing, 52), (Box{At(52), Middle(), 1, 101}));
}

TEST_F(PictureTest, RmsLiesAroundZeroWithinThePeaks) {
    Set(100, 16384, 0, 5);
    Set(100, -16384, 5, 5);
    Set(200, 16384, 0, kPerColumn);
    const std::vector<Box> rms = InPlots(Draw(), Ink::kRms);
    EXPECT_THAT(rms, testing::Contains(Box{At(100), Middle() - 100, 1, 201}));
    // Constant: nothing between the lowest and the highest.
    EXPECT_THAT(rms, SizeIs(1));
}

TEST_F(PictureTest, MarksStandWhereFullScaleIsReached) {
    Set(0, 32767);
    Set(150, -32767, 2, 2);
    Set(250, 32766);
    Set(399, -32768);
    const std::vector<Box> marks = InPlots(Draw(), Ink::kFullScale);
    EXPECT_THAT(marks, ElementsAre(Box{At(0), Plot().top, 3, 5}, Box{At(149), Plot().Bottom() - 5, 3, 5},
                                   Box{At(398), Plot().Bottom() - 5, 2, 5}));
}

TEST_F(PictureTest, LanesShowTheFrames) {
    AddLanes();
    trnmpa::SideInfo sideInfo;
    const trnmpa::DecoderHeader header = trnmpa::ParseHeader({0xFF, 0xFB, 0x90, 0x00});
    frames_.AddBitRate({0, 2000}, 64);
    frames_.AddSideInfo({0, 2000}, header, sideInfo);
    frames_.AddBitRate({2000, 4000}, 128);
    sideInfo.mainDataBegin = 511;
    sideInfo.granule[0][0].windowSwitching = 1;
    sideInfo.granule[0][0].blockType = 1;
    for (auto& granule : sideInfo.granule[1]) {
        granule.windowSwitching = 1;
        granule.blockType = 2;
    }
    frames_.AddSideInfo({2000, 4000}, header, sideInfo);
    const Drawing drawing = Draw();
    const Box& blocks = *layout_.blocks;
    const auto inBlocks = [&](Ink ink) {
        std::vector<Box> found = BoxesOf(drawing, ink);
        std::erase_if(found, [&](const Box& box) { return box.top < blocks.top; });
        return found;
    };
    EXPECT_THAT(inBlocks(Ink::kLong), SizeIs(400));
    EXPECT_THAT(inBlocks(Ink::kShort), SizeIs(100));
    EXPECT_EQ(inBlocks(Ink::kShort).front(), (Box{At(300), blocks.top, 1, blocks.height}));
    // One channel of two.
    const std::int32_t half = (blocks.height + 1) / 2;
    EXPECT_THAT(inBlocks(Ink::kStart), SizeIs(100));
    EXPECT_EQ(inBlocks(Ink::kStart).back(), (Box{At(299), blocks.Bottom() - half, 1, half}));
    EXPECT_THAT(inBlocks(Ink::kStop), IsEmpty());
    EXPECT_THAT(inBlocks(Ink::kMixed), IsEmpty());

    const Box& reservoir = *layout_.reservoir;
    const std::vector<Box> fill = BoxesOf(drawing, Ink::kReservoir);
    ASSERT_THAT(fill, SizeIs(400));
    EXPECT_EQ(fill[199], (Box{At(199), reservoir.Bottom() - 2, 1, 2}));
    EXPECT_EQ(fill[200], (Box{At(200), reservoir.top, 1, reservoir.height}));
    EXPECT_EQ(fill[201], (Box{At(201), reservoir.top, 1, 2}));

    const std::vector<Box> rate = BoxesOf(drawing, Ink::kRate);
    ASSERT_THAT(rate, SizeIs(400));
    const std::int32_t bottom = layout_.bitRate->Bottom() - 1;
    EXPECT_NEAR(bottom - rate[0].top, (bottom - rate[399].top) / 2.0, 1);
}

TEST_F(PictureTest, ColumnsWithoutFramesStayEmpty) {
    AddLanes();
    frames_.AddBitRate({0, 1000}, 64);
    const Drawing drawing = Draw();
    EXPECT_THAT(BoxesOf(drawing, Ink::kRate), SizeIs(100));
    EXPECT_THAT(BoxesOf(drawing, Ink::kReservoir), IsEmpty());
}

} // namespace
