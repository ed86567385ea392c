/// Slices of MPEG-1 after any jumps are bit for bit those of reading in order: random streams, slice times
/// and ways through them.

#include "reader/foreign_bytes.h"
#include "reader/reader_streams.h"
#include "reader/slices.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace test;
using bitstream::ReservoirUse;

constexpr std::int64_t kMillisecond = 10'000;

class Draw {
public:
    explicit Draw(std::uint64_t seed) : engine_(seed) {}

    std::int64_t Below(std::int64_t count) {
        return static_cast<std::int64_t>(engine_() % static_cast<std::uint64_t>(count));
    }
    bool Once(std::int64_t in) { return Below(in) == 0; }

    template <typename T>
    T OneOf(std::initializer_list<T> values) {
        return *(values.begin() + Below(static_cast<std::int64_t>(values.size())));
    }

private:
    std::mt19937_64 engine_;
};

bitstream::StreamOptions AnyOptions(Draw& draw, std::uint64_t seed) {
    bitstream::StreamOptions options;
    options.seed = seed;
    options.frames = static_cast<int>(20 + draw.Below(60));
    options.layer = draw.Once(5) ? 2 : 3;
    options.sampleRateIndex = static_cast<int>(draw.Below(3));
    options.mode = draw.OneOf<int>({model::kStereo, model::kJointStereo, model::kSingleChannel});
    options.modeExtensions = {0, 1, 2, 3};
    options.crc = draw.Once(3);
    options.layer3.blocks = {{0, false}, {1, false}, {2, false}, {2, true}, {3, false}};
    options.layer3.reservoir = draw.OneOf({ReservoirUse::kFull, ReservoirUse::kRandom, ReservoirUse::kNone});
    return options;
}

/// From 1 ms to 2 s, mostly short, and odd ones.
std::int64_t AnySliceTime(Draw& draw) {
    switch (draw.Below(4)) {
    case 0:
        return draw.OneOf<std::int64_t>({kMillisecond, 73'000, 26 * kMillisecond, 400'000, 261'224, 261'225});
    case 1:
        return kMillisecond + draw.Below(2000 * kMillisecond);
    default:
        return kMillisecond + draw.Below(80 * kMillisecond);
    }
}

/// Where arithmetic over the first frame's length finds each frame: behind header n - 1, not behind header n.
bool IsFoundByLength(const bitstream::Stream& stream) {
    for (std::size_t n = 1; n < stream.frames.size(); ++n) {
        const std::size_t place =
            stream.frames[0].offset + n * static_cast<std::size_t>(stream.frames[0].length);
        if (place <= stream.frames[n - 1].offset || place > stream.frames[n].offset)
            return false;
    }
    return true;
}

class SliceJumps : public testing::Test {
protected:
    void ExpectExactJumps(const std::filesystem::path& path, Draw& draw) {
        const std::int64_t sliceTime = AnySliceTime(draw);
        SCOPED_TRACE(testing::Message() << "slices of " << sliceTime);
        TRN_MpAudioFileReader inOrder;
        ASSERT_EQ(StartSlices(inOrder, path, sliceTime), 1);
        const std::vector<Slice> slices = ReadAllSlices(inOrder);
        if (slices.empty())
            return;
        ++ways_;
        TRN_MpAudioFileReader reader;
        ASSERT_EQ(StartSlices(reader, path, sliceTime), 1);
        std::int64_t number = 0;
        std::string way;
        for (int i = 0; i < 25; ++i) {
            const auto count = static_cast<std::int64_t>(slices.size());
            if (draw.Below(3) != 0) {
                number = draw.Once(6) ? draw.Below(3) : draw.Below(count + (draw.Once(8) ? 5 : 0));
                reader.SeekTo(static_cast<std::uint32_t>(number));
                way += " " + std::to_string(number);
            }
            const Slice slice = ReadSlice(reader);
            if (number >= count) {
                ASSERT_FALSE(slice.hasData) << way;
            } else {
                ASSERT_EQ(slice.result, 1) << way;
                ASSERT_TRUE(slice.bytes == slices[static_cast<std::size_t>(number)].bytes)
                    << "slice " << number << " by" << way;
            }
            ++number;
        }
    }

