#include "reader/exact_delivery.h"

#include "reader/engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <string>

namespace test {

namespace {

struct Request {
    std::int64_t start = 0;
    std::uint32_t count = 1;
};

/// Draws requests of all kinds; remembers where the last one ended.
class RequestMaker {
public:
    RequestMaker(const ExpectedStream& stream, std::uint64_t seed) : stream_(stream), engine_(seed) {}

    Request Next() {
        Request request;
        request.start = DrawStart();
        request.count = DrawCount();
        nextStart_ = request.start + request.count;
        return request;
    }

    std::uint64_t Below(std::int64_t count) {
        return count > 0 ? engine_() % static_cast<std::uint64_t>(count) : 0;
    }

private:
    std::int64_t DrawStart() {
        const auto frames = stream_.samples / stream_.samplesPerFrame + 1;
        const auto frame = static_cast<std::int64_t>(Below(frames));
        switch (Below(10)) {
        case 0:
            return 0;
        case 1:
        case 2:
        case 3:
            return nextStart_;
        case 4: // a frame's first sample
            return std::max<std::int64_t>(frame * stream_.samplesPerFrame - stream_.skippedSamples, 0);
        case 5: // beside it
            return std::max<std::int64_t>(frame * stream_.samplesPerFrame - stream_.skippedSamples +
                                              static_cast<std::int64_t>(Below(3)) - 1,
                                          0);
        case 6: // near the end
            return std::max<std::int64_t>(stream_.samples - static_cast<std::int64_t>(Below(3000)), 0);
        case 7: // behind it
            return Below(4) == 0 ? stream_.samples + static_cast<std::int64_t>(Below(100000))
                                 : nextStart_ / 2;
        default:
            return static_cast<std::int64_t>(Below(stream_.samples));
        }
    }

    std::uint32_t DrawCount() {
        switch (Below(8)) {
        case 0:
            return 1;
        case 1:
            return static_cast<std::uint32_t>(stream_.samplesPerFrame);
        case 2:
            return static_cast<std::uint32_t>(Below(8 * stream_.samplesPerFrame)) + 1;
        case 3:
            return Below(20) == 0 ? static_cast<std::uint32_t>(stream_.samples) + 1 : 7;
        default:
            return static_cast<std::uint32_t>(Below(stream_.samplesPerFrame)) + 1;
        }
    }

    const ExpectedStream& stream_;
    std::mt19937_64 engine_;
    std::int64_t nextStart_ = 0;
};

/// A history that must not matter.
void Spoil(Engine& engine, const ExpectedStream& stream) {
    engine.Ask(stream.samples - 1, 2);
    engine.Ask(-1, 1);
    engine.Ask(stream.samples / 2, 1);
    engine.Ask(std::numeric_limits<std::int64_t>::max(), 1);
    engine.Ask(0, 0);
    engine.Ask(stream.samples + 1000000, 3);
}

} // namespace

testing::AssertionResult Answers(Engine& engine, const ExpectedStream& stream, std::int64_t start,
                                 std::uint32_t count) {
    const Pcm expected = stream.Answer(start, count);
    const Answer answer = engine.Ask(start, count);
    if (answer.result != 1 || answer.size != static_cast<std::int32_t>(2 * expected.size()))
        return testing::AssertionFailure() << "result " << answer.result << ", " << answer.size << " bytes";
    if (answer.pcm != expected)
        return testing::AssertionFailure() << "other samples";
    return testing::AssertionSuccess();
}

void ExpectSequentialDelivery(const ExpectedStream& stream, std::uint32_t chunk) {
    Engine engine(stream.path);
    ASSERT_EQ(engine.Opened(), 1);
    ASSERT_EQ(engine.Format().nBlockAlign, 2 * stream.channels);
    for (std::int64_t start = 0; start < stream.samples; start += chunk) {
        const auto count = static_cast<std::uint32_t>(std::min<std::int64_t>(chunk, stream.samples - start));
        ASSERT_TRUE(Answers(engine, stream, start, count)) << "in order, at " << start;
    }
    ASSERT_TRUE(Answers(engine, stream, stream.samples, 1)) << "behind the end";
}

void ExpectExactDelivery(const ExpectedStream& stream, std::uint64_t seed, int sequences) {
    constexpr int kRequestsPerSequence = 12;
    ASSERT_GT(stream.samples, 4 * stream.samplesPerFrame);
    ASSERT_NO_FATAL_FAILURE(ExpectSequentialDelivery(stream, static_cast<std::uint32_t>(700 + seed % 999)));
    for (int sequence = 0; sequence < sequences; ++sequence) {
        RequestMaker requests(stream, seed * 1000 + static_cast<std::uint64_t>(sequence));
        Engine engine(stream.path);
        ASSERT_EQ(engine.Opened(), 1);
        if (sequence % 3 == 2)
            Spoil(engine, stream);
        std::string history;
        for (int i = 0; i < kRequestsPerSequence; ++i) {
            const Request request = requests.Next();
            history += " " + std::to_string(request.start) + "+" + std::to_string(request.count);
            ASSERT_TRUE(Answers(engine, stream, request.start, request.count))
                << "sequence " << sequence << ":" << history;
        }
    }
}

} // namespace test
