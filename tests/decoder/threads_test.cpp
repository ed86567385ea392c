// First use on several threads at once: a program of its own, so that nothing has touched the tables before.

#include "decoder/stream_decode.h"
#include "support/bitstream/stream.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

TEST(DecoderThreads, DecodersOnDifferentThreadsAreIndependent) {
    constexpr int kThreads = 6;
    std::vector<std::vector<std::uint8_t>> streams;
    for (int i = 0; i < kThreads; ++i) {
        test::bitstream::StreamOptions options;
        options.layer = i % 3 == 2 ? 2 : 3;
        options.seed = static_cast<std::uint64_t>(i + 1);
        streams.push_back(test::bitstream::WriteStream(options).bytes);
    }
    std::vector<std::vector<std::int16_t>> together(kThreads);
    {
        std::vector<std::jthread> threads;
        for (std::size_t i = 0; i < kThreads; ++i)
            threads.emplace_back([&, i] { together[i] = test::DecodeStream(streams[i]).pcm; });
    }
    for (std::size_t i = 0; i < kThreads; ++i) {
        EXPECT_FALSE(together[i].empty());
        EXPECT_EQ(together[i], test::DecodeStream(streams[i]).pcm) << i;
    }
}

} // namespace
