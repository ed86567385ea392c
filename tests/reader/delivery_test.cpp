/// What requests give: position, size, end of the stream.
#include "reader/engine.h"
#include "reader/reader_streams.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <limits>

using namespace trnmpa;
using test::Answer;
using test::Bytes;
using test::Engine;

namespace {

constexpr std::int64_t kFurthest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kFrameSamples = 1152;

class Delivery : public testing::Test {
protected:
    test::Pcm Expected(std::int64_t start, std::int64_t count) const {
        return test::Pcm(whole_.begin() + 2 * start, whole_.begin() + 2 * (start + count));
    }
    static test::Pcm Silence(std::size_t samples) { return test::Pcm(2 * samples, 0); }

    test::ScratchFolder folder_;
    const test::bitstream::Stream stream_ = test::SteadyStream(30);
    const std::filesystem::path path_ = folder_.Add("stream.mp3", stream_.bytes);
    const test::Pcm whole_ = test::DeliveredFrom(stream_, 0, test::kDecoderDelay);
    const std::int64_t samples_ = static_cast<std::int64_t>(whole_.size() / 2);
    Engine engine_{path_};
};

} // namespace

TEST_F(Delivery, PiecesOfAnySizeMakeTheWhole) {
    ASSERT_EQ(samples_, 30 * kFrameSamples - 1100);
    for (const std::int64_t piece : {1, 51, 52, 53, 576, 1000, 1152, 1153, 5000, 40000}) {
        Engine engine(path_);
        const std::int64_t end = piece == 1 ? 3000 : samples_;
        test::Pcm pcm;
        for (std::int64_t start = 0; start < end; start += piece) {
            const test::Pcm part =
                engine.Read(start, static_cast<std::uint32_t>(std::min(piece, end - start)));
            pcm.insert(pcm.end(), part.begin(), part.end());
        }
        EXPECT_EQ(pcm, Expected(0, end)) << piece;
    }
}

TEST_F(Delivery, TwoRequestsEqualOne) {
    const Answer first = engine_.Ask(0, 1000);
    const Answer second = engine_.Ask(1000, 1000);
    EXPECT_EQ(first.size, 4000);
    EXPECT_EQ(second.size, 4000);
    test::Pcm both = first.pcm;
    both.insert(both.end(), second.pcm.begin(), second.pcm.end());
    EXPECT_EQ(both, Expected(0, 2000));
    EXPECT_EQ(engine_.Read(0, 2000), both);
}

TEST_F(Delivery, AFreshEngineMayBeginAnywhere) {
    for (const std::int64_t start : {0, 1, 51, 52, 53, 52 + 1152, 52 + 1153, 52 + 2 * 1152, 20000, 33000}) {
        Engine engine(path_);
        EXPECT_EQ(engine.Read(start, 400), Expected(start, 400)) << start;
    }
}

TEST_F(Delivery, TheFirstFrameMayBeReadInPiecesAndAgain) {
    EXPECT_EQ(engine_.Read(10, 5), Expected(10, 5));
    EXPECT_EQ(engine_.Read(0, 52), Expected(0, 52));
    EXPECT_EQ(engine_.Read(50, 2), Expected(50, 2));
    EXPECT_EQ(engine_.Read(0, 10), Expected(0, 10));
    EXPECT_EQ(engine_.Read(52, 1152), Expected(52, 1152));
    EXPECT_EQ(engine_.Read(0, 3000), Expected(0, 3000));
}

TEST_F(Delivery, BackAndForthAcrossFrames) {
    for (const std::int64_t start : {5000, 5000, 5001, 4999, 5000 + 1152, 5000, 52 + 1152, 52, 52 + 2 * 1152,
                                     30000, 52 + 1152, 52 + 2 * 1152 + 1, 52 + 3 * 1152})
        EXPECT_EQ(engine_.Read(start, 1152), Expected(start, 1152)) << start;
}

