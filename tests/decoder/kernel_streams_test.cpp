// Whole streams, sound and damaged, by each set of kernels: the plain kernels' PCM to the last bit.

#include "decoder/each_kernel_set.h"
#include "decoder/feature_streams.h"
#include "decoder/stream_decode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

class KernelStreams : public test::EachKernelSet {};

INSTANTIATE_TEST_SUITE_P(Sets, KernelStreams, testing::ValuesIn(test::kEachFastKernelSet),
                         test::KernelSetName);

test::DecodedStream DecodePlainly(std::span<const std::uint8_t> bytes) {
    const test::KernelMask plain(trnmpa::kPlainKernels);
    return test::DecodeStream(bytes);
}

void ExpectPlainPcm(std::span<const std::uint8_t> bytes, unsigned set) {
    const test::DecodedStream expected = DecodePlainly(bytes);
    const test::KernelMask mask(set);
    const test::DecodedStream found = test::DecodeStream(bytes);
    EXPECT_EQ(found.thrown, expected.thrown);
    EXPECT_EQ(found.frames.size(), expected.frames.size());
    ASSERT_EQ(found.pcm, expected.pcm);
}

std::vector<test::FeatureStream> AllStreams() {
    auto streams = test::Layer3FeatureStreams();
    std::ranges::copy(test::Layer2FeatureStreams(), std::back_inserter(streams));
    return streams;
}

TEST_P(KernelStreams, EveryFeature) {
    for (const test::FeatureStream& stream : AllStreams()) {
        SCOPED_TRACE(stream.name);
        ASSERT_NO_FATAL_FAILURE(
            ExpectPlainPcm(test::bitstream::WriteStream(stream.options).bytes, GetParam()));
    }
}

TEST_P(KernelStreams, DamagedStreams) {
    std::mt19937 engine(31);
    for (const test::FeatureStream& stream : AllStreams()) {
        SCOPED_TRACE(stream.name);
        auto bytes = test::bitstream::WriteStream(stream.options).bytes;
        for (std::size_t i = 4; i < bytes.size(); i += 1 + engine() % 200)
            bytes[i] = static_cast<std::uint8_t>(engine());
        ASSERT_NO_FATAL_FAILURE(ExpectPlainPcm(bytes, GetParam()));
    }
}

} // namespace
