// The decoder against the plain model on synthetic streams of every feature.

#include "decoder/feature_streams.h"
#include "decoder/frame_header.h"
#include "decoder/stream_decode.h"
#include "support/model/decoder_model.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

struct Totals {
    std::size_t values = 0;
    std::size_t differing = 0;
};

void ExpectLikeModel(std::span<const std::uint8_t> stream, Totals& totals) {
    const std::vector<std::int16_t> expected = test::model::DecodeStream(stream);
    const std::vector<std::int16_t> pcm = test::DecodeStream(stream).pcm;
    ASSERT_EQ(pcm.size(), expected.size());
    ASSERT_FALSE(pcm.empty());
    for (std::size_t i = 0; i < pcm.size(); ++i) {
        const int difference = std::abs(pcm[i] - expected[i]);
        ASSERT_LE(difference, 1) << "value " << i << ": " << pcm[i] << ", the model has " << expected[i];
        totals.differing += difference != 0 ? 1u : 0u;
    }
    totals.values += pcm.size();
}

void ExpectAllLikeModel(const std::vector<test::FeatureStream>& streams) {
    Totals totals;
    for (const test::FeatureStream& stream : streams) {
        SCOPED_TRACE(stream.name);
        ExpectLikeModel(test::bitstream::WriteStream(stream.options).bytes, totals);
    }
    std::printf("%zu streams, %zu of %zu values differ by 1\n", streams.size(), totals.differing,
                totals.values);
    EXPECT_LE(static_cast<double>(totals.differing), 0.001 * static_cast<double>(totals.values));
}

TEST(DecoderAgainstModel, Layer3Features) {
    ExpectAllLikeModel(test::Layer3FeatureStreams());
}

TEST(DecoderAgainstModel, Layer2Tables) {
    ExpectAllLikeModel(test::Layer2FeatureStreams());
}

// All ones ask for the finest quantisation of every subband: many times what the body holds. The rest reads
// as zeros.
TEST(DecoderAgainstModel, Layer2BodiesThatEndEarly) {
    for (const int versionByte : {0xFD, 0xF5}) {
        for (const int mode : {0, 1, 3}) {
            for (int index = 16; index < 15 * 16; index += 4) {
                const trnmpa::HeaderBytes bytes = {0xFF, static_cast<std::uint8_t>(versionByte),
                                                   static_cast<std::uint8_t>(index),
                                                   static_cast<std::uint8_t>(mode << 6)};
                if (!trnmpa::IsAcceptedHeader(bytes, nullptr))
                    continue;
                std::vector<std::uint8_t> stream;
                for (int frame = 0; frame < 2; ++frame) {
                    const std::size_t end =
                        stream.size() + static_cast<std::size_t>(trnmpa::ParseHeader(bytes).frameBytes);
                    stream.insert(stream.end(), bytes.begin(), bytes.end());
                    stream.resize(end, 0xFF);
                }
                SCOPED_TRACE(testing::Message() << versionByte << ' ' << mode << ' ' << index);
                Totals totals;
                ExpectLikeModel(stream, totals);
            }
        }
    }
}

// Damage behind intact headers: what is read is nonsense, but it must be the model's nonsense. Some values
// are so huge that single precision shows where sums cancel, in about one value of ten thousand.
TEST(DecoderAgainstModel, DamagedStreams) {
    std::size_t values = 0;
    std::size_t farApart = 0;
    std::uint64_t seed = 0;
    for (const test::FeatureStream& stream : test::Layer3FeatureStreams()) {
        SCOPED_TRACE(stream.name);
        const auto damage =
            test::bitstream::Damage{.sideInfoBitsPerTenFrames = 20, .bodyBitsPerTenFrames = 40};
        const auto spoilt =
            test::bitstream::Spoil(test::bitstream::WriteStream(stream.options), damage, ++seed);
        const auto expected = test::model::DecodeStream(spoilt);
        const auto pcm = test::DecodeStream(spoilt).pcm;
        ASSERT_EQ(pcm.size(), expected.size());
        for (std::size_t i = 0; i < pcm.size(); ++i)
            farApart += std::abs(pcm[i] - expected[i]) > 1 ? 1u : 0u;
        values += pcm.size();
    }
    std::printf("%zu of %zu values of damaged streams are more than 1 apart\n", farApart, values);
    EXPECT_LE(static_cast<double>(farApart), 0.0002 * static_cast<double>(values));
}

} // namespace