TEST_F(Delivery, RefusesBadRequests) {
    for (const std::int64_t start : {std::int64_t{-1}, -kFurthest, std::numeric_limits<std::int64_t>::min()})
        EXPECT_EQ(engine_.Ask(start, 10).result, kBadRequest) << start;
    EXPECT_EQ(engine_.Ask(0, 0).result, kBadRequest);
    EXPECT_EQ(engine_.Ask(-1, 0).result, kBadRequest);
    EXPECT_EQ(engine_.Ask(kFurthest, 0).result, kBadRequest);
    EXPECT_EQ(engine_.Read(0, 2000), Expected(0, 2000));
    EXPECT_EQ(engine_.Ask(-1, 10).result, kBadRequest);
    EXPECT_EQ(engine_.Read(2000, 100), Expected(2000, 100));
}

TEST_F(Delivery, RequestsOfTwoGibibytesFail) {
    for (const std::uint32_t count :
         {0x20000000u, 0x3FFFFFFFu, 0x40000000u, 0x40000001u, 0x80000000u, 0xFFFFFFFFu})
        EXPECT_EQ(engine_.Ask(0, count).result, kUnexpectedException) << count;
    EXPECT_EQ(engine_.Ask(kFurthest, 0xFFFFFFFF).result, kUnexpectedException);
    EXPECT_EQ(engine_.Read(1000, 2000), Expected(1000, 2000));
}

TEST_F(Delivery, BehindTheEndIsSilence) {
    for (const std::int64_t start :
         {samples_, samples_ + 1, samples_ + 100000, std::int64_t{1} << 31, std::int64_t{1} << 32,
          std::int64_t{1} << 46, std::int64_t{1} << 60, kFurthest / 4 - 1100, kFurthest / 4, kFurthest - 1100,
          kFurthest - 1, kFurthest})
        for (const std::uint32_t count : {1u, 1152u, 4000u}) {
            const Answer answer = engine_.Ask(start, count);
            EXPECT_EQ(answer.result, kSuccess) << start;
            EXPECT_EQ(answer.pcm, Silence(count)) << start;
        }
    EXPECT_EQ(engine_.Read(samples_ - 1, 1), Expected(samples_ - 1, 1));
}

TEST_F(Delivery, ARequestThatCrossesTheEndIsAllSilence) {
    EXPECT_EQ(engine_.Read(samples_ - 1000, 1000), Expected(samples_ - 1000, 1000));
    EXPECT_EQ(engine_.Read(samples_ - 1000, 1001), Silence(1001));
    EXPECT_EQ(engine_.Read(0, static_cast<std::uint32_t>(samples_) + 1),
              Silence(static_cast<std::size_t>(samples_) + 1));
    EXPECT_EQ(engine_.Read(0, static_cast<std::uint32_t>(samples_)), whole_);
}

TEST_F(Delivery, AfterTheEndEveryRequestIsRight) {
    for (const std::int64_t next :
         {std::int64_t{0}, std::int64_t{52}, std::int64_t{20000}, samples_ - 500, samples_ - 1152}) {
        EXPECT_EQ(engine_.Read(samples_ - 100, 200), Silence(200));
        EXPECT_EQ(engine_.Read(next, 500), Expected(next, 500)) << next;
        EXPECT_EQ(engine_.Read(samples_ + 5000, 10), Silence(10));
        EXPECT_EQ(engine_.Read(next, 500), Expected(next, 500)) << next;
    }
}

TEST_F(Delivery, SilenceGrowsWithTheRequest) {
    EXPECT_EQ(engine_.Read(0, 100), Expected(0, 100));
    EXPECT_EQ(engine_.Read(samples_, 10), Silence(10));
    EXPECT_EQ(engine_.Read(samples_, 100000), Silence(100000));
    EXPECT_EQ(engine_.Read(kFurthest, 1000000), Silence(1000000));
    EXPECT_EQ(engine_.Read(0, 30000), Expected(0, 30000));
}

TEST_F(Delivery, OtherFieldsOfTheRequestDoNotMatter) {
    AudioReaderDataIn request;
    request.position = 12345;
    request.name = L"anything";
    std::fill(std::begin(request.hostFields), std::end(request.hostFields), -7);
    request.startSample = 5000;
    request.sampleCount = 10;
    unsigned char* data = nullptr;
    std::int32_t size = 0;
    unsigned long extra = 77;
    ASSERT_EQ(engine_->GetSamples(request, data, size, &extra), kSuccess);
    EXPECT_EQ(extra, 77u);
    ASSERT_EQ(size, 40);
    EXPECT_EQ(std::memcmp(data, Expected(5000, 10).data(), 40), 0);
}

