/// Requests in any order on real files bring what one read from the start brings.

#include "real/delivery.h"
#include "real/real_streams.h"
#include "support/loaded_module.h"
#include "support/test_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <span>

namespace {

using namespace test;

constexpr unsigned kSeed = 20'240'131;
constexpr int kReadersPerStream = 4;
constexpr int kRequestsPerReader = 12;

/// A file, and what one read from its start to its end brings.
struct OpenedWhole {
    std::filesystem::path path;
    int channels = 0;
    int samplesPerFrame = 0;
    std::int64_t samples = 0;
    Pcm pcm;
};

struct Request {
    std::int64_t start = 0;
    std::uint32_t count = 0;
};

/// Mostly anywhere in the stream and short; at times at a frame's edge, across the end or behind it.
Request AnyRequest(std::mt19937& generator, const OpenedWhole& whole) {
    const auto below = [&generator](std::int64_t limit) {
        return static_cast<std::int64_t>(generator() % static_cast<std::uint64_t>(limit));
    };
    Request request{below(whole.samples), static_cast<std::uint32_t>(1 + below(6000))};
    switch (below(10)) {
    case 0:
        request.start = whole.samples - below(5000);
        break;
    case 1:
        request.start = whole.samples + below(100'000);
        break;
    case 2:
        request.start -= request.start % whole.samplesPerFrame;
        request.count = static_cast<std::uint32_t>(whole.samplesPerFrame);
        break;
    case 3:
        request.start = 0;
        break;
    default:
        break;
    }
    return request;
}

/// One reader, asked for this and that, at times for what follows.
void AskAround(LoadedModule& module, const OpenedWhole& whole, std::mt19937& generator) {
    const auto reader = module.OpenForReading(whole.path);
    ASSERT_NE(reader, nullptr);
    Request request = AnyRequest(generator, whole);
    for (int number = 0; number < kRequestsPerReader; ++number) {
        const auto answer = ReadPcm(*reader, request.start, request.count);
        ASSERT_TRUE(answer);
        ASSERT_EQ(*answer, ExpectedAnswer(whole.pcm, whole.channels, request.start, request.count))
            << "request " << number << ": " << request.count << " samples at " << request.start;
        const bool goOn = generator() % 3 == 0;
        const std::int64_t next = request.start + request.count;
        request = AnyRequest(generator, whole);
        if (goOn)
            request.start = next;
    }
}

class RealRandomAccess : public testing::Test {
protected:
    LoadedModule module_;
    ScratchFolder scratch_;
    std::mt19937 generator_{kSeed};

    OpenedWhole ReadWhole(const RealStream& stream, const std::filesystem::path& path, std::int64_t samples) {
        OpenedWhole whole{path, stream.channels, stream.SamplesPerFrame(), samples, {}};
        const auto reader = module_.OpenForReading(path);
        EXPECT_NE(reader, nullptr);
        if (reader != nullptr)
            whole.pcm = ReadThrough(*reader, samples, 44'100);
        return whole;
    }

    void AskManyReaders(const OpenedWhole& whole) {
        for (int number = 0; number < kReadersPerStream && !HasFailure(); ++number)
            AskAround(module_, whole, generator_);
    }

    /// A copy of the stream with the index beside it that the module builds.
    std::filesystem::path CopyWithIndex(const RealStream& stream) {
        const auto path = scratch_.Add(stream.file, ReadFile(stream.Path()));
        BuildIndexBeside(module_, path);
        return path;
    }
};

TEST_F(RealRandomAccess, ConstantBitRateIsExactWithoutAnIndex) {
    int streams = 0;
    for (const RealStream& stream : RealStreams()) {
        if (!stream.HasConstantBitRate() || stream.IsLowRateLayer2())
            continue;
        SCOPED_TRACE(stream.file);
        AskManyReaders(ReadWhole(stream, stream.Path(), stream.DeliveredSamples()));
        ++streams;
    }
    EXPECT_GE(streams, 50);
}

TEST_F(RealRandomAccess, AnIndexListsTheFramesThatOthersSee) {
    int streams = 0;
    for (const RealStream& stream : RealStreams()) {
        if (stream.IsFreeFormat() || stream.IsLowRateLayer2())
            continue;
        SCOPED_TRACE(stream.file);
        const auto path = scratch_.Add(stream.file, ReadFile(stream.Path()));
        EXPECT_TRUE(BuildIndexBeside(module_, path) == ReadFile(stream.IndexPath()));
        ++streams;
    }
    EXPECT_GE(streams, 70);
}

// At the lower sampling frequencies Layer II frames stand in the index at half their length.
TEST_F(RealRandomAccess, AnIndexListsLowRateLayer2AtTheRightPlaces) {
    for (const char* file : {"l2-22-64.mp2", "l2-24-80-joint.mp2", "l2-16-32-mono.mp2"}) {
        SCOPED_TRACE(file);
        const RealStream& stream = RealStreamNamed(file);
        const Bytes built = BuildIndexBeside(module_, scratch_.Add(file, ReadFile(stream.Path())));
        const Bytes seen = ReadFile(stream.IndexPath());
        ASSERT_EQ(built.size(), seen.size());
        for (std::size_t entry = 28; entry < seen.size(); entry += 8) {
            const auto offset = std::span(seen).subspan(entry, 4);
            EXPECT_TRUE(std::ranges::equal(std::span(built).subspan(entry, 4), offset)) << entry;
            EXPECT_NE(built[entry + 4] | built[entry + 5] << 8, seen[entry + 4] | seen[entry + 5] << 8);
        }
    }
}

TEST_F(RealRandomAccess, EveryStreamIsExactWithAnIndex) {
    int streams = 0;
    for (const RealStream& stream : RealStreams()) {
        const bool wanted = !stream.HasConstantBitRate() || stream.layer == 2 || stream.shortBlocks == 0;
        if (stream.IsFreeFormat() || !wanted)
            continue;
        SCOPED_TRACE(stream.file);
        AskManyReaders(ReadWhole(stream, CopyWithIndex(stream), stream.SamplesWithIndex()));
        ++streams;
    }
    EXPECT_GE(streams, 40);
}

TEST_F(RealRandomAccess, JunkBetweenFramesChangesNothingWithAnIndex) {
    for (const char* file : {"vbr-44-v2.mp3", "low-22-64.mp3", "mono-11-16.mp3", "l2-44-192.mp2"}) {
        SCOPED_TRACE(file);
        const RealStream& stream = RealStreamNamed(file);
        const OpenedWhole clean = ReadWhole(stream, CopyWithIndex(stream), stream.SamplesWithIndex());
        const Bytes index = ReadFile(stream.IndexPath());
        Bytes dirty = ReadFile(stream.Path());
        for (const std::size_t entry : {90u, 50u, 11u, 3u}) {
            const auto* place = &index.at(28 + 8 * entry);
            const auto offset = static_cast<std::ptrdiff_t>(place[0] | place[1] << 8 | place[2] << 16);
            dirty.insert(dirty.begin() + offset, entry == 50 ? 4096 : 4 * entry, 0x55);
        }
        const auto path = scratch_.Add("dirty-" + stream.file, dirty);
        EXPECT_EQ(BuildIndexBeside(module_, path).size(), index.size());
        OpenedWhole whole = ReadWhole(stream, path, stream.SamplesWithIndex());
        EXPECT_TRUE(whole.pcm == clean.pcm);
        AskManyReaders(whole);
    }
}

TEST_F(RealRandomAccess, AnIndexBringsTheSoundFromItsFirstEntryOn) {
    for (const char* file :
         {"long-44-v5.mp3", "long-44-abr-128.mp3", "long-24-96-s.mp3", "long-22-80-m.mp3"}) {
        SCOPED_TRACE(file);
        const RealStream& stream = RealStreamNamed(file);
        ASSERT_NE(stream.tag, "none");
        const OpenedWhole whole = ReadWhole(stream, CopyWithIndex(stream), stream.SamplesWithIndex());
        const Pcm reference = stream.Reference();
        ASSERT_EQ(whole.pcm.size(), reference.size());
        const PcmDistance distance = Distance(reference, whole.pcm);
        EXPECT_LE(distance.largest, 2);
        EXPECT_LT(distance.rms, 0.8);
    }
}

} // namespace
