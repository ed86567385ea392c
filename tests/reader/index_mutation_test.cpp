/// Thousands of changed indexes: results are those that are promised, sizes right, and what lies before the
/// first changed entry comes out as if nothing had been changed.
#include "reader/index_mutations.h"
#include "reader/mutated_streams.h"

#include "mpa/file_probe.h"
#include "reader/slice_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using namespace trnmpa;
using test::Bytes;
using test::EngineKind;
using test::Mutation;
using test::Soundness;

namespace {

constexpr std::uint64_t kSeedsPerTest = 170;
constexpr int kRangesPerStream = 10;
static_assert(test::kMutatedStreams * kRangesPerStream * kSeedsPerTest >= 10'000);

/// A header may claim samples of 64 KiB; requests stay small.
constexpr std::size_t kMostRequestBytes = 256 * 1024;

struct Place {
    int stream;
    int range;
};

class MutatedIndex : public testing::TestWithParam<Place> {
protected:
    /// Writes the index of each seed of the range beside the stream and checks what `check` makes of it.
    template <typename Check>
    void ForEachMutation(Check check) {
        const auto mediaBytes = static_cast<std::uint32_t>(std::filesystem::file_size(stream_.path));
        const auto first = static_cast<std::uint64_t>(GetParam().range) * kSeedsPerTest;
        for (std::uint64_t seed = first; seed < first + kSeedsPerTest && !HasFatalFailure(); ++seed) {
            const Mutation mutation = test::Mutate(wholeIndex_, mediaBytes, seed);
            SCOPED_TRACE("seed " + std::to_string(seed) + ":" + mutation.description);
            test::WriteFile(indexPath_, mutation.index);
            check(mutation.index, test::Compare(wholeIndex_, mutation.index), seed);
        }
    }

    test::ScratchFolder folder_;
    const test::ExpectedStream stream_ =
        test::AddIndexedStream(folder_, test::MutatedStream(GetParam().stream));
    const std::filesystem::path indexPath_ = stream_.path.string() + ".idx";
    const Bytes wholeIndex_ = test::ReadFile(indexPath_);
};

/// Asks one engine and checks each answer; counts those whose PCM is known.
class Questioner {
public:
    Questioner(test::EngineUnderTest& engine, const test::ExpectedStream& stream, const Soundness& soundness)
        : engine_(engine), stream_(stream), soundness_(soundness) {}

    /// A short read in order and some jumps, there and behind the end too.
    void AskAround(std::uint64_t seed) {
        std::mt19937_64 random(seed);
        const auto below = [&](std::int64_t limit) {
            return static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(limit));
        };
        const auto some = [&] { return static_cast<std::uint32_t>(1 + below(2 * stream_.samplesPerFrame)); };
        ASSERT_NO_FATAL_FAILURE(Ask(0, some()));
        ASSERT_NO_FATAL_FAILURE(Ask(next_, some()));
        ASSERT_NO_FATAL_FAILURE(Ask(below(stream_.samples), some()));
        ASSERT_NO_FATAL_FAILURE(Ask(next_, some()));
        ASSERT_NO_FATAL_FAILURE(Ask(below(stream_.samples / 2), some()));
        ASSERT_NO_FATAL_FAILURE(Ask(stream_.samples - below(3000), some()));
    }

    int ExactAnswers() const { return exactAnswers_; }

private:
    /// The result is a promised one, the size right, the PCM exact where it must be.
    void Ask(std::int64_t start, std::uint32_t count) {
        const std::size_t width = std::max<std::size_t>(engine_.SampleBytes(), 1);
        count = static_cast<std::uint32_t>(std::min<std::size_t>(count, kMostRequestBytes / width));
        next_ = start + count;
        const test::Answer answer = engine_.Read(start, count);
        ASSERT_TRUE(engine_.MayReadGive(answer.result)) << answer.result;
        const bool isRead = answer.result == kSuccess;
        EXPECT_EQ(answer.data != nullptr, isRead);
        EXPECT_EQ(answer.size, isRead ? static_cast<std::int64_t>(count * engine_.SampleBytes()) : 0);
        if (MustBeExact(start)) {
            EXPECT_EQ(answer.result, kSuccess);
            EXPECT_TRUE(answer.pcm == stream_.Answer(start, count)) << count << " samples at " << start;
            ++exactAnswers_;
        }
    }

    /// Nothing that such a request needs is looked up at or behind the first changed entry.
    bool MustBeExact(std::int64_t start) const {
        return soundness_.header &&
               start < static_cast<std::int64_t>(soundness_.entries) * stream_.samplesPerFrame;
    }

    test::EngineUnderTest& engine_;
    const test::ExpectedStream& stream_;
    const Soundness soundness_;
    std::int64_t next_ = 0;
    int exactAnswers_ = 0;
};

/// 20 ms, so that a slice holds most of a frame or more.
constexpr std::int64_t kSliceTime = 200'000;
constexpr std::uint32_t kSlices = 12;

/// A slice and the place of the frame at its start, as an index gives them.
struct PlacedSlice {
    Bytes pcm;                  ///< empty for a failed one
    std::uint32_t position = 0; ///< 0 for a failed one
};

/// The slice engine over one file. Results and sizes are checked here.
class SliceReading {
public:
    explicit SliceReading(const std::filesystem::path& path) {
        EXPECT_EQ(engine_.Initialize(), 1);
        EXPECT_EQ(engine_.SetPerPcmFrameTime(kSliceTime), 1);
        opened_ = engine_.SetInputFile(test::Wide(path)) == 1 ? engine_.StartRead() : 0;
        EXPECT_TRUE(opened_ == 0 || opened_ == 1) << opened_;
    }

