/// Opening and reading a file that has an index, a good one or any other.
#include "reader/engine.h"
#include "reader/reader_streams.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

using namespace trnmpa;
using test::Bytes;
using test::Engine;
using test::Index;

namespace {

constexpr std::uint32_t kLargest = std::numeric_limits<std::uint32_t>::max();
constexpr std::int64_t kFrameSamples = 1152;

class OpenWithIndex : public testing::Test {
protected:
    std::int32_t Open(Engine& engine, const Bytes& index, const Bytes& media) {
        folder_.Add("stream.mp3.idx", index);
        return engine.Open(folder_.Add("stream.mp3", media));
    }
    std::int32_t Open(Engine& engine, const Index& index) {
        return Open(engine, index.ToBytes(), stream_.bytes);
    }

    /// The samples from `start` on.
    test::Pcm Expected(std::int64_t start, std::uint32_t count) const {
        const auto first = whole_.begin() + 2 * start;
        return test::Pcm(first, first + 2 * std::ptrdiff_t{count});
    }

    test::ScratchFolder folder_;
    const test::bitstream::Stream stream_ = test::SteadyStream(30);
    const Index index_ = test::IndexOf(stream_);
    const test::Pcm whole_ = test::DeliveredFrom(stream_, 1, 0);
};

test::Pcm Silence(std::size_t samples) {
    return test::Pcm(2 * samples, 0);
}

} // namespace

TEST_F(OpenWithIndex, DescribesThePcmFromTheHeader) {
    Engine engine;
    ASSERT_EQ(Open(engine, index_), kSuccess);
    const WAVEFORMATEX& format = engine.Format();
    EXPECT_EQ(format.wFormatTag, 1);
    EXPECT_EQ(format.nChannels, 2);
    EXPECT_EQ(format.nSamplesPerSec, 44100u);
    EXPECT_EQ(format.nAvgBytesPerSec, 176400u);
    EXPECT_EQ(format.nBlockAlign, 4);
    EXPECT_EQ(format.wBitsPerSample, 16);
    EXPECT_EQ(format.cbSize, 18);
}

TEST_F(OpenWithIndex, DeliversFromTheFirstEntryWithoutDecoderDelay) {
    Engine engine;
    ASSERT_EQ(Open(engine, index_), kSuccess);
    EXPECT_EQ(engine.Read(0, 5000), Expected(0, 5000));
    EXPECT_EQ(engine.Read(20 * kFrameSamples + 7, 3000), Expected(20 * kFrameSamples + 7, 3000));
    EXPECT_EQ(engine.Read(3 * kFrameSamples, 1), Expected(3 * kFrameSamples, 1));
    EXPECT_EQ(engine.Read(28 * kFrameSamples, 1152), Expected(28 * kFrameSamples, 1152));
    EXPECT_EQ(engine.Read(28 * kFrameSamples, 1153), Silence(1153));
}

TEST_F(OpenWithIndex, WithoutEntriesEverythingIsSilence) {
    Index empty = index_;
    empty.entries.clear();
    for (const std::uint32_t claimed : {0u, 1u, 1000u, kLargest}) {
        empty.header.frameCount = claimed;
        Engine engine;
        ASSERT_EQ(Open(engine, empty), kSuccess) << claimed;
        EXPECT_EQ(engine.Format().nSamplesPerSec, 44100u);
        EXPECT_EQ(engine.Read(0, 100), Silence(100));
        EXPECT_EQ(engine.Read(100, 5000), Silence(5000));
        EXPECT_EQ(engine.Read(std::numeric_limits<std::int64_t>::max(), 10), Silence(10));
    }
}

TEST_F(OpenWithIndex, AnUnfinishedIndexHasAnEmptyFormat) {
    Index unfinished = index_;
    unfinished.header = {};
    for (const Bytes& index : {unfinished.ToBytes(), Bytes(28, 0), Bytes(10, 0), Bytes()}) {
        Engine engine;
        ASSERT_EQ(Open(engine, index, stream_.bytes), kSuccess) << index.size();
        EXPECT_EQ(engine.Format().wFormatTag, 1);
        EXPECT_EQ(engine.Format().nChannels, 0);
        EXPECT_EQ(engine.Format().nSamplesPerSec, 0u);
        EXPECT_EQ(engine.Format().nAvgBytesPerSec, 0u);
        EXPECT_EQ(engine.Format().nBlockAlign, 0);
        for (const std::uint32_t count : {1u, 100u, kLargest}) {
            const test::Answer answer = engine.Ask(0, count);
            EXPECT_EQ(answer.result, kSuccess);
            EXPECT_EQ(answer.size, 0);
        }
    }
}

