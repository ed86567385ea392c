/// The truth that damaged files tell about themselves.
#include "support/damage/damage.h"
#include "support/damage/truth_text.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>

using namespace test;
using testing::ElementsAre;

namespace {

CleanStream WithCrc(std::uint64_t seed, int frames) {
    bitstream::StreamOptions options;
    options.seed = seed;
    options.frames = frames;
    options.crc = true;
    options.padding = bitstream::Padding::kNever; // 417 bytes each
    return CleanStreamOf(bitstream::WriteStream(options));
}

class TruthOfDamage : public testing::Test {
protected:
    const CleanStream stream_ = WithCrc(1, 4);
    const CleanStream other_ = WithCrc(2, 4);
    DamagedFile file_{stream_};
};

} // namespace

TEST_F(TruthOfDamage, OfAnUntouchedFile) {
    EXPECT_EQ(file_.Content(), stream_.bytes);
    EXPECT_EQ(TruthText(file_), "0 1668 whole, frame 0 to 3\n");
}

TEST_F(TruthOfDamage, OfFlippedBits) {
    file_.FlipBit(417 + 3, 0);
    file_.FlipBit(2 * 417 + 5, 7);
    file_.FlipBit(3 * 417 + 37, 1);
    file_.FlipBit(3 * 417 + 38, 1);
    EXPECT_EQ(TruthText(file_), "0 417 whole, frame 0\n"
                                "417 417 spoiled header, frame 1\n"
                                "834 417 spoiled CRC, frame 2\n"
                                "1251 417 spoiled side information, frame 3\n");
    EXPECT_TRUE(file_.Pieces()[2].isOnlyCrcChanged);
    EXPECT_FALSE(file_.Pieces()[3].isOnlyCrcChanged);
    EXPECT_EQ(file_.Content()[420], stream_.bytes[420] ^ 1);
}

TEST_F(TruthOfDamage, OfACutWithinFrames) {
    file_.Remove(400, 900);
    EXPECT_EQ(TruthText(file_), "0 400 part, from byte 0, frame 0\n"
                                "400 351 part, from byte 66, frame 2\n"
                                "751 417 whole, frame 3\n");
}

TEST_F(TruthOfDamage, OfAFrameThatIsGone) {
    file_.Remove(417, 834);
    EXPECT_EQ(TruthText(file_), "0 417 whole, frame 0\n417 834 whole, frame 2 to 3\n");
}

TEST_F(TruthOfDamage, OfJunkBetweenAndWithinFrames) {
    file_.Insert(834, Bytes(10, 1));
    file_.Insert(417 + 100, Bytes(5, 2));
    file_.Insert(file_.Size(), Bytes(3, 3));
    EXPECT_EQ(TruthText(file_), "0 417 whole, frame 0\n"
                                "417 100 part, from byte 0, frame 1\n"
                                "517 5 junk\n"
                                "522 317 part, from byte 100, frame 1\n"
                                "839 10 junk\n"
                                "849 834 whole, frame 2 to 3\n"
                                "1683 3 junk\n");
}

TEST_F(TruthOfDamage, OfASplice) {
    file_.Splice(500, other_, 417);
    EXPECT_EQ(TruthText(file_), "0 417 whole, frame 0\n"
                                "417 83 part, from byte 0, frame 1\n"
                                "500 1251 whole, frame 1 to 3 of the other stream\n");
    EXPECT_THROW(file_.Splice(1, other_, 1), std::logic_error);
}

TEST_F(TruthOfDamage, PiecesCoverTheFileAndWholeFramesAreTheStreams) {
    std::set<PieceKind> kinds;
    for (std::uint64_t seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(seed);
        const DamagedFile file =
            Damaged(stream_, other_, {std::begin(kDamageKinds), std::end(kDamageKinds)}, seed);
        std::size_t end = 0;
        for (const Piece& piece : file.Pieces()) {
            ASSERT_EQ(piece.offset, end);
            end = piece.End();
            kinds.insert(piece.kind);
            if (piece.kind == PieceKind::kJunk)
                continue;
            const CleanStream& source = piece.stream == 0 ? stream_ : other_;
            const auto original =
                source.bytes.begin() + static_cast<std::ptrdiff_t>(file.FrameOf(piece).offset + piece.place);
            const bool isEqual =
                std::equal(original, original + static_cast<std::ptrdiff_t>(piece.length),
                           file.Content().begin() + static_cast<std::ptrdiff_t>(piece.offset));
            ASSERT_TRUE(isEqual || piece.kind != PieceKind::kFrame);
        }
        ASSERT_EQ(end, file.Size());
    }
    EXPECT_EQ(kinds.size(), 4u);
}

TEST_F(TruthOfDamage, EveryKindDoesWhatItSays) {
    const auto truths = [&](DamageKind kind) {
        std::string text;
        for (std::uint64_t seed = 0; seed < 40; ++seed)
            text += TruthText(Damaged(stream_, other_, {kind}, seed));
        return text;
    };
    using testing::HasSubstr;
    using testing::Not;
    EXPECT_THAT(truths(DamageKind::kBitFlips), AllOf(HasSubstr("spoiled header"), Not(HasSubstr("part"))));
    EXPECT_THAT(truths(DamageKind::kCut), AllOf(HasSubstr("part"), Not(HasSubstr("spoiled"))));
    EXPECT_THAT(truths(DamageKind::kSplice), HasSubstr("of the other stream"));
    EXPECT_THAT(truths(DamageKind::kJunk), AllOf(HasSubstr("junk"), Not(HasSubstr("spoiled"))));
    EXPECT_THAT(truths(DamageKind::kWrongCrc), AllOf(HasSubstr("spoiled CRC"), Not(HasSubstr("header"))));
    EXPECT_THAT(truths(DamageKind::kMissingFrames),
                AllOf(HasSubstr("whole, frame 2 to 3"), Not(HasSubstr("part"))));
}

TEST(CleanStreams, AreReadFromFilesFrameByFrame) {
    const CleanStream stream = WithCrc(1, 6);
    Bytes file = stream.bytes;
    file.resize(file.size() - 10);
    const CleanStream read = FirstFramesOf(file, 100);
    ASSERT_EQ(read.frames.size(), 5u);
    EXPECT_EQ(read.frames[4].offset, 4 * 417u);
    EXPECT_EQ(read.bytes, Bytes(file.begin(), file.begin() + 5 * 417));
    EXPECT_EQ(FirstFramesOf(file, 2).bytes.size(), 834u);
    EXPECT_THROW(FirstFramesOf(Bytes(100), 2), std::invalid_argument);
    file[834] = 0;
    EXPECT_THROW(FirstFramesOf(file, 100), std::invalid_argument);
}