    ScratchFolder scratch_;
    int ways_ = 0;
};

TEST_F(SliceJumps, AreExactWithAnIndex) {
    for (std::uint64_t seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        Draw draw(seed);
        bitstream::StreamOptions options = AnyOptions(draw, seed);
        if (options.layer == 3)
            options.bitrateIndices = draw.Once(4) ? std::vector{9} : std::vector{1, 1, 1, 1, 14};
        else
            options.bitrateIndices = {options.mode == model::kSingleChannel ? 5 : 10};
        const Surroundings surroundings{draw.Once(3), draw.Once(4), draw.Once(3), seed};
        const bitstream::Stream stream = Surround(bitstream::WriteStream(options), surroundings);
        const auto path = scratch_.Add("a.mp3", stream.bytes);
        scratch_.Add("a.mp3.idx", IndexOf(stream).ToBytes());
        ASSERT_NO_FATAL_FAILURE(ExpectExactJumps(path, draw));
        ASSERT_NO_FATAL_FAILURE(ExpectExactJumps(path, draw));
    }
    EXPECT_GE(ways_, 70);
}

TEST_F(SliceJumps, AreExactAtConstantBitRateWithoutAnIndex) {
    for (std::uint64_t seed = 1001; seed <= 1050; ++seed) {
        SCOPED_TRACE(seed);
        Draw draw(seed);
        bitstream::StreamOptions options = AnyOptions(draw, seed);
        options.bitrateIndices = {options.layer == 2 ? (options.mode == model::kSingleChannel ? 5 : 10)
                                                     : static_cast<int>(2 + draw.Below(13))};
        options.padding = draw.OneOf({bitstream::Padding::kNever, bitstream::Padding::kByRate});
        bitstream::Stream stream = bitstream::WriteStream(options);
        if (!IsFoundByLength(stream))
            continue;
        const bool hasTag = draw.Once(3);
        const Bytes tag = {'I', 'D', '3', 3, 0, 0, 0, 0, 0, 6, 0, 0, 0, 0, 0, 0};
        const auto path = scratch_.Add("a.mp3", hasTag ? Joined({tag, stream.bytes}) : stream.bytes);
        ASSERT_NO_FATAL_FAILURE(ExpectExactJumps(path, draw));
        ASSERT_NO_FATAL_FAILURE(ExpectExactJumps(path, draw));
    }
    EXPECT_GE(ways_, 90);
}

TEST_F(SliceJumps, AreExactForTheLongestSlices) {
    bitstream::StreamOptions options;
    options.seed = 5;
    options.frames = 1300;
    options.layer = 2;
    options.sampleRateIndex = 2;
    options.mode = model::kSingleChannel;
    options.bitrateIndices = {1};
    const bitstream::Stream stream = bitstream::WriteStream(options);
    const auto path = scratch_.Add("a.mp3", stream.bytes);
    for (const bool hasIndex : {false, true}) {
        SCOPED_TRACE(hasIndex);
        if (hasIndex)
            scratch_.Add("a.mp3.idx", IndexOf(stream).ToBytes());
        TRN_MpAudioFileReader reader;
        ASSERT_EQ(StartSlices(reader, path, 10'000 * kMillisecond), 1);
        const std::vector<Slice> slices = ReadAllSlices(reader);
        ASSERT_EQ(slices.size(), 4u) << "of 46.8 s";
        for (const std::uint32_t number : {3u, 1u, 2u, 0u, 3u})
            EXPECT_TRUE(ReadSliceAt(reader, number).bytes == slices[number].bytes) << number;
    }
}

} // namespace