TEST_F(OpenWithIndex, ACutHeaderReadsAsZerosBehindTheCut) {
    Bytes index = index_.ToBytes();
    index.resize(20);
    Engine engine;
    ASSERT_EQ(Open(engine, index, stream_.bytes), kSuccess);
    EXPECT_EQ(engine.Format().nSamplesPerSec, 44100u);
    EXPECT_EQ(engine.Format().wBitsPerSample, 0);
    EXPECT_EQ(engine.Ask(0, 100).size, 0);
}

TEST_F(OpenWithIndex, CountsTheEntriesThatAreThere) {
    Bytes index = index_.ToBytes();
    index.resize(28 + 10 * 8 + 5);
    for (const std::uint32_t claimed : {29u, kLargest}) {
        for (int i = 0; i < 4; ++i)
            index[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(claimed >> 8 * i);
        Engine engine;
        ASSERT_EQ(Open(engine, index, stream_.bytes), kSuccess);
        EXPECT_EQ(engine.Read(9 * kFrameSamples, 1152), Expected(9 * kFrameSamples, 1152));
        Engine other;
        ASSERT_EQ(Open(other, index, stream_.bytes), kSuccess);
        EXPECT_EQ(other.Read(25 * kFrameSamples, 1152), Silence(1152));
        EXPECT_EQ(other.Read(5 * kFrameSamples + 3, 999), Expected(5 * kFrameSamples + 3, 999));
    }
}

TEST_F(OpenWithIndex, EntriesBehindTheClaimedNumberDoNotCount) {
    Index index = index_;
    index.header.frameCount = 5;
    Engine engine;
    ASSERT_EQ(Open(engine, index), kSuccess);
    EXPECT_EQ(engine.Read(25 * kFrameSamples, 100), Silence(100));
    EXPECT_EQ(engine.Read(4 * kFrameSamples, 100), Expected(4 * kFrameSamples, 100));
}

TEST_F(OpenWithIndex, WhereTheStreamDisagreesTheDecodersRateWins) {
    Index index = index_;
    index.header.sampleRate = 0;
    Engine zero;
    ASSERT_EQ(Open(zero, index), kSuccess);
    EXPECT_EQ(zero.Format().nSamplesPerSec, 44100u);
    EXPECT_EQ(zero.Format().nAvgBytesPerSec, 176400u);
    EXPECT_EQ(zero.Read(10000, 3000), Expected(10000, 3000));
    index.header.sampleRate = kLargest;
    index.header.layer = 2;
    index.header.version = 99;
    Engine other;
    ASSERT_EQ(Open(other, index), kSuccess);
    EXPECT_EQ(other.Format().nSamplesPerSec, 44100u);
    EXPECT_EQ(other.Read(10000, 3000), Expected(10000, 3000));
}

TEST_F(OpenWithIndex, WhereTheStreamDisagreesTheHeadersWidthStays) {
    struct Case {
        std::uint16_t channels;
        std::uint16_t bits;
        std::uint16_t blockAlign;
    };
    const Case cases[] = {{1, 16, 2}, {3, 16, 6}, {0, 16, 0}, {2, 0, 0}, {2, 8, 2}, {2, 24, 6}, {1, 8, 1}};
    for (const Case& wrong : cases) {
        Index index = index_;
        index.header.channels = wrong.channels;
        index.header.bitsPerSample = wrong.bits;
        Engine engine;
        ASSERT_EQ(Open(engine, index), kSuccess);
        EXPECT_EQ(engine.Format().nChannels, wrong.channels);
        EXPECT_EQ(engine.Format().wBitsPerSample, wrong.bits);
        EXPECT_EQ(engine.Format().nBlockAlign, wrong.blockAlign);
        EXPECT_EQ(engine.Format().nAvgBytesPerSec, 44100u * wrong.blockAlign);
        const test::Answer answer = engine.Ask(2000, 600);
        EXPECT_EQ(answer.result, kSuccess);
        EXPECT_EQ(answer.size, 600 * wrong.blockAlign);
        const auto first = whole_.begin() + 1000 * wrong.blockAlign;
        EXPECT_EQ(answer.pcm, test::Pcm(first, first + 300 * wrong.blockAlign)) << wrong.blockAlign;
    }
}

TEST_F(OpenWithIndex, FramesOfNoOrAbsurdSizeGiveWayToTheDecodersSize) {
    for (const std::uint32_t samples : {0u, 1u, 576u, 0x10000000u, 0x20000000u, 0x40000000u, kLargest}) {
        Index index = index_;
        index.header.samplesPerFrame = samples;
        Engine engine;
        ASSERT_EQ(Open(engine, index), kSuccess) << samples;
        EXPECT_EQ(engine.Read(10000, 3000), Expected(10000, 3000)) << samples;
    }
}

TEST_F(OpenWithIndex, HostileFieldsAtTheirLimits) {
    Index index = index_;
    index.header.channels = 0xFFFF;
    index.header.bitsPerSample = 0xFFFF;
    index.header.frameBytes = 0xFFFF;
    index.header.bitRate = kLargest;
    index.header.samplesPerFrame = kLargest;
    Engine engine;
    ASSERT_EQ(Open(engine, index), kSuccess);
    for (const std::int64_t start :
         {std::int64_t{0}, std::int64_t{1}, std::numeric_limits<std::int64_t>::max()}) {
        const test::Answer answer = engine.Ask(start, 100);
        EXPECT_EQ(answer.result, kSuccess);
        EXPECT_EQ(answer.size, 100 * engine.Format().nBlockAlign);
    }
}

TEST_F(OpenWithIndex, AFirstEntryAtOrBehindTheEndFails) {
    const auto size = static_cast<std::uint32_t>(stream_.bytes.size());
    for (const std::uint32_t offset : {size - 3, size, size + 1, 0x7FFFFFFFu, 0x80000000u, kLargest}) {
        Index index = index_;
        index.entries.front().frameOffset = offset;
        Engine engine;
        EXPECT_EQ(Open(engine, index), kUnexpectedException) << offset;
        KW_MEDIA_BASE_INFO_ST info;
        EXPECT_EQ(engine->GetStreamInfo(&info), kUnexpectedException);
        EXPECT_EQ(engine.Ask(0, 10).result, kNotOpen);
    }
    Engine engine;
    EXPECT_EQ(Open(engine, index_.ToBytes(), {}), kUnexpectedException) << "an empty media file";
}

TEST_F(OpenWithIndex, AnUnsyncedRecordNeverWins) {
    Index index = index_;
    index.header.sampleRate = 12345;
    index.header.samplesPerFrame = 1000;
    index.entries.front().frameOffset = static_cast<std::uint32_t>(stream_.bytes.size());
    Engine engine;
    ASSERT_EQ(Open(engine, index.ToBytes(), test::Joined({stream_.bytes, Bytes(100, 0)})), kSuccess);
    EXPECT_EQ(engine.Format().nSamplesPerSec, 12345u);
    EXPECT_EQ(engine.Format().nAvgBytesPerSec, 12345u * 4);
    // No frame of the stream is like the one that the header describes.
    EXPECT_EQ(engine.Read(0, 2000), Silence(2000));
    EXPECT_EQ(engine.Read(5000, 2000), Silence(2000));
}

TEST_F(OpenWithIndex, AnUnsyncedRecordBesideAHeaderWithoutFrameSize) {
    for (const std::uint32_t samples : {0u, 0x10000000u, 0x1FFFFFFFu, 0x20000000u, kLargest}) {
        Index index = index_;
        index.header.samplesPerFrame = samples;
        index.entries.front().frameOffset = static_cast<std::uint32_t>(stream_.bytes.size());
        Engine engine;
        ASSERT_EQ(Open(engine, index.ToBytes(), test::Joined({stream_.bytes, Bytes(100, 0)})), kSuccess);
        EXPECT_EQ(engine.Read(0, 2000), Silence(2000)) << samples;
        EXPECT_EQ(engine.Read(std::int64_t{1} << 40, 2000), Silence(2000)) << samples;
    }
}

TEST_F(OpenWithIndex, AFirstEntryInGarbageStandsForTheNextFrame) {
    Index index = index_;
    for (MpaIndexEntry& entry : index.entries)
        entry.frameOffset += 1000;
    index.entries.front().frameOffset = 417;
    index.header.sampleRate = 12345;
    Bytes file = stream_.bytes;
    file.insert(file.begin() + 417, 1000, 0);
    Engine engine;
    ASSERT_EQ(Open(engine, index.ToBytes(), file), kSuccess);
    EXPECT_EQ(engine.Format().nSamplesPerSec, 44100u);
    EXPECT_EQ(engine.Read(0, 5000), Expected(0, 5000));
    EXPECT_EQ(engine.Read(20000, 5000), Expected(20000, 5000));
    EXPECT_EQ(engine.Read(0, 5000), Expected(0, 5000));
}

TEST_F(OpenWithIndex, EntriesWithoutLengthReachBackFar) {
    Index index = index_;
    for (MpaIndexEntry& entry : index.entries)
        entry.frameBytes = 0;
    for (const std::int64_t start : {25 * kFrameSamples + 5, 2 * kFrameSamples, 14 * kFrameSamples + 1151}) {
        Engine engine;
        ASSERT_EQ(Open(engine, index), kSuccess);
        EXPECT_EQ(engine.Read(start, 2000), Expected(start, 2000)) << start;
    }
}

TEST_F(OpenWithIndex, EntriesOfAbsurdLengthAreSurvived) {
    for (const std::uint32_t length : {1u, 37u, 38u, 39u, 0x7FFFFFFFu, 0x80000000u, kLargest}) {
        Index index = index_;
        for (MpaIndexEntry& entry : index.entries)
            entry.frameBytes = length;
        Engine engine;
        ASSERT_EQ(Open(engine, index), kSuccess);
        const test::Answer answer = engine.Ask(25 * kFrameSamples + 5, 2000);
        EXPECT_EQ(answer.result, kSuccess);
        EXPECT_EQ(answer.size, 8000);
        EXPECT_EQ(engine.Read(0, 2000), Expected(0, 2000));
    }
}

TEST_F(OpenWithIndex, OfALongerFileTheMissingFramesAreSilence) {
    const Bytes half(stream_.bytes.begin(), stream_.bytes.begin() + 15 * 417);
    Engine engine;
    ASSERT_EQ(Open(engine, index_.ToBytes(), half), kSuccess);
    EXPECT_EQ(engine.Read(20 * kFrameSamples, 2000), Silence(2000));
    EXPECT_EQ(engine.Read(13 * kFrameSamples, 1152), Expected(13 * kFrameSamples, 1152));
    EXPECT_EQ(engine.Read(13 * kFrameSamples, 1153), Silence(1153));
}

TEST_F(OpenWithIndex, OfAnotherFileIsUsedAsItStands) {
    const auto other = test::ChangingStream(40);
    Engine engine;
    ASSERT_EQ(Open(engine, test::IndexOf(other).ToBytes(), stream_.bytes), kSuccess);
    for (std::int64_t start = 0; start < 45 * kFrameSamples; start += 3001) {
        const test::Answer answer = engine.Ask(start, 1500);
        EXPECT_EQ(answer.result, kSuccess) << start;
        EXPECT_EQ(answer.size, 6000) << start;
    }
}

TEST_F(OpenWithIndex, OffsetsThatFallOrRepeatAreSurvived) {
    Index index = index_;
    std::ranges::reverse(index.entries);
    Engine falling;
    ASSERT_EQ(Open(falling, index), kSuccess);
    for (MpaIndexEntry& entry : index.entries)
        entry.frameOffset = 0;
    Engine repeated;
    ASSERT_EQ(Open(repeated, index), kSuccess);
    for (Engine* engine : {&falling, &repeated})
        for (std::int64_t start = 0; start < 35 * kFrameSamples; start += 2500)
            EXPECT_EQ(engine->Ask(start, 1500).result, kSuccess) << start;
}

TEST_F(OpenWithIndex, AFolderOfThatNameIsNoIndex) {
    std::filesystem::create_directory(folder_.Path() / "stream.mp3.idx");
    Engine engine;
    ASSERT_EQ(engine.Open(folder_.Add("stream.mp3", stream_.bytes)), kSuccess);
    EXPECT_EQ(engine.Format().cbSize, 0);
}
