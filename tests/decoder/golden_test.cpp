// Digests of PCM that must be the same on every system, compiler and optimisation level. Each stands behind a
// comparison with the plain model in the same test, so that a digest cannot bless a wrong output.

#include "decoder/feature_streams.h"
#include "decoder/kernel_sets.h"
#include "decoder/stream_decode.h"
#include "support/digest.h"
#include "support/model/decoder_model.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace {

struct Golden {
    const char* name;
    const char* digest;
};

constexpr Golden kGolden[] = {
    {"m1-0-block0", "534ea54f8f70d420"},
    {"m1-1-block2", "8c26edf923fda97c"},
    {"m1-2-block2-mixed", "8eec6624159844b8"},
    {"m1-0-joint3", "71baee85cc581fdd"},
    {"m1-1-joint1-same-blocks", "5ef950fbdc56acb2"},
    {"m1-2-mono", "062f7e357aedc284"},
    {"m2-0-block1-mixed", "139ff22e3a5753bd"},
    {"m2-1-joint3", "af0d373dd66b7f68"},
    {"m25-0-block3", "a03f0cd8fe3ba4d4"},
    {"m25-2-joint2", "dd78c2ad8dc65066"},
    {"table15", "5fe2cdb233b41464"},
    {"table31", "715e09dccd52b0f5"},
    {"m1-vbr-full-reservoir", "f7768a9ffe8a7206"},
    {"lsf-right-compress360", "a87b3163fff2b9f3"},
    {"m1-0-rate10-mode1", "67d7b5d3ac45a52e"},
    {"m2-1-rate8-mode0", "d1bb0d4e7e375fa5"},
    {"m25-2-rate14-mode3", "1d0509e402b966d4"},
};

void ExpectGolden(const Golden& golden, const test::FeatureStream& stream) {
    SCOPED_TRACE(golden.name);
    const auto bytes = test::bitstream::WriteStream(stream.options).bytes;
    const auto pcm = test::DecodeStream(bytes).pcm;
    const auto model = test::model::DecodeStream(bytes);
    ASSERT_EQ(pcm.size(), model.size());
    for (std::size_t i = 0; i < pcm.size(); ++i)
        ASSERT_LE(std::abs(pcm[i] - model[i]), 1) << i;
    EXPECT_EQ(test::Digest(std::span<const std::int16_t>(pcm)), golden.digest);
}

class GoldenPcm : public test::EachKernelSet {};

INSTANTIATE_TEST_SUITE_P(Sets, GoldenPcm, testing::ValuesIn(test::kEachKernelSet), test::KernelSetName);

TEST_P(GoldenPcm, IsTheSameEverywhere) {
    auto streams = test::Layer3FeatureStreams();
    std::ranges::copy(test::Layer2FeatureStreams(), std::back_inserter(streams));
    for (const Golden& golden : kGolden) {
        const auto stream = std::ranges::find(streams, std::string(golden.name), &test::FeatureStream::name);
        ASSERT_NE(stream, streams.end()) << golden.name;
        ExpectGolden(golden, *stream);
    }
}

} // namespace
