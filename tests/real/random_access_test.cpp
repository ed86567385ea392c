/// Requests in any order on real files bring what one read from the start brings.

#include "real/delivery.h"
#include "real/real_streams.h"
#include "support/loaded_module.h"
#include "support/test_files.h"

#include <gtest/gtest.h>

#include <random>

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

    /// A copy of the stream with its index beside it.
    std::filesystem::path CopyWithIndex(const RealStream& stream) {
        scratch_.Add(stream.file + ".idx", ReadFile(stream.IndexPath()));
        return scratch_.Add(stream.file, ReadFile(stream.Path()));
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
