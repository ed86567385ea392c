/// Readers on several threads at once; each brings what it brings alone. Meant for the thread sanitizer too.

#include "real/delivery.h"
#include "real/real_streams.h"
#include "support/loaded_module.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

using namespace test;

constexpr std::int64_t kSamples = 30'000;
constexpr int kRounds = 3;

/// The first samples of a stream, through a reader of its own that has been elsewhere in between.
Pcm ReadBeginning(LoadedModule& module, const RealStream& stream) {
    const auto reader = module.OpenForReading(stream.Path());
    if (reader == nullptr || !ReadPcm(*reader, stream.DeliveredSamples() / 2, 5000))
        return {};
    Pcm samples;
    for (std::int64_t start = 0; start < kSamples; start += 3000) {
        const auto part = ReadPcm(*reader, start, 3000);
        if (!part)
            return {};
        samples.insert(samples.end(), part->begin(), part->end());
    }
    return samples;
}

TEST(RealThreads, ReadersDoNotDisturbEachOther) {
    const std::vector<std::string> files = {"cbr-44-128.mp3", "low-22-64.mp3", "l2-44-192.mp2",
                                            "cbr-44-128.mp3"};
    LoadedModule module;
    // The first use of the module's tables and of its log happens on all threads at once.
    std::vector<Pcm> together(files.size());
    for (int round = 0; round < kRounds; ++round) {
        std::vector<std::jthread> threads;
        for (std::size_t i = 0; i < files.size(); ++i)
            threads.emplace_back([&, i] { together[i] = ReadBeginning(module, RealStreamNamed(files[i])); });
        threads.clear();
        for (std::size_t i = 0; i < files.size(); ++i) {
            const Pcm alone = ReadBeginning(module, RealStreamNamed(files[i]));
            ASSERT_EQ(alone.size(), static_cast<std::size_t>(kSamples * RealStreamNamed(files[i]).channels));
            EXPECT_EQ(together[i], alone) << files[i] << ", round " << round;
        }
    }
}

} // namespace
