// Digests of PCM that must be the same on every system, compiler and optimisation level. Each stands behind a
// comparison with the plain model in the same test, so that a digest cannot bless a wrong output.

#include "decoder/each_kernel_set.h"
#include "decoder/feature_streams.h"
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

/// The same streams with damage behind the headers.
constexpr Golden kGoldenDamaged[] = {
    {"m1-0-joint3", "490a0c8647b8e59c"},
    {"m2-0-block1-mixed", "9f40b895ad2a5a72"},
    {"m1-0-rate10-mode1", "a6dca659ca80be12"},
};

/// `farApart` is the part of the values that may be more than 1 from the model's.
void ExpectGolden(const Golden& golden, std::span<const std::uint8_t> bytes, double farApart) {
    SCOPED_TRACE(golden.name);
    const auto pcm = test::DecodeStream(bytes).pcm;
    const auto model = test::model::DecodeStream(bytes);
    ASSERT_EQ(pcm.size(), model.size());
    std::size_t found = 0;
    for (std::size_t i = 0; i < pcm.size(); ++i)
        found += std::abs(pcm[i] - model[i]) > 1 ? 1u : 0u;
    EXPECT_LE(static_cast<double>(found), farApart * static_cast<double>(pcm.size()));
    EXPECT_EQ(test::Digest(std::span<const std::int16_t>(pcm)), golden.digest);
}

test::bitstream::Stream WriteNamed(const char* name) {
    auto streams = test::Layer3FeatureStreams();
    std::ranges::copy(test::Layer2FeatureStreams(), std::back_inserter(streams));
    const auto stream = std::ranges::find(streams, std::string(name), &test::FeatureStream::name);
    return stream == streams.end() ? test::bitstream::Stream()
                                   : test::bitstream::WriteStream(stream->options);
}

class GoldenPcm : public test::EachKernelSet {};

INSTANTIATE_TEST_SUITE_P(Sets, GoldenPcm, testing::ValuesIn(test::kEachKernelSet), test::KernelSetName);

TEST_P(GoldenPcm, IsTheSameEverywhere) {
    for (const Golden& golden : kGolden) {
        const auto stream = WriteNamed(golden.name);
        ASSERT_FALSE(stream.bytes.empty()) << golden.name;
        ExpectGolden(golden, stream.bytes, 0);
    }
}

TEST_P(GoldenPcm, OfDamagedStreamsIsTheSameEverywhere) {
    constexpr test::bitstream::Damage kDamage = {.sideInfoBitsPerTenFrames = 20, .bodyBitsPerTenFrames = 40};
    for (const Golden& golden : kGoldenDamaged) {
        const auto stream = WriteNamed(golden.name);
        ASSERT_FALSE(stream.bytes.empty()) << golden.name;
        const auto spoilt = test::bitstream::Spoil(stream, kDamage, 1);
        ASSERT_NE(spoilt, stream.bytes);
        ExpectGolden(golden, spoilt, 0.0002);
    }
}

} // namespace