    PlacedSlice Read(std::uint32_t number) {
        PlacedSlice read;
        PcmSlice slice;
        engine_.SeekTo(number);
        const std::int32_t result = engine_.ReadFrame(slice);
        EXPECT_TRUE(result == opened_ || result == 0) << result;
        EXPECT_EQ(slice.data != nullptr, slice.length > 0);
        EXPECT_TRUE(slice.length == 0 || result == 1);
        if (slice.length > 0)
            read.pcm.assign(slice.data, slice.data + slice.length);
        engine_.PositionByTime(number * kSliceTime, read.position);
        return read;
    }

private:
    KwMpAudioReader engine_;
    std::int32_t opened_ = 0;
};

std::vector<Place> AllPlaces() {
    std::vector<Place> places;
    for (int stream = 0; stream < test::kMutatedStreams; ++stream)
        for (int range = 0; range < kRangesPerStream; ++range)
            places.push_back({stream, range});
    return places;
}

std::string PlaceName(const testing::TestParamInfo<Place>& place) {
    const auto first = static_cast<std::uint64_t>(place.param.range) * kSeedsPerTest;
    return "Stream" + std::to_string(place.param.stream) + "Seeds" + std::to_string(first) + "To" +
           std::to_string(first + kSeedsPerTest - 1);
}

} // namespace

TEST_P(MutatedIndex, IsRead) {
    for (const EngineKind& kind : test::EngineKinds()) {
        SCOPED_TRACE(kind.name);
        int exactAnswers = 0;
        ForEachMutation([&](const Bytes&, const Soundness& soundness, std::uint64_t seed) {
            const auto engine = kind.create();
            const std::int32_t opened = engine->Open(stream_.path);
            ASSERT_TRUE(engine->MayOpenGive(opened)) << opened;
            const bool mustOpen = soundness.header && soundness.entries > 0;
            ASSERT_TRUE(opened == kSuccess || !mustOpen) << opened;
            if (opened != kSuccess)
                return;
            Questioner questioner(*engine, stream_, soundness);
            questioner.AskAround(seed);
            exactAnswers += questioner.ExactAnswers();
        });
        EXPECT_GT(exactAnswers, static_cast<int>(kSeedsPerTest)) << "of six times as many";
    }
}

TEST_P(MutatedIndex, IsSliced) {
    const std::int64_t sampleRate =
        ParseIndexHeader(std::span(wholeIndex_).first<kIndexHeaderBytes>()).sampleRate;
    SliceReading untouched(stream_.path);
    std::vector<PlacedSlice> expected;
    for (std::uint32_t i = 0; i < kSlices; ++i)
        expected.push_back(untouched.Read(i));
    int exactSlices = 0;
    ForEachMutation([&](const Bytes&, const Soundness& soundness, std::uint64_t seed) {
        SliceReading reading(stream_.path);
        std::mt19937_64 random(seed);
        const auto first = static_cast<std::uint32_t>(random() % kSlices);
        for (const std::uint32_t number :
             {first, first + 1, static_cast<std::uint32_t>(random() % kSlices)}) {
            const PlacedSlice read = reading.Read(number);
            const std::int64_t end = (number + 1) * kSliceTime * sampleRate / 10'000'000;
            const bool mustBeExact = soundness.header && end < static_cast<std::int64_t>(soundness.entries) *
                                                                   stream_.samplesPerFrame;
            if (!mustBeExact || number >= kSlices || expected[number].pcm.empty())
                continue;
            EXPECT_TRUE(read.pcm == expected[number].pcm) << "slice " << number;
            EXPECT_EQ(read.position, expected[number].position) << "slice " << number;
            ++exactSlices;
        }
    });
    EXPECT_GT(exactSlices, static_cast<int>(kSeedsPerTest) / 4) << "of three times as many";
}

TEST_P(MutatedIndex, IsDescribed) {
    CMPGAudioFileBufferReader untouched;
    ASSERT_EQ(untouched.ParseFile(test::Wide(stream_.path)), kProbeDescribed);
    ForEachMutation([&](const Bytes& index, const Soundness& soundness, std::uint64_t) {
        CMPGAudioFileBufferReader probe;
        ASSERT_EQ(probe.ParseFile(test::Wide(stream_.path)), kProbeDescribed);
        const KW_MEDIA_BASE_INFO_ST& found = probe.Description();
        EXPECT_EQ(found.fileSize, untouched.Description().fileSize);
        EXPECT_GE(found.duration, 0);
        const int layer = index.size() > 8 ? index[8] : 0;
        EXPECT_EQ(found.classIdentifier, layer >= 1 && layer <= 3 ? 2320 + layer : 2049);
        EXPECT_TRUE(found.duration == untouched.Description().duration || !soundness.header)
            << found.duration;
    });
}

INSTANTIATE_TEST_SUITE_P(Ranges, MutatedIndex, testing::ValuesIn(AllPlaces()), PlaceName);