TEST_F(Delivery, ThePcmStaysUntilTheNextCall) {
    Engine other(path_);
    const Answer answer = engine_.Ask(5000, 3000);
    EXPECT_EQ(other.Read(20000, 5000), Expected(20000, 5000));
    EXPECT_EQ(std::memcmp(answer.data, Expected(5000, 3000).data(), 12000), 0);
}

TEST_F(Delivery, EnginesDoNotDisturbEachOther) {
    const auto layer2 = test::Layer2Stream();
    const test::Pcm layer2Pcm = test::DeliveredFrom(layer2, 0, 0);
    Engine same(path_);
    Engine other(folder_.Add("stream.mp2", layer2.bytes));
    for (std::int64_t start = 0; start < 15000; start += 700) {
        EXPECT_EQ(engine_.Read(start, 700), Expected(start, 700));
        EXPECT_EQ(same.Read(20000 - start, 900), Expected(20000 - start, 900));
        EXPECT_EQ(other.Read(start, 700),
                  test::Pcm(layer2Pcm.begin() + 2 * start, layer2Pcm.begin() + 2 * (start + 700)));
    }
}

TEST_F(Delivery, LayerThreeIsDoubledAndClamped) {
    test::bitstream::StreamOptions options = test::SteadyOptions();
    options.layer3.level = 1.0;
    const auto loud = test::bitstream::WriteStream(options);
    const test::Pcm expected = test::DeliveredFrom(loud, 0, test::kDecoderDelay);
    Engine engine(folder_.Add("loud.mp3", loud.bytes));
    const test::Pcm pcm = engine.Read(0, static_cast<std::uint32_t>(expected.size() / 2));
    EXPECT_EQ(pcm, expected);
    EXPECT_GT(std::ranges::count(pcm, 32767), 0);
    EXPECT_GT(std::ranges::count(pcm, -32767), 0);
    EXPECT_EQ(std::ranges::count(pcm, -32768), 0);
    EXPECT_TRUE(std::ranges::all_of(
        pcm, [](int value) { return value % 2 == 0 || value == 32767 || value == -32767; }));
}

TEST_F(Delivery, LayerTwoIsNotDoubled) {
    const auto layer2 = test::Layer2Stream();
    const test::Pcm expected = test::DeliveredFrom(layer2, 0, 0);
    Engine engine(folder_.Add("stream.mp2", layer2.bytes));
    EXPECT_EQ(engine.Read(0, static_cast<std::uint32_t>(expected.size() / 2)), expected);
    EXPECT_TRUE(std::ranges::any_of(expected, [](int value) { return value % 2 != 0; }));
    EXPECT_EQ(engine.Read(static_cast<std::int64_t>(expected.size() / 2) - 1, 100), Silence(100));
    EXPECT_EQ(engine.Read(5000, 10), test::Pcm(expected.begin() + 10000, expected.begin() + 10020));
}

TEST_F(Delivery, SingleChannelSamplesAreTwoBytes) {
    test::bitstream::StreamOptions options = test::SteadyOptions();
    options.mode = test::model::kSingleChannel;
    const auto mono = test::bitstream::WriteStream(options);
    const test::Pcm expected = test::DeliveredFrom(mono, 0, test::kDecoderDelay);
    Engine engine(folder_.Add("mono.mp3", mono.bytes));
    EXPECT_EQ(engine.Ask(0, 1000).size, 2000);
    EXPECT_EQ(engine.Read(7000, 1000), test::Pcm(expected.begin() + 7000, expected.begin() + 8000));
    EXPECT_EQ(engine.Ask(0, 0x40000000).result, kUnexpectedException);
    EXPECT_EQ(engine.Read(static_cast<std::int64_t>(expected.size()), 5), test::Pcm(5, 0));
}
