/// Requests in any order on real files bring what one read from the start brings.

#include "real/delivery.h"
#include "real/real_streams.h"
#include "support/loaded_module.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace test;

constexpr unsigned kSeed = 20'240'131;
constexpr int kReadersPerStream = 4;
constexpr int kRequestsPerReader = 12;

struct Request {
    std::int64_t start = 0;
    std::uint32_t count = 0;
};

/// Mostly anywhere in the stream and short; at times at a frame's edge, across the end or behind it.
Request AnyRequest(std::mt19937& generator, const RealStream& stream) {
    const std::int64_t samples = stream.DeliveredSamples();
    const auto below = [&generator](std::int64_t limit) {
        return static_cast<std::int64_t>(generator() % static_cast<std::uint64_t>(limit));
    };
    Request request{below(samples), static_cast<std::uint32_t>(1 + below(6000))};
    switch (below(10)) {
    case 0:
        request.start = samples - below(5000);
        break;
    case 1:
        request.start = samples + below(100'000);
        break;
    case 2:
        request.start -= request.start % stream.SamplesPerFrame();
        request.count = static_cast<std::uint32_t>(stream.SamplesPerFrame());
        break;
    case 3:
        request.start = 0;
        break;
    default:
        break;
    }
    return request;
}

void AskAround(LoadedModule& module, const RealStream& stream, const Pcm& whole, std::mt19937& generator) {
    const auto reader = module.OpenForReading(stream.Path());
    ASSERT_NE(reader, nullptr);
    Request request = AnyRequest(generator, stream);
    for (int number = 0; number < kRequestsPerReader; ++number) {
        const auto answer = ReadPcm(*reader, request.start, request.count);
        ASSERT_TRUE(answer);
        ASSERT_EQ(*answer, ExpectedAnswer(whole, stream.channels, request.start, request.count))
            << "request " << number << ": " << request.count << " samples at " << request.start;
        const bool goOn = generator() % 3 == 0;
        const std::int64_t next = request.start + request.count;
        request = AnyRequest(generator, stream);
        if (goOn)
            request.start = next;
    }
}

TEST(RealRandomAccess, ConstantBitRateIsExactWithoutAnIndex) {
    LoadedModule module;
    std::mt19937 generator(kSeed);
    int streams = 0;
    for (const RealStream& stream : RealStreams()) {
        if (!stream.HasConstantBitRate() || stream.IsLowRateLayer2())
            continue;
        SCOPED_TRACE(stream.file);
        const auto reader = module.OpenForReading(stream.Path());
        ASSERT_NE(reader, nullptr);
        const Pcm whole = ReadThrough(*reader, stream.DeliveredSamples(), 44'100);
        for (int number = 0; number < kReadersPerStream && !testing::Test::HasFailure(); ++number)
            AskAround(module, stream, whole, generator);
        ++streams;
    }
    EXPECT_GE(streams, 50);
}

} // namespace
