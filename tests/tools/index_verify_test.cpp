/// `mpatool index --verify`.

#include "tools/tool_fixture.h"

#include <gmock/gmock.h>

namespace {

using test::Bytes;
using test::ProcessResult;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::size_t kFrames = 20;
constexpr std::size_t kEntry3 = 28 + 3 * 8;

class IndexVerifyTest : public test::ToolTest {
protected:
    void SetUp() override { Add("a.mp3", test::SilentLayer3(kFrames)); }

    /// The index is found stale for the reason, and nothing is written.
    void ExpectStale(const Bytes& index, const std::string& difference) const {
        Add("a.mp3.idx", index);
        const ProcessResult result = Run({"index", "--verify", "a.mp3"});
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_EQ(result.output, "a.mp3: stale: " + difference + "\n");
        EXPECT_THAT(result.error, IsEmpty());
        EXPECT_EQ(Read("a.mp3.idx"), index);
        EXPECT_THAT(NewFiles(), IsEmpty());
    }

    /// The good index with one byte changed.
    static Bytes With(std::size_t place, std::uint8_t value) {
        Bytes index = test::IndexOfSilence(kFrames);
        index.at(place) = value;
        return index;
    }
};

TEST_F(IndexVerifyTest, GoodIndex) {
    ASSERT_EQ(Run({"index", "a.mp3"}).exitStatus, 0);
    const Bytes index = Read("a.mp3.idx");
    const ProcessResult result = Run({"index", "--verify", "a.mp3"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, "a.mp3: good (19 frames)\n");
    EXPECT_THAT(result.error, IsEmpty());
    EXPECT_EQ(Read("a.mp3.idx"), index);
}

TEST_F(IndexVerifyTest, IndexOfAnotherProgramIsGoodAsWell) {
    Add("a.mp3.idx", test::IndexOfSilence(kFrames));
    EXPECT_EQ(Run({"index", "--verify", "a.mp3"}).output, "a.mp3: good (19 frames)\n");
}

TEST_F(IndexVerifyTest, NoIndex) {
    const ProcessResult result = Run({"index", "--verify", "a.mp3"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "a.mp3: no index\n");
    EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(IndexVerifyTest, FileThatGrew) {
    Add("a.mp3.idx", test::IndexOfSilence(kFrames));
    Add("a.mp3", test::SilentLayer3(kFrames + 1));
    ExpectStale(test::IndexOfSilence(kFrames), "the file's size is 8,340 in the index, 8,757 in the file");
}

TEST_F(IndexVerifyTest, UnfinishedAndCutIndexes) {
    ExpectStale(Bytes(28 + 80), "it was never finished");
    ExpectStale({}, "it was never finished");
    Bytes index = test::IndexOfSilence(kFrames);
    index.pop_back();
    ExpectStale(index, "it has 179 bytes, by its header it would have 180");
    index.resize(20);
    ExpectStale(index, "it has 20 bytes, by its header it would have 180");
    index = test::IndexOfSilence(kFrames);
    index.push_back(0);
    ExpectStale(index, "it has 181 bytes, by its header it would have 180");
}

TEST_F(IndexVerifyTest, EveryFieldOfTheFormat) {
    ExpectStale(With(8, 2), "the layer is 2 in the index, 3 in the file");
    ExpectStale(With(9, 2), "the version class is 2 in the index, 1 in the file");
    ExpectStale(With(10, 1), "the number of channels is 1 in the index, 2 in the file");
    ExpectStale(With(12, 1), "the bit rate is 128,001 in the index, 128,000 in the file");
    ExpectStale(With(16, 0), "the sample rate is 44,032 in the index, 44,100 in the file");
    ExpectStale(With(20, 8), "the sample size is 8 in the index, 16 in the file");
    ExpectStale(With(23, 0), "the first frame's length is 161 in the index, 417 in the file");
    ExpectStale(With(24, 0), "the number of samples in a frame is 1,024 in the index, 1,152 in the file");
}

TEST_F(IndexVerifyTest, EntriesOneByOne) {
    ExpectStale(With(kEntry3, 0), "entry 3: the frame's position is 1,536 in the index, 1,668 in the file");
    ExpectStale(With(kEntry3 + 4, 0), "entry 3: the frame's length is 256 in the index, 417 in the file");
}

TEST_F(IndexVerifyTest, TooFewAndTooManyEntries) {
    std::vector<std::uint32_t> offsets;
    for (std::uint32_t i = 1; i < kFrames - 1; ++i)
        offsets.push_back(i * static_cast<std::uint32_t>(test::kSilentFrameBytes));
    const std::size_t mediaBytes = kFrames * test::kSilentFrameBytes;
    ExpectStale(test::IndexOf(offsets, mediaBytes), "it lists 18 frames, the file has more");
    offsets.insert(offsets.end(), {7923, 9000});
    ExpectStale(test::IndexOf(offsets, mediaBytes), "it lists 20 frames, the file has 19 behind the first");
}

TEST_F(IndexVerifyTest, FileThatLostItsFrames) {
    Add("a.mp3", Bytes(kFrames * test::kSilentFrameBytes));
    ExpectStale(test::IndexOfSilence(kFrames), "the file has no MPEG audio frames where an index starts");
}

TEST_F(IndexVerifyTest, OneBadFileAmongGoodOnes) {
    Add("a.mp3.idx", test::IndexOfSilence(kFrames));
    Add("b.mp3", test::SilentLayer3(2));
    Add("b.mp3.idx", test::IndexOfSilence(3));
    Add("c.mp3", test::SilentLayer3(3));
    Add("c.mp3.idx", test::IndexOfSilence(3));
    const ProcessResult result = Run({"index", "--verify", "a.mp3", "none.mp3", "b.mp3", "c.mp3"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "a.mp3: good (19 frames)\n"
                             "b.mp3: stale: the file's size is 1,251 in the index, 834 in the file\n"
                             "c.mp3: good (2 frames)\n");
    EXPECT_THAT(result.error, HasSubstr("mpatool: none.mp3: "));
    EXPECT_EQ(Run({"index", "--verify", "a.mp3", "c.mp3"}).exitStatus, 0);
    EXPECT_THAT(Run({"index", "--verify", "-r", "."}).output, HasSubstr("c.mp3: good (2 frames)\n"));
}

} // namespace
